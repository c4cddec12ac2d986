#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Writes the patients with LibreOffice: once from a flat document, without a window."""
import os
import subprocess
import tempfile
from xml.sax.saxutils import escape, quoteattr

import cells

HEAD = """<?xml version="1.0" encoding="UTF-8"?>
<office:document office:mimetype="application/vnd.oasis.opendocument.spreadsheet"
 office:version="1.2" xmlns:office="urn:oasis:names:tc:opendocument:xmlns:office:1.0"
 xmlns:style="urn:oasis:names:tc:opendocument:xmlns:style:1.0"
 xmlns:fo="urn:oasis:names:tc:opendocument:xmlns:xsl-fo-compatible:1.0"
 xmlns:number="urn:oasis:names:tc:opendocument:xmlns:datastyle:1.0"
 xmlns:of="urn:oasis:names:tc:opendocument:xmlns:of:1.2"
 xmlns:table="urn:oasis:names:tc:opendocument:xmlns:table:1.0"
 xmlns:text="urn:oasis:names:tc:opendocument:xmlns:text:1.0"><office:automatic-styles>
<number:date-style style:name="day"><number:day/><number:text>.</number:text><number:month/>
<number:text>.</number:text><number:year number:style="long"/></number:date-style>
<number:number-style style:name="unit"><number:number number:decimal-places="2"
 number:min-integer-digits="1"/><number:text> mmol/mol</number:text></number:number-style>
<style:style style:name="date" style:family="table-cell" style:data-style-name="day"/>
<style:style style:name="styled" style:family="table-cell" style:data-style-name="unit"/>
<style:style style:name="bold" style:family="text">
<style:text-properties fo:font-weight="bold"/></style:style>
</office:automatic-styles><office:body><office:spreadsheet><table:table table:name="Patients">"""
TAIL = "</table:table></office:spreadsheet></office:body></office:document>"


def paragraphs(text):
    spaced = escape(text).replace("  ", " <text:s/>")
    if spaced.startswith(" "):
        spaced = "<text:s/>" + spaced[1:]
    if spaced.endswith(" "):
        spaced = spaced[:-1] + "<text:s/>"
    return "".join(f"<text:p>{line}</text:p>" for line in spaced.split("\n"))


def cell(kind, content):
    if kind in ("number", "styled"):
        return f'<table:table-cell table:style-name="{kind}" office:value-type="float" office:value="{content}"/>'
    if kind == "boolean":
        return f'<table:table-cell office:value-type="boolean" office:boolean-value="{content}"/>'
    if kind == "date":
        return f'<table:table-cell table:style-name="date" office:value-type="date" office:date-value="{content}"/>'
    if kind == "formula":
        formula = quoteattr("of:=" + content.split(" ", 1)[1])
        return f"<table:table-cell table:formula={formula}/>"
    if kind == "error":
        return '<table:table-cell table:formula="of:=NA()"/>'
    if kind == "rich":
        first, second = content.split("|")
        return (
            '<table:table-cell office:value-type="string"><text:p><text:span text:style-name="bold">'
            f"{escape(first)}</text:span>{escape(second)}</text:p></table:table-cell>"
        )
    return f'<table:table-cell office:value-type="string">{paragraphs(content)}</table:table-cell>'


with tempfile.TemporaryDirectory() as folder:
    source = os.path.join(folder, "libreoffice.fods")
    with open(source, "w", encoding="utf-8") as out:
        out.write(HEAD)
        for fields in cells.rows():
            out.write("<table:table-row>")
            out.write("".join(cell(*f) if f else "<table:table-cell/>" for f in fields))
            out.write("</table:table-row>")
        out.write(TAIL)
    subprocess.run(
        ["soffice", f"-env:UserInstallation=file://{folder}/profile", "--headless",
         "--convert-to", "xlsx:Calc MS Excel 2007 XML", "--outdir", cells.FOLDER, source],
        check=True, stdout=subprocess.DEVNULL)
