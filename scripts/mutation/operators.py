"""Finds the places of a C++ source where one operator, constant or condition can be changed."""

import re
from dataclasses import dataclass

# Operators stand between blanks in formatted sources, which tells them from template brackets, pointers and references.
EXCHANGED = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==", "&&": "||", "||": "&&",
             "+": "-", "-": "+", "*": "/", "/": "*", "%": "*", "+=": "-=", "-=": "+="}
OPERATOR = re.compile(r"(?<= )(<=|>=|==|!=|&&|\|\||\+=|-=|[<>+\-*/%])(?= )")
NUMBER = re.compile(r"(?<![\w.])(\d+\.\d+(?:e-?\d+)?|\d+)(?=[FfUuLl]*\b)(?![\w.]*x)")
WORD = re.compile(r"\b(true|false)\b")
CONDITION = re.compile(r"\b(?:if|while) \(")
# What is not code of a function, and what only a compiler sees.
HIDDEN = re.compile(r'//[^\n]*|/\*.*?\*/|R"(\w*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"|(?<!\w)\'(?:\\.|[^\'\\\n])+\''
                    r"|^[ \t]*#(?:\\\n|[^\n])*|^[ \t]*(?:template|using|static_assert|namespace)\b[^\n]*", re.S | re.M)


@dataclass(frozen=True)
class Mutant:
    file: str
    start: int
    text: str
    instead: str
    line: int
    source_line: str

    def __str__(self):
        return f"{self.file}:{self.line}: {self.text} -> {self.instead}: {self.source_line}"

    def apply(self, source):
        return source[:self.start] + self.instead + source[self.start + len(self.text):]


def condition_end(code, start):
    """The place of the bracket that closes the one at `start`, or None."""
    depth = 0
    for place in range(start, len(code)):
        depth += {"(": 1, ")": -1}.get(code[place], 0)
        if depth == 0:
            return place
    return None


def changed_number(text):
    if "." in text:
        return repr(float(text) * 1.125 if float(text) else 0.125)
    return {"0": "1", "1": "2"}.get(text, str(int(text) - 1))


def mutants_of(file, source):
    """Every mutant of a source, in the order of its text."""
    code = HIDDEN.sub(lambda match: re.sub(r"[^\n]", "_", match.group()), source)
    found = []

    def add(start, text, instead):
        line = source.count("\n", 0, start) + 1
        found.append(Mutant(file, start, text, instead, line, source.splitlines()[line - 1].strip()))

    for match in OPERATOR.finditer(code):
        add(match.start(), match.group(), EXCHANGED[match.group()])
    for match in NUMBER.finditer(code):
        add(match.start(), match.group(), changed_number(match.group()))
    for match in WORD.finditer(code):
        add(match.start(), match.group(), "false" if match.group() == "true" else "true")
    for match in CONDITION.finditer(code):
        opening = match.end() - 1
        closing = condition_end(code, opening)
        if closing is not None:
            condition = source[opening:closing + 1]
            add(opening, condition, f"(!{condition})")
    return sorted(found, key=lambda mutant: (mutant.start, mutant.instead))
