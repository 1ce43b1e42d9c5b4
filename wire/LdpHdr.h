#pragma once
// The wire unit: the PDU, message and TLV header overlays, the TLV overlays, and the
// FEC element and P2MP opaque value overlays.

#include "wire/LdpFecElements.h"
#include "wire/LdpHeaders.h"
#include "wire/LdpP2mpOpaqueValueTypes.h"
#include "wire/LdpTlvs.h"
