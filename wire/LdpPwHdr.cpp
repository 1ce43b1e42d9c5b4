#include "wire/LdpPwHdr.h"

#include "platform/zel/Assert.h"
#include "platform/zel/Format.h"
#include "wire/LdpTlvCommon.h"

namespace Ldp {

namespace {

using TlvCommon::errorForm;
using TlvCommon::lengthCheck;
using TlvCommon::tlvType;

const Zel::ZelType pwStatusTlvType = tlvType("Ldp::LdpPwStatusTlv");

bool printableAscii(std::string_view text) {
  for (char c : text) {
    if (c < 0x20 || c > 0x7E) return false;
  }
  return true;
}

}  // namespace

// --- LdpFecTlvPwIdElementHdr

void LdpFecTlvPwIdElementHdr::pwIdIs(Pseudowire::PseudowireId id) {
  ZEL_ASSERT(pwInfoLength() >= pwIdLength);
  pwIdNbo_.valueIs(id.value());
}

LdpStatusCode LdpFecTlvPwIdElementHdr::validateHead() const {
  ZEL_ASSERT(elementType() == Ldp::pwIdElement_);
  if (!pwType().isKnown()) return unknownFec_;
  if (pwInfoLength() != 0 && pwInfoLength() < pwIdLength) return badTlvLength_;
  return success_;
}

LdpStatusCode LdpFecTlvPwIdElementHdr::validate() const {
  if (LdpStatusCode rc = validateHead(); rc != success_) return rc;
  if (pwInfoLength() >= pwIdLength && !pwId()) return malformedTlv_;
  return success_;
}

Zel::String LdpFecTlvPwIdElementHdr::stringValue() const {
  if (LdpStatusCode rc = validate(); rc != success_) {
    return errorForm("Error LdpFecTlvPwIdElementHdr: ", rc);
  }
  return Zel::format(
      "LdpFecTlvPwIdElementHdr: pwType(%s), cbit(%d), groupId(%u), pwInfoLen(%u), "
      "pwId(%u)",
      pwType().stringValue().charPtr(), int(controlWord()), groupId().value(),
      unsigned{pwInfoLength()}, pwId().value());
}

// --- Interface-parameter sub-TLVs

LdpStatusCode LdpPwIntfMtuSubTlv::validate() const {
  ZEL_ASSERT(type() == Ldp::intfMtu_);
  return lengthCheck(*this, 4);
}

Zel::String LdpPwIntfMtuSubTlv::stringValue() const {
  if (LdpStatusCode rc = validate(); rc != success_) {
    return errorForm("Error LdpPwIntfMtuSubTlv: ", rc);
  }
  return Zel::format("LdpPwIntfMtuSubTlv: %u", unsigned{mtu()});
}

LdpStatusCode LdpPwIntfDescSubTlv::validate() const {
  ZEL_ASSERT(type() == Ldp::intfDesc_);
  if (static_cast<uint8_t>(length() - headerLength) > maxDescriptionLength) return badTlvLength_;
  if (!printableAscii(description())) return malformedTlv_;
  return success_;
}

Zel::String LdpPwIntfDescSubTlv::stringValue() const {
  if (LdpStatusCode rc = validate(); rc != success_) {
    return errorForm("Error LdpPwIntfDescSubTlv: ", rc);
  }
  return Zel::String("LdpPwIntfDescSubTlv: \"") + description() + "\"";
}

LdpStatusCode LdpPwRequestedVlanIdSubTlv::validate() const {
  ZEL_ASSERT(type() == Ldp::requestedVlanId_);
  return lengthCheck(*this, 4);
}

Zel::String LdpPwRequestedVlanIdSubTlv::stringValue() const {
  if (LdpStatusCode rc = validate(); rc != success_) {
    return errorForm("Error LdpPwRequestedVlanIdSubTlv: ", rc);
  }
  return Zel::format("LdpPwRequestedVlanIdSubTlv: %u", unsigned{vlanId()});
}

LdpStatusCode LdpPwFragIndicatorSubTlv::validate() const {
  ZEL_ASSERT(type() == Ldp::fragIndicator_);
  return lengthCheck(*this, 4);
}

Zel::String LdpPwFragIndicatorSubTlv::stringValue() const {
  if (LdpStatusCode rc = validate(); rc != success_) {
    return errorForm("Error LdpPwFragIndicatorSubTlv: ", rc);
  }
  return Zel::format("LdpPwFragIndicatorSubTlv: 0x%04x", unsigned{indicator()});
}

LdpStatusCode LdpPwVccvParamSubTlv::validate() const {
  ZEL_ASSERT(type() == Ldp::vccvParam_);
  return lengthCheck(*this, 4);
}

Zel::String LdpPwVccvParamSubTlv::stringValue() const {
  if (LdpStatusCode rc = validate(); rc != success_) {
    return errorForm("Error LdpPwVccvParamSubTlv: ", rc);
  }
  return Zel::format("LdpPwVccvParamSubTlv: cc(0x%02x), cv(%s)", unsigned{ccTypes()},
                     cvTypes().stringValue().charPtr());
}

// --- LdpPwStatusTlv

LdpStatusCode LdpPwStatusTlv::validate() const {
  if (LdpStatusCode rc = validateTlvHdr(); rc != success_) return rc;
  return lengthCheck(*this, 4);
}

Zel::String LdpPwStatusTlv::stringValue() const {
  if (LdpStatusCode rc = validate(); rc != success_) return errorForm("Error LdpPwStatusTlv: ", rc);
  return Zel::format("LdpPwStatusTlv: 0x%.8x", flags().value());
}

const Zel::ZelType* LdpPwStatusTlv::fwkType() const { return &pwStatusTlvType; }

}  // namespace Ldp
