#pragma once
// NetU32: a 32-bit big-endian integer field (see NetInt.h).

#include "platform/ovo/NetInt.h"
