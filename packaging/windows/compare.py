#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""compare.py <folder> <other folder>: fails unless both hold the same saved results.

Workbooks must agree cell for cell, in value and kind; the page in its texts. Lines and places of
the page hang on the fonts of the system, so what differs there is only told.
"""

import pathlib
import sys
import xml.etree.ElementTree as ElementTree

import openpyxl

WORKBOOKS = ("data.xlsx", "analysis.xlsx")
PAGE = "page.svg"


def cells(path):
    """(sheet, row, column) -> (kind, value) of all cells that hold something."""
    workbook = openpyxl.load_workbook(path)
    return {
        (sheet.title, cell.row, cell.column): (cell.data_type, cell.value)
        for sheet in workbook.worksheets
        for row in sheet.iter_rows()
        for cell in row
        if cell.value is not None
    }


def elements(path):
    """Tag, attributes and text of each element of the page, in order."""
    return [
        (element.tag.rsplit("}", 1)[-1], dict(element.attrib), (element.text or "").strip())
        for element in ElementTree.parse(path).iter()
    ]


def compare_workbooks(one, other):
    ours, theirs = cells(one), cells(other)
    different = [
        place for place in sorted(ours.keys() | theirs.keys()) if ours.get(place) != theirs.get(place)
    ]
    print(f"{one.name}: {len(ours)} cells, {len(different)} differ")
    for place in different[:10]:
        print(f"    {place}: {ours.get(place)} here, {theirs.get(place)} there")
    return bool(ours) and not different


def compare_pages(one, other):
    ours, theirs = elements(one), elements(other)
    texts = [[text for tag, _, text in page if tag == "text"] for page in (ours, theirs)]
    same = sum(element == counterpart for element, counterpart in zip(ours, theirs))
    print(f"{one.name}: {len(texts[0])} texts, {'the same' if texts[0] == texts[1] else 'DIFFERENT'};"
          f" {same} of {len(ours)} elements the same, there {len(theirs)}")
    return bool(texts[0]) and texts[0] == texts[1]


def main():
    here, there = map(pathlib.Path, sys.argv[1:3])
    well = [compare_workbooks(here / name, there / name) for name in WORKBOOKS]
    well.append(compare_pages(here / PAGE, there / PAGE))
    return 0 if all(well) else 1


if __name__ == "__main__":
    sys.exit(main())
