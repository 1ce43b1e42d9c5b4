// Mpls::RouterId: an IPv4 router id with the dotted form, also an entity's name.

#include <gtest/gtest.h>

#include "platform/mpls/RouterId.h"
#include "tests/support/ValueChecks.h"

using namespace LdpTest;
using Mpls::RouterId;
using Ovo::IpAddr;

namespace {

RouterId rid(uint32_t v) { return RouterId(IpAddr(v)); }

// What a child collection does with the name it is given.
Zel::String nameGiven(const Zel::Name& name) { return name; }

TEST(RouterId, FormsRefusalsAndName) {
  expectForm(RouterId(), "0.0.0.0");
  expectForm(rid(0x0A000001), "10.0.0.1");
  EXPECT_TRUE(!RouterId());
  expectStops<RouterId>("1.2.3.4.5", "1.2.3.4", ".5");
  expectAllRefused({"", "none", "1.2.3", "1.2.3.256", "01.2.3.4", " 1.2.3.4", "::1", "a.b.c.d"},
                   "Invalid RouterId", rid(0x01020304));

  EXPECT_EQ(nameGiven(rid(0xC0A80001)), "192.168.0.1");
}

TEST(RouterId, OrderHashAndLog) {
  expectOrdered<RouterId>({RouterId(), rid(1), rid(0x0A000001), rid(0x0A000002), rid(0xFFFFFFFF)});

  expectLogged(rid(0x0A000102), {10, 0, 1, 2});
  expectLogRefused<RouterId>({10, 0, 1}, "NboAttrLog::In: record truncated", rid(0x01020304));
  expectLogRefused<RouterId>({}, "NboAttrLog::In: record truncated", rid(0x01020304));
}

}  // namespace
