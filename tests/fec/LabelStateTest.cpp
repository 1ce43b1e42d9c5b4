// FEC and label state: the FEC filter's verdicts, MplsLabelSet's notifications, and
// the label allocation request table and global status.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/LdpTrace.h"
#include "fec/LdpFecFilter.h"
#include "fec/LdpLabelAlloc.h"
#include "fec/MplsLabelSet.h"
#include "platform/zel/GenericIf.h"
#include "tests/support/ValueChecks.h"

using namespace Ldp;
using namespace LdpTest;
using Acl::PrefixListAction;
using Strings = std::vector<std::string>;

namespace {

constexpr auto permit = PrefixListAction::permit;
constexpr auto deny = PrefixListAction::deny;

struct Entry {
  uint32_t seq;
  PrefixListAction action;
  const char* prefix;
  uint8_t ge = 0, le = 0, eq = 0;
};

Zel::Ptr<Acl::PrefixList> listOf(std::initializer_list<Entry> entries) {
  Zel::Ptr<Acl::PrefixList> list = Acl::prefixListFactory("filter");
  for (const Entry& e : entries) {
    list->entryIs(e.seq, {parsed<Ovo::IpGenPrefix>(e.prefix), e.ge, e.le, e.eq, e.action});
  }
  return list;
}

Mpls::FwdEqvClass fec(const char* text) { return parsed<Mpls::FwdEqvClass>(text); }

// The FECs of `fecs` that the filter permits.
Strings permitted(const LdpFecFilter& f, std::initializer_list<const char*> fecs) {
  Strings out;
  for (const char* text : fecs) {
    if (f.isPermittedFec(fec(text))) out.emplace_back(text);
  }
  return out;
}

Zel::Ptr<LdpFecFilter> filterWith(std::initializer_list<Entry> entries) {
  Zel::Ptr<LdpFecFilter> f = ldpFecFilterFactory("fecFilter");
  f->prefixListIs(listOf(entries));
  return f;
}

TEST(LdpFecFilter, NoListPermitsEverythingAnEmptyListDeniesEverything) {
  const auto all = {"10.0.0.0/8",    "0.0.0.0/0", "host:10.0.0.1",
                    "2001:db8::/32", "wildcard",  "none"};
  Zel::Ptr<LdpFecFilter> f = ldpFecFilterFactory("fecFilter");
  EXPECT_EQ(permitted(*f, all), Strings(all.begin(), all.end()));
  f->prefixListIs(listOf({}));
  EXPECT_EQ(permitted(*f, all), Strings{});
}

TEST(LdpFecFilter, FirstMatchInSequenceOrderDecides) {
  // Inserted in reverse: the lower sequence number is tried first all the same.
  Zel::Ptr<Acl::PrefixList> list = listOf({{10, permit, "0.0.0.0/0"}, {5, deny, "10.0.0.0/8"}});
  Zel::Ptr<LdpFecFilter> f = ldpFecFilterFactory("fecFilter");
  f->prefixListIs(list);
  EXPECT_EQ(permitted(*f, {"10.1.0.0/16", "10.0.0.0/8", "11.0.0.0/8", "host:10.0.0.1"}),
            Strings{"11.0.0.0/8"});
  // Any action other than permit denies, though a later entry would permit.
  list->entryIs(5, {parsed<Ovo::IpGenPrefix>("10.0.0.0/8"), 0, 0, 0, PrefixListAction{3}});
  EXPECT_EQ(permitted(*f, {"10.1.0.0/16", "11.0.0.0/8"}), Strings{"11.0.0.0/8"});
  list->entryIs(5, {parsed<Ovo::IpGenPrefix>("10.0.0.0/8"), 0, 0, 0, permit});
  list->entryIs(1, {parsed<Ovo::IpGenPrefix>("10.1.0.0/16"), 0, 0, 0, deny});
  EXPECT_EQ(permitted(*f, {"10.1.0.0/16", "10.2.0.0/16", "10.1.2.0/24"}), Strings{"10.2.0.0/16"});
}

TEST(LdpFecFilter, LengthBoundsAndPrefixBits) {
  const auto fecs = {"10.0.0.0/8",  "10.1.0.0/16",   "10.1.1.0/24",   "10.1.1.128/25",
                     "10.1.1.1/32", "host:10.1.1.1", "10.200.0.0/16", "11.1.1.0/24",
                     "0.0.0.0/0",   "10.0.1.0/24"};
  EXPECT_EQ(
      permitted(*filterWith({{1, permit, "10.0.0.0/8", 24}}), fecs),
      (Strings{"10.1.1.0/24", "10.1.1.128/25", "10.1.1.1/32", "host:10.1.1.1", "10.0.1.0/24"}));
  EXPECT_EQ(permitted(*filterWith({{1, permit, "10.0.0.0/8", 0, 16}}), fecs),
            (Strings{"10.0.0.0/8", "10.1.0.0/16", "10.200.0.0/16"}));
  // The entry is longer than 10.0.0.0/8; inside it, the wide match covers any length.
  EXPECT_EQ(permitted(*filterWith({{1, permit, "10.0.0.0/16"}}), fecs), Strings{"10.0.1.0/24"});
  // Exact length 32: host-length FECs only.
  EXPECT_EQ(permitted(*filterWith({{1, permit, "0.0.0.0/0", 0, 0, 32}}), fecs),
            (Strings{"10.1.1.1/32", "host:10.1.1.1"}));
  // Without bounds: everything inside the prefix, whatever its length.
  EXPECT_EQ(permitted(*filterWith({{1, permit, "10.0.0.0/8"}}), fecs),
            (Strings{"10.0.0.0/8", "10.1.0.0/16", "10.1.1.0/24", "10.1.1.128/25", "10.1.1.1/32",
                     "host:10.1.1.1", "10.200.0.0/16", "10.0.1.0/24"}));
  // A prefix length that is no whole number of octets.
  EXPECT_EQ(
      permitted(*filterWith({{1, permit, "10.128.0.0/9"}}), {"10.200.0.0/16", "10.100.0.0/16"}),
      Strings{"10.200.0.0/16"});
}

TEST(LdpFecFilter, Ipv6HostAndAddresslessFecs) {
  // Bits are compared within one family only; a host is its /32 or /128 prefix.
  EXPECT_EQ(permitted(*filterWith({{1, permit, "2001:db8:8000::/33"}, {2, permit, "10.0.0.0/8"}}),
                      {"2001:db8:c000::/34", "2001:db8:4000::/34", "2001:db8::/32",
                       "host:2001:db8:8000::1", "::ffff:10.0.0.0/104", "host:10.0.0.1"}),
            (Strings{"2001:db8:c000::/34", "host:2001:db8:8000::1", "host:10.0.0.1"}));
  // A zero-length entry compares no address bits, so either family passes its bounds.
  EXPECT_EQ(permitted(*filterWith({{1, permit, "::/0", 0, 32}}),
                      {"10.0.0.0/8", "2001:db8::/32", "2001:db8::/48", "wildcard", "none"}),
            (Strings{"10.0.0.0/8", "2001:db8::/32"}));
}

class FilterWatch : public LdpFecFilter::NotifieeConst {
 public:
  explicit FilterWatch(const Zel::Ptr<const LdpFecFilter>& f) { notifierIs(f); }
  void onPrefixList() override { seen.emplace_back("prefixList"); }
  void onFilterVersion() override { seen.emplace_back("filterVersion"); }
  Strings take() { return std::exchange(seen, {}); }
  Strings seen;
};

TEST(LdpFecFilter, PrefixListNotifiesOnANewReferenceOnlyAndLeavesTheVersion) {
  Zel::Ptr<LdpFecFilter> f = ldpFecFilterFactory("fecFilter");
  FilterWatch w(f);
  Zel::Ptr<Acl::PrefixList> a = listOf({{1, deny, "10.0.0.0/8"}});
  f->prefixListIs(a);
  f->prefixListIs(a);
  a->entryIs(1, {parsed<Ovo::IpGenPrefix>("10.0.0.0/8"), 0, 0, 0, permit});
  f->prefixListIs(listOf({{1, permit, "10.0.0.0/8"}}));  // equal entries, another list
  f->prefixListIs(nullptr);
  EXPECT_EQ(w.take(), (Strings{"prefixList", "prefixList", "prefixList"}));
  EXPECT_EQ(f->filterVersion(), 0u);
  f->filterVersionInc(2);
  EXPECT_EQ(w.take(), Strings{"filterVersion"});
  EXPECT_EQ(f->filterVersion(), 2u);
}

TEST(LdpFecFilter, IsPermittedFecThroughReflectionTracesTheFec) {
  Zel::Ptr<LdpFecFilter> f = filterWith({{5, deny, "10.0.0.0/8"}, {10, permit, "0.0.0.0/0"}});
  static Strings traced;
  traced.clear();
  const TraceSink oldSink = traceSinkIs([](const TraceHandle&, int level, std::string_view text) {
    if (level == 8) traced.emplace_back(text);
  });
  const int oldLevel = traceLevel();
  traceLevelIs(8);
  Zel::GenericIf g(f);
  const std::string denied(g.call(259, {"10.1.0.0/16"}).view());
  const std::string allowed(g.call(259, {"host:11.0.0.1"}).view());
  traceSinkIs(oldSink);
  traceLevelIs(oldLevel);
  EXPECT_EQ(denied, "False");
  EXPECT_EQ(allowed, "True");
  ASSERT_EQ(traced.size(), 2u);
  EXPECT_NE(traced[0].find("10.1.0.0/16"), std::string::npos) << traced[0];
  EXPECT_NE(traced[1].find("host:11.0.0.1"), std::string::npos) << traced[1];
}

class LabelSetWatch : public MplsLabelSet::NotifieeConst {
 public:
  explicit LabelSetWatch(const Zel::Ptr<const MplsLabelSet>& s) { notifierIs(s); }
  void onMplsLabel(const Ovo::MplsLabel& l) override {
    seen.push_back("mplsLabel:" + std::to_string(l.value()));
  }
  void onLabelSource() override { seen.emplace_back("labelSource"); }
  Strings take() { return std::exchange(seen, {}); }
  Strings seen;
};

TEST(MplsLabelSet, LabelsAndSourceNotifyOnlyOnAChange) {
  Zel::Ptr<MplsLabelSet> s = mplsLabelSetFactory("advertised", fec("10.0.0.0/8"));
  EXPECT_EQ(Zel::ZelType::lookup("Ldp::MplsLabelSet"), &MplsLabelSet::zelType());
  EXPECT_EQ(s->fwdEqvClass(), fec("10.0.0.0/8"));
  EXPECT_EQ(static_cast<uint32_t>(s->labelSource()), 2u);
  LabelSetWatch w(s);
  const Ovo::MplsLabel l100(100), l200(200);
  s->mplsLabelIs(l100, true);
  s->mplsLabelIs(l100, true);
  EXPECT_EQ(w.take(), Strings{"mplsLabel:100"});
  s->mplsLabelIs(l100, false);
  EXPECT_EQ(w.take(), Strings{"mplsLabel:100"});
  EXPECT_EQ(s->mplsLabels(), 1u);
  EXPECT_FALSE(s->mplsLabelDel(l200));
  EXPECT_EQ(w.take(), Strings{});
  EXPECT_TRUE(s->mplsLabelDel(l100));
  EXPECT_EQ(w.take(), Strings{"mplsLabel:100"});
  s->labelSourceIs(Mpls::bgp_);
  s->labelSourceIs(Mpls::bgp_);
  EXPECT_EQ(w.take(), Strings{"labelSource"});
}

TEST(MplsLabelSet, DelAllNotifiesEachLabel) {
  Zel::Ptr<MplsLabelSet> s = mplsLabelSetFactory("release", fec("host:10.0.0.1"));
  LabelSetWatch w(s);
  s->mplsLabelDelAll();
  for (uint32_t v : {16u, 17u, 1000u}) s->mplsLabelIs(Ovo::MplsLabel(v), v != 17);
  w.take();
  s->mplsLabelDelAll();
  Strings seen = w.take();
  std::sort(seen.begin(), seen.end());
  EXPECT_EQ(seen, (Strings{"mplsLabel:1000", "mplsLabel:16", "mplsLabel:17"}));
  EXPECT_EQ(s->mplsLabels(), 0u);
}

class RequestWatch : public LabelAllocRequest::NotifieeConst {
 public:
  explicit RequestWatch(const Zel::Ptr<const LabelAllocRequest>& r) { notifierIs(r); }
  void onNumLabelsRequested() override { ++changes; }
  void onLdpFecDeliveryType() override { ++changes; }
  int changes = 0;
};

TEST(LabelAllocRequestTable, RequestIsKeepsAnExistingRequestAsItIs) {
  Zel::Ptr<LabelAllocRequestTable> t = labelAllocRequestTableFactory("labelAlloc");
  Zel::Ptr<LabelAllocRequest> r = t->labelBindingRequestIs(fec("10.0.0.0/8"));
  EXPECT_EQ(r->numLabelsRequested(), 0u);
  EXPECT_EQ(r->ldpFecDeliveryType(), Unknown_);
  RequestWatch w(r);
  r->numLabelsRequestedIs(3);
  r->ldpFecDeliveryTypeIs(Egress_);
  EXPECT_EQ(t->labelBindingRequestIs(fec("10.0.0.0/8")), r);
  EXPECT_EQ(r->numLabelsRequested(), 3u);
  EXPECT_EQ(r->ldpFecDeliveryType(), Egress_);
  EXPECT_EQ(w.changes, 2);
  EXPECT_NE(t->labelBindingRequestIs(fec("10.0.0.0/16")), r);
  EXPECT_TRUE(t->labelBindingRequestDel(fec("10.0.0.0/8")));
  EXPECT_EQ(t->labelBindingRequest(fec("10.0.0.0/8")), nullptr);
  EXPECT_EQ(t->labelBindingRequests(), 1u);
}

class StatusWatch : public LabelAllocGlobalStatus::NotifieeConst {
 public:
  explicit StatusWatch(const Zel::Ptr<const LabelAllocGlobalStatus>& s) { notifierIs(s); }
  void onRangeChanged() override { ++rangeChanges; }
  int rangeChanges = 0;
};

TEST(LabelAllocGlobalStatus, StartsInMarkAndSweepAndCountsRangeChanges) {
  Zel::Ptr<LabelAllocGlobalStatus> s = labelAllocGlobalStatusFactory("labelAllocStatus");
  EXPECT_EQ(s->state(), markAndSweep_);
  EXPECT_EQ(s->rangeChanged(), 0u);
  StatusWatch w(s);
  s->rangeChangedInc();
  s->rangeChangedInc();
  EXPECT_EQ(s->rangeChanged(), 2u);
  EXPECT_EQ(w.rangeChanges, 2);
}

}  // namespace
