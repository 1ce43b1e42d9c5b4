// Hand-written members of the identifiers: their hashes (collections keyed by them
// depend on these exact functions) and their string forms.
#include "core/LdpIdentifiers.gen.h"

namespace Ldp {

uint32_t LdpSessionId::hash() const { return peerLdpId_.hash(); }

void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, LdpSessionId* out) {
  *out = LdpSessionId(Zel::deserializeAttr<LdpIdentifier>(it, end, "peerLdpId"));
}

LdpAdjType LdpAdjId::adjType() const {
  return intfId_.stringValue().empty() ? LdpTargetAdj_ : LdpLinkAdj_;
}

// The target address is deliberately left out: two targeted adjacencies of one
// neighbour differ only by address and share a bucket.
uint32_t LdpAdjId::hash() const {
  return ldpHashMix(ldpIdentifier_.lsrId().value()) + ldpIdentifier_.labelSpace().value() +
         intfId_.hash();
}

Zel::String LdpAdjId::stringValue() const {
  if (intfId_.stringValue().empty()) {
    return ldpIdentifier_.stringValue() + "_TARGET_" + targetIpAddr_.stringValue().view();
  }
  return ldpIdentifier_.stringValue() + "_" + intfId_.stringValue().view();
}

void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, LdpAdjId* out) {
  Zel::StrIt p = it;
  LdpIdentifier id;
  Ovo::IntfId intf;
  Ovo::IpAddr target;
  try {
    sequenceToValue(p, end, &id);
    if (Zel::acceptString(p, end, "_TARGET_")) {
      sequenceToValue(p, end, &target);
    } else {
      Zel::needString(p, end, "_");
      sequenceToValue(p, end, &intf);
      // An empty name would print back as a targeted adjacency.
      if (!intf) Zel::throwRangeException("Invalid LdpAdjId");
    }
  } catch (const Zel::RangeException&) {
    Zel::throwRangeException("Invalid LdpAdjId");
  }
  *out = LdpAdjId(id, intf, target);
  it = p;
}

void LdpAdjId::stringValueIs(const Zel::String& text) {
  *this = Zel::parseWhole<LdpAdjId>(text, "Invalid LdpAdjId");
}

uint32_t LdpFecSessionId::hash() const {
  const LdpIdentifier& id = ldpSessionId_.peerLdpId();
  return fwdEqvClass_.hash() + ldpHashMix(id.lsrId().value()) + id.labelSpace().value();
}

Zel::String LdpFecSessionId::stringValue() const {
  return fwdEqvClass_.stringValue() + "_" + ldpSessionId_.stringValue().view();
}

void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, LdpFecSessionId* out) {
  Zel::StrIt p = it;
  Mpls::FwdEqvClass fec;
  LdpIdentifier id;
  try {
    sequenceToValue(p, end, &fec);
    Zel::needString(p, end, "_");
    sequenceToValue(p, end, &id);
  } catch (const Zel::RangeException&) {
    Zel::throwRangeException("Invalid LdpFecSessionId");
  }
  *out = LdpFecSessionId(fec, LdpSessionId(id));
  it = p;
}

void LdpFecSessionId::stringValueIs(const Zel::String& text) {
  *this = Zel::parseWhole<LdpFecSessionId>(text, "Invalid LdpFecSessionId");
}

uint32_t Via::hash() const {
  Zel::Hash h;
  h.mix(hop_.hashAsV6());
  h.mix(intfId_.hash());
  return h.result();
}

Zel::String Via::stringValue() const {
  return hop_.stringValue() + "-" + intfId_.stringValue().view();
}

}  // namespace Ldp
