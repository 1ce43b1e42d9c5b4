"""What the reader and the emitters share: description errors, the spelling of
types in C++ and in the registry, and the naming rules of generated members."""

import re

IDENT = r"[A-Za-z_][A-Za-z0-9_]*"
TYPE = r"[A-Za-z_][A-Za-z0-9_:<>, ]*?"


class DescError(Exception):
    """A fault in a description, reported as "path:line: message"."""

    def __init__(self, path, line, msg):
        super().__init__(f"{path}:{line}: {msg}")


SCALARS = {
    "bool": "bool", "double": "double", "float": "float",
    "U8": "uint8_t", "U16": "uint16_t", "U32": "uint32_t", "U64": "uint64_t",
    "uint8_t": "uint8_t", "uint16_t": "uint16_t", "uint32_t": "uint32_t", "uint64_t": "uint64_t",
    "int8_t": "int8_t", "int16_t": "int16_t", "int32_t": "int32_t", "int64_t": "int64_t",
    "int": "int", "unsigned": "unsigned", "unsigned int": "unsigned int",
    "Zel::Seconds": "Zel::Seconds",
}
NON_COUNTERS = {"bool", "double", "float", "Zel::Seconds"}
# Runtime types every description may name without declaring them.
BUILTIN = {"Zel::String", "Zel::Name"}


def cpp(t):
    return SCALARS.get(t, t)


def is_scalar(t, unit=None):
    """Passed and returned by value."""
    if t in SCALARS:
        return True
    d = unit.find(t) if unit else None
    return d is not None and d.kind == "enum"


def is_counter(t, unit):
    return t in SCALARS and t not in NON_COUNTERS


def param(t, unit):
    return cpp(t) if is_scalar(t, unit) else f"const {cpp(t)}&"


def ret(t, unit):
    return cpp(t) if is_scalar(t, unit) else f"const {cpp(t)}&"


def registry_name(t, unit):
    """The name of type t in the registry's descriptors: a type a description declares
    with its namespace (and enclosing entity), "Ldp::LdpLabelDistCtrl"; scalars and
    names already qualified as written. Keeps "const " and Zel::Ptr<...> around it."""
    t = t.strip()
    if t.startswith("const "):
        return "const " + registry_name(t[6:], unit)
    inner = re.match(r"^Zel::Ptr<\s*(.+?)\s*>$", t)
    if inner:
        return f"Zel::Ptr<{registry_name(inner.group(1), unit)}>"
    d = unit.find(t) if t not in SCALARS and t not in BUILTIN else None
    return d.qualified if d is not None else t


def strep_of(t, expr):
    """The string form of `expr` of type t: references print as referenceStrep does."""
    if t.startswith("Zel::Ptr<"):
        return f"Zel::referenceStrep({expr})"
    return f"valueToStrep({expr})"


def lower_first(s):
    return s[:1].lower() + s[1:]


def upper_first(s):
    return s[:1].upper() + s[1:]


def factory_of(t):
    """The factory of entity type t: "Ns::Leaf" -> "Ns::leafFactory"."""
    scope, _, name = t.rpartition("::")
    return f"{scope}{'::' if scope else ''}{lower_first(name)}Factory"


def entity_chain(d, unit):
    """The entity and its bases, most basic first."""
    out = []
    while d is not None:
        out.insert(0, d)
        d = unit.find(d.base) if d.base else None
    return out
