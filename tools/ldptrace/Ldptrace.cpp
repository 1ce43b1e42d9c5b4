#include "tools/ldptrace/Ldptrace.h"

#include <cstdio>

namespace LdpTrace {

namespace {

const char* const usage =
    "usage: ldptrace FILE\n"
    "Prints the records of a Blink ring file, oldest first: sequence number, seconds\n"
    "since Blink started, message.\n";

}  // namespace

std::string escaped(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (const char ch : text) {
    const auto c = static_cast<unsigned char>(ch);
    if (c == '\n') {
      out += "\\n";
    } else if (c == '\t') {
      out += "\\t";
    } else if (c == '\\') {
      out += "\\\\";
    } else if (c < 0x20 || c == 0x7f) {
      char hex[5];
      std::snprintf(hex, sizeof hex, "\\x%02x", c);
      out += hex;
    } else {
      out += ch;
    }
  }
  return out;
}

void writeRecords(std::ostream& out, const Ldp::Blink::Trace& trace) {
  for (const Ldp::Blink::Record& r : trace.records) {
    // A record may carry a time before the start only in a damaged file.
    const bool before = r.time < trace.startTime;
    const uint64_t ns = before ? trace.startTime - r.time : r.time - trace.startTime;
    char time[40];
    std::snprintf(time, sizeof time, "%s%llu.%06llu", before ? "-" : "",
                  static_cast<unsigned long long>(ns / 1000000000u),
                  static_cast<unsigned long long>(ns % 1000000000u / 1000u));
    out << r.sequence << ' ' << time << ' ' << escaped(r.message) << '\n';
  }
}

int runLdptrace(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  std::string file;
  for (const std::string& a : args) {
    if (a == "--help" || a == "-h") {
      out << usage;
      return exitOk;
    }
    if (a.size() > 1 && a[0] == '-') {
      err << "ldptrace: unknown option '" << a << "'\n" << usage;
      return exitUsage;
    }
    if (!file.empty()) {
      err << "ldptrace: one file only\n" << usage;
      return exitUsage;
    }
    file = a;
  }
  if (file.empty()) {
    err << usage;
    return exitUsage;
  }
  Ldp::Blink::Trace trace;
  if (const std::string error = Ldp::Blink::readTraceFile(file, trace); !error.empty()) {
    err << "ldptrace: " << file << ": " << error << '\n';
    return exitUsage;
  }
  writeRecords(out, trace);
  if (trace.damaged) {
    err << "ldptrace: " << trace.damaged << " damaged record" << (trace.damaged == 1 ? "" : "s")
        << " skipped\n";
  }
  if (trace.formatsDropped) {
    err << "ldptrace: " << trace.formatsDropped
        << " formats did not fit in the file's format table\n";
  }
  return exitOk;
}

}  // namespace LdpTrace
