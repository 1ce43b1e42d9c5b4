#pragma once
// PrefixList: a named access-control prefix list, reference counted and shared as
// Zel::Ptr<const Acl::PrefixList> by the configuration that refers to it.
//
// A list holds entries keyed by a 32-bit sequence number and kept in ascending
// order of it; iteration visits them in that order. entryIs() inserts an entry or
// replaces the one with the same number in place.
//
// An entry (PrefixListEntry) names a prefix, an action, and optional bounds on the
// length of the routes it covers: ge (at least), le (at most), eq (exactly); 0
// leaves a bound unset. This type only keeps entries as given: it neither checks
// the bounds against the prefix nor matches routes; the users of the list do both.
//
// Action codes: permit 1, deny 2. A default entry is a deny, so an entry whose
// action was never set lets nothing through.
//
// String forms:
//   action  "permit", "deny"; any other code as its decimal number
//   entry   "<action> <prefix>", then " eq N", " ge N", " le N" for each bound set,
//           "permit 10.0.0.0/8 ge 16 le 24"
//   list    "PrefixList <name> {<seq>: <entry>, ...}" in sequence order, the name
//           quoted as a Zel::String, "PrefixList 'edge' {5: deny 10.0.0.0/8,
//           10: permit 0.0.0.0/0 le 32}"; an empty list is "PrefixList 'edge' {}"

#include <cstddef>
#include <cstdint>
#include <iosfwd>

#include "platform/ovo/IpGenPrefix.h"
#include "platform/zel/Ptr.h"
#include "platform/zel/RbTreeMap.h"
#include "platform/zel/String.h"

namespace Acl {

enum class PrefixListAction : uint8_t { permit = 1, deny = 2 };

Zel::String stringValue(PrefixListAction a);
std::ostream& operator<<(std::ostream& os, PrefixListAction a);

struct PrefixListEntry {
  Ovo::IpGenPrefix prefix;
  uint8_t ge = 0;  // lower length bound; 0: unset
  uint8_t le = 0;  // upper length bound; 0: unset
  uint8_t eq = 0;  // exact length; 0: unset
  PrefixListAction action = PrefixListAction::deny;

  bool operator==(const PrefixListEntry&) const = default;
  Zel::String stringValue() const;
};

std::ostream& operator<<(std::ostream& os, const PrefixListEntry& e);

class PrefixList : public Zel::PtrInterface {
 public:
  using Entries = Zel::RbTreeMap<uint32_t, PrefixListEntry>;
  // Iteration yields entries with .key (the sequence number) and .value.
  using const_iterator = Entries::const_iterator;

  // Through prefixListFactory(); the list is owned by its references.
  explicit PrefixList(const Zel::String& name) : name_(name) {}
  PrefixList(const PrefixList&) = delete;
  PrefixList& operator=(const PrefixList&) = delete;

  const Zel::String& name() const { return name_; }

  // Sets the entry numbered `seq`, adding it or replacing the one there.
  void entryIs(uint32_t seq, const PrefixListEntry& entry);
  // Removes the entry numbered `seq`; true when there was one.
  bool entryDel(uint32_t seq) { return entries_.erase(seq); }
  // The entry numbered `seq`, or null. Valid until that entry is replaced or removed.
  const PrefixListEntry* entry(uint32_t seq) const { return entries_.find(seq); }
  // The number of entries.
  size_t entries() const { return entries_.size(); }

  const_iterator begin() const { return entries_.begin(); }
  const_iterator end() const { return entries_.end(); }

  Zel::String stringValue() const;

 protected:
  ~PrefixList() override = default;

 private:
  Zel::String name_;
  Entries entries_;
};

// A new, empty list named `name`.
Zel::Ptr<PrefixList> prefixListFactory(const Zel::String& name);

}  // namespace Acl
