#pragma once
// The ldpdump command: options, the input loop and the exit status. main() only
// hands its arguments and standard streams to runLdpdump(), so that tests run the
// whole command in-process.
//
// Exit status: 0 when every PDU and message is valid (messages ignored silently
// included), 1 when some verdict calls for a Notification, 2 for a usage or input
// error (reported on `err`, after whatever could be decoded).

#include <cstdio>
#include <string>
#include <vector>

namespace LdpDump {

constexpr int exitValid = 0;
constexpr int exitInvalid = 1;
constexpr int exitError = 2;

// The filter of a live capture when -f is not given.
extern const char* const defaultLiveFilter;

// `args` excludes the program name; `in` serves "--hex -" and "--hex" alone.
int runLdpdump(const std::vector<std::string>& args, FILE* in, FILE* out, FILE* err);

}  // namespace LdpDump
