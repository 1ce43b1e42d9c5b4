#include "core/LdpStatusCode.h"

#include "platform/zel/Assert.h"

namespace Ldp {

bool statusCodeEBitForStatusCode(LdpStatusCode code) {
  // The failed assertion after the switch does not return; cppcheck misses that.
  // cppcheck-suppress missingReturn
  switch (code) {
    case badLdpId_:
    case badVersion_:
    case badPduLength_:
    case badMessageLength_:
    case badTlvLength_:
    case malformedTlv_:
    case holdTimerExpired_:
    case shutdown_:
    case rejectNoHello_:
    case rejectParamAdvMode_:
    case rejectMaxPduLength_:
    case rejectParamLabelRange_:
    case keepAliveExpired_:
    case sessionRejectBadKeepAliveTime_:
    case internalError_:
      return true;
    case success_:
    case unknownMessageType_:
    case unknownTlv_:
    case loopDetected_:
    case unknownFec_:
    case noRoute_:
    case noLabelResources_:
    case labelResourcesAvailable_:
    case labelRequestAborted_:
    case missingMessageParams_:
    case unsupportedAddressFamily_:
    case illegalCBit_:
    case wrongCBit_:
    case pwStatus_:
    case unknownMessageTypeIgnore_:
    case establishingTcpConnection_:
    case sessionInitFailed_:
    case sessionRoleChanged_:
    case tcpConnectionClosed_:
    case ipChange_:
    case idChange_:
    case mLdpChange_:
      return false;
  }
  ZEL_ASSERT(!"Missing status code E-bit definition");
}

Zel::String sessionStateStrForStatusCode(LdpStatusCode code) {
  switch (code) {
    case success_:
      return "success";
    case badLdpId_:
      return "bad LDP identifier";
    case badVersion_:
      return "bad protocol version";
    case badPduLength_:
      return "bad PDU length";
    case unknownMessageType_:
      return "unknown message type";
    case badMessageLength_:
      return "bad message length";
    case unknownTlv_:
      return "unknown TLV";
    case badTlvLength_:
      return "bad TLV length";
    case malformedTlv_:
      return "malformed TLV value";
    case holdTimerExpired_:
      return "hold timer expired";
    case shutdown_:
      return "shutdown";
    case loopDetected_:
      return "loop detected";
    case unknownFec_:
      return "unknown FEC";
    case noRoute_:
      return "no route";
    case noLabelResources_:
      return "no label resources available";
    case labelResourcesAvailable_:
      return "label resources available";
    case rejectNoHello_:
      return "session rejected: no hello";
    case rejectParamAdvMode_:
      return "session rejected: advertisement mode";
    case rejectMaxPduLength_:
      return "session rejected: max PDU length";
    case rejectParamLabelRange_:
      return "session rejected: label range";
    case keepAliveExpired_:
      return "keepAlive timer expired";
    case labelRequestAborted_:
      return "label request aborted";
    case missingMessageParams_:
      return "missing message parameters";
    case unsupportedAddressFamily_:
      return "unsupported address family";
    case sessionRejectBadKeepAliveTime_:
      return "session rejected: bad keepAlive time";
    case internalError_:
      return "internal error";
    case establishingTcpConnection_:
      return "attempting to establish TCP connection";
    case sessionInitFailed_:
      return "session initialization failed";
    case sessionRoleChanged_:
      return "session role changed";
    case tcpConnectionClosed_:
      return "TCP connection closed";
    case mLdpChange_:
      return "capability change - mLDP";
    default:
      return stringValue(code);
  }
}

}  // namespace Ldp
