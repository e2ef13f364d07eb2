"""What is changed in a source file to make its mutants, and which of them are taken.

A mutant is one change of one place: a comparison flipped, a condition negated, a statement left out. Its identity is its file,
the text of its line and the change itself, so that it stays the same when other lines come and go.
"""

import hashlib
import re
from dataclasses import dataclass, field

from mutation.cpp import PRECEDENCE

COMPARISONS = {"<": ("<=", ">="), "<=": ("<", ">"), ">": (">=", "<="), ">=": (">", "<"), "==": ("!=",), "!=": ("==",)}
EXCHANGES = {"&&": ("||",), "||": ("&&",), "+": ("-",), "-": ("+",), "*": ("/",), "/": ("*",), "%": ("/",),
             "<<": (">>",), ">>": ("<<",), "&": ("|",), "|": ("&",), "^": ("&",)}
STEPS = {"++": "--", "--": "++", "+=": "-=", "-=": "+=", "*=": "/=", "/=": "*=", "|=": "&=", "&=": "|=", "^=": "|="}


NOT_DEFINED = ("_WIN32", "QUORVA_")  # beginnings of macros that the build of the mutants does not define
NOT_BUILT = {"kArcsAreChecked"}      # constants that are false in it
# Calls that only speed is in need of: they ask for memory ahead of its use.
LOOKING_AHEAD = ("__builtin_prefetch(", "lookAhead(", "fetchAhead(", "fetchGroup(", "fetchAheadOf(")
NO_RESULT = (".reserve(", *LOOKING_AHEAD)


@dataclass
class Mutant:
    """One change of the source between the places `start` and `end`.

    kind    of the change, one of KINDS; `form` tells how the tree with all mutants holds it: a "value" is chosen in an
            expression, "drop" and "order" guard statements, "flush" takes a flush away
    before, after: the text that is changed, and what comes in its place
    """
    file: str
    line: int
    line_text: str
    kind: str
    form: str
    start: int
    end: int
    before: str
    after: str
    twin: int = 0  # counts the mutants that are alike in all that `key` holds
    number: int = field(default=0, compare=False)

    @property
    def change(self):
        return f"`{self.before}` -> `{self.after}`" if self.after else f"`{self.before}` left out"

    @property
    def key(self):
        return f"{self.file}: {self.kind}: {self.change} in `{self.line_text}` #{self.twin}"

    @property
    def rank(self):
        return hashlib.sha256(self.key.encode()).hexdigest()


class Finder:
    """Finds the mutants of one file."""

    def __init__(self, file, source):
        self.file, self.source, self.found = file, source, []
        self._off_limits = list(self._places_off_limits())

    def mutants(self):
        for i, token in enumerate(self.source.tokens):
            if self._is_off_limits(token.start):
                continue
            if token.kind == "mark":
                self._operators(i)
            elif token.kind == "word":
                self._words(i)
            elif token.kind in ("number", "string", "char"):
                self._literal(i)
        for run in self.source.statement_runs():
            self._statements(run)
        twins = {}
        for mutant in self.found:
            like = mutant.key
            mutant.twin = twins[like] = twins.get(like, -1) + 1
        return self.found

    def _places_off_limits(self):
        """Where the language wants constants: assertions of the compiler, labels, enumerators, attributes, template heads."""
        source, tokens = self.source, self.source.tokens
        for i, token in enumerate(tokens):
            if token.text in ("static_assert", "alignas", "sizeof", "decltype", "noexcept", "__attribute__", "requires",
                              "__builtin_prefetch"):
                if i + 1 < len(tokens) and tokens[i + 1].text == "(":
                    yield token.start, tokens[source.match(i + 1)].end
            elif token.text == "constexpr" and tokens[i - 1].text == "if":
                yield token.start, tokens[source.match(i + 1)].end
            elif token.text == "case":
                end = next(j for j in range(i, len(tokens)) if tokens[j].text == ":")
                yield token.start, tokens[end].end
            elif token.text == "[" and tokens[i + 1].text == "[":
                yield token.start, tokens[source.match(i)].end
            elif token.text in ("template", "using", "extern"):
                yield token.start, source.text.find("\n", token.start)
            elif source.blocks.get(i) == "enum":
                yield token.start, tokens[source.match(i)].end
        yield from self._parts_not_built()

    def _parts_not_built(self):
        """What the build of the mutants leaves out: the code of another system, and what the project's options switch on."""
        source, tokens = self.source, self.source.tokens
        open_ones = []  # of each conditional: where its present branch starts, and whether that is left out
        for i, token in enumerate(tokens):
            if token.kind == "directive":
                words = token.text.replace("#", " ").split()
                if words[0] in ("if", "ifdef", "ifndef"):
                    foreign = any(word.strip("()!").startswith(NOT_DEFINED) for word in words[1:])
                    open_ones.append((token.start, foreign and (words[0] == "ifndef" or "!" in token.text), foreign))
                elif words[0] in ("else", "elif", "endif"):
                    start, built, foreign = open_ones.pop()
                    if foreign and not built:
                        yield start, token.end
                    if words[0] != "endif":
                        open_ones.append((token.start, not built, foreign))
            elif token.text == "constexpr" and tokens[i - 1].text == "if" and NOT_BUILT & {
                    inner.text for inner in tokens[i + 1:source.match(i + 1)]}:
                yield token.start, tokens[source.match(source.match(i + 1) + 1)].end

    def _is_off_limits(self, place):
        return any(start <= place < end for start, end in self._off_limits)

    def _add(self, kind, form, first, last, before, after, whole=None):
        """A change of the tokens `first` to `last`. `whole` is all that stands in their place, `after` if nothing is given."""
        source = self.source
        if source.has_directive(first, last):
            return
        start, end = source.tokens[first].start, source.tokens[last].end
        line = source.line_of(start)
        mutant = Mutant(self.file, line, source.line_text(line), kind, form, start, end, before, after)
        mutant.whole = after if whole is None else whole
        self.found.append(mutant)

    def _with_token(self, first, last, i, text):
        """The tokens `first` to `last` in one line, the one at `i` being `text`."""
        source = self.source
        token = source.tokens[i]
        return source.plain(source.tokens[first].start, token.start) + text + source.plain(token.end, source.tokens[last].end)

    def _operators(self, i):
        source, token = self.source, self.source.tokens[i]
        if token.text in STEPS:
            return  # with the statements
        if not source.is_binary(i):
            return
        if token.text == "?":
            first = source.operand_left(i, PRECEDENCE["?"])
            condition = source.plain(source.tokens[first].start, source.tokens[i - 1].end)
            self._add("negation", "value", first, i - 1, condition, f"!({condition})")
            return
        kind = "comparison" if token.text in COMPARISONS else "operator"
        for other in COMPARISONS.get(token.text, ()) + EXCHANGES.get(token.text, ()):
            first = source.operand_left(i, PRECEDENCE[token.text])
            last = source.operand_right(i, PRECEDENCE[token.text])
            if first > i - 1 or last < i + 1 or (token.text in ("<<", ">>") and self._is_stream(first, last)):
                continue
            before = source.plain(source.tokens[first].start, source.tokens[last].end)
            after = self._with_token(first, last, i, other)
            self._add(kind, "value", first, last, before, after)

    def _is_stream(self, first, last):
        """Whether the shift is, by its operands, an output."""
        tokens = self.source.tokens[first:last + 1]
        return any(token.kind == "string" or token.text in ("out", "cout", "cerr", "text", "stream", "endl", "std") or
                   token.text.endswith(("tream", "Out", "File", "out")) for token in tokens)

    def _is_comparison(self, first, last):
        """Whether a comparison is all that the tokens are; its own mutants have its negation among them."""
        source = self.source
        return any(source.tokens[i].text in COMPARISONS and source.is_binary(i) and
                   source.operand_left(i, PRECEDENCE[source.tokens[i].text]) == first and
                   source.operand_right(i, PRECEDENCE[source.tokens[i].text]) == last for i in range(first, last))

    def _words(self, i):
        source, tokens = self.source, self.source.tokens
        text = tokens[i].text
        if text in ("if", "while") and tokens[i + 1].text == "(":
            last = source.match(i + 1) - 1
            first = max([j + 1 for j in range(i + 2, last) if tokens[j].text == ";"], default=i + 2)
            condition = source.plain(tokens[first].start, tokens[last].end)
            if not self._is_comparison(first, last):
                self._add("negation", "value", first, last, condition, f"!({condition})")
        elif text in ("true", "false") and tokens[i - 1].text != "operator":
            self._add("constant", "value", i, i, text, "false" if text == "true" else "true")
        elif text == "endl" and tokens[i - 1].text == "::" and not self._goes_to_standard_error(i):
            self._add("flush", "flush", i - 2, i, "std::endl", "'\\n'")

    def _goes_to_standard_error(self, i):
        """Whether the statement around token `i` writes to standard error, which holds nothing back in any case."""
        tokens = self.source.tokens
        first = max(j for j in range(i) if tokens[j].text in (";", "{", "}")) + 1
        return any(token.text == "cerr" for token in tokens[first:i])

    def _literal(self, i):
        token, before = self.source.tokens[i], self.source.tokens[i - 1]
        after = self.source.tokens[i + 1]
        if token.kind == "number":
            if before.text == "=" and self.source.tokens[i - 2].text in (")", "const", "override"):
                return  # a pure virtual operation
            for other in numbers_beside(token.text):
                self._add("constant", "value", i, i, token.text, other)
        elif token.kind == "char":
            self._add("constant", "value", i, i, token.text, changed_character(token.text))
        elif "string" not in (before.kind, after.kind) and len(token.text) > 2 and "R\"" not in token.text:
            self._add("text", "value", i, i, token.text, changed_text(token.text))

    def _statements(self, run):
        source, tokens = self.source, self.source.tokens
        texts = [source.plain(tokens[first].start, tokens[last].end) for first, last in run]
        for (first, last), text in zip(run, texts):
            if self._is_off_limits(tokens[first].start) or any(call in text for call in NO_RESULT):
                continue
            self._add("drop", "drop", first, last, text, "")
            for i in range(first, last):
                if tokens[i].text in STEPS and (i == first or i == last - 1 or source.is_spaced(i)):
                    after = self._with_token(first, last, i, STEPS[tokens[i].text])
                    self._add("step", "statement", first, last, text, after)
        for k in range(len(run) - 1):
            if self._is_off_limits(tokens[run[k][0]].start):
                continue
            if texts[k] != texts[k + 1] and not commute(texts[k], texts[k + 1]):
                swapped = texts[:k] + [texts[k + 1], texts[k]] + texts[k + 2:]
                self._add("order", "order", run[0][0], run[-1][1], f"{texts[k]} {texts[k + 1]}",
                          f"{texts[k + 1]} {texts[k]}", " ".join(swapped))
                mutant = self.found[-1]
                mutant.line = source.line_of(tokens[run[k][0]].start)
                mutant.line_text = source.line_text(mutant.line)


def commute(first, second):
    """Whether two statements give memory back, or one of them only looks ahead, or they are assignments without a call,
    neither of which names what the other assigns to."""
    if first.startswith("delete") and second.startswith("delete") or \
            first.startswith(LOOKING_AHEAD) or second.startswith(LOOKING_AHEAD):
        return True

    def assigned(text):
        found = re.match(r"(\w+)(?:->\w+|\.\w+|\[[^\]]*\])* = ", text)
        return found and not re.search(r"\w\(|>\(", text) and re.match(r".*?(?= = )", text).group()
    def names(text, place):
        return re.search(rf"(?<!\w){re.escape(place)}(?!\w)", text)
    one, other = assigned(first), assigned(second)
    return bool(one and other and not names(second, one) and not names(first, other))


def numbers_beside(text):
    """Other numbers of the same type, to stand in the number's place."""
    plain = text.replace("'", "")
    digits = plain.rstrip("uUlL")
    suffix = plain[len(digits):]
    try:
        value = int(digits, 0)
    except ValueError:
        try:
            number = float(plain)
        except ValueError:
            return ()
        return (repr(number + 1.0 if number < 1e6 else number * 2),)
    if value == 0:
        return (f"1{suffix}",)
    return (f"{value + 1}{suffix}", f"{value - 1}{suffix}")


def changed_character(text):
    if "\\" in text:
        return "'x'"
    return "'" + ("!" if text[-2] != "!" else "#") + "'"


def changed_text(text):
    """The text with its last character another one, as long as before."""
    body = text[text.index('"') + 1:-1]
    cut = len(body) - (4 if body[-4:-2] == "\\x" else 2 if body[-2:-1] == "\\" else 1)
    return text[:text.index('"') + 1] + body[:cut] + ("~" if body[cut:] != "~" else "_") + '"'


def select(mutants, share):
    """Of the mutants of one file, the given share of them, 0 to 1: the first in the order of their keys' hashes, so that the
    choice is the same each time, and another mutant that comes or goes changes little. Every kind has its share."""
    chosen, kinds = [], {}
    for mutant in sorted(mutants, key=lambda mutant: mutant.rank):
        kinds.setdefault(mutant.kind, []).append(mutant)
    for ranked in kinds.values():
        chosen += ranked[:max(1, round(len(ranked) * share))]
    return sorted(chosen, key=lambda mutant: (mutant.start, mutant.end, mutant.key))
