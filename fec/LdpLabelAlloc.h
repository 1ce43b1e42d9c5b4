#pragma once
// Label allocation requests per FEC and the label allocator's published state.

#include "fec/LdpLabelAlloc.gen.h"
