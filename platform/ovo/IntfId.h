#pragma once
// IntfId: an interface id, the interface's name ("Ethernet1", "Ethernet1/1.100",
// "Port-Channel10", "Vlan10"). The empty id is the default and means "no
// interface".
//
// Names are made of the characters [A-Za-z0-9/.:-] only; the constructor refuses
// any other character with "Invalid IntfId". That keeps the string form bare and
// unambiguous: other values' forms put '_', ',', '}', ' ' or a quote after an
// interface name, and none of those can belong to a name.
//
// String form: the bare name; the empty id is the empty string. The parser reads
// the longest run of name characters at the cursor; an empty run is the empty id,
// so parsing never fails.
// Order: by the name's bytes ("Ethernet10" < "Ethernet2"). hash(): the name's
// hash (0 for the empty id).
// Attribute log: a Zel String (4-octet length, then the bytes); a logged name
// with a character outside the set is refused with "Invalid IntfId".

#include <cstdint>
#include <iosfwd>

#include "platform/zel/NboAttrLog.h"
#include "platform/zel/StringForm.h"

namespace Ovo {

class IntfId {
 public:
  IntfId() = default;
  explicit IntfId(const Zel::String& name);

  const Zel::String& name() const { return name_; }

  // Whether `c` may appear in an interface name.
  static bool nameChar(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '/' ||
           c == '.' || c == ':' || c == '-';
  }

  bool operator!() const { return name_.empty(); }
  bool operator==(const IntfId&) const = default;
  auto operator<=>(const IntfId& o) const { return name_ <=> o.name_; }

  uint32_t hash() const { return name_.hash(); }
  Zel::String stringValue() const { return name_; }

 private:
  Zel::String name_;
};

Zel::String valueToStrep(const IntfId& v);
void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, IntfId* out);
std::ostream& operator<<(std::ostream& os, const IntfId& v);
void attrLogWrite(Zel::NboAttrLog::Out& o, const IntfId& v);
void attrLogRead(Zel::NboAttrLog::In& i, IntfId* v);

}  // namespace Ovo
