#pragma once
// P2MP FEC types.

#include "fec/LdpP2mpFec.gen.h"
