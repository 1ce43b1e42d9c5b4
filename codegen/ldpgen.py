#!/usr/bin/env python3
"""Generates C++ from type descriptions (see typedesc.py for the language).

    ldpgen.py --source-root DIR --out-root DIR path/Unit.types

writes OUT/path/Unit.gen.h and OUT/path/Unit.gen.cpp. The generated code is thin
glue over the templates of platform/zel: names, ids, defaults, handler
declarations and registrations.
"""

import argparse
import os
import sys

import typedesc

from cxx import (DescError, cpp, entity_chain, is_scalar, lower_first, param, registry_name, upper_first)
from members import DESC_FIELDS, KINDS, Ctx, handler


def default_of(m):
    return f"{{{m.default}}}" if m.default is not None else "{}"


class Out:
    def __init__(self):
        self.lines = []

    def __call__(self, text=""):
        if text is None:
            return
        self.lines.extend(text.split("\n") if text else [""])

    def text(self):
        return "\n".join(self.lines) + "\n"


# ---------------------------------------------------------------- enumerations

def enum_type_fn(d):
    return f"{d.name}EnumType"


def enum_in_class(d):
    """The enumeration's declarations inside its outer class."""
    values = ", ".join(f"{m.name}_ = {m.value:#x}" for m in d.of("enumerator"))
    s = f"  enum {d.name} : uint32_t {{ {values} }};\n  static const Zel::EnumType& {enum_type_fn(d)}();\n"
    if "nofree" not in d.options:
        s += (f"  static {d.name} {d.name}Instance(unsigned int value);\n"
              f"  static {d.name} {d.name}Instance(const Zel::String& name);\n")
    return s


def emit_enum_header(d, h, outer_is_entity=False):
    """Declares the enumeration (unless an entity of this unit holds it) and its free
    functions; gives its C++ name and that of its descriptor function."""
    fn = enum_type_fn(d)
    if d.outer:
        if not outer_is_entity:
            h(f"struct {d.outer} {{\n{enum_in_class(d)}}};")
        t, fn_q = f"{d.outer}::{d.name}", f"{d.outer}::{fn}"
    else:
        values = ", ".join(f"{m.name}_ = {m.value:#x}" for m in d.of("enumerator"))
        h(f"enum {d.name} : uint32_t {{ {values} }};")
        h(f"const Zel::EnumType& {fn}();")
        if "nofree" not in d.options:
            h(f"{d.name} {d.name}Instance(unsigned int value);")
            h(f"{d.name} {d.name}Instance(const Zel::String& name);")
        t, fn_q = d.name, fn
    if "nofree" not in d.options:
        h(f"Zel::String stringValue({t} v);")
        h(f"Zel::String valueToStrep(const {t}& v);")
        h(f"std::ostream& operator<<(std::ostream& os, const {t}& v);")
        h(f"void sequenceToValue(Zel::StrIt& begin, const Zel::StrIt& end, {t}* out);")
    h()
    return t, fn_q


def emit_enum_traits(d, t, fn_q, h):
    ns = d.namespace
    h(f"template <>\nstruct Zel::EnumTraits<{ns}::{t}> {{\n"
      f"  static const Zel::EnumType& type() {{ return {ns}::{fn_q}(); }}\n}};")


def emit_enum_source(d, c):
    t = f"{d.outer}::{d.name}" if d.outer else d.name
    fn_q = f"{d.outer}::{enum_type_fn(d)}" if d.outer else enum_type_fn(d)
    items = ",\n      ".join(f'{{"{m.name}", {m.value:#x}}}' for m in d.of("enumerator"))
    c(f"const Zel::EnumType& {fn_q}() {{\n"
      f"  static const Zel::EnumType type(\"{d.qualified}\", {{\n      {items}}});\n"
      f"  return type;\n}}\n")
    if "nofree" not in d.options:
        inst = f"{d.outer}::{d.name}Instance" if d.outer else f"{d.name}Instance"
        c(f"{t} {inst}(unsigned int value) {{\n"
          f"  return static_cast<{t}>({fn_q}().instance(value));\n}}\n")
        c(f"{t} {inst}(const Zel::String& name) {{\n"
          f"  return static_cast<{t}>({fn_q}().instance(name));\n}}\n")
        c(f"Zel::String stringValue({t} v) {{ return {fn_q}().valueToStrep(v); }}\n")
        c(f"Zel::String valueToStrep(const {t}& v) {{ return {fn_q}().valueToStrep(v); }}\n")
        c(f"std::ostream& operator<<(std::ostream& os, const {t}& v) {{ return os << stringValue(v); }}\n")
        c(f"void sequenceToValue(Zel::StrIt& begin, const Zel::StrIt& end, {t}* out) {{\n"
          f"  *out = static_cast<{t}>({fn_q}().sequenceToValue(begin, end));\n}}\n")
    c(f"[[maybe_unused]] const Zel::EnumType& {d.name}Registered_ = {fn_q}();\n")


# ---------------------------------------------------------------- value types

def emit_value_header(d, unit, h):
    fields = d.of("field")
    h(f"class {d.name} {{\n public:")
    h(f"  {d.name}() = default;")
    if fields:
        args = ", ".join(f"{param(f.type, unit)} {f.name}" for f in fields)
        h(f"  {'explicit ' if len(fields) == 1 else ''}{d.name}({args});")
    h(f"  // Parses the string form (see valueToStrep); throws Zel::RangeException.")
    h(f"  {d.name}(Zel::StrIt& it, const Zel::StrIt& end);")
    h(f"  explicit {d.name}(Zel::NboAttrLog::In* in);")
    h()
    for f in fields:
        ret = cpp(f.type) if is_scalar(f.type, unit) else f"const {cpp(f.type)}&"
        h(f"  {ret} {f.name}() const {{ return {f.name}_; }}")
        h(f"  void {f.name}Is({param(f.type, unit)} v) {{ {f.name}_ = v; }}")
    for k in d.of("const"):
        h(f"  static {cpp(k.type)} {k.name}() {{ return {k.default}; }}")
    for b in d.of("bit"):
        fld, const = b.extra.split()
        h(f"  bool {b.name}() const {{ return ({fld}_ >> {const}()) & 1; }}")
        h(f"  void {b.name}Is(bool on) {{\n"
          f"    {fld}_ = on ? ({fld}_ | (decltype({fld}_)(1) << {const}()))\n"
          f"              : ({fld}_ & ~(decltype({fld}_)(1) << {const}()));\n  }}")
    h()
    h(f"  bool operator==(const {d.name}& o) const;")
    h(f"  // True when every field equals its default.")
    h(f"  bool operator!() const {{ return *this == {d.name}(); }}")
    if "order" in d.options:
        h(f"  bool operator<(const {d.name}& o) const;")
    h("  uint32_t hash() const;")
    for m in d.of("method"):
        h(f"  {m.extra}")
    h("  static const Zel::ZelType& zelType();")
    h("\n private:")
    for f in fields:
        h(f"  {cpp(f.type)} {f.name}_{default_of(f)};")
    h("};\n")
    h(f"Zel::String valueToStrep(const {d.name}& v);")
    h(f"std::ostream& operator<<(std::ostream& os, const {d.name}& v);")
    h(f"void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, {d.name}* out);")
    h(f"void attrLogWrite(Zel::NboAttrLog::Out& out, const {d.name}& v);")
    h(f"void attrLogRead(Zel::NboAttrLog::In& in, {d.name}* v);")
    h(f"const Zel::Ptr<Zel::NboAttrLog::Out>& operator<<(const Zel::Ptr<Zel::NboAttrLog::Out>& out,\n"
      f"                                                 const {d.name}& v);\n")


def emit_value_source(d, unit, c):
    n, fields = d.name, d.of("field")
    if fields:
        args = ", ".join(f"{param(f.type, unit)} {f.name}" for f in fields)
        inits = ", ".join(f"{f.name}_({f.name})" for f in fields)
        c(f"{n}::{n}({args}) : {inits} {{}}\n")
    # The string form.
    if "strep" in d.options:
        c(f"Zel::String valueToStrep(const {n}& v) {{ return v.stringValue(); }}\n")
    else:
        c(f"Zel::String valueToStrep(const {n}& v) {{")
        c(f"  std::string s = \"Value('{d.qualified}', ** {{\";")
        for i, f in enumerate(fields):
            sep = ", " if i else ""
            c(f"  s += \"{sep}'{f.name}': \";\n  s += valueToStrep(v.{f.name}()).view();")
        c("  s += \"})\";\n  return Zel::String(s);\n}\n")
    if "parse" in d.options:
        c(f"{n}::{n}(Zel::StrIt& it, const Zel::StrIt& end) {{ sequenceToValue(it, end, this); }}\n")
    else:
        c(f"{n}::{n}(Zel::StrIt& it, const Zel::StrIt& end) {{")
        c(f"  Zel::needString(it, end, \"Value('{d.qualified}', ** {{\");")
        for i, f in enumerate(fields):
            sep = ", " if i else ""
            c(f"  Zel::needString(it, end, \"{sep}'{f.name}': \");")
            c(f"  {f.name}_ = Zel::deserializeAttr<{cpp(f.type)}>(it, end, \"{f.name}\");")
        c("  Zel::needString(it, end, \"})\");\n}\n")
        c(f"void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, {n}* out) {{\n"
          f"  Zel::StrIt p = it;\n  {n} v(p, end);\n  *out = v;\n  it = p;\n}}\n")
    c(f"std::ostream& operator<<(std::ostream& os, const {n}& v) {{ return os << valueToStrep(v); }}\n")
    # Comparison and hash.
    eq = " && ".join(f"{f.name}_ == o.{f.name}_" for f in fields) or "true"
    c(f"bool {n}::operator==([[maybe_unused]] const {n}& o) const {{ return {eq}; }}\n")
    if "order" in d.options:
        c(f"bool {n}::operator<([[maybe_unused]] const {n}& o) const {{")
        for f in fields:
            c(f"  if ({f.name}_ < o.{f.name}_) return true;\n  if (o.{f.name}_ < {f.name}_) return false;")
        c("  return false;\n}\n")
    if "hash" not in d.options:
        c(f"uint32_t {n}::hash() const {{\n  Zel::Hash h;")
        for f in fields:
            c(f"  h.mix(Zel::HashOf<{cpp(f.type)}>{{}}({f.name}_));")
        c("  return h.result();\n}\n")
    # The attribute log.
    c(f"void attrLogWrite([[maybe_unused]] Zel::NboAttrLog::Out& out, [[maybe_unused]] const {n}& v) {{")
    for f in fields:
        c(f"  attrLogWrite(out, v.{f.name}());")
    c("}\n")
    c(f"void attrLogRead([[maybe_unused]] Zel::NboAttrLog::In& in, {n}* v) {{\n  {n} r;")
    for f in fields:
        c(f"  {{\n    {cpp(f.type)} x{{}};\n    attrLogRead(in, &x);\n    r.{f.name}Is(x);\n  }}")
    c("  *v = r;\n}\n")
    c(f"{n}::{n}(Zel::NboAttrLog::In* in) {{ attrLogRead(*in, this); }}\n")
    c(f"const Zel::Ptr<Zel::NboAttrLog::Out>& operator<<(const Zel::Ptr<Zel::NboAttrLog::Out>& out,\n"
      f"                                                 const {n}& v) {{\n"
      f"  attrLogWrite(*out, v);\n  return out;\n}}\n")
    # The descriptor.
    # Defaults are read from a default-constructed value (a bit's from its field's).
    attrs = []
    for m in d.members:
        if m.kind not in ("field", "const", "bit"):
            continue
        kind = "constant" if m.kind == "const" else "mutableAttr"
        default = f"{n}::{m.name}()" if m.kind == "const" else f"{n}().{m.name}()"
        attrs.append(f'\n      {{.name = "{m.name}", .id = {m.id}, .kind = Zel::AttrKind::{kind}, '
                     f'.typeName = "{registry_name(m.type, unit)}",\n'
                     f'       .defaultValue = [] {{ return valueToStrep({default}); }}}}')
    c(f"const Zel::ZelType& {n}::zelType() {{")
    c(f"  static const Zel::ValueOps ops = {{\n"
      f"      sizeof({n}),\n"
      f"      [](void* p) {{ new (p) {n}(); }},\n"
      f"      [](void* p) {{ static_cast<{n}*>(p)->~{n}(); }},\n"
      f"      [](void* to, const void* from) {{ *static_cast<{n}*>(to) = *static_cast<const {n}*>(from); }},\n"
      f"      [](const void* a, const void* b) {{ return *static_cast<const {n}*>(a) == *static_cast<const {n}*>(b); }},\n"
      f"      [](const void* p) {{ return static_cast<const {n}*>(p)->hash(); }},\n"
      f"      [](const void* p) {{ return valueToStrep(*static_cast<const {n}*>(p)); }},\n"
      f"      [](Zel::StrIt& it, const Zel::StrIt& end, void* out) {{ sequenceToValue(it, end, static_cast<{n}*>(out)); }}}};")
    c(f"  static const Zel::ZelType type(\"{d.qualified}\", Zel::ZelType::Kind::value, nullptr,\n"
      f"                                 {{{','.join(attrs)}}}, &ops);\n  return type;\n}}\n")
    c(f"[[maybe_unused]] const Zel::ZelType& {n}Registered_ = {n}::zelType();\n")


# ---------------------------------------------------------------- entity types

NAME_KEY = typedesc.Member("key", "name", type="Zel::Name")


def is_named(d, unit):
    """An entity without a key member anywhere in its bases is created by name."""
    return not any(e.of("key") for e in entity_chain(d, unit))


def ctor_args(d, unit):
    """The constructor's parameters: keys of every level, then init members."""
    chain = entity_chain(d, unit)
    keys = [k for e in chain for k in e.of("key")] or [NAME_KEY]
    return keys + [k for e in chain for k in e.of("init")]


def nested_enums(d, unit):
    return [e for e in unit.own() if e.kind == "enum" and e.outer == d.name]


def emit_entity_header(d, unit, h):
    n, x = d.name, Ctx(unit, d, entity_chain(d, unit))
    base = d.base or "Zel::Entity"
    args = ctor_args(d, unit)
    h(f"class {n} : public {base} {{\n public:")
    h("  class NotifieeConst;\n  class Notifiee;\n  class ZelNboAttrLogSa;\n")
    for e in nested_enums(d, unit):
        h(enum_in_class(e))
    h("  static const Zel::ZelType& zelType();")
    h("  const Zel::ZelType* fwkType() const override { return &zelType(); }")
    h("  bool zelHasAttrLogInterface() const override { return true; }")
    h("  Zel::Ptr<Zel::Entity::ZelNboAttrLogSa> zelNboAttrLogSaIs(Zel::NboAttrLog::Writer* writer,\n"
      "                                                           bool readOnly) override;")
    if not d.base and is_named(d, unit):
        h("  Zel::Name name() const override { return name_; }")
        h("  void nameIsFromBackup(const Zel::Name& name) override { name_ = name; }")
    elif d.of("key"):
        h("  Zel::Name name() const override;")
    h()
    for m in d.members:
        h(KINDS[m.kind].public(m, x).rstrip("\n") or None)
    h("\n protected:")
    sig = ", ".join(f"{param(k.type, unit)} {k.name}" for k in args)
    h(f"  {'explicit ' if len(args) == 1 else ''}{n}({sig});")
    h(f"  ~{n}() override;")
    if "ctor" in d.options:
        h("  void constructed();")
    h("  template <class T, class... A>\n  friend Zel::Ptr<T> Zel::allocate(A&&... args);")
    h("\n private:")
    if not d.base and is_named(d, unit):
        h("  Zel::Name name_;")
    for m in d.members:
        h(KINDS[m.kind].storage(m, x).rstrip("\n") or None)
    h("};\n")
    emit_reactors(d, x, h)
    emit_adapter_header(d, x, h)
    h(f"Zel::Ptr<{n}> {lower_first(n)}Factory({sig});\n")


def emit_reactors(d, x, h):
    n = d.name
    rbase = f"{d.base}::NotifieeConst" if d.base else "Zel::Entity::NotifieeConst"
    h(f"class {n}::NotifieeConst : public {rbase} {{\n public:")
    h(f"  NotifieeConst() : {rbase}({d.depth}) {{}}")
    h(f"  Zel::Ptr<const {n}> notifier() const {{\n"
      f"    return Zel::Ptr<const {n}>(static_cast<const {n}*>(notifierBase().ptr()));\n  }}")
    h(f"  void notifierIs(const Zel::Ptr<const {n}>& n) {{ notifierBaseIs(n.ptr()); }}")
    for m in d.members:
        p = KINDS[m.kind].handler_param(m, x)
        if p is not None:
            h(f"  virtual void {handler(m)}({p}) {{}}")
    h(f"\n protected:\n  explicit NotifieeConst(unsigned depth) : {rbase}(depth) {{}}\n}};\n")
    h(f"class {n}::Notifiee : public {n}::NotifieeConst {{\n public:")
    h(f"  Zel::Ptr<{n}> notifier() const {{\n"
      f"    return Zel::Ptr<{n}>(const_cast<{n}*>(NotifieeConst::notifier().ptr()));\n  }}")
    h(f"  void notifierIs(const Zel::Ptr<{n}>& n) {{ notifierBaseIs(n.ptr()); }}\n}};\n")


def emit_entity_source(d, unit, c):
    n, x = d.name, Ctx(unit, d, entity_chain(d, unit))
    args = ctor_args(d, unit)
    sig = ", ".join(f"{param(k.type, unit)} {k.name}" for k in args)
    if d.base:
        base_args = ctor_args(unit.find(d.base), unit)
        init = f" : {d.base}({', '.join(k.name for k in base_args)})"
        own = [k for k in args if k not in base_args]
    else:
        init, own = "", args
    if own:
        # In the order the members are declared (the name first), as C++ initialises them.
        own = sorted(own, key=lambda k: next((i for i, m in enumerate(d.members) if m is k), -1))
        init += (", " if init else " : ") + ", ".join(f"{k.name}_({k.name})" for k in own)
    body = "".join(KINDS[m.kind].construct(m, x) for m in d.members)
    if "ctor" in d.options:
        body += "  constructed();\n"
    c(f"{n}::{n}({sig}){init} {{{chr(10) + body if body else ''}}}\n")
    c(f"{n}::~{n}() {{\n" + "".join(KINDS[m.kind].destroy(m, x) for m in d.members) + "}\n")
    c(f"Zel::Ptr<{n}> {lower_first(n)}Factory({sig}) {{\n"
      f"  return Zel::allocate<{n}>({', '.join(k.name for k in args)});\n}}\n")
    if d.of("key"):
        # Every level's keys: a level that adds keys names its entities by all of them.
        keys = [k for e in x.chain for k in e.of("key")]
        if len(keys) == 1:
            c(f"Zel::Name {n}::name() const {{ return Zel::nameOfKey({keys[0].name}_); }}\n")
        else:
            parts = ", ".join(f"{k.name}()" for k in keys)
            c(f"Zel::Name {n}::name() const {{ return valueToStrep(Zel::Key(" + parts + ")); }\n")
    for m in d.members:
        text = KINDS[m.kind].define(m, x)
        if text:
            c(text)
    emit_type_descriptor(d, x, c)
    emit_reflection_reactor(d, unit, x, c)
    emit_adapter_source(d, unit, x, c)


def attr_desc(m, x, fields=DESC_FIELDS):
    kind = KINDS[m.kind]
    given = kind.reflect(m, x)
    t = registry_name(m.type, x.unit) if m.kind != "function" else ""
    parts = [f'.name = "{m.name}"', f".id = {m.id}", f".kind = Zel::AttrKind::{kind.attr_kind}",
             f'.typeName = "{t}"']
    parts += [f".{f} = {given[f]}" for f in fields if f in given]
    return "      {" + ", ".join(parts) + "}"


def emit_type_descriptor(d, x, c):
    n = d.name
    if d.kind == "object":
        # Reflection (Zel::GenericIf) works on entities: an object's descriptor lists its
        # attributes with their ids, types and defaults, without accessors. The registry
        # has no kind of its own for objects: they show as entity types without a base.
        attrs = [attr_desc(m, x, ("keyTypeName", "defaultValue"))
                 for m in d.members if KINDS[m.kind].numbered]
        base = "nullptr"
    else:
        attrs = [attr_desc(m, x) for m in d.members if KINDS[m.kind].numbered]
        base = f"&{d.base}::zelType()" if d.base else "&Zel::Entity::entityType()"
    c(f"const Zel::ZelType& {n}::zelType() {{\n"
      f"  static const Zel::ZelType type(\"{d.qualified}\", Zel::ZelType::Kind::entity, {base}, {{\n"
      + ",\n".join(attrs) + "});\n  return type;\n}\n")


def emit_reflection_reactor(d, unit, x, c):
    """Every handler, own and inherited, forwards to reflection by attribute id."""
    n = d.name
    cls = f"{n}ReflectionReactor_"
    c(f"namespace {{\nclass {cls} : public {n}::NotifieeConst {{\n public:")
    c(f"  {cls}(const Zel::Ptr<const {n}>& n, Zel::GenericIfNotifiee* target) : target_(target) {{\n"
      f"    notifierIs(n);\n  }}")
    for e in x.chain:
        ex = Ctx(unit, e, entity_chain(e, unit))
        for m in e.members:
            p = KINDS[m.kind].handler_param(m, ex)
            if p is None:
                continue
            if p:
                c(f"  void {handler(m)}({p} k) override {{\n"
                  f"    const Zel::String s = valueToStrep(k);\n    target_->onAttribute({m.id}, &s);\n  }}")
            else:
                c(f"  void {handler(m)}() override {{ target_->onAttribute({m.id}, nullptr); }}")
    # maybe_unused: an entity without notifying attributes has no handler to use it.
    c(f"\n private:\n  [[maybe_unused]] Zel::GenericIfNotifiee* target_;\n}};\n")
    c(f"[[maybe_unused]] const bool {n}Registered_ = [] {{\n"
      f"  Zel::reflectionReactorFactoryIs(\n"
      f"      &{n}::zelType(), [](const Zel::Ptr<const Zel::Entity>& e, Zel::GenericIfNotifiee* t)\n"
      f"                        -> std::unique_ptr<Zel::Entity::NotifieeConst> {{\n"
      f"        return std::make_unique<{cls}>(\n"
      f"            Zel::Ptr<const {n}>(static_cast<const {n}*>(e.ptr())), t);\n"
      f"      }});\n  return true;\n}}();\n}}  // namespace\n")


# ------------------------------------------------------ replication adapters

# The adapter functions that switch on attribute ids: (name, result, parameters, const).
ADAPTER_FUNCS = [
    ("writeAttr", "bool", "Zel::AttributeId id, Zel::NboAttrLog::Out& out", True),
    ("writeEntry", "bool", "Zel::AttributeId id, Zel::NboAttrLog::In& key, Zel::NboAttrLog::Out& out", True),
    ("entryKeys", "bool", "Zel::AttributeId id, std::vector<std::string>& keys", True),
    ("childAt", "Zel::Ptr<Zel::Entity>", "Zel::AttributeId id, Zel::NboAttrLog::In& key", True),
    ("readAttr", "bool", "Zel::AttributeId id, Zel::NboAttrLog::In& in, Zel::NboAttrLog::Replica& r", False),
    ("makeChild", "Zel::Ptr<Zel::Entity>", "Zel::AttributeId id, Zel::NboAttrLog::In& in", False),
]


def adapter_cases(d, x):
    """{function: [(id, case code)]} over the type's own members."""
    cases = {}
    for m in d.members:
        for fn, code in KINDS[m.kind].log_cases(m, x).items():
            cases.setdefault(fn, []).append((m.id, code))
    return cases


def adapter_base(d):
    return f"{d.base}::ZelNboAttrLogSa" if d.base else "Zel::Entity::ZelNboAttrLogSa"


def emit_adapter_header(d, x, h):
    """X::ZelNboAttrLogSa: the switch on X's own attribute ids (platform/zel/AttrLogSa.h)."""
    n, base = d.name, adapter_base(d)
    h(f"class {n}::ZelNboAttrLogSa : public {base} {{\n public:")
    h(f"  ZelNboAttrLogSa(const Zel::Ptr<{n}>& e, Zel::NboAttrLog::Writer* writer, bool readOnly);")
    h("  Zel::Ptr<Zel::Entity::ZelNboAttrLogSa> cloneSa() const override;\n\n protected:")
    h(f"  ZelNboAttrLogSa(const Zel::Ptr<{n}>& e, Zel::NboAttrLog::Writer* writer, bool readOnly, NoReactor);")
    cases = adapter_cases(d, x)
    for fn, result, params, const in ADAPTER_FUNCS:
        if fn in cases:
            h(f"  {result} {fn}({params}){' const' if const else ''} override;")
    h("  void writeConstruction(Zel::NboAttrLog::Out& out) const override;\n\n private:")
    h("  class ZelNboAttrLogSaAdapter_;\n};\n")


def emit_adapter_source(d, unit, x, c):
    n, base = d.name, adapter_base(d)
    sa = f"{n}::ZelNboAttrLogSa"
    # The reactor: every handler of the type and its bases marks or writes its id.
    c(f"class {sa}::ZelNboAttrLogSaAdapter_ : public {n}::NotifieeConst {{\n public:")
    c(f"  ZelNboAttrLogSaAdapter_(const Zel::Ptr<const {n}>& n, {sa}* sa) : sa_(sa) {{ notifierIs(n); }}")
    for e in x.chain:
        ex = Ctx(unit, e, entity_chain(e, unit))
        for m in e.members:
            p = KINDS[m.kind].handler_param(m, ex)
            body = KINDS[m.kind].log_handler(m, ex)
            if p is None or body is None:
                continue
            c(f"  void {handler(m)}({p + ' k' if p else ''}) override {{ {body} }}")
    c(f"\n private:\n  [[maybe_unused]] {sa}* sa_;\n}};\n")
    c(f"{sa}::ZelNboAttrLogSa(const Zel::Ptr<{n}>& e, Zel::NboAttrLog::Writer* writer, bool readOnly)\n"
      f"    : {base}(e, writer, readOnly, NoReactor{{}}) {{\n"
      f"  reactorIs(std::make_unique<ZelNboAttrLogSaAdapter_>(e, this));\n}}\n")
    c(f"{sa}::ZelNboAttrLogSa(const Zel::Ptr<{n}>& e, Zel::NboAttrLog::Writer* writer, bool readOnly, NoReactor)\n"
      f"    : {base}(e, writer, readOnly, NoReactor{{}}) {{}}\n")
    c(f"Zel::Ptr<Zel::Entity::ZelNboAttrLogSa> {sa}::cloneSa() const {{\n"
      f"  return Zel::Ptr<Zel::Entity::ZelNboAttrLogSa>(\n"
      f"      new ZelNboAttrLogSa(Zel::Ptr<{n}>(static_cast<{n}*>(entity().ptr())), nullptr, readOnly()));\n}}\n")
    c(f"Zel::Ptr<Zel::Entity::ZelNboAttrLogSa> {n}::zelNboAttrLogSaIs(Zel::NboAttrLog::Writer* writer, bool readOnly) {{\n"
      f"  return Zel::Ptr<Zel::Entity::ZelNboAttrLogSa>(new ZelNboAttrLogSa(Zel::Ptr<{n}>(this), writer, readOnly));\n}}\n")
    cases = adapter_cases(d, x)
    for fn, result, params, const in ADAPTER_FUNCS:
        if fn not in cases:
            continue
        names = [p.split()[-1].lstrip("&") for p in params.split(", ")]
        ps = ", ".join(f"[[maybe_unused]] {p}" for p in params.split(", "))
        cq = "const " if const else ""
        body = "".join(f"    case {i}:\n      {code}\n" for i, code in cases[fn])
        c(f"{result} {sa}::{fn}({ps}){' const' if const else ''} {{\n"
          f"  [[maybe_unused]] {cq}{n}& ent = static_cast<{cq}{n}&>(*entity());\n"
          f"  switch (id) {{\n{body}    default:\n      break;\n  }}\n"
          f"  return {base}::{fn}({', '.join(names)});\n}}\n")
    args = ctor_args(d, unit)
    writes = "".join(f"  attrLogWrite(out, ent.{k.name}());\n" for k in args)
    c(f"void {sa}::writeConstruction(Zel::NboAttrLog::Out& out) const {{\n"
      f"  const {n}& ent = static_cast<const {n}&>(*entity());\n{writes}}}\n")
    # A root entity of this type, made from its orphan record.
    reads = "".join(f"  {x.outside(k.type)} a{i}{{}};\n  attrLogRead(in, &a{i});\n" for i, k in enumerate(args))
    c(f"namespace {{\nZel::Ptr<Zel::Entity> {n}FromOrphan_(Zel::NboAttrLog::In& in) {{\n{reads}"
      f"  in.endOfRecord();\n  return {lower_first(n)}Factory({', '.join(f'a{i}' for i in range(len(args)))});\n}}\n"
      f"[[maybe_unused]] const bool {n}OrphanRegistered_ = [] {{\n"
      f"  Zel::NboAttrLog::orphanFactoryIs(&{n}::zelType(), &{n}FromOrphan_);\n  return true;\n}}();\n"
      f"}}  // namespace\n")


# ---------------------------------------------------------------- object types

def emit_object_header(d, unit, h):
    n, x = d.name, Ctx(unit, d, [d])
    h(f"class {n} : public Zel::PtrInterface {{\n public:")
    h("  static const Zel::ZelType& zelType();\n")
    for m in d.members:
        h(KINDS[m.kind].public(m, x).rstrip("\n") or None)
    h(f"\n protected:\n  {n}() = default;\n  ~{n}() override = default;")
    h("  template <class T, class... A>\n  friend Zel::Ptr<T> Zel::allocate(A&&... args);")
    h("\n private:")
    for m in d.members:
        h(KINDS[m.kind].storage(m, x).rstrip("\n") or None)
    h("};\n")
    h(f"Zel::Ptr<{n}> {lower_first(n)}Factory();\n")


def emit_object_source(d, unit, c):
    n, x = d.name, Ctx(unit, d, [d])
    c(f"Zel::Ptr<{n}> {lower_first(n)}Factory() {{ return Zel::allocate<{n}>(); }}\n")
    for m in d.members:
        text = KINDS[m.kind].define(m, x)
        if text:
            c(text)
    emit_type_descriptor(d, x, c)
    c(f"[[maybe_unused]] const Zel::ZelType& {n}Registered_ = {n}::zelType();\n")


# ---------------------------------------------------------------- driver

HEADER_INCLUDES = [
    "<cstdint>", "<iosfwd>",
    '"platform/zel/AttrLogSa.h"', '"platform/zel/Collections.h"', '"platform/zel/Entity.h"',
    '"platform/zel/Hash.h"',
    '"platform/zel/Key.h"', '"platform/zel/NboAttrLog.h"', '"platform/zel/OrderedQueue.h"',
    '"platform/zel/Reference.h"', '"platform/zel/StringForm.h"', '"platform/zel/Time.h"',
    '"platform/zel/Type.h"',
]
USING = ("using Zel::valueToStrep;\nusing Zel::sequenceToValue;\n"
         "using Zel::attrLogWrite;\nusing Zel::attrLogRead;\n")


def generated_header(path):
    return path[:-len(".types")] + ".gen.h"


def includes(unit, used):
    """The generated headers of the imported descriptions that declare generated
    types, and the headers of the hand-written types the unit names."""
    out = []
    for path in unit.imports:
        if any(d.path == path and d.kind != "extern" for d in unit.decls):
            out.append(generated_header(path))
    for d in used:
        if d.kind == "extern" and d.header not in out:
            out.append(d.header)
    return out + [i for i in unit.includes if i not in out]


def validate(unit):
    """Checks what only the whole unit can tell; gives the declarations it names."""
    used = typedesc.check(unit)
    for d in unit.own():
        if d.kind == "enum" and d.outer:
            outer = unit.find(d.outer)
            if outer is not None and outer.kind == "entity" and outer.imported:
                raise DescError(d.path, d.line, f"{d.name}: declare it in the description of {d.outer}")
        if d.kind != "entity":
            continue
        for e in unit.decls:
            if e.kind == "enum" and e.imported and e.outer == d.name and e.namespace == d.namespace:
                raise DescError(d.path, d.line, f"{d.name}: move enum {e.name} (in {d.name}, {e.path}) "
                                                f"into this description")
        x = Ctx(unit, d, entity_chain(d, unit))
        for m in d.members:
            KINDS[m.kind].check(m, x, d.path)
    return used


def entity_order(entities, unit):
    """The unit's entities, each after its base and after the entities whose nested
    enumerations its members name (C++ needs those classes complete); otherwise in
    declaration order."""
    out = []

    def needs(d):
        for m in d.members:
            for t, _ in KINDS[m.kind].types(m):
                found = unit.find(t)
                if found is not None and found.kind == "enum" and found.outer:
                    yield found.outer
        if d.base:
            yield d.base

    def visit(d, path):
        if any(d is e for e in out) or any(d is e for e in path):
            return
        for name in needs(d):
            dep = next((e for e in entities if e.name == name), None)
            if dep is not None:
                visit(dep, path + [d])
        out.append(d)

    for d in entities:
        visit(d, [])
    return out


def generate(unit, rel_stem):
    used = validate(unit)
    h, c = Out(), Out()
    h(f"// Generated from {rel_stem}.types by codegen/ldpgen.py. Do not edit.")
    h("#pragma once\n")
    for inc in HEADER_INCLUDES:
        h(f"#include {inc}")
    for inc in includes(unit, used):
        h(f'#include "{inc}"')
    h()
    traits = []
    namespaces = []
    for d in unit.own():
        if d.kind != "extern" and d.namespace not in namespaces:
            namespaces.append(d.namespace)
    entity_names = {d.name for d in unit.own() if d.kind == "entity"}
    for ns in namespaces:
        decls = [d for d in unit.own() if d.namespace == ns and d.kind != "extern"]
        h(f"namespace {ns} {{\n\n{USING}")
        # Forward declarations let entity types name each other in any order.
        for d in decls:
            if d.kind in ("entity", "object"):
                h(f"class {d.name};")
        h()
        for d in decls:
            if d.kind == "enum" and d.outer not in entity_names:
                t, fn_q = emit_enum_header(d, h)
                traits.append((d, t, fn_q))
        for d in decls:
            if d.kind == "value":
                emit_value_header(d, unit, h)
        for d in decls:
            if d.kind == "object":
                emit_object_header(d, unit, h)
        for d in entity_order([d for d in decls if d.kind == "entity"], unit):
            if d.kind == "entity":
                emit_entity_header(d, unit, h)
                for e in nested_enums(d, unit):
                    t, fn_q = emit_enum_header(e, h, outer_is_entity=True)
                    traits.append((e, t, fn_q))
        h(f"}}  // namespace {ns}\n")
    for d, t, fn_q in traits:
        emit_enum_traits(d, t, fn_q, h)

    c(f"// Generated from {rel_stem}.types by codegen/ldpgen.py. Do not edit.")
    c(f'#include "{rel_stem}.gen.h"\n')
    c("#include <memory>\n#include <new>\n#include <ostream>\n#include <string>\n")
    c('#include "platform/zel/AttrLogReplica.h"\n#include "platform/zel/AttrLogWriter.h"\n'
      '#include "platform/zel/GenericIf.h"\n')
    emit = {"enum": lambda d: emit_enum_source(d, c),
            "value": lambda d: emit_value_source(d, unit, c),
            "entity": lambda d: emit_entity_source(d, unit, c),
            "object": lambda d: emit_object_source(d, unit, c)}
    for ns in namespaces:
        c(f"namespace {ns} {{\n")
        for d in unit.own():
            if d.namespace == ns and d.kind != "extern":
                emit[d.kind](d)
        c(f"}}  // namespace {ns}")
    return h.text(), c.text()


PLATFORM = "platform/Platform.types"


def load(source_root, rel):
    """Reads a description with everything it imports (and the platform's
    declarations, when the source root has them), numbered."""
    unit = typedesc.Unit(rel)

    def loader(path, unit):
        if path in unit.imports or path == rel:
            return
        unit.imports.append(path)
        with open(os.path.join(source_root, path)) as f:
            typedesc.parse(f.read(), path, unit, imported=True, loader=loader)

    if rel != PLATFORM and os.path.exists(os.path.join(source_root, PLATFORM)):
        loader(PLATFORM, unit)
    with open(os.path.join(source_root, rel)) as f:
        typedesc.parse(f.read(), rel, unit, loader=loader)
    return typedesc.number(unit)


def write_if_changed(path, text):
    if os.path.exists(path):
        with open(path) as f:
            if f.read() == text:
                os.utime(path)
                return
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w") as f:
        f.write(text)


def main(argv=None):
    ap = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    ap.add_argument("--source-root", required=True)
    ap.add_argument("--out-root", required=True)
    ap.add_argument("--depfile", help="write the imported descriptions here, as make rules")
    ap.add_argument("description")
    args = ap.parse_args(argv)
    stem = args.description[:-len(".types")] if args.description.endswith(".types") else args.description
    try:
        unit = load(args.source_root, args.description)
        header, source = generate(unit, stem)
    except (DescError, OSError) as e:
        print(f"ldpgen: {e}", file=sys.stderr)
        return 1
    out_h = os.path.join(args.out_root, stem + ".gen.h")
    out_cpp = os.path.join(args.out_root, stem + ".gen.cpp")
    write_if_changed(out_h, header)
    write_if_changed(out_cpp, source)
    if args.depfile:
        deps = " ".join(os.path.abspath(os.path.join(args.source_root, p)) for p in unit.imports)
        write_if_changed(args.depfile, f"{os.path.abspath(out_h)} {os.path.abspath(out_cpp)}: {deps}\n")
    return 0


if __name__ == "__main__":
    sys.exit(main())
