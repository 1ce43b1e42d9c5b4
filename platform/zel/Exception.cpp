#include "platform/zel/Exception.h"

namespace Zel {

void throwRangeException(const String& message) { throw RangeException(message); }

void throwReinstantiation(const char* type, const String& name, const char* attr) {
  throw RangeException(String(type) + " '" + name.view() +
                       "' cannot be re-instantiated with a different '" + attr + "'");
}

void throwNullRefused(const char* param, const char* type, const char* attr) {
  throw RangeException(String("Null ") + param + " not allowed for " + type + "::" + attr);
}

}  // namespace Zel
