#!/usr/bin/perl
# SPDX-License-Identifier: GPL-3.0-or-later
# Writes the patients with Excel::Writer::XLSX.
use strict;
use warnings;
use utf8;
use FindBin;
use Excel::Writer::XLSX;

my $book  = Excel::Writer::XLSX->new("$FindBin::Bin/excel_writer.xlsx");
my $sheet = $book->add_worksheet('Patients');
my $bold  = $book->add_format(bold => 1);
my $day   = $book->add_format(num_format => 'dd.mm.yyyy');
my $unit  = $book->add_format(num_format => '0.00 "mmol/mol"');

my %write = (
    number  => sub { $sheet->write_number(@_[0, 1], $_[2]) },
    styled  => sub { $sheet->write_number(@_[0, 1], $_[2], $unit) },
    boolean => sub { $sheet->write_boolean(@_[0, 1], $_[2] eq 'true') },
    date    => sub { $sheet->write_date_time(@_[0, 1], "$_[2]T", $day) },
    error   => sub { $sheet->write_formula(@_[0, 1], '=NA()', undef, $_[2]) },
    text    => sub { $sheet->write_string(@_[0, 1], $_[2]) },
    formula => sub {
        my ($result, $formula) = split / /, $_[2], 2;
        $sheet->write_formula(@_[0, 1], "=$formula", undef, $result);
    },
    rich => sub {
        my ($first, $second) = split /\|/, $_[2];
        $sheet->write_rich_string(@_[0, 1], $bold, $first, $second);
    },
);

open my $lines, '<:encoding(UTF-8)', "$FindBin::Bin/patients.tsv" or die "patients.tsv: $!";
my $row = 0;
while (my $line = <$lines>) {
    chomp $line;
    my $column = 0;
    for my $field (split /\t/, $line) {
        $field =~ s/\\n/\n/g;
        if ($field ne '') {
            my ($kind, $content) = split / /, $field, 2;
            $write{$kind}->($row, $column, $content);
        }
        ++$column;
    }
    ++$row;
}
$book->close;
