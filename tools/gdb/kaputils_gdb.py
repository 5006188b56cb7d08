# SPDX-License-Identifier: MIT
"""Pretty-printers of gdb for handles, atoms, property objects and their wrappers.

gdb loads them with libKAPUtils.so when they are installed, else with the command "source". They
read memory alone and call nothing in the program, so they also work on a core file.

  KAPStringAtom*   the text of the atom
  KAPError*        message, component and code
  KAPContainer*    the name of the primary instance; the value of a property object of KAPUtils
  CPOSDict ...     the same for what the wrapper holds
  Number, Dict ... the objects behind the handles

What the text of an atom or an error is, only the debug information of the reference host says. For
containers, that of any component is enough.
"""
import gdb
import gdb.printing

# Longer texts and lists end in "...".
LONGEST_TEXT = 200
MOST_CHILDREN = 200

OWN_INSTANCE = "POSObjectImpl"


def has_fields(kind):
    """Whether gdb knows the members of a struct, not only its name."""
    try:
        return len(kind.strip_typedefs().fields()) > 0
    except TypeError:
        return False


def complete(name):
    """The type of this name, or None where there is no debug information for it."""
    try:
        kind = gdb.lookup_type(name)
    except gdb.error:
        return None
    return kind if has_fields(kind) else None


def text_at(pointer):
    """The C string at an address, in quotes."""
    if int(pointer) == 0:
        return "null"
    chars = pointer.cast(gdb.lookup_type("char").const().pointer())
    text = chars.string("utf-8", "backslashreplace", LONGEST_TEXT + 1) if is_long(chars) \
        else chars.string("utf-8", "backslashreplace")
    dots = "..." if len(text) > LONGEST_TEXT else ""
    return '"' + text[:LONGEST_TEXT].replace("\\", "\\\\").replace('"', '\\"') + '"' + dots


def is_long(chars):
    """Whether no zero ends the string within the limit."""
    try:
        memory = gdb.selected_inferior().read_memory(int(chars), LONGEST_TEXT + 1)
        return b"\0" not in bytes(memory)
    except gdb.MemoryError:  # it ends before a page that is not there
        return False


def atom_text(atom):
    """The text of an atom; None if nothing is known about the host's record."""
    if int(atom) == 0:
        return "null"
    record = complete("KAPStringAtom")
    if record is None:
        return None
    return text_at(atom.cast(record.pointer()) + 1)


def error_text(error):
    """`error "message" of "component", code 7`; None if nothing is known about the record."""
    if int(error) == 0:
        return "null"
    record = complete("KAPError")
    if record is None:
        return None
    fields = error.cast(record.pointer()).dereference()
    if int(fields["fCoreMessage"]) != 0:
        message, component = text_at(fields["fCoreMessage"]), None
    else:
        message, component = atom_text(fields["fMessage"]), fields["fComponent"]
    text = f"error {message}"
    if component is not None and int(component) != 0:
        text += f" of {atom_text(component)}"
    return f"{text}, code {int(fields['fCode'])}"


def public_words(container):
    """The primary instance and the signature of a container; None if their place is not known."""
    record = complete("KAPContainer")
    if record is not None:
        fields = container.cast(record.pointer()).dereference()
        return fields["fPrimary"], fields["fSignature"]
    symbol = gdb.lookup_global_symbol("KAP_T_MT::CKAPContainer::fPrimaryOffset") or \
        gdb.lookup_static_symbol("KAP_T_MT::CKAPContainer::fPrimaryOffset")
    if symbol is None:
        return None
    place = int(container) + int(symbol.value())
    pointer = gdb.lookup_type("void").pointer()
    first = gdb.Value(place).cast(pointer.pointer())
    return first.dereference(), (first + 1).dereference()


def object_of(container):
    """The property object of a handle as a value of its own class; None for other containers."""
    words = public_words(container)
    if words is None or int(words[1]) == 0 or text_at(words[1]) != f'"{OWN_INSTANCE}"':
        return None
    base = complete("NPOSObjectImpl::BaseObject")
    if base is None:
        return None
    instance = words[0].cast(base.pointer())
    return instance.cast(instance.dynamic_type).dereference()


def container_text(container):
    if int(container) == 0:
        return "null"
    found = object_of(container)
    if found is not None:
        return object_text(found)
    words = public_words(container)
    if words is None:
        return None
    return f"container {text_at(words[1])}" if int(words[1]) != 0 else "empty container"


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


def unicode_text(value):
    length = int(value["fLength"])
    units = gdb.selected_inferior().read_memory(int(first_pointer(value["fText"])),
                                                2 * min(length, LONGEST_TEXT))
    text = bytes(units).decode("utf-16-le", "backslashreplace")
    return '"' + text + '"' + ("..." if length > LONGEST_TEXT else "")


def entries_of(dictionary):
    """The entries in the order of their keys."""
    entry = gdb.lookup_type("NPOSObjectImpl::DictEntry").pointer()
    node, above, count = dictionary["fEntries"]["fRoot"]["fRoot"], [], 0
    while (int(node) != 0 or above) and count < MOST_CHILDREN:
        while int(node) != 0:
            above.append(node)
            node = node["fChild"][0]
        node = above.pop()
        yield node.cast(entry).dereference()
        node, count = node["fChild"][1], count + 1


def class_of(value):
    return value.type.strip_typedefs().unqualified().name.rpartition("::")[2]


def object_text(value):
    """One line about a property object, without what it contains."""
    kind = class_of(value)
    if kind == "Number":
        return f"number {float(value['fValue']):.15g}"
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
        return f"array of {int(value['fCount'])}"
    return f"dictionary of {sum(1 for _ in entries_of(value))}" if kind == "Dict" else kind


def object_children(value):
    """The elements of an array or a dictionary, as (name, handle)."""
    kind = class_of(value)
    if kind == "Array":
        for i in range(min(int(value["fCount"]), MOST_CHILDREN)):
            yield f"[{i}]", value["fElements"][i]
    if kind == "Dict":
        for entry in entries_of(value):
            yield text_at(entry["fKey"]["fAtom"]["fText"]), entry["fValue"]["fContainer"]


class Printer:
    """Prints a text, and the children of an array or a dictionary."""

    def __init__(self, text, value=None):
        self.text, self.value = text, value

    def to_string(self):
        return self.text

    def children(self):
        return iter(()) if self.value is None else object_children(self.value)


def container_printer(handle):
    text = container_text(handle)
    return None if text is None else Printer(text, object_of(handle) if int(handle) else None)


def text_printer(text):
    return None if text is None else Printer(text)


POINTERS = {
    "KAPStringAtom": lambda value: text_printer(atom_text(value)),
    "KAPError": lambda value: text_printer(error_text(value)),
    "KAPContainer": container_printer,
}
CLASSES = {
    "KAP_T_MT::CKAPStringAtom": lambda value: Printer(text_at(value["fText"])),
    "KAP_T_MT::CKAPError": lambda value: text_printer(error_text(value["fError"])),
    "KAP_T_MT::KAPContainerBaseGeneric": lambda value: container_printer(value["fContainer"]),
}
for _kind in ("Number", "String", "UnicodeString", "BinData", "RawPointer", "Array", "Dict"):
    CLASSES[f"NPOSObjectImpl::{_kind}"] = lambda value: Printer(object_text(value), value)


def printer_of_class(kind, value):
    """The printer of a class or of the first base class that has one."""
    if kind.name in CLASSES:
        return CLASSES[kind.name](value)
    for field in kind.fields():
        if field.is_base_class:
            found = printer_of_class(field.type.strip_typedefs(), value)
            if found is not None:
                return found
    return None


class Printers(gdb.printing.PrettyPrinter):
    """Finds the printer of a value."""

    def __init__(self):
        super().__init__("KAPUtils")

    def __call__(self, value):
        try:
            kind = value.type.strip_typedefs().unqualified()
            if kind.code == gdb.TYPE_CODE_PTR:
                target = kind.target().strip_typedefs().unqualified()
                return POINTERS[target.name](value) if target.name in POINTERS else None
            if kind.code == gdb.TYPE_CODE_STRUCT:
                return printer_of_class(kind, value)
        except (gdb.error, RuntimeError, ValueError):
            # A wild pointer, or a library without debug information: gdb prints it as usual.
            pass
        return None


gdb.printing.register_pretty_printer(None, Printers(), replace=True)
