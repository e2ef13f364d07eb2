#!/usr/bin/env python3
"""Checks that the reports stand alone and are well formed, with a parser that is not ours.

usage: check_html.py PROGRAM    PROGRAM FOLDER writes samples into the folder

In each document every tag is closed, in order; ids are unique and local links lead to them; nothing is fetched from
elsewhere and no script runs; numbers of drawings are finite; drawings are well-formed XML; each table's rows have as many
cells as its head. A sample with hostile names shows them as text. A document that breaks each rule is shown to the check
first, which has to complain.
"""

import html.parser
import pathlib
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree

VOID = {"meta", "br", "hr", "img", "link", "input"}
FETCHING = {"src", "srcset", "data", "poster", "action", "xlink:href", "background"}
HOSTILE = "</title></style><script>alert('x')</script> & \"quoted\" --> ]]> \ufffd\ufffd"
NUMBERS = {"x", "y", "width", "height", "cx", "cy", "r", "d", "viewbox", "transform"}


class Checker(html.parser.HTMLParser):
    def __init__(self):
        super().__init__(convert_charrefs=True)
        self.open, self.complaints, self.ids, self.links, self.text = [], [], [], [], {}
        self.cells, self.columns = 0, None
        self.tags = {}

    def complain(self, what):
        self.complaints.append(f"line {self.getpos()[0]}: {what}")

    def handle_starttag(self, tag, attributes):
        self.look_at(tag, attributes)
        if tag not in VOID:
            self.open.append(tag)

    def handle_startendtag(self, tag, attributes):
        self.look_at(tag, attributes)
        if "svg" not in self.open:
            self.complain(f"<{tag}/> closes itself outside a drawing")

    def look_at(self, tag, attributes):
        self.tags[tag] = self.tags.get(tag, 0) + 1
        if tag in {"script", "link", "iframe", "object", "embed", "base", "foreignobject"}:
            self.complain(f"<{tag}>")
        names = [name for name, _ in attributes]
        if len(set(names)) != len(names):
            self.complain(f"<{tag}> has an attribute twice")
        for name, value in attributes:
            if name.startswith("on") or name in FETCHING:
                self.complain(f"<{tag} {name}>")
            if name == "id":
                self.ids.append(value)
            if name == "href":
                self.links.append(value)
            if name in NUMBERS and re.search(r"nan|inf|e[+-]?\d", value, re.IGNORECASE):
                self.complain(f"<{tag} {name}={value!r}>")
        if tag == "tr":
            self.cells = 0
        if tag in {"td", "th"}:
            self.cells += 1
        if tag == "table":
            self.columns = None

    def handle_endtag(self, tag):
        if not self.open or self.open[-1] != tag:
            self.complain(f"</{tag}> where {self.open[-1:]} is open")
        if tag in self.open:
            while self.open.pop() != tag:
                pass
        if tag == "tr":
            if self.columns is not None and self.columns != self.cells:
                self.complain(f"a row of {self.cells} cells in a table of {self.columns}")
            self.columns = self.cells

    def handle_data(self, data):
        if self.open:
            self.text.setdefault(self.open[-1], []).append(data)

    def finish(self):
        self.close()
        if self.open:
            self.complain(f"{self.open} are still open at the end")
        if len(set(self.ids)) != len(self.ids):
            self.complain("an id stands twice")
        for link in self.links:
            if not link.startswith("#") or link[1:] not in self.ids:
                self.complain(f"a link to {link!r}")


def complaints_of(document):
    checker = Checker()
    checker.feed(document)
    checker.finish()
    complaints = checker.complaints
    styles = "".join(checker.text.get("style", []))
    if re.search(r"@import|url\(", styles):
        complaints.append("the style sheet fetches something")
    if styles.count("{") != styles.count("}"):
        complaints.append("the style sheet's braces do not balance")
    if not document.startswith("<!DOCTYPE html>\n"):
        complaints.append("no document type")
    for drawing in re.findall(r"<svg class=\"plot\".*?</svg>\n</svg>", document, re.DOTALL):
        try:
            xml.etree.ElementTree.fromstring(drawing)
        except xml.etree.ElementTree.ParseError as error:
            complaints.append(f"a drawing is no XML: {error}")
    return complaints, checker


def has_hostile_names(checker):
    """Every place where a name can stand shows it as text: title, headings, table, legend, list."""
    places = ("title", "h1", "h2", "h3", "th", "td", "li", "p", "span", "a")
    return [place for place in places if not any(HOSTILE in text for text in checker.text.get(place, []))]


def main():
    # The check itself: each of these has to be found.
    good = "<!DOCTYPE html>\n<p id=\"a\"><a href=\"#a\">b</a></p>"
    assert not complaints_of(good)[0]
    for bad in ("<b><i></b></i>", "<p>", "</p>", "<script></script>", "<img src=\"x\">", "<a href=\"http://x\">x</a>",
                "<a href=\"#nowhere\">x</a>", "<p id=\"a\"></p>", "<p onclick=\"x\"></p>", "<svg><path d=\"Mnan 1\"/></svg>",
                "<table><tr><td></td></tr><tr></tr></table>", "<style>a { b: url(x) }</style>", "<style>a {</style>",
                "<svg class=\"plot\"><svg></br></svg>\n</svg>", "<div/>"):
        if not complaints_of(good + bad)[0]:
            sys.exit(f"check_html.py does not find: {bad}")

    failed = False
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run([sys.argv[1], folder], check=True)
        documents = sorted(pathlib.Path(folder).glob("*.html"))
        if len(documents) < 4:
            sys.exit(f"only {len(documents)} samples")
        for path in documents:
            complaints, checker = complaints_of(path.read_bytes().decode("utf-8"))
            if path.stem == "hostile":
                complaints += [f"the hostile name is not shown in <{place}>" for place in has_hostile_names(checker)]
            if path.stem != "empty" and checker.tags.get("svg", 0) < 4:
                complaints.append("no drawings")
            for complaint in complaints:
                print(f"{path.name}: {complaint}")
            failed = failed or bool(complaints)
            print(f"{path.name}: {sum(checker.tags.values())} tags, {len(complaints)} complaints")
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
