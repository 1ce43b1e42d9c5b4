#pragma once
// The FEC filter: whether LDP may handle a FEC, decided by an access-control
// prefix list.
//
// isPermittedFec(fec): with no list every FEC is permitted. Otherwise the list's
// entries are tried in ascending sequence order and the first that matches
// decides: permitted when its action is permit, denied for any other action; a
// FEC that no entry matches is denied. With L the FEC's length and A its address,
// an entry matches when, in this order: its exact length is unset or L; its upper
// bound is unset or at least L; its lower bound is unset or at most L; its prefix
// length p is at most L; p is 0 or the top p bits of A equal those of the entry's
// address. An entry without bounds thus matches every FEC inside its prefix.
//
// FECs other than IPv4 prefixes:
//   host      matched as its full-length prefix: 10.0.0.1 as 10.0.0.1/32,
//             2001:db8::1 as 2001:db8::1/128.
//   IPv6      compared over the IPv6 address bits. An entry with p > 0 matches
//             only FECs of its own address family; an entry with p = 0 compares
//             no bits and so may match either family, as its length bounds allow.
//   wildcard, none  have no address: a list never matches them, so they are
//             denied when a list is set and permitted when none is.
//
// Trace: level 8 (function entry) names the FEC on every call.

#include "fec/LdpFecFilter.gen.h"
