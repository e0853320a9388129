"""Finds the functions of a file, and the statements in them.

Works on the layout of the brackets alone: what stands in front of a { tells a namespace from a class, a function's body
or a braced initialiser.
"""

from dataclasses import dataclass

_BEHIND_A_SIGNATURE = {")", "const", "noexcept", "override", "final", "try", "mutable", "&", "&&"}
_NO_EXPRESSION = set(
    "return if for while switch case default do else try catch using static const constexpr auto typedef struct class"
    " enum goto template static_assert unsigned signed int bool char long short double float void friend public private"
    " protected thread_local typename union namespace alignas".split()
)
_BEHIND_AN_OPERAND = set("( . -> [ = ++ -- << += -= *= /= %= |= &= ^= <<= >>=".split())


@dataclass
class Function:
    """Where a function's code stands, its initialiser list included; or the initialiser of a constant or a member."""

    name: str
    begin: int
    end: int
    returns_bool: bool = False
    is_initializer: bool = False


def functions_of(file):
    """The functions, in the order of the file, and the initialised constants and members outside of them."""
    found = []
    scopes = []  # what each { that is open belongs to: its kind and name
    head = 0  # where the declaration at hand begins
    index = 0
    while index < len(file.tokens):
        text = file.text_of(index)
        if text == "{":
            kind, name = _scope_at(file, head, index)
            if kind == "function":
                end = file.partner.get(index, len(file.tokens))
                found.append(_function(file, head, index, end, name, [n for k, n in scopes if k == "class"]))
                index, head = end, end + 1
            elif kind == "initializer":
                index = file.partner.get(index, index)
            else:
                scopes.append((kind, name))
                head = index + 1
        elif text == "}":
            if scopes:
                scopes.pop()
            head = index + 1
        elif text == ";":
            found += _initialized(file, head, index, [n for k, n in scopes if k == "class"])
            head = index + 1
        elif text == ":" and file.text_of(index - 1) in ("public", "private", "protected"):
            head = index + 1
        elif text in ("(", "["):
            index = file.partner.get(index, index)
        index += 1
    return found


def _scope_at(file, head, brace):
    words = [file.text_of(i) for i in range(head, brace) if i not in file.in_template_arguments]
    if "namespace" in words or "extern" in words[:1]:
        return "namespace", ""
    if "enum" in words:
        return "initializer", ""
    for keyword in ("class", "struct", "union"):
        if keyword in words and "(" not in words[: words.index(keyword)] and words[-1] != ")":
            names = [w for w in words[words.index(keyword) + 1 :] if w.replace("_", "a").isalnum()]
            names = [w for w in names if w not in ("ZELM_EXPORT", "final")]
            return "class", names[0] if names else ""
    before = file.text_of(brace - 1)
    is_initializer_list = "(" in words and before == "}"  # of a constructor: a_{1}, b_{2} {
    if before in _BEHIND_A_SIGNATURE or is_initializer_list or ("->" in words and "(" in words):
        return "function", _name_before_parameters(file, head, brace)
    return "initializer", ""


def _parameters(file, head, end):
    """The index of the ( that opens a declaration's parameters, or None."""
    for index in range(head, end):
        if file.text_of(index) == "(" and index not in file.in_template_arguments:
            if file.text_of(index - 1) == "operator":
                continue
            return index
    return None


def _name_before_parameters(file, head, brace):
    equals = [
        i
        for i in range(head, brace)
        if file.text_of(i) == "=" and file.text_of(i - 1) != "operator" and i not in file.in_template_arguments
    ]
    parameters = _parameters(file, head, brace)
    if equals and (parameters is None or equals[0] < parameters):  # a constant that holds a lambda
        return file.text_of(equals[0] - 1)
    if parameters is None:
        return ""
    for index in range(max(head, parameters - 4), parameters):
        if file.text_of(index) == "operator":
            classes = _qualified(file, head, index) if file.text_of(index - 1) == "::" else ""
            target = " ".join(file.text_of(i) for i in range(index + 1, parameters))
            return f"{classes}operator{' ' if target[:1].isalpha() else ''}{target}"
    return _qualified(file, head, parameters)


def _qualified(file, head, end):
    """The name that ends in front of `end`, with its classes and without their template arguments."""
    parts, index = [], end - 1
    while index >= head:
        if index in file.in_template_arguments:
            index -= 1
        elif file.text_of(index) in ("::", "~") or (
            file.tokens[index].kind == "name" and (not parts or parts[-1] in ("::", "~"))
        ):
            parts.append(file.text_of(index))
            index -= 1
        else:
            break
    return "".join(reversed(parts))


def _function(file, head, brace, end, name, classes):
    parameters = _parameters(file, head, brace)
    begin, returns_bool = brace, name == "operator bool"
    if parameters is not None:
        closing = file.partner.get(parameters, brace)
        for index in range(closing, brace):
            if file.text_of(index) == ":" and index not in file.in_template_arguments:
                begin = index
                break
        own_name = name.split("::")[-1]
        for index in range(head, parameters):
            text = file.text_of(index)
            if text == "bool" and index not in file.in_template_arguments and file.text_of(index - 1) != "operator":
                follower = file.text_of(index + 1)
                returns_bool = returns_bool or (follower not in ("*", "&", "const") and own_name != "")
    return Function("::".join(classes + [name]), begin, end, returns_bool)


def _initialized(file, head, end, classes):
    """The initialiser of `constexpr int limit = 3;` or `bool open_ = false;`, in a list; empty if that is none."""
    words = [file.text_of(i) for i in range(head, end)]
    if any(word in words for word in ("using", "enum", "template", "friend", "typedef", "static_assert", "operator")):
        return []
    for index in range(head, end):
        if file.text_of(index) == "(":
            return []
        if file.text_of(index) == "=":
            name = next((words[i] for i in range(index - head - 1, -1, -1) if file.tokens[head + i].kind == "name"), "")
            return [Function("::".join(classes + [name]), index + 1, end, is_initializer=True)]
    return []


@dataclass
class Statement:
    begin: int
    end: int  # the semicolon
    kind: str  # expression, jump or return
    in_lambda: bool


def statements_of(file, function):
    """The statements of a function that can be left out, and its return statements."""
    found = []
    for index in range(function.begin, function.end):
        if not _begins_statement(file, index):
            continue
        kind = _kind_of_statement(file, index)
        end = _end_of_statement(file, index, function.end) if kind else None
        if end is not None:
            found.append(Statement(index, end, kind, _is_in_lambda(file, index, function)))
    return found


def _begins_statement(file, index):
    before = file.text_of(index - 1)
    if before in ("{", "}", ";", "else", "do"):
        return not _is_in_parentheses(file, index)
    if before == ":":
        return _is_behind_label(file, index - 1)
    if before == ")":
        return file.text_of(file.partner.get(index - 1, 0) - 1) in ("if", "for", "while", "switch", "constexpr")
    return False


def _is_in_parentheses(file, index):
    """Whether the innermost bracket around it is a ( or [, as in the header of a for loop."""
    depth = 0
    for position in range(index - 1, -1, -1):
        text = file.text_of(position)
        if text in (")", "]", "}"):
            depth += 1
        elif text in ("(", "[", "{"):
            if depth == 0:
                return text != "{"
            depth -= 1
    return False


def _is_behind_label(file, colon):
    for position in range(colon - 1, max(colon - 12, -1), -1):
        text = file.text_of(position)
        if text in ("case", "default"):
            return True
        if text in (";", "{", "}", "?", "("):
            return False
    return False


def _kind_of_statement(file, index):
    text = file.text_of(index)
    if text in ("break", "continue", "throw", "delete"):
        return "jump"
    if text == "return":
        return "return"
    if text in ("++", "--", "*"):
        return "expression"
    if index >= len(file.tokens) or file.tokens[index].kind != "name" or text in _NO_EXPRESSION:
        return None
    position = index + 1
    while True:
        if file.text_of(position) == "::":
            position += 2
        elif file.text_of(position) == "<" and not file.is_spaced(position):
            end = file.end_of_template_arguments(position)
            if end == position:
                return None
            position = end
        else:
            break
    return "expression" if file.text_of(position) in _BEHIND_AN_OPERAND else None


def _end_of_statement(file, index, limit):
    position = index
    while position < limit:
        text = file.text_of(position)
        if text == ";":
            return position
        if text in (")", "]", "}"):
            return None
        if text in ("(", "[", "{"):
            position = file.partner.get(position, limit)
        position += 1
    return None


def _is_in_lambda(file, index, function):
    depth = 0
    for position in range(index - 1, function.begin, -1):
        text = file.text_of(position)
        if text == "}":
            depth += 1
        elif text == "{" and depth:
            depth -= 1
        elif text == "{":
            before = position - 1
            while file.text_of(before) in ("mutable", "noexcept"):
                before -= 1
            if file.text_of(before) == ")":
                before = file.partner.get(before, 1) - 1
            if file.text_of(before) == "]":
                return True
    return False
