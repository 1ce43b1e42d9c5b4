#pragma once
// The six-octet LDP identifier of RFC 5036: the LSR id (an IPv4 router id) and the
// label space (0 is the platform-wide label space). Both fields are held in
// network byte order, as on the wire.
//
// String form: the LSR id as a dotted quad, a colon, the label space in decimal
// ("10.0.0.1:0"). The parser reads exactly that and stops after the last digit.

#include <compare>
#include <iosfwd>

#include "platform/ovo/NetU16.h"
#include "platform/ovo/NetU32.h"
#include "platform/zel/NboAttrLog.h"
#include "platform/zel/StringForm.h"

namespace Ldp {

class LdpIdentifier {
 public:
  LdpIdentifier() = default;
  LdpIdentifier(uint32_t lsrId, uint16_t labelSpace) {
    tmpLsrIdIs(lsrId);
    tmpLblSpaceIs(labelSpace);
  }

  const Ovo::NetU32& lsrId() const { return lsrId_; }
  const Ovo::NetU16& labelSpace() const { return labelSpace_; }
  void tmpLsrIdIs(uint32_t v) { lsrId_.valueIs(v); }
  void tmpLblSpaceIs(uint16_t v) { labelSpace_.valueIs(v); }

  // mix(lsrId) + labelSpace, host-order values; collections keyed by
  // identifiers depend on exactly this.
  uint32_t hash() const;
  Zel::String stringValue() const;

  bool operator==(const LdpIdentifier& o) const {
    return lsrId_.value() == o.lsrId_.value() && labelSpace_.value() == o.labelSpace_.value();
  }
  std::strong_ordering operator<=>(const LdpIdentifier& o) const {
    if (auto c = lsrId_.value() <=> o.lsrId_.value(); c != 0) return c;
    return labelSpace_.value() <=> o.labelSpace_.value();
  }
  bool operator!() const { return *this == LdpIdentifier(); }

 private:
  Ovo::NetU32 lsrId_{0};
  Ovo::NetU16 labelSpace_{0};
};

// The integer mix that the identifiers' hashes are built from.
uint32_t ldpHashMix(uint32_t x);

Zel::String valueToStrep(const LdpIdentifier& v);
std::ostream& operator<<(std::ostream& os, const LdpIdentifier& v);
// Throws "Invalid LdpIdentifier" when the text does not start with an identifier.
void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, LdpIdentifier* out);
void attrLogWrite(Zel::NboAttrLog::Out& out, const LdpIdentifier& v);
void attrLogRead(Zel::NboAttrLog::In& in, LdpIdentifier* v);

}  // namespace Ldp
