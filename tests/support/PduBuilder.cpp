#include "tests/support/PduBuilder.h"

#include <algorithm>
#include <initializer_list>

#include "core/LdpTypes.h"

namespace LdpTest {

namespace {
// Every length field counts the octets after it: those after the first four.
constexpr size_t uncounted = 4;

void push16(std::vector<uint8_t>& v, uint32_t x) {
  v.push_back(static_cast<uint8_t>(x >> 8));
  v.push_back(static_cast<uint8_t>(x));
}

void push32(std::vector<uint8_t>& v, uint32_t x) {
  push16(v, x >> 16);
  push16(v, x & 0xFFFF);
}

// Leading octets followed by a tail, sized once: g++ -O3 misreads a range insert
// into a vector made from a short list as copying past the list (-Warray-bounds).
std::vector<uint8_t> joined(std::initializer_list<uint8_t> head, const std::vector<uint8_t>& tail) {
  std::vector<uint8_t> v(head.size() + tail.size());
  std::copy(tail.begin(), tail.end(), std::copy(head.begin(), head.end(), v.begin()));
  return v;
}

std::vector<uint8_t> words(const std::vector<uint32_t>& ws) {
  std::vector<uint8_t> v;
  for (uint32_t w : ws) push32(v, w);
  return v;
}
}  // namespace

PduBuilder::PduBuilder(const Ldp::LdpIdentifier& id) : hasPduHeader_(true) {
  push16(out_, 1);
  push16(out_, 0);  // the length, filled in by bytes()
  push32(out_, id.lsrId().value());
  push16(out_, id.labelSpace().value());
}

PduBuilder PduBuilder::bare() { return PduBuilder(); }

PduBuilder& PduBuilder::version(uint16_t v) {
  if (hasPduHeader_) put16(0, v);
  return *this;
}

PduBuilder& PduBuilder::pduLength(uint16_t field) {
  pduLength_ = field;
  return *this;
}

PduBuilder& PduBuilder::message(uint32_t type, uint32_t msgId, uint16_t bits) {
  end();
  openMsg_ = out_.size();
  lastMsg_ = openMsg_;
  push16(out_, (type & 0x7FFF) | (bits & uBit));
  push16(out_, 0);
  push32(out_, msgId);
  return *this;
}

PduBuilder& PduBuilder::msgLength(uint16_t field) {
  if (openMsg_) {
    openMsgLength_ = field;
  } else if (lastMsg_) {
    put16(*lastMsg_ + 2, field);
  }
  return *this;
}

PduBuilder& PduBuilder::end() {
  if (!openMsg_) return *this;
  put16(*openMsg_ + 2,
        openMsgLength_.value_or(static_cast<uint16_t>(out_.size() - *openMsg_ - uncounted)));
  openMsg_.reset();
  openMsgLength_.reset();
  return *this;
}

PduBuilder& PduBuilder::tlv(uint32_t type, const std::vector<uint8_t>& value, uint16_t bits) {
  lastTlv_ = out_.size();
  push16(out_, (type & 0x3FFF) | (bits & (uBit | fBit)));
  push16(out_, static_cast<uint32_t>(value.size()));
  out_.insert(out_.end(), value.begin(), value.end());
  return *this;
}

PduBuilder& PduBuilder::tlvLength(uint16_t field) {
  if (lastTlv_) put16(*lastTlv_ + 2, field);
  return *this;
}

PduBuilder& PduBuilder::raw(const std::vector<uint8_t>& octets) {
  out_.insert(out_.end(), octets.begin(), octets.end());
  return *this;
}

PduBuilder& PduBuilder::truncateTo(size_t n) {
  truncateTo_ = n;
  return *this;
}

std::vector<uint8_t> PduBuilder::bytes() const {
  PduBuilder b = *this;
  b.end();
  if (b.hasPduHeader_) {
    b.put16(2, b.pduLength_.value_or(static_cast<uint16_t>(b.out_.size() - uncounted)));
  }
  if (b.truncateTo_) b.out_.resize(std::min(*b.truncateTo_, b.out_.size()));
  return std::move(b.out_);
}

Zel::Ptr<Ovo::Pkt> PduBuilder::pkt(size_t lead) const {
  std::vector<uint8_t> octets(lead, 0xEE);
  const std::vector<uint8_t> pdu = bytes();
  octets.insert(octets.end(), pdu.begin(), pdu.end());
  return Ovo::pktFactory(octets.data(), octets.size());
}

PduBuilder& PduBuilder::commonHello(uint16_t holdTime, bool targeted, bool requestTargeted) {
  std::vector<uint8_t> v;
  push16(v, holdTime);
  push16(v, (targeted ? 0x8000u : 0u) | (requestTargeted ? 0x4000u : 0u));
  return tlv(Ldp::commonHelloTlv_, v);
}

PduBuilder& PduBuilder::ipv4Transport(uint32_t addr) {
  return tlv(Ldp::ipv4TransportAddrTlv_, words({addr}));
}

PduBuilder& PduBuilder::ipv6Transport(const std::vector<uint8_t>& addr16) {
  return tlv(Ldp::ipv6TransportAddrTlv_, addr16);
}

PduBuilder& PduBuilder::configSeqNum(uint32_t n) { return tlv(Ldp::configSeqNumTlv_, words({n})); }

PduBuilder& PduBuilder::sessionParams(uint16_t keepAlive, bool onDemand, bool loopDetect,
                                      uint8_t pvLimit, uint16_t maxPdu,
                                      const Ldp::LdpIdentifier& receiver) {
  std::vector<uint8_t> v;
  push16(v, 1);
  push16(v, keepAlive);
  v.push_back(static_cast<uint8_t>((onDemand ? 0x80 : 0) | (loopDetect ? 0x40 : 0)));
  v.push_back(pvLimit);
  push16(v, maxPdu);
  push32(v, receiver.lsrId().value());
  push16(v, receiver.labelSpace().value());
  return tlv(Ldp::commonSessionParamTlv_, v);
}

PduBuilder& PduBuilder::ftSession(uint16_t flags, uint32_t reconnectMs, uint32_t recoveryMs) {
  std::vector<uint8_t> v;
  push16(v, flags);
  push16(v, 0);
  push32(v, reconnectMs);
  push32(v, recoveryMs);
  return tlv(Ldp::ftSessionTlv_, v);
}

PduBuilder& PduBuilder::capability(uint32_t type, bool state, const std::vector<uint8_t>& data) {
  return tlv(type, joined({static_cast<uint8_t>(state ? 0x80 : 0)}, data), uBit);
}

PduBuilder& PduBuilder::ipv4AddressList(const std::vector<uint32_t>& addrs) {
  std::vector<uint8_t> v;
  push16(v, 1);
  const std::vector<uint8_t> a = words(addrs);
  v.insert(v.end(), a.begin(), a.end());
  return tlv(Ldp::addrListTlv_, v);
}

PduBuilder& PduBuilder::genLabel(uint32_t label) { return tlv(Ldp::genLabelTlv_, words({label})); }

PduBuilder& PduBuilder::labelReqMsgId(uint32_t id) {
  return tlv(Ldp::labelReqMsgIdTlv_, words({id}));
}

PduBuilder& PduBuilder::hopCount(uint8_t count) { return tlv(Ldp::hopCountTlv_, {count}); }

PduBuilder& PduBuilder::pathVector(const std::vector<uint32_t>& lsrIds) {
  return tlv(Ldp::pathVectorTlv_, words(lsrIds));
}

PduBuilder& PduBuilder::status(uint32_t word, uint32_t msgId, uint16_t msgType) {
  std::vector<uint8_t> v = words({word, msgId});
  push16(v, msgType);
  return tlv(Ldp::statusTlv_, v);
}

PduBuilder& PduBuilder::pwStatus(uint32_t word) { return tlv(Ldp::pwStatusTlv_, words({word})); }

PduBuilder& PduBuilder::fec(const std::vector<std::vector<uint8_t>>& elements) {
  std::vector<uint8_t> v;
  for (const std::vector<uint8_t>& e : elements) v.insert(v.end(), e.begin(), e.end());
  return tlv(Ldp::fecTlv_, v);
}

std::vector<uint8_t> wildcardFec() { return {0x01}; }

std::vector<uint8_t> pwIdFec(uint16_t pwType, uint32_t groupId, std::optional<uint32_t> pwId,
                             const std::vector<uint8_t>& intfParams) {
  std::vector<uint8_t> v = {0x80};
  push16(v, pwType);
  v.push_back(static_cast<uint8_t>(pwId ? 4 + intfParams.size() : 0));
  push32(v, groupId);
  if (pwId) {
    push32(v, *pwId);
    v.insert(v.end(), intfParams.begin(), intfParams.end());
  }
  return v;
}

std::vector<uint8_t> pwSubTlv(uint8_t type, uint8_t len, uint8_t fill) {
  std::vector<uint8_t> b(len < 2 ? 2 : len, fill);
  b[0] = type;
  b[1] = len;
  return b;
}

void PduBuilder::put16(size_t at, uint16_t v) {
  out_[at] = static_cast<uint8_t>(v >> 8);
  out_[at + 1] = static_cast<uint8_t>(v);
}

namespace {

std::vector<uint8_t> addrElement(uint8_t type, uint16_t family, uint8_t lengthField,
                                 const std::vector<uint8_t>& octets) {
  return joined(
      {type, static_cast<uint8_t>(family >> 8), static_cast<uint8_t>(family), lengthField}, octets);
}

}  // namespace

std::vector<uint8_t> prefixElement(uint16_t family, uint8_t preLen,
                                   const std::vector<uint8_t>& octets) {
  return addrElement(0x02, family, preLen, octets);
}

std::vector<uint8_t> hostElement(uint16_t family, const std::vector<uint8_t>& addr) {
  return addrElement(0x03, family, static_cast<uint8_t>(addr.size()), addr);
}

std::vector<uint8_t> p2mpElement(uint16_t family, const std::vector<uint8_t>& root,
                                 const std::vector<uint8_t>& opaque,
                                 std::optional<uint16_t> opaqueLength) {
  std::vector<uint8_t> e = addrElement(0x06, family, static_cast<uint8_t>(root.size()), root);
  const uint16_t len = opaqueLength.value_or(static_cast<uint16_t>(opaque.size()));
  e.push_back(static_cast<uint8_t>(len >> 8));
  e.push_back(static_cast<uint8_t>(len));
  e.insert(e.end(), opaque.begin(), opaque.end());
  return e;
}

std::vector<uint8_t> genericLspId(uint32_t id) {
  std::vector<uint8_t> v = {0x01, 0x00, 0x04};
  push32(v, id);
  return v;
}

}  // namespace LdpTest
