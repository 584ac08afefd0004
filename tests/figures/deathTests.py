"""deathTests.py - the texts with which tests expect a process to end, whole and exact."""

import collections
import re

from cppSource import (Macros, SCOPES, closing, function_of, is_scope, names_of, split_at_commas,
                       text_of_literal, tokens_of, without_attributes)

# What stands in a text for something that is only known when the test runs.
UNKNOWN = "\0"

# A declaration outside of functions; suite is that of a test.
Segment = collections.namedtuple("Segment", "file name suite tokens")

TESTS = {"TEST", "TEST_F", "TEST_P", "TYPED_TEST", "TYPED_TEST_P"}
EQUAL_TO = ["Eq", "(", "std", "::", "string", "("]
# Tests that are not compiled.
UNUSED = re.compile(r"^#if 0$.*?^#endif$", re.DOTALL | re.MULTILINE)


def name_of_variable(head):
    i, isType = 0, False
    while i < len(head):
        if head[i].text == "{" and isType:  # of a type without a name
            i = closing(head, i)
        elif head[i].text in ("=", "[", "{", "(", ";"):
            return head[i - 1].text if i else ""
        isType = isType or head[i].text in SCOPES
        i += 1
    return ""


def segment_of(file, tokens, head):
    named = function_of(head)
    if named and named[0] in TESTS:
        suite, test = (part[0].text for part in split_at_commas(named[1])[:2])
        return Segment(file, test, suite, tokens)
    plain = without_attributes(head)
    if plain and plain[0].text in SCOPES and len(plain) > 1:
        return Segment(file, plain[1].text, "", tokens)
    return Segment(file, named[0] if named else name_of_variable(plain), "", tokens)


def segments_of(file, tokens):
    """The declarations in `tokens`; namespaces are entered, classes are not."""
    found, begin, i = [], 0, 0
    while i < len(tokens):
        text = tokens[i].text if tokens[i].kind == "p" else ""
        if text in ("(", "["):
            i = closing(tokens, i)
        elif text == "}":  # of a namespace
            begin = i + 1
        elif text == ";":
            found.append(segment_of(file, tokens[begin:i], tokens[begin:i]))
            begin = i + 1
        elif text == "{":
            head = tokens[begin:i]
            if is_scope(head) and any(t.text in ("namespace", "extern") for t in head):
                begin = i + 1
            else:
                i = closing(tokens, i)
                after = tokens[i + 1].text if i + 1 < len(tokens) else ""
                if function_of(head) and after not in (",", "{"):
                    found.append(segment_of(file, tokens[begin:i + 1], head))
                    begin = i + 1
        i += 1
    return found


def live(segments, isRoot):
    """The segments that `isRoot` says and what they name, in their file or in any header."""
    known = collections.defaultdict(list)
    for segment in segments:
        if segment.name and not segment.suite:
            known["" if segment.file.endswith(".h") else segment.file, segment.name].append(segment)
    waiting, found = [s for s in segments if isRoot(s)], {}
    while waiting:
        segment = waiting.pop()
        if id(segment) in found:
            continue
        found[id(segment)] = segment
        for name in {t.text for t in segment.tokens if t.kind == "i"}:
            waiting += known.get((segment.file, name), []) + known.get(("", name), [])
    return list(found.values())


def operand_after(tokens, i):
    """The index behind the operand that begins at `i`."""
    while i < len(tokens) and (tokens[i].kind != "p" or
                               tokens[i].text in ("::", "->", ".", "(", "[", "*", "&")):
        i = closing(tokens, i) + 1 if tokens[i].text in ("(", "[") else i + 1
    return i


def begun_before(tokens, i):
    """What a text begins with that is added, by a '+', to the operand that ends at `i`."""
    depth, literal = 0, ""
    while i >= 0 and (depth or tokens[i].kind != "p" or
                      tokens[i].text in ("::", "->", ".", ")", "]")):
        depth += (tokens[i].text in (")", "]")) - (tokens[i].text in ("(", "["))
        if tokens[i].kind == "s":
            literal = text_of_literal(tokens[i])
        i -= 1
    return literal + UNKNOWN


def literals_of(tokens):
    """Each text in `tokens` with where it begins and ends; UNKNOWN for what is added to it."""
    i = 0
    while i < len(tokens):
        if tokens[i].kind != "s":
            i += 1
            continue
        begin, text = i, ""
        if i and tokens[i - 1].text == "+":
            text = begun_before(tokens, i - 2)
        while i < len(tokens):
            if tokens[i].kind == "s":
                text += text_of_literal(tokens[i])
                i += 1
            elif tokens[i].text == "+" and i + 1 < len(tokens):
                if tokens[i + 1].kind in "sc":
                    text += text_of_literal(tokens[i + 1])
                    i += 2
                else:
                    text += UNKNOWN
                    i = operand_after(tokens, i + 1)
            else:
                break
        yield text, begin, i


def unescaped(expression):
    """What a regular expression matches if that is one text; else None."""
    if re.search(r"(?<!\\)(?:\\\\)*[.*+?\[\]{}()|^$]", expression):
        return None
    return re.sub(r"\\(.)", r"\1", expression)


def comparing_helpers(segments):
    """Functions that compare an argument, and the newline behind it, with all that was said."""
    found = {}
    for segment in segments:
        named = function_of(segment.tokens)
        if not named or segment.suite:
            continue
        names = names_of(named[1])
        texts = [t.text for t in segment.tokens]
        for i in range(len(texts) - 5):
            if texts[i:i + 2] == ["EXPECT_EQ", "("] and texts[i + 2] in names and \
                    texts[i + 3:i + 6] == ["+", '"\\n"', ","]:
                found[named[0]] = names.index(texts[i + 2])
    return found


def is_table(segment):
    return "Misuse" in [t.text for t in segment.tokens[:3]]


def last_columns(tokens):
    """The names in the last columns of a table of misuse, or in front of last words."""
    isMisuse = "Misuse" in [t.text for t in tokens[:3]]
    return {a.text for a, b, c in zip(tokens, tokens[1:], tokens[2:]) if a.kind == "i" and
            (isMisuse and b.text == "}" or b.text == "," and c.text == "LastWords")}


def uses_of(segment, begin, occurrences):
    """How often a text is expected: as often as its name, if it has one."""
    texts = [t.text for t in segment.tokens[max(0, begin - 4):begin]]
    if texts[-1:] != ["="]:
        return 1
    name = texts[0] if texts[-2] == "]" else texts[-2]
    return max(1, occurrences[segment.file][name] - 1)


def texts_of_segment(segment, helpers, named):
    """The texts that are expected, each with its place."""
    tokens = segment.tokens
    texts = [t.text for t in tokens]
    isTable = is_table(segment)
    isColumn = segment.name in named and "char" in texts[:4]
    for text, begin, end in literals_of(tokens):
        anchored = re.fullmatch(r"\^(.*)\n\$", text, re.DOTALL)
        if anchored:
            whole = unescaped(anchored.group(1))
            if whole is not None:
                yield whole, begin
        elif isTable and end < len(texts) and texts[end] == "}":
            yield text, begin  # the last column, which is compared as it is
        elif isColumn:
            yield text.rstrip("\n"), begin
        elif text.endswith("\n") and (texts[begin - 2:begin] == ["are", "("] or
                                      texts[begin - 6:begin] == EQUAL_TO or
                                      texts[end:end + 2] == [",", "LastWords"]):
            yield text[:-1], begin
    for i, token in enumerate(tokens):
        if token.text in helpers and i + 1 < len(tokens) and texts[i + 1] == "(":
            args = split_at_commas(tokens[i + 2:closing(tokens, i + 1)])
            for text, _, _ in literals_of(args[helpers[token.text]]):
                yield text, i


def is_root(segment):
    if segment.suite:
        return "DeathTest" in segment.suite and not segment.name.startswith("DISABLED_")
    return segment.name == "main"


class DeathTests:
    """What the tests under a folder expect of processes that end."""

    def __init__(self, folder):
        paths = sorted(p for p in folder.rglob("*") if p.suffix in (".h", ".cpp"))
        # Those with a text that ends a process, or none, as it may be written.
        wanted = re.compile(r'\\n\$"|"\^\$"|Misuse|LastWords|EXPECT_EQ\(\w+ \+ "\\n"')
        texts = {p: UNUSED.sub("", p.read_text()) for p in paths}
        tokens = {p: tokens_of(texts[p]) for p in paths if wanted.search(texts[p])}
        macros = Macros()
        for path in tokens:
            for token in tokens[path] if path.suffix == ".h" else ():
                if token.kind == "d":
                    macros.directive(token)
        segments = []
        for path in tokens:
            expanded = Macros(macros.known).expand(tokens[path])
            segments += segments_of(str(path.relative_to(folder)), expanded)
        segments = live(segments, is_root)
        helpers = comparing_helpers(segments)
        named = collections.defaultdict(set)
        occurrences = collections.defaultdict(collections.Counter)
        for segment in segments:
            named[segment.file] |= last_columns(segment.tokens)
            occurrences[segment.file].update(t.text for t in segment.tokens if t.kind == "i")
        self.texts = collections.defaultdict(list)  # text: the file of each test
        self.silent = collections.Counter()  # file: ends without a text
        for segment in segments:
            words = {t.text for t in segment.tokens if t.kind == "i"}
            self.silent[segment.file] += sum(t.text == '"^$"' for t in segment.tokens)
            if "fxFatal" in words:
                continue  # a text of the test's own
            for text, at in texts_of_segment(segment, helpers, named[segment.file]):
                uses = uses_of(segment, at, occurrences)
                self.texts[text] += [segment.file] * uses
