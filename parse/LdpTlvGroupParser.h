#pragma once
// LdpTlvGroupParser walks a run of elements that each start with a 2-octet type and
// a 2-octet length (the messages of a PDU, or the TLVs of a message) and records
// the packet offset of every element's header, in packet order. It reads nothing
// but the length fields: types, U and F bits and duplicates are for the message
// parsers, which look the recorded TLVs up by type.
//
// Use: ldpTlvGroupParserFactory(name), then pktIs(), offsetIs(), sizeIs(),
// parseTlvGroup(); read valid(), tlvNum() and tlvOffset(i). A failed walk sets
// statusCode() to badTlvLength and reason() to the text of the failure, and keeps
// the offsets recorded before it. A parser is walked once: a second walk resets the
// status but not the offsets.
//
// Trace: level 8 the start of a walk, level 6 every element.

#include <cstdint>

#include "core/LdpTypes.h"
#include "platform/ovo/Pkt.h"
#include "platform/zel/Ptr.h"
#include "platform/zel/Recycled.h"
#include "platform/zel/SmallVec.h"
#include "platform/zel/String.h"

namespace Ldp {

class LdpTlvGroupParser : public Zel::PtrInterface, public Zel::Recycled {
 public:
  // Told about every change of tlvOffset, and by tlvOffsetNotify(). Registered
  // through notifieeIs(); it must unregister (notifieeIs(nullptr)) before it dies.
  class Notifiee {
   public:
    virtual ~Notifiee() = default;
    virtual void onTlvOffset(uint32_t index) = 0;
  };

  const Zel::String& name() const { return name_; }
  const Zel::Ptr<Ovo::Pkt>& pkt() const { return pkt_; }
  void pktIs(const Zel::Ptr<Ovo::Pkt>& pkt) { pkt_ = pkt; }
  // Packet offset of the group's first element.
  uint32_t offset() const { return offset_; }
  void offsetIs(uint32_t offset) { offset_ = offset; }
  // Octets the group occupies.
  uint32_t size() const { return size_; }
  void sizeIs(uint32_t size) { size_ = size; }
  const Zel::String& reason() const { return reason_; }
  LdpStatusCode statusCode() const { return statusCode_; }
  bool valid() const { return statusCode_ == success_; }

  // Packet offset of the index-th element's header (0 when absent).
  uint32_t tlvOffset(uint32_t index) const { return tlvOffset_.at(index, 0); }
  // Inserts or overwrites the entry of `index`.
  void tlvOffsetIs(uint32_t index, uint32_t offset) {
    if (tlvOffset_.set(index, offset)) tlvOffsetNotify(index);
  }
  void tlvOffsetDel(uint32_t index) {
    if (tlvOffset_.del(index)) tlvOffsetNotify(index);
  }
  void tlvOffsetDelAll();
  void tlvOffsetNotify(uint32_t index) {
    if (notifiee_) notifiee_->onTlvOffset(index);
  }
  // The number of recorded offsets.
  uint32_t tlvNum() const { return static_cast<uint32_t>(tlvOffset_.size()); }

  Notifiee* notifiee() const { return notifiee_; }
  void notifieeIs(Notifiee* n) { notifiee_ = n; }

  // Walks the group; always returns true, the verdict is valid().
  bool parseTlvGroup();

 protected:
  explicit LdpTlvGroupParser(const Zel::String& name) : name_(name) {}
  ~LdpTlvGroupParser() override = default;
  template <class T, class... A>
  friend Zel::Ptr<T> Zel::allocate(A&&... args);

 private:
  void failureIs(const Zel::String& text);
  // Makes room for the rest of the walk once `found` elements filled the storage.
  void reserveOffsets(uint32_t found, uint32_t consumed);

  Zel::String name_;
  Zel::Ptr<Ovo::Pkt> pkt_;
  uint32_t offset_ = 0;
  uint32_t size_ = 0;
  LdpStatusCode statusCode_ = success_;
  Zel::String reason_;
  Notifiee* notifiee_ = nullptr;
  // A message has a handful of TLVs: eight offsets fit without an allocation.
  Zel::SmallIndexColl<uint32_t, 8> tlvOffset_;
};

Zel::Ptr<LdpTlvGroupParser> ldpTlvGroupParserFactory(const Zel::String& name);

}  // namespace Ldp
