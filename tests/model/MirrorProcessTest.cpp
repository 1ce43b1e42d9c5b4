// A mirror in another process: the roots of the state model (configuration, protocol
// configuration, statistics, session status and configuration, label sets and label
// allocation) mirrored into one attribute log, streamed through a socket pair to a
// forked child that applies it to a Replica, and the child's tree dumps compared with
// the original's while thousands of random changes go on.

#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "fec/LdpLabelAlloc.h"
#include "fec/MplsLabelSet.h"
#include "model/LdpConfig.h"
#include "model/LdpSession.h"
#include "platform/zel/AttrLogReplica.h"
#include "platform/zel/AttrLogWriter.h"
#include "platform/zel/TreeDump.h"

using namespace Ldp;
using Zel::NboAttrLog::Out;
using Zel::NboAttrLog::Replica;
using Zel::NboAttrLog::Writer;

namespace {

// Frames on the socket: a kind octet, a 4-octet big-endian payload length, the payload.
// To the mirror: records (whole records only, as Replica::apply takes them), a request
// for the dumps, or the end. From the mirror: the dumps (a 4-octet entity count, then
// the roots' dumps one after another), or the message of what it refused.
constexpr char kRecords = 'R';
constexpr char kDumpRequest = 'D';
constexpr char kQuit = 'Q';
constexpr char kDumps = 'T';
constexpr char kError = 'E';

// How long the parent waits for the mirror to take or give anything.
constexpr int kTimeoutMs = 10000;

// One end of the socket pair. Every wait is bounded by `timeoutMs` (-1: none); a peer
// that is gone or stays silent ends the exchange with the reason in why().
class Channel {
 public:
  Channel(int fd, int timeoutMs) : fd_(fd), timeoutMs_(timeoutMs) {}

  bool send(char kind, const uint8_t* data, size_t len) {
    std::vector<uint8_t> frame{static_cast<uint8_t>(kind), static_cast<uint8_t>(len >> 24),
                               static_cast<uint8_t>(len >> 16), static_cast<uint8_t>(len >> 8),
                               static_cast<uint8_t>(len)};
    frame.insert(frame.end(), data, data + len);
    for (size_t done = 0; done < frame.size();) {
      if (!wait(POLLOUT)) return false;
      const ssize_t n =
          ::send(fd_, frame.data() + done, frame.size() - done, MSG_NOSIGNAL | MSG_DONTWAIT);
      if (n < 0 && errno != EAGAIN && errno != EINTR) return fail("send: ", errno);
      if (n > 0) done += static_cast<size_t>(n);
    }
    return true;
  }
  bool send(char kind, const std::string& s) {
    return send(kind, reinterpret_cast<const uint8_t*>(s.data()), s.size());
  }

  bool receive(char& kind, std::vector<uint8_t>& payload) {
    uint8_t header[5];
    if (!readExactly(header, sizeof header)) return false;
    kind = static_cast<char>(header[0]);
    payload.resize(static_cast<size_t>(header[1]) << 24 | static_cast<size_t>(header[2]) << 16 |
                   static_cast<size_t>(header[3]) << 8 | header[4]);
    return readExactly(payload.data(), payload.size());
  }

  const std::string& why() const { return why_; }

 private:
  bool wait(short events) {
    pollfd p{fd_, events, 0};
    for (;;) {
      const int n = poll(&p, 1, timeoutMs_);
      if (n > 0) return true;  // ready, or an error that the next call reports
      if (n == 0) return fail("no progress for " + std::to_string(timeoutMs_) + " ms", 0);
      if (errno != EINTR) return fail("poll: ", errno);
    }
  }
  bool readExactly(uint8_t* to, size_t len) {
    for (size_t done = 0; done < len;) {
      if (!wait(POLLIN)) return false;
      const ssize_t n = ::recv(fd_, to + done, len - done, MSG_DONTWAIT);
      if (n == 0) return fail("the peer closed the socket", 0);
      if (n < 0 && errno != EAGAIN && errno != EINTR) return fail("recv: ", errno);
      if (n > 0) done += static_cast<size_t>(n);
    }
    return true;
  }
  bool fail(const std::string& what, int err) {
    why_ = err ? what + std::strerror(err) : what;
    return false;
  }

  int fd_;
  int timeoutMs_;
  std::string why_;
};

std::string putU32(uint32_t v) {
  return {static_cast<char>(v >> 24), static_cast<char>(v >> 16), static_cast<char>(v >> 8),
          static_cast<char>(v)};
}

// The dumps of `roots` one after another.
std::string dumps(const std::vector<Zel::Ptr<Zel::Entity>>& roots) {
  std::string out;
  for (const auto& root : roots) out.append(Zel::treeDump(*root).view());
  return out;
}

// The entities in a dump: one unindented line each.
size_t entitiesIn(const std::string& dump) {
  size_t n = 0;
  for (size_t at = 0; at < dump.size(); at = dump.find('\n', at) + 1) n += dump[at] != ' ';
  return n;
}

// The mirror, in the child: applies record frames to a Replica and answers each dump
// request with its entity count and its roots' dumps, in the order roots() gives. Ends
// with status 0 on kQuit; on a refused record it sends the reason and ends with 2.
[[noreturn]] void runMirror(int fd) {
  int status = 0;
  Channel channel(fd, -1);  // the parent's end closing ends the wait
  try {
    Zel::Ptr<Replica> replica = new Replica;
    for (;;) {
      char kind = 0;
      std::vector<uint8_t> payload;
      if (!channel.receive(kind, payload)) {
        status = 3;
        break;
      }
      if (kind == kRecords) {
        replica->apply(payload.data(), payload.size());
      } else if (kind == kDumpRequest) {
        const std::string reply =
            putU32(static_cast<uint32_t>(replica->entities())) + dumps(replica->roots());
        if (!channel.send(kDumps, reply)) {
          status = 3;
          break;
        }
      } else if (kind == kQuit) {
        break;
      } else {
        channel.send(kError, std::string("unknown frame kind ") + kind);
        status = 2;
        break;
      }
    }
  } catch (const std::exception& e) {
    channel.send(kError, std::string(e.what()));
    status = 2;
  }
  close(fd);
  _exit(status);
}

// The parent's side of a forked mirror. Whatever happens to the test, the destructor
// closes the socket (which ends the mirror's wait) and reaps the child, killing it if
// it does not end in time.
class MirrorProcess {
 public:
  MirrorProcess() {
    int fds[2];
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, fds) != 0) {
      ADD_FAILURE() << "socketpair: " << std::strerror(errno);
      return;
    }
    std::fflush(nullptr);  // nothing buffered is written twice
    pid_ = fork();
    if (pid_ == 0) {
      close(fds[0]);
      runMirror(fds[1]);
    }
    close(fds[1]);
    if (pid_ < 0) {
      ADD_FAILURE() << "fork: " << std::strerror(errno);
      close(fds[0]);
      return;
    }
    fd_ = fds[0];
  }
  ~MirrorProcess() { reap(); }
  MirrorProcess(const MirrorProcess&) = delete;
  MirrorProcess& operator=(const MirrorProcess&) = delete;

  bool running() const { return fd_ >= 0; }

  // Sends what the writer wrote, one frame at a time, letting the writer go on after
  // each, until it writes nothing more.
  bool drain(Writer& w) {
    Out& out = *w.out();
    while (!out.bytes().empty()) {
      if (!channel().send(kRecords, out.bytes().data(), out.size())) return false;
      out.clear();
      w.flowOut();
    }
    return true;
  }

  // The mirror's entity count and dumps; false with the reason in `failure`.
  bool dumpsOf(size_t& entities, std::string& dump, std::string& failure) {
    char kind = 0;
    std::vector<uint8_t> reply;
    if (!channel().send(kDumpRequest, nullptr, 0) || !channel().receive(kind, reply)) {
      failure = this->failure();
      return false;
    }
    if (kind != kDumps || reply.size() < 4) {
      failure = kind == kError ? "the mirror refused: " + std::string(reply.begin(), reply.end())
                               : "unexpected frame kind " + std::string(1, kind);
      return false;
    }
    entities = static_cast<size_t>(reply[0]) << 24 | static_cast<size_t>(reply[1]) << 16 |
               static_cast<size_t>(reply[2]) << 8 | reply[3];
    dump.assign(reply.begin() + 4, reply.end());
    return true;
  }

  // Why the exchange stopped, what the mirror reported before it went away, and how
  // it ended.
  std::string failure() {
    std::string what = channel().why();
    char kind = 0;
    std::vector<uint8_t> payload;
    Channel late(fd_, 1000);
    if (fd_ >= 0 && late.receive(kind, payload) && kind == kError) {
      what += "; the mirror refused: " + std::string(payload.begin(), payload.end());
    }
    return what + "; the mirror: " + reap();
  }

  // Asks the mirror to end and gives how it ended ("exit status 0" when all went well).
  std::string quit() {
    channel().send(kQuit, nullptr, 0);
    return reap();
  }

 private:
  Channel& channel() {
    if (!channel_) channel_ = std::make_unique<Channel>(fd_, kTimeoutMs);
    return *channel_;
  }

  std::string reap() {
    if (fd_ >= 0) close(fd_);
    fd_ = -1;
    if (pid_ <= 0) return "no mirror process";
    int status = 0;
    pid_t done = 0;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while ((done = waitpid(pid_, &status, WNOHANG)) == 0 &&
           std::chrono::steady_clock::now() < deadline) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    std::string how;
    if (done == 0) {
      kill(pid_, SIGKILL);
      waitpid(pid_, &status, 0);
      how = "killed after not ending in time";
    } else if (WIFEXITED(status)) {
      how = "exit status " + std::to_string(WEXITSTATUS(status));
    } else {
      how = "ended by signal " + std::to_string(WTERMSIG(status));
    }
    pid_ = 0;
    return how;
  }

  pid_t pid_ = 0;
  int fd_ = -1;
  std::unique_ptr<Channel> channel_;
};

// The roots of the mirrored state, in the order the writer takes them.
struct Model {
  Zel::Ptr<LdpConfigColl> config = ldpConfigCollFactory("ldpConfig");
  Zel::Ptr<LdpProtoConfigColl> protoConfig = ldpProtoConfigCollFactory("ldpProtoConfig");
  Zel::Ptr<Statistics> statistics = statisticsFactory("statistics");
  Zel::Ptr<LdpSessionStatusColl> sessionStatus = ldpSessionStatusCollFactory("sessionStatus");
  Zel::Ptr<LdpSessionConfigColl> sessionConfig = ldpSessionConfigCollFactory("sessionConfig");
  Zel::Ptr<LabelAllocRequestTable> labelRequests = labelAllocRequestTableFactory("labelRequests");
  Zel::Ptr<LabelAllocGlobalStatus> labelAlloc = labelAllocGlobalStatusFactory("labelAlloc");
  std::vector<Zel::Ptr<MplsLabelSet>> labelSets{
      mplsLabelSetFactory("labels-prefix", Mpls::FwdEqvClass::forPrefix(Ovo::IpGenPrefix(
                                               Ovo::IpGenAddr(Ovo::IpAddr(0x0a010000)), 16))),
      mplsLabelSetFactory("labels-host",
                          Mpls::FwdEqvClass::forHost(Ovo::IpGenAddr(Ovo::IpAddr(0x0a000009)))),
      mplsLabelSetFactory("labels-wildcard", Mpls::FwdEqvClass::wildcard())};

  std::vector<Zel::Ptr<Zel::Entity>> roots() const {
    std::vector<Zel::Ptr<Zel::Entity>> r{config,        protoConfig,   statistics, sessionStatus,
                                         sessionConfig, labelRequests, labelAlloc};
    r.insert(r.end(), labelSets.begin(), labelSets.end());
    return r;
  }
};

// Random changes of every kind the model has: children created, deleted and
// re-created under the same key, attributes, value collections and counters, state
// log entries, single children replaced, labels.
class ModelChanger {
 public:
  ModelChanger(const Model& m, uint32_t seed) : m_(m), rng_(seed) {}

  void change() {
    switch (pick(17)) {
      case 0:
        changeVrfs();
        break;
      case 1:
      case 2:
        changeConfig(config());
        break;
      case 3:
      case 4:
        changeConfigChildren(config());
        break;
      case 5:
        changeProtoConfigs();
        break;
      case 6:
      case 7:
        changeProtoConfig(protoConfig());
        break;
      case 8:
        changeStatistics();
        break;
      case 9:
        changeSessionStatistics();
        break;
      case 10:
      case 11:
        changeSessionStatus();
        break;
      case 12:
      case 13:
        changeStateLog();
        break;
      case 14:
        changeSessionConfig();
        break;
      case 15:
        changeLabels();
        break;
      case 16:
        changeLabelAlloc();
        break;
    }
  }

 private:
  uint32_t pick(uint32_t n) { return static_cast<uint32_t>(rng_() % n); }
  template <class T, size_t N>
  const T& any(const T (&choices)[N]) {
    return choices[pick(N)];
  }

  L3::VrfName vrf() { return any({"default", "red", "blue", "green"}); }
  LdpSessionId peer() { return LdpSessionId(LdpIdentifier(0x0a000001 + pick(4), 0)); }
  Ovo::IpAddr addr() { return Ovo::IpAddr(0x0a000000u + pick(6)); }
  Ovo::IpGenAddr genAddr() { return Ovo::IpGenAddr(addr()); }
  Ovo::IntfId intf() { return Ovo::IntfId(any({"Ethernet1", "Ethernet2", "Vlan10", "Loopback0"})); }
  Mpls::FwdEqvClass fec() {
    return pick(3) ? Mpls::FwdEqvClass::forPrefix(Ovo::IpGenPrefix(
                         Ovo::IpGenAddr(Ovo::IpAddr(0x0a000000u + (pick(4) << 8))), 24))
                   : Mpls::FwdEqvClass::forHost(genAddr());
  }
  Zel::String text() { return any({"", "peer restarted", "hold timer", "it's gone"}); }
  SessionState state() {
    return any({stateNonExist_, stateInitialized_, stateOpenSent_, stateOpenRecv_,
                stateOperational_, stateExpired_});
  }
  LdpStatusCode code() {
    return any({success_, shutdown_, keepAliveExpired_, holdTimerExpired_, tcpConnectionClosed_});
  }

  // An existing VRF's configuration, made when there is none.
  Zel::Ptr<Config> config() {
    const L3::VrfName name = vrf();
    Zel::Ptr<Config> c = m_.config->config(name);
    return c ? c : m_.config->configIs(name);
  }
  Zel::Ptr<ProtoConfig> protoConfig() {
    const L3::VrfName name = vrf();
    Zel::Ptr<ProtoConfig> p = m_.protoConfig->protoConfig(name);
    return p ? p : m_.protoConfig->protoConfigIs(name);
  }

  void changeVrfs() {
    const L3::VrfName name = vrf();
    Zel::Ptr<Config> c = m_.config->config(name);
    switch (c ? pick(10) : 3) {
      case 0:
        m_.config->configDel(name);
        break;
      case 1:
        // Re-created under the same key: the mirror's must start from its defaults too.
        m_.config->configDel(name);
        m_.config->configIs(name)->helloIntervalIs(static_cast<uint16_t>(1 + pick(9)));
        break;
      case 2:
        pick(2) ? m_.config->handleInitialized() : m_.config->initializedIs(false);
        break;
      default:
        m_.config->configIs(name)->enabledIs(pick(2));
        break;
    }
  }

  void changeConfig(const Zel::Ptr<Config>& c) {
    switch (pick(12)) {
      case 0:
        c->enabledIs(!c->enabled());
        break;
      case 1:
        c->helloHoldTimeIs(static_cast<uint16_t>(10 + pick(20)));
        break;
      case 2:
        c->helloIntervalInc();
        break;
      case 3:
        c->md5PasswordIs(text());
        break;
      case 4:
        c->routerIdIs(addr());
        break;
      case 5:
        c->grOperModeIs(any({grModeSpeaker_, grModeHelper_, grModeDisabled_}));
        break;
      case 6:
        c->ldpLabelRetentionIs(any({conservativeRetention_, liberalRetention_}));
        break;
      case 7: {
        LdpProtoParamSetting s = c->ldpProtoParamSetting();
        s.edgeRouterRoleIs(!s.edgeRouterRole());
        s.anvlTestAllFecsIs(pick(2));
        c->ldpProtoParamSettingIs(s);
        break;
      }
      case 8:
        c->forceRouterIdIs(pick(1000) / 8.0);
        break;
      case 9:
        c->linkReadyDelayIs(pick(40) / 4.0);
        break;
      case 10:
        c->routerIdIntfIdIs(intf());
        break;
      case 11:
        c->mLdpEnabledIs(pick(2));
        c->onlyLdpEnabledIntfsIs(pick(2));
        break;
    }
  }

  void changeConfigChildren(const Zel::Ptr<Config>& c) {
    switch (pick(7)) {
      case 0: {
        const Zel::Name name(any({"Ethernet1", "Ethernet2", "Vlan10"}));
        if (c->intfConfigColl(name) && pick(2)) {
          c->intfConfigCollDel(name);
        } else {
          c->intfConfigCollIs(name)->igpSyncIs(any({off_, on_, useGlobal_}));
        }
        break;
      }
      case 1: {
        const Ovo::IpGenAddr target = genAddr();
        pick(3) ? c->staticTargetIs(target, pick(2)) : (void)c->staticTargetDel(target);
        break;
      }
      case 2: {
        const Ovo::IntfId i = intf();
        pick(2) ? c->ldpEnabledIntfIs(i) : (void)c->ldpEnabledIntfDel(i);
        break;
      }
      case 3: {
        const LdpIdentifier neighbor(0x0a000001 + pick(3), 0);
        pick(2) ? c->ldpNeighborClearRequestIs(neighbor, pick(100) / 2.0)
                : (void)c->ldpNeighborClearRequestDel(neighbor);
        break;
      }
      case 4: {
        const Mpls::FwdEqvClass f = fec();
        if (c->staticFecBindingColl(f) && pick(3) == 0) {
          c->staticFecBindingCollDel(f);
        } else {
          c->staticFecBindingCollIs(f)->fecBindingInfoIs(
              LdpFecBindingInfo(Ovo::MplsLabel(16 + pick(8)), Ovo::MplsLabel(3), genAddr()));
        }
        break;
      }
      case 5: {
        const LdpP2mpFecGenericOpaqueId id(genAddr(), pick(3));
        c->staticP2mpFecBindingColl(id) ? (void)c->staticP2mpFecBindingCollDel(id)
                                        : (void)c->staticP2mpFecBindingCollIs(id);
        break;
      }
      case 6:
        c->targetedHelloHoldTimeIs(static_cast<uint16_t>(30 + pick(30)));
        c->fecFilterPrefixListNameIs(any({"", "lo", "core"}));
        break;
    }
  }

  void changeProtoConfigs() {
    const L3::VrfName name = vrf();
    Zel::Ptr<ProtoConfig> p = m_.protoConfig->protoConfig(name);
    switch (p ? pick(3) : 2) {
      case 0:
        m_.protoConfig->protoConfigDel(name);
        break;
      case 1:
        m_.protoConfig->protoConfigDel(name);
        m_.protoConfig->protoConfigIs(name)->ldpHopCountMaxIs(static_cast<uint8_t>(pick(255)));
        break;
      default:
        m_.protoConfig->protoConfigIs(name)->runningStateIs(ldpRunning_);
        break;
    }
  }

  void changeProtoConfig(const Zel::Ptr<ProtoConfig>& p) {
    switch (pick(11)) {
      case 0:
        p->runningStateIs(any({ldpRunning_, ldpStopping_, ldpStopped_}));
        p->reasonIs(text());
        break;
      case 1:
        p->routerIdIs(addr());
        p->ldpIdentifierIs(LdpIdentifier(p->routerId().value(), 0));
        break;
      case 2:
        p->ldpHopCountMaxInc();
        break;
      case 3: {
        const Ovo::IpGenAddr target = genAddr();
        pick(3) ? p->staticTargetIs(target, true) : (void)p->staticTargetDel(target);
        break;
      }
      case 4: {
        const Ovo::IntfId i = intf();
        pick(2) ? p->ldpEnabledIntfIs(i) : (void)p->ldpEnabledIntfDel(i);
        break;
      }
      case 5:
      case 6: {
        // The protocol parameters it was made with, changed, dropped, or replaced by others.
        Zel::Ptr<LdpProtoParam> param = p->ldpProtoParam();
        if (param && pick(8) == 0) {
          p->ldpProtoParamDel();
          break;
        }
        if (!param || pick(6) == 0) {
          param = p->ldpProtoParamIs(pick(2) ? Zel::Name(p->vrfName().value()) : Zel::Name("alt"));
        }
        param->tlvConfigSeqNumIncludeIs(pick(2));
        if (pick(2)) param->fecTlvStrictPrefixWildcardOnlyElementIs(pick(2));
        break;
      }
      case 7:
        if (p->fecFilter() && pick(3) == 0) {
          p->fecFilterDel();
        } else {
          p->fecFilterIs(any({"f1", "f2"}))->filterVersionIs(pick(50));
        }
        break;
      case 8:
        p->grOperModeIs(any({grModeSpeaker_, grModeHelper_, grModeDisabled_}));
        p->grReconnectTimeoutIs(pick(60));
        break;
      case 9:
        p->ipTransportAddrIs(genAddr());
        p->configCodefDelayIs(pick(10) / 4.0);
        break;
      case 10:
        p->ldpProtoParamSettingIs(LdpProtoParamSetting(pick(0x400)));
        break;
    }
  }

  void changeStatistics() {
    Statistics& s = *m_.statistics;
    switch (pick(4)) {
      case 0:
        s.messageIdInc();
        break;
      case 1:
        s.fecCountFilteredIs(pick(100));
        s.fecCountUnfilteredInc(pick(3));
        break;
      case 2:
        // The single child dropped and made again, now and then under another name.
        if (s.sessionStatisticsColl()) {
          s.sessionStatisticsCollDel();
        } else {
          s.sessionStatisticsCollIs(pick(4) ? "sessions" : "sessions2");
        }
        break;
      case 3:
        s.sessionStatisticsCollIs("sessions");
        break;
    }
  }

  void changeSessionStatistics() {
    Zel::Ptr<LdpSessionStatisticsColl> coll = m_.statistics->sessionStatisticsColl();
    if (!coll) coll = m_.statistics->sessionStatisticsCollIs("sessions");
    const LdpSessionId id = peer();
    Zel::Ptr<LdpSessionStatistics> s = coll->sessionStatistics(id);
    if (!s) {
      coll->sessionStatisticsIs(id)->ldpPduRxCountInc(pick(5));
      return;
    }
    switch (pick(7)) {
      case 0:
        if (pick(3) == 0) coll->sessionStatisticsDel(id);
        break;
      case 1:
        s->ldpPduRxCountInc();
        s->ldpPduTxCountInc(pick(3));
        break;
      case 2:
        s->ldpMsgRxCountInc(any({LdpHello_, LdpKeepAlive_, LdpLabelMapping_, LdpAddress_}),
                            pick(4));
        break;
      case 3:
        s->ldpMsgNotificationTxCountInc(code());
        pick(4) ? (void)0 : (void)s->ldpMsgNotificationTxCountDel(code());
        break;
      case 4: {
        const uint32_t msgId = pick(8);
        pick(3) ? s->ldpMsgIdFecMappingInfoIs(
                      msgId, LdpMsgIdFecMappingInfo(fec(), LdpLabelMapping_, pick(2)))
                : (void)s->ldpMsgIdFecMappingInfoDel(msgId);
        break;
      }
      case 5: {
        const PwFwdEqvClass pw(Pseudowire::PseudowireId(100 + pick(3)),
                               Pseudowire::PseudowireType(Pseudowire::PseudowireType::ethernet),
                               pick(2));
        s->pwLocalMsgIdInfoIs(pick(4), PwMsgIdFecMappingInfo(pw, LdpLabelWithdraw_, true));
        break;
      }
      case 6:
        s->ldpPduRxErrorCountIs(pick(3));
        break;
    }
  }

  void changeSessionStatus() {
    const LdpSessionId id = peer();
    Zel::Ptr<LdpSessionStatus> s = m_.sessionStatus->sessionStatus(id);
    if (!s) {
      m_.sessionStatus->sessionStatusIs(id)->sessionStateIs(stateInitialized_);
      return;
    }
    switch (pick(9)) {
      case 0:
        // Now and then deleted, or deleted and re-created under the same key.
        if (pick(4) == 0) {
          m_.sessionStatus->sessionStatusDel(id);
          if (pick(2)) m_.sessionStatus->sessionStatusIs(id)->peerPortIs(646);
        }
        break;
      case 1: {
        const SessionState st = state();
        s->sessionStateIs(st);
        s->sessionStateCountInc(st);
        s->sessionStateLastChangeIs(pick(1000) / 4.0);
        break;
      }
      case 2:
        s->sessionOpStateIs(
            any({opStateUnknown_, opStateAddrExchange_, opStateLabelExchange_, opStateRestart_}));
        break;
      case 3: {
        const LdpTlvType cap = any({p2mpCapabilityTlv_, dynamicCapabilityTlv_, mbbCapabilityTlv_});
        pick(3) ? s->peerCapabilityIs(cap, true) : (void)s->peerCapabilityDel(cap);
        break;
      }
      case 4: {
        const Ovo::IpGenAddr a = genAddr();
        pick(2) ? s->peerIntfIpIs(a, true) : (void)s->peerIntfIpDel(a);
        break;
      }
      case 5:
        s->codeIs(code());
        s->sessionStateReasonIs(text());
        break;
      case 6:
        s->operGrStateIs(any({grStateUnknown_, grStateInactive_, grStateActive_}));
        s->operGrSupportedIs(pick(2));
        break;
      case 7:
        s->localPortIs(static_cast<uint16_t>(1024 + pick(100)));
        s->localIpAddrIs(genAddr());
        s->fatalRetryCountInc();
        break;
      case 8:
        s->peerKeepAliveTimeIs(static_cast<uint16_t>(pick(60)));
        s->sessionUptimeIs(pick(1000));
        break;
    }
  }

  void changeStateLog() {
    Zel::Ptr<LdpSessionStatus> s = m_.sessionStatus->sessionStatus(peer());
    if (!s) return;
    Zel::Ptr<LdpSessionStateLogEntryColl> log = s->sessionStateLogEntryColl();
    if (!log) {
      s->sessionStateLogEntryCollIs("log");
      return;
    }
    switch (pick(40)) {
      case 0:
        s->sessionStateLogEntryCollDel();
        break;
      case 1:
        log->sessionStateLogEntryDelAll();
        break;
      default:
        // Beyond ten entries the oldest goes; a repeat of the newest is not logged.
        log->addSessionStateLogEntry(
            LdpSessionStateLogEntry(++time_ / 4.0, state(), code(), text()));
        break;
    }
  }

  void changeSessionConfig() {
    LdpSessionConfigColl& coll = *m_.sessionConfig;
    if (pick(5) == 0) {
      Zel::Ptr<LdpSessionCommonConfig> common = coll.ldpSessionCommonConfig();
      if (!common) {
        coll.ldpSessionCommonConfigIs("common")->mLdpEnabledIs(true);
      } else if (pick(6) == 0) {
        coll.ldpSessionCommonConfigDel();
      } else {
        const Ovo::IpAddr a = addr();
        pick(2) ? common->localIntfIpIs(a, true) : (void)common->localIntfIpDel(a);
        common->ldpLabelAdvDsplIs(any({onDemand_, unSolicited_}));
        common->ipTransportAddrIs(genAddr());
      }
      return;
    }
    const LdpSessionId id = peer();
    Zel::Ptr<LdpSessionConfig> c = coll.sessionConfig(id);
    if (!c || pick(5) == 0) {
      c ? (void)coll.sessionConfigDel(id) : (void)coll.sessionConfigIs(id)->keepAliveTimeIs(45);
      return;
    }
    c->ldpSessionRoleIs(any({roleUnknown_, roleActive_, rolePassive_}));
    c->keepAliveTimeIs(static_cast<uint16_t>(15 + pick(30)));
    c->peerConfigSeqNumInc();
    c->reasonIs(text());
    c->peerIpAddrIs(genAddr());
    c->ldpPeerStatusCodeIs(code());
  }

  void changeLabels() {
    MplsLabelSet& set = *m_.labelSets[pick(static_cast<uint32_t>(m_.labelSets.size()))];
    const Ovo::MplsLabel label(16 + pick(12));
    switch (pick(4)) {
      case 0:
        set.labelSourceIs(any({Mpls::ldp_, Mpls::static_, Mpls::bgp_, Mpls::segmentRouting_}));
        break;
      case 1:
        set.mplsLabelDel(label);
        break;
      default:
        set.mplsLabelIs(label, pick(2));
        break;
    }
  }

  void changeLabelAlloc() {
    const Mpls::FwdEqvClass f = fec();
    Zel::Ptr<LabelAllocRequest> r = m_.labelRequests->labelBindingRequest(f);
    switch (pick(4)) {
      case 0:
        m_.labelAlloc->stateIs(any({markAndSweep_, dynamicReserve_, waitForLabelRange_}));
        m_.labelAlloc->rangeChangedInc();
        break;
      case 1:
        if (r) {
          m_.labelRequests->labelBindingRequestDel(f);
          break;
        }
        [[fallthrough]];
      default:
        r = m_.labelRequests->labelBindingRequestIs(f);
        r->numLabelsRequestedIs(pick(4));
        r->ldpFecDeliveryTypeIs(any({Unknown_, Local_, Remote_, Egress_}));
        break;
    }
  }

  const Model& m_;
  std::mt19937 rng_;
  uint32_t time_ = 0;
};

// Mirrors the model into a forked process through an Out of `capacity` octets while
// random changes are made, the socket drained after a random number of them; compares
// the mirror with the original every kCheckEvery changes and at the end.
constexpr int kChanges = 4000;
constexpr int kCheckEvery = 500;

void mirrorInAnotherProcess(size_t capacity, uint32_t seed) {
  Model model;
  ModelChanger changer(model, seed);
  for (int i = 0; i < 200; ++i) changer.change();  // state before the mirror connects

  MirrorProcess mirror;
  ASSERT_TRUE(mirror.running());
  Zel::Ptr<Writer> writer = new Writer(new Out(capacity));
  for (const auto& root : model.roots()) writer->rootIs(root);

  std::mt19937 rng(seed + 1);
  size_t mirrored = 0;
  auto compare = [&](int after) {
    ASSERT_TRUE(mirror.drain(*writer)) << mirror.failure();
    std::string failure;
    size_t entities = 0;
    std::string dump;
    ASSERT_TRUE(mirror.dumpsOf(entities, dump, failure)) << failure;
    const std::string original = dumps(model.roots());
    ASSERT_EQ(dump, original) << "after change " << after;
    // Every entity is mirrored once, and nothing deleted stays behind.
    ASSERT_EQ(entities, entitiesIn(original)) << "after change " << after;
    mirrored = entities;
  };
  for (int i = 0; i < kChanges; ++i) {
    changer.change();
    // The socket takes bytes now and then: some changes find the output full.
    if (rng() % 6 == 0) {
      ASSERT_TRUE(mirror.drain(*writer)) << mirror.failure();
    }
    if (i % kCheckEvery == kCheckEvery - 1) {
      ASSERT_NO_FATAL_FAILURE(compare(i));
    }
  }
  ASSERT_NO_FATAL_FAILURE(compare(kChanges));
  // The roots alone would be 10 entities; the random changes leave far more.
  EXPECT_GT(mirrored, 40u);
  EXPECT_EQ(mirror.quit(), "exit status 0");
}

TEST(MirrorProcess, FollowsThousandsOfChangesThroughALargeBuffer) {
  mirrorInAnotherProcess(1 << 20, 3);
}

TEST(MirrorProcess, FollowsThroughABufferOfAFewOctets) {
  // Each frame carries one record; everything goes out by flow-out.
  mirrorInAnotherProcess(4, 5);
}

TEST(MirrorProcess, FollowsThroughABufferThatFillsMidBatch) { mirrorInAnotherProcess(256, 9); }

}  // namespace
