#include "platform/zel/Exception.h"

namespace Zel {

void throwRangeException(const String& message) { throw RangeException(message); }

}  // namespace Zel
