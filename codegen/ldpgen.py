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

SCALARS = {
    "bool": "bool", "double": "double", "float": "float",
    "U8": "uint8_t", "U16": "uint16_t", "U32": "uint32_t", "U64": "uint64_t",
    "uint8_t": "uint8_t", "uint16_t": "uint16_t", "uint32_t": "uint32_t", "uint64_t": "uint64_t",
    "int8_t": "int8_t", "int16_t": "int16_t", "int32_t": "int32_t", "int64_t": "int64_t",
    "int": "int", "unsigned": "unsigned", "unsigned int": "unsigned int",
    "Zel::Seconds": "Zel::Seconds",
}
NON_COUNTERS = {"bool", "double", "float", "Zel::Seconds"}


def cpp(t):
    return SCALARS.get(t, t)


def is_scalar(t, unit=None):
    if t in SCALARS:
        return True
    d = unit.find(t) if unit else None
    return d is not None and d.kind == "enum"


def is_counter(t):
    return t in SCALARS and t not in NON_COUNTERS


def param(t, unit):
    return cpp(t) if is_scalar(t, unit) else f"const {cpp(t)}&"


def lower_first(s):
    return s[0].lower() + s[1:]


def upper_first(s):
    return s[:1].upper() + s[1:]  # "" for a method, which has no name


def factory_of(t):
    """The factory of entity type t: "Ns::Leaf" -> "Ns::leafFactory"."""
    scope, _, name = t.rpartition("::")
    return f"{scope}{'::' if scope else ''}{lower_first(name)}Factory"


def default_of(m):
    return f"{{{m.default}}}" if m.default is not None else "{}"


class Out:
    def __init__(self):
        self.lines = []

    def __call__(self, text=""):
        self.lines.extend(text.split("\n") if text else [""])

    def text(self):
        return "\n".join(self.lines) + "\n"


# ---------------------------------------------------------------- enumerations

def enum_type_fn(d):
    return f"{d.name}EnumType"


def emit_enum_header(d, h):
    values = ", ".join(f"{m.name}_ = {m.value:#x}" for m in d.of("enumerator"))
    body = f"enum {d.name} : uint32_t {{ {values} }};"
    fn = enum_type_fn(d)
    if d.outer:
        h(f"struct {d.outer} {{\n  {body}\n  static const Zel::EnumType& {fn}();")
        if "nofree" not in d.options:
            h(f"  static {d.name} {d.name}Instance(unsigned int value);")
            h(f"  static {d.name} {d.name}Instance(const Zel::String& name);")
        h("};")
        t, fn_q = f"{d.outer}::{d.name}", f"{d.outer}::{fn}"
    else:
        h(body)
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
    attrs = []
    for m in d.members:
        if m.kind in ("field", "const", "bit"):
            kind = {"field": "mutableAttr", "const": "constant", "bit": "mutableAttr"}[m.kind]
            attrs.append(f'{{"{m.name}", {m.id}, Zel::AttrKind::{kind}, "{m.type}"}}')
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
      f"                                 {{{', '.join(attrs)}}}, &ops);\n  return type;\n}}\n")
    c(f"[[maybe_unused]] const Zel::ZelType& {n}Registered_ = {n}::zelType();\n")


# ---------------------------------------------------------------- entity types

def chain(d, unit):
    """The entity and its bases, most basic first."""
    out = []
    while d:
        out.insert(0, d)
        d = unit.find(d.base) if d.base else None
    return out


NAME_KEY = typedesc.Member("key", "name", type="Zel::Name")


def is_named(d, unit):
    """An entity without a key member is created by name."""
    return not chain(d, unit)[0].of("key")


def all_keys(d, unit):
    keys = [k for e in chain(d, unit) for k in e.of("key")]
    return keys or [NAME_KEY]


def handler(m):
    return f"on{upper_first(m.name)}"


def notifying(m):
    return m.kind in ("attr", "map", "set", "children", "child")


def emit_entity_header(d, unit, h):
    n = d.name
    base = d.base or "Zel::Entity"
    keys = all_keys(d, unit)
    h(f"class {n} : public {base} {{\n public:")
    h("  class NotifieeConst;\n  class Notifiee;\n")
    h(f"  static const Zel::ZelType& zelType();")
    h(f"  const Zel::ZelType* fwkType() const override {{ return &zelType(); }}")
    if not d.base:
        if is_named(d, unit):
            h("  Zel::Name name() const override { return name_; }")
            h("  // Renames an entity rebuilt from a state backup.")
            h("  void nameIsFromBackup(const Zel::Name& name) { name_ = name; }")
        else:
            h("  Zel::Name name() const override;")
    h()
    for m in d.members:
        t, p = cpp(m.type), param(m.type, unit)
        ret = t if is_scalar(m.type, unit) else f"const {t}&"
        kp = param(m.key_type, unit) if m.key_type else ""
        if m.kind == "key":
            h(f"  {ret} {m.name}() const {{ return {m.name}_; }}")
        elif m.kind == "attr":
            h(f"  {ret} {m.name}() const {{ return {m.name}_; }}")
            h(f"  void {m.name}Is({p} v);")
            if is_counter(m.type):
                h(f"  void {m.name}Inc({t} delta = 1);\n  void {m.name}Dec({t} delta = 1);")
        elif m.kind == "map":
            h(f"  // {m.name}: {t} keyed by {m.key_type}; the default value when absent.")
            h(f"  {t} {m.name}({kp} key) const;")
            h(f"  void {m.name}Is({kp} key, {p} v);")
        elif m.kind == "set":
            h(f"  // {m.name}: a set of {m.key_type}.")
            h(f"  bool {m.name}({kp} key) const {{ return {m.name}_.has(key); }}")
            h(f"  void {m.name}Is({kp} key);")
        elif m.kind == "children":
            h(f"  // {m.name}: child {t} entities keyed by {m.key_type}.")
            h(f"  Zel::Ptr<{t}> {m.name}({kp} key) const {{ return {m.name}_.find(key); }}")
            h(f"  Zel::Ptr<{t}> {m.name}Is({kp} key);")
        elif m.kind == "child":
            h(f"  Zel::Ptr<{t}> {m.name}() const {{ return {m.name}_; }}")
            h(f"  Zel::Ptr<{t}> {m.name}Is(const Zel::Name& name);")
            h(f"  void {m.name}Del();")
        elif m.kind == "const":
            h(f"  static {t} {m.name}() {{ return {m.default}; }}")
        elif m.kind == "function":
            h(f"  void {m.name}();")
        elif m.kind == "method":
            h(f"  {m.extra}")
        if m.kind in ("map", "set", "children"):
            h(f"  void {m.name}Del({kp} key);")
            h(f"  void {m.name}DelAll();")
            h(f"  void {m.name}Notify({kp} key);")
            h(f"  size_t {m.name}s() const {{ return {m.name}_.size(); }}")
            h(f"  // Entries (.key, .value) in the map's order.")
            h(f"  const auto& {m.name}Iter() const {{ return {m.name}_.map(); }}")
    h("\n protected:")
    args = ", ".join(f"{param(k.type, unit)} {k.name}" for k in keys)
    h(f"  {'explicit ' if len(keys) == 1 else ''}{n}({args});")
    h(f"  ~{n}() override;")
    if "ctor" in d.options:
        h("  void constructed();")
    h("  template <class T, class... A>\n  friend Zel::Ptr<T> Zel::allocate(A&&... args);")
    h("\n private:")
    if not d.base and is_named(d, unit):
        h("  Zel::Name name_;")
    for m in d.members:
        t = cpp(m.type)
        if m.kind in ("key", "attr"):
            h(f"  {t} {m.name}_{default_of(m)};")
        elif m.kind == "map":
            h(f"  Zel::ValueColl<{cpp(m.key_type)}, {t}> {m.name}_;")
        elif m.kind == "set":
            h(f"  Zel::ValueSet<{cpp(m.key_type)}> {m.name}_;")
        elif m.kind == "children":
            h(f"  Zel::EntityColl<{cpp(m.key_type)}, {t}> {m.name}_;")
        elif m.kind == "child":
            h(f"  Zel::Ptr<{t}> {m.name}_;")
    h("};\n")
    # Reactors.
    rbase = f"{d.base}::NotifieeConst" if d.base else "Zel::Entity::NotifieeConst"
    h(f"class {n}::NotifieeConst : public {rbase} {{\n public:")
    h(f"  NotifieeConst() : {rbase}({d.depth}) {{}}")
    h(f"  Zel::Ptr<const {n}> notifier() const {{\n"
      f"    return Zel::Ptr<const {n}>(static_cast<const {n}*>(notifierBase().ptr()));\n  }}")
    h(f"  void notifierIs(const Zel::Ptr<const {n}>& n) {{ notifierBaseIs(n.ptr()); }}")
    for m in d.members:
        if not notifying(m):
            continue
        if m.kind in ("map", "set", "children"):
            h(f"  virtual void {handler(m)}({param(m.key_type, unit)}) {{}}")
        else:
            h(f"  virtual void {handler(m)}() {{}}")
    h(f"\n protected:\n  explicit NotifieeConst(unsigned depth) : {rbase}(depth) {{}}\n}};\n")
    h(f"class {n}::Notifiee : public {n}::NotifieeConst {{\n public:")
    h(f"  Zel::Ptr<{n}> notifier() const {{\n"
      f"    return Zel::Ptr<{n}>(const_cast<{n}*>(NotifieeConst::notifier().ptr()));\n  }}")
    h(f"  void notifierIs(const Zel::Ptr<{n}>& n) {{ notifierBaseIs(n.ptr()); }}\n}};\n")
    args = ", ".join(f"{param(k.type, unit)} {k.name}" for k in keys)
    h(f"Zel::Ptr<{n}> {lower_first(n)}Factory({args});\n")


def emit_entity_source(d, unit, c):
    n = d.name
    keys = all_keys(d, unit)
    visit = f"visitNotifiees<NotifieeConst, {d.depth}>"
    # Construction and destruction.
    args = ", ".join(f"{param(k.type, unit)} {k.name}" for k in keys)
    if d.base:
        base_keys = ", ".join(k.name for k in keys)
        init = f" : {d.base}({base_keys})"
    else:
        init = " : " + ", ".join(f"{k.name}_({k.name})" for k in keys)
    c(f"{n}::{n}({args}){init} {{{' constructed(); ' if 'ctor' in d.options else ''}}}\n")
    c(f"{n}::~{n}() {{")
    for m in d.members:
        if m.kind == "children":
            c(f"  for (const auto& e : {m.name}_.map()) e.value->parentIs(nullptr, 0);")
        elif m.kind == "child":
            c(f"  if ({m.name}_) {m.name}_->parentIs(nullptr, 0);")
    c("}\n")
    c(f"Zel::Ptr<{n}> {lower_first(n)}Factory({args}) {{\n"
      f"  return Zel::allocate<{n}>({', '.join(k.name for k in keys)});\n}}\n")
    if not d.base and not is_named(d, unit):
        k = d.of("key")[0]
        c(f"Zel::Name {n}::name() const {{ return Zel::nameOfKey({k.name}_); }}\n")
    for m in d.members:
        t, p = cpp(m.type), param(m.type, unit)
        kp = param(m.key_type, unit) if m.key_type else ""
        on = handler(m)
        if m.kind == "attr":
            c(f"void {n}::{m.name}Is({p} v) {{\n  if ({m.name}_ == v) return;\n  {m.name}_ = v;\n"
              f"  {visit}([](NotifieeConst* r) {{ r->{on}(); }});\n}}\n")
            if is_counter(m.type):
                for op, sign in (("Inc", "+"), ("Dec", "-")):
                    c(f"void {n}::{m.name}{op}({t} delta) {{ {m.name}Is(static_cast<{t}>({m.name}_ {sign} delta)); }}\n")
        elif m.kind == "map":
            c(f"{t} {n}::{m.name}({kp} key) const {{ return {m.name}_.at(key, {t}{{}}); }}\n")
            c(f"void {n}::{m.name}Is({kp} key, {p} v) {{\n  if (!{m.name}_.set(key, v)) return;\n"
              f"  {visit}([&](NotifieeConst* r) {{ r->{on}(key); }});\n}}\n")
        elif m.kind == "set":
            c(f"void {n}::{m.name}Is({kp} key) {{\n  if (!{m.name}_.add(key)) return;\n"
              f"  {visit}([&](NotifieeConst* r) {{ r->{on}(key); }});\n}}\n")
        elif m.kind == "children":
            c(f"Zel::Ptr<{t}> {n}::{m.name}Is({kp} key) {{\n"
              f"  if (Zel::Ptr<{t}> existing = {m.name}_.find(key)) return existing;\n"
              f"  Zel::Ptr<{t}> child = {factory_of(t)}(key);\n"
              f"  child->parentIs(this, {m.id});\n  {m.name}_.add(key, child);\n"
              f"  {visit}([&](NotifieeConst* r) {{ r->{on}(key); }});\n  return child;\n}}\n")
        elif m.kind == "child":
            # Returns the local: a handler may let the entity go during the visit.
            c(f"Zel::Ptr<{t}> {n}::{m.name}Is(const Zel::Name& name) {{\n"
              f"  if ({m.name}_ && {m.name}_->name() == name) return {m.name}_;\n"
              f"  Zel::Ptr<{t}> child = {factory_of(t)}(name);\n"
              f"  child->parentIs(this, {m.id});\n"
              f"  if ({m.name}_) {m.name}_->parentIs(nullptr, 0);\n"
              f"  {m.name}_ = child;\n"
              f"  {visit}([](NotifieeConst* r) {{ r->{on}(); }});\n  return child;\n}}\n")
            c(f"void {n}::{m.name}Del() {{\n  if (!{m.name}_) return;\n"
              f"  {m.name}_->parentIs(nullptr, 0);\n  {m.name}_ = nullptr;\n"
              f"  {visit}([](NotifieeConst* r) {{ r->{on}(); }});\n}}\n")
        if m.kind in ("map", "set", "children"):
            if m.kind == "children":
                c(f"void {n}::{m.name}Del({kp} key) {{\n  Zel::Ptr<{t}> child = {m.name}_.del(key);\n"
                  f"  if (!child) return;\n  child->parentIs(nullptr, 0);\n"
                  f"  {visit}([&](NotifieeConst* r) {{ r->{on}(key); }});\n}}\n")
            else:
                c(f"void {n}::{m.name}Del({kp} key) {{\n  if (!{m.name}_.del(key)) return;\n"
                  f"  {visit}([&](NotifieeConst* r) {{ r->{on}(key); }});\n}}\n")
            # The entity keeps itself alive: a handler may drop the last outside reference.
            c(f"void {n}::{m.name}DelAll() {{\n"
              f"  if ({m.name}_.size() == 0) return;\n"
              f"  Zel::Ptr<const {n}> keep(this);\n"
              f"  for (const auto& key : {m.name}_.keys()) {m.name}Del(key);\n}}\n")
            c(f"void {n}::{m.name}Notify({kp} key) {{\n"
              f"  {visit}([&](NotifieeConst* r) {{ r->{on}(key); }});\n}}\n")
    emit_entity_reflection(d, unit, c)


def emit_entity_reflection(d, unit, c):
    n = d.name
    self_ = f"static_cast<const {n}&>(e)"
    attrs = []
    for m in d.members:
        if m.kind == "method":
            continue
        t = cpp(m.type)
        kt = cpp(m.key_type) if m.key_type else ""
        fields = [f'"{m.name}"', str(m.id)]
        if m.kind == "key":
            fields += ["Zel::AttrKind::key", f'"{m.type}"',
                       f"[](const Zel::Entity& e) {{ return valueToStrep({self_}.{m.name}()); }}"]
        elif m.kind == "attr":
            fields += ["Zel::AttrKind::mutableAttr", f'"{m.type}"',
                       f"[](const Zel::Entity& e) {{ return valueToStrep({self_}.{m.name}()); }}",
                       f"[](Zel::Entity& e, Zel::StrIt& it, const Zel::StrIt& end) {{\n"
                       f"         const {t} v = Zel::deserializeAttr<{t}>(it, end, \"{m.name}\");\n"
                       f"         if (it != end) Zel::throwRangeException(\"Invalid value for attribute '{m.name}': trailing text\");\n"
                       f"         static_cast<{n}&>(e).{m.name}Is(v);\n       }}"]
        elif m.kind == "const":
            fields += ["Zel::AttrKind::constant", f'"{m.type}"',
                       f"[](const Zel::Entity&) {{ return valueToStrep({n}::{m.name}()); }}"]
        elif m.kind == "function":
            fields += ["Zel::AttrKind::function", '""', "nullptr", "nullptr", "nullptr", "nullptr",
                       f"[](Zel::Entity& e) {{ static_cast<{n}&>(e).{m.name}(); }}"]
        elif m.kind == "child":
            fields += ["Zel::AttrKind::instantiating", f'"{m.type}"',
                       f"[](const Zel::Entity& e) {{\n"
                       f"         auto c = {self_}.{m.name}();\n"
                       f"         return valueToStrep(c ? c->name() : Zel::Name());\n       }}"]
        else:
            kind = "entityCollection" if m.kind == "children" else "valueCollection"
            if m.kind == "children":
                value = (f"auto c = {self_}.{m.name}(k);\n"
                         f"         return valueToStrep(c ? c->fullName() : Zel::String());")
            elif m.kind == "set":
                value = f"return valueToStrep({self_}.{m.name}(k));"
            else:
                value = f"return valueToStrep({self_}.{m.name}(k));"
            fields += [f"Zel::AttrKind::{kind}", f'"{m.type}"', "nullptr", "nullptr",
                       f"[](const Zel::Entity& e) {{\n"
                       f"         std::vector<Zel::String> out;\n"
                       f"         for (const auto& k : {self_}.{m.name}_.keys()) out.push_back(valueToStrep(k));\n"
                       f"         return out;\n       }}",
                       f"[](const Zel::Entity& e, const Zel::String& key) {{\n"
                       f"         const {kt} k = Zel::parseWhole<{kt}>(key, \"Invalid key of {m.name}\");\n"
                       f"         {value}\n       }}"]
        attrs.append("      {" + ", ".join(fields) + "}")
    base = f"&{d.base}::zelType()" if d.base else "&Zel::Entity::entityType()"
    c(f"const Zel::ZelType& {n}::zelType() {{\n"
      f"  static const Zel::ZelType type(\"{d.qualified}\", Zel::ZelType::Kind::entity, {base}, {{\n"
      + ",\n".join(attrs) + "});\n  return type;\n}\n")
    # The reflection reactor: every handler, own and inherited, forwards by id.
    cls = f"{n}ReflectionReactor_"
    c(f"namespace {{\nclass {cls} : public {n}::NotifieeConst {{\n public:")
    c(f"  {cls}(const Zel::Ptr<const {n}>& n, Zel::GenericIfNotifiee* target) : target_(target) {{\n"
      f"    notifierIs(n);\n  }}")
    for e in chain(d, unit):
        for m in e.members:
            if not notifying(m):
                continue
            if m.kind in ("map", "set", "children"):
                c(f"  void {handler(m)}({param(m.key_type, unit)} k) override {{\n"
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


# ---------------------------------------------------------------- driver

HEADER_INCLUDES = [
    "<cstdint>", "<iosfwd>",
    '"platform/zel/Collections.h"', '"platform/zel/Entity.h"', '"platform/zel/Hash.h"',
    '"platform/zel/NboAttrLog.h"', '"platform/zel/StringForm.h"', '"platform/zel/Type.h"',
]
USING = ("using Zel::valueToStrep;\nusing Zel::sequenceToValue;\n"
         "using Zel::attrLogWrite;\nusing Zel::attrLogRead;\n")


def generate(unit, rel_stem):
    h, c = Out(), Out()
    h(f"// Generated from {rel_stem}.types by codegen/ldpgen.py. Do not edit.")
    h("#pragma once\n")
    for inc in HEADER_INCLUDES:
        h(f"#include {inc}")
    for inc in unit.includes:
        h(f'#include "{inc}"')
    h()
    traits = []
    namespaces = []
    for d in unit.own():
        if d.namespace not in namespaces:
            namespaces.append(d.namespace)
    for ns in namespaces:
        decls = [d for d in unit.own() if d.namespace == ns]
        h(f"namespace {ns} {{\n\n{USING}")
        # Forward declarations let entity types name each other in any order.
        for d in decls:
            if d.kind == "entity":
                h(f"class {d.name};")
        h()
        for d in decls:
            if d.kind == "enum":
                t, fn_q = emit_enum_header(d, h)
                traits.append((d, t, fn_q))
        for d in decls:
            if d.kind == "value":
                emit_value_header(d, unit, h)
        for d in decls:
            if d.kind == "entity":
                emit_entity_header(d, unit, h)
        h(f"}}  // namespace {ns}\n")
    for d, t, fn_q in traits:
        emit_enum_traits(d, t, fn_q, h)

    c(f"// Generated from {rel_stem}.types by codegen/ldpgen.py. Do not edit.")
    c(f'#include "{rel_stem}.gen.h"\n')
    c("#include <memory>\n#include <new>\n#include <ostream>\n#include <string>\n")
    c('#include "platform/zel/GenericIf.h"\n')
    for ns in namespaces:
        c(f"namespace {ns} {{\n")
        for d in unit.own():
            if d.namespace != ns:
                continue
            {"enum": lambda: emit_enum_source(d, c),
             "value": lambda: emit_value_source(d, unit, c),
             "entity": lambda: emit_entity_source(d, unit, c)}[d.kind]()
        c(f"}}  // namespace {ns}")
    return h.text(), c.text()


def load(source_root, rel):
    loaded = set()

    def loader(path, unit):
        if path in loaded:
            return
        loaded.add(path)
        with open(os.path.join(source_root, path)) as f:
            typedesc.parse(f.read(), path, unit, imported=True, loader=loader)

    with open(os.path.join(source_root, rel)) as f:
        unit = typedesc.parse(f.read(), rel, loader=loader)
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
    ap.add_argument("description")
    args = ap.parse_args(argv)
    try:
        unit = load(args.source_root, args.description)
    except (typedesc.DescError, OSError) as e:
        print(f"ldpgen: {e}", file=sys.stderr)
        return 1
    stem = args.description[:-len(".types")] if args.description.endswith(".types") else args.description
    header, source = generate(unit, stem)
    write_if_changed(os.path.join(args.out_root, stem + ".gen.h"), header)
    write_if_changed(os.path.join(args.out_root, stem + ".gen.cpp"), source)
    return 0


if __name__ == "__main__":
    sys.exit(main())
