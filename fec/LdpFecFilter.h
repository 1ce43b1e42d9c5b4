#pragma once
// The FEC filter: prefix FECs matched against an access-control prefix list.

#include "fec/LdpFecFilter.gen.h"
