#pragma once
// What must hold of any parser result, whatever the input: the fuzz targets check
// these after each parse, so a wrong verdict or an offset outside its message is a
// finding even when nothing crashes.
//
// - A message parser's TLV offsets rise and lie inside the message; the TLVs of a
//   valid message tile its body exactly.
// - A valid message's recorded FEC and Status TLVs lie inside the message.
// - Parsing the same octets again gives the same verdict and reason (no reads of
//   uninitialised state).
// - A FEC TLV parser stores its elements from index 0 without gaps, a valid FEC
//   TLV with a value has at least one element, and the wildcard flag is set
//   exactly when a wildcard element, or a PW id element without a PW id, was stored.
// - A PDU's message offsets rise and lie inside the PDU; the messages of a valid
//   PDU tile its body exactly. A message of total length 1 to 3 (length field
//   0xFFFD to 0xFFFF) is walked over by design, so at that level a header need only
//   lie in the packet; the message parser then judges it.

#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "parse/LdpFecTlvParser.h"
#include "parse/LdpMsgParser.h"
#include "parse/LdpPduParser.h"

namespace LdpFuzz {

#define LDP_FUZZ_CHECK(cond)                                                          \
  do {                                                                                \
    if (!(cond)) {                                                                    \
      std::fprintf(stderr, "Oracle failed: %s (%s:%d)\n", #cond, __FILE__, __LINE__); \
      std::abort();                                                                   \
    }                                                                                 \
  } while (0)

// True when `p` points into [begin, end) of the packet's octets.
inline bool within(const void* p, const uint8_t* begin, const uint8_t* end) {
  const auto* b = static_cast<const uint8_t*>(p);
  return b >= begin && b < end;
}

// `count` offsets from `at(i)` rise from `first`, each element's total length
// (read from its header) fits before `end`, and for a valid group they tile
// [first, end) exactly. Each header lies before `headerEnd`.
template <class At>
void checkTiling(const uint8_t* front, uint32_t count, At at, uint32_t first, uint32_t end,
                 uint32_t headerEnd, bool valid) {
  uint32_t expected = first;
  for (uint32_t i = 0; i < count; ++i) {
    const uint32_t offset = at(i);
    LDP_FUZZ_CHECK(offset >= first && offset < end);
    if (valid) {
      LDP_FUZZ_CHECK(offset == expected);
      LDP_FUZZ_CHECK(headerEnd - offset >= sizeof(Ldp::LdpTlvHdr));
      const uint32_t total = Ldp::overlay<Ldp::LdpTlvHdr>(front + offset)->totalLength();
      LDP_FUZZ_CHECK(total <= end - offset);
      expected = offset + total;
    }
  }
  if (valid) LDP_FUZZ_CHECK(expected == end);
}

inline void checkFecParser(const Ldp::LdpFecTlvParser& p) {
  LDP_FUZZ_CHECK(!p.reason().empty() || p.valid());
  bool wildcard = false;
  for (uint32_t i = 0; i < p.fecElements(); ++i) {
    const Zel::Ptr<const Ldp::LdpFecTlvElement> e = p.fecElement(i);
    LDP_FUZZ_CHECK(e);
    if (e->type() == Ldp::wildcardElement_) wildcard = true;
    if (e->type() == Ldp::pwIdElement_ &&
        e->pwFwdEqvCls().fwdEqvClass().pwId() == Pseudowire::PseudowireId()) {
      wildcard = true;
    }
  }
  LDP_FUZZ_CHECK(wildcard == p.hasWildcardFecElement());
  if (p.valid() && p.header()->length() > 0) LDP_FUZZ_CHECK(p.fecElements() > 0);
}

inline void checkMsgParser(const Ldp::LdpMsgParser& p) {
  LDP_FUZZ_CHECK(!p.reason().empty() || p.validMsg());
  if (p.ldpFecTlvParser()) checkFecParser(*p.ldpFecTlvParser());
  if (p.tlvNum() == 0) return;
  const uint8_t* front = p.pkt()->front();
  const uint32_t begin = p.offset() + static_cast<uint32_t>(sizeof(Ldp::LdpMsgHdr));
  const uint32_t end = p.offset() + p.totalLength();
  LDP_FUZZ_CHECK(end <= p.pkt()->frontBytes());
  checkTiling(
      front, p.tlvNum(), [&](uint32_t i) { return p.tlvOffset(i); }, begin, end, end, p.validMsg());
  if (!p.validMsg()) return;
  if (p.msgFecTlv()) LDP_FUZZ_CHECK(within(p.msgFecTlv(), front + begin, front + end));
  if (p.msgStatusTlv()) LDP_FUZZ_CHECK(within(p.msgStatusTlv(), front + begin, front + end));
}

// `again` parses the same octets anew.
template <class Parse>
void checkDeterministic(const Ldp::LdpMsgParser& p, Parse again) {
  const Ldp::LdpMsgParser::Ptr q = again();
  LDP_FUZZ_CHECK(q->statusCode() == p.statusCode());
  LDP_FUZZ_CHECK(q->reason() == p.reason());
  LDP_FUZZ_CHECK(q->tlvNum() == p.tlvNum());
}

inline void checkPduParser(const Ldp::LdpPduParser& p) {
  LDP_FUZZ_CHECK(!p.reason().empty() || p.validLdpPdu());
  if (!p.validLdpPdu()) return;
  const uint32_t begin = p.offset() + static_cast<uint32_t>(sizeof(Ldp::LdpPduHdr));
  const uint32_t end = p.offset() + p.header()->totalLength();
  const auto frontBytes = static_cast<uint32_t>(p.pkt()->frontBytes());
  checkTiling(
      p.pkt()->front(), p.messageNum(), [&](uint32_t i) { return p.messageOffset(i); }, begin, end,
      frontBytes, true);
}

}  // namespace LdpFuzz
