#pragma once
// Overlays on the TLVs the agent reads and writes. Each derives from LdpTlvHdr and
// its storage is the TLV's wire octets: the value fields follow the four header
// octets with no padding, every accessor reads or writes the packet in place, and
// all multi-octet fields are big-endian. A field held in network order keeps its
// raw form under the suffix Nbo; the plain name gives the host-order value and
// xIs(v) stores one. Bit-field accessors change only their own bits.
//
// validate() never looks beyond what the TLV's length field covers and never
// throws: it returns the status code of the first rule that fails, or success.
// The overlays whose type the parser knows before calling validate() (status,
// labels, hello, transport address, sequence number, hop count, path vector)
// assert that type first; the others start with validateTlvHdr().
//
// stringValue() gives the trace form of a TLV that validates, and otherwise an
// error prefix followed by the status code's name ("Error GenLabelTlv:
// badTlvLength").

#include "core/LdpTypes.h"
#include "platform/ovo/IpAddr.h"
#include "platform/ovo/IpGenAddr.h"
#include "platform/ovo/NetU16.h"
#include "platform/ovo/NetU32.h"
#include "wire/LdpHeaders.h"

namespace Ldp {

// The second half of the common hello parameters: bit 15 T (targeted hello),
// bit 14 R (request targeted hellos back), bits 13..0 reserved.
class LdpCommonHelloTargetField {
 public:
  LdpCommonHelloTargetField() = default;
  explicit LdpCommonHelloTargetField(uint16_t raw) { raw_.valueIs(raw); }

  uint16_t raw() const { return raw_.value(); }
  bool targetedHello() const { return raw() >> 15; }
  void targetedHelloIs(bool b) { raw_.valueIs(TlvDetail::withFlag<uint16_t>(raw(), 0x8000, b)); }
  bool requestSendTargetedHello() const { return (raw() >> 14) & 1; }
  void requestSendTargetedHelloIs(bool b) {
    raw_.valueIs(TlvDetail::withFlag<uint16_t>(raw(), 0x4000, b));
  }
  uint16_t reserved() const { return raw() & 0x3FFF; }
  void reservedIs(uint16_t v) { raw_.valueIs(TlvDetail::withBits<uint16_t>(raw(), 0x3FFF, v)); }

 private:
  Ovo::NetU16 raw_;
};

// The A and D octet of the common session parameters: bit 7 A (1 = downstream on
// demand), bit 6 D (loop detection); the rest is reserved.
class LdpCommonSessionParamTlvAdField {
 public:
  LdpCommonSessionParamTlvAdField() = default;
  explicit LdpCommonSessionParamTlvAdField(uint8_t raw) : raw_(raw) {}

  uint8_t raw() const { return raw_; }
  bool downstreamOnDemand() const { return raw_ >> 7; }
  void downstreamOnDemandIs(bool b) { raw_ = TlvDetail::withFlag<uint8_t>(raw_, 0x80, b); }
  // The A bit as the advertisement discipline it stands for.
  LdpLabelAdvDspl labelAdvDspl() const { return downstreamOnDemand() ? onDemand_ : unSolicited_; }
  bool loopDetect() const { return (raw_ >> 6) & 1; }
  void loopDetectIs(bool b) { raw_ = TlvDetail::withFlag<uint8_t>(raw_, 0x40, b); }

 private:
  uint8_t raw_ = 0;
};

// The value of a generic label TLV: the label is the low 20 bits; the high 12 bits
// are not the label's and are left as they are.
class LdpGenLabelTlvLabel {
 public:
  LdpGenLabelTlvLabel() = default;
  explicit LdpGenLabelTlvLabel(uint32_t raw) { labelNbo_.valueIs(raw); }

  uint32_t raw() const { return labelNbo_.value(); }
  const Ovo::NetU32& nbo() const { return labelNbo_; }
  uint32_t label() const { return raw() & 0xFFFFF; }
  void labelIs(uint32_t v) { labelNbo_.valueIs(TlvDetail::withBits<uint32_t>(raw(), 0xFFFFF, v)); }

 private:
  Ovo::NetU32 labelNbo_;
};

// The status word: bit 31 E (fatal error), bit 30 F (forward when unknown), bits
// 29..0 the status code. Codes with bit 31 set are local to this agent and have no
// wire form: statusDataIs() keeps only their low 30 bits.
class LdpStatusTlvStatusCode {
 public:
  LdpStatusTlvStatusCode() = default;
  explicit LdpStatusTlvStatusCode(uint32_t raw) { statusDataNbo_.valueIs(raw); }

  uint32_t raw() const { return statusDataNbo_.value(); }
  const Ovo::NetU32& nbo() const { return statusDataNbo_; }
  bool error() const { return raw() >> 31; }
  void errorIs(bool b) {
    statusDataNbo_.valueIs(TlvDetail::withFlag<uint32_t>(raw(), 1u << 31, b));
  }
  bool forwardUnknown() const { return (raw() >> 30) & 1; }
  void forwardUnknownIs(bool b) {
    statusDataNbo_.valueIs(TlvDetail::withFlag<uint32_t>(raw(), 1u << 30, b));
  }
  LdpStatusCode statusData() const { return static_cast<LdpStatusCode>(raw() & dataMask); }
  void statusDataIs(LdpStatusCode code) {
    statusDataNbo_.valueIs(TlvDetail::withBits<uint32_t>(raw(), dataMask, code));
  }

 private:
  static constexpr uint32_t dataMask = 0x3FFFFFFF;
  Ovo::NetU32 statusDataNbo_;
};

// The fault-tolerant session flags: bit 15 R (reconnect), bit 3 S (save state),
// bit 2 A (all-label protection), bit 1 C (checkpointing), bit 0 L (learn from
// network). The other bits are reserved.
class LdpFtSessionFlags {
 public:
  LdpFtSessionFlags() = default;
  explicit LdpFtSessionFlags(uint16_t raw) { raw_.valueIs(raw); }

  uint16_t raw() const { return raw_.value(); }
  bool reconnect() const { return raw() >> 15; }
  void reconnectIs(bool b) { flagIs(0x8000, b); }
  bool saveState() const { return (raw() >> 3) & 1; }
  void saveStateIs(bool b) { flagIs(0x8, b); }
  bool allLabelProt() const { return (raw() >> 2) & 1; }
  void allLabelProtIs(bool b) { flagIs(0x4, b); }
  bool checkPoint() const { return (raw() >> 1) & 1; }
  void checkPointIs(bool b) { flagIs(0x2, b); }
  bool learnFromNetwork() const { return raw() & 1; }
  void learnFromNetworkIs(bool b) { flagIs(0x1, b); }

 private:
  void flagIs(uint16_t mask, bool b) {
    raw_.valueIs(TlvDetail::withFlag<uint16_t>(raw(), mask, b));
  }
  Ovo::NetU16 raw_;
};

// The first value octet of a capability parameter TLV (RFC 5561): bit 7 S, set when
// the capability is being advertised, clear when withdrawn; the rest is reserved.
class LdpStateBit {
 public:
  LdpStateBit() = default;
  explicit LdpStateBit(uint8_t raw) : raw_(raw) {}

  uint8_t raw() const { return raw_; }
  bool state() const { return raw_ >> 7; }
  void stateIs(bool b) { raw_ = TlvDetail::withFlag<uint8_t>(raw_, 0x80, b); }

 private:
  uint8_t raw_ = 0;
};

// Common Hello Parameters (0x0400). Hold time in seconds.
class LdpCommonHelloTlv : public LdpTlvHdr {
 public:
  const Ovo::NetU16& holdTimeNbo() const { return holdTimeNbo_; }
  uint16_t holdTime() const { return holdTimeNbo_.value(); }
  void holdTimeIs(uint16_t v) { holdTimeNbo_.valueIs(v); }
  const LdpCommonHelloTargetField& targetHelloField() const { return targetHelloField_; }
  LdpCommonHelloTargetField& targetHelloField() { return targetHelloField_; }
  bool targetedHello() const { return targetHelloField_.targetedHello(); }
  void targetedHelloIs(bool b) { targetHelloField_.targetedHelloIs(b); }
  bool requestSendTargetedHello() const { return targetHelloField_.requestSendTargetedHello(); }
  void requestSendTargetedHelloIs(bool b) { targetHelloField_.requestSendTargetedHelloIs(b); }

  LdpStatusCode validate() const;
  // "CommonHelloTlv: HT(<hold time>),<T>,<R>"
  Zel::String stringValue() const;
  const Zel::ZelType* fwkType() const;

 private:
  Ovo::NetU16 holdTimeNbo_;
  LdpCommonHelloTargetField targetHelloField_;
};

// IPv4 Transport Address (0x0401).
class LdpIpTransportAddrTlv : public LdpTlvHdr {
 public:
  Ovo::IpAddr ipAddr() const { return Ovo::IpAddr(ipAddr_.value()); }
  void ipAddrIs(Ovo::IpAddr a) { ipAddr_.valueIs(a.value()); }

  LdpStatusCode validate() const;
  // The address, "10.0.0.1".
  Zel::String stringValue() const;
  const Zel::ZelType* fwkType() const;

 private:
  Ovo::NetU32 ipAddr_;
};

// Configuration Sequence Number (0x0402).
class LdpConfigSeqNumTlv : public LdpTlvHdr {
 public:
  const Ovo::NetU32& configSeqNumNbo() const { return configSeqNumNbo_; }
  uint32_t configSeqNum() const { return configSeqNumNbo_.value(); }
  void configSeqNumIs(uint32_t v) { configSeqNumNbo_.valueIs(v); }

  LdpStatusCode validate() const;
  // "ConfigSeqNumTlv: <number>"
  Zel::String stringValue() const;
  const Zel::ZelType* fwkType() const;

 private:
  Ovo::NetU32 configSeqNumNbo_;
};

// IPv6 Transport Address (0x0403).
class LdpIp6TransportAddrTlv : public LdpTlvHdr {
 public:
  // The address as an ipv6 IpGenAddr.
  Ovo::IpGenAddr ip6Addr() const;
  // Stores the address taken as IPv6 (an IPv4 address gives its mapped form).
  void ip6AddrIs(const Ovo::IpGenAddr& a);

  LdpStatusCode validate() const;
  // The address in RFC 5952 form.
  Zel::String stringValue() const;
  const Zel::ZelType* fwkType() const;

 private:
  uint8_t ip6Addr_[16];
};

// Common Session Parameters (0x0500). Keepalive time in seconds.
class LdpCommonSessionParamTlv : public LdpTlvHdr {
 public:
  const Ovo::NetU16& protocolVersionNbo() const { return protocolVersionNbo_; }
  uint16_t protocolVersion() const { return protocolVersionNbo_.value(); }
  void protocolVersionIs(uint16_t v) { protocolVersionNbo_.valueIs(v); }
  const Ovo::NetU16& keepAliveTimeNbo() const { return keepAliveTimeNbo_; }
  uint16_t keepAliveTime() const { return keepAliveTimeNbo_.value(); }
  void keepAliveTimeIs(uint16_t v) { keepAliveTimeNbo_.valueIs(v); }
  const LdpCommonSessionParamTlvAdField& adField() const { return adField_; }
  LdpCommonSessionParamTlvAdField& adField() { return adField_; }
  uint8_t pathVecLim() const { return pathVecLim_; }
  void pathVecLimIs(uint8_t v) { pathVecLim_ = v; }
  const Ovo::NetU16& maxPduLengthNbo() const { return maxPduLengthNbo_; }
  uint16_t maxPduLength() const { return maxPduLengthNbo_.value(); }
  void maxPduLengthIs(uint16_t v) { maxPduLengthNbo_.valueIs(v); }
  const LdpIdentifier& recvLdpIdentifier() const { return recvLdpIdentifier_; }
  void recvLdpIdentifierIs(const LdpIdentifier& id) { recvLdpIdentifier_ = id; }

  // The largest maximum PDU length a peer may propose; 0 stands for the default.
  static constexpr uint16_t maxPduLengthLimit = 9600;

  LdpStatusCode validate() const;
  // "LdpCommonSessionParamTlv: KA(<ka>), A(<a>), D(<d>), PduLen(<len>), <receiver id>"
  Zel::String stringValue() const;
  const Zel::ZelType* fwkType() const;

 private:
  Ovo::NetU16 protocolVersionNbo_;
  Ovo::NetU16 keepAliveTimeNbo_;
  LdpCommonSessionParamTlvAdField adField_;
  uint8_t pathVecLim_;
  Ovo::NetU16 maxPduLengthNbo_;
  LdpIdentifier recvLdpIdentifier_;
};

// Address List (0x0101): the address family number (1 IPv4, 2 IPv6), then the
// addresses back to back.
class LdpAddressListTlv : public LdpTlvHdr {
 public:
  const Ovo::NetU16& addressFamilyNbo() const { return addressFamilyNbo_; }
  uint16_t addressFamily() const { return addressFamilyNbo_.value(); }
  uint16_t family() const { return addressFamily(); }
  void addressFamilyIs(uint16_t v) { addressFamilyNbo_.valueIs(v); }

  // How many whole addresses the length field covers; 0 when it covers none, when
  // the addresses do not fill it exactly, or for a family other than 1 and 2.
  uint32_t numAddress() const;
  // The offset-th address, of the TLV's family.
  Ovo::IpGenAddr address(uint32_t offset) const;

  LdpStatusCode validate() const;
  // "LdpAddressListTlv( <family>, <count>, <first address>, ... )" with the family
  // as "IPv4" or "IPv6"; "LdpAddressListTlv( Invalid TLV )" when invalid.
  Zel::String stringValue() const;
  const Zel::ZelType* fwkType() const;

 private:
  Ovo::NetU16 addressFamilyNbo_;
};

// Generic Label (0x0200).
class LdpGenLabelTlv : public LdpTlvHdr {
 public:
  const Ovo::NetU32& labelNbo() const { return labelField_.nbo(); }
  const LdpGenLabelTlvLabel& labelField() const { return labelField_; }
  LdpGenLabelTlvLabel& labelField() { return labelField_; }
  uint32_t label() const { return labelField_.label(); }
  void labelIs(uint32_t v) { labelField_.labelIs(v); }

  LdpStatusCode validate() const;
  // "GenLabelTlv: L(<label>)"
  Zel::String stringValue() const;
  const Zel::ZelType* fwkType() const;

 private:
  LdpGenLabelTlvLabel labelField_;
};

// Label Request Message ID (0x0600): the id of the Label Request referred to.
class LdpLabelReqMsgIdTlv : public LdpTlvHdr {
 public:
  const Ovo::NetU32& reqMsgIdNbo() const { return reqMsgIdNbo_; }
  uint32_t reqMsgId() const { return reqMsgIdNbo_.value(); }
  void reqMsgIdIs(uint32_t v) { reqMsgIdNbo_.valueIs(v); }

  LdpStatusCode validate() const;
  // "LabelReqMsgIdTlv: ID(<id>)"
  Zel::String stringValue() const;
  const Zel::ZelType* fwkType() const;

 private:
  Ovo::NetU32 reqMsgIdNbo_;
};

// Hop Count (0x0103).
class LdpHopCountTlv : public LdpTlvHdr {
 public:
  uint8_t hopCount() const { return hopCount_; }
  void hopCountIs(uint8_t v) { hopCount_ = v; }

  LdpStatusCode validate() const;
  // "LdpHopCountTlv: <count>"
  Zel::String stringValue() const;
  const Zel::ZelType* fwkType() const;

 private:
  uint8_t hopCount_;
};

// Path Vector (0x0104): the LSR ids the message has passed, four octets each.
class LdpPathVectorTlv : public LdpTlvHdr {
 public:
  // length / 4, or 0 when the length is 0 or no multiple of 4.
  uint32_t lsrIdNum() const;
  // The i-th LSR id; 0.0.0.0 past the last one.
  Ovo::IpAddr lsrId(uint32_t i) const;
  // The 1-based position of `addr` among the LSR ids, 0 when absent.
  uint32_t lsrIdPosition(Ovo::IpAddr addr) const;

  LdpStatusCode validate() const;
  // "LdpPathVectorTlv: [1.1.1.1, 2.2.2.2]": the ids in order, ", " between them.
  Zel::String stringValue() const;
  const Zel::ZelType* fwkType() const;
};

// Status (0x0300): the status word, then the id and type of the message the
// status refers to (0 when none).
class LdpStatusTlv : public LdpTlvHdr {
 public:
  const LdpStatusTlvStatusCode& statusCode() const { return statusCode_; }
  LdpStatusTlvStatusCode& statusCode() { return statusCode_; }
  const Ovo::NetU32& statusDataNbo() const { return statusCode_.nbo(); }
  bool statusError() const { return statusCode_.error(); }
  void statusErrorIs(bool b) { statusCode_.errorIs(b); }
  bool statusForwardUnknown() const { return statusCode_.forwardUnknown(); }
  void statusForwardUnknownIs(bool b) { statusCode_.forwardUnknownIs(b); }
  LdpStatusCode statusData() const { return statusCode_.statusData(); }
  // Replaces bits 29..0 with the code's low 30 bits; E and F stay as they are.
  void statusDataIs(LdpStatusCode code) { statusCode_.statusDataIs(code); }
  const Ovo::NetU32& msgIdNbo() const { return msgIdNbo_; }
  uint32_t msgId() const { return msgIdNbo_.value(); }
  void msgIdIs(uint32_t v) { msgIdNbo_.valueIs(v); }
  const Ovo::NetU16& msgTypeNbo() const { return msgTypeNbo_; }
  LdpMsgType msgType() const { return static_cast<LdpMsgType>(msgTypeNbo_.value()); }
  void msgTypeIs(uint16_t v) { msgTypeNbo_.valueIs(v); }

  LdpStatusCode validate() const;
  // "StatusTlv(<code>): <msg type>:<msg id> u(<U>), fu(<F>), e(<E>), efu(<F>)" with
  // the TLV header's U and F bits, then the status word's E and F bits.
  Zel::String stringValue() const;
  const Zel::ZelType* fwkType() const;

 private:
  LdpStatusTlvStatusCode statusCode_;
  Ovo::NetU32 msgIdNbo_;
  Ovo::NetU16 msgTypeNbo_;
};

// Fault Tolerant Session (0x0503, RFC 3479). Both times in milliseconds.
class LdpFtSessionTlv : public LdpTlvHdr {
 public:
  const LdpFtSessionFlags& ftFlags() const { return ftFlags_; }
  LdpFtSessionFlags& ftFlags() { return ftFlags_; }
  uint16_t reserved() const { return reserved_.value(); }
  void reservedIs(uint16_t v) { reserved_.valueIs(v); }
  const Ovo::NetU32& ftReconnectTimeoutNbo() const { return ftReconnectTimeoutNbo_; }
  uint32_t ftReconnectTimeout() const { return ftReconnectTimeoutNbo_.value(); }
  void ftReconnectTimeoutIs(uint32_t v) { ftReconnectTimeoutNbo_.valueIs(v); }
  const Ovo::NetU32& ftRecoveryTimeNbo() const { return ftRecoveryTimeNbo_; }
  uint32_t ftRecoveryTime() const { return ftRecoveryTimeNbo_.value(); }
  void ftRecoveryTimeIs(uint32_t v) { ftRecoveryTimeNbo_.valueIs(v); }

  LdpStatusCode validate() const;
  // "LdpFtSessionTlv: R(r), S(s), A(a), C(c), L(l), FTReconnect(ms), FTRecovery(ms)"
  Zel::String stringValue() const;
  const Zel::ZelType* fwkType() const;

 private:
  LdpFtSessionFlags ftFlags_;
  Ovo::NetU16 reserved_;
  Ovo::NetU32 ftReconnectTimeoutNbo_;
  Ovo::NetU32 ftRecoveryTimeNbo_;
};

// A capability parameter TLV (0x0506 to 0x050F): the state bit octet, then data
// particular to the capability, which its own parser reads.
class LdpCapabilityParameterTlv : public LdpTlvHdr {
 public:
  const LdpStateBit& stateBit() const { return stateBit_; }
  LdpStateBit& stateBit() { return stateBit_; }
  bool state() const { return stateBit_.state(); }
  void stateIs(bool b) { stateBit_.stateIs(b); }

  const Zel::ZelType* fwkType() const;

 private:
  LdpStateBit stateBit_;
};

static_assert(sizeof(LdpCommonHelloTargetField) == 2 && alignof(LdpCommonHelloTargetField) == 1);
static_assert(sizeof(LdpCommonSessionParamTlvAdField) == 1);
static_assert(sizeof(LdpGenLabelTlvLabel) == 4 && alignof(LdpGenLabelTlvLabel) == 1);
static_assert(sizeof(LdpStatusTlvStatusCode) == 4 && alignof(LdpStatusTlvStatusCode) == 1);
static_assert(sizeof(LdpFtSessionFlags) == 2 && alignof(LdpFtSessionFlags) == 1);
static_assert(sizeof(LdpStateBit) == 1);
static_assert(sizeof(LdpIdentifier) == 6 && alignof(LdpIdentifier) == 1);

static_assert(sizeof(LdpCommonHelloTlv) == 8 && alignof(LdpCommonHelloTlv) == 1);
static_assert(sizeof(LdpIpTransportAddrTlv) == 8 && alignof(LdpIpTransportAddrTlv) == 1);
static_assert(sizeof(LdpConfigSeqNumTlv) == 8 && alignof(LdpConfigSeqNumTlv) == 1);
static_assert(sizeof(LdpIp6TransportAddrTlv) == 20 && alignof(LdpIp6TransportAddrTlv) == 1);
static_assert(sizeof(LdpCommonSessionParamTlv) == 18 && alignof(LdpCommonSessionParamTlv) == 1);
static_assert(sizeof(LdpAddressListTlv) == 6 && alignof(LdpAddressListTlv) == 1);
static_assert(sizeof(LdpGenLabelTlv) == 8 && alignof(LdpGenLabelTlv) == 1);
static_assert(sizeof(LdpLabelReqMsgIdTlv) == 8 && alignof(LdpLabelReqMsgIdTlv) == 1);
static_assert(sizeof(LdpHopCountTlv) == 5 && alignof(LdpHopCountTlv) == 1);
static_assert(sizeof(LdpPathVectorTlv) == 4 && alignof(LdpPathVectorTlv) == 1);
static_assert(sizeof(LdpStatusTlv) == 14 && alignof(LdpStatusTlv) == 1);
static_assert(sizeof(LdpFtSessionTlv) == 16 && alignof(LdpFtSessionTlv) == 1);
static_assert(sizeof(LdpCapabilityParameterTlv) == 5 && alignof(LdpCapabilityParameterTlv) == 1);

}  // namespace Ldp
