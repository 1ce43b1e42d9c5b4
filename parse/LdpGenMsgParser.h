#pragma once
// The parsers of a received PDU: the PDU parser and the element walker that finds
// its messages and their TLVs.

#include "parse/LdpPduParser.h"
#include "parse/LdpTlvGroupParser.h"
