"""The tree that holds all mutants at once.

Each place that has mutants is written so that it asks which mutant is on: `a < b` becomes
`(mutantIsOn(17) ? (a <= b) : (a < b))`. One build thus serves all mutants, and an environment variable chooses. The same
question notes that the place was reached, which tells the tests that are worth running for a mutant.
"""

HEADER = """\
#pragma once
// Which mutant is on, by QUORVA_MUTANT, and the bytes of the file QUORVA_MUTANTS_REACHED that note the places reached.
#include <cstdlib>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace quorva_mutation {{
inline constexpr int kEnd = {end};
inline unsigned char nowhere[kEnd];
inline unsigned char* reached = nowhere;
inline int wanted = 0;

inline bool setUp() {{
  if (const char* const text = std::getenv("QUORVA_MUTANT")) {{
    wanted = std::atoi(text);
  }}
  if (const char* const name = std::getenv("QUORVA_MUTANTS_REACHED")) {{
    const int file = ::open(name, O_RDWR | O_CLOEXEC);
    void* const place = ::mmap(nullptr, kEnd, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    ::close(file);
    if (place != MAP_FAILED) {{
      reached = static_cast<unsigned char*>(place);
    }}
  }}
  return true;
}}
inline const bool isSetUp = setUp();

inline bool mutantIsOn(int number) {{
  reached[number] = 1;
  return number == wanted;
}}

/// For what may be a constant of the compiler, in which no mutant is on.
constexpr bool mutantIsOnInRun(int number) {{
  return !__builtin_is_constant_evaluated() && mutantIsOn(number);
}}

/// std::endl, or the line end alone.
struct Endl {{
  int number;
}};
template <typename Stream>
Stream& operator<<(Stream& out, Endl end) {{
  out.put('\\n');
  if (!mutantIsOn(end.number)) {{
    out.flush();
  }}
  return out;
}}
}}  // namespace quorva_mutation

using quorva_mutation::mutantIsOn;
using quorva_mutation::mutantIsOnInRun;
"""

# Of changes of the same place, those further on stand inside.
DEPTH = {"order": 0, "drop": 1, "statement": 2, "value": 3, "flush": 4}


def without_crossings(mutants):
    """The mutants whose places lie beside or within each other, which is all but a few."""
    kept = []
    for mutant in mutants:
        crosses = any(other.start < mutant.start < other.end < mutant.end or mutant.start < other.start < mutant.end < other.end
                      for other in kept)
        if not crosses:
            kept.append(mutant)
    return kept


def mutated_source(source, mutants):
    """The text of the file with all its `mutants`, whose numbers are set. Lines keep their numbers."""
    waiting = sorted(mutants, key=lambda mutant: (mutant.start, -mutant.end, DEPTH[mutant.form], mutant.number), reverse=True)
    in_constexpr = list(constexpr_functions(source))
    edits = constants_made_variables(source, mutants)

    def original(start, end):
        text = source.text[start:end]
        for place, length, instead in reversed(edits):
            if start <= place < end:
                text = text[:place - start] + instead + text[place - start + length:]
        return text

    def render(start, end):
        pieces, at = [], start
        while waiting and waiting[-1].start < end:
            mutant = waiting.pop()
            pieces.append(original(at, mutant.start))
            inner = render(mutant.start, mutant.end)
            pieces.append(guarded(mutant, inner, any(first <= mutant.start < last for first, last in in_constexpr)))
            at = mutant.end
        pieces.append(original(at, end))
        return "".join(pieces)

    return render(0, len(source.text))


def guarded(mutant, inner, in_constexpr):
    question = f"{'mutantIsOnInRun' if in_constexpr else 'mutantIsOn'}({mutant.number})"
    if mutant.form == "value":
        return f"({question} ? ({mutant.whole}) : ({inner}))"
    if mutant.form == "flush":
        return f"quorva_mutation::Endl{{{mutant.number}}}" + "\n" * inner.count("\n")
    if mutant.form == "drop":
        return f"if (!{question}) {{ {inner} }}"
    return f"if ({question}) {{ {mutant.whole} }} else {{ {inner} }}"


def definition_end(source, i):
    """What the `constexpr` at token `i` defines: ("function", index of its body's brace), ("value", last token) or None."""
    j, tokens = i + 1, source.tokens
    while j < len(tokens):
        text = tokens[j].text
        if text == "{" and source.blocks[j] == "statements":
            return "function", j
        if text == ";":
            return "value", j
        if text in ("=", "{"):
            while tokens[j].text != ";":
                j = source.match(j) + 1 if tokens[j].text in ("{", "(", "[") else j + 1
            return "value", j
        j = source.match(j) + 1 if text in ("(", "[") else j + 1
    return None


def constexpr_functions(source):
    for i, token in enumerate(source.tokens):
        if token.text == "constexpr" and source.tokens[i - 1].text != "if":
            found = definition_end(source, i)
            if found and found[0] == "function":
                yield source.tokens[found[1]].start, source.tokens[source.match(found[1])].end


def constants_made_variables(source, mutants):
    """For each constant of the compiler that has mutants: the place and length of its `constexpr`, and the word instead."""
    edits = []
    for i, token in enumerate(source.tokens):
        if token.text != "constexpr" or source.tokens[i - 1].text == "if":
            continue
        found = definition_end(source, i)
        if not found or found[0] != "value":
            continue
        end = source.tokens[found[1]].end
        if any(token.start < mutant.start < end for mutant in mutants):
            word = "" if source.tokens[i + 1].text == "const" else "const"
            if source.tokens[i - 1].text == "static":
                word = "inline " + word
            edits.append((token.start, len(token.text), word))
    return edits
