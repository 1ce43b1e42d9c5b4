#pragma once
// Pseudowire FEC types (RFC 4447): the PW FEC (PwFwdEqvClass), its key per LDP
// session (PwFecSessionId), the interface parameters of a PW id FEC element
// (PwFwdEqvClassParams), and all that one element says (PwFwdEqvClassInfo).
//
// String forms:
//   PwFwdEqvClass        "pw100:ethernet:cbit1": "pw", the PW id, ':', the PW
//                        type's form, ":cbit", the control word as 0 or 1. Parse
//                        failure: "Invalid PwFwdEqvClass".
//   PwFecSessionId       the FEC's form, '_', the session id's form:
//                        "pw100:ethernet:cbit1_10.0.0.2:0". Parse failure:
//                        "Invalid PwFecSessionId".
//   PwFwdEqvClassParams  the generated reflection form; stringValue() is the trace
//                        form "groupId=5 mtu=1500 intfDescription=\"to-ce1\"
//                        reqVlanId=none fragCapable=False vccvCcTypes=1
//                        vccvCvTypes=0x02" (on one line).
//   PwFwdEqvClassInfo    the generated reflection form; stringValue() is the FEC's
//                        form, a blank, and the parameters' trace form.
// Order: PwFwdEqvClass by PW id, then PW type, then control word (false first);
// PwFecSessionId by FEC, then session id.

#include "pw/PwTypes.gen.h"
