"""Reads an export with the readers that others have and compares it, value by value, with
`varnlogctl list --display --format json`. Prints the number of rows and the types of a workbook's second row."""
import csv
import datetime
import json
import sys

listed, exported = sys.argv[1:]
with open(listed, encoding="utf-8") as file:
    rows = json.load(file)


def shown(cell, listed_text):
    """A cell of a workbook as the program shows it; a number has the separator that the list has."""
    if cell.data_type == "f":
        return "a formula"
    if cell.value is None or isinstance(cell.value, str):
        return cell.value or ""
    if isinstance(cell.value, datetime.datetime):
        return cell.value.strftime("%d.%m.%Y")
    decimals = len(cell.number_format.partition(".")[2]) if cell.number_format.startswith("0") else 0
    text = f"{cell.value:.{decimals}f}"
    return text.replace(".", ",") if "," in listed_text else text


def harmless(text):
    """What a CSV file has in place of a text that a spreadsheet would run."""
    return "'" + text if len(text) > 1 and text[0] in "=+-@\t\r" else text


expected = [[str(value) for value in row.values()] for row in rows]
if exported.endswith(".json"):
    with open(exported, encoding="utf-8") as file:
        found = [[str(value) for value in row.values()] for row in json.load(file)]
elif exported.endswith(".csv"):
    with open(exported, encoding="utf-8-sig", newline="") as file:
        found = list(csv.reader(file, delimiter=";"))[1:]
    expected = [[harmless(text) for text in row] for row in expected]
else:
    import openpyxl

    sheet = openpyxl.load_workbook(exported).worksheets[0]
    cells = list(sheet.iter_rows())[1:]
    found = [[shown(*pair) for pair in zip(*rows)] for rows in zip(cells, expected)]
    print("".join(cell.data_type for cell in cells[0]), sheet.freeze_panes, sheet.auto_filter.ref)
for expected_row, found_row in zip(expected, found):
    if expected_row != found_row:
        sys.exit(f"{expected_row}\n{found_row}")
if len(expected) != len(found):
    sys.exit(f"{len(expected)} rows are listed, {len(found)} exported")
print(len(found), "rows")
