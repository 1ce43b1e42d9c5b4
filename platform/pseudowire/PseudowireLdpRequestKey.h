#pragma once
// PseudowireLdpRequestKey: names one pseudowire an agent asks LDP to signal: the
// address of the remote PE (the targeted LDP peer) and the PW id. Two requests for
// the same PW id towards different peers are different pseudowires.
//
// String form: the peer address (IpGenAddr form), '_', the PW id in decimal:
// "10.0.0.2_100", "2001:db8::2_100", "none_0" for the default. Failure:
// "Invalid PseudowireLdpRequestKey".
// Order: by peer address, then by PW id.
// Attribute log: the IpGenAddr encoding of the peer, then the PW id (4 octets).

#include <cstdint>
#include <iosfwd>

#include "platform/ovo/IpGenAddr.h"
#include "platform/pseudowire/PseudowireId.h"
#include "platform/zel/NboAttrLog.h"
#include "platform/zel/StringForm.h"

namespace Pseudowire {

class PseudowireLdpRequestKey {
 public:
  PseudowireLdpRequestKey() = default;
  PseudowireLdpRequestKey(const Ovo::IpGenAddr& peerAddr, PseudowireId pwId)
      : peerAddr_(peerAddr), pwId_(pwId) {}

  const Ovo::IpGenAddr& peerAddr() const { return peerAddr_; }
  void peerAddrIs(const Ovo::IpGenAddr& a) { peerAddr_ = a; }
  PseudowireId pwId() const { return pwId_; }
  void pwIdIs(PseudowireId id) { pwId_ = id; }

  bool operator!() const { return *this == PseudowireLdpRequestKey(); }
  bool operator==(const PseudowireLdpRequestKey&) const = default;
  auto operator<=>(const PseudowireLdpRequestKey&) const = default;

  uint32_t hash() const;
  Zel::String stringValue() const;

 private:
  Ovo::IpGenAddr peerAddr_;
  PseudowireId pwId_;
};

Zel::String valueToStrep(const PseudowireLdpRequestKey& v);
void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, PseudowireLdpRequestKey* out);
std::ostream& operator<<(std::ostream& os, const PseudowireLdpRequestKey& v);
void attrLogWrite(Zel::NboAttrLog::Out& o, const PseudowireLdpRequestKey& v);
void attrLogRead(Zel::NboAttrLog::In& i, PseudowireLdpRequestKey* v);

}  // namespace Pseudowire
