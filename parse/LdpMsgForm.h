#pragma once
// The printed form of a message inside a PDU's string form, built from the
// message header alone: "LdpMsg: <type name>, U(<0|1>), Len(<length field>),
// Id(<message id>)". A message shorter than a message header (length field below
// 4) has no complete id: its form ends "Id(truncated)" and the octets past the
// message are not read.

#include "platform/zel/String.h"
#include "wire/LdpHeaders.h"

namespace Ldp {

Zel::String ldpMsgHdrForm(const LdpMsgHdr& hdr);

}  // namespace Ldp
