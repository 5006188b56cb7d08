# SPDX-License-Identifier: MIT
"""Pretty-printers of gdb for handles, atoms, property objects and their wrappers.

gdb loads them with libKAPUtils.so when they are installed, else with the command "source". They
read memory alone and call nothing in the program, so they also work on a core file.

  KAPStringAtom*       the text of the atom
  KAPError*            message, component and code
  KAPContainer*        the name of the primary instance; the value of a property object of KAPUtils
  KAPSharedBuffer*, KAPCacheID*, KAPCacheSet*, KAPDataSink*, KAPProgress*, KAPDataBlock
                       what they are and what they hold
  CPOSDict ...         the same for what the wrapper holds
  Number, Dict ...     the objects behind the handles

Most handles need the debug information of the reference host: another host has other records. For
containers, that of any component is enough. Damaged and freed objects are printed as gdb does it,
or as "destroyed".
"""
import time

import gdb
import gdb.printing

# Longer texts end in "..."; longer lists end with the number of elements that are left out.
LONGEST_TEXT = 200
MOST_CHILDREN = 200
# More entries of a dictionary are not counted.
MOST_COUNTED = 10_000
# A red-black tree is no deeper; what is deeper is damaged.
DEEPEST_TREE = 64
# How many objects a search for cycles looks at. A longer cycle ends at gdb's own "max-depth".
MOST_SEARCHED = 100
# How many elements are printed without a pause: what is shared by many is printed many times.
MOST_PRINTED = 2_000

OWN_INSTANCE = "POSObjectImpl"
KINDS = ("Number", "String", "UnicodeString", "BinData", "RawPointer", "Array", "Dict")
DEAD = -2

# What reading a damaged or foreign record throws; gdb then prints the value as usual.
UNREADABLE = (gdb.error, gdb.MemoryError, RuntimeError, ValueError, TypeError, AttributeError,
              KeyError, OverflowError)


def complete(name, *fields):
    """The type of this name if gdb knows that it has these members, else None."""
    try:
        kind = gdb.lookup_type(name)
        known = {field.name for field in kind.strip_typedefs().fields()}
    except (gdb.error, TypeError):
        return None
    return kind if known.issuperset(fields) and known else None


# ---- Texts ----

ESCAPES = {'"': '\\"', "\\": "\\\\", "\n": "\\n", "\r": "\\r", "\t": "\\t"}


def quoted(text, dots=""):
    """The text in quotes. Surrogates stand for invalid bytes (DC80 to DCFF) or are alone."""
    shown = []
    for char in text:
        code = ord(char)
        if char in ESCAPES:
            shown.append(ESCAPES[char])
        elif code < 0x20 or 0x7F <= code < 0xA0:
            shown.append(f"\\x{code:02x}")
        elif 0xD800 <= code < 0xE000:
            shown.append(f"\\u{code:04X}")
        else:
            shown.append(char)
    return '"' + "".join(shown) + '"' + dots


def quoted_bytes(data, dots=""):
    """The bytes as UTF-8 in quotes."""
    parts, start = [], 0
    while start < len(data):
        try:
            parts.append(quoted(data[start:].decode("utf-8"))[1:-1])
            break
        except UnicodeDecodeError as error:
            parts.append(quoted(data[start:start + error.start].decode("utf-8"))[1:-1])
            bad = data[start + error.start:start + error.end]
            parts.append("".join(f"\\x{byte:02x}" for byte in bad))
            start += error.end
    return '"' + "".join(parts) + '"' + dots


def bytes_at(pointer, most):
    """The bytes of a C string, at most this many. The page after it may not be there."""
    place, data = int(pointer), b""
    memory = gdb.selected_inferior()
    while len(data) < most:
        count = min(most - len(data), 4096 - place % 4096)
        try:
            piece = bytes(memory.read_memory(place, count))
        except gdb.MemoryError:
            if not data:
                raise
            break
        data += piece.partition(b"\0")[0]
        if b"\0" in piece:
            break
        place += count
    return data


def text_at(pointer):
    """The C string at an address, in quotes."""
    if int(pointer) == 0:
        return "null"
    data = bytes_at(pointer, 4 * LONGEST_TEXT + 4)
    text = data.decode("utf-8", "ignore")
    if len(text) <= LONGEST_TEXT and len(data) <= 4 * LONGEST_TEXT:
        return quoted_bytes(data)
    return quoted_bytes(text[:LONGEST_TEXT].encode("utf-8"), "...")


def unicode_text(value):
    length = int(value["fLength"])
    units = b"" if length == 0 else gdb.selected_inferior().read_memory(
        int(first_pointer(value["fText"])), 2 * min(length, LONGEST_TEXT))
    text = bytes(units).decode("utf-16-le", "surrogatepass")
    return quoted(text, "..." if length > LONGEST_TEXT else "")


def number_text(value):
    """The shortest digits that read back as the same number."""
    text = repr(float(value))
    return text[:-2] if text.endswith(".0") else text


# ---- Records of the reference host ----

def atom_text(atom):
    """The text of an atom; None if nothing is known about the host's record."""
    if int(atom) == 0:
        return "null"
    record = complete("KAPStringAtom", "fHash", "fTag", "fLength")
    return None if record is None else text_at(atom.cast(record.pointer()) + 1)


def record_at(handle, name, *fields):
    """The record behind a handle; None if nothing is known about it."""
    record = complete(name, *fields)
    return None if record is None else handle.cast(record.pointer()).dereference()


def references(record):
    """The reference count of a record; it is below zero in one that is destroyed."""
    kind = record["fCount"]
    while kind.type.strip_typedefs().code == gdb.TYPE_CODE_STRUCT:
        kind = kind[[field for field in kind.type.strip_typedefs().fields()
                     if hasattr(field, "bitpos")][0]]
    return int(kind)


def error_text(error):
    """`error "message" of "component", code 7`; None if nothing is known about the record."""
    if int(error) == 0:
        return "null"
    record = record_at(error, "KAPError", "fCoreMessage", "fMessage", "fComponent", "fCode")
    if record is None:
        return None
    if references(record) == DEAD:
        return "destroyed error"
    if int(record["fCoreMessage"]) != 0:
        message, component = text_at(record["fCoreMessage"]), None
    else:
        message, component = atom_text(record["fMessage"]), record["fComponent"]
    text = f"error {message}"
    if component is not None and int(component) != 0:
        text += f" of {atom_text(component)}"
    return f"{text}, code {int(record['fCode'])}"


def buffer_text(buffer):
    record = record_at(buffer, "KAPSharedBuffer", "fSize", "fData")
    if record is None:
        return None
    if references(record) == DEAD:
        return "destroyed buffer"
    return f"buffer of {int(record['fSize'])} bytes at {hex(int(record['fData']))}"


def cache_id_text(identity):
    record = record_at(identity, "KAPCacheID", "fItem", "fCost", "fMarks")
    if record is None:
        return None
    if int(record["fItem"]) == 0:
        return "identity without an item"
    return (f"identity of item {hex(int(record['fItem']))}, cost {int(record['fCost'])}, "
            f"{int(record['fMarks'])} marks")


def cache_set_text(identities):
    record = record_at(identities, "KAPCacheSet", "fIDs")
    if record is None:
        return None
    return f"set of {int(record['fIDs']['_M_h']['_M_element_count'])} identities"


def sink_text(sink):
    record = complete("KAPDataSink", "fCount")
    if record is None:
        return None
    typed = sink.cast(record.pointer())
    value = typed.cast(typed.dynamic_type).dereference()
    text = {"NullSink": "null sink", "ClientSink": "client sink",
            "IdentityFilter": "identity filter", "ClientFilter": "client filter",
            "JPEGFilter": "JPEG filter"}.get(class_of(value))
    if text is None or "filter" not in text:
        return text
    return text + (", closed" if value["fIsClosed"] else "")


def progress_text(progress):
    record = record_at(progress, "KAPProgress", "fClient", "fUpdate")
    if record is None:
        return None
    client = int(record["fClient"])
    return "null progress" if client == 0 else f"progress of client {hex(client)}"


def block_text(block):
    size = int(block["size"])
    if int(block["text"]) == 0:
        return "empty block"
    data = bytes(gdb.selected_inferior().read_memory(int(block["text"]), min(size, LONGEST_TEXT)))
    dots = "..." if size > LONGEST_TEXT else ""
    return f"block of {size} bytes {quoted_bytes(data, dots)}"


# ---- Containers and property objects ----

def public_words(container):
    """The primary instance and the signature of a container; None if their place is not known."""
    record = record_at(container, "KAPContainer", "fCount", "fPrimary", "fSignature")
    if record is not None:
        return record["fPrimary"], record["fSignature"]
    symbol = gdb.lookup_global_symbol("KAP_T_MT::CKAPContainer::fPrimaryOffset") or \
        gdb.lookup_static_symbol("KAP_T_MT::CKAPContainer::fPrimaryOffset")
    if symbol is None:
        return None
    place = int(container) + int(symbol.value())
    pointer = gdb.lookup_type("void").pointer()
    first = gdb.Value(place).cast(pointer.pointer())
    return first.dereference(), (first + 1).dereference()


def is_destroyed(container):
    record = record_at(container, "KAPContainer", "fCount", "fPrimary", "fSignature")
    return record is not None and references(record) == DEAD


def signature_of(words):
    """The name of the primary instance; None when the word is not one."""
    if words is None or int(words[1]) == 0:
        return None
    name = bytes_at(words[1], LONGEST_TEXT)
    is_name = 0 < len(name) < LONGEST_TEXT and all(0x20 < byte < 0x7F for byte in name)
    return name.decode("ascii") if is_name else None


def object_of(container):
    """The property object of a handle as a value of its own class; None for other containers."""
    words = public_words(container)
    if signature_of(words) != OWN_INSTANCE or is_destroyed(container):
        return None
    base = complete("NPOSObjectImpl::BaseObject")
    if base is None:
        return None
    instance = words[0].cast(base.pointer())
    found = instance.cast(instance.dynamic_type).dereference()
    return found if class_of(found) in KINDS else None


def container_text(container):
    if int(container) == 0:
        return "null"
    if is_destroyed(container):
        return "destroyed container"
    found = object_of(container)
    if found is not None:
        return object_text(found)
    words = public_words(container)
    if words is None:
        return None
    name = signature_of(words)
    if name == OWN_INSTANCE and complete("NPOSObjectImpl::BaseObject") is not None:
        return "destroyed property object"
    if name is None:
        return None if int(words[0]) != 0 or int(words[1]) != 0 else "empty container"
    return f'container "{name}"'


def first_pointer(value):
    """The pointer in a class that owns a block, however deep it is."""
    kind = value.type.strip_typedefs()
    if kind.code == gdb.TYPE_CODE_PTR:
        return value
    if kind.code != gdb.TYPE_CODE_STRUCT:
        return None
    for field in kind.fields():
        if hasattr(field, "bitpos"):  # not a static member
            found = first_pointer(value[field])
            if found is not None:
                return found
    return None


def entries_of(dictionary):
    """The entries in the order of their keys. Throws ValueError when the tree is damaged."""
    entry = gdb.lookup_type("NPOSObjectImpl::DictEntry").pointer()
    node, above = dictionary["fEntries"]["fRoot"]["fRoot"], []
    while int(node) != 0 or above:
        while int(node) != 0:
            above.append(node)
            if len(above) > DEEPEST_TREE:
                raise ValueError("a damaged dictionary")
            node = node["fChild"][0]
        node = above.pop()
        yield node.cast(entry).dereference()
        node = node["fChild"][1]


def class_of(value):
    return (value.type.strip_typedefs().unqualified().name or "").rpartition("::")[2]


def dictionary_text(value):
    count = 0
    try:
        for _ in entries_of(value):
            count += 1
            if count > MOST_COUNTED:
                return f"dictionary of more than {MOST_COUNTED}"
    except UNREADABLE:
        return "damaged dictionary"
    return f"dictionary of {count}"


def object_text(value):
    """One line about a property object, without what it contains."""
    kind = class_of(value)
    if kind == "Number":
        return f"number {number_text(value['fValue'])}"
    if kind == "String":
        return f"string {text_at(value['fText']['fText'])}"
    if kind == "UnicodeString":
        return f"Unicode string {unicode_text(value)}"
    if kind == "BinData":
        name = text_at(value["fTypeName"]["fText"])
        return f"binary data {name} of {int(value['fSize'])} bytes"
    if kind == "RawPointer":
        return f"raw pointer {hex(int(value['fPointer']))}"
    if kind == "Array":
        count, capacity = int(value["fCount"]), int(value["fCapacity"])
        return f"array of {count}" if count <= capacity else "damaged array"
    return dictionary_text(value) if kind == "Dict" else kind


def handles_of(value):
    """(name, handle) of each element, of all of them."""
    kind = class_of(value)
    if kind == "Array" and int(value["fCount"]) <= int(value["fCapacity"]):
        for i in range(int(value["fCount"])):
            yield f"[{i}]", value["fElements"][i]
    if kind == "Dict":
        for entry in entries_of(value):
            yield text_at(entry["fKey"]["fAtom"]["fText"]), entry["fValue"]["fContainer"]


def leads_to(handle, address):
    """Whether the object at this address is among the elements of the handle's object, however
    deep."""
    waiting, seen = [handle], set()
    while waiting and len(seen) < MOST_SEARCHED:
        handle = waiting.pop()
        if int(handle) == 0 or int(handle) in seen:
            continue
        seen.add(int(handle))
        found = object_of(handle)
        if found is None or class_of(found) not in ("Array", "Dict"):
            continue
        if int(found.address) == address:
            return True
        for _, element in handles_of(found):
            waiting.append(element)
            if len(waiting) > MOST_SEARCHED:
                break
    return False


class Budget:
    """Counts what is printed without a pause."""

    def __init__(self):
        self.count, self.last = 0, 0.0

    def spend(self):
        now = time.monotonic()
        self.count = self.count + 1 if now - self.last < 1 else 1
        self.last = now
        return self.count <= MOST_PRINTED


BUDGET = Budget()


def object_children(value):
    """The elements of an array or a dictionary, as (name, handle or text)."""
    address, count = int(value.address), 0
    try:
        for name, handle in handles_of(value):
            if count == MOST_CHILDREN or not BUDGET.spend():
                yield "...", "more elements"
                return
            count += 1
            yield name, "leads back to this one" if leads_to(handle, address) else handle
    except UNREADABLE:
        yield "...", "unreadable"


class Printer:
    """Prints a text, and the children of an array or a dictionary."""

    def __init__(self, text, value=None):
        self.text, self.value = text, value

    def to_string(self):
        return self.text

    def children(self):
        return iter(()) if self.value is None else object_children(self.value)


def text_printer(text):
    return None if text is None else Printer(text)


def container_printer(handle):
    text = container_text(handle)
    return None if text is None else Printer(text, object_of(handle) if int(handle) else None)


def printer_of(text_of):
    """The printer of a handle for which this function has a text."""
    return lambda handle: text_printer("null" if int(handle) == 0 else text_of(handle))


POINTERS = {
    "KAPStringAtom": printer_of(atom_text),
    "KAPError": printer_of(error_text),
    "KAPContainer": container_printer,
    "KAPSharedBuffer": printer_of(buffer_text),
    "KAPCacheID": printer_of(cache_id_text),
    "KAPCacheSet": printer_of(cache_set_text),
    "KAPDataSink": printer_of(sink_text),
    "KAPProgress": printer_of(progress_text),
}
CLASSES = {
    "KAP_T_MT::CKAPStringAtom": lambda value: Printer(text_at(value["fText"])),
    "KAP_T_MT::CKAPError": lambda value: text_printer(error_text(value["fError"])),
    "KAP_T_MT::KAPContainerBaseGeneric": lambda value: container_printer(value["fContainer"]),
    "KAP_T_MT::TKAPReference": lambda value: printer_of_value(value["fHandle"]),
    "KAP_T_MT::CKAPDataBlockPtr": lambda value: Printer(block_text(value["fBlock"])),
    "KAPDataBlock": lambda value: Printer(block_text(value)),
}
for _kind in KINDS:
    CLASSES[f"NPOSObjectImpl::{_kind}"] = lambda value: Printer(object_text(value), value)


def printer_of_class(kind, value):
    """The printer of a class or of the first base class that has one."""
    name = (kind.name or "").partition("<")[0]
    if name in CLASSES:
        return CLASSES[name](value)
    for field in kind.fields():
        if field.is_base_class:
            found = printer_of_class(field.type.strip_typedefs(), value)
            if found is not None:
                return found
    return None


def printer_of_value(value):
    kind = value.type.strip_typedefs().unqualified()
    if kind.code in (gdb.TYPE_CODE_REF, gdb.TYPE_CODE_RVALUE_REF):
        value = value.referenced_value()
        kind = value.type.strip_typedefs().unqualified()
    if kind.code == gdb.TYPE_CODE_PTR:
        target = kind.target().strip_typedefs().unqualified()
        return POINTERS[target.name](value) if target.name in POINTERS else None
    return printer_of_class(kind, value) if kind.code == gdb.TYPE_CODE_STRUCT else None


class Printers(gdb.printing.PrettyPrinter):
    """Finds the printer of a value."""

    def __init__(self):
        super().__init__("KAPUtils")

    def __call__(self, value):
        try:
            return None if value.is_optimized_out else printer_of_value(value)
        except UNREADABLE:
            # A wild pointer, or a library without debug information: gdb prints it as usual.
            return None


gdb.printing.register_pretty_printer(None, Printers(), replace=True)
