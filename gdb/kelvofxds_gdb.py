"""kelvofxds in gdb: values that read as what they are, and the commands "fx ...".

gdb loads this file by itself with an installed library, see docs/debugging.md;
"source kelvofxds_gdb.py" loads it by hand. It is one file, long as it is, because gdb
finds scripts by the name of the library's file, and because it is to be copied.

The classes of the library with virtual functions are described in the library's
debug information alone, which hosts seldom have: to gdb they are incomplete. So
nothing here asks for their fields by name. Objects are read from memory, by the
table below, whether there is debug information or not. No function of the
program is ever called.
"""

import itertools
import sys
import types

import gdb
import gdb.printing

names_before = set(globals()) | {"names_before"}

# Where the fields are, in bytes. Of a pair the second holds where a double is aligned
# to 8 bytes, as on ARM and PowerPC. tests/gdb/layout.cpp compares every entry with the
# library.
LAYOUT = {
    "fxRCObj.count": 4,
    "fxStr.slength": 0,
    "fxStr.data": 4,
    "fxStr.size": 8,
    "fxTempStr.data": 100,
    "fxTempStr.slength": 104,
    "fxStackBuffer.next": 1000,
    "fxStackBuffer.base": 1008,
    "fxArray.data": 8,
    "fxArray.maxLen": 12,
    "fxArray.len": 16,
    "fxArray.elemSize": 20,
    "fxDictionary.numItems": 8,
    "fxDictionary.keySize": 12,
    "fxDictionary.valueSize": 16,
    "fxDictionary.buckets": 20,
    "fxDictBucket.kvmem": 0,
    "fxDictBucket.next": 4,
    "fxDictIter.dict": 0,
    "fxDictIter.flags": 8,
    "fxDictIter.bucket": 12,
    "fxSet.buckets": 8,
    "fxSet.numItems": 32,
    "fxSet.keySize": 36,
    "fxSetBucket.key": 0,
    "fxSetBucket.next": 4,
    "fxSetIter.set": 4,
    "fxSetIter.flags": 12,
    "fxSetIter.bucket": 16,
    "GenericList.count": 0,
    "GenericList.head": 8,
    "GenericNode.next": 4,
    "GenericNode.item": 8,
    "fxIndexableList.head": 0,
    "fxIndexableList.count": 16,
    "fxLinkItem.next": 0,
    "HashTable.buckets": 0,
    "HashTable.count": 4,
    "HashTable.size": 8,
    "HashEntry.key": 0,
    "HashEntry.value": 4,
    "HashEntry.next": 8,
    "NameSpace.lastAtom": 4,
    "NameSpace.tableSize": 12,
    "NameSpace.table": 16,
    "NameSpace_Node.name": 16,
    "fxData.count": 4,
    "fxData.type": 8,
    "fxBoolData.value": 10,
    "fxIntData.value": 12,
    "fxLongData.value": 12,
    "fxFloatData.value": 12,
    "fxDoubleData.value": (12, 16),
    "fxCharPtrData.value": 12,
    "fxStrData.value": 12,
    "fxStrArrayData.value": 12,
    "fxProperty.tag": 8,
    "fxProperty.type": 10,
    "fxProperty.value": (12, 16),
    "fxObj.properties": 8,
    "fxInputChannel.target": 0,
    "fxInputChannel.flags": 8,
    "fxInputChannel.pending": 12,
    "fxInputChannel.sources": 20,
    "fxOwnInput.owner": 24,
    "fxOutputChannel.type": 0,
    "fxOutputChannel.connections": 4,
    "fxEvent.next": 12,
    "fxEvent.type": 20,
    "fxEvent.sequence": 24,
    "fxMessageEvent.channel": 28,
    "fxMessageEvent.data": 32,
    "fxEventQueue.head": 0,
    "fxEventQueue.count": 8,
    "fxTimer.interval": 12,
    "fxTimer.delta": 16,
    "fxTimer.active": 20,
    "fxTimer.repeat": 21,
    "fxTimer.next": 28,
    "fxSelectHandler.fd": 12,
    "fxSelectHandler.readInterest": 16,
    "fxSelectHandler.writeInterest": 17,
    "fxSelectHandler.exceptionInterest": 18,
    "fxApplication.opened": 12,
    "fxExec.handlers": 392,
    "fxExec.maxHandlers": 100,
    "fxExec.preSelectFuncs": 792,
    "fxExec.postSelectFuncs": 816,
    "fxExec.applications": 840,
    "fxSequencer.ranges": 8,
    "fxRef.pointer": 0,
}

# The types of values by their codes, as fxDT_... calls them, each with the type that
# its holder and its property have; "" is the library's own.
VALUE_TYPES = [
    ("void", ""),
    ("fxBool", "fxBool"),
    ("int", "int"),
    ("long", "long"),
    ("float", "float"),
    ("double", "double"),
    ("CharPtr", ""),
    ("fxStr", ""),
    ("VoidPtr", ""),
    ("ObjPtr", ""),
    ("DataPtr", ""),
    ("fxStrArray", ""),
]

# How the types are shown that are not called in C++ what their codes are called.
SHOWN_TYPES = {
    "fxBool": "bool",
    "CharPtr": "char*",
    "VoidPtr": "void*",
    "ObjPtr": "fxObj*",
    "DataPtr": "fxData*",
}

# The base of each class, which an incomplete type does not tell.
BASES = {
    "fxXDRObj": "fxRCObj",
    "fxArray": "fxXDRObj",
    "fxBoolArray": "fxArray",
    "fxCharArray": "fxArray",
    "fxShortArray": "fxArray",
    "fxIntArray": "fxArray",
    "fxLongArray": "fxArray",
    "fxFloatArray": "fxArray",
    "fxDoubleArray": "fxArray",
    "fxUnsignedCharArray": "fxArray",
    "fxUnsignedShortArray": "fxArray",
    "fxUnsignedLongArray": "fxArray",
    "fxVoidPtrArray": "fxArray",
    "fxDictBuckets": "fxArray",
    "fxDictIters": "fxArray",
    "fxSetBuckets": "fxArray",
    "fxSetIters": "fxArray",
    "fxSeqRangeArray": "fxArray",
    "fxStubFuncArray": "fxArray",
    "fxStrArray": "fxArray",
    "fxSearchList": "fxStrArray",
    "fxArrayOf": "fxArrayOfElements",
    "fxArrayOfElements": "fxArray",
    "fxDictionary": "fxXDRObj",
    "fxStrStrDictionary": "fxDictionary",
    "fxVoidPtrDict": "fxDictionary",
    "fxBinaryOTDict": "fxDictionary",
    "fxStrStrDictionaryIter": "fxDictIter",
    "fxVoidPtrDictIter": "fxDictIter",
    "fxBinaryOTDictIter": "fxDictIter",
    "fxSet": "fxXDRObj",
    "fxStrSet": "fxSet",
    "fxTmpSet": "fxSet",
    "fxStrSetIter": "fxSetIter",
    "fxObj": "fxXDRObj",
    "fxEvent": "fxObj",
    "fxMessageEvent": "fxEvent",
    "fxTimer": "fxObj",
    "fxSelectHandler": "fxObj",
    "fxApplication": "fxObj",
    "fxVoidData": "fxData",
    "fxBoolData": "fxData",
    "fxIntData": "fxData",
    "fxLongData": "fxData",
    "fxFloatData": "fxData",
    "fxDoubleData": "fxData",
    "fxCharPtrData": "fxData",
    "fxStrData": "fxData",
    "fxStrArrayData": "fxData",
    "fxProperty": "fxRCObj",
    "fxSequencer": "fxRCObj",
    "fxPath": "fxStr",
    "fxConverter": "fxInputChannel",
    "fxTranscriber": "fxRCObj",
    "fxGraphReader": "fxTranscriber",
    "fxGraphWriter": "fxTranscriber",
    "fxStream": "fxRCObj",
    "fxMemoryStream": "fxStream",
    "fxStdioStream": "fxStream",
    "fxTextPattern": "fxRCObj",
    "fxRegEx": "fxTextPattern",
    "fxSLinearPattern": "fxTextPattern",
}

# The elements of the arrays of numbers and pointers.
ELEMENTS = {
    "fxBoolArray": "fxBool",
    "fxCharArray": "char",
    "fxShortArray": "short",
    "fxIntArray": "int",
    "fxLongArray": "long",
    "fxFloatArray": "float",
    "fxDoubleArray": "double",
    "fxUnsignedCharArray": "unsigned char",
    "fxUnsignedShortArray": "unsigned short",
    "fxUnsignedLongArray": "unsigned long",
    "fxVoidPtrArray": "void *",
    "fxDictBuckets": "void *",
    "fxDictIters": "void *",
    "fxSetBuckets": "void *",
    "fxSetIters": "void *",
}

LATEST_ONLY = 1  # in an input's flags
LINK = 2
OWN = 0x80000000  # an fxOwnInput, which knows the object that it receives for
TYPE_SHIFT = 2
OBJECT_LIMIT = 1000  # that a command looks at
FRAME_LIMIT = 50
CHAIN_LIMIT = 100000  # links of a chain whose length is not known
BYTES_SHOWN = 32  # of what has no known type


class Damaged(Exception):
    """What is wrong with an object, for whoever looks at it."""


# --- memory -------------------------------------------------------------------------


def type_called(name):
    if name == "fxBool":
        name = "unsigned char"
    if name.endswith(" *"):
        return gdb.lookup_type(name[:-2]).pointer()
    return gdb.lookup_type(name)


def value_at(address, type_name):
    """A value of one of the language's own types, or an fxBool."""
    if type_name == "fxBool":
        return gdb.Value(int(value_at(address, "unsigned char")))
    return fetched(address, type_called(type_name))


def fetched(address, type_):
    """A value that has been read: where that fails, it fails here."""
    value = gdb.Value(address).cast(type_.pointer()).dereference()
    if not is_incomplete(type_):
        value.fetch_lazy()
    return value


def word(address):
    return int(value_at(address, "unsigned int"))


def byte(address):
    return int(value_at(address, "unsigned char"))


def offset(field):
    entry = LAYOUT[field]
    if isinstance(entry, int):
        return entry
    return entry[0 if gdb.lookup_type("double").alignof == 4 else 1]


def get(address, field, type_name="unsigned int"):
    return int(value_at(address + offset(field), type_name))


def get_short(address, field):
    return get(address, field, "unsigned short")


def get_byte(address, field):
    return get(address, field, "unsigned char")


def bytes_at(address, n):
    return bytes(gdb.selected_inferior().read_memory(address, n)) if n else b""


def most_shown():
    limit = gdb.parameter("print elements")
    return limit if limit else 200


def variable(name):
    """The address of a variable of the library, by its name for the linker; None if
    there is no such variable."""
    try:
        return int(gdb.parse_and_eval("(unsigned long)&" + name))
    except gdb.error:
        return None


# --- texts --------------------------------------------------------------------------


def escaped(c):
    usual = {"\n": "\\n", "\t": "\\t", "\r": "\\r", '"': '\\"', "\\": "\\\\"}
    if c in usual:
        return usual[c]
    if c.isprintable() and not 0xDC80 <= ord(c) <= 0xDCFF:
        return c
    return "".join("\\%03o" % b for b in c.encode("utf-8", "surrogateescape"))


def quoted(address, n):
    """`n` bytes as gdb would show a string."""
    shown = min(n, most_shown())
    text = bytes_at(address, shown).decode("utf-8", "surrogateescape")
    return '"%s"%s' % ("".join(map(escaped, text)), "..." if shown < n else "")


def string(address, n):
    """The same, left to gdb: it asks for as many bytes as it shows."""
    return gdb.Value(address).cast(type_called("char *")).lazy_string(length=n)


def text_of(address, length="fxStr.slength", data="fxStr.data"):
    """Where the bytes of an fxStr are, and how many."""
    n = get(address, length)
    at = get(address, data)
    if n == 0 or n > 0x7FFFFFFF or at == 0:
        raise Damaged("not constructed: length 0x%x, text at 0x%x" % (n, at))
    if byte(at + n - 1) != 0:
        raise Damaged("no NUL behind its %d bytes" % (n - 1))
    return at, n - 1


def text_value(address):
    """An fxStr, for a list of children."""
    text = text_of(address)
    type_ = known_type("fxStr")
    return fetched(address, type_) if type_ and not is_incomplete(type_) else string(*text)


def hexadecimal(address, n):
    shown = min(n, BYTES_SHOWN)
    return bytes_at(address, shown).hex(" ") + (" ..." if shown < n else "")


# --- classes ------------------------------------------------------------------------


def symbol_at(address):
    """The symbol at an address and the distance from it; None without one."""
    found = gdb.execute("info symbol 0x%x" % address, to_string=True)
    if found.startswith("No symbol"):
        return None, 0
    name, plus, distance = found.split(" in section ")[0].partition(" + ")
    return name.strip(), int(distance) if plus else 0


def function_at(address):
    name, distance = symbol_at(address)
    return "0x%x" % address if name is None or distance else name


def named_by_table(table):
    """The class of a virtual table, or None. Without a symbol for the table, its type
    information tells."""
    name, distance = symbol_at(table)
    if name and name.startswith("vtable for ") and distance == 8:
        return name[len("vtable for "):]
    info = word(table - 4)
    return named_by_info(info) if info else None


def named_by_info(info):
    name, distance = symbol_at(info)
    if name and name.startswith("typeinfo for ") and distance == 0:
        return name[len("typeinfo for "):]
    name = value_at(word(info + 4), "char").address.string(length=200).partition("\0")[0]
    name = name.lstrip("*")
    demangled = gdb.execute("demangle -l gnu-v3 -- _ZTI" + name, to_string=True)
    prefix = "typeinfo for "
    return demangled.strip()[len(prefix):] if demangled.startswith(prefix) else None


def infos_from(table):
    """The type information of a class and, in turn, of its first bases."""
    info = word(table - 4)
    for _ in range(50):
        if not info:
            return
        yield info
        kind = symbol_at(word(info))[0] or ""
        if "__si_class_type_info" in kind:
            info = word(info + 8)
        elif "__vmi_class_type_info" in kind:
            info = word(info + 16) if word(info + 20) >> 8 == 0 else 0
        else:
            return


def top_of_table(table):
    """What leads from a virtual table's place in an object to the object's beginning."""
    try:
        top = int(value_at(table - 8, "int"))
    except gdb.MemoryError:
        top = 1
    if table < 8 or table % 4 or top > 0 or top < -0x100000 or top % 4:
        raise Damaged("not constructed: no virtual functions at 0x%x" % table)
    return top


names_of_tables = {}


def class_and_start(address):
    """The class of an object with virtual functions, as it is at present, None where
    nothing tells; and where the whole object begins."""
    table = word(address)
    if table not in names_of_tables:
        names_of_tables[table] = (top_of_table(table), named_by_table(table))
    top, name = names_of_tables[table]
    if top:
        return class_and_start(address + top) if word(address + top) != table else (None, address)
    return name, address


def forget_tables(_event=None):
    names_of_tables.clear()


def stripped(type_):
    return type_.strip_typedefs().unqualified()


def name_of(type_):
    return str(stripped(type_))


def short(name):
    """The name of a class as it is shown."""
    return name.replace("(anonymous namespace)::", "")


def is_class(type_):
    return type_.code in (gdb.TYPE_CODE_STRUCT, gdb.TYPE_CODE_UNION)


def is_incomplete(type_):
    type_ = stripped(type_)
    return is_class(type_) and type_.sizeof == 0


def library_class(name):
    """The name under which a class is known here, or None."""
    plain = name.partition("<")[0]
    return plain if plain in BASES or plain in VIEWS else None


def ancestors(name):
    while name:
        yield name
        name = BASES.get(name)


def library_base(type_, depth=0):
    """The first class of the library that a type is or derives from, its type and its
    offset in bytes."""
    type_ = stripped(type_)
    if not is_class(type_) or depth > 20:
        return None
    name = library_class(name_of(type_))
    if name:
        return name, type_, 0
    for field in type_.fields():
        if not field.is_base_class or not hasattr(field, "bitpos"):
            continue
        found = library_base(field.type, depth + 1)
        if found:
            return found[0], found[1], found[2] + field.bitpos // 8
    return None


def known_type(name):
    try:
        return gdb.lookup_type(name) if name else None
    except gdb.error:
        return None


def base_of_object(address):
    """(class, its type or None, class of the library, where the whole object begins) of
    an object with virtual functions. The third is None if it cannot be told."""
    name, start = class_and_start(address)
    type_ = known_type(name)
    found = library_base(type_) if type_ else None
    if type_ and is_incomplete(type_):
        type_ = None
    if found:
        return name, type_, found[0], start
    if name and start == address:
        for info in infos_from(word(address)):
            base = library_class(named_by_info(info) or "")
            if base:
                return name, type_, base, start
    return name, type_, library_class(name) if name else None, start


def class_at(address):
    """The name of an object's class, for a line of text."""
    try:
        return short(class_and_start(address)[0] or "object")
    except (Damaged, gdb.error):
        return "object"


def is_object(address):
    """Whether there is an fxObj, or one of a class derived from it."""
    try:
        return "fxObj" in ancestors(base_of_object(address)[2])
    except (Damaged, gdb.error):
        return False


# --- what is shown of a value -------------------------------------------------------


def flat(child):
    """A child as one text, for places where gdb would say <incomplete type>."""
    if isinstance(child, gdb.Value):
        printer = printer_of(child)
        return flat_printer(printer) if printer else child.format_string()
    if isinstance(child, str):
        return child
    return quoted(int(child.address), child.length)  # of string()


depth_of_flat = 0


def flat_printer(printer):
    global depth_of_flat
    summary = printer.to_string()
    summary = "" if summary is None else flat(summary)
    if not hasattr(printer, "children") or depth_of_flat > 5:
        return summary
    depth_of_flat += 1
    try:
        parts = list(itertools.islice(flat_children(printer), most_shown() + 1))
    finally:
        depth_of_flat -= 1
    if not parts:
        return summary or "{}"
    if len(parts) > most_shown():
        parts[-1] = "..."
    return "%s{%s}" % (summary and summary + " = ", ", ".join(parts))


def flat_children(printer):
    hint = printer.display_hint()
    children = printer.children()
    for name, child in children:
        if hint == "map":
            yield "[%s] = %s" % (flat(child), flat(next(children)[1]))
        elif hint == "array":
            yield flat(child)
        else:
            yield "%s = %s" % (name, flat(child))


def shown(value):
    """What a list of children has for a value of a host's type."""
    return flat(value) if is_incomplete(value.type) else value


def fields_of(address, type_):
    """The host's own fields in an object, those of its bases first."""
    if type_ is None or library_class(name_of(type_)):
        return
    yield from fields_in(fetched(address, type_), stripped(type_))


def fields_in(value, type_):
    for field in type_.fields():
        if not hasattr(field, "bitpos"):
            continue
        if not field.is_base_class:
            yield field.name or "<unnamed>", shown(value[field])
        elif not library_class(name_of(field.type)):
            yield from fields_in(value[field], stripped(field.type))


class View:
    """An object of a class of the library, or derived from one."""

    hint = None
    has_table = True  # of virtual functions

    def __init__(self, address, name, type_, base, whole=None):
        self.address = address
        self.whole = address if whole is None else whole  # where the host's class begins
        self.name = short(name)  # of its class
        self.type = type_  # the same, with the host's fields; None if not known
        self.base = base  # the class of the library

    def at(self, field, type_name="unsigned int"):
        return get(self.address, field, type_name)

    def summary(self):
        return "%s, count %d" % (self.name, self.at("fxRCObj.count", "int"))

    def items(self):
        return self.own_fields()

    def own_fields(self):
        return fields_of(self.whole, self.type)


class Text(View):
    hint = "string"
    has_table = False
    items = None

    def summary(self):
        return string(*text_of(self.address))


class TemporaryText(Text):
    def summary(self):
        return string(*text_of(self.address, "fxTempStr.slength", "fxTempStr.data"))


class Buffer(Text):
    def summary(self):
        base, end = self.at("fxStackBuffer.base"), self.at("fxStackBuffer.next")
        if not base or end < base:
            raise Damaged("not constructed: bytes from 0x%x to 0x%x" % (base, end))
        return string(base, end - base)


class ReturnedText(Text):
    """An fxStr that is not in memory, but what a function returned."""

    def __init__(self, value):
        super().__init__(0, "fxStr", None, "fxStr")
        self.value = value

    def summary(self):
        return string(int(self.value["data"]), int(self.value["slength"]) - 1)


def array_at(address):
    """Where the elements of an fxArray are, how many, and the size of each."""
    data = get(address, "fxArray.data")
    used = get(address, "fxArray.len")
    room = get(address, "fxArray.maxLen")
    size = get_short(address, "fxArray.elemSize")
    if size == 0 or used > room or (used and not data):
        raise Damaged("not constructed: %d of %d bytes in use at 0x%x, %d an element" % (
            used, room, data, size))
    return data, used // size, size


def pointers_in(address):
    """The elements of an fxVoidPtrArray."""
    data, n, size = array_at(address)
    if size != 4:
        raise Damaged("elements of %d bytes" % size)
    for i in range(n):
        yield word(data + 4 * i)


class Array(View):
    hint = "array"

    def summary(self):
        _, n, size = array_at(self.address)
        room = self.at("fxArray.maxLen") // size
        return "%s of length %d, capacity %d" % (self.name, n, room)

    def items(self):
        for name, field in self.own_fields():
            yield name, "%s = %s" % (name, flat(field))
        data, n, size = array_at(self.address)
        for i in range(n):
            yield "[%d]" % i, self.element(data + i * size, size)

    def element(self, at, size):
        for name in ancestors(self.base):
            if name in ELEMENTS and type_called(ELEMENTS[name]).sizeof == size:
                return value_at(at, ELEMENTS[name])
        return hexadecimal(at, size)


class StrArray(Array):
    def element(self, at, size):
        return text_value(at)


class FunctionArray(Array):
    def element(self, at, size):
        return function_at(word(at))


class RangeArray(Array):
    def element(self, at, size):
        first, last = word(at), word(at) + word(at + 4) - 1
        return "%d" % first if first == last else "%d to %d" % (first, last)


class ArrayOf(Array):
    """fxArrayOf<T>, whose T gdb knows from the host."""

    def element(self, at, size):
        found = library_base(self.type) if self.type else None
        try:
            type_ = found[1].template_argument(0)
        except (TypeError, RuntimeError, gdb.error):
            return hexadecimal(at, size)
        if type_.sizeof not in (0, size):
            return hexadecimal(at, size)
        return shown(fetched(at, type_))


def chain_from(link, next_field):
    """The links of a chain."""
    seen = set()
    while link:
        if link in seen or len(seen) > CHAIN_LIMIT:
            raise Damaged("its chain leads back to 0x%x" % link)
        seen.add(link)
        yield link
        link = get(link, next_field)


def entries_in(address, buckets, next_field, expected):
    """The entries in the chains of a dictionary or set, `expected` of them."""
    found = 0
    for head in pointers_in(address + offset(buckets)):
        for entry in chain_from(head, next_field):
            found += 1
            if found > expected + 1:  # the one that is just being taken out
                raise Damaged("more entries than its count, %d" % expected)
            yield entry
    if found < expected:
        raise Damaged("%d entries found, %d counted" % (found, expected))


def dictionary_entries(address):
    n = get(address, "fxDictionary.numItems")
    for entry in entries_in(address, "fxDictionary.buckets", "fxDictBucket.next", n):
        yield get(entry, "fxDictBucket.kvmem")


def channels_in(dictionary):
    """The names and channels of an fxVoidPtrDict, as (place of the name, channel)."""
    for key in dictionary_entries(dictionary):
        channel = word(key + offset("fxStr.size"))
        if channel:
            yield key, channel


def count_of(n, one, many):
    return "%d %s" % (n, one if n == 1 else many)


class Dictionary(View):
    hint = "map"

    def summary(self):
        array_at(self.address + offset("fxDictionary.buckets"))
        n = self.at("fxDictionary.numItems")
        return "%s with %s" % (self.name, count_of(n, "entry", "entries"))

    def items(self):
        for name, field in self.own_fields():
            yield name, name
            yield name, field
        key_size = self.at("fxDictionary.keySize")
        for i, key in enumerate(dictionary_entries(self.address)):
            yield "key %d" % i, self.key(key)
            yield "value %d" % i, self.value(key + key_size)

    def key(self, at):
        return hexadecimal(at, self.at("fxDictionary.keySize"))

    def value(self, at):
        return hexadecimal(at, self.at("fxDictionary.valueSize"))


class StrDictionary(Dictionary):
    def key(self, at):
        return text_value(at)

    def value(self, at):
        return text_value(at)


class PointerDictionary(StrDictionary):
    def value(self, at):
        return value_at(at, "void *")


class NumberDictionary(Dictionary):
    def key(self, at):
        return value_at(at, "unsigned int")

    value = key


class DictionaryIter(View):
    has_table = False
    dictionary, flags, bucket = "fxDictIter.dict", "fxDictIter.flags", "fxDictIter.bucket"

    def summary(self):
        owner, bucket = self.at(self.dictionary), self.at(self.bucket)
        if not owner:
            return "%s at the end, or of nothing" % self.name
        if self.at(self.flags) or not bucket:
            return "%s between entries" % self.name
        return "%s on %s" % (self.name, self.place(owner, bucket))

    def container(self, owner, kind):
        view = view_of_object(owner)
        if not isinstance(view, kind):
            raise Damaged("of a %s at 0x%x" % (view.name, owner))
        return view

    def place(self, owner, bucket):
        at = get(bucket, "fxDictBucket.kvmem")
        view = self.container(owner, Dictionary)
        value = at + get(owner, "fxDictionary.keySize")
        return "[%s] = %s" % (flat(view.key(at)), flat(view.value(value)))


class Set(View):
    hint = "array"

    def summary(self):
        array_at(self.address + offset("fxSet.buckets"))
        return "%s with %s" % (self.name, count_of(self.at("fxSet.numItems"), "key", "keys"))

    def items(self):
        for name, field in self.own_fields():
            yield name, "%s = %s" % (name, flat(field))
        n = self.at("fxSet.numItems")
        entries = entries_in(self.address, "fxSet.buckets", "fxSetBucket.next", n)
        for i, entry in enumerate(entries):
            yield "[%d]" % i, self.key(get(entry, "fxSetBucket.key"))

    def key(self, at):
        return hexadecimal(at, self.at("fxSet.keySize"))


class StrSet(Set):
    def key(self, at):
        return text_value(at)


class SetIter(DictionaryIter):
    has_table = True
    dictionary, flags, bucket = "fxSetIter.set", "fxSetIter.flags", "fxSetIter.bucket"

    def place(self, owner, bucket):
        return flat(self.container(owner, Set).key(get(bucket, "fxSetBucket.key")))


class List(View):
    hint = "array"
    has_table = False
    count, head, next = "GenericList.count", "GenericList.head", "GenericNode.next"

    def summary(self):
        n = self.at(self.count, "int")
        if n < 0:
            raise Damaged("length %d" % n)
        return "%s of length %d" % (self.name, n)

    def items(self):
        for name, field in self.own_fields():
            yield name, "%s = %s" % (name, flat(field))
        for i, link in enumerate(chain_from(self.at(self.head), self.next)):
            yield "[%d]" % i, self.item(link)

    def item(self, link):
        return value_at(link + offset("GenericNode.item"), "void *")


class LinkList(List):
    count, head, next = "fxIndexableList.count", "fxIndexableList.head", "fxLinkItem.next"

    def item(self, link):
        return value_at(link, "char").address.cast(type_called("void *"))


class Table(View):
    hint = "map"
    has_table = False

    def summary(self):
        n = self.at("HashTable.count", "int")
        if n < 0 or self.at("HashTable.size") > 1 << 24:
            raise Damaged("not constructed: %d entries in %d buckets" % (
                n, self.at("HashTable.size", "int")))
        return "HashTable with %s" % count_of(n, "entry", "entries")

    def items(self):
        buckets, size = self.at("HashTable.buckets"), self.at("HashTable.size")
        for i in range(size):
            for entry in chain_from(word(buckets + 4 * i), "HashEntry.next"):
                yield "key %x" % entry, value_at(entry + offset("HashEntry.key"), "unsigned long")
                yield "value %x" % entry, value_at(entry + offset("HashEntry.value"), "void *")


class Names(View):
    hint = "map"
    has_table = False

    def atoms(self):
        table, size = self.at("NameSpace.table"), self.at("NameSpace.tableSize")
        last = self.at("NameSpace.lastAtom")
        if last and (not table or last >= size):
            raise Damaged("not constructed: atom 0x%x in 0x%x places" % (last, size))
        for atom in range(min(size, last + 1)):
            node = word(table + 4 * atom)
            if node:
                yield atom, node

    def summary(self):
        next(self.atoms(), None)
        return "NameSpace, last atom %d" % self.at("NameSpace.lastAtom")

    def items(self):
        for atom, node in self.atoms():
            yield "atom %d" % atom, gdb.Value(atom)
            name = get(node, "NameSpace_Node.name")
            yield "name %d" % atom, quoted_c(name)


def quoted_c(address):
    """A NUL-terminated text as gdb would show it."""
    if not address:
        return "null"
    limit = most_shown() + 1
    text = bytearray()
    while len(text) < limit and (c := byte(address + len(text))):
        text.append(c)
    return quoted(address, len(text))


# --- values on their way ------------------------------------------------------------


def type_name(code):
    return VALUE_TYPES[code][0] if code < len(VALUE_TYPES) else "type %d" % code


def shown_type(code):
    return SHOWN_TYPES.get(type_name(code), type_name(code))


def held(code, at):
    """The value of a type at an address, as in a holder or a property."""
    name, plain = VALUE_TYPES[code] if code < len(VALUE_TYPES) else ("", "")
    if plain:
        return value_at(at, plain)
    if name == "CharPtr":
        return quoted_c(word(at))
    if name == "fxStr":
        return text_value(at)
    if name == "fxStrArray":
        return flat_view(StrArray(at, "fxStrArray", None, "fxStrArray"))
    return None


def of_type(name, text):
    """A value behind the name of its type, unless it names that itself."""
    return text if text.startswith(name + " of ") else "%s %s" % (name, text)


def value_in_holder(holder):
    """What an fxData holds, as a text with the type's name."""
    code = get_short(holder, "fxData.type")
    name = type_name(code)
    field = "fx%sData.value" % {"fxBool": "Bool", "fxStr": "Str", "fxStrArray": "StrArray"}.get(
        name, name[:1].upper() + name[1:])
    if field not in LAYOUT:
        return shown_type(code)
    return of_type(shown_type(code), flat(held(code, holder + offset(field))))


class Holder(View):
    def summary(self):
        return "%s, %s, count %d" % (
            self.name, value_in_holder(self.address), self.at("fxData.count"))


def property_name(tag):
    names = variable("fx_propertyNames")
    try:
        data, n, size = array_at(word(names))
        if tag < n:
            return quoted(*text_of(data + tag * size))
    except (TypeError, Damaged, gdb.error):
        pass
    return "tag %d" % tag


def value_in_property(property_):
    code = get_short(property_, "fxProperty.type")
    at = property_ + offset("fxProperty.value")
    name = type_name(code)
    shown_name = shown_type(code)
    if name == "fxStr":
        return "fxStr " + quoted(*text_of(word(at)))
    if name in ("VoidPtr", "ObjPtr", "DataPtr"):
        address = word(at)
        if not address:
            return shown_name + " null"
        if name == "VoidPtr":
            return "void* 0x%x" % address
        return "%s to %s" % (
            shown_name, value_in_holder(address) if name == "DataPtr" else label(address))
    value = held(code, at)
    return shown_name if value is None else of_type(shown_name, flat(value))


class Property(View):
    def summary(self):
        tag = self.at("fxProperty.tag", "unsigned short")
        return "%s %s, %s" % (self.name, property_name(tag), value_in_property(self.address))


# --- objects and their wiring -------------------------------------------------------


def label(address, names=None):
    """An object in a line of text."""
    if not address:
        return "null"
    known = names.get(address) if names else None
    return "%s at 0x%x%s" % (class_at(address), address, " (%s)" % known if known else "")


def properties_of(address):
    array = get(address, "fxObj.properties")
    return list(pointers_in(array)) if array else []


def channels_of(address, which):
    """The inputs or outputs of an object, as (name in quotes, channel)."""
    for property_ in properties_of(address):
        if property_name(get_short(property_, "fxProperty.tag")) != '"%s"' % which:
            continue
        if type_name(get_short(property_, "fxProperty.type")) != "VoidPtr":
            continue
        dictionary = word(property_ + offset("fxProperty.value"))
        if dictionary:
            yield from sorted((quoted(*text_of(key)), channel)
                              for key, channel in channels_in(dictionary))


def input_type(channel):
    return shown_type(get(channel, "fxInputChannel.flags") >> TYPE_SHIFT & 0xFFFF)


def final_channel(channel):
    for _ in range(100):
        if not get(channel, "fxInputChannel.flags") & LINK:
            return channel
        channel = get(channel, "fxInputChannel.target")
    raise Damaged("conversion links without end")


def receiver_of(channel):
    """The object that an input is for, as far as the input tells."""
    if get(channel, "fxInputChannel.flags") & OWN:
        return get(channel, "fxOwnInput.owner")
    return get(channel, "fxInputChannel.target")


def connections_of(output):
    array = get(output, "fxOutputChannel.connections")
    return pointers_in(array) if array else iter(())


def sources_of(channel):
    array = get(channel, "fxInputChannel.sources")
    return pointers_in(array) if array else iter(())


def output_type(output):
    return shown_type(get_short(output, "fxOutputChannel.type"))


class Wiring:
    """The objects that can be found, with their names and whose each channel is."""

    def __init__(self):
        self.names = {}  # of variables, by address
        self.objects = []  # addresses
        self.known = set()
        self.inputs = {}  # (object, name) by channel
        self.outputs = {}

    def add(self, address, name=None):
        """An object, and those that it is wired to."""
        waiting = [(address, name)]
        while waiting and len(self.objects) < OBJECT_LIMIT:
            address, name = waiting.pop()
            if name:
                self.names.setdefault(address, name)
            if not address or address in self.known or not is_object(address):
                continue
            self.known.add(address)
            self.objects.append(address)
            try:
                waiting.extend((a, None) for a in self.neighbours(address))
            except (Damaged, gdb.error):
                pass  # told where the object itself is shown

    def neighbours(self, address):
        found = []
        for name, channel in channels_of(address, "inputs"):
            self.inputs[channel] = (address, name)
        for name, channel in channels_of(address, "outputs"):
            self.outputs[channel] = (address, name)
            for connection in connections_of(channel):
                found.append(receiver_of(final_channel(connection)))
        return found

    def add_everything(self):
        """What the loop, the queue and the variables in sight lead to."""
        for find in (self.add_variables, self.add_registered, self.add_queued):
            try:
                find()
            except (Damaged, gdb.error):
                pass

    def add_registered(self):
        executive = pointer_in("fx_theExecutive")
        if executive:
            for address in registered_handlers(executive):
                self.add(address)
            for address in pointers_in(executive + offset("fxExec.applications")):
                self.add(address)
        for timer in active_timers():
            self.add(timer)

    def add_queued(self):
        for event in queued_events():
            channel = channel_of_event(event)
            if channel:
                self.add(receiver_of(final_channel(channel)))

    def add_variables(self):
        frame = gdb.newest_frame()
        for _ in range(FRAME_LIMIT):
            if frame is None:
                return
            try:
                block = frame.block()
            except (RuntimeError, gdb.error):
                block = None
            while block is not None:
                for symbol in block:
                    self.add_symbol(symbol, frame)
                block = block.superblock
            frame = frame.older()

    def add_symbol(self, symbol, frame):
        if not (symbol.is_variable or symbol.is_argument):
            return
        try:
            self.add_value(symbol.value(frame), symbol.print_name, 0)
        except (Damaged, gdb.error, RuntimeError, TypeError, ValueError):
            pass  # not there yet, or optimised away

    def add_value(self, value, name, depth):
        """An object that a variable is or leads to, and those among its fields."""
        type_ = stripped(value.type)
        if type_.code in (gdb.TYPE_CODE_REF, gdb.TYPE_CODE_RVALUE_REF):
            return self.add_value(value.referenced_value(), name, depth)
        base = library_base(type_)
        if type_.code == gdb.TYPE_CODE_PTR:
            base = library_base(type_.target())
            if base and int(value):
                self.add_base(int(value), base, "*this" if name == "this" else "*" + name)
            return None
        if base and base[0] == "fxRef":
            return self.add_value(value["pointer"], name, depth)
        if not is_class(type_) or value.address is None or depth > 3:
            return None
        if base:
            self.add_base(int(value.address), base, name)
        for field in type_.fields():
            if hasattr(field, "bitpos") and (field.name or field.is_base_class):
                inner = name if field.is_base_class else "%s.%s" % (name, field.name)
                if not (field.is_base_class and library_class(name_of(field.type))):
                    self.add_value(value[field], inner, depth + 1)
        return None

    def add_base(self, address, base, name):
        if "fxObj" in ancestors(base[0]):
            self.add(address + base[2], name)

    def in_order(self):
        """The objects by their names, those without one behind the others."""
        return sorted(self.objects,
                      key=lambda a: (a not in self.names, self.names.get(a, ""), a))

    def has_channels(self, address):
        try:
            return any(True for which in ("inputs", "outputs")
                       for _ in channels_of(address, which))
        except (Damaged, gdb.error):
            return True  # what is wrong is shown with it

    # Lines of text.

    def object(self, address):
        return label(address, self.names)

    def input(self, channel):
        """The input at the end of a connection."""
        target = receiver_of(channel)
        if channel not in self.inputs and target:
            self.add(target)
        if channel in self.inputs:
            owner, name = self.inputs[channel]
            return "%s %s" % (self.object(owner), name)
        where = self.object(target) if is_object(target) else "0x%x" % target
        return "%s, input at 0x%x" % (where, channel)

    def output(self, channel):
        if channel in self.outputs:
            owner, name = self.outputs[channel]
            return "%s %s" % (self.object(owner), name)
        return "output at 0x%x" % channel

    def senders(self, channel):
        """The outputs that a message for a connection can have come from."""
        found = []
        for output in sources_of(final_channel(channel)):
            if output not in found and channel in connections_of(output):
                found.append(output)
        return found

    def lines(self, address):
        """The wiring of one object."""
        self.add(address)
        yield self.object(address)
        found = False
        for name, channel in channels_of(address, "inputs"):
            found = True
            yield "  input %s: %s" % (name, self.input_line(channel))
        for name, channel in channels_of(address, "outputs"):
            found = True
            yield "  output %s: %s" % (name, self.output_line(channel))
        if not found:
            yield "  no inputs, no outputs"

    def input_line(self, channel):
        parts = [input_type(channel)]
        if get(channel, "fxInputChannel.flags") & LATEST_ONLY:
            parts.append("latest only")
        if get(channel, "fxInputChannel.pending"):
            parts.append("a message is waiting")
        sources = ["%s%s" % (self.output(s), converted(output_type(s), channel))
                   for s in sources_of(channel)]
        return "%s <- %s" % (", ".join(parts), "; ".join(sources) or "nothing")

    def output_line(self, channel):
        kind = output_type(channel)
        targets = []
        for connection in connections_of(channel):
            final = final_channel(connection)
            targets.append(self.input(final) + converted(kind, final))
        return "%s -> %s" % (kind, "; ".join(targets) or "nothing")


present_wiring = None


def whole_wiring():
    """The wiring of everything that can be found while the program stands still."""
    global present_wiring
    if present_wiring is None:
        present_wiring = Wiring()
        present_wiring.add_everything()
    return present_wiring


def forget_wiring(_event=None):
    global present_wiring
    present_wiring = None


def converted(kind, final):
    to = input_type(final)
    return "" if to in (kind, "void") else " (%s to %s)" % (kind, to)


class Object(View):
    def summary(self):
        parts = [self.name]
        for one, which in (("input", "inputs"), ("output", "outputs")):
            n = sum(1 for _ in channels_of(self.address, which))
            if n:
                parts.append(count_of(n, one, which))
        return ", ".join(parts + list(self.state()))

    def state(self):
        return ()

    def items(self):
        wiring = whole_wiring()
        for property_ in properties_of(self.address):
            name = property_name(get_short(property_, "fxProperty.tag"))
            if name not in ('"inputs"', '"outputs"'):
                yield "property " + name, value_in_property(property_)
        for name, channel in channels_of(self.address, "inputs"):
            yield "input " + name, wiring.input_line(channel)
        for name, channel in channels_of(self.address, "outputs"):
            yield "output " + name, wiring.output_line(channel)
        yield from self.own_fields()


def seconds(value):
    return "%g s" % float(value)


class Timer(Object):
    def state(self):
        interval = value_at(self.address + offset("fxTimer.interval"), "float")
        again = "every" if get_byte(self.address, "fxTimer.repeat") else "once after"
        yield "%s %s" % (again, seconds(interval))
        yield "active" if get_byte(self.address, "fxTimer.active") else "not active"


def interests(handler):
    found = [word_ for word_, field in (("read", "readInterest"), ("write", "writeInterest"),
                                        ("exception", "exceptionInterest"))
             if get_byte(handler, "fxSelectHandler." + field)]
    return " and ".join(found) or "nothing"


class Handler(Object):
    def state(self):
        yield "descriptor %d" % self.at("fxSelectHandler.fd", "int")
        yield "waits for " + interests(self.address)


class Application(Object):
    def state(self):
        yield "open" if get_byte(self.address, "fxApplication.opened") else "not open"


class Event(Object):
    def state(self):
        yield "event type %d" % self.at("fxEvent.type")
        yield "number %d" % self.at("fxEvent.sequence")


class Message(Event):
    def state(self):
        yield "number %d" % self.at("fxEvent.sequence")
        wiring = whole_wiring()
        channel = final_channel(self.at("fxMessageEvent.channel"))
        yield "%s to %s" % (value_in_holder(self.at("fxMessageEvent.data")),
                            wiring.input(channel))


class Input(View):
    has_table = False

    def summary(self):
        wiring = whole_wiring()
        if self.at("fxInputChannel.flags") & LINK:
            final = final_channel(self.address)
            return "link %s to %s" % (input_type(self.address), wiring.input(final))
        return "%s: %s" % (wiring.input(self.address), wiring.input_line(self.address))


class Output(View):
    has_table = False

    def summary(self):
        return "output " + whole_wiring().output_line(self.address)


class Sequencer(View):
    def summary(self):
        ranges = RangeArray(self.address + offset("fxSequencer.ranges"), "", None, "fxArray")
        taken = [flat(child) for _, child in itertools.islice(ranges.items(), most_shown())]
        return "%s, taken: %s" % (self.name, ", ".join(taken) or "nothing")


class Ref(View):
    """fxRef<T>: what it leads to."""

    has_table = False

    def summary(self):
        pointer = self.at("fxRef.pointer")
        if not pointer:
            return "%s, null" % self.name
        count = get(pointer, "fxRCObj.count", "int")
        return "%s, count %d" % (self.name, count)

    def items(self):
        pointer = self.at("fxRef.pointer")
        if not pointer:
            return
        type_ = self.type.template_argument(0) if self.type else None
        if type_:
            yield "to", shown(fetched(pointer, type_))


# By the class that they are for; derived classes are shown as their nearest base here.
VIEWS = {
    "fxRCObj": View,
    "fxStr": Text,
    "fxTempStr": TemporaryText,
    "fxStackBuffer": Buffer,
    "fxArray": Array,
    "fxStrArray": StrArray,
    "fxSeqRangeArray": RangeArray,
    "fxStubFuncArray": FunctionArray,
    "fxArrayOf": ArrayOf,
    "fxArrayOfElements": ArrayOf,
    "fxDictionary": Dictionary,
    "fxStrStrDictionary": StrDictionary,
    "fxVoidPtrDict": PointerDictionary,
    "fxBinaryOTDict": NumberDictionary,
    "fxDictIter": DictionaryIter,
    "fxSet": Set,
    "fxStrSet": StrSet,
    "fxSetIter": SetIter,
    "GenericList": List,
    "fxIndexableList": LinkList,
    "HashTable": Table,
    "NameSpace": Names,
    "fxData": Holder,
    "fxProperty": Property,
    "fxObj": Object,
    "fxTimer": Timer,
    "fxSelectHandler": Handler,
    "fxApplication": Application,
    "fxEvent": Event,
    "fxMessageEvent": Message,
    "fxInputChannel": Input,
    "fxOutputChannel": Output,
    "fxSequencer": Sequencer,
    "fxRef": Ref,
}


def view_class(base):
    return next(VIEWS[name] for name in ancestors(base) if name in VIEWS)


def view_of_object(address):
    """Of an object with virtual functions, by what it is at present."""
    name, type_, base, start = base_of_object(address)
    if not base:
        raise Damaged("of an unknown class")
    return view_class(base)(address, name, type_, base, start)


def view_of(address, type_, found):
    """Of an object that the program knows under the type `type_`, which has the class
    of the library `found`."""
    base, _, at = found
    if not address:
        raise Damaged("null")
    known = None if is_incomplete(type_) else stripped(type_)
    view = view_class(base)
    if not view.has_table:
        return view(address + at, name_of(type_), known, base, address)
    name, dynamic_type, dynamic_base, start = base_of_object(address + at)
    if not dynamic_base:
        return view(address + at, name_of(type_), known, base, address)
    if base not in ancestors(dynamic_base):
        raise Damaged("under construction or destroyed, at present of class %s" % name)
    if dynamic_type is None:
        dynamic_type, start = known, address
    return view_class(dynamic_base)(address + at, name, dynamic_type, dynamic_base, start)


# --- printers -----------------------------------------------------------------------


def complaint(error):
    return str(error) or type(error).__name__


class Short:
    """Shows a value as one text."""

    def __init__(self, view):
        self.view = view

    def to_string(self):
        try:
            return self.view.summary()
        except Exception as error:  # whatever it is, it is told
            return "<%s at 0x%x: %s>" % (self.view.name, self.view.address, complaint(error))

    def display_hint(self):
        return self.view.hint if self.is_whole() else None

    def is_whole(self):
        try:
            self.view.summary()
            return True
        except Exception:
            return False


class Long(Short):
    """Shows a value with its parts."""

    def children(self):
        if not self.is_whole():
            return
        try:
            yield from self.view.items()
        except Exception as error:  # whatever it is, it is told
            if self.view.hint == "map":
                yield "stop", "<stop>"
            yield "error", "<%s>" % complaint(error)

    def display_hint(self):
        return self.view.hint


class Broken:
    """Shows what is wrong."""

    def __init__(self, name, address, error):
        self.text = "<%s at 0x%x: %s>" % (short(name), address, complaint(error))

    def to_string(self):
        return self.text


class Fields:
    """A host's structure with fields whose types are incomplete."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        return None

    def children(self):
        for field in stripped(self.value.type).fields():
            if hasattr(field, "bitpos"):
                name = "<%s>" % field.name if field.is_base_class else field.name
                yield name or "<unnamed>", shown(self.value[field])

    def display_hint(self):
        return None


def has_incomplete_fields(type_):
    return any(
        hasattr(field, "bitpos") and is_incomplete(field.type) and library_base(field.type)
        for field in type_.fields())


def printer_of(value):
    """The printer for a value; None for what is not the library's."""
    type_ = stripped(value.type)
    if type_.code in (gdb.TYPE_CODE_REF, gdb.TYPE_CODE_RVALUE_REF):
        if not library_base(type_.target()):
            return None
        return printer_of(value.referenced_value())
    if not is_class(type_) or gdb.lookup_type("char").pointer().sizeof != 4:
        return None
    found = library_base(type_)
    if not found:
        return Fields(value) if has_incomplete_fields(type_) else None
    if value.is_optimized_out:
        return None
    if value.address is None:
        is_text = found[0] == "fxStr" and not is_incomplete(found[1])
        return Short(ReturnedText(value)) if is_text else None
    address = int(value.address)
    try:
        view = view_of(address, type_, found)
    except Exception as error:  # whatever it is, it is told
        return Broken(name_of(type_), address, error)
    return Long(view) if view.items else Short(view)


def flat_view(view):
    return flat_printer(Long(view))


class Printers(gdb.printing.PrettyPrinter):
    def __init__(self):
        super().__init__("kelvofxds")

    def __call__(self, value):
        return printer_of(value)


# --- commands -----------------------------------------------------------------------


def pointer_in(name):
    """What a pointer variable of the library holds; 0 if there is none."""
    address = variable(name)
    return word(address) if address else 0


def registered_handlers(executive):
    first = executive + offset("fxExec.handlers")
    for i in range(LAYOUT["fxExec.maxHandlers"]):
        handler = word(first + 4 * i)
        if handler:
            yield handler


def active_timers():
    first = pointer_in("_ZN7fxTimer12activeTimersE")
    return chain_from(first, "fxTimer.next") if first else iter(())


def queued_events():
    queue = pointer_in("fx_theEventHandler")
    return chain_from(get(queue, "fxEventQueue.head"), "fxEvent.next") if queue else iter(())


def channel_of_event(event):
    """The connection that a message is for; 0 of other events."""
    message_type = pointer_in("fxET_MessageEvent")
    if get(event, "fxEvent.type") != message_type:
        return 0
    return get(event, "fxMessageEvent.channel")


class Command(gdb.Command):
    """Of the group "fx"."""

    needs = None  # the variable that start-up sets

    def __init__(self, name):
        super().__init__("fx " + name, gdb.COMMAND_DATA)

    def invoke(self, argument, from_tty):
        if gdb.selected_inferior().pid == 0:
            print("The program is not running.")
            return
        try:
            if self.needs and not pointer_in(self.needs):
                print("The toolkit is not initialised: %s is null before"
                      " fxInitializeToolkit()." % self.needs)
                return
            for line in self.lines(argument):
                print(line)
        except gdb.GdbError:
            raise
        except Exception as error:  # whatever it is, it is told
            print(complaint(error))


class QueueCommand(Command):
    """The events that are queued, the next one to be delivered first.

A message is shown with its value, the input that it is for and the outputs that
it can have come from: the only one that is connected there, as a rule."""

    needs = "fx_theEventHandler"

    def lines(self, _argument):
        queue = pointer_in(self.needs)
        n = get(queue, "fxEventQueue.count")
        if n == 0:
            yield "The event queue is empty."
            return
        wiring = whole_wiring()
        yield "%s, the next one first:" % count_of(n, "event", "events")
        for i, event in enumerate(queued_events()):
            if i == most_shown():
                yield "..."
                return
            yield "#%d %s" % (i + 1, self.line(event, wiring))

    def line(self, event, wiring):
        number = get(event, "fxEvent.sequence")
        channel = channel_of_event(event)
        if not channel:
            return "%s, event type %d, number %d" % (
                label(event), get(event, "fxEvent.type"), number)
        final = final_channel(channel)
        parts = [value_in_holder(get(event, "fxMessageEvent.data")), "to", wiring.input(final)]
        if channel != final:
            parts.append("as " + input_type(final))
        senders = [wiring.output(s) for s in wiring.senders(channel)]
        text = "%s, from %s" % (" ".join(parts), " or ".join(senders) or "no output")
        if get(channel, "fxInputChannel.flags") & LATEST_ONLY:
            text += ", latest only"
        return "%s, number %d" % (text, number)


class TimersCommand(Command):
    """The active timers, the one that is due first at the head.

Times count from when the loop, or fxTimer::alarm, last served the timers."""

    needs = "fx_theEventHandler"

    def lines(self, _argument):
        timers = list(active_timers())
        if not timers:
            yield "No timer is active."
            return
        wiring = whole_wiring()
        yield "%s:" % count_of(len(timers), "active timer", "active timers")
        due = 0.0
        for timer in timers:
            due += float(value_at(timer + offset("fxTimer.delta"), "float"))
            state = next(iter(Timer(timer, "", None, "fxTimer").state()))
            targets = [wiring.output_line(channel)
                       for name, channel in channels_of(timer, "outputs") if name == '"tick"']
            yield "due in %s: %s, %s%s" % (
                seconds(due), wiring.object(timer), state,
                "".join(", \"tick\" " + t[t.index("->"):] for t in targets))


class HandlersCommand(Command):
    """What the dispatch loop serves.

The select handlers by descriptor, the functions that are called before and after
the wait, and the applications that keep the loop running."""

    needs = "fx_theExecutive"

    def lines(self, _argument):
        executive = pointer_in(self.needs)
        wiring = whole_wiring()
        handlers = list(registered_handlers(executive))
        if not handlers:
            yield "No select handler is registered."
        for handler in handlers:
            yield "descriptor %d: %s, waits for %s" % (
                get(handler, "fxSelectHandler.fd", "int"), wiring.object(handler),
                interests(handler))
        for when in ("pre", "post"):
            array = executive + offset("fxExec.%sSelectFuncs" % when)
            for function in pointers_in(array):
                yield "%s-select function: %s" % (when, function_at(function))
        applications = list(pointers_in(executive + offset("fxExec.applications")))
        for application in applications:
            is_open = get_byte(application, "fxApplication.opened")
            yield "application: %s, %s" % (
                wiring.object(application), "open" if is_open else "not open")
        if not applications:
            yield "No application is registered."


class WiringCommand(Command):
    """The inputs and outputs of objects: fx wiring [EXPRESSION]

EXPRESSION is an object, or a pointer or an fxRef to one. Each input is shown with
its type and the outputs that lead to it, each output with the inputs that it leads
to. Without EXPRESSION, of every object that can be found: those that the loop and
the queue have, those in variables in sight, and those that they are wired to."""

    def lines(self, argument):
        wiring = whole_wiring()
        if argument:
            yield from wiring.lines(self.address_of(argument))
            return
        found = False
        for address in wiring.in_order():
            if wiring.has_channels(address):
                found = True
                yield from wiring.lines(address)
        if not found:
            yield ("No object with an input or an output is in sight. Say which one you mean:"
                   " fx wiring EXPRESSION")

    def address_of(self, argument):
        try:
            value = gdb.parse_and_eval(argument)
        except gdb.error as error:
            raise gdb.GdbError(str(error))
        type_ = stripped(value.type)
        if type_.code in (gdb.TYPE_CODE_REF, gdb.TYPE_CODE_RVALUE_REF):
            value = value.referenced_value()
            type_ = stripped(value.type)
        at = 0
        if is_class(type_):
            found = library_base(type_)
            if found and found[0] == "fxRef":
                address = word(int(value.address))
            else:
                address, at = int(value.address), found[2] if found else 0
        else:
            if type_.code == gdb.TYPE_CODE_PTR:
                found = library_base(type_.target())
                at = found[2] if found else 0
            address = int(value) & 0xFFFFFFFF
        if not address:
            raise Damaged("%s is null" % argument)
        if not is_object(address + at):
            hint = "; of a smart pointer, give *%s" % argument if type_.code == gdb.TYPE_CODE_STRUCT else ""
            raise Damaged("%s is neither an fxObj nor of a class derived from it%s" % (argument, hint))
        return address + at


class LocalsCommand(Command):
    """The arguments and local variables of the selected frame, as "print" shows them.

"info locals" says <incomplete type> of variables that are objects of the library's
classes themselves, where the library has no debug information."""

    def lines(self, _argument):
        found = False
        block = gdb.selected_frame().block()
        while block is not None and not (block.is_global or block.is_static):
            for symbol in block:
                if symbol.is_variable or symbol.is_argument:
                    found = True
                    yield "%s = %s" % (symbol.print_name, self.text(symbol))
            if block.function:
                break
            block = block.superblock
        if not found:
            yield "No locals."

    def text(self, symbol):
        try:
            return flat(symbol.value(gdb.selected_frame()))
        except Exception as error:  # whatever it is, it is told
            return "<%s>" % complaint(error)


class Group(gdb.Command):
    """What kelvofxds has in its queue and in its loop, and how objects are wired."""

    def __init__(self):
        super().__init__("fx", gdb.COMMAND_DATA, prefix=True)

    def invoke(self, argument, from_tty):
        gdb.execute("help fx")


def register():
    gdb.printing.register_pretty_printer(gdb.current_objfile(), Printers(), replace=True)
    for event in (gdb.events.new_objfile, gdb.events.clear_objfiles, gdb.events.exited):
        event.connect(forget_tables)
        event.connect(forget_wiring)
    for event in (gdb.events.cont, gdb.events.stop, gdb.events.memory_changed,
                  gdb.events.register_changed, gdb.events.inferior_call):
        event.connect(forget_wiring)
    Group()
    QueueCommand("queue")
    TimersCommand("timers")
    HandlersCommand("handlers")
    WiringCommand("wiring")
    LocalsCommand("locals")


def load():
    """gdb runs a script among the names of its prompt, where others could change them.
    So this one runs again as a module of its own, and leaves no name there."""
    module = types.ModuleType("kelvofxds_gdb")
    module.__file__ = __file__
    sys.modules[module.__name__] = module
    with open(__file__, encoding="utf-8") as source:
        exec(compile(source.read(), __file__, "exec"), vars(module))
    for name in set(globals()) - names_before:
        del globals()[name]


if __name__ == "__main__":
    load()
else:
    register()
