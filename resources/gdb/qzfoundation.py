# Pretty printers for gdb: Objects of QZFoundation by class and description.
#
#     (gdb) print people
#     $1 = (NSArray) (Ada, Grace)
#
# Installed, they load with the library; otherwise: source qzfoundation.py. They call the program, as
# `call` does, so they show addresses only for a core file, where there is none to call.
import gdb
import gdb.printing


def descends_from_object(of):
    """Whether a type is qz::NSObject or derived from it."""
    of = of.unqualified().strip_typedefs()
    if of.code != gdb.TYPE_CODE_STRUCT:
        return False
    if of.name == "qz::NSObject":
        return True
    return any(f.is_base_class and descends_from_object(f.type) for f in of.fields())


def text_of(pointer):
    address = int(pointer)
    if address == 0:
        return "nil"
    try:
        call = "((const char* (*)(const void*))QZDebugText)((const void*)%d)" % address
        return gdb.parse_and_eval(call).string("utf-8", "replace")
    except gdb.error:
        return "(%s) %#x" % (pointer.type, address)


class ObjectPrinter:
    def __init__(self, pointer):
        self.pointer = pointer

    def to_string(self):
        return text_of(self.pointer)


class ObjectPrinters(gdb.printing.PrettyPrinter):
    def __init__(self):
        super().__init__("qzfoundation")

    def __call__(self, value):
        kind = value.type.unqualified().strip_typedefs()
        if kind.code == gdb.TYPE_CODE_PTR and descends_from_object(kind.target()):
            return ObjectPrinter(value)
        if kind.code != gdb.TYPE_CODE_STRUCT:
            return None
        if (kind.name or "").startswith("qz::Ref<"):
            return ObjectPrinter(value["object_"])
        if descends_from_object(kind) and value.address is not None:
            return ObjectPrinter(value.address)
        return None


gdb.printing.register_pretty_printer(gdb.current_objfile(), ObjectPrinters(), replace=True)
