#include "platform/zel/Ptr.h"

namespace Zel {

bool VFPtrInterface::threadSafePointers_ = false;

void PtrInterface::flagsIs(uint32_t f) const {
  if (threadSafePointers_) {
    __atomic_fetch_or(&refWord_, f & flagMask, __ATOMIC_RELAXED);
  } else {
    refWord_ |= f & flagMask;
  }
}

}  // namespace Zel
