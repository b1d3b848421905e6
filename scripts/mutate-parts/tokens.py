"""Takes C++ text apart into tokens, and tells which function a token belongs to."""

import bisect
import re
from dataclasses import dataclass

TOKEN = re.compile(r"""
    (?P<space>    \s+ )
  | (?P<comment>  //[^\n]* | /\*.*?\*/ )
  | (?P<raw>      (?:u8|[LuU])?R"(?P<fence>[^()\s\\]{0,16})\(.*?\)(?P=fence)" )
  | (?P<string>   (?:u8|[LuU])?"(?:[^"\\\n]|\\.)*" )
  | (?P<char>     (?:u8|[LuU])?'(?:[^'\\\n]|\\.)+' )
  | (?P<number>   \.?\d(?:[eEpP][+-]|'(?=\w)|[\w.])* )
  | (?P<word>     [A-Za-z_]\w* )
  | (?P<sign>     <<=|>>=|<=>|->\*|\.\.\.|::|->|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|. )
""", re.VERBOSE | re.DOTALL)
DIRECTIVE = re.compile(r"[ \t]*#(?:[^\n\\]|\\.)*", re.DOTALL)
OPENING = {"(": ")", "[": "]", "{": "}"}
CLOSING = {closing: opening for opening, closing in OPENING.items()}
SCOPES = {"namespace", "class", "struct", "union", "enum", "extern"}


@dataclass(frozen=True)
class Token:
    kind: str
    text: str
    begin: int

    @property
    def end(self):
        return self.begin + len(self.text)


def tokenize(text):
    """The tokens that mean something to the compiler: no white space, no comments, no preprocessor lines."""
    tokens, at, is_line_begin = [], 0, True
    while at < len(text):
        directive = DIRECTIVE.match(text, at) if is_line_begin else None
        if directive:
            at = directive.end()
            continue
        match = TOKEN.match(text, at)
        kind = match.lastgroup if match.lastgroup != "fence" else "raw"
        if kind not in ("space", "comment"):
            tokens.append(Token(kind, match.group(), at))
        is_line_begin = kind == "space" and "\n" in match.group() or (is_line_begin and kind in ("space", "comment"))
        at = match.end()
    return tokens


@dataclass(frozen=True)
class Function:
    """A function with its body, as indexes of tokens: [first, last]. `body` is the index of the opening brace."""

    first: int
    body: int
    last: int


class Source:
    """The text of one file, its tokens, their matching brackets and the functions that are defined in it."""

    def __init__(self, text):
        self.text = text
        self.tokens = tokenize(text)
        self.partner = self._match_brackets()
        self.functions = []
        self._find_functions(0, len(self.tokens))
        self._line_begins = [0] + [match.end() for match in re.finditer("\n", text)]

    def line(self, offset):
        return bisect.bisect_right(self._line_begins, offset)

    def function_of(self, index):
        """The outermost function that holds the token, its head included; None outside of all functions."""
        return next((function for function in self.functions if function.first <= index <= function.last), None)

    def is_in_body(self, index):
        function = self.function_of(index)
        return function is not None and index > function.body

    def lines_of(self, function):
        return (self.line(self.tokens[function.first].begin), self.line(self.tokens[function.last].begin))

    def word(self, index):
        """The text of a token; empty beyond the ends."""
        return self.tokens[index].text if 0 <= index < len(self.tokens) else ""

    def _match_brackets(self):
        partner, waiting = {}, []
        for index, token in enumerate(self.tokens):
            if token.kind != "sign":
                continue
            if token.text in OPENING:
                waiting.append(index)
            elif token.text in CLOSING:
                opening = waiting.pop()
                partner[opening], partner[index] = index, opening
        return partner

    def _find_functions(self, begin, end):
        """Looks at the declarations between two tokens, inside of namespaces and classes too."""
        first = index = begin
        while index < end:
            text = self.tokens[index].text
            if text == "{":
                head = [token.text for token in self.tokens[first:index]]
                if "(" in head and ("operator" in head or "=" not in self._outside_of_brackets(first, index)):
                    self.functions.append(Function(first, index, self.partner[index]))
                elif SCOPES & set(head):
                    self._find_functions(index + 1, self.partner[index])
                elif "=" in head or self.word(index - 1) not in (")", "const", "override", "noexcept"):
                    index = self.partner[index]  # an initial value
                    first = index + 1 if self.word(index + 1) != ";" else first
                    index += 1
                    continue
                index = self.partner[index]
                first = index + 1
            elif text in "([" and self.tokens[index].kind == "sign":
                index = self.partner[index]
            elif text == ";" or (text == ":" and self.word(index - 1) in ("public", "private", "protected")):
                first = index + 1
            index += 1

    def _outside_of_brackets(self, begin, end):
        words, index = [], begin
        while index < end:
            words.append(self.tokens[index].text)
            index = max(index, self.partner.get(index, index)) + 1
        return words
