#!/usr/bin/env python3
"""messages.py [-l] [TOP] - the messages with which the library ends a process, and their tests.

    GOAL C2 <tested>/<existing> all PASS|FAIL

Every call in kelvofxds/ that ends the process counts, by the text that it says: fxFatal, what is
said on the way to abort() and its kin, and what the checked build says. A function that hands its
own argument on is looked at where it is called, so a message counts once for each text that can be
told from the source; what is only known at run time may be anything of its kind. A message is
tested when a death test, or a program whose last words are compared, expects the whole text.
An end without a message counts as a place, and wants a test of its own in the tests of its file.

Standard error has the messages that no test expects; with -l all, and what tests them. A call that
is not understood is an error: exit status 2.
"""

import collections
import re
import sys
from pathlib import Path

sys.dont_write_bytecode = True
from cppSource import Source, closing, macros_of, split_at_commas, text_of_literal
from deathTests import UNKNOWN, DeathTests

# What ends a process without the library's own fxFatal.
ENDS = {"abort", "exit", "_exit", "_Exit", "quick_exit", "terminate", "raise", "kill", "tgkill",
        "pthread_kill", "__builtin_trap", "__builtin_abort"}
# Where what is said stands among the arguments of what prints: the text, or a format.
PRINTS = {"puts": 0, "fputs": 0, "printf": 0, "fprintf": 1, "vfprintf": 1, "fwrite": 0}
# Who says a format: its place, and what is said before it, numbers being arguments.
SAYS = {"fxFatal": (0, []), "says": (2, [0, "::", 1, ": "])}
# Who they are, not who calls them.
OWN = {("core/fxFatal.cpp", "fxFatal"), ("core/fxChecked.cpp", "says")}

# What is not known before run time, in a test either.
ANYTHING = r"[^\n]*"
CLASS = r"[A-Za-z_][\w:<>,* ]*"
NUMBERS = {"d": "-?[0-9]+", "u": "[0-9]+", "x": "[0-9a-f]+"}
Hole = collections.namedtuple("Hole", "pattern")
Param = collections.namedtuple("Param", "index")

Call = collections.namedtuple("Call", "source at function args")


class NotUnderstood(Exception):
    pass


def where(source, at):
    return f"kelvofxds/{source.name}:{source.tokens[at].line}"


def texts_named_in(source):
    """The constant texts of a file by their names."""
    tokens, found = source.tokens, {}
    for i, token in enumerate(tokens):
        if token.kind != "s" or i < 2 or tokens[i - 1].text != "=":
            continue
        name = tokens[i - 4] if tokens[i - 2].text == "]" else tokens[i - 2]
        text, end = "", i
        while tokens[end].kind == "s":
            text, end = text + text_of_literal(tokens[end]), end + 1
        if tokens[end].text == ";":
            found[name.text] = None if found.get(name.text, text) != text else text
    return found


class Library:
    """The library's sources and the calls in them."""

    def __init__(self, folder):
        paths = sorted(p for p in folder.rglob("*") if p.suffix in (".h", ".cpp"))
        self.folder, self.texts = folder, {p: p.read_text() for p in paths}
        self.macros = macros_of(p for p in paths if "define" in self.texts[p])
        self.named = {}  # file: its constant texts
        self.calls = collections.defaultdict(list)
        self.used = {t.text for m in self.macros.values() for t in m.body}
        self.wanted = set()
        self.want(ENDS | set(SAYS) | set(PRINTS))
        self.check_macros()

    def want(self, names):
        """Reads the files that may call any of the functions, by themselves or by a macro."""
        names = set(names)
        while True:
            more = {m.name for m in self.macros.values() if names & {t.text for t in m.body}}
            if more <= names:
                break
            names |= more
        if names <= self.wanted:
            return
        self.wanted |= names
        called = re.compile(r"\b(?:" + "|".join(sorted(names)) + r")\b")
        for path in [p for p in self.texts if called.search(self.texts[p])]:
            self.read(path)

    def read(self, path):
        source = Source(path, str(path.relative_to(self.folder)), self.macros)
        del self.texts[path]
        self.named[source.name] = texts_named_in(source)
        self.used |= {t.text for t in source.raw if t.kind == "i"}
        for i in range(len(source.tokens) - 1):
            if source.tokens[i].kind != "i":
                continue
            if source.tokens[i + 1].text == "(":
                self.calls[source.tokens[i].text].append((source, i))
            elif source.tokens[i].text in ENDS | set(SAYS):
                # A pointer to it may say anything, anywhere.
                raise NotUnderstood(f"{where(source, i)}: {source.tokens[i].text} is not called")

    def check_macros(self):
        """Every macro that ends a process has to be used, or its message would be missed."""
        for macro in self.macros.values():
            ends = [t.text for t in macro.body if t.text in ENDS | set(SAYS)]
            if ends and macro.name not in self.used:
                raise NotUnderstood(f"macro {macro.name}: calls {ends[0]} and is not used")

    def calls_of(self, name):
        """The calls of a function of that name; its declarations and definitions are none."""
        for source, i in self.calls[name]:
            tokens, function = source.tokens, source.function_at(i)
            before = tokens[i - 1].text if i else ""
            if before in (".", "->"):
                continue
            if before == "::" and i > 1 and tokens[i - 2].kind == "i" and name in ENDS and \
                    tokens[i - 2].text != "std" and tokens[i - 2].text != "return":
                continue
            isDeclared = tokens[i - 1].kind == "i" and before not in ("return", "else", "do")
            if isDeclared or before in ("*", "&", "~", "operator"):
                continue
            if function and i < function.head and name == function.name and \
                    "(" not in [t.text for t in tokens[function.begin:i]]:
                continue
            if not function:
                if name in ENDS or name in SAYS:
                    raise NotUnderstood(f"{where(source, i)}: {name} outside of a function")
                continue
            end = closing(tokens, i + 1)
            yield Call(source, i, function, split_at_commas(tokens[i + 2:end]))

    def is_of_one_file(self, name):
        return not any(source.name.endswith(".h") for source, _ in self.calls[name])

    def value(self, call, arg):
        """What an argument is in a message: a list of texts, holes and parameters."""
        texts = [t.text for t in arg]
        if arg and all(t.kind == "s" for t in arg):
            return ["".join(text_of_literal(t) for t in arg)]
        if texts == ["__func__"]:
            return [call.function.name]
        if len(texts) == 1 and texts[0] in call.function.params:
            return [Param(call.function.params.index(texts[0]))]
        if len(texts) == 1 and self.named[call.source.name].get(texts[0]) is not None:
            return [self.named[call.source.name][texts[0]]]
        if texts[:1] == ["fxClassOf"]:
            return [Hole(CLASS)]
        if "?" in texts and "(" not in texts:
            choices = [text_of_literal(t) for t in arg if t.kind == "s"]
            return [Hole("(?:" + "|".join(map(re.escape, choices)) + ")")]
        return [Hole(ANYTHING)]

    def formatted(self, call, args):
        """What printf makes of a format and what follows it."""
        form = self.value(call, args[0])
        if len(form) != 1 or isinstance(form[0], Hole):
            raise NotUnderstood(f"{where(call.source, call.at)}: the format is not a text")
        if isinstance(form[0], Param):
            return form
        rest, parts = list(args[1:]), []
        for piece in re.findall(r"%[^a-zA-Z%]*(?:l|h|z)*[a-zA-Z%]|[^%]+", form[0]):
            if not piece.startswith("%"):
                parts.append(piece)
            elif piece == "%%":
                parts.append("%")
            elif piece == "%s":
                parts += self.value(call, rest.pop(0))
            elif piece[-1] in NUMBERS:
                parts.append(Hole(NUMBERS[piece[-1]]))
                rest.pop(0)
            else:
                raise NotUnderstood(f"{where(call.source, call.at)}: {piece} is not known")
        if rest:
            raise NotUnderstood(f"{where(call.source, call.at)}: more arguments than conversions")
        return parts


class Messages:
    """The messages: for each, as its possible patterns, the places that say it."""

    def __init__(self, library):
        self.library = library
        self.places = collections.defaultdict(list)
        self.direct = collections.defaultdict(list)  # the places that say it by themselves
        self.silent = collections.defaultdict(dict)  # file: {function: place}
        self.waiting = []  # (function, what it says with its arguments, place)
        self.said = collections.defaultdict(list)  # who hands arguments on: what it says
        self.through = collections.defaultdict(list)  # call: messages of what is called
        for name, (place, before) in SAYS.items():
            for call in library.calls_of(name):
                if (call.source.name, call.function.name) not in OWN:
                    self.add_format(call, place, before)
        for name in sorted(ENDS):
            for call in library.calls_of(name):
                self.add_end(call)
        while self.waiting:
            self.hand_on(*self.waiting.pop())
        for (place, _), patterns in self.through.items():
            self.count(tuple(sorted(set(patterns))), place)
        for said in self.said.values():
            # Its callers want one of several tested; here each has to be.
            for parts, place in said if len(said) > 1 else ():
                self.count((self.pattern(parts, place),), place)

    def add_format(self, call, place, before):
        parts = []
        for part in before:
            parts += [part] if isinstance(part, str) else self.library.value(call, call.args[part])
        self.add(call, parts + self.library.formatted(call, call.args[place:]))

    def add_end(self, call):
        """An end by the system's means: its message is what the function prints before."""
        file, name = call.source.name, call.function.name
        if (file, name) in OWN:
            return
        said = []
        for printer, place in PRINTS.items():
            for other in self.library.calls_of(printer):
                if other.source is call.source and other.function == call.function:
                    said.append((other, place))
        if len(said) > 1:
            raise NotUnderstood(f"{where(call.source, call.at)}: says more than one thing")
        if said:
            other, place = said[0]
            self.add(call, self.library.formatted(other, other.args[place:place + 1]))
        else:
            self.silent[file].setdefault(name, where(call.source, call.at))

    def add(self, call, parts, isThrough=False):
        """A message that is said in the function of `call`, or by those who call that."""
        place = where(call.source, call.at)
        if any(isinstance(p, Param) for p in parts):
            self.waiting.append((call.source, call.function, parts, place))
        elif isThrough:
            self.through[place, call.at].append(self.pattern(parts, place))
        else:
            patterns = (self.pattern(parts, place),)
            self.count(patterns, place)
            if place not in self.direct[patterns]:
                self.direct[patterns].append(place)

    def pattern(self, parts, place):
        """The regular expression of a message; what nobody knows may be anything."""
        if not re.search(r"\w\w", "".join(p for p in parts if isinstance(p, str))):
            raise NotUnderstood(f"{place}: nothing of the message is known")
        return "".join(re.escape(p) if isinstance(p, str) else
                       f"(?:{p.pattern}|{UNKNOWN})" if isinstance(p, Hole) else ANYTHING
                       for p in parts)

    def count(self, patterns, place):
        if place not in self.places[patterns]:
            self.places[patterns].append(place)

    def hand_on(self, source, function, parts, place):
        """A message that `function` completes with its arguments."""
        name, arity = function.name, len(function.params)
        self.library.want([name])
        file = source.name if self.library.is_of_one_file(name) else ""
        if parts in [each for each, _ in self.said[file, name, arity]]:
            return
        self.said[file, name, arity].append((parts, place))
        calls = [c for c in self.library.calls_of(name)
                 if len(c.args) == arity and file in ("", c.source.name)]
        if not calls:
            self.count((self.pattern(parts, place),), place)
        for call in calls:
            filled = []
            for part in parts:
                filled += self.library.value(call, call.args[part.index]) \
                    if isinstance(part, Param) else [part]
            self.add(call, filled, True)


def stem(file):
    return re.sub(r"(Internal)?\.(h|cpp)$", "", file)


def tested_silence(messages, tests):
    """For each place that ends silently, whether the tests of its file expect as many."""
    for file, places in sorted(messages.silent.items()):
        expected = sum(n for test, n in tests.silent.items() if test.startswith(stem(file)))
        for i, (function, place) in enumerate(places.items()):
            yield f"{place}: {function} ends without a message", i < expected


def readable(pattern):
    """A message's pattern as a person would write it."""
    kinds = {CLASS: "CLASS", ANYTHING: "...", **{n: "N" for n in NUMBERS.values()}}
    for kind, name in kinds.items():
        pattern = pattern.replace(f"(?:{kind}|{UNKNOWN})", name).replace(kind, name)
    return re.sub(r"\\(.)", r"\1", pattern)


def tested_messages(messages, tests):
    """For each message what it is, and the tests that expect it; once more for each further place
    that says the same by itself."""
    for patterns, places in sorted(messages.places.items(), key=lambda item: item[1]):
        expression = re.compile("|".join(patterns))
        found = [f"{file}: {text.replace(UNKNOWN, '...')}"
                 for text, files in tests.texts.items() if expression.fullmatch(text)
                 for file in files]
        shown = " or ".join(map(readable, patterns))
        direct = messages.direct[patterns] or places[:1]
        more = f" and {len(places) - len(direct)} more" if len(places) > len(direct) else ""
        for i, place in enumerate(direct):
            yield f"{place}{more}: {shown}", found[i:i + 1]


def main(arguments):
    isLong = arguments[:1] == ["-l"]
    rest = arguments[isLong:]
    top = Path(rest[0]) if rest else Path(__file__).resolve().parents[2]
    messages = Messages(Library(top / "kelvofxds"))
    tests = DeathTests(top / "tests")
    tested = existing = 0
    for shown, found in [*tested_messages(messages, tests), *tested_silence(messages, tests)]:
        existing += 1
        tested += bool(found)
        if not found:
            print(f"not tested: {shown}", file=sys.stderr)
        elif isLong:
            by = f"\n    {found[0]}" if found is not True else ""
            print(f"tested: {shown}{by}", file=sys.stderr)
    isReached = tested == existing and existing != 0
    print(f"GOAL C2 {tested}/{existing} all {'PASS' if isReached else 'FAIL'}")
    return 0 if isReached else 1


if __name__ == "__main__":
    try:
        sys.exit(main(sys.argv[1:]))
    except (NotUnderstood, SyntaxError) as error:
        print(f"messages.py: {error}", file=sys.stderr)
        sys.exit(2)
