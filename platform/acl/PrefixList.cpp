#include "platform/acl/PrefixList.h"

#include <ostream>
#include <string>

#include "platform/zel/StringForm.h"

namespace Acl {

Zel::String stringValue(PrefixListAction a) {
  switch (a) {
    case PrefixListAction::permit:
      return "permit";
    case PrefixListAction::deny:
      return "deny";
  }
  return Zel::String(std::to_string(static_cast<unsigned>(a)));
}

std::ostream& operator<<(std::ostream& os, PrefixListAction a) { return os << stringValue(a); }

Zel::String PrefixListEntry::stringValue() const {
  std::string s(Acl::stringValue(action).view());
  s += ' ';
  s += prefix.stringValue().view();
  const auto bound = [&s](const char* word, uint8_t len) {
    if (len == 0) return;
    s += word;
    s += std::to_string(len);
  };
  bound(" eq ", eq);
  bound(" ge ", ge);
  bound(" le ", le);
  return Zel::String(s);
}

std::ostream& operator<<(std::ostream& os, const PrefixListEntry& e) {
  return os << e.stringValue();
}

void PrefixList::entryIs(uint32_t seq, const PrefixListEntry& entry) {
  auto [at, added] = entries_.insert(seq, entry);
  if (!added) *at = entry;
}

Zel::String PrefixList::stringValue() const {
  std::string s = "PrefixList ";
  s += Zel::valueToStrep(name_).view();
  s += " {";
  const char* sep = "";
  for (const auto& e : entries_) {
    s += sep;
    s += std::to_string(e.key);
    s += ": ";
    s += e.value.stringValue().view();
    sep = ", ";
  }
  s += '}';
  return Zel::String(s);
}

Zel::Ptr<PrefixList> prefixListFactory(const Zel::String& name) {
  return Zel::allocate<PrefixList>(name);
}

}  // namespace Acl
