"""cppSource.py - C++ sources as tokens, for the figures that are read from the sources.

No compiler: of the preprocessor only the macros of this tree are expanded, and of the grammar only
functions, their names and their parameters are known. Both branches of every condition are read,
so that nothing is missed.
"""

import ast
import collections
import re

# kind: 's' string, 'c' character, 'i' identifier, 'n' number, 'p' punctuation, 'd' directive.
Token = collections.namedtuple("Token", "kind text line spaced")

DIRECTIVE = r"|(?P<d>\#(?:\\\n|/\*.*?\*/|[^\n])*)"
GRAMMAR = r"""(?P<blank>(?:\s+|//[^\n]*|/\*.*?\*/)*)(?:
    (?P<i>[A-Za-z_]\w*(?!["\w]))""" + DIRECTIVE + r"""
    |(?P<s>R"(?P<fence>[^()\s]*)\(.*?\)(?P=fence)"|"(?:\\.|[^"\\\n])*")
    |(?P<c>'(?:\\.|[^'\\\n])+')
    |(?P<n>\.?\d(?:[eEpP][+-]|'?[\w.])*)
    |(?P<p>::|->|\.\.\.|\#\#|<<|>=|<=|==|!=|[^\s\w])
    |(?P<end>\Z))"""
TOKEN = re.compile(GRAMMAR, re.VERBOSE | re.DOTALL)
# Inside a macro's body a '#' is no directive.
BODY_TOKEN = re.compile(GRAMMAR.replace(DIRECTIVE, ""), re.VERBOSE | re.DOTALL)


def tokens_of(text, line=1, pattern=TOKEN):
    """The tokens of `text`, which begins in `line`; comments are blanks."""
    found, at = [], 0
    for match in pattern.finditer(text):
        if match.start() != at:
            raise SyntaxError(f"line {line}: not understood: {text[at:at + 20]}")
        blank, kind, at = match["blank"], match.lastgroup, match.end()
        if blank:
            line += blank.count("\n")
        if kind == "end":
            break
        word = match[kind]
        found.append(Token(kind, word, line, bool(blank)))
        if kind in "sd":
            line += word.count("\n")
    return found


def text_of_literal(token):
    """The characters that a string literal stands for."""
    raw = re.match(r'R"([^(]*)\((.*)\)\1"$', token.text, re.DOTALL)
    return raw.group(2) if raw else ast.literal_eval(token.text)


def closing(tokens, at):
    """The index of what closes the bracket at `at`."""
    depth = 0
    for i in range(at, len(tokens)):
        if tokens[i].kind == "p":
            if tokens[i].text in "([{":
                depth += 1
            elif tokens[i].text in ")]}":
                depth -= 1
                if depth == 0:
                    return i
    raise SyntaxError(f"line {tokens[at].line}: '{tokens[at].text}' is not closed")


def split_at_commas(tokens):
    """The arguments in `tokens`, which stood between parentheses."""
    if not tokens:
        return []
    parts, depth = [[]], 0
    for token in tokens:
        if token.kind == "p":
            depth += (token.text in "([{") - (token.text in ")]}")
        if token.kind == "p" and token.text == "," and depth == 0:
            parts.append([])
        else:
            parts[-1].append(token)
    return parts


def spelled(tokens):
    """What the preprocessor's '#' makes of `tokens`."""
    return "".join((" " if t.spaced and i else "") + t.text for i, t in enumerate(tokens))


class Macro:
    """A macro of this tree."""

    PATTERN = re.compile(r"#\s*define\s+(\w+)(\(([^)]*)\))?(.*)", re.DOTALL)

    def __init__(self, directive):
        joined = directive.text.replace("\\\n", " ")
        self.name, takes, names, body = self.PATTERN.match(joined).groups()
        self.params = [n.strip() for n in names.split(",")] if takes else None
        self.isVariadic = bool(takes) and self.params[-1] == "..."
        if self.isVariadic:
            self.params[-1] = "__VA_ARGS__"
        self.body = tokens_of(body, directive.line, BODY_TOKEN)
        self.doesNothing = spelled(self.body).strip() in ("", "static_cast<void>(0)")

    def bound(self, args):
        """Its parameters' names and what they are in a use."""
        if self.params == [""]:
            return {}
        if self.isVariadic:
            n = len(self.params) - 1
            rest = []
            for i, arg in enumerate(args[n:]):
                rest += ([Token("p", ",", 0, False)] if i else []) + arg
            args = args[:n] + [rest]
        if len(args) != len(self.params):
            raise SyntaxError(f"{self.name}: {len(args)} arguments for {len(self.params)}")
        return dict(zip(self.params, args))

    def replaced(self, values, expand, line):
        """The body with `values` for the parameters."""
        out, i = [], 0
        while i < len(self.body):
            token = self.body[i]
            after = self.body[i + 1] if i + 1 < len(self.body) else None
            if token.text == "#" and after and after.text in values:
                literal = spelled(values[after.text]).replace("\\", "\\\\").replace('"', '\\"')
                out.append(Token("s", f'"{literal}"', line, token.spaced))
                i += 2
                continue
            if token.text == "##" and out and after:
                right = values.get(after.text, [after])
                joined = out.pop().text + (right[0].text if right else "")
                out += [t._replace(line=line) for t in tokens_of(joined)] + list(right[1:])
                i += 2
                continue
            isJoined = after is not None and after.text == "##"
            if token.kind == "i" and token.text in values:
                value = values[token.text]
                out += value if isJoined else expand(value)
            else:
                out.append(token._replace(line=line))
            i += 1
        return out


class Macros:
    """The macros known at a place."""

    def __init__(self, known=()):
        self.known = dict(known)

    def define(self, directive):
        macro = Macro(directive)
        there = self.known.get(macro.name)
        # In the other builds the checks do nothing.
        if not (there and macro.doesNothing):
            self.known[macro.name] = macro

    def directive(self, token):
        word = re.match(r"#\s*(\w*)\s*(\w*)", token.text)
        if word.group(1) == "define":
            self.define(token)
        elif word.group(1) == "undef":
            self.known.pop(word.group(2), None)

    def expand(self, tokens, hidden=frozenset()):
        """`tokens` without macros and directives."""
        out, i = [], 0
        while i < len(tokens):
            token = tokens[i]
            i += 1
            if token.kind == "d":
                self.directive(token)
                continue
            macro = self.known.get(token.text) if token.kind == "i" else None
            if not macro or token.text in hidden:
                out.append(token)
                continue
            values = {}
            if macro.params is not None:
                if i == len(tokens) or tokens[i].text != "(":
                    out.append(token)
                    continue
                end = closing(tokens, i)
                values = macro.bound(split_at_commas(tokens[i + 1:end]) or [[]])
                i = end + 1
            body = macro.replaced(values, lambda v: self.expand(v, hidden), token.line)
            out += self.expand(body, hidden | {token.text})
        return out


Function = collections.namedtuple("Function", "name params begin head end")

SCOPES = {"class", "struct", "union", "enum", "namespace"}


def without_attributes(head):
    """A declaration without what stands before names and means nothing to them."""
    out, i = [], 0
    while i < len(head):
        token = head[i]
        after = head[i + 1].text if i + 1 < len(head) else ""
        if token.text in ("__attribute__", "alignas", "noexcept", "decltype", "throw") and \
                after == "(":
            i = closing(head, i + 1) + 1
        elif token.text == "[" and after == "[":
            i = closing(head, i) + 1
        elif token.text == "template" and after == "<":
            depth, i = 1, i + 2
            while depth:
                depth += (head[i].text == "<") - (head[i].text == ">")
                i += 1
        else:
            out.append(token)
            i += 1
    return out


def function_of(head):
    """The name of the function that `head` begins and the tokens of its parameters; or None."""
    head = without_attributes(head)
    for i, token in enumerate(head):
        if token.text == "operator":
            name, i = "operator", i + 1
            if head[i].text == "(":
                name, i = "operator()", i + 2
            while head[i].text != "(":
                name += (" " if head[i].kind == "i" else "") + head[i].text
                i += 1
            return name, head[i + 1:closing(head, i)]
        if token.text == "=":
            return None
        if token.text == "(":
            if i == 0 or head[i - 1].kind != "i":
                return None
            tilde = i > 1 and head[i - 2].text == "~"
            return ("~" if tilde else "") + head[i - 1].text, head[i + 1:closing(head, i)]
    return None


def names_of(params):
    """The names of the parameters in `params`."""
    names = []
    for param in split_at_commas(params):
        texts = [t.text for t in param]
        cut = min((texts.index(t) for t in ("=", "[") if t in texts), default=len(param))
        words = [t.text for t in param[:cut] if t.kind == "i"]
        names.append(words[-1] if len(words) > 1 else "")
    return names


def is_scope(head):
    plain = [t.text for t in without_attributes(head)]
    while plain and plain[0] in ("inline", "typedef", "static", "const", ":"):
        plain.pop(0)
    if plain[:2] in (["public", ":"], ["protected", ":"], ["private", ":"]):
        plain = plain[2:]
    if not plain:
        return False
    return plain[0] in SCOPES or (plain[0] == "extern" and len(plain) == 2)


def functions_of(tokens):
    """The functions that are defined in `tokens`, which are expanded.

    A function reaches from the first token of its declaration to its closing brace, so what
    initialises the members of an object belongs to its constructor.
    """
    found, begin, i = [], 0, 0
    while i < len(tokens):
        text = tokens[i].text if tokens[i].kind == "p" else ""
        if text == "(" or text == "[":
            i = closing(tokens, i)
        elif text == ";" or text == "}":
            begin = i + 1
        elif text == ":" and i and tokens[i - 1].text in ("public", "protected", "private"):
            begin = i + 1
        elif text == "{":
            head = tokens[begin:i]
            if is_scope(head):
                begin = i + 1
            else:
                end = closing(tokens, i)
                named = function_of(head)
                after = tokens[end + 1].text if end + 1 < len(tokens) else ""
                if named and after not in (",", "{"):  # else a member's initialiser
                    found.append(Function(named[0], names_of(named[1]), begin, i, end))
                i = end
                if named and after not in (",", "{"):
                    begin = i + 1
        i += 1
    return found


class Source:
    """A file, its macros expanded."""

    def __init__(self, path, name, macros):
        self.path, self.name = path, name
        self.raw = tokens_of(path.read_text())
        self.tokens = Macros(macros).expand(self.raw)
        self.functions = functions_of(self.tokens)

    def function_at(self, i):
        for function in self.functions:
            if function.begin <= i <= function.end:
                return function
        return None


DEFINITION = re.compile(r"^[ \t]*#[ \t]*define (?:.*\\\n)*.*", re.MULTILINE)


def macros_of(paths):
    """What the headers among `paths` define, for all files."""
    macros = Macros()
    for path in paths:
        if path.suffix == ".h":
            for match in DEFINITION.finditer(path.read_text()):
                macros.define(Token("d", match.group(), 1, False))
    return macros.known
