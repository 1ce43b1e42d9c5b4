#include "platform/pseudowire/PseudowireType.h"

#include <ostream>
#include <string_view>

#include "platform/pseudowire/HexForm.h"

namespace Pseudowire {

namespace {

// Indexed by code: the names of 0x0001..0x0019 (see the header).
constexpr const char* kNames[] = {nullptr,          "frameRelayDlciMartini",
                                  "atmAal5SduVcc",  "atmTransparentCell",
                                  "ethernetTagged", "ethernet",
                                  "hdlc",           "ppp",
                                  "sonetSdhCem",    "atmNToOneVcc",
                                  "atmNToOneVpc",   "ipLayer2",
                                  "atmOneToOneVcc", "atmOneToOneVpc",
                                  "atmAal5PduVcc",  "frameRelayPort",
                                  "sonetSdhCep",    "satopE1",
                                  "satopT1",        "satopE3",
                                  "satopT3",        "cesopsnBasic",
                                  "tdmoipAal1",     "cesopsnCas",
                                  "tdmoipAal2",     "frameRelayDlci"};
constexpr uint16_t kNameCount = sizeof(kNames) / sizeof(kNames[0]);
static_assert(kNameCount == PseudowireType::frameRelayDlci + 1);

bool alnum(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
}

}  // namespace

uint16_t PseudowireType::checked(uint16_t value) {
  if (value > max) Zel::throwRangeException("PseudowireType::value > 0x7fff not allowed");
  return value;
}

const char* PseudowireType::name() const { return value_ < kNameCount ? kNames[value_] : nullptr; }

Zel::String PseudowireType::stringValue() const {
  if (const char* n = name()) return Zel::String(n);
  return HexForm::text(value_, 4);
}

Zel::String valueToStrep(const PseudowireType& v) { return v.stringValue(); }

void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, PseudowireType* out) {
  Zel::StrIt p = it;
  uint32_t code;
  if (HexForm::read(p, end, 4, &code)) {
    if (code > PseudowireType::max) Zel::throwRangeException("Invalid PseudowireType");
  } else {
    while (p != end && alnum(*p)) ++p;
    const std::string_view word(it, static_cast<size_t>(p - it));
    code = 1;
    while (code < kNameCount && word != kNames[code]) ++code;
    if (code == kNameCount) Zel::throwRangeException("Invalid PseudowireType");
  }
  *out = PseudowireType(static_cast<uint16_t>(code));
  it = p;
}

std::ostream& operator<<(std::ostream& os, const PseudowireType& v) {
  return os << v.stringValue();
}

void attrLogWrite(Zel::NboAttrLog::Out& o, const PseudowireType& v) { o.putU16(v.value()); }

void attrLogRead(Zel::NboAttrLog::In& i, PseudowireType* v) { *v = PseudowireType(i.nextU16()); }

}  // namespace Pseudowire
