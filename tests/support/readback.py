#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Reads workbooks with openpyxl and compares them with expectations.

Each line of the input is a JSON list of two files, a workbook and its expectation; the answer to it
is one line, a JSON list of what differs.

The expectation is a JSON list of sheets: name, cells as [row, column, value] and the ranges of the
chart's series. A sheet with series has one plain chart, the others have none.
"""
import json
import sys
import traceback
import warnings

import openpyxl

EMU_PER_PIXEL = 9525


def cells_of(sheet):
    return {(cell.row, cell.column): cell for row in sheet.iter_rows() for cell in row
            if cell.data_type != "n" or cell.value is not None}


def wrong_with(cell, expected):
    """What distinguishes a cell from a plain one with the expected value, or None."""
    text = isinstance(expected, str)
    value = "" if text and cell.value is None else cell.value
    if cell.data_type != ("s" if text else "n"):
        return f"type {cell.data_type} ({cell.value!r}) instead of {expected!r}"
    if isinstance(value, str) != text or value != expected:
        return f"{value!r} instead of {expected!r}"
    if cell.number_format != "General" or cell.hyperlink or cell.font.b:
        return f"a format or a link on {value!r}"
    return None


def series_of(sheet):
    return [(type(chart).__name__, series.yVal.numRef.f)
            for chart in sheet._charts for series in chart.series]


def texts_of(title):
    """The texts of a title; openpyxl reads an empty one as "None"."""
    runs = [run for paragraph in title.tx.rich.p for run in paragraph.r or []] if title else []
    return [run.t for run in runs if run.t not in ("", "None")]


def wrong_with_chart(chart):
    """What distinguishes a chart from a plain one of the right size in the right place."""
    marker, extent = chart.anchor._from, chart.anchor.ext
    # The library writes its position as it is given, though the file counts from 0.
    if (marker.row, marker.col) != (2, 2):
        yield f"at row {marker.row}, column {marker.col}"
    if (extent.width, extent.height) != (1400 * EMU_PER_PIXEL, 500 * EMU_PER_PIXEL):
        yield f"of width {extent.width}, height {extent.height}"
    if chart.title is not None or chart.legend is not None:
        yield "with a title or a legend"
    # The library gives each axis a title without a text.
    for axis in (chart.x_axis, chart.y_axis):
        if texts_of(axis.title):
            yield f"with {texts_of(axis.title)} at an axis"
    if any(series.tx is not None for series in chart.series):
        yield "with a name of a series"
    if any(series.xVal is not None for series in chart.series):
        yield "with x values of a series"


def differences(workbook, expectation):
    names = [sheet["name"] for sheet in expectation]
    if workbook.sheetnames != names:
        yield f"sheets: {workbook.sheetnames}"
        return
    for expected in expectation:
        name = expected["name"]
        sheet = workbook[name]
        wanted = {(row, column): value for row, column, value in expected["cells"]}
        found = cells_of(sheet)
        for position in sorted(set(wanted) | set(found)):
            if position not in wanted:
                yield f"{name} {position}: too much {found[position].value!r}"
            elif position not in found:
                yield f"{name} {position}: missing {wanted[position]!r}"
            else:
                wrong = wrong_with(found[position], wanted[position])
                if wrong:
                    yield f"{name} {position}: {wrong}"
        if sheet.merged_cells.ranges or sheet.column_dimensions:
            yield f"{name}: merged cells or column widths"
        series = [("ScatterChart", where) for where in expected["series"]]
        if series_of(sheet) != series:
            yield f"{name}: series {series_of(sheet)} instead of {series}"
        if len(sheet._charts) != (1 if series else 0):
            yield f"{name}: {len(sheet._charts)} charts"
        for chart in sheet._charts:
            for wrong in wrong_with_chart(chart):
                yield f"{name}: a chart {wrong}"


def answer(workbook, expectation):
    try:
        with open(expectation, encoding="utf-8") as file:
            return list(differences(openpyxl.load_workbook(workbook), json.load(file)))
    except Exception:  # whatever the reader stumbles over
        return traceback.format_exc().splitlines()


def main():
    # What the reader would only warn of, the next program may take for damage.
    warnings.simplefilter("error")
    for line in sys.stdin:
        print(json.dumps(answer(*json.loads(line))), flush=True)


if __name__ == "__main__":
    main()
