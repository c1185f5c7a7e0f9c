"""Renders documents as one self-contained HTML page: pictures embedded, links between the documents resolved."""

import base64
import html
import re
import subprocess
from pathlib import Path

from .facts import PackagingError

STYLE = """\
body { max-width: 46rem; margin: 2rem auto; padding: 0 1rem; font: 16px/1.5 "Segoe UI", sans-serif; color: #222;
       background: #fff; overflow-wrap: break-word; }
h1, h2, h3 { line-height: 1.25; }
article + article { margin-top: 4rem; border-top: 1px solid #888; }
table { border-collapse: collapse; }
th, td { border: 1px solid #bbb; padding: .35rem .6rem; text-align: left; vertical-align: top; }
thead th:empty { display: none; }
code, pre { font-family: Consolas, monospace; font-size: 14px; }
pre { overflow-x: auto; padding: .8rem; background: #f2f2f2; }
img { max-width: 100%; }
a { color: #b02000; }
@media (prefers-color-scheme: dark) {
    body { color: #ddd; background: #0d0d0d; }
    th, td { border-color: #444; }
    pre { background: #1c1c1c; }
    a { color: #ff8c5a; }
}
"""


def html_of(document):
    """The HTML that cmark-gfm renders from a Markdown file."""
    command = ["cmark-gfm", "--unsafe", "-e", "table", "-e", "autolink", str(document)]
    return subprocess.run(command, capture_output=True, check=True).stdout.decode("utf-8")


def anchor(title):
    """The anchor of a heading: lower case, no punctuation, hyphens for blanks."""
    plain = html.unescape(re.sub(r"<[^>]+>", "", title))
    return re.sub(r"[^\w\- ]", "", plain.lower()).replace(" ", "-")


def picture_data(file):
    if file.suffix != ".png" or not file.exists():
        raise PackagingError(f"{file} is not a PNG picture")
    return "data:image/png;base64," + base64.b64encode(file.read_bytes()).decode("ascii")


def title_of(document):
    """The text of a document's first heading."""
    return re.search(r"<h1>(.*?)</h1>", html_of(document), re.S).group(1)


def article(document, documents):
    """One document's part of the page. Its anchors start with its name, because two documents may share a heading."""
    def anchor_of(file, part):
        return f"{file.stem}-{part}" if part else file.stem

    def heading(match):
        level, title = match.groups()
        return f'<h{level} id="{anchor_of(document, anchor(title))}">{title}</h{level}>'

    def picture(match):
        return f'src="{picture_data((document.parent / html.unescape(match.group(1))).resolve())}"'

    def link(match):
        target, text = html.unescape(match.group(1)), match.group(2)
        if re.match(r"[a-z]+:", target):
            return match.group(0)
        path, _, part = target.partition("#")
        file = (document.parent / path).resolve() if path else document
        if file not in documents:
            raise PackagingError(f"{document} links to {target}, which is not part of the page")
        # A reader of the page does not know the files' names.
        return f'<a href="#{anchor_of(file, part)}">{title_of(file) if text == path else text}</a>'

    def cell(match):
        return match.group(0).replace("\\", "\\<wbr>")

    body = re.sub(r"<h([1-6])>(.*?)</h\1>", heading, html_of(document), flags=re.S)
    body = re.sub(r'src="([^"]*)"', picture, body)
    body = re.sub(r'<a href="([^"]*)">(.*?)</a>', link, body, flags=re.S)
    # Let paths in tables break after backslashes. Otherwise one long path takes the whole width.
    body = re.sub(r"<td>.*?</td>", cell, body, flags=re.S)
    return f'<article id="{document.stem}">\n{body}</article>\n'


def check_anchors(page):
    """Raises PackagingError if a link within the page has no target."""
    anchors = set(re.findall(r'id="([^"]*)"', page))
    dead = [target for target in re.findall(r'href="#([^"]*)"', page) if target not in anchors]
    if dead:
        raise PackagingError(f"links without a target in the page: {', '.join(dead)}")


def make_page(title, documents):
    """The bytes of one HTML page of these Markdown files."""
    documents = [Path(document).resolve() for document in documents]
    articles = "".join(article(document, documents) for document in documents)
    page = (f'<!DOCTYPE html>\n<html lang="en">\n<head>\n<meta charset="utf-8">\n'
            f'<meta name="viewport" content="width=device-width">\n<title>{html.escape(title)}</title>\n'
            f"<style>\n{STYLE}</style>\n</head>\n<body>\n{articles}</body>\n</html>\n")
    check_anchors(page)
    return page.encode("utf-8")
