#pragma once
// Checks shared by the value-type suites: string forms, refusals, ordering and
// hashing, and the attribute log. Every value type offers the same surface
// (valueToStrep, sequenceToValue, attrLogWrite/Read found by argument-dependent
// lookup), so one set of templates serves them all.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/zel/Exception.h"
#include "platform/zel/NboAttrLog.h"
#include "platform/zel/StringForm.h"

namespace LdpTest {

// What other string forms put right after an embedded value.
inline const std::vector<std::string_view> kTerminators = {"_", ",", "}", " ", "_x,y}"};

// Parses the start of `text`; `rest` receives what the parser left.
template <class T>
T parsedPrefix(std::string_view text, std::string* rest) {
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

// `text` is v's string form, and it reads back: alone and with each terminator after it.
template <class T>
void expectForm(const T& v, std::string_view text) {
  SCOPED_TRACE(testing::Message() << "form \"" << text << "\"");
  EXPECT_EQ(valueToStrep(v).view(), text);
  for (std::string_view tail : kTerminators) {
    std::string rest;
    EXPECT_EQ(parsedPrefix<T>(std::string(text) + std::string(tail), &rest), v);
    EXPECT_EQ(rest, tail);
  }
  EXPECT_EQ(parsed<T>(text), v);
}

// Parsing the start of `text` gives the value whose form is `form`, leaving `rest`.
template <class T>
void expectStops(std::string_view text, std::string_view form, std::string_view rest) {
  std::string left;
  T v = parsedPrefix<T>(text, &left);
  EXPECT_EQ(valueToStrep(v).view(), form) << "parsing \"" << text << "\"";
  EXPECT_EQ(left, rest) << "parsing \"" << text << "\"";
}

// `text` is refused with `message`; the target and the iterator are left unchanged.
template <class T>
void expectRefused(std::string_view text, std::string_view message, const T& sentinel) {
  Zel::String s(text);
  Zel::StrIt it = s.begin();
  T out = sentinel;
  try {
    sequenceToValue(it, s.end(), &out);
    ADD_FAILURE() << "\"" << text << "\" parsed as " << out;
  } catch (const Zel::RangeException& e) {
    EXPECT_EQ(e.message().view(), message) << "parsing \"" << text << "\"";
  }
  EXPECT_EQ(out, sentinel) << "parsing \"" << text << "\"";
  EXPECT_TRUE(it == s.begin()) << "parsing \"" << text << "\"";
}

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

// The value octets attrLogWrite() produces (the record framing stripped).
template <class T>
std::vector<uint8_t> loggedOctets(const T& v) {
  Zel::NboAttrLog::Out o;
  o.attrBegin(7);
  attrLogWrite(o, v);
  o.attrEnd();
  return std::vector<uint8_t>(o.bytes().begin() + 8, o.bytes().end());
}

// Reads `octets` as one record's value into `*v`; expects the whole value used.
template <class T>
void readLogged(const std::vector<uint8_t>& octets, T* v) {
  Zel::NboAttrLog::Out o;
  o.attrBegin(7);
  o.putBytes(octets.data(), octets.size());
  o.attrEnd();
  Zel::NboAttrLog::In in(o.bytes());
  ASSERT_EQ(in.nextAttrId(), 7u);
  attrLogRead(in, v);
  EXPECT_EQ(in.remaining(), 0u);
}

// v is logged as `octets` and reads back equal.
template <class T>
void expectLogged(const T& v, const std::vector<uint8_t>& octets) {
  SCOPED_TRACE(testing::Message() << "logging " << v);
  EXPECT_EQ(loggedOctets(v), octets);
  T back{};
  readLogged(octets, &back);
  EXPECT_EQ(back, v);
}

// `octets` are refused by attrLogRead with `message`; the target is left unchanged.
template <class T>
void expectLogRefused(const std::vector<uint8_t>& octets, std::string_view message,
                      const T& sentinel) {
  T out = sentinel;
  expectRangeError([&] { readLogged(octets, &out); }, message);
  EXPECT_EQ(out, sentinel);
}

// `ascending` is strictly increasing; equal values (copies, and values read back
// from their string forms) hash equally; and the hash tells the values apart.
template <class T>
void expectOrdered(const std::vector<T>& ascending) {
  for (size_t i = 0; i < ascending.size(); ++i) {
    const T& a = ascending[i];
    T copy = a;
    EXPECT_TRUE(copy == a) << a;
    EXPECT_EQ(copy.hash(), a.hash()) << a;
    EXPECT_EQ(parsed<T>(valueToStrep(a).view()).hash(), a.hash()) << a;
    for (size_t j = i + 1; j < ascending.size(); ++j) {
      const T& b = ascending[j];
      EXPECT_TRUE(a < b) << a << " < " << b;
      EXPECT_FALSE(b < a) << b << " < " << a;
      EXPECT_FALSE(a == b) << a << " == " << b;
      EXPECT_NE(a.hash(), b.hash()) << a << " and " << b;
    }
  }
}

}  // namespace LdpTest
