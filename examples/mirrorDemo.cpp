// Mirrors LDP state into another process: a Writer turns the state and its changes
// into attribute-log records, a socket pair carries them to a forked child that
// applies them to a Replica, and the child's tree dump comes back to be printed and
// compared with the original's.

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "fec/MplsLabelSet.h"
#include "model/LdpConfig.h"
#include "model/LdpSession.h"
#include "platform/zel/AttrLogReplica.h"
#include "platform/zel/AttrLogWriter.h"
#include "platform/zel/TreeDump.h"

namespace {

using namespace Ldp;

// Frames: a kind octet, a 4-octet big-endian length, the payload. The parent sends
// records (whole records, as Replica::apply takes them) and asks for the dump; the
// child answers with its roots' dumps one after another.
constexpr char kRecords = 'R';
constexpr char kDumpRequest = 'D';
constexpr char kDump = 'T';

bool writeAll(int fd, const uint8_t* data, size_t len) {
  while (len > 0) {
    const ssize_t n = send(fd, data, len, MSG_NOSIGNAL);
    if (n <= 0) return false;
    data += n;
    len -= static_cast<size_t>(n);
  }
  return true;
}

bool readAll(int fd, uint8_t* data, size_t len) {
  while (len > 0) {
    const ssize_t n = recv(fd, data, len, 0);
    if (n <= 0) return false;
    data += n;
    len -= static_cast<size_t>(n);
  }
  return true;
}

bool sendFrame(int fd, char kind, const uint8_t* data, size_t len) {
  const uint8_t header[5] = {static_cast<uint8_t>(kind), static_cast<uint8_t>(len >> 24),
                             static_cast<uint8_t>(len >> 16), static_cast<uint8_t>(len >> 8),
                             static_cast<uint8_t>(len)};
  return writeAll(fd, header, sizeof header) && writeAll(fd, data, len);
}

bool receiveFrame(int fd, char& kind, std::vector<uint8_t>& payload) {
  uint8_t header[5];
  if (!readAll(fd, header, sizeof header)) return false;
  kind = static_cast<char>(header[0]);
  payload.resize(static_cast<size_t>(header[1]) << 24 | static_cast<size_t>(header[2]) << 16 |
                 static_cast<size_t>(header[3]) << 8 | header[4]);
  return readAll(fd, payload.data(), payload.size());
}

std::string dumps(const std::vector<Zel::Ptr<Zel::Entity>>& roots) {
  std::string out;
  for (const auto& root : roots) out.append(Zel::treeDump(*root).view());
  return out;
}

// The child: applies what arrives until the parent closes its end.
[[noreturn]] void runMirror(int fd) {
  int status = 0;
  try {
    Zel::Ptr<Zel::NboAttrLog::Replica> replica = new Zel::NboAttrLog::Replica;
    char kind = 0;
    std::vector<uint8_t> payload;
    while (receiveFrame(fd, kind, payload)) {
      if (kind == kRecords) {
        replica->apply(payload.data(), payload.size());
      } else if (kind == kDumpRequest) {
        const std::string dump = dumps(replica->roots());
        sendFrame(fd, kDump, reinterpret_cast<const uint8_t*>(dump.data()), dump.size());
      }
    }
  } catch (const std::exception& e) {
    std::fprintf(stderr, "mirror: %s\n", e.what());
    status = 1;
  }
  close(fd);
  _exit(status);
}

// Sends what the writer wrote, a frame at a time, letting it go on after each (a
// small buffer holds back what does not fit until then).
bool drain(Zel::NboAttrLog::Writer& w, int fd) {
  Zel::NboAttrLog::Out& out = *w.out();
  while (!out.bytes().empty()) {
    if (!sendFrame(fd, kRecords, out.bytes().data(), out.size())) return false;
    out.clear();
    w.flowOut();
  }
  return true;
}

LdpSessionStateLogEntry logEntry(double time, SessionState state, const char* reason) {
  return LdpSessionStateLogEntry(time, state, success_, Zel::String(reason));
}

}  // namespace

int main() {
  int fds[2];
  if (socketpair(AF_UNIX, SOCK_STREAM, 0, fds) != 0) {
    std::perror("socketpair");
    return 1;
  }
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child < 0) {
    std::perror("fork");
    return 1;
  }
  if (child == 0) {
    close(fds[0]);
    runMirror(fds[1]);
  }
  close(fds[1]);
  const int fd = fds[0];

  // The original: a VRF's configuration, a session with its state log, a label set.
  Zel::Ptr<LdpConfigColl> config = ldpConfigCollFactory("ldpConfig");
  config->handleInitialized();
  Zel::Ptr<Config> red = config->configIs(L3::VrfName("red"));
  red->enabledIs(true);
  red->intfConfigCollIs("Ethernet1")->igpSyncIs(on_);
  red->staticTargetIs(Ovo::IpGenAddr(Ovo::IpAddr(0x0A000002)), true);
  Zel::Ptr<LdpSessionStatusColl> sessions = ldpSessionStatusCollFactory("sessionStatus");
  Zel::Ptr<LdpSessionStatus> session =
      sessions->sessionStatusIs(LdpSessionId(LdpIdentifier(0x0A000002, 0)));
  session->sessionStateIs(stateInitialized_);
  Zel::Ptr<LdpSessionStateLogEntryColl> log = session->sessionStateLogEntryCollIs("log");
  log->addSessionStateLogEntry(logEntry(1.0, stateInitialized_, "connected"));
  Zel::Ptr<MplsLabelSet> labels = mplsLabelSetFactory(
      "labels",
      Mpls::FwdEqvClass::forPrefix(Ovo::IpGenPrefix(Ovo::IpGenAddr(Ovo::IpAddr(0x0A010000)), 16)));
  labels->mplsLabelIs(Ovo::MplsLabel(16), true);
  const std::vector<Zel::Ptr<Zel::Entity>> roots{config, sessions, labels};

  // Mirrored through a buffer of 64 octets: what does not fit follows by flow-out.
  Zel::Ptr<Zel::NboAttrLog::Writer> writer =
      new Zel::NboAttrLog::Writer(new Zel::NboAttrLog::Out(64));
  for (const auto& root : roots) writer->rootIs(root);
  bool sent = drain(*writer, fd);

  // Changes after the mirror has the state.
  red->helloIntervalIs(7);
  red->intfConfigCollDel("Ethernet1");
  red->ldpEnabledIntfIs(Ovo::IntfId("Ethernet2"));
  session->sessionStateIs(stateOperational_);
  log->addSessionStateLogEntry(logEntry(2.5, stateOperational_, "up"));
  labels->mplsLabelIs(Ovo::MplsLabel(17), false);
  labels->mplsLabelDel(Ovo::MplsLabel(16));
  sent = sent && drain(*writer, fd);

  char kind = 0;
  std::vector<uint8_t> reply;
  const bool answered =
      sent && sendFrame(fd, kDumpRequest, nullptr, 0) && receiveFrame(fd, kind, reply);
  close(fd);  // the mirror ends
  int status = 0;
  waitpid(child, &status, 0);
  if (!answered || kind != kDump) {
    std::fprintf(stderr, "The mirror stopped before answering\n");
    return 1;
  }
  const std::string mirror(reply.begin(), reply.end());
  std::printf("The mirror in process %d:\n%s", static_cast<int>(child), mirror.c_str());
  const bool equal = mirror == dumps(roots);
  std::printf("The mirror %s the original.\n", equal ? "equals" : "differs from");
  return equal && WIFEXITED(status) && WEXITSTATUS(status) == 0 ? 0 : 1;
}
