"""Finds the places of a file where one small change makes a mutant, and what that change is."""

import hashlib
import re
from dataclasses import dataclass

from mutation.structure import functions_of, statements_of
from mutation.tokens import TokenizedFile

_COMPARISONS = {"==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">"}
_LOGIC = {"&&": "||", "||": "&&"}
_ARITHMETIC = {"+": "-", "-": "+", "*": "/", "/": "*", "%": "*", "|": "&", "&": "|", "^": "|", "<<": ">>", ">>": "<<"}
_ASSIGNMENTS = {"+=": "-=", "-=": "+=", "|=": "&=", "&=": "|=", "^=": "|=", "++": "--", "--": "++"}
_INTEGER = re.compile(r"(0[xX][0-9a-fA-F']+|[0-9']+)([uUlLzZ]*)$")
_STREAMS = {"cout", "cerr", "stream", "ostream", "out"}


@dataclass(frozen=True)
class Site:
    """One change: in `path`, `replacement` for the text from `start` to `end`, with the lines it touches."""

    path: str
    line: int
    function: str
    operator: str
    start: int
    end: int
    replacement: str
    before: str
    after: str
    ident: str

    @property
    def key(self):
        """What stays the same when lines are added elsewhere in the file."""
        return (self.path, self.function, self.before, self.after)

    def applied_to(self, text):
        return text[: self.start] + self.replacement + text[self.end :]


def sites_of(path, text):
    """All sites of a file, in its order."""
    file = TokenizedFile(text)
    changes = []
    for function in functions_of(file):
        changes += [(function.name, *change) for change in _changes_in(file, function)]
    sites, seen = [], {}
    for function, operator, start, end, replacement in sorted(changes, key=lambda change: (change[2], change[1])):
        before, after = _one_line_diff(file.code, start, end, replacement)
        count = seen[function, before, after] = seen.get((function, before, after), 0) + 1
        name = "\0".join((path, function, before, after, str(count)))
        ident = hashlib.sha256(name.encode()).hexdigest()[:8]
        line = text.count("\n", 0, start) + 1
        sites.append(Site(path, line, function, operator, start, end, replacement, before, after, ident))
    return sites


def _one_line_diff(text, start, end, replacement):
    """The lines before and after, without comments and with single spaces."""
    first = text.rfind("\n", 0, start) + 1
    last = text.find("\n", end)
    last = len(text) if last < 0 else last
    before, after = text[first:last], text[first:start] + replacement + text[end:last]
    return " ".join(before.split()), " ".join(after.split())


def _changes_in(file, function):
    """(operator, start, end, replacement) for each."""
    left_out = _left_out(file, function)
    for index in range(function.begin, function.end):
        if index not in left_out:
            yield from _change_of_token(file, index)
    if function.is_initializer:
        return
    for index in range(function.begin, function.end):
        if index not in left_out:
            yield from _change_of_condition(file, index)
            yield from _swapped_branches(file, index)
    for statement in statements_of(file, function):
        if statement.begin in left_out:
            continue
        if statement.kind == "return":
            yield from _change_of_return(file, function, statement)
        else:
            start, end = file.tokens[statement.begin].start, file.tokens[statement.end].start
            yield "drop", start, end, ""


def _left_out(file, function):
    """Where a change could hardly be compiled: template arguments, if constexpr, static_assert, case labels."""
    left_out = set(file.in_template_arguments)
    for index in range(function.begin, function.end):
        text = file.text_of(index)
        if text in ("static_assert", "constexpr", "decltype", "noexcept", "sizeof") and file.text_of(index + 1) == "(":
            left_out.update(range(index, file.partner.get(index + 1, index)))
        elif text == "case":
            position = index
            while position < function.end and file.text_of(position) != ":":
                left_out.add(position)
                position += 1
    return left_out


def _change_of_token(file, index):
    token, text = file.tokens[index], file.text_of(index)
    if token.kind == "number":
        changed = _shifted(text)
        if changed:
            yield "constant", token.start, token.end, changed
    elif text in ("true", "false"):
        yield "bool", token.start, token.end, "false" if text == "true" else "true"
    elif text in _COMPARISONS and file.is_spaced(index):
        yield "comparison", token.start, token.end, _COMPARISONS[text]
    elif text in _LOGIC and file.is_spaced(index):
        yield "logic", token.start, token.end, _LOGIC[text]
    elif text in _ARITHMETIC and file.is_spaced(index) and not _handles_text(file, index):
        yield "arithmetic", token.start, token.end, _ARITHMETIC[text]
    elif text in _ASSIGNMENTS and not _handles_text(file, index):
        yield "assignment", token.start, token.end, _ASSIGNMENTS[text]
    elif text in ("!", "~") and file.text_of(index + 1) != "(" and token.end == file.tokens[index + 1].start:
        yield "negation", token.start, token.end, ""


def _shifted(number):
    integer = _INTEGER.match(number)
    if not integer:
        return f"({number} * 2)" if re.match(r"[0-9.']+$", number) else None
    digits, suffix = integer.groups()
    if digits.startswith("0") and digits[1:2] not in ("x", "X", ""):
        return None  # octal
    value = int(digits.replace("'", ""), 0) + 1
    return (hex(value) if digits[1:2] in ("x", "X") else str(value)) + suffix


def _handles_text(file, index):
    """Whether the statement joins texts or writes to a stream, where + and << have no opposite."""
    for step in (-1, 1):
        position = index
        while 0 <= position < len(file.tokens) and file.text_of(position) not in (";", "{", "}"):
            token = file.tokens[position]
            if token.kind == "string" or token.text in _STREAMS or token.text == "string":
                return True
            position += step
    return False


def _change_of_condition(file, index):
    keyword, opening = file.text_of(index), index + 1
    if keyword not in ("if", "while", "for") or file.text_of(opening) != "(":
        return
    closing = file.partner.get(opening, opening)
    parts = [opening] + _at_top_level(file, opening + 1, closing, ";") + [closing]
    if keyword == "for" and len(parts) != 4:
        return  # over a range
    begin, end = (parts[1] + 1, parts[2]) if keyword == "for" else (parts[-2] + 1, closing)
    if begin >= end or _at_top_level(file, begin, end, "="):
        return  # endless, or a declaration
    if keyword == "if" and _has_a_change_that_negates(file, begin, end):
        return
    start, stop = file.tokens[begin].start, file.tokens[end - 1].end
    condition = file.text[start:stop]
    yield "condition", start, stop, f"!({condition})" if keyword == "if" else f"false && ({condition})"


def _at_top_level(file, begin, end, wanted):
    found, position = [], begin
    while position < end:
        text = file.text_of(position)
        if text == wanted:
            found.append(position)
        if text in ("(", "[", "{"):
            position = file.partner.get(position, end)
        position += 1
    return found


def _has_a_change_that_negates(file, begin, end):
    """A single == or !=, or a leading !: changing that is the same."""
    texts = [file.text_of(i) for i in range(begin, end)]
    if not texts:
        return False
    if "&&" in texts or "||" in texts or "?" in texts:
        return False
    comparisons = len(_at_top_level(file, begin, end, "==")) + len(_at_top_level(file, begin, end, "!="))
    return comparisons == 1 or (texts[0] == "!" and texts[1] != "(") or texts in (["true"], ["false"])


def _swapped_branches(file, index):
    if file.text_of(index) != "?":
        return
    colon, nested, position = None, 0, index + 1
    while position < len(file.tokens):
        text = file.text_of(position)
        if text in ("(", "[", "{"):
            position = file.partner.get(position, position)
        elif text == "?":
            nested += 1
        elif text == ":" and nested:
            nested -= 1
        elif text == ":" and colon is None:
            colon = position
        elif text in (")", "]", "}", ";", ",", ":") and position not in file.in_template_arguments:
            break
        position += 1
    if colon is None or _has_a_change_that_negates(file, _begin_of_condition(file, index), index):
        return
    first = file.text[file.tokens[index + 1].start : file.tokens[colon - 1].end]
    second = file.text[file.tokens[colon + 1].start : file.tokens[position - 1].end]
    yield "branches", file.tokens[index + 1].start, file.tokens[position - 1].end, f"{second} : {first}"


def _begin_of_condition(file, question_mark):
    """The first token of what stands in front of a ?."""
    position = question_mark - 1
    while position > 0:
        text = file.text_of(position)
        if text in (")", "]", "}"):
            position = file.partner.get(position, 0)
        elif text in ("(", "[", "{", ";", ",", "=", ":", "?", "return"):
            return position + 1
        position -= 1
    return question_mark


def _change_of_return(file, function, statement):
    first, end = statement.begin + 1, statement.end
    if first == end:
        yield "drop", file.tokens[statement.begin].start, file.tokens[end].start, ""
    elif function.returns_bool and not statement.in_lambda and not _has_a_change_that_negates(file, first, end):
        start, stop = file.tokens[first].start, file.tokens[end - 1].end
        yield "return", start, stop, f"!({file.text[start:stop]})"


def sample(sites, count, seed):
    """`count` of the sites, the same ones for the same seed; a smaller sample is the beginning of a larger one.

    Of every fifty at most one stands in a widely included header, which costs minutes where others cost seconds.
    """

    def rank(site):
        return hashlib.sha256(f"{seed} {site.ident}".encode()).hexdigest()

    ranked = sorted(sites, key=rank)
    dear = [site for site in ranked if is_widely_included(site.path)]
    cheap = [site for site in ranked if not is_widely_included(site.path)]
    chosen = []
    while len(chosen) < count and (cheap or dear):
        from_header = dear and (not cheap or len(chosen) % 50 == 49)
        chosen.append((dear if from_header else cheap).pop(0))
    return chosen


def is_widely_included(path):
    """Whether it is a header that tests include too."""
    return path.endswith(".h") and "/private/" not in path
