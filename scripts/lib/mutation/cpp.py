"""C++ source as tokens: enough of the language to tell expressions and statements from declarations.

It relies on the layout that .clang-format gives: a binary operator has a space on either side, and the brackets of a template,
the star of a pointer and the mark of a reference do not. Every controlled statement stands in braces.
"""

import bisect
import re
from dataclasses import dataclass

TOKEN = re.compile(r"""
      (?P<space>\s+)
    | (?P<comment>//[^\n]*|/\*.*?\*/)
    | (?P<directive>^[ \t]*\#(?:[^\n\\]|\\.|\\\n)*)
    | (?P<string>(?:u8|[uUL])?R"(?P<delimiter>[^(\s]*)\(.*?\)(?P=delimiter)"|(?:u8|[uUL])?"(?:\\.|[^"\\\n])*")
    | (?P<char>(?:u8|[uUL])?'(?:\\.|[^'\\\n])+')
    | (?P<number>\.?\d(?:'?[\w.]|(?<=[eEpP])[+-])*)
    | (?P<word>[A-Za-z_]\w*)
    | (?P<mark><=>|<<=|>>=|\.\.\.|->\*|::|->|\+\+|--|&&|\|\||<<|<=|>=|==|!=|\+=|-=|\*=|/=|%=|&=|\|=|\^=|.)
""", re.VERBOSE | re.DOTALL | re.MULTILINE)

# Of binary operators, the tighter ones the higher; all but the last two rows are left-associative.
PRECEDENCE = {mark: rank for rank, marks in enumerate(reversed((
    "* / %", "+ -", "<< >>", "<=>", "< <= > >=", "== !=", "&", "^", "|", "&&", "||", "?", "= += -= *= /= %= &= |= ^= <<= >>=")))
    for mark in marks.split()}

OPENING = {"(": ")", "[": "]", "{": "}"}
CLOSING = set(OPENING.values())
# Words that begin an expression's surroundings and belong to no operand.
NOT_OPERANDS = {"return", "throw", "case", "else", "do", "goto", "co_return", "co_yield", "typename", "template"}
CONTROL = {"if", "for", "while", "switch", "do", "else", "try", "catch", "return", "case", "default", "goto", "throw", "using",
           "typedef", "static_assert", "public", "private", "protected", "friend", "template", "namespace", "class", "struct",
           "enum", "union", "static", "const", "volatile", "constexpr", "auto", "extern", "inline", "virtual", "explicit", "typename"}
LABELS = {"case", "default", "public", "private", "protected"}
AHEAD_OF_STATEMENTS = {")", "]", "}", ";", ":", "else", "do", "try", "const", "noexcept", "override", "mutable", "final"}
DECLARATION = re.compile(
    r"(?:unsigned |signed |long |short )*[\w:]+(?:<.*>)?(?:::\w+)?(?: const)?[\s*&]*(?:(?<=[\s*&])const )?"
    r"(?<=[\s*&])\w+\s*(?:[=;,({\[]|$)")


@dataclass(frozen=True)
class Token:
    kind: str
    text: str
    start: int
    end: int


class Source:
    """One file. `text` is its source with the comments blanked, in which places and line numbers are those of the file."""

    def __init__(self, original):
        self.original = original
        pieces, self.tokens, at = [], [], 0
        for found in TOKEN.finditer(original):
            kind = found.lastgroup if found.lastgroup != "delimiter" else "string"
            text = found.group()
            if kind == "comment":
                pieces.append(re.sub(r"[^\n]", " ", text))
                continue
            pieces.append(text)
            if kind != "space":
                self.tokens.append(Token(kind, text, found.start(), found.end()))
        self.text = "".join(pieces)
        self._line_starts = [0] + [found.end() for found in re.finditer("\n", original)]
        self._matches = self._match_brackets()
        self.blocks = {i: self._kind_of_block(i) for i, token in enumerate(self.tokens) if token.text == "{"}

    def line_of(self, place):
        """The number of the line, from 1 on, in which `place` stands."""
        return bisect.bisect_right(self._line_starts, place)

    def line_text(self, number):
        """The line without its comment and indentation."""
        return " ".join(self.text.split("\n")[number - 1].split())

    def _match_brackets(self):
        matches, open_ones = {}, []
        for i, token in enumerate(self.tokens):
            if token.kind != "mark":
                continue
            if token.text in OPENING:
                open_ones.append(i)
            elif token.text in CLOSING and open_ones:
                matches[i] = open_ones.pop()
                matches[matches[i]] = i
        return matches

    def match(self, i):
        """Index of the bracket that belongs to the one at token `i`."""
        return self._matches.get(i, i)

    def is_spaced(self, i):
        """Whether white space stands on either side of the token, as around every binary operator."""
        token = self.tokens[i]
        return self.text[token.start - 1:token.start].isspace() and self.text[token.end:token.end + 1].isspace()

    def is_binary(self, i):
        """Whether the token at `i` is a binary operator, or the question mark of a choice."""
        token = self.tokens[i]
        if token.kind != "mark" or token.text not in PRECEDENCE or not self.is_spaced(i) or i == 0:
            return False
        return self.tokens[i - 1].text not in ("template", "operator", ",", "(")

    def _head(self, i):
        """The tokens ahead of the brace at `i`, back to the statement's or declaration's start."""
        head, j = [], i - 1
        while j >= 0:
            text = self.tokens[j].text
            if text in (")", "]"):
                j = self.match(j)
                head.append("()" if text == ")" else "[]")
            elif text in "{};(,=" or self.tokens[j].kind == "directive":
                break
            else:
                head.append(text)
            j -= 1
        return head[::-1]

    def _kind_of_block(self, i):
        """Of the brace at `i`: "declarations", "enum", "statements" or "value"."""
        head = self._head(i)
        if "enum" in head:
            return "enum"
        if {"class", "struct", "union", "namespace"} & set(head) or "extern" in head:
            return "declarations"
        if i == 0 or "->" in head:
            return "statements"
        before = self.tokens[i - 1].text
        if before == "{":
            return "value" if self._kind_of_block(i - 1) == "value" else "statements"
        return "statements" if before in AHEAD_OF_STATEMENTS else "value"

    def _ends_statement(self, i):
        """Whether the closing brace at `i` ends a block of statements, and so belongs to no operand."""
        return self.blocks.get(self.match(i)) != "value" and self.tokens[i + 1].text not in (")", ",", ";", "(", ".")

    def operand_left(self, i, precedence):
        """Index of the first token of the operand to the left of the operator at `i`."""
        j = i - 1
        while j >= 0:
            token = self.tokens[j]
            if token.text in (")", "]") or (token.text == "}" and not self._ends_statement(j)):
                j = self.match(j)
            elif self._stops(j, precedence, left=True):
                break
            j -= 1
        return j + 1

    def operand_right(self, i, precedence):
        """Index of the last token of the operand to the right of the operator at `i`."""
        j = i + 1
        while j < len(self.tokens):
            token = self.tokens[j]
            if token.text in OPENING:
                j = self.match(j)
            elif self._stops(j, precedence, left=False):
                break
            j += 1
        return j - 1

    def _stops(self, j, precedence, left):
        token = self.tokens[j]
        if token.kind == "directive" or token.text in OPENING or token.text in CLOSING or token.text in (";", ",", ":"):
            return True
        if token.kind == "word":
            return token.text in NOT_OPERANDS
        if self.is_binary(j):
            other = PRECEDENCE[token.text]
            return other < precedence if left else other <= precedence
        return False

    def plain(self, start, end):
        """The source from `start` to `end` in one line, without the indentation of lines."""
        return re.sub(r"\s*\n\s*", " ", self.text[start:end])

    def has_directive(self, first, last):
        return any(token.kind == "directive" for token in self.tokens[first:last + 1])

    def statement_runs(self):
        """Runs of expression statements that stand one behind the other, as lists of (first token, last token)."""
        for opening, kind in self.blocks.items():
            if kind == "statements":
                yield from self._runs_of_block(opening)

    def _runs_of_block(self, opening):
        run, i, end = [], opening + 1, self.match(opening)
        while i < end:
            last = self._statement_end(i, end)
            if self._is_expression_statement(i, last):
                run.append((i, last))
            else:
                if run:
                    yield run
                run = []
            i = last + 1
        if run:
            yield run

    def _statement_end(self, i, end):
        """The last token of the statement, label or control head that begins at `i`: a semicolon, a colon or a brace."""
        if self.tokens[i].kind == "directive":
            return i
        labelled = self.tokens[i].text in LABELS
        while i < end:
            token = self.tokens[i]
            if token.text == "{" and self.blocks[i] != "value":
                return self.match(i)
            if token.text in OPENING:
                i = self.match(i)
            elif token.text == ";" or (token.text == ":" and labelled):
                return i
            i += 1
        return end

    def _is_expression_statement(self, first, last):
        token = self.tokens[first]
        if self.tokens[last].text != ";" or token.kind == "directive" or token.text in CONTROL or first == last:
            return False
        if token.text in ("break", "continue", "delete"):
            return True
        if token.kind not in ("word", "mark") or token.text in OPENING and token.text != "(":
            return False
        text = self.plain(token.start, self.tokens[last].end)
        return not DECLARATION.match(text) and not self.has_directive(first, last)
