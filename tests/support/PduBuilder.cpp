#include "tests/support/PduBuilder.h"

#include <algorithm>

namespace LdpTest {

namespace {
// Every length field counts the octets after it: those after the first four.
constexpr size_t uncounted = 4;
}  // namespace

PduBuilder::PduBuilder(const Ldp::LdpIdentifier& id) : hasPduHeader_(true) {
  append16(1);
  append16(0);  // the length, filled in by bytes()
  append32(id.lsrId().value());
  append16(id.labelSpace().value());
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
  append16(static_cast<uint16_t>((type & 0x7FFF) | (bits & uBit)));
  append16(0);
  append32(msgId);
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
  append16(static_cast<uint16_t>((type & 0x3FFF) | (bits & (uBit | fBit))));
  append16(static_cast<uint16_t>(value.size()));
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

void PduBuilder::put16(size_t at, uint16_t v) {
  out_[at] = static_cast<uint8_t>(v >> 8);
  out_[at + 1] = static_cast<uint8_t>(v);
}

void PduBuilder::append16(uint16_t v) {
  out_.push_back(static_cast<uint8_t>(v >> 8));
  out_.push_back(static_cast<uint8_t>(v));
}

void PduBuilder::append32(uint32_t v) {
  append16(static_cast<uint16_t>(v >> 16));
  append16(static_cast<uint16_t>(v));
}

}  // namespace LdpTest
