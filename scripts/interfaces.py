#!/usr/bin/python3
"""Writes what other languages need of the component interfaces, from the headers in core/:

  interfaces.py          the tables in component/fxbox.h and all of component/windows/Fxbox4.idl
  interfaces.py --check  writes nothing; fails when one of them is not what it would write
"""
import pathlib
import re
import sys

TREE = pathlib.Path(__file__).resolve().parent.parent
HEADERS = ["core/AnimInterfaces.h", "core/AnimChain.h", "core/AnimIcon.h", "core/AnimDialog.h",
           "core/AnimHost.h", "core/AnimRowReach.h", "core/AnimRowLender.h"]
C_HEADER = TREE / "component/fxbox.h"
IDL = TREE / "component/windows/Fxbox4.idl"
BEGIN = "/* --- interfaces: made by scripts/interfaces.py */\n"
END = "/* --- end of the interfaces */\n"
SYSTEM_INTERFACES = ("IDataObject", "IDropSource")

STRUCT = re.compile(r"^struct (\w+) : (.+) \{$")
IID = re.compile(r'kIid = base::Guid\("\{([-0-9A-F]+)\}"\)')
CLASS_ID = re.compile(r'(?:CLSID|GUID) k(\w+) = base::Guid\("\{([-0-9A-F]+)\}"\)')
SLOTS = re.compile(r"(?:core::)?HostSlots<([\w:]+), (\d+), (\d+)>")
METHOD = re.compile(r"virtual (HRESULT|bool|KvString\*) STDMETHODCALLTYPE (\w+)\((.*?)\) (?:= 0;|\{)")


class Interface:
    def __init__(self, name, base, comment):
        self.name, self.base, self.comment = name, base, comment
        self.iid = None
        self.methods = []  # (comment, result, name, [(type, name)])


def parameters_of(text):
    """[(type, name)] of "int* width, const char* text"."""
    found = []
    for part in filter(None, (piece.strip() for piece in text.split(","))):
        match = re.fullmatch(r"(.*?[ *&])(\w+)", part)
        kind, name = (match[1].strip(), match[2]) if match else (part, "")
        found.append((kind.replace("std::", ""), name))
    return found


def read_interfaces(path):
    lines = (TREE / path).read_text().split("\n")
    current, comment, found, statement = None, [], [], ""
    for line in lines:
        text = line.strip()
        if text.startswith("//") and not statement:
            comment.append(text[2:].removeprefix(" "))
            continue
        statement = f"{statement} {text}".strip()
        if text and not re.search(r"[;{}:]$", text):
            continue
        if struct := STRUCT.match(statement):
            current = Interface(struct[1], struct[2], comment)
            found.append(current)
        elif current and (iid := IID.search(statement)):
            current.iid = iid[1]
        elif current and (method := METHOD.match(statement)):
            current.methods.append((comment, method[1], method[2], parameters_of(method[3])))
        elif statement == "};":
            current = None
        statement, comment = "", []
    return found


def read_all():
    interfaces = {}
    for path in HEADERS:
        for interface in read_interfaces(path):
            interfaces[interface.name] = interface
    return interfaces


def table_of(interface, interfaces):
    """All slots behind those of IUnknown: (comment, result, name, parameters)."""
    if interface.base == "IUnknown":
        return interface.methods
    slots = SLOTS.fullmatch(interface.base)
    base = slots[1].replace("core::", "")
    front = table_of(interfaces[base], interfaces) if base != "IUnknown" else []
    reserved = [([], "HRESULT", f"HostOperation{place}", [])
                for place in range(int(slots[2]), int(slots[3]) + 1)]
    return front + reserved + interface.methods


def public(interfaces):
    return [interface for interface in interfaces.values() if interface.iid]


def class_ids():
    text = (TREE / "core/AnimChain.h").read_text()
    return CLASS_ID.findall(text)


# --- C


def guid_initializer(text):
    a, b, c, d, e = text.split("-")
    tail = ", ".join(f"0x{(d + e)[i:i + 2]}" for i in range(0, 16, 2))
    return f"{{0x{a}, 0x{b}, 0x{c}, {{{tail}}}}}"


def comment_lines(comment, indent):
    if not comment:
        return ""
    text = ("\n" + indent + " * ").join(comment).replace(" * \n", " *\n")
    return f"{indent}/* {text} */\n"


def c_type(kind):
    replaced = {"REFIID": "const GUID*", "REFCLSID": "const GUID*", "AnimWindowHandle*": "void**",
                "KvString*": "void*", "BYTE*": "uint8_t*", "BYTE**": "uint8_t**",
                "const BYTE* const**": "const uint8_t* const**",
                "DWORD": "uint32_t", "DWORD*": "uint32_t*", "IUnknown*": "void*"}
    if kind.rstrip("*") in SYSTEM_INTERFACES:
        return "void*"
    return replaced.get(kind, kind)


def c_function(interface, result, name, parameters):
    typed = [f"{interface}* self"]
    for kind, parameter in parameters:
        typed.append(f"{c_type(kind)} {parameter}")
    return f"  {c_type(result)}(FXBOX_CALL* {name})({', '.join(typed)});\n"


def c_region(interfaces):
    text = "/* clang-format off */\n"
    for name, guid in class_ids():
        text += f"static const GUID FXBOX_{name} = {guid_initializer(guid)};\n"
    names = [interface.name for interface in public(interfaces)]
    text += "\n" + "".join(f"typedef struct {name} {name};\n" for name in names)
    text += "typedef struct AnimMessage {\n  int32_t page, number;\n" \
            "  intptr_t first, second;\n} AnimMessage;\n"
    for interface in public(interfaces):
        name = interface.name
        text += "\n" + comment_lines(interface.comment, "")
        text += f"static const GUID IID_{name} = {guid_initializer(interface.iid)};\n"
        text += f"typedef struct {name}Vtbl {{\n  FXBOX_UNKNOWN_SLOTS({name})\n"
        for comment, result, method, parameters in table_of(interface, interfaces):
            text += comment_lines(comment, "  ") + c_function(name, result, method, parameters)
        text += f"}} {name}Vtbl;\nstruct {name} {{\n  const {name}Vtbl* lpVtbl;\n}};\n"
    return text + "/* clang-format on */\n"


# --- type library


def idl_type(kind):
    replaced = {"REFIID": "GUID*", "REFCLSID": "GUID*", "AnimWindowHandle*": "void**",
                "KvString*": "void*", "bool": "boolean", "bool*": "boolean*", "BYTE*": "byte*",
                "BYTE**": "byte**", "const BYTE* const**": "byte***",
                "const char*": "LPSTR", "char*": "LPSTR", "char**": "LPSTR*",
                "intptr_t": "INT_PTR", "intptr_t*": "INT_PTR*", "const void*": "void*",
                "uint32_t": "unsigned int", "const AnimMessage*": "AnimMessage*"}
    if kind.rstrip("*") in SYSTEM_INTERFACES:
        return "IUnknown*"
    return replaced.get(kind, kind)


def idl_interface(interface, interfaces):
    text = f"[object, local, uuid({interface.iid})]\ninterface {interface.name} : IUnknown {{\n"
    for _, result, method, parameters in table_of(interface, interfaces):
        typed = [f"{idl_type(kind)} {name}" for kind, name in parameters]
        text += f"  {idl_type(result)} {method}({', '.join(typed)});\n"
    return text + "}\n\n"


def idl_text(interfaces):
    ids = dict(class_ids())
    text = """// The interfaces of the library as a type library: made by scripts/interfaces.py.
import "oaidl.idl";

[uuid(4A0C6D0B-7D0B-4C3C-9B0E-6D2F51C7A8E4), version(4.0), helpstring("Fxbox picture filters")]
library Fxbox4 {
importlib("stdole2.tlb");

typedef struct AnimMessage {
  int page, number;
  INT_PTR first, second;
} AnimMessage;

"""
    text += "".join(f"interface {interface.name};\n" for interface in public(interfaces)) + "\n"
    for interface in public(interfaces):
        text += idl_interface(interface, interfaces)
    for name, offered in (("Creator", "IAnimFilterCreator"), ("Chain", "IAnimFilterChain")):
        text += f"[uuid({ids[name + 'ClassId']})]\ncoclass {name} {{\n" \
                f"  [default] interface {offered};\n}}\n\n"
    return text.rstrip() + "\n}\n"


def main():
    interfaces = read_all()
    header = C_HEADER.read_text()
    front, rest = header.split(BEGIN)
    wanted = {C_HEADER: front + BEGIN + c_region(interfaces) + END + rest.split(END)[1],
              IDL: idl_text(interfaces)}
    stale = [path for path, text in wanted.items()
             if not path.exists() or path.read_text() != text]
    if "--check" in sys.argv[1:]:
        for path in stale:
            print(f"{path.relative_to(TREE)} is not what scripts/interfaces.py writes: run it")
        return 1 if stale else 0
    for path in stale:
        path.write_text(wanted[path])
    return 0


if __name__ == "__main__":
    sys.exit(main())
