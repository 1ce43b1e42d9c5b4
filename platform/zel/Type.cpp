#include "platform/zel/Type.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstring>
#include <map>

namespace Zel {

namespace {
struct Registry {
  std::map<std::string_view, const ZelType*> byName;
  std::vector<const ZelType*> inOrder;
};
Registry& registry() {
  static Registry r;
  return r;
}
}  // namespace

ZelType::ZelType(const char* name, Kind kind, const ZelType* base, std::vector<AttrDesc> attrs,
                 const ValueOps* valueOps)
    : name_(name), kind_(kind), base_(base), attrs_(std::move(attrs)), valueOps_(valueOps) {
  Registry& r = registry();
  r.byName[name_] = this;
  r.inOrder.push_back(this);
}

ZelType::~ZelType() {
  Registry& r = registry();
  auto it = r.byName.find(name_);
  if (it != r.byName.end() && it->second == this) r.byName.erase(it);
  std::erase(r.inOrder, this);
}

const char* attrKindName(AttrKind kind) {
  switch (kind) {
    case AttrKind::key:
      return "key";
    case AttrKind::init:
      return "init";
    case AttrKind::mutableAttr:
      return "mutable";
    case AttrKind::derived:
      return "derived";
    case AttrKind::reference:
      return "reference";
    case AttrKind::valueCollection:
      return "valueCollection";
    case AttrKind::entityCollection:
      return "entityCollection";
    case AttrKind::referenceCollection:
      return "referenceCollection";
    case AttrKind::queue:
      return "queue";
    case AttrKind::instantiating:
      return "instantiating";
    case AttrKind::constant:
      return "constant";
    case AttrKind::function:
      return "function";
    case AttrKind::operation:
      return "operation";
    case AttrKind::reflection:
      return "reflection";
  }
  return "unknown";
}

const AttrDesc* ZelType::attr(AttributeId id) const {
  // Generated types number their attributes consecutively: try the id's place first.
  for (const ZelType* t = this; t; t = t->base_) {
    const std::vector<AttrDesc>& a = t->attrs_;
    if (!a.empty() && id >= a.front().id && id - a.front().id < a.size() &&
        a[id - a.front().id].id == id) {
      return &a[id - a.front().id];
    }
  }
  for (const ZelType* t = this; t; t = t->base_) {
    for (const AttrDesc& a : t->attrs_) {
      if (a.id == id) return &a;
    }
  }
  return nullptr;
}

const AttrDesc* ZelType::attr(std::string_view name) const {
  for (const ZelType* t = this; t; t = t->base_) {
    for (const AttrDesc& a : t->attrs_) {
      if (name == a.name) return &a;
    }
  }
  return nullptr;
}

bool ZelType::isKindOf(const ZelType* t) const {
  for (const ZelType* s = this; s; s = s->base_) {
    if (s == t) return true;
  }
  return false;
}

const ZelType* ZelType::lookup(std::string_view qualifiedName) {
  Registry& r = registry();
  auto it = r.byName.find(qualifiedName);
  return it == r.byName.end() ? nullptr : it->second;
}

const std::vector<const ZelType*>& ZelType::registered() { return registry().inOrder; }

EnumType::EnumType(const char* name, std::vector<Enumerator> enumerators)
    : ZelType(name, Kind::enumeration, nullptr, {}),
      enumerators_(std::move(enumerators)),
      byValue_(enumerators_) {
  std::sort(byValue_.begin(), byValue_.end(),
            [](const Enumerator& a, const Enumerator& b) { return a.value < b.value; });
}

const EnumType::Enumerator* EnumType::find(uint32_t value) const {
  auto it = std::lower_bound(byValue_.begin(), byValue_.end(), value,
                             [](const Enumerator& e, uint32_t v) { return e.value < v; });
  return it != byValue_.end() && it->value == value ? &*it : nullptr;
}

const char* EnumType::enumeratorName(uint32_t value) const {
  const Enumerator* e = find(value);
  return e ? e->name : nullptr;
}

String EnumType::valueToStrep(uint32_t value) const {
  if (const char* n = enumeratorName(value)) return String(n);
  return Zel::valueToStrep(static_cast<uint64_t>(value));
}

namespace {
// The value `token` names: an enumerator's name (exactly, case-sensitive) or a
// decimal number within 32 bits. False when it is neither.
bool tokenValue(const std::vector<EnumType::Enumerator>& enumerators, std::string_view token,
                uint32_t* out) {
  for (const EnumType::Enumerator& e : enumerators) {
    if (token == e.name) {
      *out = e.value;
      return true;
    }
  }
  if (token.empty() ||
      !std::all_of(token.begin(), token.end(), [](char c) { return c >= '0' && c <= '9'; })) {
    return false;
  }
  const char* end = token.data() + token.size();
  auto r = std::from_chars(token.data(), end, *out);
  return r.ec == std::errc() && r.ptr == end;
}

// The token at `it`: the longest run of identifier characters.
StrIt tokenEnd(StrIt it, const StrIt& end) {
  while (it != end && (std::isalnum(static_cast<unsigned char>(*it)) || *it == '_')) ++it;
  return it;
}
}  // namespace

uint32_t EnumType::instance(const String& text) const {
  // The whole text must be one name or number; a refusal quotes all of it.
  uint32_t v = 0;
  if (tokenEnd(text.begin(), text.end()) != text.end() ||
      !tokenValue(enumerators_, text.view(), &v)) {
    throwRangeException(String("Invalid ") + name() + ": '" + text.view() + "'");
  }
  return v;
}

uint32_t EnumType::sequenceToValue(StrIt& it, const StrIt& end) const {
  const StrIt p = tokenEnd(it, end);
  const std::string_view token(it, static_cast<size_t>(p - it));
  uint32_t v = 0;
  if (!tokenValue(enumerators_, token, &v)) {
    throwRangeException(String("Invalid ") + name() + ": '" + token + "'");
  }
  it = p;
  return v;
}

}  // namespace Zel
