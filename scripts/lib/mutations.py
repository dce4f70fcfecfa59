"""The small mistakes that can be made in a text of C++ or QML."""

import collections
import re

Token = collections.namedtuple("Token", "kind text start end")
# Replaces the characters from start to end by text.
Mutation = collections.namedtuple("Mutation", "operator start end text")


# Reading a source

TOKEN = r"""
  (?P<comment>//[^\n]*|/\*.*?\*/)
| (?P<directive>^[ \t]*(?:\#(?:[^\n\\]|\\.)*|(?:import|pragma)\b[^\n]*))
| (?P<string>(?:u8|[uUL])?R"(?P<mark>[^(\s]*)\(.*?\)(?P=mark)"|(?:u8|[uUL])?"(?:[^"\\\n]|\\.)*"%s)
| (?P<number>\.?\d(?:'?[\w.])*)
| (?P<character>(?:u8|[uUL])?'(?:[^'\\\n]|\\.)+')
| (?P<word>[A-Za-z_$][\w$]*)
| (?P<space>\s+)
| (?P<sign><=>|===|!==|<<=|>>=|\.\.\.|::|->|=>|\+\+|--|&&|\|\||<<|>>|<=|>=|==|!=|\?\?|\?\.
           |[-+*/%%&|^]=|.)"""
TOKENS = {is_qml: re.compile(TOKEN % (r"|'(?:[^'\\\n]|\\.)*'" if is_qml else ""),
                             re.VERBOSE | re.MULTILINE | re.DOTALL) for is_qml in (False, True)}
PAIRS = {"(": ")", "[": "]", "{": "}"}
ENDS = set(PAIRS.values())
# Logging, checks of the compiler, and macros with a meaning of their own. In QML the names of objects.
LEFT_ALONE = {False: re.compile(r"static_assert|Q_ASSERT|Q_LOGGING_CATEGORY|Q_PROPERTY|Q_ENUM"
                                r"|Q_DECLARE_\w+|qC?(Debug|Info|Warning|Critical)|using"),
              True: re.compile(r"objectName|id")}
DECLARATION = set("return co_return if for while switch case default const constexpr auto static using "
                  "typedef struct class enum union else do try goto template friend public private "
                  "protected signals slots virtual explicit inline extern let var function yield "
                  "thread_local catch operator namespace".split())
CONTINUES = set("? : && || + - * / % . ?. ?? == === != !== < > <= >= , ( [ { =".split())


class Source:
    """The tokens of a file, without comments, blanks and directives, and its brackets in pairs."""

    def __init__(self, path, text):
        self.text = text
        self.is_qml = str(path).endswith(".qml")
        found = TOKENS[self.is_qml].finditer(text)
        self.tokens = [Token(m.lastgroup if m.lastgroup != "mark" else "string", m.group(), m.start(),
                             m.end())
                       for m in found if m.lastgroup not in ("comment", "space", "directive")]
        self.partner, self.around = {}, []
        opened = []
        for i, token in enumerate(self.tokens):
            is_sign = token.kind == "sign"
            if is_sign and token.text in ENDS and opened:
                self.partner[i] = opened.pop()
                self.partner[self.partner[i]] = i
            self.around.append(opened[-1] if opened else -1)
            if is_sign and token.text in PAIRS:
                opened.append(i)
        self.braces = {}
        for i, token in enumerate(self.tokens):
            if token.kind == "sign" and token.text == "{" and i in self.partner:
                self.braces[i] = self.qml_brace(i) if self.is_qml else self.brace(i)
        self.silent = self.left_alone()

    def at(self, i):
        """The text of a token, or nothing beyond the ends."""
        return self.tokens[i].text if 0 <= i < len(self.tokens) else ""

    def line(self, i):
        """The number of line ends before a token."""
        return self.text.count("\n", 0, self.tokens[i].start)

    def left_alone(self):
        """The indices of the tokens that stay as they are."""
        silent = set()
        for i, token in enumerate(self.tokens):
            if token.kind == "word" and LEFT_ALONE[self.is_qml].fullmatch(token.text):
                end = i
                while end < len(self.tokens) and self.at(end) != ";" and (
                        not self.is_qml or self.line(end) == self.line(i)):
                    if token.text.startswith("Q_") and self.at(end) == "(":
                        end = self.partner.get(end, end) + 1
                        break
                    end = self.partner.get(end, end) + 1 if self.at(end) in PAIRS else end + 1
                silent.update(range(i, end))
            elif token.text == "[" and self.at(i + 1) == "[":
                silent.update(range(i, self.partner.get(i, i)))
        return silent

    def is_lambda(self, i):
        """Whether the brace opens the body of a lambda."""
        i -= 1
        while self.at(i) not in (")", "]", ";", "{", "}", "") :
            i -= 1
        if self.at(i) == ")":
            i = self.partner.get(i, 0) - 1
        return self.at(i) == "]" or (self.is_qml and self.at(i) == "=>")

    def statement_words(self, i):
        """The words before the brace, back to the end of the last statement, outside brackets."""
        words = []
        i -= 1
        while i >= 0 and self.at(i) not in (";", "{", "}"):
            if self.at(i) in ENDS:
                i = self.partner.get(i, i)
            words.append(self.at(i))
            i -= 1
        return words

    def brace(self, i):
        """What a brace of C++ holds: statements (body), declarations (scope), names (enum) or
        values (list)."""
        before = self.at(i - 1)
        outer = self.braces.get(self.around[i], "scope")
        if before in ("else", "do", "try", "const", "noexcept", "override", "final", "mutable", "]",
                      ")", "}", ";", ":"):
            return "body"
        if before == "{":
            return "body" if outer == "body" else "list"
        words = self.statement_words(i)
        if "enum" in words:
            return "enum"
        if {"namespace", "class", "struct", "union", "extern"} & set(words) and "=" not in words:
            return "scope"
        return "body" if "->" in words[:6] else "list"

    def qml_brace(self, i):
        """What a brace of QML holds: statements (body), an object, or values (list)."""
        before = self.at(i - 1)
        if before in (")", "=>", "else", "do", "try", ";", "}"):
            return "body"
        if self.at(i - 2) == ":" and self.at(i - 3) == ")":
            return "body" # the type that a function returns
        if before[:1].isupper() or self.at(i - 2) == "on":
            return "object"
        if before == ":":
            inside = [self.at(k) for k in range(i, self.partner[i]) if self.around[k] == i]
            return "body" if ";" in inside or "return" in inside else "list"
        return "list"

    def spaced(self, i):
        """Whether blanks stand on both sides, as with each binary operator here."""
        token = self.tokens[i]
        return self.text[token.start - 1].isspace() and self.text[token.end].isspace()

    def elements(self, i):
        """The first and last token of each value between two brackets."""
        found, start = [], i + 1
        for k in range(i + 1, self.partner[i] + 1):
            if (self.around[k] == i and self.at(k) == ",") or k == self.partner[i]:
                if start < k:
                    found.append((start, k - 1))
                start = k + 1
        return found

    def piece(self, first, last):
        """The text from one token to another."""
        return self.text[self.tokens[first].start:self.tokens[last].end]


# The mistakes

TURNED = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==", "===": "!==",
          "!==": "===", "&&": "||", "||": "&&"}


def turned(source, i):
    """A comparison is turned, and/or exchanged."""
    token = source.tokens[i]
    if token.kind == "sign" and token.text in TURNED and source.spaced(i) and source.at(
            i - 1) != "operator":
        name = "and/or" if token.text in ("&&", "||") else "comparison"
        yield Mutation(name, token.start, token.end, TURNED[token.text])


def constant(source, i):
    """A number is moved by one, an integer by its last digit and a fraction by one tenth. The size
    of an array stays."""
    token = source.tokens[i]
    number = re.fullmatch(r"(0[xX](?=[\da-fA-F]))?((?<=[xX])[\da-fA-F']+|[\d']+|\d*\.\d+)([uUlLzZfF]*)",
                          token.text)
    is_pure = token.text == "0" and source.at(i - 1) == "=" and source.at(i - 2) in (
        ")", "const", "noexcept", "override")
    is_size = source.at(i - 1) == "," and source.at(i + 1) == ">"
    if token.kind != "number" or not number or is_pure or is_size:
        return
    digits = number[2].replace("'", "")
    if "." in digits:
        text = f"{float(digits) + 0.1:g}"
    elif number[1]:
        text = f"0x{int(digits, 16) + 1:x}"
    else:
        text = str(int(digits) + 1)
    yield Mutation("constant", token.start, token.end, text + number[3])


def emptied(source, i):
    """A string is emptied."""
    token = source.tokens[i]
    string = re.fullmatch(r"""(u8|[uUL])?R?(["']).+["']""", token.text, re.DOTALL)
    if token.kind == "string" and string and len(token.text) - len(string[1] or "") > 2:
        yield Mutation("string", token.start, token.end, (string[1] or "") + 2 * string[2])


def negated(source, i):
    """The condition of an if or while is negated."""
    if source.at(i) not in ("if", "while") or source.at(i + 1) != "(":
        return
    first, last = i + 2, source.partner[i + 1] - 1
    for k in range(first, last):
        if source.at(k) == ";" and source.around[k] == i + 1:
            first = k + 1
    condition = source.piece(first, last)
    declared = re.match(r"(?:const )?auto [*&]?(\w+) = ", condition)
    new = f"{condition}; !({declared[1]})" if declared else f"!({condition})"
    yield Mutation("condition", source.tokens[first].start, source.tokens[last].end, new)


def value_end(source, i, stops):
    """The last token of the value that starts at i: before one of the stops, or where a line ends
    in QML."""
    depth, k = 0, i
    while k < len(source.tokens):
        text = source.at(k)
        if text in PAIRS:
            k = source.partner.get(k, k)
        elif text == "?" and source.tokens[k].kind == "sign":
            depth += 1
        elif text == ":" and depth:
            depth -= 1
        elif text in stops:
            return k - 1
        if source.is_qml and source.line(k + 1 if k + 1 < len(source.tokens) else k) > source.line(
                k) and source.at(k) not in CONTINUES and source.at(k + 1) not in CONTINUES:
            return k
        k += 1
    return k - 1


def exchanged(source, i):
    """The two values of a conditional expression are exchanged."""
    if source.at(i) != "?" or not source.spaced(i):
        return
    first_end = value_end(source, i + 1, {":", ";"})
    if source.at(first_end + 1) != ":" and source.at(first_end + 2) == ":":
        first_end += 1
    if source.at(first_end + 1) != ":":
        return
    second_end = value_end(source, first_end + 2, {",", ")", ";", "}", "]", ":"})
    first = source.piece(i + 1, first_end)
    second = source.piece(first_end + 2, second_end)
    yield Mutation("condition", source.tokens[i + 1].start, source.tokens[second_end].end,
                   f"({second}) : ({first})")


def statement(source, i):
    """A statement that is no declaration is removed."""
    brace = source.around[i]
    if source.at(i) != ";" or source.braces.get(brace) != "body":
        return
    first = i
    while first - 1 > brace:
        before = source.at(first - 1)
        if before in (";", "{", "else", "do"):
            break
        if before == ":" and source.around[first - 1] == brace and re.search(
                r"\b(case [^?]*|default)$", source.text[:source.tokens[first - 1].start][-80:]):
            break
        if before in ENDS:
            opening = source.partner[first - 1]
            if before == ")" and source.at(opening - 1) in ("if", "for", "while", "switch", "catch",
                                                            "constexpr"):
                break
            if before == "}" and source.braces[opening] == "body" and not source.is_lambda(opening):
                break
            first = opening
        else:
            first -= 1
    if is_action(source, first, i):
        yield Mutation("statement", source.tokens[first].start, source.tokens[i].end,
                       ";" + "\n" * (source.line(i) - source.line(first)))


def is_action(source, first, last):
    """Whether a statement acts, and declares nothing."""
    if source.at(first) in ("break", "continue", "return") and first + 1 == last:
        return True
    if source.at(first) in DECLARATION or source.at(first) == "(" or set(
            range(first, last)) & source.silent:
        return False
    if source.at(first) in ("Q_EMIT", "delete", "co_await", "throw"):
        return True
    acts = False
    for k in range(first, last):
        text = source.at(k)
        if text in ("(", "=", "+=", "-=", "*=", "/=", "|=", "&=", "<<", "++", "--"):
            acts = True
            break
        is_name = source.tokens[k + 1].kind == "word"
        if is_name and (source.tokens[k].kind == "word" or (text in (">", "*", "&") and k > first)):
            return False
    return acts


def rows(source, i):
    """A row of a table is dropped, or two neighbouring rows are swapped."""
    is_table = source.braces.get(i) == "list" or (source.is_qml and source.at(i) == "[")
    if not is_table or i not in source.partner:
        return
    found = source.elements(i)
    texts = [source.piece(*row) for row in found]
    are_strings = all(re.fullmatch(r'(QStringLiteral\()?\w*"[^"]*"\w*\)?', text) for text in texts)
    are_lines = len(found) > 2 and len({source.line(first) for first, _ in found}) == len(found)
    if len(found) < 2 or not (are_strings or are_lines or all(text[0] == "{" for text in texts)):
        return
    for k, (first, last) in enumerate(found):
        end = last + 1 if source.at(last + 1) == "," else last
        start = source.tokens[first].start
        if end == last and k > 0:
            start = source.tokens[found[k - 1][1]].end
        removed = source.text[start:source.tokens[end].end]
        yield Mutation("row dropped", start, source.tokens[end].end, "\n" * removed.count("\n"))
        if k + 1 < len(found) and texts[k] != texts[k + 1] and not are_strings:
            following = found[k + 1]
            between = source.text[source.tokens[last].end:source.tokens[following[0]].start]
            yield Mutation("rows swapped", source.tokens[first].start, source.tokens[following[1]].end,
                           texts[k + 1] + between + texts[k])


def qml_members(source, i):
    """A binding or a child of a QML object is removed."""
    if source.braces.get(i) != "object":
        return
    k = i + 1
    while k < source.partner[i]:
        first = k
        while source.at(k + 1) == "." and source.at(k) not in PAIRS:
            k += 2
        if source.at(k + 1) == ":" and source.tokens[k].kind == "word":
            is_object = source.at(k + 3) == "{" and source.braces.get(k + 3) == "object"
            is_block = source.at(k + 2) == "{"
            last = source.partner[k + 3] if is_object else source.partner[
                k + 2] if is_block else value_end(source, k + 2, {";", "}"})
            operator = "statement"
        elif source.at(k + 1) == "{" or source.at(k + 1) == "on":
            opening = k + 1 if source.at(k + 1) == "{" else k + 3
            last, operator = source.partner[opening], "row dropped"
        else:
            line = source.line(k)
            while k < source.partner[i] and source.line(k) == line:
                k = source.partner[k] + 1 if source.at(k) in PAIRS else k + 1
            continue
        if first not in source.silent:
            yield Mutation(operator, source.tokens[first].start, source.tokens[last].end,
                           "\n" * (source.line(last) - source.line(first)))
        k = last + 1


def mutations(path, text):
    """All mistakes that can be made in a text, in the order of their places."""
    source = Source(path, text)
    operators = [turned, constant, emptied, negated, exchanged, statement, rows]
    if source.is_qml:
        operators.append(qml_members)
    found = [mutation for i in range(len(source.tokens)) if i not in source.silent
             for operator in operators for mutation in operator(source, i)]
    return sorted(set(found), key=lambda mutation: (mutation.start, mutation))


def mutated(text, mutation):
    """The text with the mistake in it."""
    return text[:mutation.start] + mutation.text + text[mutation.end:]
