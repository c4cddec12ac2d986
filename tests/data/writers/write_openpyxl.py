#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Writes the patients with openpyxl."""
import datetime

import openpyxl

import cells


def value(kind, content):
    if kind in ("number", "styled"):
        number = float(content)
        return int(number) if number.is_integer() else number
    if kind == "boolean":
        return content == "true"
    if kind == "date":
        return datetime.date.fromisoformat(content)
    if kind == "formula":
        return cells.number_or_text(content.split(" ", 1)[0])
    return content.replace("|", "") if kind == "rich" else content


book = openpyxl.Workbook()
sheet = book.active
sheet.title = "Patients"
for row, fields in enumerate(cells.rows(), 1):
    for column, field in enumerate(fields, 1):
        if field is None:
            continue
        cell = sheet.cell(row, column)
        cell.value = value(*field)
        if field[0] == "text":
            cell.data_type = "s"
        if field[0] == "styled":
            cell.number_format = '0.00 "mmol/mol"'
book.create_sheet("Notes")["A1"] = "none"
book.save(cells.path("openpyxl.xlsx"))
