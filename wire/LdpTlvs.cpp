#include "wire/LdpTlvs.h"

#include <cstring>
#include <string>

#include "core/LdpTrace.h"
#include "platform/zel/Assert.h"
#include "platform/zel/Format.h"
#include "wire/LdpTlvCommon.h"

namespace Ldp {

namespace {

using TlvCommon::errorForm;
using TlvCommon::lengthCheck;
using TlvCommon::tlvType;

const Zel::ZelType commonHelloTlvType = tlvType("Ldp::LdpCommonHelloTlv");
const Zel::ZelType ipTransportAddrTlvType = tlvType("Ldp::LdpIpTransportAddrTlv");
const Zel::ZelType configSeqNumTlvType = tlvType("Ldp::LdpConfigSeqNumTlv");
const Zel::ZelType ip6TransportAddrTlvType = tlvType("Ldp::LdpIp6TransportAddrTlv");
const Zel::ZelType commonSessionParamTlvType = tlvType("Ldp::LdpCommonSessionParamTlv");
const Zel::ZelType addressListTlvType = tlvType("Ldp::LdpAddressListTlv");
const Zel::ZelType genLabelTlvType = tlvType("Ldp::LdpGenLabelTlv");
const Zel::ZelType labelReqMsgIdTlvType = tlvType("Ldp::LdpLabelReqMsgIdTlv");
const Zel::ZelType hopCountTlvType = tlvType("Ldp::LdpHopCountTlv");
const Zel::ZelType pathVectorTlvType = tlvType("Ldp::LdpPathVectorTlv");
const Zel::ZelType statusTlvType = tlvType("Ldp::LdpStatusTlv");
const Zel::ZelType ftSessionTlvType = tlvType("Ldp::LdpFtSessionTlv");
const Zel::ZelType capabilityParameterTlvType = tlvType("Ldp::LdpCapabilityParameterTlv");

uint32_t u32At(const uint8_t* p) { return reinterpret_cast<const Ovo::NetU32*>(p)->value(); }

}  // namespace

// --- LdpCommonHelloTlv

LdpStatusCode LdpCommonHelloTlv::validate() const {
  ZEL_ASSERT(type() == commonHelloTlv_);
  return lengthCheck(*this, 4);
}

Zel::String LdpCommonHelloTlv::stringValue() const {
  if (LdpStatusCode rc = validate(); rc != success_)
    return errorForm("Error LdpCommonHelloTlv: ", rc);
  return Zel::format("CommonHelloTlv: HT(%d),%d,%d", holdTime(), int(targetedHello()),
                     int(requestSendTargetedHello()));
}

const Zel::ZelType* LdpCommonHelloTlv::fwkType() const { return &commonHelloTlvType; }

// --- LdpIpTransportAddrTlv

LdpStatusCode LdpIpTransportAddrTlv::validate() const {
  ZEL_ASSERT(type() == ipv4TransportAddrTlv_);
  return lengthCheck(*this, 4);
}

Zel::String LdpIpTransportAddrTlv::stringValue() const {
  if (LdpStatusCode rc = validate(); rc != success_)
    return errorForm("Error IpTransportAddrTlv: ", rc);
  return ipAddr().stringValue();
}

const Zel::ZelType* LdpIpTransportAddrTlv::fwkType() const { return &ipTransportAddrTlvType; }

// --- LdpConfigSeqNumTlv

LdpStatusCode LdpConfigSeqNumTlv::validate() const {
  ZEL_ASSERT(type() == configSeqNumTlv_);
  return lengthCheck(*this, 4);
}

Zel::String LdpConfigSeqNumTlv::stringValue() const {
  if (LdpStatusCode rc = validate(); rc != success_)
    return errorForm("Error ConfigSeqNumTlv: ", rc);
  return Zel::format("ConfigSeqNumTlv: %u", configSeqNum());
}

const Zel::ZelType* LdpConfigSeqNumTlv::fwkType() const { return &configSeqNumTlvType; }

// --- LdpIp6TransportAddrTlv

Ovo::IpGenAddr LdpIp6TransportAddrTlv::ip6Addr() const {
  Ovo::IpGenAddr::Octets o;
  std::memcpy(o.data(), ip6Addr_, o.size());
  return Ovo::IpGenAddr(o);
}

void LdpIp6TransportAddrTlv::ip6AddrIs(const Ovo::IpGenAddr& a) {
  std::memcpy(ip6Addr_, a.v6Octets().data(), sizeof ip6Addr_);
}

LdpStatusCode LdpIp6TransportAddrTlv::validate() const {
  ZEL_ASSERT(type() == ipv6TransportAddrTlv_);
  return lengthCheck(*this, 16);
}

Zel::String LdpIp6TransportAddrTlv::stringValue() const {
  if (LdpStatusCode rc = validate(); rc != success_)
    return errorForm("Error Ip6TransportAddrTlv: ", rc);
  return ip6Addr().stringValue();
}

const Zel::ZelType* LdpIp6TransportAddrTlv::fwkType() const { return &ip6TransportAddrTlvType; }

// --- LdpCommonSessionParamTlv

LdpStatusCode LdpCommonSessionParamTlv::validate() const {
  if (LdpStatusCode rc = validateTlvHdr(); rc != success_) return rc;
  if (length() != 14) return badTlvLength_;
  if (protocolVersion() != 1) {
    LDP_TRACE_TO(traceWire, 6, "   Rejected. Protocol version is not 1");
    return badVersion_;
  }
  // KeepAlives go out every third of the keepalive time, in whole seconds: below 3
  // there is no interval left.
  if (keepAliveTime() < 3) {
    LDP_TRACE_TO(traceWire, 6, "   Rejected. keepAliveTime is out of range.");
    return sessionRejectBadKeepAliveTime_;
  }
  if (maxPduLength() > maxPduLengthLimit) {
    LDP_TRACE_TO(traceWire, 6, "   Rejected. maxPduLength is out of range.");
    return rejectMaxPduLength_;
  }
  return success_;
}

Zel::String LdpCommonSessionParamTlv::stringValue() const {
  if (LdpStatusCode rc = validate(); rc != success_) {
    return errorForm("Error LdpCommonSessionParamTlv: ", rc);
  }
  return Zel::format("LdpCommonSessionParamTlv: KA(%d), A(%d), D(%d), PduLen(%d), ",
                     keepAliveTime(), int(adField_.downstreamOnDemand()),
                     int(adField_.loopDetect()), maxPduLength()) +
         recvLdpIdentifier_.stringValue().view();
}

const Zel::ZelType* LdpCommonSessionParamTlv::fwkType() const { return &commonSessionParamTlvType; }

// --- LdpAddressListTlv

uint32_t LdpAddressListTlv::numAddress() const {
  const uint32_t len = length();
  if (len < 3) return 0;
  const uint32_t addrLen = addressFamily() == 1 ? 4 : addressFamily() == 2 ? 16 : 0;
  if (addrLen == 0 || (len - 2) % addrLen != 0) return 0;
  return (len - 2) / addrLen;
}

Ovo::IpGenAddr LdpAddressListTlv::address(uint32_t offset) const {
  ZEL_ASSERT(offset < numAddress());
  const uint8_t* addrs = value() + 2;
  if (addressFamily() == 1) return Ovo::IpGenAddr(Ovo::IpAddr(u32At(addrs + 4 * offset)));
  Ovo::IpGenAddr::Octets o;
  std::memcpy(o.data(), addrs + 16 * offset, o.size());
  return Ovo::IpGenAddr(o);
}

LdpStatusCode LdpAddressListTlv::validate() const {
  if (LdpStatusCode rc = validateTlvHdr(); rc != success_) return rc;
  // A TLV too short to hold the family has no family to judge: its octets may lie
  // past the end of the packet.
  if (length() < 2) return malformedTlv_;
  if (addressFamily() != 1 && addressFamily() != 2) return unsupportedAddressFamily_;
  if (numAddress() == 0) return malformedTlv_;
  return success_;
}

// The family, the count and the first address: enough to recognise the list in a
// trace without writing out every address.
Zel::String LdpAddressListTlv::stringValue() const {
  if (validate() != success_) return Zel::String("LdpAddressListTlv( Invalid TLV )");
  return Zel::format("LdpAddressListTlv( %s, %u, ", addressFamily() == 1 ? "IPv4" : "IPv6",
                     numAddress()) +
         address(0).stringValue().view() + ", ... )";
}

const Zel::ZelType* LdpAddressListTlv::fwkType() const { return &addressListTlvType; }

// --- LdpGenLabelTlv

LdpStatusCode LdpGenLabelTlv::validate() const {
  ZEL_ASSERT(type() == genLabelTlv_);
  return lengthCheck(*this, 4);
}

Zel::String LdpGenLabelTlv::stringValue() const {
  if (LdpStatusCode rc = validate(); rc != success_) return errorForm("Error GenLabelTlv: ", rc);
  return Zel::format("GenLabelTlv: L(%u)", label());
}

const Zel::ZelType* LdpGenLabelTlv::fwkType() const { return &genLabelTlvType; }

// --- LdpLabelReqMsgIdTlv

LdpStatusCode LdpLabelReqMsgIdTlv::validate() const {
  ZEL_ASSERT(type() == labelReqMsgIdTlv_);
  return lengthCheck(*this, 4);
}

Zel::String LdpLabelReqMsgIdTlv::stringValue() const {
  if (LdpStatusCode rc = validate(); rc != success_)
    return errorForm("Error LabelReqMsgIdTlv: ", rc);
  return Zel::format("LabelReqMsgIdTlv: ID(%u)", reqMsgId());
}

const Zel::ZelType* LdpLabelReqMsgIdTlv::fwkType() const { return &labelReqMsgIdTlvType; }

// --- LdpHopCountTlv

LdpStatusCode LdpHopCountTlv::validate() const {
  ZEL_ASSERT(type() == hopCountTlv_);
  return lengthCheck(*this, 1);
}

Zel::String LdpHopCountTlv::stringValue() const {
  if (LdpStatusCode rc = validate(); rc != success_) return errorForm("Error LdpHopCountTlv: ", rc);
  return Zel::format("LdpHopCountTlv: %d", hopCount());
}

const Zel::ZelType* LdpHopCountTlv::fwkType() const { return &hopCountTlvType; }

// --- LdpPathVectorTlv

uint32_t LdpPathVectorTlv::lsrIdNum() const {
  const uint32_t len = length();
  return len % 4 == 0 ? len / 4 : 0;
}

Ovo::IpAddr LdpPathVectorTlv::lsrId(uint32_t i) const {
  if (i >= lsrIdNum()) return Ovo::IpAddr();
  return Ovo::IpAddr(u32At(value() + 4 * i));
}

uint32_t LdpPathVectorTlv::lsrIdPosition(Ovo::IpAddr addr) const {
  const uint32_t n = lsrIdNum();
  for (uint32_t i = 0; i < n; ++i) {
    if (u32At(value() + 4 * i) == addr.value()) return i + 1;
  }
  return 0;
}

LdpStatusCode LdpPathVectorTlv::validate() const {
  ZEL_ASSERT(type() == pathVectorTlv_);
  return lsrIdNum() == 0 ? badTlvLength_ : success_;
}

Zel::String LdpPathVectorTlv::stringValue() const {
  if (LdpStatusCode rc = validate(); rc != success_)
    return errorForm("Error LdpPathVectorTlv: ", rc);
  std::string s = "LdpPathVectorTlv: [";
  const uint32_t n = lsrIdNum();
  for (uint32_t i = 0; i < n; ++i) {
    if (i) s += ", ";
    s += lsrId(i).stringValue().view();
  }
  s += ']';
  return Zel::String(s);
}

const Zel::ZelType* LdpPathVectorTlv::fwkType() const { return &pathVectorTlvType; }

// --- LdpStatusTlv

LdpStatusCode LdpStatusTlv::validate() const {
  ZEL_ASSERT(type() == statusTlv_);
  return lengthCheck(*this, 10);
}

Zel::String LdpStatusTlv::stringValue() const {
  if (LdpStatusCode rc = validate(); rc != success_) return errorForm("Error LdpStatusTlv: ", rc);
  return Zel::format("StatusTlv(%s): %s:%u u(%d), fu(%d), e(%d), efu(%d)",
                     Ldp::stringValue(statusData()).charPtr(),
                     Ldp::stringValue(msgType()).charPtr(), msgId(), int(unknown()),
                     int(forwardUnknown()), int(statusError()), int(statusForwardUnknown()));
}

const Zel::ZelType* LdpStatusTlv::fwkType() const { return &statusTlvType; }

// --- LdpFtSessionTlv

LdpStatusCode LdpFtSessionTlv::validate() const {
  if (LdpStatusCode rc = validateTlvHdr(); rc != success_) return rc;
  if (length() != 12) return badTlvLength_;
  // The S, A, C and L combinations that have a meaning: L alone, C alone, A with C,
  // and S alone or with C, A, or both.
  switch (ftFlags_.raw() & 0xF) {
    case 1:
    case 2:
    case 6:
    case 8:
    case 10:
    case 12:
    case 14:
      return success_;
    default:
      return malformedTlv_;
  }
}

Zel::String LdpFtSessionTlv::stringValue() const {
  if (LdpStatusCode rc = validate(); rc != success_) return errorForm("Invalid FtSessionTlv: ", rc);
  return Zel::format(
      "LdpFtSessionTlv: R(%d), S(%d), A(%d), C(%d), L(%d), FTReconnect(%u), FTRecovery(%u)",
      int(ftFlags_.reconnect()), int(ftFlags_.saveState()), int(ftFlags_.allLabelProt()),
      int(ftFlags_.checkPoint()), int(ftFlags_.learnFromNetwork()), ftReconnectTimeout(),
      ftRecoveryTime());
}

const Zel::ZelType* LdpFtSessionTlv::fwkType() const { return &ftSessionTlvType; }

// --- LdpCapabilityParameterTlv

const Zel::ZelType* LdpCapabilityParameterTlv::fwkType() const {
  return &capabilityParameterTlvType;
}

}  // namespace Ldp
