#include "parse/LdpPwGenMsgParser.h"

#include <string_view>

#include "core/LdpTrace.h"
#include "platform/zel/Format.h"

namespace Ldp {

namespace {

// Records `reason` as the parser's and hands back `code`, the parser's status to be.
LdpStatusCode failure(LdpFecTlvParser* parser, LdpStatusCode code, const Zel::String& reason) {
  parser->reasonIs(reason);
  return code;
}

// A failure of the interface-parameter sub-TLV walk.
LdpStatusCode paramFailure(LdpFecTlvParser* parser, LdpStatusCode code, std::string_view what) {
  return failure(parser, code, Zel::String("Invalid PW Intf param element: ") + what);
}

// Walks the interface-parameter sub-TLVs in [p, end) into `params` and `present`.
LdpStatusCode parseIntfParams(LdpFecTlvParser* parser, const uint8_t* p, const uint8_t* end,
                              PwFwdEqvClassParams& params, LdpPwIntfParamFlags& present) {
  while (p < end) {
    if (end - p < LdpPwIntfParamSubTlv::headerLength) {
      return paramFailure(parser, malformedTlv_, "TLV is too small");
    }
    const LdpPwIntfParamSubTlv* sub = overlay<const LdpPwIntfParamSubTlv>(p);
    if (sub->length() <= 3) return paramFailure(parser, malformedTlv_, "TLV value is too small");
    if (sub->length() > end - p) {
      return paramFailure(parser, malformedTlv_, "Unrecognized packet invalid length");
    }
    switch (sub->type()) {
      case intfMtu_: {
        const auto* mtu = overlay<const LdpPwIntfMtuSubTlv>(p);
        if (LdpStatusCode rc = mtu->validate(); rc != success_) {
          return paramFailure(parser, rc, "PW MTU validation failure");
        }
        params.mtuIs(mtu->mtu());
        present.intfMtuIs(true);
        break;
      }
      case intfDesc_: {
        const auto* desc = overlay<const LdpPwIntfDescSubTlv>(p);
        if (LdpStatusCode rc = desc->validate(); rc != success_) {
          return paramFailure(parser, rc, "PW Description validation failure");
        }
        params.intfDescriptionIs(Zel::String(desc->description()));
        present.intfDescIs(true);
        break;
      }
      case requestedVlanId_: {
        const auto* vlan = overlay<const LdpPwRequestedVlanIdSubTlv>(p);
        if (LdpStatusCode rc = vlan->validate(); rc != success_) {
          return paramFailure(parser, rc, "Requested VLAN Id validation failure");
        }
        if (vlan->vlanId() > Bridging::VlanIdOrNone::max) {
          return paramFailure(parser, malformedTlv_,
                              Zel::format("Vlan id out of bounds (%d)", vlan->vlanId()).view());
        }
        params.requestedVlanIdIs(Bridging::VlanIdOrNone(vlan->vlanId()));
        present.requestedVlanIdIs(true);
        break;
      }
      case fragIndicator_: {
        if (LdpStatusCode rc = overlay<const LdpPwFragIndicatorSubTlv>(p)->validate();
            rc != success_) {
          return paramFailure(parser, rc, "Fragmentation indicator validation failure");
        }
        params.fragCapableIs(true);
        present.fragIndicatorIs(true);
        break;
      }
      case vccvParam_: {
        const auto* vccv = overlay<const LdpPwVccvParamSubTlv>(p);
        if (LdpStatusCode rc = vccv->validate(); rc != success_) {
          return paramFailure(parser, rc, "VCCV param validation failure");
        }
        params.vccvCcTypesIs(vccv->ccTypes());
        params.vccvCvTypesIs(vccv->cvTypes());
        present.vccvParamIs(true);
        break;
      }
      default:
        LDP_TRACE_TO(traceParse, 6, "Ignoring unrecognized PW intf sub-TLV (code 0x%.2x)",
                     unsigned{p[0]});
        break;
    }
    p += sub->length();
  }
  return success_;
}

}  // namespace

LdpStatusCode parseFecTlvPwIdElement(LdpFecTlvParser* parser, uint32_t& cursor, uint32_t end,
                                     LdpFecTlvPwIdElement& element) {
  using Hdr = LdpFecTlvPwIdElementHdr;
  if (end < cursor || end - cursor < Hdr::headLength) {
    return failure(parser, malformedTlv_, "Invalid FEC PW ID Element: TLV is too small");
  }
  const uint8_t* front = parser->pkt()->front();
  const Hdr* hdr = overlay<const Hdr>(front + cursor);
  const LdpStatusCode headRc = hdr->validateHead();
  if (headRc == unknownFec_) {
    return failure(parser, headRc,
                   Zel::format("Invalid FEC PW ID Element: Unknown PW type 0x%.4x",
                               unsigned{hdr->pwType().value()}));
  }
  if (headRc != success_) {
    return failure(parser, headRc, "Invalid FEC PW ID Element: TLV value length must be 0 or >= 4");
  }
  const uint32_t announced = hdr->pwInfoLength();
  const uint32_t found = end - cursor - Hdr::headLength;
  if (found < announced) {
    return failure(parser, badTlvLength_, "Invalid FEC PW ID Element: TLV value is too small");
  }
  if (found > announced) {
    return failure(parser, badTlvLength_,
                   Zel::format("Invalid FEC PW ID Element: TLV value length mismatch. Expected %d "
                               "octets but found %d octets.",
                               int(announced), int(found)));
  }

  PwFwdEqvClass fec(Pseudowire::PseudowireId(), hdr->pwType(), hdr->controlWord());
  PwFwdEqvClassParams params;
  params.groupIdIs(hdr->groupId());
  LdpPwIntfParamFlags present;
  if (announced != 0) {
    const Pseudowire::PseudowireId pwId = hdr->pwId();
    if (!pwId)
      return failure(parser, malformedTlv_, "Invalid FEC PW ID Element: PW ID cannot be 0");
    fec.pwIdIs(pwId);
    const uint8_t* elementEnd = front + cursor + hdr->totalLength();
    if (LdpStatusCode rc = parseIntfParams(parser, hdr->intfParams(), elementEnd, params, present);
        rc != success_) {
      return rc;
    }
  }
  const PwFwdEqvClassInfo info(fec, params, present);
  LDP_TRACE_TO(traceParse, 8, "FEC PW ID Element: %s", info.stringValue().charPtr());
  element.pwFwdEqvClsIs(info);
  cursor += hdr->totalLength();
  return success_;
}

}  // namespace Ldp
