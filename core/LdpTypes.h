#pragma once
// The core types every layer shares: enumerations and wire code tables, status
// codes with their protocol meaning, and the identifiers.

#include "core/LdpEnums.gen.h"
#include "core/LdpIdentifier.h"
#include "core/LdpIdentifiers.gen.h"
#include "core/LdpStatusCode.h"
