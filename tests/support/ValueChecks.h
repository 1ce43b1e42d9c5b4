#pragma once
// Checks shared by the suites of value types: string forms, refusals, order and
// hashing, and the attribute log. Every value type offers the same surface
// (valueToStrep, sequenceToValue, attrLogWrite/Read, found by argument-dependent
// lookup or, for the built-in types, in Zel), so one set of templates serves all.

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "platform/zel/Exception.h"
#include "platform/zel/NboAttrLog.h"
#include "platform/zel/StringForm.h"

namespace LdpTest {

// What other string forms put right after an embedded value.
inline const std::vector<std::string_view> kTerminators = {"_", ",", "}", " ", "_x,y}"};

// Expects `f` to throw a RangeException carrying `message`.
template <class F>
void expectRangeError(F&& f, std::string_view message) {
  try {
    f();
    ADD_FAILURE() << "no exception, expected \"" << message << "\"";
  } catch (const Zel::RangeException& e) {
    EXPECT_EQ(e.message().view(), message);
  }
}

// What operator<< writes for `v`.
template <class T>
std::string streamed(const T& v) {
  std::ostringstream os;
  os << v;
  return os.str();
}

// Parses the start of `text`; `rest` receives what the parser left.
template <class T>
T parsedPrefix(std::string_view text, std::string* rest) {
  using Zel::sequenceToValue;
  Zel::String s(text);
  Zel::StrIt it = s.begin();
  T v{};
  sequenceToValue(it, s.end(), &v);
  *rest = std::string(it, s.end());
  return v;
}

// Parses all of `text`.
template <class T>
T parsed(std::string_view text) {
  std::string rest;
  T v = parsedPrefix<T>(text, &rest);
  EXPECT_EQ(rest, "") << "parsing \"" << text << "\"";
  return v;
}

// `text` is v's string form, and it reads back, alone and with each terminator after
// it, to an equal value (with an equal hash, where the type has one).
template <class T>
void expectForm(const T& v, std::string_view text) {
  using Zel::valueToStrep;
  SCOPED_TRACE(testing::Message() << "form \"" << text << "\"");
  EXPECT_EQ(valueToStrep(v).view(), text);
  for (std::string_view tail : kTerminators) {
    std::string rest;
    EXPECT_TRUE(parsedPrefix<T>(std::string(text) + std::string(tail), &rest) == v) << tail;
    EXPECT_EQ(rest, tail);
  }
  const T back = parsed<T>(text);
  EXPECT_TRUE(back == v);
  if constexpr (requires { v.hash(); }) {
    EXPECT_EQ(back.hash(), v.hash());
  }
}

// Parsing the start of `text` gives the value whose form is `form`, leaving `rest`.
template <class T>
void expectStops(std::string_view text, std::string_view form, std::string_view rest) {
  using Zel::valueToStrep;
  std::string left;
  T v = parsedPrefix<T>(text, &left);
  EXPECT_EQ(valueToStrep(v).view(), form) << "parsing \"" << text << "\"";
  EXPECT_EQ(left, rest) << "parsing \"" << text << "\"";
}

// `text` is refused with `message`; the target and the cursor are left unchanged.
template <class T>
void expectRefused(std::string_view text, std::string_view message, const T& sentinel = T{}) {
  using Zel::sequenceToValue;
  SCOPED_TRACE(testing::Message() << "parsing \"" << text << "\"");
  Zel::String s(text);
  Zel::StrIt it = s.begin();
  T out = sentinel;
  expectRangeError([&] { sequenceToValue(it, s.end(), &out); }, message);
  EXPECT_TRUE(out == sentinel);
  EXPECT_TRUE(it == s.begin());
}

// Each of `texts` is refused as expectRefused() checks.
template <class T>
void expectAllRefused(std::initializer_list<const char*> texts, std::string_view message,
                      const T& sentinel = T{}) {
  for (const char* text : texts) expectRefused<T>(text, message, sentinel);
}

// The value octets attrLogWrite() produces (the record framing stripped).
template <class T>
std::vector<uint8_t> loggedOctets(const T& v) {
  using Zel::attrLogWrite;
  Zel::NboAttrLog::Out o;
  o.attrBegin(7);
  attrLogWrite(o, v);
  o.attrEnd();
  return std::vector<uint8_t>(o.bytes().begin() + 8, o.bytes().end());
}

// Reads `octets` as one record's value into `*v`; expects the whole value used.
template <class T>
void readLogged(const std::vector<uint8_t>& octets, T* v) {
  using Zel::attrLogRead;
  Zel::NboAttrLog::Out o;
  o.attrBegin(7);
  o.putBytes(octets.data(), octets.size());
  o.attrEnd();
  Zel::NboAttrLog::In in(o.bytes());
  ASSERT_EQ(in.nextAttrId(), 7u);
  attrLogRead(in, v);
  EXPECT_EQ(in.remaining(), 0u);
}

// Each value is logged and reads back equal.
template <class T>
void expectLogRoundTrip(const std::vector<T>& values) {
  for (const T& v : values) {
    T back{};
    readLogged(loggedOctets(v), &back);
    EXPECT_TRUE(back == v) << "logging " << v << " read back " << back;
  }
}

// v is logged as `octets` and reads back equal.
template <class T>
void expectLogged(const T& v, const std::vector<uint8_t>& octets) {
  EXPECT_EQ(loggedOctets(v), octets) << "logging " << v;
  T back{};
  readLogged(octets, &back);
  EXPECT_TRUE(back == v) << "reading the octets of " << v;
}

// `octets` are refused by attrLogRead with `message`; the target is left unchanged.
template <class T>
void expectLogRefused(const std::vector<uint8_t>& octets, std::string_view message,
                      const T& sentinel) {
  T out = sentinel;
  expectRangeError([&] { readLogged(octets, &out); }, message);
  EXPECT_TRUE(out == sentinel);
}

// `ascending` is strictly increasing under operator<, and each value equals only itself.
template <class T>
void expectAscending(const std::vector<T>& ascending) {
  for (size_t i = 0; i < ascending.size(); ++i) {
    for (size_t j = 0; j < ascending.size(); ++j) {
      const T& a = ascending[i];
      const T& b = ascending[j];
      EXPECT_EQ(a < b, i < j) << a << " < " << b;
      EXPECT_EQ(a == b, i == j) << a << " == " << b;
    }
  }
}

// As expectAscending; besides, copies and values read back from their string forms
// hash equally, and the hash tells the values apart.
template <class T>
void expectOrdered(const std::vector<T>& ascending) {
  using Zel::valueToStrep;
  expectAscending(ascending);
  for (size_t i = 0; i < ascending.size(); ++i) {
    const T& a = ascending[i];
    EXPECT_EQ(T(a).hash(), a.hash()) << a;
    EXPECT_EQ(parsed<T>(valueToStrep(a).view()).hash(), a.hash()) << a;
    for (size_t j = i + 1; j < ascending.size(); ++j) {
      EXPECT_NE(a.hash(), ascending[j].hash()) << a << " and " << ascending[j];
    }
  }
}

}  // namespace LdpTest
