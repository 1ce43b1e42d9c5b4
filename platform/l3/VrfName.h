#pragma once
// VrfName: the name of a VRF, any bytes up to maxLength (100) of them. The empty
// name is the default.
//
// A name longer than maxLength is refused by the constructors, valueIs(), the
// parser and attrLogRead() alike with
//   "VrfName::bytes > VrfName::maxLength not allowed"
// and the target is left unchanged.
//
// stringValue() is the bare name ("red"). The string form (valueToStrep) is the
// quoted Zel::String form, "'red'", so that a name with any characters
// round-trips; the parser reads that form (failure: "Invalid string").
// Order: by the name's bytes.
// Attribute log: a Zel String (4-octet length, then the bytes).

#include <cstddef>
#include <cstdint>
#include <iosfwd>

#include "platform/zel/NboAttrLog.h"
#include "platform/zel/StringForm.h"

namespace L3 {

class VrfName {
 public:
  static constexpr size_t maxLength = 100;

  VrfName() = default;
  VrfName(const char* name) : VrfName(Zel::String(name)) {}
  VrfName(const Zel::String& name) : value_(checked(name)) {}

  const Zel::String& value() const { return value_; }
  void valueIs(const Zel::String& name) { value_ = checked(name); }

  bool operator!() const { return value_.empty(); }
  bool operator==(const VrfName&) const = default;
  auto operator<=>(const VrfName& o) const { return value_ <=> o.value_; }

  uint32_t hash() const { return value_.hash(); }
  Zel::String stringValue() const { return value_; }

  // `name` when it is at most maxLength bytes; otherwise throws the range message.
  static const Zel::String& checked(const Zel::String& name);

 private:
  Zel::String value_;
};

Zel::String valueToStrep(const VrfName& v);
void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, VrfName* out);
std::ostream& operator<<(std::ostream& os, const VrfName& v);
void attrLogWrite(Zel::NboAttrLog::Out& o, const VrfName& v);
void attrLogRead(Zel::NboAttrLog::In& i, VrfName* v);

}  // namespace L3
