#pragma once
// Key<A, B, ...>: the key of a collection whose children are keyed by several
// attributes together (a TCP connection by its two addresses, port and LDP
// identifier). Equality, order and hash cover every part in order.
//
// String form: the parts' forms in order, each followed by ", " but the last, in
// parentheses: "(10.0.0.1, 646, 10.0.0.2, 1.1.1.1:0)". The parser reads exactly
// that and names the part that fails ("Invalid value for attribute 'key part 2': ...").
// Attribute log: the parts one after another.

#include <ostream>
#include <tuple>

#include "platform/zel/Hash.h"
#include "platform/zel/NboAttrLog.h"
#include "platform/zel/StringForm.h"

namespace Zel {

template <class... P>
class Key {
 public:
  Key() = default;
  explicit Key(const P&... parts) : parts_(parts...) {}

  template <size_t I>
  const auto& part() const {
    return std::get<I>(parts_);
  }
  const std::tuple<P...>& parts() const { return parts_; }

  bool operator==(const Key& o) const { return parts_ == o.parts_; }
  bool operator<(const Key& o) const { return parts_ < o.parts_; }

  uint32_t hash() const {
    Hash h;
    std::apply([&](const P&... p) { (h.mix(HashOf<P>{}(p)), ...); }, parts_);
    return h.result();
  }

 private:
  std::tuple<P...> parts_;
};

template <class... P>
String valueToStrep(const Key<P...>& k) {
  std::string s = "(";
  size_t i = 0;
  std::apply([&](const P&... p) { ((s += (i++ ? ", " : ""), s += valueToStrep(p).view()), ...); },
             k.parts());
  s += ")";
  return String(s);
}

template <class... P>
std::ostream& operator<<(std::ostream& os, const Key<P...>& k) {
  return os << valueToStrep(k);
}

template <class... P>
void sequenceToValue(StrIt& it, const StrIt& end, Key<P...>* out) {
  static_assert(sizeof...(P) <= 6, "name more key parts");
  static constexpr const char* partNames[] = {"key part 1", "key part 2", "key part 3",
                                              "key part 4", "key part 5", "key part 6"};
  StrIt p = it;
  needString(p, end, "(");
  std::tuple<P...> parts;
  size_t i = 0;
  std::apply(
      [&](P&... part) {
        ((i ? needString(p, end, ", ") : void(), part = deserializeAttr<P>(p, end, partNames[i]),
          ++i),
         ...);
      },
      parts);
  needString(p, end, ")");
  *out = std::apply([](const P&... v) { return Key<P...>(v...); }, parts);
  it = p;
}

template <class... P>
void attrLogWrite(NboAttrLog::Out& o, const Key<P...>& k) {
  std::apply([&](const P&... p) { (attrLogWrite(o, p), ...); }, k.parts());
}

template <class... P>
void attrLogRead(NboAttrLog::In& in, Key<P...>* k) {
  std::tuple<P...> parts;
  std::apply([&](P&... p) { (attrLogRead(in, &p), ...); }, parts);
  *k = std::apply([](const P&... v) { return Key<P...>(v...); }, parts);
}

}  // namespace Zel
