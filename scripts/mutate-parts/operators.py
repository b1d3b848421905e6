"""The table of operators: what single changes a source file offers.

A place is one change: the text between two offsets becomes another one. An operator is a function that yields the places of
one kind in a Source. Whether the changed text still compiles is found out by compiling it.
"""

import hashlib
import re
from dataclasses import dataclass

NOT_CALLED = {"if", "while", "for", "switch", "return", "sizeof", "alignof", "decltype", "catch", "FAILED", "SUCCEEDED"}
NOT_A_STATEMENT = {"return", "if", "else", "for", "while", "do", "switch", "case", "default", "break", "continue", "using",
                   "const", "constexpr", "static", "struct", "class", "enum", "template", "static_assert", "delete", "new"}
# Arguments that say where a line of the log comes from, or are 0 already.
NOT_REPLACED = {"HERE", "__LINE__", "this", "0", "nullptr", "FALSE", "S_OK", "CP_ACP", "LOCALE_NEUTRAL", "SHGFP_TYPE_CURRENT",
                "INTERNET_OPEN_TYPE_PRECONFIG"}
ASSIGNMENTS = {"=", "+=", "-=", "*=", "/=", "|=", "&=", "^=", "%="}
CONDITION_ENDS = ASSIGNMENTS | {"return", ",", ";", "?", ":", "{", "}", "(", "["}

SWAPS = {
    "boundary": {"<": "<=", "<=": "<", ">": ">=", ">=": ">"},
    "equality": {"==": "!=", "!=": "=="},
    "connective": {"&&": "||", "||": "&&"},
    "arithmetic": {"+": "-", "-": "+", "*": "/", "+=": "-=", "-=": "+="},
    "step": {"++": "--", "--": "++"},
    "bits": {"|": "&", "&": "|", "|=": "&=", "&=": "|="},
    "truth": {"true": "false", "false": "true", "TRUE": "FALSE", "FALSE": "TRUE", "VARIANT_TRUE": "VARIANT_FALSE",
              "VARIANT_FALSE": "VARIANT_TRUE"},
    "success": {"FAILED": "SUCCEEDED", "SUCCEEDED": "FAILED"},
}
RESULTS = {"S_OK": ("S_FALSE", "E_FAIL"), "S_FALSE": ("S_OK", "E_FAIL"), "E_FAIL": ("S_OK", "E_UNEXPECTED")}
RESULT = re.compile(r"E_[A-Z]+|DISP_E_[A-Z]+|CLASS_E_[A-Z]+|k\w+Result")
INTEGER = re.compile(r"(0[xX][0-9a-fA-F]+|\d+)([uUlL]*)")
ESCAPE = re.compile(r"\\(?:x[0-9a-fA-F]+|[0-7]{1,3}|.)|%[-+ #0]*[\d*]*(?:\.[\d*]+)?(?:[hlIw]|I64|ll)*[a-zA-Z%]")


@dataclass(frozen=True)
class Place:
    operator: str
    begin: int
    end: int
    after: str


def is_binary(source, index):
    """The project's format sets a binary operator between blanks, but no reference and no bracket of a template."""
    token = source.tokens[index]
    return source.text[token.begin - 1].isspace() and source.text[token.end].isspace()


def swaps(operator):
    table = SWAPS[operator]

    def places(source):
        for index, token in enumerate(source.tokens):
            if token.kind not in ("sign", "word") or token.text not in table:
                continue
            if token.text in ("<", ">", "<=", ">=", "+", "-", "*", "&", "|", "&&") and not is_binary(source, index):
                continue
            if source.word(index - 1) in ("operator", "template"):
                continue
            yield Place(operator, token.begin, token.end, table[token.text])

    return places


def negations(source):
    """Conditions of if, while, for and ?: become their contraries; what is one FAILED or SUCCEEDED is left to "success"."""
    for first, behind in conditions(source):
        if source.word(first) not in SWAPS["success"] or source.partner[first + 1] != behind - 1:
            begin, end = source.tokens[first].begin, source.tokens[behind - 1].end
            yield Place("negation", begin, end, f"!({source.text[begin:end]})")


def conditions(source):
    """As indexes of the first token and of the one behind the last."""
    for index, token in enumerate(source.tokens):
        if token.text in ("if", "while") and source.word(index + 1) == "(":
            yield index + 2, source.partner[index + 1]
        elif token.text == "for" and source.word(index + 1) == "(":
            clauses = [at for at in range(index + 2, source.partner[index + 1]) if source.word(at) == ";"]
            if len(clauses) == 2 and clauses[1] > clauses[0] + 1:
                yield clauses[0] + 1, clauses[1]
        elif token.text == "?" and token.kind == "sign":
            begin = index
            while source.word(begin - 1) not in CONDITION_ENDS:
                begin = source.partner.get(begin - 1, begin - 1)
            yield begin, index


def constants(source):
    for index, token in enumerate(source.tokens):
        match = INTEGER.fullmatch(token.text) if token.kind == "number" else None
        if not match or is_pure(source, index):
            continue
        value = int(match[1], 0) if not re.fullmatch("0[0-7]+", match[1]) else int(match[1], 8)
        yield Place("constant", token.begin, token.end, f"{value + 1}{match[2]}")
        if value > 0:
            yield Place("constant", token.begin, token.end, f"{value - 1}{match[2]}")


def is_pure(source, index):
    """The 0 of a pure virtual function."""
    return source.word(index - 1) == "=" and source.word(index - 2) in (")", "const", "override")


def results(source):
    for index, token in enumerate(source.tokens):
        if token.kind != "word" or source.word(index + 1) == "=":
            continue
        others = RESULTS.get(token.text) or (("E_FAIL",) if RESULT.fullmatch(token.text) else ())
        for other in others:
            yield Place("result", token.begin, token.end, other)


def texts(source):
    """A text loses everything, or has one character replaced: neither an escape nor a conversion of a format."""
    for token in source.tokens:
        if token.kind != "string" or len(token.text) == token.text.index('"') + 2:
            continue
        begin = token.text.index('"') + 1
        yield Place("text", token.begin, token.end, f'{token.text[:begin]}"')
        skipped = {at for match in ESCAPE.finditer(token.text) for at in range(*match.span())}
        plain = [at for at in range(begin, len(token.text) - 1) if at not in skipped]
        if plain:
            at = plain[digest(token.text, token.begin) % len(plain)]
            yield Place("text", token.begin + at, token.begin + at + 1, "#" if token.text[at] != "#" else "-")


def characters(source):
    for token in source.tokens:
        if token.kind == "char":
            quote = token.text.index("'")
            yield Place("character", token.begin + quote, token.end, "'\\1'" if token.text[quote:] != "'\\1'" else "'\\2'")


def deletions(source):
    """Statements go: expressions, jumps, and a return with something behind it."""
    for index in range(len(source.tokens)):
        if not begins_statement(source, index):
            continue
        word = source.word(index)
        end = None
        if word in ("break", "continue"):
            end = index + 1
        elif word == "return":
            end = end_of(source, index)
            if is_last(source, end):
                continue
        elif is_expression(source, index):
            end = end_of(source, index)
        if end is not None:
            yield Place("deletion", source.tokens[index].begin, source.tokens[end].end, ";")


def begins_statement(source, index):
    if not source.is_in_body(index):
        return False
    before = source.word(index - 1)
    if before in (";", "else", "do", "}"):
        return not is_in_round_brackets(source, index)
    if before == "{":
        return is_block(source, index - 1)
    if before == ")":
        return source.word(source.partner[index - 1] - 1) in ("if", "while", "for")
    return before == ":" and (source.word(index - 2) == "default" or is_case_label(source, index - 1))


def is_in_round_brackets(source, index):
    """Between the clauses of a for."""
    return any(source.word(opening) == "(" and opening < index < closing
               for opening, closing in source.partner.items()
               if opening < closing and source.word(opening - 1) == "for")


def is_block(source, opening):
    return source.word(opening - 1) in (")", "else", "do", "const", "noexcept", "override", ";", "{", "}", ":")


def is_case_label(source, colon):
    at = colon - 1
    while source.word(at) not in (";", "{", "}", "case", "?", ""):
        at -= 1
    return source.word(at) == "case"


def end_of(source, index):
    """The semicolon that ends the statement."""
    while source.word(index) != ";":
        index = source.partner.get(index, index) + 1 if source.word(index) in "([{" else index + 1
    return index


def is_last(source, semicolon):
    """Nothing but closing brackets follows in the function: without a return there would be no result."""
    at, last = semicolon + 1, source.function_of(semicolon).last
    while at < last and source.word(at) == "}":
        at += 1
    return at >= last


def is_expression(source, index):
    """A call, an assignment or a step; no declaration: there a name follows a name."""
    if source.word(index) in ("++", "--", "*"):
        return True
    at = index + 1 if source.word(index) == "::" else index
    if source.word(index) in NOT_A_STATEMENT or source.tokens[at].kind != "word":
        return False
    while True:
        at += 1
        if source.word(at) in ("::", ".", "->"):
            at += 1
        elif source.word(at) in ("(", "["):
            at = source.partner[at]
        elif source.word(at) == "<" and not is_binary(source, at):
            while source.word(at) != ">":
                at += 1
        else:
            return source.word(at) in ASSIGNMENTS or source.word(at) in (";", "++", "--") and at > index + 1


def arguments(source):
    """An argument becomes 0: a null pointer, no flags, no count."""
    for opening, token in enumerate(source.tokens):
        if token.text != "(" or not source.is_in_body(opening) or source.word(opening - 1) in NOT_CALLED:
            continue
        if source.tokens[opening - 1].kind != "word" and source.word(opening - 1) != ">":
            continue
        first = opening + 1
        for end in argument_ends(source, opening):
            begin, behind = source.tokens[first].begin, source.tokens[end - 1].end
            if end > first and source.text[begin:behind] not in NOT_REPLACED and source.tokens[first].kind != "string":
                yield Place("argument", begin, behind, "0")
            first = end + 1


def argument_ends(source, opening):
    at, closing = opening + 1, source.partner[opening]
    while at < closing:
        if source.word(at) == ",":
            yield at
        elif source.word(at) in ("(", "[", "{"):
            at = source.partner[at]
        at += 1
    yield closing


# Each operator, and how heavily one of its places weighs when places are drawn: texts and constants stand by the dozen in
# tables.
OPERATORS = {
    "boundary": (swaps("boundary"), 1.0),
    "equality": (swaps("equality"), 1.0),
    "connective": (swaps("connective"), 1.0),
    "negation": (negations, 1.0),
    "arithmetic": (swaps("arithmetic"), 1.0),
    "step": (swaps("step"), 1.0),
    "bits": (swaps("bits"), 1.0),
    "truth": (swaps("truth"), 1.0),
    "success": (swaps("success"), 1.0),
    "constant": (constants, 0.4),
    "result": (results, 0.5),
    "deletion": (deletions, 1.0),
    "argument": (arguments, 0.5),
    "character": (characters, 0.5),
    "text": (texts, 0.15),
}


def all_places(source):
    """Every change that the file offers, in the order of the text."""
    kept_out = list(unobservable(source))
    places = [place for find, _ in OPERATORS.values() for place in find(source)
              if not any(begin <= place.begin < end for begin, end in kept_out)]
    return sorted(places, key=lambda place: (place.begin, place.end, place.operator, place.after))


def unobservable(source):
    """What has no effect of its own at run time, by its construction."""
    for index, token in enumerate(source.tokens):
        if token.text in ("static_assert", "__attribute__", "alignas", "NORVIK_PRINTF") and source.word(index + 1) == "(":
            closing = source.partner[index + 1]
        elif token.text == "template":
            closing = index + 1
            while source.word(closing) != ">":
                closing += 1
        elif token.text in ("using", "friend"):
            closing = end_of(source, index)
        else:
            continue
        yield token.begin, source.tokens[closing].end


def digest(*words):
    return int.from_bytes(hashlib.sha256(repr(words).encode()).digest()[:8], "big")
