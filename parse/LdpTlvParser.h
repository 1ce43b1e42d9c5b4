#pragma once
// LdpTlvParser is the base of the single-TLV parsers: it holds the packet and the
// offset of one TLV and lays a TLV header overlay on the packet's octets there.
// Derived parsers read the value through header()->value().

#include <cstdint>

#include "platform/ovo/Pkt.h"
#include "platform/zel/Ptr.h"
#include "platform/zel/Recycled.h"
#include "wire/LdpHeaders.h"

namespace Ldp {

class LdpTlvParser : public Zel::PtrInterface, public Zel::Recycled {
 public:
  const Zel::Ptr<Ovo::Pkt>& pkt() const { return pkt_; }
  // Packet offset of the TLV header.
  uint32_t offset() const { return offset_; }
  LdpTlvHdr* header() { return header_; }
  const LdpTlvHdr* header() const { return header_; }
  void headerIs(LdpTlvHdr* header) { header_ = header; }

 protected:
  LdpTlvParser(const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset);
  ~LdpTlvParser() override = default;
  template <class T, class... A>
  friend Zel::Ptr<T> Zel::allocate(A&&... args);

  // Points header() at the packet's octets at offset(); checks nothing.
  void handleHeader();

 private:
  Zel::Ptr<Ovo::Pkt> pkt_;
  uint32_t offset_;
  LdpTlvHdr* header_ = nullptr;
};

Zel::Ptr<LdpTlvParser> ldpTlvParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset);

}  // namespace Ldp

// The typed parsers built on this base, so that this one header gives them all.
#include "parse/LdpTlvParsers.h"
