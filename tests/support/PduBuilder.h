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
// octets and pass them to tlv(); the FEC element helpers below build the elements
// of fec():
//
//   .fec({prefixElement(1, 24, {10, 1, 2}), hostElement(1, {10, 0, 0, 1})})

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

  // TLVs with their value fields spelled out (RFC 5036, 3479, 4447, 5561).
  PduBuilder& commonHello(uint16_t holdTime, bool targeted = false, bool requestTargeted = false);
  PduBuilder& ipv4Transport(uint32_t addr);
  PduBuilder& ipv6Transport(const std::vector<uint8_t>& addr16);
  PduBuilder& configSeqNum(uint32_t n);
  // Protocol version 1; A and D bits; the receiver's LDP identifier.
  PduBuilder& sessionParams(uint16_t keepAlive, bool onDemand, bool loopDetect, uint8_t pvLimit,
                            uint16_t maxPdu, const Ldp::LdpIdentifier& receiver);
  PduBuilder& ftSession(uint16_t flags, uint32_t reconnectMs, uint32_t recoveryMs);
  // A capability parameter TLV with the U bit set: the S bit octet, then `data`.
  PduBuilder& capability(uint32_t type, bool state, const std::vector<uint8_t>& data = {});
  PduBuilder& ipv4AddressList(const std::vector<uint32_t>& addrs);
  PduBuilder& genLabel(uint32_t label);
  PduBuilder& labelReqMsgId(uint32_t id);
  PduBuilder& hopCount(uint8_t count);
  PduBuilder& pathVector(const std::vector<uint32_t>& lsrIds);
  // A Status TLV: the status word (E, F and code bits), message id and type.
  PduBuilder& status(uint32_t word, uint32_t msgId = 0, uint16_t msgType = 0);
  PduBuilder& pwStatus(uint32_t word);
  // A FEC TLV of the elements given (see the element helpers below).
  PduBuilder& fec(const std::vector<std::vector<uint8_t>>& elements);

  // The octets: an open message is closed as end() would.
  std::vector<uint8_t> bytes() const;
  // A packet of `lead` octets of 0xEE followed by bytes(): the PDU at offset `lead`.
  Zel::Ptr<Ovo::Pkt> pkt(size_t lead = 0) const;

 private:
  PduBuilder() = default;
  void put16(size_t at, uint16_t v);

  std::vector<uint8_t> out_;
  bool hasPduHeader_ = false;
  std::optional<uint16_t> pduLength_;
  std::optional<size_t> openMsg_;  // header offset of the open message
  std::optional<uint16_t> openMsgLength_;
  std::optional<size_t> lastMsg_;
  std::optional<size_t> lastTlv_;
  std::optional<size_t> truncateTo_;
};

// FEC elements for fec(), with every field given: `family` is the wire number (1
// IPv4, 2 IPv6); a length field counts the octets given unless it is overridden.
std::vector<uint8_t> prefixElement(uint16_t family, uint8_t preLen,
                                   const std::vector<uint8_t>& octets);
std::vector<uint8_t> hostElement(uint16_t family, const std::vector<uint8_t>& addr);
std::vector<uint8_t> p2mpElement(uint16_t family, const std::vector<uint8_t>& root,
                                 const std::vector<uint8_t>& opaque,
                                 std::optional<uint16_t> opaqueLength = std::nullopt);
// A P2MP opaque value: the generic LSP identifier `id` (type 1, length 4).
std::vector<uint8_t> genericLspId(uint32_t id);

// The wildcard element.
std::vector<uint8_t> wildcardFec();
// A PW id element; no pwId gives a PW info length of 0 (the whole group).
std::vector<uint8_t> pwIdFec(uint16_t pwType, uint32_t groupId, std::optional<uint32_t> pwId,
                             const std::vector<uint8_t>& intfParams = {});
// An interface-parameter sub-TLV for pwIdFec(): `type`, the length field `len`
// (which counts these two octets), then len - 2 octets of `fill` (none when `len`
// is below 2).
std::vector<uint8_t> pwSubTlv(uint8_t type, uint8_t len, uint8_t fill = 0);

}  // namespace LdpTest
