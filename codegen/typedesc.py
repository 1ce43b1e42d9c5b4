"""Reader of type descriptions (*.types).

A description is line based; '#' starts a comment; indentation marks the members
of a declaration. Top-level lines:

    include "platform/l3/VrfName.h"     header the generated header includes
    import "core/LdpEnums.types"        the types another description declares; its
                                        generated header is included, and editing it
                                        regenerates this one
    namespace Ldp                       namespace of the declarations that follow
    extern KIND NAME header "path.h"    a hand-written type (KIND value, enum, entity
                                        or object), so that descriptions may name it;
                                        a unit that names it includes the header
    enum NAME [in OUTER] [nofree]       enumeration; OUTER: the enclosing class (an
                                        entity of the same unit, or else a struct of
                                        that name), qualified name "Ldp::OUTER::NAME";
                                        members of OUTER (and of entities derived from
                                        it) name it NAME, other entities OUTER::NAME;
                                        values and objects of the same unit cannot
                                        (they are declared before its class);
                                        nofree: descriptor only
    value NAME                          value type
    entity NAME [: BASE]                entity type
    object NAME                         reference-counted type with plain attributes
                                        numbered from 130, no reactors

platform/Platform.types, when the source root has it, is imported by every unit.

Members of an enum: ENUMERATOR = NUMBER. Members of a value type:

    field NAME : TYPE [= DEFAULT]
    const NAME : TYPE = EXPR
    bit NAME : FIELD CONSTANT       bool view of bit CONSTANT of FIELD
    option order                    operator< over the fields in order
    option hash                     hash() is hand-written
    option strep                    valueToStrep() is the hand-written stringValue()
    option parse                    sequenceToValue() is hand-written
    method C++-DECLARATION          hand-written member

Members of an entity or object type are the kinds of codegen/members.py, each
documented on its class there: key, init, attr, derived, ref, const, function,
op, method, map, counter, set, children, refs, queue, child (key, init, ref and
the last six in entities only); and `option ctor`: the constructor calls
hand-written constructed(). Entity types without a key anywhere in their bases
are created by name; a derived entity may add keys only to a keyed base, and is
then named by the keys of every level.

Attribute ids follow declaration order: entity attributes from 258 (+128 per level
of derivation), object attributes from 130, value fields, constants and bit views
from 2. Within an entity and its bases every member name is distinct. Every type a
member names must be a scalar, a runtime string, or declared here or in an import,
and of a kind the member takes (kind_of below; each member kind's types() says
which). Errors name the description and the line ("path:line: message").
"""

import re
from dataclasses import dataclass, field
from typing import List, Optional

from cxx import BUILTIN, IDENT, SCALARS, TYPE, DescError  # noqa: F401 (DescError is public here)
from members import KINDS, VALUE


@dataclass
class Member:
    kind: str  # enumerator, field, bit, or a keyword of members.KINDS
    name: str = ""
    type: str = ""
    default: Optional[str] = None
    key_types: List[str] = field(default_factory=list)
    value: int = 0  # enumerator value
    id: int = 0
    extra: str = ""  # kind-specific: bit "FIELD CONSTANT", method the declaration, ...
    params: list = field(default_factory=list)  # operations: [(type, name)]
    line: int = 0  # where it is declared, for errors

    @property
    def key_type(self):
        return ", ".join(self.key_types)


@dataclass
class Decl:
    kind: str  # enum value entity object extern
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
    header: str = ""  # extern: the header that declares it
    extern_kind: str = ""  # extern: value, enum, entity or object

    @property
    def qualified(self):
        if self.kind == "extern" and "::" in self.name:
            return self.name
        parts = [self.namespace] + ([self.outer] if self.outer else []) + [self.name]
        return "::".join(p for p in parts if p)

    def of(self, *kinds):
        return [m for m in self.members if m.kind in kinds]


@dataclass
class Unit:
    path: str
    includes: List[str] = field(default_factory=list)
    decls: List[Decl] = field(default_factory=list)
    imports: List[str] = field(default_factory=list)  # every description loaded, in order

    def own(self):
        return [d for d in self.decls if not d.imported]

    def find(self, name):
        for d in self.decls:
            if d.name == name or d.qualified == name or (d.outer and f"{d.outer}::{d.name}" == name):
                return d
        return None


RE_TYPED = re.compile(rf"^({IDENT})\s*:\s*({TYPE})\s*(?:=\s*(.+))?$")
RE_EXTERN = re.compile(rf'^extern\s+(value|enum|entity|object)\s+([A-Za-z_][A-Za-z0-9_:]*)\s+header\s+"([^"]+)"$')


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
        method = raw.lstrip().startswith(("method", "op "))
        line = raw.rstrip() if method else raw.split("#", 1)[0].rstrip()
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
            elif head == "extern":
                m = RE_EXTERN.match(line)
                if not m:
                    raise DescError(path, lineno, 'expected extern KIND NAME header "path"')
                _declare(unit, Decl("extern", m.group(2), namespace, imported=imported, path=path,
                                    line=lineno, header=m.group(3), extern_kind=m.group(1)), path, lineno)
            elif head in ("enum", "value", "entity", "object"):
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
                _declare(unit, current, path, lineno)
            else:
                raise DescError(path, lineno, f"unknown declaration '{head}'")
            continue
        if current is None:
            raise DescError(path, lineno, "member outside a declaration")
        _member(current, line.strip(), path, lineno)
    return unit


def _declare(unit, decl, path, lineno):
    old = unit.find(decl.qualified) or unit.find(decl.name)
    if old is not None and old.qualified == decl.qualified:
        if old.path == decl.path and old.line == decl.line:
            return  # the same description reached through two imports
        if not decl.imported or not old.imported:
            raise DescError(path, lineno, f"{decl.name} declared twice")
    unit.decls.append(decl)


def _member(decl, line, path, lineno):
    kind, _, rest = line.partition(" ")
    rest = rest.strip()
    if decl.kind == "enum":
        m = re.match(rf"^({IDENT})\s*=\s*(\S+)$", line)
        if not m:
            raise DescError(path, lineno, "expected ENUMERATOR = NUMBER")
        decl.members.append(Member("enumerator", m.group(1), value=_number(m.group(2), path, lineno),
                                   line=lineno))
        return
    if kind == "option":
        decl.options.append(rest)
        return
    if decl.kind == "value":
        _value_member(decl, kind, rest, path, lineno)
        return
    k = KINDS.get(kind)
    if k is None or (k.entity_only and decl.kind != "entity"):
        raise DescError(path, lineno, f"'{kind}' is not a member of a{'n' if decl.kind[0] in 'aeo' else ''} "
                                      f"{decl.kind}")
    m = Member(kind, line=lineno)
    k.parse(m, rest, path, lineno)
    decl.members.append(m)


def _value_member(decl, kind, rest, path, lineno):
    if kind == "method":
        decl.members.append(Member("method", extra=rest, line=lineno))
        return
    if kind == "bit":
        m = re.match(rf"^({IDENT})\s*:\s*({IDENT})\s+({IDENT})$", rest)
        if not m:
            raise DescError(path, lineno, "expected bit NAME : FIELD CONSTANT")
        decl.members.append(Member("bit", m.group(1), type="bool", extra=f"{m.group(2)} {m.group(3)}",
                                   line=lineno))
        return
    if kind not in ("field", "const"):
        raise DescError(path, lineno, f"'{kind}' is not a member of a value")
    m = RE_TYPED.match(rest)
    if not m:
        raise DescError(path, lineno, f"expected {kind} NAME : TYPE")
    name, typ, default = m.group(1), m.group(2).strip(), m.group(3)
    if kind == "const" and default is None:
        raise DescError(path, lineno, "a constant needs a value")
    decl.members.append(Member(kind, name, type=typ, default=default.strip() if default else None,
                               line=lineno))


def number(unit):
    """Assigns attribute ids and derivation depths; checks bases and duplicates.

    An entity's attribute names must also differ from those of its bases: a reused
    name would make the derived reactor's handler override the base's.
    """
    for d in unit.decls:
        if d.kind in ("enum", "extern"):
            continue
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
            if d.of("key") and bases and not any(base.of("key") for base in bases):
                raise DescError(where, d.of("key")[0].line,
                                f"{d.name}: a named base entity cannot gain keys")
        else:
            next_id = 130 if d.kind == "object" else 2
        for m in d.members:
            if m.kind == "method":
                continue
            if m.name in seen:
                raise DescError(where, m.line, f"{d.name}: {m.name} declared twice")
            seen.add(m.name)
            m.id = next_id
            next_id += 1
    return unit


def kind_of(unit, t):
    """What type t is: "scalar" (scalars and runtime types), "pointer" (Zel::Ptr<T>
    of a known T), or the kind of its declaration (an extern's declared kind);
    None if unknown. Also gives the declaration."""
    t = t.strip()
    if t in SCALARS or t in BUILTIN:
        return "scalar", None
    inner = re.match(r"^Zel::Ptr<\s*(?:const\s+)?(.+?)\s*>$", t)
    if inner:
        kind, d = kind_of(unit, inner.group(1))
        return ("pointer" if kind in ("entity", "object") else None), d
    d = unit.find(t)
    if d is None:
        return None, None
    return (d.extern_kind if d.kind == "extern" else d.kind), d


def _a(word):
    return f"a{'n' if word[0] in 'aeio' else ''} {word}"


def check(unit):
    """Every type that the unit's own declarations name must be known, and of the
    right kind where the member needs one; returns the declarations they name."""
    used = []
    for d in unit.own():
        where = d.path or unit.path
        if d.kind == "value":
            named = [(m.type, VALUE, m.line) for m in d.of("field", "const")]
        elif d.kind in ("entity", "object"):
            named = [(t, kinds, m.line) for m in d.members if m.kind in KINDS
                     for t, kinds in KINDS[m.kind].types(m)]
        else:
            continue
        for t, kinds, line in named:
            kind, found = kind_of(unit, t)
            if kind is None:
                raise DescError(where, line, f"unknown type {t}: declare it or import its description")
            if found is not None:
                used.append(found)
            if kinds and kind not in kinds:
                raise DescError(where, line, f"{t} is {_a(kind)}, not {_a(kinds[0])}")
            if found is not None and found.kind == "enum" and found.outer:
                outer = unit.find(found.outer)
                if d.kind != "entity" and not found.imported and outer is not None and outer.kind == "entity":
                    # Values and objects are declared before the entities of their unit.
                    raise DescError(where, line, f"{t} is nested in the entity {found.outer} of this "
                                                 f"description: only entities may name it")
                if "::" not in t and found.outer not in [e.name for e in _chain(unit, d)]:
                    raise DescError(where, line, f"{t} is declared in {found.outer}: name it "
                                                 f"{found.outer}::{t}")
        if d.kind == "entity" and d.base:
            used.append(unit.find(d.base))
    return used


def _chain(unit, d):
    out = []
    while d is not None and not any(d is x for x in out):
        out.append(d)
        d = unit.find(d.base) if d.base else None
    return out
