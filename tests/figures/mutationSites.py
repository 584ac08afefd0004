"""Where one operator or constant of the library's sources can be changed, and into what."""

import hashlib
import re
import subprocess

# What stands where a binary operator can stand, and what takes its place.
BINARY = {
    "<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==",
    "+": "-", "-": "+", "*": "/", "/": "*", "%": "*",
    "&&": "||", "||": "&&", "&": "|", "|": "&", "^": "&", "<<": ">>", ">>": "<<",
    "+=": "-=", "-=": "+=", "*=": "/=", "/=": "*=", "%=": "*=",
    "&=": "|=", "|=": "&=", "^=": "&=", "<<=": ">>=", ">>=": "<<=",
}
UNARY = {"++": "--", "--": "++", "!": "", "~": ""}
WORDS = {"true": "false", "false": "true"}

# In the order in which a tokeniser has to try them.
TOKEN = re.compile(
    r"""(?P<comment>//(?:\\\n|[^\n])*|/\*.*?\*/)
      | (?P<directive>^[ \t]*\#(?:\\\n|/\*.*?\*/|[^\n])*)
      | (?P<text>(?:u8|[uUL])?R"(?P<mark>[^(\s]*)\(.*?\)(?P=mark)"
               | (?:u8|[uUL])?"(?:\\.|[^"\\])*" | (?:u8|[uUL])?'(?:\\.|[^'\\])*')
      | (?P<number>\.?[0-9](?:[eEpP][+-]|'(?=[0-9a-fA-F])|[0-9a-zA-Z_.])*)
      | (?P<word>[A-Za-z_][A-Za-z_0-9]*)
      | (?P<operator><<=|>>=|<=>|->\*|\.\.\.|\+\+|--|->|::|<<|<=|>=|==|!=|&&|\|\|
                   |\+=|-=|\*=|/=|%=|&=|\|=|\^=|[-+*/%<>=!&|^~?:;,.(){}\[\]\#])
      | (?P<space>\s+)""", re.VERBOSE | re.DOTALL | re.MULTILINE)
INTEGER = re.compile(r"(0[xX][0-9a-fA-F']+|0[bB][01']+|[0-9']+)([uUlLzZ]*)$")

# What is between the brackets after these is said to the compiler and is not run.
TO_THE_COMPILER = {"static_assert", "assert", "alignas", "alignof", "decltype", "noexcept",
                   "__attribute__"}


class Site:
    """A place in a file: what stands there, from where to where, and what takes its place."""

    def __init__(self, path, line, start, old, new):
        self.path, self.line, self.start, self.old, self.new = path, line, start, old, new
        self.text = None  # of the line
        self.number = 1  # among the same changes of the same text in this file

    def __str__(self):
        return f"{self.path}:{self.line}: {self.change()}"

    def change(self):
        return f"{self.old} -> {self.new or 'nothing'}"

    def name(self):
        """Says which site it is also after an edit elsewhere in the file."""
        return f"{self.path} @ {self.text} @ {self.change()} @ {self.number}"

    def applied(self, text):
        return text[:self.start] + self.new + text[self.start + len(self.old):]


def tokens_of(text):
    """Kind, characters, start and line of each token; comments and directives are none."""
    found, at, line = [], 0, 1
    while at < len(text):
        match = TOKEN.match(text, at)
        if not match:
            raise SystemExit(f"mutants.py: line {line}: no token: {text[at:at + 20]!r}")
        if match.lastgroup not in ("comment", "directive", "space"):
            kind = "text" if match.lastgroup == "mark" else match.lastgroup
            found.append((kind, match.group(), at, line))
        line += match.group().count("\n")
        at = match.end()
    return found


def bracketed(tokens, first, opening, closing):
    """Behind the bracket that closes the one at `first`."""
    depth = 0
    for i in range(first, len(tokens)):
        depth += {opening: 1, closing: -1}.get(tokens[i][1], 0)
        if tokens[i][1] == ">>" and closing == ">":
            depth -= 2
        if depth <= 0:
            return i + 1
    return len(tokens)


def run_tokens(tokens):
    """The positions of the tokens that are not just said to the compiler."""
    i = 0
    while i < len(tokens):
        word = tokens[i][1]
        following = tokens[i + 1][1] if i + 1 < len(tokens) else ""
        if word in TO_THE_COMPILER and following == "(":
            i = bracketed(tokens, i + 1, "(", ")")
        elif word == "template" and following == "<":
            i = bracketed(tokens, i + 1, "<", ">")
        elif word == "[" and following == "[":
            i = bracketed(tokens, i, "[", "]")
        elif word == "operator":
            i += 2
        else:
            yield i
            i += 1


def successor(number):
    match = INTEGER.match(number)
    if not match:
        return None  # with a fraction
    digits, suffix = match.group(1).replace("'", ""), match.group(2)
    if digits[:2] in ("0x", "0X"):
        return f"{int(digits, 16) + 1:#x}{suffix}"
    if digits[:2] in ("0b", "0B"):
        return f"{int(digits, 2) + 1:#b}{suffix}"
    octal = len(digits) > 1 and digits[0] == "0"
    return f"0{int(digits, 8) + 1:o}{suffix}" if octal else f"{int(digits) + 1}{suffix}"


def is_binary(text, start, length):
    """The layout of the sources tells: blanks on both sides, which brackets of templates and
    declarators of pointers and references do not have. What assigns is nothing else anyway."""
    end = start + length
    return text[start - 1].isspace() and text[end].isspace()


def names_destructor(tokens, i):
    before = tokens[i - 1][1] if i else ""
    return (before in ("::", ".", "->", "virtual") or
            [token[1] for token in tokens[i + 2:i + 4]] == ["(", ")"])


def replacement(text, tokens, i):
    """What takes the place of token `i`, or None."""
    kind, old, start, _ = tokens[i]
    if kind == "number":
        return successor(old)
    if kind == "word":
        return WORDS.get(old)
    if kind != "operator":
        return None
    if old in BINARY and is_binary(text, start, len(old)):
        return BINARY[old]
    if old == "~" and names_destructor(tokens, i):
        return None
    return UNARY.get(old)


def sites_of(path, text, live_lines):
    """The sites of one file, in the lines that the tested build compiles."""
    tokens = tokens_of(text)
    found = []
    for i in run_tokens(tokens):
        _, old, start, line = tokens[i]
        if line in live_lines:
            new = replacement(text, tokens, i)
            if new is not None:
                found.append(Site(path, line, start, old, new))
    name_sites(found, text.split("\n"))
    return found


def name_sites(sites, lines):
    counts = {}
    for site in sites:
        site.text = lines[site.line - 1].strip()
        same = site.text, site.old, site.new
        counts[same] = site.number = counts.get(same, 0) + 1


def live_lines(command, wanted):
    """The lines of each of the files `wanted` that are left when `command` has preprocessed."""
    output = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    lines = {path: set() for path in wanted}
    path, line = None, 0
    for row in output.splitlines():
        marker = re.match(r'# (\d+) "([^"]*)"', row)
        if marker:
            line, path = int(marker.group(1)), marker.group(2)
            continue
        if path in lines and row.strip():
            lines[path].add(line)
        line += 1
    return lines


def in_random_order(sites, seed):
    """Each site has a place of its own, so that an edit changes no more of a sample than what it
    has edited."""
    return sorted(sites, key=lambda s: hashlib.sha256(f"{seed} {s.name()}".encode()).digest())
