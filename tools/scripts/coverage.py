"""Prints the lines that the tests covered, folder by folder, of a build with coverage counters."""

import collections
import json
import pathlib
import subprocess
import sys


def counted_lines(counters, root):
    """(file, line) -> times run, of all counter files together."""
    runs = collections.Counter()
    for start in range(0, len(counters), 50):
        command = ["gcov", "--json-format", "--stdout", *counters[start : start + 50]]
        output = subprocess.run(command, capture_output=True, text=True, check=True, cwd=root).stdout
        for document in filter(None, output.splitlines()):
            for file in json.loads(document)["files"]:
                path = (root / file["file"]).resolve()
                if path.is_relative_to(root):
                    for line in file["lines"]:
                        runs[path.relative_to(root), line["line_number"]] += line["count"]
    return runs


def main(build):
    root = pathlib.Path(__file__).resolve().parents[2]
    counters = sorted(str(path) for path in pathlib.Path(build).resolve().rglob("*.gcda"))
    if not counters:
        sys.exit("No coverage counters in " + build)
    totals = collections.defaultdict(lambda: [0, 0])
    for (path, _), times in counted_lines(counters, root).items():
        if path.parts[0] in ("tests", "build"):
            continue
        for folder in (str(path.parent), "all"):
            totals[folder][0] += 1
            totals[folder][1] += times > 0
    for folder, (lines, covered) in sorted(totals.items(), key=lambda item: (item[0] == "all", item[0])):
        print(f"{folder:24} {covered:6} of {lines:6} lines  {100 * covered / lines:5.1f} %")


main(sys.argv[1])
