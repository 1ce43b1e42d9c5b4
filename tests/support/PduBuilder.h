#pragma once
// PduBuilder composes LDP PDUs for tests as a chain of calls, filling in every
// length field from what follows it:
//
//   PduBuilder(LdpIdentifier(0x0A000001, 0))
//       .message(LdpHello_, 7)
//       .tlv(commonHelloTlv_, {0x00, 0x0F, 0x00, 0x00})
//       .end()
//       .bytes();
//
// Any field can be broken on purpose: version(), pduLength(), msgLength() and
// tlvLength() replace the computed value; raw() appends octets wherever the chain
// is; truncateTo() cuts the result. PduBuilder::bare() builds elements with no PDU
// header (a TLV group on its own). Helpers for particular TLVs build their value
// octets and pass them to tlv().

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "core/LdpIdentifier.h"
#include "platform/ovo/Pkt.h"
#include "platform/zel/Ptr.h"

namespace LdpTest {

// Bits of a type field: the U bit (messages and TLVs) and the F bit (TLVs).
enum TypeBits : uint16_t { noBits = 0, uBit = 0x8000, fBit = 0x4000 };

class PduBuilder {
 public:
  // A PDU header with `id`, version 1 and a computed length.
  explicit PduBuilder(const Ldp::LdpIdentifier& id);
  // No PDU header: the octets are the elements alone.
  static PduBuilder bare();

  // Overrides the PDU header's version or length field.
  PduBuilder& version(uint16_t v);
  PduBuilder& pduLength(uint16_t field);

  // Opens a message (closing an open one). `bits` may carry uBit.
  PduBuilder& message(uint32_t type, uint32_t msgId, uint16_t bits = noBits);
  // Overrides the length field of the open message, or else of the last one.
  PduBuilder& msgLength(uint16_t field);
  // Closes the open message, filling in its length.
  PduBuilder& end();

  // Appends a TLV with `value`; `bits` may carry uBit and fBit.
  PduBuilder& tlv(uint32_t type, const std::vector<uint8_t>& value, uint16_t bits = noBits);
  // Overrides the length field of the last TLV.
  PduBuilder& tlvLength(uint16_t field);
  // Appends octets as they are (inside the open message, if any).
  PduBuilder& raw(const std::vector<uint8_t>& octets);
  // Keeps only the first `n` octets of the result.
  PduBuilder& truncateTo(size_t n);

  // The octets: an open message is closed as end() would.
  std::vector<uint8_t> bytes() const;
  // A packet of `lead` octets of 0xEE followed by bytes(): the PDU at offset `lead`.
  Zel::Ptr<Ovo::Pkt> pkt(size_t lead = 0) const;

 private:
  PduBuilder() = default;
  void put16(size_t at, uint16_t v);
  void append16(uint16_t v);
  void append32(uint32_t v);

  std::vector<uint8_t> out_;
  bool hasPduHeader_ = false;
  std::optional<uint16_t> pduLength_;
  std::optional<size_t> openMsg_;  // header offset of the open message
  std::optional<uint16_t> openMsgLength_;
  std::optional<size_t> lastMsg_;
  std::optional<size_t> lastTlv_;
  std::optional<size_t> truncateTo_;
};

}  // namespace LdpTest
