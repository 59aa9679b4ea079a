#!/usr/bin/env python3
"""Holds the built site to its links.

    scripts/site_links.py FOLDER     fails if a link, an anchor or a picture of a page leads nowhere, or if no way leads from the first
                                     page to another

The pages that doxygen makes, under reference/cpp, are led to but not looked into.
"""

import html.parser
import pathlib
import sys
import urllib.parse


class Page(html.parser.HTMLParser):
    """What a page links to, and the anchors in it."""

    def __init__(self, path):
        super().__init__()
        self.targets, self.anchors = set(), set()
        self.feed(path.read_text("utf-8"))

    def handle_starttag(self, tag, attrs):
        attributes = dict(attrs)
        self.anchors |= {attributes[name] for name in ("id", "name") if attributes.get(name)}
        for name in ("href", "src"):
            if attributes.get(name) and tag != "base":
                self.targets.add(attributes[name])


def faults_of(path, page, pages, reached):
    """The targets of a page that are not there; the pages that it leads to are added to `reached`."""
    faults = []
    for target in sorted(page.targets):
        url = urllib.parse.urlsplit(target)
        if url.scheme or url.netloc:
            continue
        file = path if not url.path else (path.parent / urllib.parse.unquote(url.path)).resolve()
        if file.is_dir():
            file = file / "index.html"
        anchor = urllib.parse.unquote(url.fragment)
        if not file.exists() or (anchor and file in pages and anchor not in pages[file].anchors):
            faults.append(f"{path}: {target} leads nowhere")
        reached.add(file)
    return faults


def main():
    """Checks; the exit status is 1 if something is wrong."""
    site = pathlib.Path(sys.argv[1]).resolve()
    skipped = {site / "404.html"}
    files = [file for file in sorted(site.rglob("*.html")) if file not in skipped and site / "reference" / "cpp" not in file.parents]
    pages = {file: Page(file) for file in files}
    faults, reached, waiting = [], {site / "index.html"}, [site / "index.html"]
    while waiting:
        before = set(reached)
        path = waiting.pop()
        faults += faults_of(path, pages[path], pages, reached)
        waiting += sorted(file for file in reached - before if file in pages)
    faults += [f"{file}: nothing leads to it" for file in files if file not in reached]
    print("\n".join(faults), end="\n" if faults else "")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
