# SPDX-License-Identifier: GPL-3.0-or-later
"""The patients of patients.tsv, for the scripts in Python."""
import os

FOLDER = os.path.dirname(os.path.abspath(__file__))


def rows():
    """Rows of (kind, content) pairs; None for a blank cell."""
    with open(os.path.join(FOLDER, "patients.tsv"), encoding="utf-8") as lines:
        for line in lines:
            fields = line.rstrip("\n").split("\t")
            yield [tuple(f.replace("\\n", "\n").split(" ", 1)) if f else None for f in fields]


def number_or_text(content):
    """What a formula gives: a number where it looks like one."""
    try:
        return float(content)
    except ValueError:
        return content


def path(name):
    return os.path.join(FOLDER, name)
