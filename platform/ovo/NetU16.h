#pragma once
// NetU16: a 16-bit big-endian integer field (see NetInt.h).

#include "platform/ovo/NetInt.h"
