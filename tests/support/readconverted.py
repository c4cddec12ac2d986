#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Reads a workbook with a spreadsheet program and compares its cells with an expectation.

usage: readconverted.py PROGRAM WORKBOOK EXPECTATION

PROGRAM is ssconvert (Gnumeric) or soffice (LibreOffice); it converts the workbook into its own
format, where each cell says whether it is a text or a number. The expectation is a JSON list of
sheets: name and cells as [row, column, value]. Prints "ok", or one line a difference and ends
with 1.
"""
import gzip
import json
import os
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree

GNUMERIC = "{http://www.gnumeric.org/v10.dtd}"
OFFICE = "{urn:oasis:names:tc:opendocument:xmlns:office:1.0}"
TABLE = "{urn:oasis:names:tc:opendocument:xmlns:table:1.0}"
SHEETS = f"{OFFICE}body/{OFFICE}spreadsheet"
TEXT = "{urn:oasis:names:tc:opendocument:xmlns:text:1.0}"


def gnumeric_sheets(path):
    with gzip.open(path) as file:
        root = ElementTree.parse(file).getroot()
    for sheet in root.iter(GNUMERIC + "Sheet"):
        cells = {}
        for cell in sheet.iter(GNUMERIC + "Cell"):
            text = cell.text or ""
            kind = cell.get("ValueType")
            value = {"60": text, "40": None}.get(kind, f"a cell of type {kind}")
            position = int(cell.get("Row")) + 1, int(cell.get("Col")) + 1
            cells[position] = float(text) if value is None else value
        yield sheet.find(GNUMERIC + "Name").text, cells


def paragraph_text(node):
    """The text of a paragraph, with the elements that stand for white space."""
    parts = [node.text or ""]
    for child in node:
        if child.tag == TEXT + "s":
            parts.append(" " * int(child.get(TEXT + "c", "1")))
        elif child.tag == TEXT + "tab":
            parts.append("\t")
        elif child.tag == TEXT + "line-break":
            parts.append("\n")
        else:
            parts.append(paragraph_text(child))
        parts.append(child.tail or "")
    return "".join(parts)


def libreoffice_value(cell):
    kind = cell.get(OFFICE + "value-type")
    if kind == "float":
        return float(cell.get(OFFICE + "value"))
    if kind != "string":
        return f"a cell of type {kind}"
    return "\n".join(paragraph_text(paragraph) for paragraph in cell.findall(TEXT + "p"))


def libreoffice_sheets(path):
    # Charts have tables of their own, further in.
    for sheet in ElementTree.parse(path).getroot().find(SHEETS):
        if sheet.tag != TABLE + "table":
            continue
        cells = {}
        row = 0
        for line in sheet.findall(TABLE + "table-row"):
            column = 0
            for cell in line.findall(TABLE + "table-cell"):
                if cell.get(OFFICE + "value-type") is not None:
                    for further in range(int(cell.get(TABLE + "number-columns-repeated", "1"))):
                        cells[row + 1, column + 1 + further] = libreoffice_value(cell)
                column += int(cell.get(TABLE + "number-columns-repeated", "1"))
            row += int(line.get(TABLE + "number-rows-repeated", "1"))
        yield sheet.get(TABLE + "name"), cells


def converted(program, workbook, folder):
    """The sheets as the program reads them."""
    if program == "ssconvert":
        target = os.path.join(folder, "book.gnumeric")
        command = ["ssconvert", workbook, target]
        read = gnumeric_sheets
    else:
        name = os.path.splitext(os.path.basename(workbook))[0]
        target = os.path.join(folder, name + ".fods")
        command = ["soffice", f"-env:UserInstallation=file://{folder}/profile", "--headless",
                   "--convert-to", "fods", "--outdir", folder, workbook]
        read = libreoffice_sheets
    run = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    if run.returncode != 0 or not os.path.exists(target):
        sys.exit(f"{program} does not read the workbook: {run.stdout.decode()}")
    return list(read(target))


def same(found, wanted, digits):
    """Whether a cell holds what it should, a number to so many digits."""
    if isinstance(found, float) and isinstance(wanted, float):
        return f"{found:.{digits}g}" == f"{wanted:.{digits}g}"
    return type(found) is type(wanted) and found == wanted


def differences(sheets, expectation, digits):
    names = [sheet["name"] for sheet in expectation]
    if [name for name, _ in sheets] != names:
        yield f"sheets: {[name for name, _ in sheets]}"
        return
    for (name, found), expected in zip(sheets, expectation):
        wanted = {(row, column): value if isinstance(value, str) else float(value)
                  for row, column, value in expected["cells"]}
        for position in sorted(set(wanted) | set(found)):
            if not same(found.get(position), wanted.get(position), digits):
                yield (f"{name} {position}: {found.get(position)!r:.100} instead of "
                       f"{wanted.get(position)!r:.100}")


def main():
    program, workbook, expectation_file = sys.argv[1:]
    with open(expectation_file, encoding="utf-8") as file:
        expectation = json.load(file)
    with tempfile.TemporaryDirectory() as folder:
        sheets = converted(program, workbook, folder)
    # LibreOffice writes 15 digits into its own format, whatever it has read.
    found = list(differences(sheets, expectation, 15 if program == "soffice" else 17))
    print("\n".join(found) if found else "ok")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
