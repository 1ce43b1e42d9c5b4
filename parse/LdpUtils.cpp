#include "parse/LdpUtils.h"

#include "platform/zel/Assert.h"

namespace Ldp {

uint8_t hopCountInc(uint8_t rcvdHopCount) {
  ZEL_ASSERT(rcvdHopCount <= 253);
  return rcvdHopCount == 0 ? 0 : static_cast<uint8_t>(rcvdHopCount + 1);
}

ReentrantAssert::ReentrantAssert(bool* flag) : flag_(flag) {
  ZEL_ASSERT(!*flag);
  *flag_ = true;
}

}  // namespace Ldp
