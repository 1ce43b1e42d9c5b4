#pragma once
// The ldptrace command: prints the records of a Blink ring file (core/LdpBlink.h),
// oldest first, one per line: sequence number, seconds since Blink started, and
// the formatted message. main() only hands its arguments and streams to
// runLdptrace(), so that tests run the command in-process.

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "core/LdpBlinkReader.h"

namespace LdpTrace {

constexpr int exitOk = 0;
constexpr int exitUsage = 2;

// `text` with control characters escaped, so that a message stays on one line.
std::string escaped(std::string_view text);

// One line per record.
void writeRecords(std::ostream& out, const Ldp::Blink::Trace& trace);

// `args` excludes the program name.
int runLdptrace(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

}  // namespace LdpTrace
