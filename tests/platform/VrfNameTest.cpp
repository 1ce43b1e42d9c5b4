// L3::VrfName: a length-checked name with a quoted string form.

#include <gtest/gtest.h>

#include <string>

#include "platform/l3/VrfName.h"
#include "tests/support/ValueChecks.h"

using namespace LdpTest;
using L3::VrfName;

namespace {

constexpr const char* kTooLong = "VrfName::bytes > VrfName::maxLength not allowed";

TEST(VrfName, BareStringValueQuotedFormOrderAndLog) {
  VrfName red = "red";  // implicit from const char*
  EXPECT_EQ(red.stringValue(), "red");
  expectForm(red, "'red'");
  expectForm(VrfName(), "''");
  expectForm(VrfName("it's"), "'it\\'s'");  // quoted as Zel::String is
  EXPECT_TRUE(!VrfName());
  EXPECT_EQ(VrfName(Zel::String("red")), red);  // implicit from Zel::String
}

TEST(VrfName, HundredBytesAcceptedHundredAndOneRefused) {
  const std::string s100(100, 'v'), s101(101, 'v');
  VrfName v("blue");
  v.valueIs(Zel::String(s100));
  EXPECT_EQ(v.value().size(), 100u);

  v.valueIs("blue");
  expectRangeError([&] { v.valueIs(Zel::String(s101)); }, kTooLong);
  EXPECT_EQ(v, VrfName("blue"));
  expectRangeError([&] { VrfName{s101.c_str()}; }, kTooLong);

  EXPECT_EQ(parsed<VrfName>("'" + s100 + "'").value().size(), 100u);
  expectRefused("'" + s101 + "'", kTooLong, VrfName("blue"));

  Zel::NboAttrLog::Out o;
  o.putString(Zel::String(s101));
  std::vector<uint8_t> octets = o.bytes();
  expectLogRefused(octets, kTooLong, VrfName("blue"));
  expectRefused("red", "Invalid string", VrfName("blue"));

  expectOrdered<VrfName>(
      {VrfName(), VrfName("blue"), VrfName("default"), VrfName("red"), VrfName("red2")});
  expectLogged(VrfName("red"), {0, 0, 0, 3, 'r', 'e', 'd'});
}

}  // namespace
