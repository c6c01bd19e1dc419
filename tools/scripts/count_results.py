"""Prints "PASSED FAILED" of a JUnit file; fails when it holds no test that ran."""

import os
import sys
import xml.etree.ElementTree as ElementTree


def main(path):
    if not os.path.exists(path):
        sys.exit("No test was run.")
    suite = ElementTree.parse(path).getroot()
    number = lambda name: int(suite.get(name, 0))
    failed = number("failures")
    passed = number("tests") - failed - number("skipped") - number("disabled")
    if passed + failed == 0:
        sys.exit("No test was run.")
    print(passed, failed)


main(sys.argv[1])
