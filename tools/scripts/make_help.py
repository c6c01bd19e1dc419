#!/usr/bin/env python3
"""make_help.py LANGUAGE SOURCES OUT: the help project of one language for Qt's help compiler.

SOURCES is resources/; its help/LANGUAGE/NAME.html are the pages, listed in their order in help/pages.txt. A page is
a <title>, a <meta name="keywords"> and what follows the heading. In it stand for themselves:

  {MN_MNU_FILE>MN_MNU_FILEOPEN}  captions of the program, from texts.tsv, without accelerators and dots
  {page:update}                  a link to a page, under that page's title
  <kbd>Ctrl+PgUp</kbd>           keys, under the names they have on keyboards of that country

Anything unknown or missing ends the run with a message, so that the build fails.
"""
import html
import pathlib
import re
import sys

COUNTRY = {"D": "de", "GB": "en", "E": "es", "I": "it", "F": "fr", "NL": "nl", "CYR": "ru"}


class Help:
    def __init__(self, language, sources):
        self.language = language
        self.folder = sources / "help" / language
        rows = (line.split("\t") for line in (sources / "texts.tsv").read_text("utf-8").splitlines())
        column = next(rows).index(language)
        self.texts = {row[0]: row[column] for row in rows}
        self.names = (sources / "help" / "pages.txt").read_text("utf-8").split()
        self.pages = {name: self.read(name) for name in self.names}
        keywords = [word for _, words, _ in self.pages.values() for word in words]
        self.need(len(set(keywords)) == len(keywords), "a keyword belongs to one page: " + ", ".join(
            sorted({word for word in keywords if keywords.count(word) > 1})))

    def need(self, condition, fault):
        if not condition:
            sys.exit(f"help {self.language}: {fault}")

    def read(self, name):
        file = self.folder / (name + ".html")
        self.need(file.is_file(), f"no page {name}.html")
        page = re.fullmatch(r'<title>(.+?)</title>\s*<meta name="keywords" content="(.+?)">\s*(.+)',
                            file.read_text("utf-8"), re.S)
        self.need(page, f"{name}.html needs title, keywords and text")
        self.need("href" not in page[3], f"{name}.html: links to pages are written {{page:NAME}}")
        return page[1], [word.strip() for word in page[2].split(",")], page[3]

    def caption(self, key):
        self.need(key in self.texts, f"no text {key}")
        return html.escape(re.sub(r"\s*(\.\.\.|[:!])$", "", self.texts[key].replace("&", "")))

    def word(self, match):
        content = match[1]
        if content.startswith("page:"):
            name = content.removeprefix("page:")
            self.need(name in self.pages, f"no page {name}")
            return f'<a href="{name}.html">{self.pages[name][0]}</a>'
        return "<b>" + " › ".join(self.caption(key) for key in content.split(">")) + "</b>"

    def key(self, match):
        return "<kbd>" + "+".join(self.texts.get("GL_KEY_" + key.upper(), key) for key in match[1].split("+")) + "</kbd>"

    def html(self, name):
        title, _, body = self.pages[name]
        body = body.replace("<th>", '<th align="left">')
        body = re.sub(r"\{([^}]*)\}", self.word, re.sub(r"<kbd>(.+?)</kbd>", self.key, body))
        return (f'<!DOCTYPE html>\n<html lang="{COUNTRY[self.language]}"><head><meta charset="utf-8">'
                f'<title>{title}</title><link rel="stylesheet" type="text/css" href="help.css">'
                f"</head>\n<body><h1>{title}</h1>\n{body}</body></html>\n")

    def project(self):
        sections = "".join(f'<section title="{self.pages[name][0]}" ref="{name}.html"/>\n' for name in self.names)
        keywords = "".join(f'<keyword name="{word}" ref="{name}.html"/>\n'
                           for name in self.names for word in self.pages[name][1])
        files = "".join(f"<file>{name}.html</file>\n" for name in self.names)
        return ('<?xml version="1.0" encoding="UTF-8"?>\n<QtHelpProject version="1.0"><namespace>varnlog</namespace>'
                f"<virtualFolder>help</virtualFolder><filterSection>\n<toc>\n{sections}</toc>\n"
                f"<keywords>\n{keywords}</keywords>\n<files>\n{files}<file>help.css</file>\n</files>\n"
                "</filterSection></QtHelpProject>\n")


def main():
    language, sources, out = sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
    pages = Help(language, sources)
    out.mkdir(parents=True, exist_ok=True)
    for name in pages.names:
        (out / (name + ".html")).write_text(pages.html(name), "utf-8")
    (out / "help.css").write_bytes((sources / "help" / "help.css").read_bytes())
    (out / "help.qhp").write_text(pages.project(), "utf-8")


main()
