"""A source that holds many mistakes, of which the environment chooses one when the program starts. So
it is compiled once for all of them."""

import collections

VARIABLE = "TIDEWICK_MISTAKE"
HEAD = f"""#include <stdlib.h>
namespace {{
int chosenMistake;
// Before what else the program does at its start.
__attribute__((constructor(101))) void chooseMistake()
{{
    const char *text = getenv("{VARIABLE}");
    chosenMistake = text ? atoi(text) : 0;
}}
}}
"""


def body_of(source, mutation):
    """The brace of the function that the mutation changes; none where its result must be known to the
    compiler, and outside all functions."""
    inner = [i for i, end in source.partner.items() if source.braces.get(i) == "body"
             and source.tokens[i].start < mutation.start and mutation.end <= source.tokens[end].start]
    outermost = min(inner, default=None)
    if outermost is None or {"constexpr", "consteval"} & set(source.statement_words(outermost)):
        return None
    return outermost


class Variants:
    """`text` holds the mistakes `numbered`, by number from 1; `others` cannot be chosen so."""

    def __init__(self, source, mutations):
        by_body = collections.defaultdict(list)
        for mutation in mutations:
            by_body[body_of(source, mutation)].append(mutation)
        self.others = by_body.pop(None, [])
        self.numbered, self.lines = {}, {}
        self.text, done = HEAD, 0
        for opening in sorted(by_body):
            start = source.tokens[opening].start
            end = source.tokens[source.partner[opening]].end
            self.text += source.text[done:start] + "{ switch (chosenMistake) {\n"
            for mutation in by_body[opening]:
                self.add(mutation, source.text[start:mutation.start] + mutation.text
                         + source.text[mutation.end:end])
            self.text += f"default:\n{source.text[start:end]}\n}} }}"
            done = end
        self.text += source.text[done:]

    def add(self, mutation, body):
        """Adds a case with the body of a function."""
        number = len(self.numbered) + 1
        self.numbered[number] = mutation
        first = self.text.count("\n") + 1
        self.text += f"case {number}:\n{body}\nbreak;\n"
        for line in range(first, self.text.count("\n") + 1):
            self.lines[line] = number

    def failed(self, output, name):
        """The mistakes in the lines that a compiler's output names."""
        marks = (text.split(":", 1)[0] for text in output.split(f"{name}:")[1:])
        return {self.numbered[self.lines[int(mark)]] for mark in marks
                if mark.isdigit() and int(mark) in self.lines}
