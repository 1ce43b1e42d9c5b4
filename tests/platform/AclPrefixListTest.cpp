// Acl::PrefixList: entries kept in sequence order, replaced and removed by number.

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <random>

#include "platform/acl/PrefixList.h"
#include "tests/support/ValueChecks.h"

using namespace LdpTest;
using Acl::PrefixList;
using Acl::PrefixListAction;
using Acl::PrefixListEntry;
using Ovo::IpGenPrefix;

namespace {

PrefixListEntry entry(PrefixListAction action, const char* prefix, uint8_t ge = 0, uint8_t le = 0,
                      uint8_t eq = 0) {
  return PrefixListEntry{parsed<IpGenPrefix>(prefix), ge, le, eq, action};
}

TEST(PrefixList, FormInSequenceOrder) {
  const Zel::Ptr<PrefixList> list = Acl::prefixListFactory("edge");
  const Zel::Ptr<const PrefixList> held = list;  // how users hold it
  EXPECT_EQ(held->stringValue(), "PrefixList 'edge' {}");
  list->entryIs(10, entry(PrefixListAction::permit, "0.0.0.0/0", 0, 32));
  list->entryIs(UINT32_MAX, entry(PrefixListAction::deny, "0.0.0.0/0"));
  list->entryIs(5, entry(PrefixListAction::deny, "10.0.0.0/8"));
  list->entryIs(0, entry(PrefixListAction::permit, "2001:db8::/32", 48, 64));
  list->entryIs(7, entry(PrefixListAction::deny, "192.168.0.0/16", 0, 0, 24));
  EXPECT_EQ(held->stringValue(),
            "PrefixList 'edge' {0: permit 2001:db8::/32 ge 48 le 64, 5: deny 10.0.0.0/8, "
            "7: deny 192.168.0.0/16 eq 24, 10: permit 0.0.0.0/0 le 32, "
            "4294967295: deny 0.0.0.0/0}");

  // An unset action reads as deny; an unknown code prints as its number; the name is quoted.
  EXPECT_EQ(PrefixListEntry{}.action, PrefixListAction::deny);
  EXPECT_EQ(entry(static_cast<PrefixListAction>(7), "10.0.0.0/8").stringValue(), "7 10.0.0.0/8");
  EXPECT_EQ(Acl::prefixListFactory("it's")->stringValue(), "PrefixList 'it\\'s' {}");
}

// Random inserts, replacements and deletions against std::map: the same entries,
// in the same order, and the same answers from entryDel() and entry().
TEST(PrefixList, AgreesWithAnOrderedMapUnderRandomChanges) {
  std::mt19937 rng(20240531);
  std::uniform_int_distribution<uint32_t> seqOf(0, 40);
  std::uniform_int_distribution<unsigned> lenOf(0, 32);
  const Zel::Ptr<PrefixList> list = Acl::prefixListFactory("random");
  std::map<uint32_t, PrefixListEntry> model;
  for (int step = 0; step < 2000; ++step) {
    const uint32_t seq = seqOf(rng) * 5;
    if (rng() % 3 == 0) {
      EXPECT_EQ(list->entryDel(seq), model.erase(seq) == 1) << seq;
    } else {
      const auto len = static_cast<uint8_t>(lenOf(rng));
      const PrefixListEntry e{
          IpGenPrefix(Ovo::IpGenAddr(Ovo::IpAddr(static_cast<uint32_t>(rng()))), len), 0, len, 0,
          rng() % 2 ? PrefixListAction::permit : PrefixListAction::deny};
      list->entryIs(seq, e);
      model[seq] = e;
    }
    const PrefixListEntry* got = list->entry(seq);
    const auto want = model.find(seq);
    ASSERT_EQ(got != nullptr, want != model.end()) << seq;
    if (got) {
      EXPECT_EQ(*got, want->second);
    }
  }
  ASSERT_EQ(list->entries(), model.size());
  auto want = model.begin();
  for (const auto& e : *list) {
    EXPECT_EQ(e.key, want->first);
    EXPECT_EQ(e.value, want->second);
    ++want;
  }
}

}  // namespace
