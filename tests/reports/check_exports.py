#!/usr/bin/env python3
"""Reads report exports back the way other programs do.

Usage: check_exports.py DIR. DIR holds the export files and manifest.json, a list of
{"file", "format" ("csv", "tab" or "html"), "cells", "texts"}. Delimited files are
read with the csv module: every data line must have the header's cells, and every
expected value must come back as one whole cell. HTML files are parsed as a browser
does (html5lib): no element may come from the data, the head must declare UTF-8, and
every expected text must be in the document's text.
"""

import csv
import io
import json
import os
import sys

import html5lib

# Elements the test data spell out; none of them may become markup.
FORBIDDEN = ("script", "b", "i", "u", "x")


def normal(text):
    # Parsers hand back a line break as LF; the exports write CR LF.
    return text.replace("\r\n", "\n")


def check_delimited(case, data, failures):
    if case["format"] == "csv":
        reader = csv.reader(io.StringIO(data, newline=""), delimiter=",", strict=True)
    else:
        reader = csv.reader(io.StringIO(data, newline=""), delimiter="\t",
                            quoting=csv.QUOTE_NONE, strict=True)
    try:
        rows = list(reader)
    except csv.Error as e:
        failures.append(f"{case['file']}: not readable: {e}")
        return
    if len(rows) < 2:
        failures.append(f"{case['file']}: no data lines")
        return
    header = rows[0]
    # The summary kinds end their header with a separator: one empty cell more.
    width = len(header) - (1 if header[-1] == "" else 0)
    for number, row in enumerate(rows[1:], start=2):
        if len(row) != width:
            failures.append(f"{case['file']}: line {number} has {len(row)} cells, the header {width}: {row!r}")
    cells = {normal(cell) for row in rows for cell in row}
    for want in case["cells"]:
        if normal(want) not in cells:
            failures.append(f"{case['file']}: no cell holds {want!r}")


def check_html(case, data, failures):
    document = html5lib.parse(data, namespaceHTMLElements=False)
    for tag in FORBIDDEN:
        if document.find(".//" + tag) is not None:
            failures.append(f"{case['file']}: data became a <{tag}> element")
    declared = [m for m in document.iter("meta")
                if (m.get("http-equiv") or "").lower() == "content-type"
                and "charset=utf-8" in (m.get("content") or "").lower()]
    if not declared:
        failures.append(f"{case['file']}: the head does not declare UTF-8")
    text = normal("".join(document.itertext()))
    for want in case["texts"]:
        if normal(want) not in text:
            failures.append(f"{case['file']}: the text {want!r} does not show")


def main():
    folder = sys.argv[1]
    with open(os.path.join(folder, "manifest.json"), encoding="utf-8") as f:
        manifest = json.load(f)
    failures = []
    for case in manifest:
        with open(os.path.join(folder, case["file"]), "rb") as f:
            data = f.read().decode("utf-8")
        if case["format"] == "html":
            check_html(case, data, failures)
        else:
            check_delimited(case, data, failures)
    for failure in failures:
        print(failure)
    print(f"{len(manifest)} files checked, {len(failures)} problems")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
