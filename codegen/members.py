"""The member kinds of entity and object types: one class per kind.

Each kind is the single home of everything the generator says about a member of
that kind: how its description line reads, which types it names, its public
declarations, its storage, what the constructor and destructor do for it, its
definitions, its reactor handler and its reflection descriptor. Adding a kind is
adding a class here and listing it in KINDS.

The hooks receive the member `m` (typedesc.Member) and a context `x` (Ctx below)
that knows the unit, the declaration and the class name.
"""

import re

from cxx import (IDENT, TYPE, DescError, cpp, entity_chain, factory_of, is_counter, param, registry_name,
                 ret, strep_of, lower_first, upper_first)

RE_TYPED = re.compile(rf"^({IDENT})\s*:\s*({TYPE})\s*(?:=\s*(.+))?$")
RE_KEYED = re.compile(rf"^({IDENT})\s*:\s*({TYPE})\s*\[\s*([^\]]+?)\s*\]\s*(.*)$")
RE_OP = re.compile(rf"^({IDENT})\s*\((.*)\)\s*(?:->\s*({TYPE}))?\s*(const)?$")


class Ctx:
    """What the hooks need to know about the type being generated."""

    def __init__(self, unit, decl, chain):
        self.unit, self.d, self.n = unit, decl, decl.name
        self.chain = chain  # the declaration and its bases, most basic first
        self.is_object = decl.kind == "object"
        self.visit = f"visitNotifiees<NotifieeConst, {decl.depth}>"
        self.self_ = f"static_cast<const {decl.name}&>(e)"

    # Parameters and results are spelled as outside() does: reactors (the reflection
    # reactor too) derive from a nested class, which does not see its outer class's names.
    def param(self, t):
        return self.outside(t) if param(t, self.unit) == cpp(t) else f"const {self.outside(t)}&"

    def ret(self, t):
        return self.outside(t) if ret(t, self.unit) == cpp(t) else f"const {self.outside(t)}&"

    def outside(self, t):
        """t spelled for use outside the class body (a return type before "Class::", a
        reactor's handler): an enumeration nested in a class takes the class's name."""
        d = self.unit.find(t)
        if d is not None and d.kind == "enum" and d.outer and "::" not in t:
            return f"{d.outer}::{cpp(t)}"
        return cpp(t)

    def notify(self, m, arg=""):
        """The statement that calls every reactor's handler of m."""
        if self.is_object:
            return ""
        cap = "&" if arg else ""
        return f"  {self.visit}([{cap}](NotifieeConst* r) {{ r->{handler(m)}({arg}); }});\n"


def handler(m):
    return f"on{upper_first(m.name)}"


def split_params(text, path, lineno):
    """"T a, U b" -> [("T", "a"), ("U", "b")]; template arguments may hold commas."""
    params, depth, cur = [], 0, ""
    for ch in text + ",":
        if ch == "," and depth == 0:
            cur = cur.strip()
            if cur:
                mm = re.match(rf"^(.+?)\s*&?\s*({IDENT})$", cur)
                if not mm:
                    raise DescError(path, lineno, f"expected TYPE NAME, not '{cur}'")
                t = re.sub(r"^const\s+", "", mm.group(1)).rstrip(" &")
                params.append((t, mm.group(2)))
            cur = ""
            continue
        depth += ch == "<"
        depth -= ch == ">"
        cur += ch
    return params


def key_types(text):
    """"A, B<C, D>" -> ["A", "B<C, D>"]."""
    out, depth, cur = [], 0, ""
    for ch in text + ",":
        if ch == "," and depth == 0:
            if cur.strip():
                out.append(cur.strip())
            cur = ""
            continue
        depth += ch == "<"
        depth -= ch == ">"
        cur += ch
    return out


def key_cpp(types, spell=cpp):
    """The C++ type of a collection key made of `types`, each spelled by `spell`."""
    if len(types) == 1:
        return spell(types[0])
    return f"Zel::Key<{', '.join(spell(t) for t in types)}>"


def target(t):
    """"const T" -> ("T", True)."""
    t = t.strip()
    if t.startswith("const "):
        return t[6:].strip(), True
    return t, False


def ptr_of(t, const):
    return f"Zel::Ptr<{'const ' if const else ''}{cpp(t)}>"


def desc(**fields):
    return fields


# The kinds of type (typedesc.kind_of) a member may name; refusals name the first.
VALUE = ("value", "enum", "scalar")
REFERENT = ("entity", "object")


class Kind:
    keyword = ""
    attr_kind = ""
    numbered = True  # takes an attribute id
    entity_only = False  # not a member of an object type

    def parse(self, m, rest, path, lineno):
        mm = RE_TYPED.match(rest)
        if not mm:
            raise DescError(path, lineno, f"expected {self.keyword} NAME : TYPE")
        m.name, m.type = mm.group(1), mm.group(2).strip()
        m.default = mm.group(3).strip() if mm.group(3) else None

    def types(self, m):
        """(type, the kinds it may be) pairs; each type must be known."""
        return [(m.type, VALUE)] if m.type else []

    def check(self, m, x, path):
        """What only the whole unit can tell (the types are known by then); a refusal
        names path and the member's line."""

    def handler_param(self, m, x):
        """None: no reactor handler; "": onX(); otherwise onX(<param>)."""
        return None

    def public(self, m, x):
        return ""

    def storage(self, m, x):
        return ""

    def construct(self, m, x):
        return ""

    def destroy(self, m, x):
        return ""

    def define(self, m, x):
        return ""

    def reflect(self, m, x):
        return desc()

    # Replication (the attribute-log adapter, platform/zel/AttrLogSa.h).
    def log_handler(self, m, x):
        """The adapter reactor's handler body for m (`k` is the key), or None."""
        return None

    def log_cases(self, m, x):
        """{adapter function: the `case` of m in its switch on ids}; the functions are
        those of Entity::ZelNboAttrLogSa (writeAttr, readAttr, writeEntry, entryKeys,
        childAt, makeChild). Inside, `ent` is the entity, `out`/`in`/`key` the streams."""
        return {}


def read_var(t, var, stream, x):
    """Declares `var` of type t and reads it from `stream`."""
    return f"{x.outside(t)} {var}{{}};\n      attrLogRead({stream}, &{var});\n      "


def read_cases(m, x, apply_set, apply_del, value=True):
    """The readAttr case of a keyed collection: the operation, the key and, for a
    set, the value are decoded before anything changes."""
    kt = key_cpp(m.key_types, x.outside)
    val = f"      {x.outside(m.type)} v{{}};\n      attrLogRead(in, &v);\n" if value else ""
    return (f"{{\n      const uint8_t op = in.nextU8();\n      {kt} k{{}};\n      attrLogRead(in, &k);\n"
            f"      if (op == Zel::NboAttrLog::entrySet) {{\n  {val.replace(chr(10) + '      ', chr(10) + '        ')}"
            f"        in.endOfRecord();\n        {apply_set};\n"
            f"      }} else if (op == Zel::NboAttrLog::entryDel) {{\n        in.endOfRecord();\n        {apply_del};\n"
            f"      }} else {{\n        Zel::NboAttrLog::refuseEntryOp(op);\n      }}\n      return true;\n    }}")


def entry_keys_case(m):
    return (f"for (const auto& k : ent.{m.name}_.keys()) keys.push_back(Zel::NboAttrLog::encoded(k));\n"
            f"      return true;")


def make_child_case(m, x, call):
    """Reads the child's construction arguments and calls `call`(args)."""
    child = x.unit.find(m.type)
    keys, inits = construction(child, x.unit)
    reads = "".join(read_var(t, f"a{i}", "in", x) for i, (_, t) in enumerate(keys + inits))
    args = ", ".join(f"a{i}" for i in range(len(keys + inits)))
    return f"{{\n      {reads}in.endOfRecord();\n      return ent.{call}({args});\n    }}"


# ------------------------------------------------------------------ plain values

class KeyKind(Kind):
    """key NAME : TYPE -- fixed by the constructor; keys of every level, in order,
    make the entity's collection key and name."""
    keyword, attr_kind, entity_only = "key", "key", True

    def parse(self, m, rest, path, lineno):
        super().parse(m, rest, path, lineno)
        if m.default is not None:
            raise DescError(path, lineno, f"a{'n' if self.keyword == 'init' else ''} {self.keyword} "
                                          "has no default: it is a construction argument")

    def public(self, m, x):
        return f"  {x.ret(m.type)} {m.name}() const {{ return {m.name}_; }}\n"

    def storage(self, m, x):
        return f"  {cpp(m.type)} {m.name}_;\n"

    def reflect(self, m, x):
        return desc(read=f"[](const Zel::Entity& e) {{ return {strep_of(m.type, f'{x.self_}.{m.name}()')}; }}")


class InitKind(KeyKind):
    """init NAME : TYPE -- a construction argument after the keys, fixed like a key
    but not part of the collection key; asking a collection for an existing child
    with another value is refused naming this attribute."""
    keyword, attr_kind = "init", "init"


class MutableKind(Kind):
    """attr NAME : TYPE [= DEFAULT] -- getter, setter that notifies on a change;
    integers also xInc/xDec."""
    keyword, attr_kind = "attr", "mutableAttr"

    def handler_param(self, m, x):
        return ""

    def public(self, m, x):
        t = cpp(m.type)
        s = f"  {x.ret(m.type)} {m.name}() const {{ return {m.name}_; }}\n"
        s += f"  void {m.name}Is({x.param(m.type)} v);\n"
        if is_counter(m.type, x.unit):
            s += f"  void {m.name}Inc({t} delta = 1);\n  void {m.name}Dec({t} delta = 1);\n"
        return s

    def storage(self, m, x):
        return f"  {cpp(m.type)} {m.name}_{braced(m.default)};\n"

    def define(self, m, x):
        t, n = cpp(m.type), x.n
        s = (f"void {n}::{m.name}Is({x.param(m.type)} v) {{\n  if ({m.name}_ == v) return;\n"
             f"  {m.name}_ = v;\n{x.notify(m)}}}\n")
        if is_counter(m.type, x.unit):
            for op, sign in (("Inc", "+"), ("Dec", "-")):
                s += (f"void {n}::{m.name}{op}({t} delta) {{ "
                      f"{m.name}Is(static_cast<{t}>({m.name}_ {sign} delta)); }}\n")
        return s

    def reflect(self, m, x):
        t = cpp(m.type)
        return desc(
            read=f"[](const Zel::Entity& e) {{ return valueToStrep({x.self_}.{m.name}()); }}",
            write=writer(m, x),
            defaultValue=f"[] {{ return valueToStrep({t}{braced(m.default)}); }}")

    def log_handler(self, m, x):
        return f"sa_->attrChanged({m.id});"

    def log_cases(self, m, x):
        return {"writeAttr": f"attrLogWrite(out, ent.{m.name}());\n      return true;",
                "readAttr": (f"{{\n      {read_var(m.type, 'v', 'in', x)}in.endOfRecord();\n"
                             f"      ent.{m.name}Is(v);\n      return true;\n    }}")}


def writer(m, x):
    """The reflection writer of m: parses the whole form and calls xIs()."""
    t = cpp(m.type)
    return (f"[](Zel::Entity& e, Zel::StrIt& it, const Zel::StrIt& end) {{\n"
            f"         const {t} v = Zel::deserializeAttr<{t}>(it, end, \"{m.name}\");\n"
            f"         if (it != end) Zel::throwRangeException(\"Invalid value for attribute "
            f"'{m.name}': trailing text\");\n"
            f"         static_cast<{x.n}&>(e).{m.name}Is(v);\n       }}")


def braced(default):
    return f"{{{default}}}" if default is not None else "{}"


class DerivedKind(Kind):
    """derived NAME : TYPE read|write|take -- an access point the unit writes by hand:
    read: `T x() const` computed from other state; write: `void xIs(v)` that stores
    nothing of its own; take: `T x()` that hands a value out and forgets it."""
    keyword, attr_kind = "derived", "derived"
    MODES = ("read", "write", "take")

    def parse(self, m, rest, path, lineno):
        mm = re.match(rf"^({IDENT})\s*:\s*({TYPE})\s+(read|write|take)$", rest)
        if not mm:
            raise DescError(path, lineno, "expected derived NAME : TYPE read|write|take")
        m.name, m.type, m.extra = mm.group(1), mm.group(2).strip(), mm.group(3)

    def types(self, m):
        return [(m.type, VALUE + ("pointer",))]

    def public(self, m, x):
        if m.extra == "read":
            return f"  {cpp(m.type)} {m.name}() const;\n"
        if m.extra == "write":
            return f"  void {m.name}Is({x.param(m.type)} v);\n"
        return f"  // Hands the value out and forgets it.\n  {cpp(m.type)} {m.name}();\n"

    def reflect(self, m, x):
        if m.extra == "read":
            return desc(read=f"[](const Zel::Entity& e) {{ return {strep_of(m.type, f'{x.self_}.{m.name}()')}; }}")
        if m.extra == "write" and not m.type.startswith("Zel::Ptr<"):
            return desc(write=writer(m, x))
        return desc()  # reading would change the entity, and a reference has no parseable form


class RefKind(Kind):
    """ref NAME : [const] T -- a Zel::Ptr to an object the entity does not own; the
    setter notifies when the pointer changes."""
    keyword, attr_kind, entity_only = "ref", "reference", True

    def types(self, m):
        return [(target(m.type)[0], REFERENT)]

    def handler_param(self, m, x):
        return ""

    def public(self, m, x):
        p = ptr_of(*target(m.type))
        return (f"  const {p}& {m.name}() const {{ return {m.name}_; }}\n"
                f"  void {m.name}Is(const {p}& v);\n")

    def storage(self, m, x):
        return f"  {ptr_of(*target(m.type))} {m.name}_;\n"

    def define(self, m, x):
        p = ptr_of(*target(m.type))
        return (f"void {x.n}::{m.name}Is(const {p}& v) {{\n  if ({m.name}_ == v) return;\n"
                f"  {m.name}_ = v;\n{x.notify(m)}}}\n")

    def reflect(self, m, x):
        return desc(read=f"[](const Zel::Entity& e) {{ return Zel::referenceStrep({x.self_}.{m.name}()); }}")

    def log_handler(self, m, x):
        return f"sa_->attrChanged({m.id});"

    def log_cases(self, m, x):
        t, const = target(m.type)
        tt = f"{'const ' if const else ''}{cpp(t)}"
        return {"writeAttr": (f"out.putU32(Zel::NboAttrLog::refHandle(writer(), ent.{m.name}().ptr()));\n"
                              f"      return true;"),
                "readAttr": (f"{{\n      const uint32_t h = in.nextU32();\n      in.endOfRecord();\n"
                             f"      ent.{m.name}Is(Zel::NboAttrLog::refAt<{tt}>(r, h));\n      return true;\n    }}")}


class ConstKind(Kind):
    """const NAME : TYPE = EXPR -- a static getter."""
    keyword, attr_kind = "const", "constant"

    def parse(self, m, rest, path, lineno):
        super().parse(m, rest, path, lineno)
        if m.default is None:
            raise DescError(path, lineno, "a constant needs a value")

    def public(self, m, x):
        return f"  static {cpp(m.type)} {m.name}() {{ return {m.default}; }}\n"

    def reflect(self, m, x):
        return desc(read=f"[](const Zel::Entity&) {{ return valueToStrep({x.n}::{m.name}()); }}",
                    defaultValue=f"[] {{ return valueToStrep({x.n}::{m.name}()); }}")


class FunctionKind(Kind):
    """function NAME -- a hand-written action without parameters, invocable by reflection."""
    keyword, attr_kind = "function", "function"

    def parse(self, m, rest, path, lineno):
        if not re.match(rf"^{IDENT}$", rest):
            raise DescError(path, lineno, "expected function NAME")
        m.name = rest

    def public(self, m, x):
        return f"  void {m.name}();\n"

    def reflect(self, m, x):
        return desc(invoke=f"[](Zel::Entity& e) {{ static_cast<{x.n}&>(e).{m.name}(); }}")


class OperationKind(Kind):
    """op NAME(TYPE name, ...) [-> RESULT] [const] -- a hand-written operation with
    parameters or a result; reflection calls it with the arguments' string forms."""
    keyword, attr_kind = "op", "operation"

    def parse(self, m, rest, path, lineno):
        mm = RE_OP.match(rest)
        if not mm:
            raise DescError(path, lineno, "expected op NAME(TYPE name, ...) [-> TYPE] [const]")
        m.name = mm.group(1)
        m.params = split_params(mm.group(2), path, lineno)
        m.type = (mm.group(3) or "void").strip()
        m.extra = "const" if mm.group(4) else ""

    def types(self, m):
        result = [(m.type, VALUE + ("pointer",))] if m.type != "void" else []
        return [(t, VALUE) for t, _ in m.params] + result

    def signature(self, m, x):
        args = ", ".join(f"{x.param(t)} {n}" for t, n in m.params)
        return f"{cpp(m.type)} {m.name}({args}){' const' if m.extra else ''}"

    def public(self, m, x):
        return f"  {self.signature(m, x)};\n"

    def reflect(self, m, x):
        cast = f"static_cast<{'const ' if m.extra else ''}{x.n}&>(e)"
        parse = "".join(
            f"         const {cpp(t)} a{i} = Zel::parseWhole<{cpp(t)}>(args[{i}], "
            f"\"Invalid argument '{n}' of {m.name}\");\n" for i, (t, n) in enumerate(m.params))
        call = f"{cast}.{m.name}({', '.join(f'a{i}' for i in range(len(m.params)))})"
        result = (f"         {call};\n         return Zel::String();\n" if m.type == "void"
                  else f"         return {strep_of(m.type, call)};\n")
        sig = ", ".join(f"{registry_name(t, x.unit)} {n}" for t, n in m.params)
        k = len(m.params)
        count = "no arguments" if k == 0 else "1 argument" if k == 1 else f"{k} arguments"
        return desc(
            keyTypeName=f'"{sig}"',
            call=(f"[](Zel::Entity& e, const std::vector<Zel::String>& args) -> Zel::String {{\n"
                  f"         if (args.size() != {k}) Zel::throwRangeException("
                  f"\"{x.d.qualified}::{m.name} takes {count}\");\n{parse}{result}       }}"))


class MethodKind(Kind):
    """method C++-DECLARATION -- a hand-written member the registry does not list."""
    keyword, numbered = "method", False

    def parse(self, m, rest, path, lineno):
        m.extra = rest

    def types(self, m):
        return []

    def public(self, m, x):
        return f"  {m.extra}\n"


# ------------------------------------------------------------------ collections

class CollectionKind(Kind):
    """What every keyed collection shares: xDel, xDelAll, xNotify, a count and
    iteration over entries in the map's order."""
    entity_only = True

    def keys(self, m):
        return m.key_types

    def key_t(self, m):
        return key_cpp(self.keys(m))

    def key_param(self, m, x):
        ks = self.keys(m)
        return x.param(ks[0]) if len(ks) == 1 else f"const {key_cpp(ks, x.outside)}&"

    def handler_param(self, m, x):
        return self.key_param(m, x)

    def del_result(self, m):
        return "bool"

    def common_public(self, m, x):
        kp = self.key_param(m, x)
        return (f"  {self.del_result(m)} {m.name}Del({kp} key);\n"
                f"  void {m.name}DelAll();\n"
                f"  void {m.name}Notify({kp} key);\n"
                f"  size_t {m.name}s() const {{ return {m.name}_.size(); }}\n"
                f"  // Entries (.key, .value) in the map's order.\n"
                f"  const auto& {m.name}Iter() const {{ return {m.name}_.map(); }}\n")

    def common_define(self, m, x):
        n, kp = x.n, self.key_param(m, x)
        # The entity keeps itself alive: a handler may drop the last outside reference.
        return (f"void {n}::{m.name}DelAll() {{\n  if ({m.name}_.size() == 0) return;\n"
                f"  Zel::Ptr<const {n}> keep(this);\n"
                f"  for (const auto& key : {m.name}_.keys()) {m.name}Del(key);\n}}\n"
                f"void {n}::{m.name}Notify({kp} key) {{\n{x.notify(m, 'key')}}}\n")

    def reflect_value(self, m, x):
        """The string form of the entry at `k` in the reflection reader."""
        return f"valueToStrep({x.self_}.{m.name}(k))"

    def reflect(self, m, x):
        kt = self.key_t(m)
        return desc(
            keys=(f"[](const Zel::Entity& e) {{\n"
                  f"         std::vector<Zel::String> out;\n"
                  f"         for (const auto& k : {x.self_}.{m.name}_.keys()) out.push_back(valueToStrep(k));\n"
                  f"         return out;\n       }}"),
            readAt=(f"[](const Zel::Entity& e, const Zel::String& key) {{\n"
                    f"         const {kt} k = Zel::parseWhole<{kt}>(key, \"Invalid key of {m.name}\");\n"
                    f"         return {self.reflect_value(m, x)};\n       }}"),
            keyTypeName=f'"{", ".join(registry_name(k, x.unit) for k in self.keys(m))}"')

    # Replication of value entries (maps, counters, sets, queues): keyed sets and deletions.
    def log_handler(self, m, x):
        return f"sa_->entryChanged({m.id}, k, false);"

    def log_found(self, m):
        """An expression true when the entry at k exists, and its value's encoding."""
        return f"const auto* v = ent.{m.name}_.find(k)", "attrLogWrite(out, *v);"

    def log_cases(self, m, x):
        kt = key_cpp(m.key_types, x.outside)
        found, write_value = self.log_found(m)
        return {
            "writeEntry": (f"{{\n      {kt} k{{}};\n      attrLogRead(key, &k);\n"
                           f"      if ({found}) {{\n        out.putU8(Zel::NboAttrLog::entrySet);\n"
                           f"        attrLogWrite(out, k);\n        {write_value}\n      }} else {{\n"
                           f"        out.putU8(Zel::NboAttrLog::entryDel);\n        attrLogWrite(out, k);\n"
                           f"      }}\n      return true;\n    }}"),
            "entryKeys": entry_keys_case(m),
            "readAttr": self.log_read(m, x)}

    def log_read(self, m, x):
        return read_cases(m, x, f"ent.{m.name}Is(k, v)", f"ent.{m.name}Del(k)")


class MapKind(CollectionKind):
    """map NAME : VALUE [KEY] [delvalue] -- keyed values; x(key) gives the default
    when absent; xDel tells whether the key was there, or with `delvalue` gives the
    removed value (the default when absent)."""
    keyword, attr_kind = "map", "valueCollection"

    def parse(self, m, rest, path, lineno):
        mm = RE_KEYED.match(rest)
        if not mm or mm.group(4) not in ("", "delvalue"):
            raise DescError(path, lineno, f"expected {self.keyword} NAME : TYPE [KEY] [delvalue]")
        m.name, m.type, m.key_types = mm.group(1), mm.group(2).strip(), key_types(mm.group(3))
        m.extra = mm.group(4)

    def types(self, m):
        return [(t, VALUE) for t in [m.type] + m.key_types]

    def del_result(self, m):
        return cpp(m.type) if m.extra == "delvalue" else "bool"

    def public(self, m, x):
        t, kp = cpp(m.type), self.key_param(m, x)
        return (f"  // {m.name}: {m.type} keyed by {', '.join(m.key_types)}; the default when absent.\n"
                f"  {t} {m.name}({kp} key) const {{ return {m.name}_.at(key, {t}{{}}); }}\n"
                f"  void {m.name}Is({kp} key, {x.param(m.type)} v);\n" + self.common_public(m, x))

    def storage(self, m, x):
        return f"  Zel::ValueColl<{self.key_t(m)}, {cpp(m.type)}> {m.name}_;\n"

    def define(self, m, x):
        n, t, kp = x.n, cpp(m.type), self.key_param(m, x)
        s = (f"void {n}::{m.name}Is({kp} key, {x.param(m.type)} v) {{\n"
             f"  if (!{m.name}_.set(key, v)) return;\n{x.notify(m, 'key')}}}\n")
        if m.extra == "delvalue":
            s += (f"{x.outside(m.type)} {n}::{m.name}Del({kp} key) {{\n"
                  f"  const {t}* v = {m.name}_.find(key);\n"
                  f"  if (!v) return {t}{{}};\n  const {t} removed = *v;\n  {m.name}_.del(key);\n"
                  f"{x.notify(m, 'key')}  return removed;\n}}\n")
        else:
            s += (f"bool {n}::{m.name}Del({kp} key) {{\n  if (!{m.name}_.del(key)) return false;\n"
                  f"{x.notify(m, 'key')}  return true;\n}}\n")
        return s + self.common_define(m, x)


class CounterKind(MapKind):
    """counter NAME : INTEGER [KEY] -- keyed counters: a map with
    xInc(key, delta), which creates a missing entry at 0, notifies only when the
    entry is new or its count changed, and returns the count."""
    keyword = "counter"

    def parse(self, m, rest, path, lineno):
        super().parse(m, rest, path, lineno)
        if not is_counter(m.type, None):
            raise DescError(path, lineno, f"a counter counts in an integer type, not {m.type}")

    def public(self, m, x):
        t = cpp(m.type)
        return super().public(m, x) + f"  {t} {m.name}Inc({self.key_param(m, x)} key, {t} delta = 1);\n"

    def define(self, m, x):
        n, t, kp = x.n, cpp(m.type), self.key_param(m, x)
        return super().define(m, x) + (
            f"{t} {n}::{m.name}Inc({kp} key, {t} delta) {{\n"
            f"  const {t}* now = {m.name}_.find(key);\n"
            f"  const {t} v = static_cast<{t}>((now ? *now : {t}{{0}}) + delta);\n"
            f"  if (now && *now == v) return v;\n  {m.name}_.set(key, v);\n"
            f"{x.notify(m, 'key')}  return v;\n}}\n")


class SetKind(CollectionKind):
    """set NAME : KEY -- a set of keys; x(key) tells membership."""
    keyword, attr_kind = "set", "valueCollection"

    def parse(self, m, rest, path, lineno):
        mm = re.match(rf"^({IDENT})\s*:\s*({TYPE})$", rest)
        if not mm:
            raise DescError(path, lineno, "expected set NAME : KEY")
        m.name, m.type, m.key_types = mm.group(1), "bool", [mm.group(2).strip()]

    def types(self, m):
        return [(m.key_types[0], VALUE)]

    def public(self, m, x):
        kp = self.key_param(m, x)
        return (f"  // {m.name}: a set of {m.key_types[0]}.\n"
                f"  bool {m.name}({kp} key) const {{ return {m.name}_.has(key); }}\n"
                f"  void {m.name}Is({kp} key);\n" + self.common_public(m, x))

    def storage(self, m, x):
        return f"  Zel::ValueSet<{self.key_t(m)}> {m.name}_;\n"

    def define(self, m, x):
        n, kp = x.n, self.key_param(m, x)
        return (f"void {n}::{m.name}Is({kp} key) {{\n  if (!{m.name}_.add(key)) return;\n"
                f"{x.notify(m, 'key')}}}\n"
                f"bool {n}::{m.name}Del({kp} key) {{\n  if (!{m.name}_.del(key)) return false;\n"
                f"{x.notify(m, 'key')}  return true;\n}}\n" + self.common_define(m, x))

    def log_found(self, m):
        return f"ent.{m.name}_.has(k)", ""

    def log_read(self, m, x):
        return read_cases(m, x, f"ent.{m.name}Is(k)", f"ent.{m.name}Del(k)", value=False)


def construction(child, unit):
    """The child type's construction arguments: (keys, inits), each [(name, type)]."""
    chain = entity_chain(child, unit)
    keys = [(k.name, k.type) for e in chain for k in e.members if k.kind == "key"]
    inits = [(k.name, k.type) for e in chain for k in e.members if k.kind == "init"]
    return keys or [("name", "Zel::Name")], inits


def described_entity(m, x, path):
    """The child type of m, which must be described (its keys and inits are needed)."""
    child = x.unit.find(m.type)
    if child.kind == "extern":
        raise DescError(path, m.line, f"{m.name}: {m.type} is hand-written; a child type must be described")
    return child


def refuse_other_inits(var, child, inits):
    """Statements that refuse an existing child whose init attributes differ."""
    return "".join(f"    if ({var}->{a}() != {a}) Zel::throwReinstantiation(\"{child.qualified}\", "
                   f"{var}->name(), \"{a}\");\n" for a, _ in inits)


class ChildrenKind(CollectionKind):
    """children NAME : CHILD [KEY, ...] -- owned child entities keyed by the child's
    keys; xIs(keys..., inits...) returns the existing child (refusing other init
    arguments) or creates it through the child's factory."""
    keyword, attr_kind = "children", "entityCollection"

    def parse(self, m, rest, path, lineno):
        mm = RE_KEYED.match(rest)
        if not mm or mm.group(4):
            raise DescError(path, lineno, f"expected {self.keyword} NAME : TYPE [KEY, ...]")
        m.name, m.type, m.key_types = mm.group(1), mm.group(2).strip(), key_types(mm.group(3))

    def types(self, m):
        return [(m.type, ("entity",))] + [(k, VALUE) for k in m.key_types]

    def check(self, m, x, path):
        child = described_entity(m, x, path)
        keys, _ = construction(child, x.unit)
        if [t for _, t in keys] != m.key_types:
            raise DescError(path, m.line, f"{m.name}: {child.name} is keyed by "
                            f"[{', '.join(t for _, t in keys)}], not [{', '.join(m.key_types)}]")

    def args(self, m, x):
        child = x.unit.find(m.type)
        keys, inits = construction(child, x.unit)
        return child, keys, inits

    def make_key(self, keys):
        return keys[0][0] if len(keys) == 1 else f"{key_cpp([t for _, t in keys])}({', '.join(a for a, _ in keys)})"

    def public(self, m, x):
        t, kp = cpp(m.type), self.key_param(m, x)
        child, keys, inits = self.args(m, x)
        args = ", ".join(f"{x.param(tt)} {a}" for a, tt in keys + inits)
        s = (f"  // {m.name}: child {m.type} entities keyed by {', '.join(m.key_types)}.\n"
             f"  Zel::Ptr<{t}> {m.name}({kp} key) const {{ return {m.name}_.find(key); }}\n"
             f"  Zel::Ptr<{t}> {m.name}Is({args});\n")
        if len(keys) > 1:
            kargs = ", ".join(f"{x.param(tt)} {a}" for a, tt in keys)
            s += (f"  Zel::Ptr<{t}> {m.name}({kargs}) const {{ return {m.name}({self.make_key(keys)}); }}\n"
                  f"  bool {m.name}Del({kargs}) {{ return {m.name}Del({self.make_key(keys)}); }}\n")
        return s + self.common_public(m, x)

    def storage(self, m, x):
        return f"  Zel::EntityColl<{self.key_t(m)}, {cpp(m.type)}> {m.name}_;\n"

    def destroy(self, m, x):
        return f"  for (const auto& e : {m.name}_.map()) e.value->parentIs(nullptr, 0);\n"

    def define(self, m, x):
        n, t, kp = x.n, cpp(m.type), self.key_param(m, x)
        child, keys, inits = self.args(m, x)
        args = ", ".join(f"{x.param(tt)} {a}" for a, tt in keys + inits)
        s = (f"Zel::Ptr<{t}> {n}::{m.name}Is({args}) {{\n"
             + (f"  const {self.key_t(m)} key = {self.make_key(keys)};\n" if len(keys) > 1 else
                f"  const auto& key = {keys[0][0]};\n")
             + f"  if (Zel::Ptr<{t}> existing = {m.name}_.find(key)) {{\n"
             + refuse_other_inits("existing", child, inits)
             + f"    return existing;\n  }}\n"
             f"  Zel::Ptr<{t}> child = {factory_of(m.type)}({', '.join(a for a, _ in keys + inits)});\n"
             f"  child->parentIs(this, {m.id});\n  {m.name}_.add(key, child);\n"
             f"{x.notify(m, 'key')}  return child;\n}}\n")
        s += (f"bool {n}::{m.name}Del({kp} key) {{\n  Zel::Ptr<{t}> child = {m.name}_.del(key);\n"
              f"  if (!child) return false;\n  child->parentIs(nullptr, 0);\n"
              f"{x.notify(m, 'key')}  return true;\n}}\n")
        return s + self.common_define(m, x)

    def reflect_value(self, m, x):
        return (f"[&] {{ auto c = {x.self_}.{m.name}(k);\n"
                f"           return valueToStrep(c ? c->fullName() : Zel::String()); }}()")

    def reflect(self, m, x):
        kt = self.key_t(m)
        return dict(super().reflect(m, x), child=(
            f"[](const Zel::Entity& e, const Zel::String& key) -> Zel::Entity* {{\n"
            f"         const {kt} k = Zel::parseWhole<{kt}>(key, \"Invalid key of {m.name}\");\n"
            f"         return {x.self_}.{m.name}(k).ptr();\n       }}"))


    # Replication: a child is created by its own orphan record; only deletions travel here.
    def log_handler(self, m, x):
        return f"sa_->entryChanged({m.id}, k, true);"

    def log_cases(self, m, x):
        kt = key_cpp(m.key_types, x.outside)
        return {
            "entryKeys": entry_keys_case(m),
            "childAt": f"{{\n      {kt} k{{}};\n      attrLogRead(key, &k);\n      return ent.{m.name}(k);\n    }}",
            "readAttr": (f"{{\n      const uint8_t op = in.nextU8();\n      {kt} k{{}};\n      attrLogRead(in, &k);\n"
                         f"      in.endOfRecord();\n      if (op != Zel::NboAttrLog::entryDel) "
                         f"Zel::NboAttrLog::refuseEntryOp(op);\n      ent.{m.name}Del(k);\n      return true;\n    }}"),
            "makeChild": make_child_case(m, x, f"{m.name}Is")}


class RefsKind(CollectionKind):
    """refs NAME : [const] T [KEY] [by ATTR] -- keyed references to entities the
    collection does not own (no parent link; deleting an entry leaves the object
    alone). xIs(key, ptr) inserts or replaces; with `by ATTR`, xIs(ptr) files the
    object under its own ATTR(). A null is refused naming the parameter."""
    keyword, attr_kind = "refs", "referenceCollection"

    def parse(self, m, rest, path, lineno):
        mm = RE_KEYED.match(rest)
        by = re.match(rf"^by\s+({IDENT})$", mm.group(4)) if mm else None
        if not mm or (mm.group(4) and not by):
            raise DescError(path, lineno, "expected refs NAME : [const] TYPE [KEY] [by ATTR]")
        m.name, m.type, m.key_types = mm.group(1), mm.group(2).strip(), key_types(mm.group(3))
        m.extra = by.group(1) if by else ""

    def types(self, m):
        return [(target(m.type)[0], REFERENT)] + [(k, VALUE) for k in m.key_types]

    def check(self, m, x, path):
        if not m.extra:
            return
        if len(m.key_types) != 1:
            raise DescError(path, m.line, f"{m.name}: 'by' files under one key, not {len(m.key_types)}")
        t = x.unit.find(target(m.type)[0])
        if t.kind == "extern":
            return  # a hand-written type: the compiler checks the accessor
        attr = next((a for e in entity_chain(t, x.unit) for a in e.members if a.name == m.extra), None)
        if (attr is None or attr.kind not in ("key", "init", "attr", "const")
                or cpp(attr.type) != cpp(m.key_types[0])):
            raise DescError(path, m.line, f"{m.name}: {t.name} has no attribute {m.extra} "
                                          f"of the key type {m.key_types[0]}")

    def ptr(self, m):
        return ptr_of(*target(m.type))

    def public(self, m, x):
        p, kp = self.ptr(m), self.key_param(m, x)
        param_name = lower_first(target(m.type)[0].rpartition("::")[2])
        s = (f"  // {m.name}: references to {m.type} keyed by {', '.join(m.key_types)}; not owned.\n"
             f"  {p} {m.name}({kp} key) const {{ return {m.name}_.find(key); }}\n")
        if m.extra:
            s += f"  // Files {param_name} under its own {m.extra}().\n"
            s += f"  void {m.name}Is(const {p}& {param_name});\n"
        else:
            s += f"  void {m.name}Is({kp} key, const {p}& {param_name});\n"
        return s + self.common_public(m, x)

    def storage(self, m, x):
        t, const = target(m.type)
        return f"  Zel::EntityColl<{self.key_t(m)}, {'const ' if const else ''}{cpp(t)}> {m.name}_;\n"

    def define(self, m, x):
        n, p, kp = x.n, self.ptr(m), self.key_param(m, x)
        pn = lower_first(target(m.type)[0].rpartition("::")[2])
        head = (f"void {n}::{m.name}Is(const {p}& {pn}) {{\n" if m.extra else
                f"void {n}::{m.name}Is({kp} key, const {p}& {pn}) {{\n")
        s = (head + f"  if (!{pn}) Zel::throwNullRefused(\"{pn}\", \"{x.d.qualified}\", \"{m.name}\");\n"
             + (f"  const auto key = {pn}->{m.extra}();\n" if m.extra else "")
             + f"  if (!{m.name}_.set(key, {pn})) return;\n{x.notify(m, 'key')}}}\n")
        s += (f"bool {n}::{m.name}Del({kp} key) {{\n  if (!{m.name}_.del(key)) return false;\n"
              f"{x.notify(m, 'key')}  return true;\n}}\n")
        return s + self.common_define(m, x)

    def reflect_value(self, m, x):
        return f"Zel::referenceStrep({x.self_}.{m.name}(k))"


    # Replication: a reference travels as its target's handle; one to an object that
    # is not mirrored leaves the mirror without the entry (counted as unresolved).
    def log_found(self, m):
        return (f"const auto v = ent.{m.name}(k)",
                "out.putU32(Zel::NboAttrLog::refHandle(writer(), v.ptr()));")

    def log_read(self, m, x):
        t, const = target(m.type)
        tt = f"{'const ' if const else ''}{cpp(t)}"
        kt = key_cpp(m.key_types, x.outside)
        file = f"ent.{m.name}Is(p)" if m.extra else f"ent.{m.name}Is(k, p)"
        return (f"{{\n      const uint8_t op = in.nextU8();\n      {kt} k{{}};\n      attrLogRead(in, &k);\n"
                f"      if (op == Zel::NboAttrLog::entrySet) {{\n        const uint32_t h = in.nextU32();\n"
                f"        in.endOfRecord();\n        const Zel::Ptr<{tt}> p = Zel::NboAttrLog::refAt<{tt}>(r, h);\n"
                f"        if (p) {file};\n"
                f"      }} else if (op == Zel::NboAttrLog::entryDel) {{\n        in.endOfRecord();\n"
                f"        ent.{m.name}Del(k);\n      }} else {{\n        Zel::NboAttrLog::refuseEntryOp(op);\n"
                f"      }}\n      return true;\n    }}")


class QueueKind(CollectionKind):
    """queue NAME : VALUE [INDEX] meta ATTR -- values in order under sequence indexes
    that only grow. xEnq(v) appends under the next index (at least one above the
    newest), advances the next index kept in the value attribute ATTR (a value
    type with a field nextIndex, replicated like any attribute) and notifies;
    xDeq() removes the oldest and returns it. The bound, if any, is the owner's."""
    keyword, attr_kind = "queue", "queue"

    def parse(self, m, rest, path, lineno):
        mm = RE_KEYED.match(rest)
        meta = re.match(rf"^meta\s+({IDENT})$", mm.group(4)) if mm else None
        if not mm or not meta or len(key_types(mm.group(3))) != 1:
            raise DescError(path, lineno, "expected queue NAME : TYPE [INDEX] meta ATTR")
        m.name, m.type, m.key_types = mm.group(1), mm.group(2).strip(), key_types(mm.group(3))
        m.extra = meta.group(1)

    def types(self, m):
        return [(m.type, VALUE), (m.key_types[0], VALUE)]

    def check(self, m, x, path):
        meta = next((a for a in x.d.members if a.name == m.extra and a.kind == "attr"), None)
        if meta is None:
            raise DescError(path, m.line, f"{m.name}: no attribute {m.extra} to keep the next index")
        md = x.unit.find(meta.type)
        fields = md.of("field") if md is not None and md.kind == "value" else []
        nxt = next((f for f in fields if f.name == "nextIndex"), None)
        if nxt is None:
            raise DescError(path, m.line, f"{m.name}: {meta.type} has no field nextIndex")
        if cpp(nxt.type) != cpp(m.key_types[0]) or not is_counter(m.key_types[0], x.unit):
            raise DescError(path, m.line, f"{m.name}: the index and {meta.type}'s nextIndex must be the same "
                                          f"integer type, not {m.key_types[0]} and {nxt.type}")

    def public(self, m, x):
        t, it, kp = cpp(m.type), cpp(m.key_types[0]), self.key_param(m, x)
        return (f"  // {m.name}: {m.type} in order under growing {m.key_types[0]} indexes.\n"
                f"  {t} {m.name}({kp} index) const {{\n"
                f"    const {t}* v = {m.name}_.find(index);\n    return v ? *v : {t}{{}};\n  }}\n"
                f"  void {m.name}Is({kp} index, {x.param(m.type)} v);\n"
                f"  // Appends v under the next index and returns that index.\n"
                f"  {it} {m.name}Enq({x.param(m.type)} v);\n"
                f"  // Removes the oldest entry and returns it (the default when empty).\n"
                f"  {t} {m.name}Deq();\n" + self.common_public(m, x))

    def storage(self, m, x):
        return f"  Zel::OrderedQueue<{cpp(m.key_types[0])}, {cpp(m.type)}> {m.name}_;\n"

    def define(self, m, x):
        n, t, it, kp, meta = x.n, cpp(m.type), cpp(m.key_types[0]), self.key_param(m, x), m.extra
        return (
            f"void {n}::{m.name}Is({kp} index, {x.param(m.type)} v) {{\n"
            f"  if (!{m.name}_.set(index, v)) return;\n{x.notify(m, 'index')}}}\n"
            f"{it} {n}::{m.name}Enq({x.param(m.type)} v) {{\n"
            f"  Zel::Ptr<const {n}> keep(this);\n"
            f"  {it} index = {meta}_.nextIndex();\n"
            f"  if (!{m.name}_.empty() && index <= {m.name}_.tailIndex()) index = {m.name}_.tailIndex() + 1;\n"
            f"  {m.name}_.set(index, v);\n"
            f"  auto next = {meta}_;\n  next.nextIndexIs(static_cast<{it}>(index + 1));\n"
            f"  {meta}Is(next);\n{x.notify(m, 'index')}  return index;\n}}\n"
            f"{x.outside(m.type)} {n}::{m.name}Deq() {{\n  if ({m.name}_.empty()) return {t}{{}};\n"
            f"  const {it} index = {m.name}_.headIndex();\n"
            f"  {t} v = *{m.name}_.find(index);\n  {m.name}_.del(index);\n"
            f"{x.notify(m, 'index')}  return v;\n}}\n"
            f"bool {n}::{m.name}Del({kp} key) {{\n  if (!{m.name}_.del(key)) return false;\n"
            f"{x.notify(m, 'key')}  return true;\n}}\n" + self.common_define(m, x))


class ChildKind(Kind):
    """child NAME : CHILD [= ARGS] -- one owned child entity. xIs(keys..., inits...)
    returns the current child when its keys match (refusing other init arguments),
    otherwise creates one, replaces the old and notifies; xDel() drops it. With
    `= ARGS` the constructor creates it with those arguments (C++ expressions)."""
    keyword, attr_kind, entity_only = "child", "instantiating", True

    def types(self, m):
        return [(m.type, ("entity",))]

    def check(self, m, x, path):
        described_entity(m, x, path)

    def handler_param(self, m, x):
        return ""

    def args(self, m, x):
        child = x.unit.find(m.type)
        keys, inits = construction(child, x.unit)
        return child, keys, inits

    def public(self, m, x):
        t = cpp(m.type)
        _, keys, inits = self.args(m, x)
        args = ", ".join(f"{x.param(tt)} {a}" for a, tt in keys + inits)
        return (f"  Zel::Ptr<{t}> {m.name}() const {{ return {m.name}_; }}\n"
                f"  Zel::Ptr<{t}> {m.name}Is({args});\n  void {m.name}Del();\n")

    def storage(self, m, x):
        return f"  Zel::Ptr<{cpp(m.type)}> {m.name}_;\n"

    def construct(self, m, x):
        return f"  {m.name}Is({m.default});\n" if m.default else ""

    def destroy(self, m, x):
        return f"  if ({m.name}_) {m.name}_->parentIs(nullptr, 0);\n"

    def define(self, m, x):
        n, t = x.n, cpp(m.type)
        child, keys, inits = self.args(m, x)
        args = ", ".join(f"{x.param(tt)} {a}" for a, tt in keys + inits)
        same = " && ".join(f"{m.name}_->{a}() == {a}" for a, _ in keys)
        # Returns the local: a handler may let the entity go during the visit.
        return (f"Zel::Ptr<{t}> {n}::{m.name}Is({args}) {{\n"
                f"  if ({m.name}_ && {same}) {{\n"
                + refuse_other_inits(f"{m.name}_", child, inits)
                + f"    return {m.name}_;\n  }}\n"
                f"  Zel::Ptr<{t}> child = {factory_of(m.type)}({', '.join(a for a, _ in keys + inits)});\n"
                f"  child->parentIs(this, {m.id});\n"
                f"  if ({m.name}_) {m.name}_->parentIs(nullptr, 0);\n"
                f"  {m.name}_ = child;\n{x.notify(m)}  return child;\n}}\n"
                f"void {n}::{m.name}Del() {{\n  if (!{m.name}_) return;\n"
                f"  {m.name}_->parentIs(nullptr, 0);\n  {m.name}_ = nullptr;\n{x.notify(m)}}}\n")

    def reflect(self, m, x):
        return desc(read=(f"[](const Zel::Entity& e) {{\n"
                          f"         auto c = {x.self_}.{m.name}();\n"
                          f"         return valueToStrep(c ? c->name() : Zel::Name());\n       }}"),
                    child=f"[](const Zel::Entity& e, const Zel::String&) -> Zel::Entity* {{ return {x.self_}.{m.name}().ptr(); }}")


    def log_handler(self, m, x):
        return f"sa_->childChanged({m.id});"

    def log_cases(self, m, x):
        return {
            "childAt": f"return ent.{m.name}();",
            "readAttr": (f"{{\n      const uint8_t op = in.nextU8();\n      in.endOfRecord();\n"
                         f"      if (op != Zel::NboAttrLog::entryDel) Zel::NboAttrLog::refuseEntryOp(op);\n"
                         f"      ent.{m.name}Del();\n      return true;\n    }}"),
            "makeChild": make_child_case(m, x, f"{m.name}Is")}


KINDS = {k.keyword: k for k in (
    KeyKind(), InitKind(), MutableKind(), DerivedKind(), RefKind(), ConstKind(), FunctionKind(),
    OperationKind(), MethodKind(), MapKind(), CounterKind(), SetKind(), ChildrenKind(), RefsKind(),
    QueueKind(), ChildKind())}

# The AttrDesc fields in their declaration order (designated initialisers must follow it).
DESC_FIELDS = ("read", "write", "keys", "readAt", "invoke", "keyTypeName", "defaultValue", "call", "child")
