#pragma once
// The wire unit: the PDU, message and TLV header overlays and the TLV overlays.

#include "wire/LdpHeaders.h"
#include "wire/LdpTlvs.h"
