"""The changes that script/mutants tries, found by rules.

C++ and Objective-C++ are read with clang's own parser, by the options that the build gives the compiler; the
information property list is read as text. A rule never needs to know whether its change compiles or makes sense.
"""

import dataclasses
import pathlib
import re
from collections.abc import Iterator

from clang.cindex import Cursor, CursorKind as Kind, Index, Token, TokenKind, TranslationUnit

ROOT = pathlib.Path(__file__).resolve().parents[2]
PRODUCT_FOLDERS = ("app", "ui", "detection", "removal", "licence")
PROPERTY_LIST = "resources/Info.plist.in"
COMPARISONS = {b"<": b"<=", b"<=": b"<", b">": b">=", b">=": b">", b"==": b"!=", b"!=": b"=="}
OPERATORS_WITH_OPERANDS_TO_SPARE = {b"&&", b"||", b"&", b"|", b"+"}
OPPOSITES = {"YES": b"NO", "NO": b"YES", "true": b"false", "false": b"true"}
FUNCTIONS = {Kind.FUNCTION_DECL, Kind.OBJC_INSTANCE_METHOD_DECL, Kind.OBJC_CLASS_METHOD_DECL}


@dataclasses.dataclass(frozen=True)
class Mutant:
    """One change of one file: the bytes from start to end become `text`."""

    file: str
    function: str  # or variable, or key of the property list
    rule: str
    shown: str
    start: int
    end: int
    text: bytes
    number: int = 1  # distinguishes the mutants of a file that otherwise have the same name

    @property
    def name(self) -> str:
        """A name that stays the same when other lines of the file change."""
        return f"{self.file} {self.function}: {self.rule}: {self.shown}{f' #{self.number}' * (self.number > 1)}"


def applied(mutants: list[Mutant]) -> bytes:
    """Returns the contents of a file with changes that do not overlap."""
    data = (ROOT / mutants[0].file).read_bytes()
    for mutant in sorted(mutants, key=lambda mutant: -mutant.start):
        data = data[:mutant.start] + mutant.text + data[mutant.end:]
    return data


def files() -> list[str]:
    """Returns the files of the product that are changed."""
    sources = [path for folder in PRODUCT_FOLDERS for path in (ROOT / folder).iterdir()
               if path.suffix in (".mm", ".cpp", ".hpp")]
    return sorted(str(path.relative_to(ROOT)) for path in sources) + [PROPERTY_LIST]


def mutants(file: str, options: list[str]) -> list[Mutant]:
    """Returns all changes of a file. `options`: the compiler's options for it."""
    data = (ROOT / file).read_bytes()
    found = property_list_mutants(data) if file == PROPERTY_LIST else Source(file, data, options).mutants()
    result: list[Mutant] = []
    seen: set[tuple[int, int, bytes]] = set()
    names: dict[str, int] = {}
    for mutant in sorted(found, key=lambda mutant: (mutant.start, mutant.end)):
        change = (mutant.start, mutant.end, mutant.text)
        if change not in seen and data[mutant.start:mutant.end] != mutant.text:
            seen.add(change)
            names[mutant.name] = names.get(mutant.name, 0) + 1
            result.append(dataclasses.replace(mutant, number=names[mutant.name]))
    return result


def shown(text: bytes) -> str:
    """Returns a source text in one short line."""
    line = " ".join(text.decode().split())
    return line if len(line) <= 80 else f"{line[:40]}…{line[-39:]}"


def letters_changed(text: bytes) -> Iterator[bytes]:
    """Yields a text with its first and with its last letter changed, or with a letter added if it has none."""
    letters = [match.start() for match in re.finditer(rb"(?<![%\\])[A-Za-z0-9]", text)]
    for at in dict.fromkeys(letters[:1] + letters[-1:]):
        last_of_its_kind = text[at:at + 1] in b"zZ9"
        yield text[:at] + bytes([text[at] - 1 if last_of_its_kind else text[at] + 1]) + text[at + 1:]
    if not letters:
        yield text + b"x"


class Source:
    """A file of C++ or Objective-C++."""

    def __init__(self, file: str, data: bytes, options: list[str]) -> None:
        self.file = file
        self.data = data
        unit = Index.create().parse(str(ROOT / file), args=options, options=TranslationUnit.PARSE_INCOMPLETE)
        problems = [str(problem) for problem in unit.diagnostics if problem.severity >= 3]
        assert not problems, f"{file} can't be read: {problems}"
        self.top = unit.cursor
        self.tokens = list(unit.get_tokens(extent=unit.get_extent(str(ROOT / file), (0, len(data)))))
        self.found: list[tuple[str, int, int, bytes, str]] = []  # rule, start, end, text, shown
        self.functions: list[tuple[int, int, str]] = []
        self.skipped: list[tuple[int, int]] = []

    def mutants(self) -> Iterator[Mutant]:
        """Yields the changes of all rules."""
        for cursor in self.children(self.top):
            self.visit(cursor, None)
        self.visit_tokens()
        for rule, start, end, text, words in self.found:
            if not any(first <= start < last for first, last in self.skipped):
                around = [place for place in self.functions if place[0] <= start < place[1]]
                function = min(around, key=lambda place: place[1] - place[0])[2] if around else "file"
                yield Mutant(self.file, function, rule, words, start, end, text)

    def text(self, start: int, end: int) -> bytes:
        return self.data[start:end]

    def range(self, cursor: Cursor) -> tuple[int, int]:
        return cursor.extent.start.offset, cursor.extent.end.offset

    def source(self, cursor: Cursor) -> bytes:
        return self.text(*self.range(cursor))

    def children(self, cursor: Cursor) -> list[Cursor]:
        return [child for child in cursor.get_children()
                if child.location.file and child.location.file.name == str(ROOT / self.file)]

    def change(self, rule: str, start: int, end: int, text: bytes, words: str = "") -> None:
        old = shown(self.text(start, end))
        self.found.append((rule, start, end, text, words or (f"{old} -> {shown(text)}" if text else old)))

    def visit(self, cursor: Cursor, function: Cursor | None) -> None:
        """Applies the rules that need the syntax tree to a node and all that is below it."""
        kind, children = cursor.kind, self.children(cursor)
        if kind in FUNCTIONS and cursor.is_definition():
            function = cursor
        if kind in FUNCTIONS or (kind == Kind.VAR_DECL and function is None):
            self.functions.append((*self.range(cursor), cursor.spelling))
        if kind == Kind.STATIC_ASSERT:
            self.skipped.append(self.range(cursor))
        elif kind == Kind.COMPOUND_STMT:
            self.visit_statements(children)
        elif kind in (Kind.IF_STMT, Kind.WHILE_STMT, Kind.CONDITIONAL_OPERATOR):
            if children[0].kind not in (Kind.VAR_DECL, Kind.DECL_STMT):
                self.visit_condition(children[0])
        elif kind == Kind.RETURN_STMT and children and function and is_truth(function.result_type.spelling):
            self.visit_condition(children[0])
        elif kind == Kind.VAR_DECL and children and is_truth(cursor.type.spelling):
            self.visit_condition(children[-1])
        elif kind == Kind.INIT_LIST_EXPR or (kind == Kind.UNEXPOSED_EXPR and self.source(cursor).startswith(b"@[")):
            self.visit_elements(*self.range(cursor))
        elif len(children) >= 2:
            self.visit_operator(cursor, children)
        for child in children:
            self.visit(child, function)

    def visit_statements(self, statements: list[Cursor]) -> None:
        ranges = []
        for statement in statements:
            start, end = self.range(statement)
            semicolon = re.compile(rb"\s*;").match(self.data, end)
            ranges.append((start, semicolon.end() if semicolon else end))
        for start, end in ranges:
            self.change("left out", start, end, b"")
        for (start, end), (next_start, next_end) in zip(ranges, ranges[1:]):
            one, between, other = self.text(start, end), self.text(end, next_start), self.text(next_start, next_end)
            self.change("exchanged", start, next_end, other + between + one, f"{shown(one)} / {shown(other)}")

    def visit_condition(self, condition: Cursor) -> None:
        start, end = self.range(condition)
        text = self.text(start, end)
        if text.decode() in OPPOSITES:  # another rule handles it
            return
        negated = self.range(self.children(condition)[0]) if condition.kind == Kind.UNARY_OPERATOR else None
        self.change("negated", start, end, self.text(*negated) if negated else b"!(" + text + b")")
        self.change("constant", start, end, b"true")
        self.change("constant", start, end, b"false")

    def visit_elements(self, start: int, end: int) -> None:
        """Leaves out each element of a list in brackets or braces."""
        inside = [token for token in self.tokens if start <= token.extent.start.offset < end]
        inside = inside[2 if inside[0].spelling == "@" else 1:-1]
        elements, depth = [[]], 0
        for token in inside:
            depth += (token.spelling in "([{") - (token.spelling in ")]}")
            if depth == 0 and token.spelling == ",":
                elements.append([])
            else:
                elements[-1].append(token)
        ranges = [(tokens[0].extent.start.offset, tokens[-1].extent.end.offset) for tokens in elements if tokens]
        for number, (first, last) in enumerate(ranges):
            words = shown(self.text(first, last))
            if number:
                self.change("element left out", ranges[number - 1][1], last, b"", words)
            else:
                self.change("element left out", first, ranges[1][0] if len(ranges) > 1 else last, b"", words)

    def visit_operator(self, cursor: Cursor, children: list[Cursor]) -> None:
        """Changes a comparison, or leaves out an operand or a fallback."""
        ranges = [self.range(child) for child in children]
        (start, end), (next_start, next_end) = min(ranges), max(ranges, key=lambda place: (place[0], place[1]))
        operator = self.text(end, next_start).strip()
        if end > next_start or self.range(cursor) != (start, next_end):
            return
        one, other = self.text(start, end), self.text(next_start, next_end)
        if operator in COMPARISONS:
            new = one + b" " + COMPARISONS[operator] + b" " + other
            self.change("compared", start, next_end, new)
        if operator in OPERATORS_WITH_OPERANDS_TO_SPARE:
            self.change("operand left out", start, next_start, b"", shown(one))
            self.change("operand left out", end, next_end, b"", shown(other))
        if operator in (b"&&", b"||"):
            for child in (children[0], children[-1]):
                self.visit_condition(child)
        if operator == b"?:":
            self.change("fallback left out", end, next_end, b"", shown(self.text(start, next_end)))
            self.change("only the fallback", start, next_start, b"", shown(self.text(start, next_end)))

    def visit_tokens(self) -> None:
        """Applies the rules for numbers, texts and truth values."""
        for token in self.tokens:
            start, end = token.extent.start.offset, token.extent.end.offset
            line = self.data[self.data.rfind(b"\n", 0, start) + 1:start]
            if not line.lstrip().startswith(b"#"):
                self.visit_token(token, start, end)

    def visit_token(self, token: Token, start: int, end: int) -> None:
        text = self.text(start, end)
        if token.spelling in OPPOSITES:
            self.change("opposite", start, end, OPPOSITES[token.spelling])
        elif token.kind == TokenKind.LITERAL and text.isdigit():
            for number in (int(text) + 1, int(text) - 1):
                self.change("number", start, end, str(number).encode())
        elif token.kind == TokenKind.LITERAL and (
                quoted := re.fullmatch(rb"(\w*R\"\(|\w*\")(.*?)(\)\"|\")", text, re.S)):
            for changed in letters_changed(quoted[2]):
                self.change("text", start, end, quoted[1] + changed + quoted[3])
        elif token.kind == TokenKind.LITERAL and (quoted := re.fullmatch(rb"(\w*')(.+)'", text)):
            self.change("text", start, end, quoted[1] + b"x'")


def is_truth(spelling: str) -> bool:
    """Returns whether a type's spelling is that of a truth value."""
    return spelling.removeprefix("const ") in ("bool", "BOOL")


def property_list_mutants(data: bytes) -> Iterator[Mutant]:
    """Yields the changes of the property list: a missing entry, a letter of a key or text, a truth value."""
    key = ""
    for tag in re.finditer(rb"<(key|string)>(.*?)</\1>|<(true|false)/>", data):
        if tag[1] == b"key":
            key = tag[2].decode()
            entry = re.compile(rb"<key>.*?</key>\s*(<dict>.*?</dict>|<(\w+)>.*?</\2>|<\w+/>)\s*", re.S)
            whole = entry.match(data, tag.start())
            assert whole, f"no value of {key}"
            yield Mutant(PROPERTY_LIST, key, "left out", shown(whole[0]), whole.start(), whole.end(), b"")
        if tag[3]:
            opposite = OPPOSITES[tag[3].decode()]
            yield Mutant(PROPERTY_LIST, key, "opposite", tag[3].decode(), *tag.span(3), opposite)
        elif b"@" not in tag[2]:
            for changed in letters_changed(tag[2]):
                yield Mutant(PROPERTY_LIST, key, "text", f"{shown(tag[2])} -> {shown(changed)}", *tag.span(2), changed)
