#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""guide.py <guide.md> <guide.html>: the guide as one page that every browser shows."""

import pathlib
import sys

import markdown

PAGE = """<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>Glymark: user guide</title>
<style>
:root {{ color-scheme: light dark; }}
body {{ max-width: 50em; margin: 2em auto; padding: 0 1em; font: 16px/1.5 sans-serif; }}
img {{ max-width: 100%; height: auto; }}
.wide {{ overflow-x: auto; margin: 1em 0; }}
table {{ border-collapse: collapse; }}
th, td {{ border: 1px solid #999; padding: 0.2em 0.6em; text-align: left; vertical-align: top; }}
code, pre {{ background: #8882; }}
pre {{ overflow-x: auto; padding: 0.5em; }}
pre code {{ background: none; }}
blockquote {{ margin: 0 0 0 1em; padding-left: 1em; border-left: 0.2em solid #999; }}
</style>
</head>
<body>
{body}
</body>
</html>
"""

source, page = map(pathlib.Path, sys.argv[1:3])
body = markdown.markdown(
    source.read_text(encoding="utf-8"), extensions=["tables", "toc", "fenced_code", "sane_lists"]
)
# On a narrow screen a wide table scrolls by itself.
body = body.replace("<table>", '<div class="wide">\n<table>').replace("</table>", "</table>\n</div>")
page.write_text(PAGE.format(body=body), encoding="utf-8")
