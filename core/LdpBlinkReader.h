#pragma once
// Reads a Blink ring file (layout in core/LdpBlink.h) and formats its records,
// oldest first. The bytes are untrusted: a file that is not a ring file, is cut
// short, or whose header or format table is inconsistent is refused with the
// reason; slots that hold no valid record are skipped, and the ones that were
// started but not completed (torn by a crash) or hold inconsistent arguments are
// counted as damaged.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Ldp::Blink {

struct Record {
  uint64_t sequence = 0;
  uint64_t time = 0;  // ns on the records' clock
  std::string message;
};

struct Trace {
  unsigned sizeBits = 0;
  uint32_t pid = 0;
  uint64_t startTime = 0;      // ns on the records' clock
  uint64_t startRealTime = 0;  // ns since the epoch
  size_t formats = 0;
  uint64_t formatsDropped = 0;
  size_t damaged = 0;
  std::vector<Record> records;  // by sequence number
};

// Reads the bytes of a ring file into `trace`. Returns "" or why they are refused.
std::string readTrace(std::string_view bytes, Trace& trace);
// The same for the file at `path`.
std::string readTraceFile(const std::string& path, Trace& trace);

}  // namespace Ldp::Blink
