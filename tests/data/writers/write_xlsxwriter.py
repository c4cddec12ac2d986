#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Writes the patients with XlsxWriter."""
import datetime

import xlsxwriter

import cells

book = xlsxwriter.Workbook(cells.path("xlsxwriter.xlsx"))
sheet = book.add_worksheet("Patients")
bold = book.add_format({"bold": True})
day = book.add_format({"num_format": "dd.mm.yyyy"})
unit = book.add_format({"num_format": '0.00 "mmol/mol"'})


def write(row, column, kind, content):
    if kind in ("number", "styled"):
        sheet.write_number(row, column, float(content), unit if kind == "styled" else None)
    elif kind == "boolean":
        sheet.write_boolean(row, column, content == "true")
    elif kind == "date":
        sheet.write_datetime(row, column, datetime.date.fromisoformat(content), day)
    elif kind == "formula":
        result, formula = content.split(" ", 1)
        sheet.write_formula(row, column, "=" + formula, None, cells.number_or_text(result))
    elif kind == "error":
        sheet.write_formula(row, column, "=NA()", None, content)
    elif kind == "rich":
        first, second = content.split("|")
        sheet.write_rich_string(row, column, bold, first, second)
    else:
        sheet.write_string(row, column, content)


for row, fields in enumerate(cells.rows()):
    for column, field in enumerate(fields):
        if field is not None:
            write(row, column, *field)
book.close()
