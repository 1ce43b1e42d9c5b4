#include "model/LdpSession.h"

#include "platform/zel/Assert.h"

namespace Ldp {

void LdpSessionStateLogEntryColl::internalAddLogEntry_(const LdpSessionStateLogEntry& e) {
  ZEL_ASSERT(sessionStateLogEntrys() <= maxSize());
  if (sessionStateLogEntrys() == maxSize()) sessionStateLogEntryDeq();
  sessionStateLogEntryEnq(e);
}

bool LdpSessionStateLogEntryColl::shouldAddSessionStateLogEntry(
    const LdpSessionStateLogEntry& e) const {
  if (sessionStateLogEntrys() == 0) return true;
  // Enqueuing leaves the newest entry just below the next index.
  const LdpSessionStateLogEntry newest =
      sessionStateLogEntry(sessionStateLogEntryMetadata().nextIndex() - 1);
  return newest.sessionState() != e.sessionState() || newest.code() != e.code() ||
         newest.reason() != e.reason();
}

void LdpSessionStateLogEntryColl::addSessionStateLogEntry(const LdpSessionStateLogEntry& e) {
  if (shouldAddSessionStateLogEntry(e)) internalAddLogEntry_(e);
}

}  // namespace Ldp
