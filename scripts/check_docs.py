#!/usr/bin/env python3
"""Compares the project's Markdown pages with what they talk about, and tells where they differ.

    check_docs.py ROOT COMPILED, the project's folder and the compile_commands.json of its examples

Every relative link leads to a file, and to a heading in it where it names one. Every fenced sample
follows a line `<!-- from PATH -->` and stands in that file; what is C++ there is compiled. A path
or test that is named as code exists, and so does what has a name like the library's. A message of
the diagnostics that is quoted as code, with … for what differs, is made of texts in the sources.
docs/configuration.md names every element, attribute, class and param that the configurator knows,
docs/check.md every rule of the check. A folder of the library includes only those that its README
names behind "May include".
"""

import json
import re
import subprocess
import sys
import textwrap
from pathlib import Path

SAMPLE_PLACES = ("examples/", "tests/packaging/")
LANGUAGES = ("cpp", "xml", "cmake", "text")
SAMPLE = re.compile(r"<!-- from (\S+) -->")
FENCE = re.compile(r"( *)```(.*)")
HEADING = re.compile(r"#{1,6} +(.+?)[ #]*")
CODE = re.compile(r"(`+)(.+?)\1")
LINK = re.compile(r"!?\[(?:[^\[\]]|!?\[[^\]]*\]\([^)]*\))*\]\(<?([^()\s>]+)>?(?: +\"[^\"]*\")?\)")
INNER_IMAGE = re.compile(r"!\[[^\]]*\]\(([^()\s]+)\)")
DEFINED_LINK = re.compile(r" {0,3}\[[^\]]+\]: +<?([^\s>]+)>?")
OUTSIDE = re.compile(r"[a-z][a-z0-9+.-]*:|//")
TEST_NAME = re.compile(r"([A-Z][A-Za-z0-9]*)\.(\*|[A-Z][A-Za-z0-9]+)")
TEST_MACRO = re.compile(r"^(?:TYPED_)?TEST(?:_[FP])?\(\s*(\w+),\s*(\w+)\)", re.MULTILINE)
# A test that is no C++; a part of its name may be a variable of CMake's.
NAMED_TEST = re.compile(r"\bNAME\s+([A-Z]\w*)\.(\w*)")
DIAGNOSTICS = re.compile(r"log4zeb:(?:ERROR|WARN)? (.+)")
LITERAL = re.compile(r'"((?:[^"\\\n]|\\.)*)"')
# Classes, macros, constants and options of the library; those of glog begin with LOG_.
NAME = re.compile(r"\b(?:LOG4ZEB_|LOG[A-Za-z]|ZEB[A-Z]|I18N[A-Z])\w+\b(?!\*)")
NAMES_OF_READERS = ("LOGNewAppender",)
# The page that describes what is known: names of elements and attributes, of classes, of params;
# rules of the check.
KNOWN_NAMES = (
    ("docs/configuration.md", "config/LOGDOMConfigurator.cpp",
     r'I18NString LOGDOMConfigurator::[A-Z0-9_]+ = "(.+)";'),
    ("docs/configuration.md", "config/LOGComponentFactory.cpp", r'\{"\w+", "(\w+)", makeNew<'),
    ("docs/configuration.md", "config/LOGParameterTable.cpp", r'\{"\w+", "(\w+)", Kind::'),
    ("docs/check.md", "tools/*.cpp", r'\b(?:warn\(\s*|add\(\{(?:true|false), )"([a-z-]+)"'),
)
# Folders of the library, whose READMEs tell what they may include.
LAYERED = ("platform", "core", "rendering", "filters", "layouts", "appenders", "net", "config")
MAY_INCLUDE = re.compile(r"May include ([^.]+)\.")
INCLUDE = re.compile(r'^#include "(\w+)/', re.MULTILINE)
SHORTEST_LITERAL = 8  # of those that make up a message; shorter ones would make up any
# Stands for whatever the reader has, as NAME or `*` do.
VARIABLE = re.compile(r"[*<>{}]|\b[A-Z]{3,}\b(?!\.)|\.\.\.")


class Page:
    """A page by what it is made of, each with its line number."""

    def __init__(self, path):
        self.path = path
        self.fences = []    # line, language, PATH or None, text
        self.prose = []     # line, text with code
        self.indented = []  # line, text
        self.anchors = set()
        self.unfinished = None
        self._read(path.read_text(encoding="utf-8").splitlines())

    def _read(self, lines):
        fence, source, before, in_block = None, None, "", False
        for number, line in enumerate(lines, 1):
            match = FENCE.fullmatch(line)
            if fence:
                if match and not match[2]:
                    self.fences.append((fence[0], fence[1], fence[2], "\n".join(fence[3])))
                    fence = None
                else:
                    fence[3].append(line)
                before = ""
                continue
            if match:
                source = SAMPLE.fullmatch(before.strip())
                fence = (number, match[2], source and source[1], [])
                continue
            in_block = line.startswith("    ") and (in_block or not before) or (
                in_block and not line)
            if in_block:
                self.indented.append((number, line))
            else:
                self.prose.append((number, line))
                heading = HEADING.fullmatch(line)
                if heading:
                    self._add_anchor(heading[1])
            before = line
        if fence:
            self.unfinished = fence[0]

    def _add_anchor(self, heading):
        """Makes the heading's anchor as the usual forges do."""
        text = re.sub(r"!?\[([^\]]*)\]\([^)]*\)", r"\1", heading).replace("`", "")
        slug = re.sub(r"[^\w\- ]", "", text.lower()).replace(" ", "-")
        anchor, count = slug, 0
        while anchor in self.anchors:
            count += 1
            anchor = f"{slug}-{count}"
        self.anchors.add(anchor)

    def links(self):
        for number, text in self._paragraphs():
            for pattern in (LINK, INNER_IMAGE, DEFINED_LINK):
                for match in pattern.finditer(text):
                    yield number + text.count("\n", 0, match.start(1)), match[1]

    def _paragraphs(self):
        """The prose without code, lines that follow each other as one text: a link may be wrapped."""
        first, lines = 0, []
        for number, line in self.prose + [(0, "")]:
            if not line or number != first + len(lines):
                if lines:
                    yield first, "\n".join(lines)
                first, lines = number, []
            if line:
                lines.append(CODE.sub("`", line))

    def code_spans(self):
        for number, line in self.prose:
            for match in CODE.finditer(line):
                yield number, match[2].strip()


class Checker:
    def __init__(self, root, compiled):
        self.root = root
        self.compiled = {Path(entry["file"]).resolve() for entry in json.loads(
            compiled.read_text(encoding="utf-8"))}
        self.pages = {path: Page(path) for path in self._tracked("*.md")}
        self.folders = {path.relative_to(root).parts[0] for path in self._tracked("*/*")}
        self.tests = self._tests()
        self.literals = self._literals()
        self.names = self._names()
        self.findings = []
        self.counts = {"links": 0, "samples": 0, "paths": 0, "tests": 0, "names": 0,
                       "messages": 0}

    def _tracked(self, pattern):
        """The files of the project, whoever owns them, those included that are about to be."""
        names = subprocess.run(
            ["git", "-c", "safe.directory=*", "-C", self.root, "ls-files", "-z", "--cached",
             "--others", "--exclude-standard", "--", pattern],
            check=True, capture_output=True, text=True).stdout.split("\0")
        return [path for path in (self.root / name for name in names if name) if path.is_file()]

    def _tests(self):
        names = set()
        for source in self._tracked("tests/*.cpp"):
            names.update(TEST_MACRO.findall(source.read_text(encoding="utf-8")))
        names.update(NAMED_TEST.findall(
            (self.root / "tests/CMakeLists.txt").read_text(encoding="utf-8")))
        return names

    def _literals(self):
        """The texts in the library's sources, those in several parts made one."""
        found = set()
        for source in self._tracked("*.cpp") + self._tracked("*.h"):
            if source.relative_to(self.root).parts[0] not in ("tests", "bench", "fuzz", "tools"):
                text = re.sub(r'"\s*\n\s*"', "", source.read_text(encoding="utf-8"))
                found.update(LITERAL.findall(text))
        return found

    def _names(self):
        """The names that occur in sources, whether as code or in a text."""
        found = set()
        for pattern in ("*.cpp", "*.h", "*.in", "*CMakeLists.txt", "*.cmake"):
            for source in self._tracked(pattern):
                found.update(NAME.findall(source.read_text(encoding="utf-8")))
        return found

    def _complain(self, page, line, text):
        self.findings.append(f"{page.path.relative_to(self.root)}:{line}: {text}")

    def check(self):
        for page in self.pages.values():
            if page.unfinished:
                self._complain(page, page.unfinished, "the fence is not closed")
            for line, target in page.links():
                self._check_link(page, line, target)
            for line, language, source, text in page.fences:
                self._check_sample(page, line, language, source, text)
            for line, code in page.code_spans():
                self._check_test(page, line, code)
                self._check_names(page, line, code)
                self._check_paths(page, line, code)
                self._check_message(page, line, code)
            for line, text in page.indented:
                self._check_paths(page, line, text)
        self._check_references()
        self._check_includes()
        return self.findings

    def _check_link(self, page, line, target):
        if OUTSIDE.match(target):
            return
        self.counts["links"] += 1
        name, _, anchor = target.partition("#")
        path = (page.path.parent / name).resolve() if name else page.path
        if not path.is_relative_to(self.root) or not path.exists():
            self._complain(page, line, f"the link {target} leads nowhere")
        elif anchor and (path not in self.pages or anchor not in self.pages[path].anchors):
            self._complain(page, line, f"the link {target} leads to no heading")

    def _check_sample(self, page, line, language, source, text):
        self.counts["samples"] += 1
        if language not in LANGUAGES:
            self._complain(page, line, f"a sample is one of {', '.join(LANGUAGES)}, not "
                                       f"'{language}'")
        if source is None:
            self._complain(page, line, "the sample does not say where it is from")
            return
        path = self.root / source
        if not source.startswith(SAMPLE_PLACES) or not path.is_file():
            self._complain(page, line, f"no file for samples: {source}")
            return
        if not stands_in(text, path.read_text(encoding="utf-8")):
            self._complain(page, line, f"the sample does not stand in {source}")
        if language == "cpp" and not self._is_compiled(path):
            self._complain(page, line, f"nothing compiles {source}")

    def _is_compiled(self, path):
        """Whether it is a source of a target, or a header that such a source in its folder takes."""
        if path.suffix != ".h":
            return path.resolve() in self.compiled
        include = re.compile(rf'^#include "(?:[\w/]*/)?{re.escape(path.name)}"', re.MULTILINE)
        return any(other.resolve() in self.compiled and
                   include.search(other.read_text(encoding="utf-8"))
                   for other in path.parent.glob("*.cpp"))

    def _check_test(self, page, line, code):
        match = TEST_NAME.fullmatch(code)
        if match is None:
            return
        self.counts["tests"] += 1
        suite, name = match.groups()
        if not any(suite == known and name in ("*", test) for known, test in self.tests):
            self._complain(page, line, f"there is no test {code}")

    def _check_names(self, page, line, code):
        for name in NAME.findall(code):
            self.counts["names"] += 1
            if name not in self.names and name not in NAMES_OF_READERS:
                self._complain(page, line, f"nothing is named {name}")

    def _check_references(self):
        for where, sources, pattern in KNOWN_NAMES:
            page = self.pages[self.root / where]
            named = {word for _, code in page.code_spans() for word in re.split(r"[^\w:-]+", code)}
            known = {word for source in self._tracked(sources)
                     for word in re.findall(pattern, source.read_text(encoding="utf-8"))}
            if not known:
                self._complain(page, 1, f"nothing to compare with is found in {sources}")
            for word in sorted(known - named):
                self._complain(page, 1, f"{sources} knows {word}, which is not described")

    def _check_includes(self):
        for folder in LAYERED:
            page = self.pages[self.root / folder / "README.md"]
            text = MAY_INCLUDE.search(page.path.read_text(encoding="utf-8"))
            allowed = {folder} | set(re.findall(r"`(\w+)`", text[1] if text else ""))
            for source in self._tracked(f"{folder}/*.h") + self._tracked(f"{folder}/*.cpp"):
                for other in set(INCLUDE.findall(source.read_text(encoding="utf-8"))) - allowed:
                    self._complain(page, 1, f"{source.relative_to(self.root)} includes {other}")

    def _check_message(self, page, line, code):
        match = DIAGNOSTICS.fullmatch(code)
        if match is None:
            return
        self.counts["messages"] += 1
        for part in match[1].split("…"):
            if part and not self._is_made_of_literals(part):
                self._complain(page, line, f"the diagnostics do not say '{part}'")

    def _is_made_of_literals(self, text):
        return text in self.literals or any(
            text.startswith(literal) and self._is_made_of_literals(text[len(literal):])
            for literal in self.literals if len(literal) >= SHORTEST_LITERAL)

    def _check_paths(self, page, line, code):
        """Looks for each word that begins with a folder of the project."""
        for word in re.split(r"[\s'\"=,;()]+", code):
            word = re.sub(r"^(\.\.?/)+", "", word).rstrip(".:")
            if word.split("/")[0] not in self.folders or "/" not in word or VARIABLE.search(word):
                continue
            self.counts["paths"] += 1
            if not (self.root / word).exists() and not (page.path.parent / word).exists():
                self._complain(page, line, f"there is no {word}")


def stands_in(text, whole):
    """Whether the lines of the text follow each other in the whole, however far they are indented."""
    wanted = textwrap.dedent(text).rstrip().splitlines()
    lines = whole.splitlines()
    for first in range(len(lines) - len(wanted) + 1):
        found = textwrap.dedent("\n".join(lines[first:first + len(wanted)])).splitlines()
        if [line.rstrip() for line in found] == [line.rstrip() for line in wanted]:
            return bool(wanted)
    return False


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    checker = Checker(Path(sys.argv[1]).resolve(), Path(sys.argv[2]))
    findings = checker.check()
    for finding in findings:
        print(finding, file=sys.stderr)
    counted = ", ".join(f"{count} {what}" for what, count in checker.counts.items())
    print(f"{len(checker.pages)} pages: {counted}")
    sys.exit(1 if findings else 0)


if __name__ == "__main__":
    main()
