#include "tools/ldpdump/Ldpdump.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "tools/ldpdump/Capture.h"
#include "tools/ldpdump/Dumper.h"
#include "tools/ldpdump/HexInput.h"
#include "tools/ldpdump/LinkDecode.h"
#include "tools/ldpdump/TcpReassembler.h"

namespace LdpDump {

const char* const defaultLiveFilter = "port 646 or (vlan and port 646)";

namespace {

const char* const usage =
    "usage: ldpdump -r FILE | -i IFACE | --hex [FILE|-]  [options]\n"
    "Decodes LDP PDUs with libLdp's parsers and says what a receiving LSR does with each.\n"
    "\n"
    "input (one of):\n"
    "  -r FILE         read a pcap or pcapng capture ('-': standard input)\n"
    "  -i IFACE        capture live on IFACE (needs root or CAP_NET_RAW)\n"
    "  --hex [FILE|-]  read PDUs as hex, one per line ('#' comments; default: standard input)\n"
    "options:\n"
    "  -f FILTER       capture filter (live default: \"port 646 or (vlan and port 646)\")\n"
    "  -c N            stop after N PDUs\n"
    "  --json          one JSON object per line for each PDU (tools/ldpdump/README.md)\n"
    "  --stats         print a summary at the end instead of each PDU (with -q: the invalid\n"
    "                  ones too; with -v: every PDU too)\n"
    "  -q              print only invalid PDUs and messages, and stream problems\n"
    "  -v              with --stats, print every PDU as well\n"
    "  -h, --help      this text\n"
    "exit status: 0 all valid, 1 some PDU or message calls for a Notification, 2 usage or\n"
    "input error\n";

enum class Source { none, file, live, hex };

struct Options {
  Source source = Source::none;
  std::string name;  // file, interface, or hex file ("" or "-": `in`)
  std::string filter;
  bool filterSet = false;
  bool verbose = false;
  DumpOptions dump;
};

// Parses `args` into `o`; false with `error` set (empty for --help).
bool parseArgs(const std::vector<std::string>& args, Options* o, std::string* error, bool* help) {
  auto source = [&](Source s, const std::string& name) {
    if (o->source != Source::none) {
      *error = "give one input: -r FILE, -i IFACE or --hex";
      return false;
    }
    o->source = s;
    o->name = name;
    return true;
  };
  bool json = false;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    const bool hasValue = i + 1 < args.size();
    if (a == "-h" || a == "--help") {
      *help = true;
      return true;
    } else if (a == "-r" || a == "-i" || a == "-f" || a == "-c") {
      if (!hasValue) {
        *error = "option " + a + " needs a value";
        return false;
      }
      const std::string& v = args[++i];
      if (a == "-r") {
        if (!source(Source::file, v)) return false;
      } else if (a == "-i") {
        if (!source(Source::live, v)) return false;
      } else if (a == "-f") {
        o->filter = v;
        o->filterSet = true;
      } else {
        char* end = nullptr;
        const unsigned long long n = std::strtoull(v.c_str(), &end, 10);
        if (v.empty() || *end != '\0' || n == 0 || v[0] == '-') {
          *error = "-c needs a positive number, not '" + v + "'";
          return false;
        }
        o->dump.maxPdus = n;
      }
    } else if (a == "--hex") {
      std::string name;
      if (hasValue && (args[i + 1] == "-" || args[i + 1][0] != '-')) name = args[++i];
      if (!source(Source::hex, name)) return false;
    } else if (a == "--json") {
      json = true;
    } else if (a == "--stats") {
      o->dump.stats = true;
    } else if (a == "-q") {
      o->dump.quiet = true;
    } else if (a == "-v") {
      o->verbose = true;
    } else {
      *error = "unknown option '" + a + "'";
      return false;
    }
  }
  if (o->source == Source::none) {
    *error = "no input: give -r FILE, -i IFACE or --hex";
    return false;
  }
  if (o->filterSet && o->source == Source::hex) {
    *error = "-f applies to captures, not to --hex";
    return false;
  }
  o->dump.format = json ? Format::json : Format::text;
  o->dump.perPdu = !o->dump.stats || o->dump.quiet || o->verbose;
  o->dump.flushEachPdu = o->source == Source::live;
  return true;
}

// The live capture that a signal interrupts.
Capture* volatile interruptible = nullptr;

extern "C" void onSignal(int) {
  if (Capture* c = interruptible) c->interrupt();
}

int runCapture(const Options& o, FILE* out, FILE* err) {
  std::string error;
  const std::string filter =
      o.filterSet ? o.filter : (o.source == Source::live ? defaultLiveFilter : "");
  std::unique_ptr<Capture> capture = o.source == Source::live
                                         ? Capture::openLive(o.name, filter, &error)
                                         : Capture::openFile(o.name, filter, &error);
  if (!capture) {
    std::fprintf(err, "ldpdump: %s\n", error.c_str());
    return exitError;
  }
  struct sigaction previous[2];
  if (o.source == Source::live) {
    interruptible = capture.get();
    struct sigaction sa = {};
    sa.sa_handler = onSignal;
    sigaction(SIGINT, &sa, &previous[0]);
    sigaction(SIGTERM, &sa, &previous[1]);
  }

  Dumper dumper(o.dump, out);
  TcpReassembler tcp(dumper);
  const int linkType = capture->linkType();
  FrameRef ref;
  bool failed = false;
  while (!dumper.limitReached()) {
    const pcap_pkthdr* header;
    const uint8_t* data;
    const Capture::Next next = capture->next(&header, &data);
    if (next == Capture::Next::timeout) {
      dumper.flush();
      continue;
    }
    if (next == Capture::Next::end) break;
    if (next == Capture::Next::error) {
      error = capture->error();
      failed = true;
      break;
    }
    ++ref.number;
    ref.sec = header->ts.tv_sec;
    ref.usec = static_cast<int32_t>(header->ts.tv_usec);
    const FrameDecode d = decodeFrame(linkType, data, header->caplen);
    dumper.frame(ref, d);
    if (d.kind != FrameKind::ldp) continue;
    const Segment& s = d.segment;
    if (s.transport == Transport::tcp) {
      tcp.segment(s, ref);
    } else {
      const PduOrigin origin = PduOrigin::of(Transport::udp, ref, s.src, s.dst, s.sport, s.dport);
      dumper.pdu(origin, s.payload, s.payloadLen);
    }
  }
  if (o.source == Source::live) {
    sigaction(SIGINT, &previous[0], nullptr);
    sigaction(SIGTERM, &previous[1], nullptr);
    interruptible = nullptr;
  }
  if (!dumper.limitReached()) tcp.finish(ref);
  dumper.finish(tcp.counters());
  if (failed) {
    std::fprintf(err, "ldpdump: %s: capture cut short after frame %llu: %s\n", o.name.c_str(),
                 static_cast<unsigned long long>(ref.number), error.c_str());
    return exitError;
  }
  return dumper.anyInvalid() ? exitInvalid : exitValid;
}

int runHex(const Options& o, FILE* in, FILE* out, FILE* err) {
  FILE* file = in;
  if (!o.name.empty() && o.name != "-") {
    file = std::fopen(o.name.c_str(), "r");
    if (!file) {
      std::fprintf(err, "ldpdump: cannot read %s: %s\n", o.name.c_str(), std::strerror(errno));
      return exitError;
    }
  }
  Dumper dumper(o.dump, out);
  HexReader reader(file);
  std::vector<uint8_t> octets;
  std::string error;
  bool bad = false;
  for (;;) {
    if (dumper.limitReached()) break;
    const HexReader::Line line = reader.next(&octets, &error);
    if (line == HexReader::Line::end) break;
    if (line == HexReader::Line::bad) {
      dumper.flush();
      std::fprintf(err, "ldpdump: %s line %llu: %s\n",
                   o.name.empty() || o.name == "-" ? "standard input" : o.name.c_str(),
                   static_cast<unsigned long long>(reader.line()), error.c_str());
      bad = true;
      continue;
    }
    PduOrigin origin;
    origin.transport = Transport::hex;
    origin.frame = origin.firstFrame = reader.line();
    dumper.pdu(origin, octets.data(), octets.size());
  }
  if (file != in) std::fclose(file);
  dumper.finish(TcpCounters{});
  if (bad) return exitError;
  return dumper.anyInvalid() ? exitInvalid : exitValid;
}

}  // namespace

int runLdpdump(const std::vector<std::string>& args, FILE* in, FILE* out, FILE* err) {
  Options o;
  std::string error;
  bool help = false;
  if (!parseArgs(args, &o, &error, &help)) {
    std::fprintf(err, "ldpdump: %s\n%s", error.c_str(), usage);
    return exitError;
  }
  if (help) {
    std::fputs(usage, out);
    return exitValid;
  }
  return o.source == Source::hex ? runHex(o, in, out, err) : runCapture(o, out, err);
}

}  // namespace LdpDump
