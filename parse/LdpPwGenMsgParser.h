#pragma once
// Parsing of the PW id FEC element (RFC 4447 §5.2) for the FEC TLV parser:
// parseFecTlvPwIdElement(), declared in LdpFecTlvParser.h, reads one element and
// its interface-parameter sub-TLVs in place and stores what they say as the
// element's PwFwdEqvClassInfo.
//
// The rules, in the order they are applied (the first failure ends the element;
// its status code becomes the FEC parser's, its text the parser's reason):
//   1. the 8-octet head (element type, C bit and PW type, PW info length, group
//      id) fits before `end`                                          malformedTlv
//   2. the PW type is known (Pseudowire::PseudowireType::isKnown())     unknownFec
//   3. the PW info length is 0 or at least 4                          badTlvLength
//      and equals the octets after the head: fewer give "TLV value is too small",
//      more give "TLV value length mismatch"                          badTlvLength
//   4. a PW id, present when the PW info length is not 0, is not 0    malformedTlv
//   5. the sub-TLVs fill the PW info exactly: a header that does not fit, a
//      length of 3 or less, or a length that runs past the element    malformedTlv;
//      a known sub-TLV failing its validate()             validate()'s status code;
//      a requested VLAN id above 4094                                 malformedTlv.
//      A sub-TLV of unknown type is traced at level 6 and skipped. When a type
//      comes twice, the last one counts.
// A PW info length of 0 leaves the PW id at 0: the element stands for every
// pseudowire of the group, and the FEC parser records a wildcard element.

#include "parse/LdpFecTlvParser.h"
#include "wire/LdpPwHdr.h"
