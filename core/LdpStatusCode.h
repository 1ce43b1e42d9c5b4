#pragma once
// The protocol meaning of a status code: whether a Notification carrying it is
// fatal (its E bit), and the text shown to operators as a session's state.

#include "core/LdpEnums.gen.h"

namespace Ldp {

// The E bit of a Notification carrying `code`. Every code of LdpStatusCode has an
// answer; any other value is a programming error and fails an assertion.
bool statusCodeEBitForStatusCode(LdpStatusCode code);

// The operator-facing text of `code`; codes without a text of their own give the
// enumerator's name (a number that is no enumerator gives itself in decimal).
Zel::String sessionStateStrForStatusCode(LdpStatusCode code);

}  // namespace Ldp
