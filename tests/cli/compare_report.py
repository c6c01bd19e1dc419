"""compare_report.py SHOWN.csv STORED.csv REPORT.txt

Compares the text of a printed report (pdftotext -layout) with what varnlogctl lists of the same selection, row by row.
"""
import csv
import sys


def without_leading_zeros(date):
    day, month, year = date.split('.')
    return f'{int(day)}.{int(month)}.{year}'


def as_reported(row, stamp):
    """A row of the list as the report shows it: its own order of columns, the time beside the date, birth dates
    without leading zeros, and an unknown pregnancy in words."""
    time = '' if stamp.endswith(' 00:00:00') else stamp[10:]
    name, birth = row[2].rsplit('*', 1)
    patient = f'{name}*{without_leading_zeros(birth)}'
    columns = [row[0], row[1] + time, patient, row[3] or 'Unbekannt', row[11]] + row[4:9] + [row[10], row[12], row[9]]
    return ' '.join(' '.join(columns).split())


def reported_rows(text):
    """The lines of each row; one whose comment wraps has several."""
    rows = []
    for page in text.split('\f'):
        in_rows = False
        for line in page.splitlines():
            line = ' '.join(line.split())
            if line.startswith(('Gedruckt:', 'Anzahl der Aufnahmen:')):
                break
            if line.startswith(f'{len(rows) + 1} '):
                rows.append([])
                in_rows = True
            if in_rows and line:
                rows[-1].append(line)
    return rows


def main(shown, stored, report):
    with open(shown, encoding='utf-8', newline='') as file:
        rows = list(csv.reader(file))[1:]
    with open(stored, encoding='utf-8', newline='') as file:
        stamps = [row[7] for row in list(csv.reader(file))[1:]]
    with open(report, encoding='utf-8') as file:
        reported = reported_rows(file.read())
    assert len(reported) == len(rows) > 0, f'{len(reported)} rows reported, {len(rows)} listed'
    for row, stamp, lines in zip(rows, stamps, reported):
        expected = as_reported(row, stamp)
        if len(lines) == 1:
            assert lines[0] == expected, f'{lines[0]}\n{expected}'
        else:  # the words of the columns that wrap stand among each other
            assert sorted(''.join(lines).replace(' ', '')) == sorted(expected.replace(' ', '')), f'{lines}\n{expected}'


main(*sys.argv[1:])
