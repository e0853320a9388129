"""Splits C++ source text into tokens, without comments and preprocessor lines.

Just enough of the language to find places worth changing: names, numbers, literals and operators, each with its place
in the text. Brackets are paired. Angle brackets that hold template arguments are told from comparisons by the layout
that clang-format gives the code: an operator has white space on both sides, a template's bracket never has.
"""

import re
from dataclasses import dataclass

_PATTERN = re.compile(
    r"""
    (?P<space>\s+)
  | (?P<comment>//[^\n]*|/\*.*?\*/)
  | (?P<preprocessor>^[ \t]*\#(?:\\\n|[^\n])*)
  | (?P<string>(?:u8|[uUL])?R"(?P<delimiter>[^()\s\\]*)\(.*?\)(?P=delimiter)"|(?:u8|[uUL])?"(?:\\.|[^"\\\n])*")
  | (?P<character>(?:u8|[uUL])?'(?:\\.|[^'\\\n])+')
  | (?P<number>\.?\d(?:'?[eEpP][+-]|'?[\w.])*)
  | (?P<name>[A-Za-z_]\w*)
  | (?P<punctuation><=>|->\*|\.\.\.|<<=|>>=|::|->|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|.)
    """,
    re.VERBOSE | re.MULTILINE | re.DOTALL,
)

_CLOSERS = {")": "(", "]": "[", "}": "{"}


@dataclass
class Token:
    kind: str  # string, character, number, name or punctuation
    text: str
    start: int
    end: int


class TokenizedFile:
    """The tokens of a text. `partner` gives the other bracket's index for each (, ), [, ], { and }."""

    def __init__(self, text):
        self.text = text
        self.code = text  # with spaces where comments stand
        self.tokens = []
        for match in _PATTERN.finditer(text):
            kind = "string" if match.lastgroup == "delimiter" else match.lastgroup
            if kind == "comment":
                blank = re.sub(r"[^\n]", " ", match.group())
                self.code = self.code[: match.start()] + blank + self.code[match.end() :]
            elif kind not in ("space", "preprocessor"):
                self.tokens.append(Token(kind, match.group(), match.start(), match.end()))
        self.partner = self._pair_brackets()
        self.in_template_arguments = self._find_template_arguments()

    def _pair_brackets(self):
        partner, open_brackets = {}, []
        for index, token in enumerate(self.tokens):
            if token.kind != "punctuation":
                continue
            if token.text in _CLOSERS.values():
                open_brackets.append(index)
            elif token.text in _CLOSERS and open_brackets:
                partner[index] = open_brackets.pop()
                partner[partner[index]] = index
        return partner

    def text_of(self, index):
        """The token's text; empty beyond the ends and for literals, so that it can be compared with operators."""
        if not 0 <= index < len(self.tokens) or self.tokens[index].kind in ("string", "character"):
            return ""
        return self.tokens[index].text

    def is_spaced(self, index):
        """Whether white space stands on both sides, as around a binary operator."""
        token = self.tokens[index]
        return (
            token.start > 0
            and token.end < len(self.text)
            and self.text[token.start - 1].isspace()
            and self.text[token.end].isspace()
        )

    def _find_template_arguments(self):
        inside = set()
        for index in range(len(self.tokens)):
            if self.text_of(index) == "<" and not self.is_spaced(index):
                end = self.end_of_template_arguments(index)
                inside.update(range(index, end))
        for index in range(len(self.tokens) - 1):  # the space is clang-format's
            if self.text_of(index) == "template" and self.text_of(index + 1) == "<":
                inside.update(range(index, self.end_of_template_arguments(index + 1, stop_at=(";", "{"))))
        return inside

    def end_of_template_arguments(self, index, stop_at=(";", "{", "}", "&&", "||")):
        """Just behind the > that closes the < at `index`; `index` itself if none does."""
        depth = 0
        for position in range(index, len(self.tokens)):
            text = self.text_of(position)
            if text == "<":
                depth += 1
            elif text in (">", ">>"):
                depth -= len(text)
                if depth <= 0:
                    return position + 1
            elif text in stop_at:
                break
        return index
