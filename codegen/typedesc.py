"""Reader of type descriptions (*.types).

A description is line based; '#' starts a comment; indentation marks the members
of a declaration. Top-level lines:

    include "platform/l3/VrfName.h"     header the generated header includes
    import "core/LdpEnums.types"        read another description for its types only
    namespace Ldp                       namespace of the declarations that follow
    enum NAME [in OUTER] [nofree]       enumeration (OUTER: enclosing class, qualified
                                        name "Ldp::OUTER::NAME"); nofree: descriptor only
    value NAME                          value type
    entity NAME [: BASE]                entity type

Members (indented):

    enum:     ENUMERATOR = NUMBER
    value:    field NAME : TYPE [= DEFAULT]
              const NAME : TYPE = EXPR
              bit NAME : FIELD CONSTANT       bool view of bit CONSTANT of FIELD
              option order                    operator< over the fields in order
              option hash                     hash() is hand-written
              option strep                    valueToStrep() is the hand-written stringValue()
              option parse                    sequenceToValue() is hand-written
              method C++-DECLARATION          hand-written member
    entity:   key NAME : TYPE                 (a key "name : Zel::Name" makes a named entity)
              attr NAME : TYPE [= DEFAULT]    mutable attribute
              map NAME : VALUE [KEY]          collection of values
              set NAME : KEY                  collection of keys
              children NAME : CHILD [KEY]     collection of child entities
              child NAME : CHILD              instantiating pointer, created by name
              const NAME : TYPE = EXPR        constant
              function NAME                   hand-written action, invocable by reflection
              method C++-DECLARATION          hand-written member
              option ctor                     the constructor calls hand-written constructed()

Attribute ids follow declaration order: entity attributes from 258 (+128 per level of
derivation), value fields, constants and bit views from 2. Within an entity and its bases
every member name is distinct, and only an entity without a base may declare keys.
Errors name the description and the line ("path:line: message").
"""

import re
from dataclasses import dataclass, field
from typing import List, Optional


class DescError(Exception):
    def __init__(self, path, line, msg):
        super().__init__(f"{path}:{line}: {msg}")


@dataclass
class Member:
    kind: str  # enumerator field const bit key attr map set children child function method
    name: str
    type: str = ""
    default: Optional[str] = None
    key_type: str = ""
    value: int = 0  # enumerator value
    id: int = 0
    extra: str = ""  # bit: "FIELD CONSTANT"; method: the declaration
    line: int = 0  # where it is declared, for errors


@dataclass
class Decl:
    kind: str  # enum value entity
    name: str
    namespace: str
    base: Optional[str] = None
    outer: Optional[str] = None
    options: List[str] = field(default_factory=list)
    members: List[Member] = field(default_factory=list)
    imported: bool = False
    depth: int = 0
    path: str = ""  # the description that declares it, and the line, for errors
    line: int = 0

    @property
    def qualified(self):
        parts = [self.namespace] + ([self.outer] if self.outer else []) + [self.name]
        return "::".join(p for p in parts if p)

    def of(self, *kinds):
        return [m for m in self.members if m.kind in kinds]


@dataclass
class Unit:
    path: str
    includes: List[str] = field(default_factory=list)
    decls: List[Decl] = field(default_factory=list)

    def own(self):
        return [d for d in self.decls if not d.imported]

    def find(self, name):
        for d in self.decls:
            if d.name == name or d.qualified == name:
                return d
        return None


IDENT = r"[A-Za-z_][A-Za-z0-9_]*"
TYPE = r"[A-Za-z_][A-Za-z0-9_:<>, ]*?"
RE_TYPED = re.compile(rf"^({IDENT})\s*:\s*({TYPE})\s*(?:=\s*(.+))?$")
RE_KEYED = re.compile(rf"^({IDENT})\s*:\s*({TYPE})\s*\[\s*({TYPE})\s*\]$")


def _number(text, path, lineno):
    try:
        return int(text, 0)
    except ValueError:
        raise DescError(path, lineno, f"not a number: {text}")


def parse(text, path="<text>", unit=None, imported=False, loader=None):
    unit = unit or Unit(path)
    namespace = ""
    current = None
    for lineno, raw in enumerate(text.splitlines(), 1):
        line = raw.split("#", 1)[0].rstrip() if not raw.lstrip().startswith("method") else raw.rstrip()
        if not line.strip():
            continue
        indented = line[0] in " \t"
        words = line.split()
        if not indented:
            current = None
            head = words[0]
            if head == "include":
                if not imported:
                    unit.includes.append(line.split(None, 1)[1].strip().strip('"'))
            elif head == "import":
                if loader is None:
                    raise DescError(path, lineno, "import needs a loader")
                loader(line.split(None, 1)[1].strip().strip('"'), unit)
            elif head == "namespace":
                namespace = words[1] if len(words) > 1 else ""
            elif head in ("enum", "value", "entity"):
                if len(words) < 2:
                    raise DescError(path, lineno, f"{head} needs a name")
                current = Decl(head, words[1], namespace, imported=imported, path=path, line=lineno)
                rest = words[2:]
                while rest:
                    w = rest.pop(0)
                    if w == "in" and head == "enum" and rest:
                        current.outer = rest.pop(0)
                    elif w == "nofree" and head == "enum":
                        current.options.append("nofree")
                    elif w == ":" and head == "entity" and rest:
                        current.base = rest.pop(0)
                    else:
                        raise DescError(path, lineno, f"unexpected '{w}'")
                if unit.find(current.name) and not imported:
                    raise DescError(path, lineno, f"{current.name} declared twice")
                unit.decls.append(current)
            else:
                raise DescError(path, lineno, f"unknown declaration '{head}'")
            continue
        if current is None:
            raise DescError(path, lineno, "member outside a declaration")
        before = len(current.members)
        _member(current, line.strip(), path, lineno)
        for m in current.members[before:]:
            m.line = lineno
    return unit


def _member(decl, line, path, lineno):
    kind, _, rest = line.partition(" ")
    rest = rest.strip()
    if decl.kind == "enum":
        m = re.match(rf"^({IDENT})\s*=\s*(\S+)$", line)
        if not m:
            raise DescError(path, lineno, "expected ENUMERATOR = NUMBER")
        decl.members.append(Member("enumerator", m.group(1), value=_number(m.group(2), path, lineno)))
        return
    if kind == "option":
        decl.options.append(rest)
        return
    if kind == "method":
        decl.members.append(Member("method", "", extra=rest))
        return
    if kind == "function" and decl.kind == "entity":
        if not re.match(rf"^{IDENT}$", rest):
            raise DescError(path, lineno, "expected function NAME")
        decl.members.append(Member("function", rest))
        return
    if kind == "bit" and decl.kind == "value":
        m = re.match(rf"^({IDENT})\s*:\s*({IDENT})\s+({IDENT})$", rest)
        if not m:
            raise DescError(path, lineno, "expected bit NAME : FIELD CONSTANT")
        decl.members.append(Member("bit", m.group(1), type="bool", extra=f"{m.group(2)} {m.group(3)}"))
        return
    allowed = {"value": ("field", "const"),
               "entity": ("key", "attr", "map", "set", "children", "child", "const")}[decl.kind]
    if kind not in allowed:
        raise DescError(path, lineno, f"'{kind}' is not a member of a {decl.kind}")
    if kind in ("map", "children"):
        m = RE_KEYED.match(rest)
        if not m:
            raise DescError(path, lineno, f"expected {kind} NAME : TYPE [KEY]")
        decl.members.append(Member(kind, m.group(1), type=m.group(2).strip(), key_type=m.group(3).strip()))
        return
    m = RE_TYPED.match(rest)
    if not m:
        raise DescError(path, lineno, f"expected {kind} NAME : TYPE")
    name, typ, default = m.group(1), m.group(2).strip(), m.group(3)
    if kind == "const" and default is None:
        raise DescError(path, lineno, "a constant needs a value")
    if kind == "set":
        decl.members.append(Member("set", name, type="bool", key_type=typ))
    else:
        decl.members.append(Member(kind, name, type=typ, default=default.strip() if default else None))


def number(unit):
    """Assigns attribute ids and derivation depths; checks bases and duplicates.

    An entity's attribute names must also differ from those of its bases: a reused
    name would make the derived reactor's handler override the base's.
    """
    for d in unit.decls:
        where = d.path or unit.path
        seen = set()
        if d.kind == "entity":
            depth, b, bases = 0, d.base, []
            while b:
                base = unit.find(b)
                if base is None or base.kind != "entity":
                    raise DescError(where, d.line, f"{d.name}: unknown base entity {b}")
                if base is d or any(base is x for x in bases):
                    raise DescError(where, d.line, f"{d.name}: circular base {b}")
                bases.append(base)
                depth, b = depth + 1, base.base
            d.depth = depth
            next_id = 258 + 128 * depth
            seen = {m.name for base in bases for m in base.members if m.kind != "method"}
        else:
            next_id = 2
        for m in d.members:
            if m.kind == "method":
                continue
            if m.kind == "key" and d.depth:
                raise DescError(where, m.line, f"{d.name}: only a base entity has keys")
            if m.name in seen:
                raise DescError(where, m.line, f"{d.name}: {m.name} declared twice")
            seen.add(m.name)
            if m.kind != "enumerator":
                m.id = next_id
                next_id += 1
    return unit
