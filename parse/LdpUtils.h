#pragma once
// Small helpers of the message handlers: the hop count a relayed label message
// carries, and a guard against re-entering a handler.

#include <cstdint>

namespace Ldp {

// The hop count to send on for a received one (RFC 5036 3.4.1.1): 0 means unknown
// and stays 0; otherwise one more. Callers reject counts above 253 beforehand (the
// result must stay below the 255 limit), so a larger one fails an assertion.
uint8_t hopCountInc(uint8_t rcvdHopCount);

// Asserts that *flag is clear, sets it for the guard's scope, and clears it again
// on leaving: a handler that must not be re-entered holds one.
class ReentrantAssert {
 public:
  explicit ReentrantAssert(bool* flag);
  ~ReentrantAssert() { *flag_ = false; }
  ReentrantAssert(const ReentrantAssert&) = delete;
  ReentrantAssert& operator=(const ReentrantAssert&) = delete;

 private:
  bool* flag_;
};

}  // namespace Ldp
