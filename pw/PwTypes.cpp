// Hand-written members of the pseudowire FEC types: their string forms and the
// session key's validity.
#include "pw/PwTypes.h"

namespace Ldp {

// --- PwFwdEqvClass

Zel::String PwFwdEqvClass::stringValue() const {
  return Zel::String("pw") + pwId_.stringValue().view() + ":" + pwType_.stringValue().view() +
         (controlWord_ ? ":cbit1" : ":cbit0");
}

void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, PwFwdEqvClass* out) {
  Zel::StrIt p = it;
  Pseudowire::PseudowireId id;
  Pseudowire::PseudowireType type;
  bool controlWord = false;
  try {
    Zel::needString(p, end, "pw");
    sequenceToValue(p, end, &id);
    Zel::needString(p, end, ":");
    sequenceToValue(p, end, &type);
    Zel::needString(p, end, ":cbit");
    if (Zel::acceptString(p, end, "1")) {
      controlWord = true;
    } else {
      Zel::needString(p, end, "0");
    }
  } catch (const Zel::RangeException&) {
    Zel::throwRangeException("Invalid PwFwdEqvClass");
  }
  *out = PwFwdEqvClass(id, type, controlWord);
  it = p;
}

void PwFwdEqvClass::stringValueIs(const Zel::String& text) {
  *this = Zel::parseWhole<PwFwdEqvClass>(text, "Invalid PwFwdEqvClass");
}

// --- PwFecSessionId

bool PwFecSessionId::isValid() const { return pwFwdEqvClass_.pwId() != Pseudowire::PseudowireId(); }

Zel::String PwFecSessionId::stringValue() const {
  return pwFwdEqvClass_.stringValue() + "_" + ldpSessionId_.stringValue().view();
}

void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, PwFecSessionId* out) {
  Zel::StrIt p = it;
  PwFwdEqvClass fec;
  LdpIdentifier peer;
  try {
    sequenceToValue(p, end, &fec);
    Zel::needString(p, end, "_");
    sequenceToValue(p, end, &peer);
  } catch (const Zel::RangeException&) {
    Zel::throwRangeException("Invalid PwFecSessionId");
  }
  *out = PwFecSessionId(fec, LdpSessionId(peer));
  it = p;
}

void PwFecSessionId::stringValueIs(const Zel::String& text) {
  *this = Zel::parseWhole<PwFecSessionId>(text, "Invalid PwFecSessionId");
}

// --- PwFwdEqvClassParams

Zel::String PwFwdEqvClassParams::stringValue() const {
  return Zel::String("groupId=") + groupId_.stringValue().view() +
         " mtu=" + Zel::valueToStrep(mtu_).view() + " intfDescription=\"" +
         intfDescription_.view() + "\" reqVlanId=" + requestedVlanId_.stringValue().view() +
         " fragCapable=" + Zel::valueToStrep(fragCapable_).view() +
         " vccvCcTypes=" + Zel::valueToStrep(vccvCcTypes_).view() +
         " vccvCvTypes=" + vccvCvTypes_.stringValue().view();
}

// --- PwFwdEqvClassInfo

PwFwdEqvClassInfo::PwFwdEqvClassInfo(const PwFwdEqvClass& fwdEqvClass,
                                     const PwFwdEqvClassParams& params)
    : fwdEqvClass_(fwdEqvClass), params_(params) {}

Zel::String PwFwdEqvClassInfo::stringValue() const {
  return fwdEqvClass_.stringValue() + " " + params_.stringValue().view();
}

}  // namespace Ldp
