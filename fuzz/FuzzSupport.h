#pragma once
// Shared by the fuzz targets: the assertion policy and the packet of one input.
//
// The only assertion that wire data can reach by design is an element length field
// of 0xFFFC, whose total length wraps to 0 ("header->totalLength() > 0"). The
// handler turns exactly that one into a private exception, which runInput() catches,
// so the input ends as a normal outcome with every reference released by unwinding.
// Any other assertion is a finding: the handler prints it and returns, and the
// process aborts.

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "platform/ovo/Pkt.h"
#include "platform/zel/Assert.h"
#include "platform/zel/Ptr.h"

namespace LdpFuzz {

struct ExpectedAssertion {};

inline void assertionHandler(const char* text, const char* file, int line) {
  if (std::strcmp(text, "header->totalLength() > 0") == 0) throw ExpectedAssertion{};
  Zel::defaultAssertionHandler(text, file, line);
}

// Runs `body` with the handler installed; an expected assertion ends it quietly.
template <class F>
void runInput(F&& body) {
  static const bool installed = (Zel::assertionHandlerIs(assertionHandler), true);
  (void)installed;
  try {
    body();
  } catch (const ExpectedAssertion&) {
  }
}

inline Zel::Ptr<Ovo::Pkt> packetOf(const uint8_t* data, size_t size) {
  return Ovo::pktFactory(data, size);
}

}  // namespace LdpFuzz
