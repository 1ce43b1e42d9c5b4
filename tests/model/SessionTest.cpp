// The session state types of model/LdpSession.types: the bounded state log, the
// keyed counters, the value types' string forms, and attribute ids through reflection.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "model/LdpSession.h"
#include "platform/zel/GenericIf.h"
#include "tests/support/ValueChecks.h"

using namespace Ldp;
using namespace LdpTest;

namespace {

using LogColl = LdpSessionStateLogEntryColl;

LdpSessionStateLogEntry entry(double time, SessionState state, LdpStatusCode code,
                              const char* reason) {
  return LdpSessionStateLogEntry(time, state, code, Zel::String(reason));
}

// A distinct entry per i: its reason is "r<i>".
LdpSessionStateLogEntry numbered(uint32_t i) {
  // Appended, not "r" + ...: g++ -O3 misreads that (-Wrestrict).
  const std::string reason = std::string("r").append(std::to_string(i));
  return entry(i, stateOperational_, success_, reason.c_str());
}

// The log's indexes in the order the log keeps them.
std::vector<uint32_t> indexes(const LogColl& log) {
  std::vector<uint32_t> out;
  for (const auto& e : log.sessionStateLogEntryIter()) out.push_back(e.key);
  return out;
}

// The reasons of the log's entries, oldest first.
std::vector<std::string> reasons(const LogColl& log) {
  std::vector<std::string> out;
  for (const auto& e : log.sessionStateLogEntryIter()) out.push_back(e.value.reason().str());
  return out;
}

class LogWatch : public LogColl::NotifieeConst {
 public:
  explicit LogWatch(const Zel::Ptr<const LogColl>& c) { notifierIs(c); }
  void onSessionStateLogEntry(uint32_t index) override { seen.push_back(index); }
  std::vector<uint32_t> take() { return std::exchange(seen, {}); }
  std::vector<uint32_t> seen;
};

const LdpSessionId kPeer(LdpIdentifier(0x0A000002, 0));

TEST(LdpSessionStateLog, DropsRepeatsOfTheNewestEntryOnly) {
  Zel::Ptr<LogColl> log = ldpSessionStateLogEntryCollFactory("log");
  LogWatch w(log);
  const LdpSessionStateLogEntry up = entry(1.0, stateOperational_, success_, "");
  EXPECT_TRUE(log->shouldAddSessionStateLogEntry(up));
  log->addSessionStateLogEntry(up);
  EXPECT_EQ(indexes(*log), std::vector<uint32_t>{0});
  EXPECT_EQ(log->sessionStateLogEntryMetadata().nextIndex(), 1u);
  EXPECT_EQ(w.take(), std::vector<uint32_t>{0});

  // The same state reported later is not logged again; the first report stays.
  const LdpSessionStateLogEntry later = entry(9.0, stateOperational_, success_, "");
  EXPECT_FALSE(log->shouldAddSessionStateLogEntry(later));
  log->addSessionStateLogEntry(later);
  EXPECT_EQ(log->sessionStateLogEntrys(), 1u);
  EXPECT_EQ(log->sessionStateLogEntry(0).timeStamp(), 1.0);
  EXPECT_EQ(w.take(), std::vector<uint32_t>{});

  // A difference in the reason alone, or in the code alone, is a new entry.
  log->addSessionStateLogEntry(entry(10.0, stateOperational_, success_, "peer restarted"));
  log->addSessionStateLogEntry(entry(11.0, stateOperational_, shutdown_, "peer restarted"));
  // Only the newest entry counts: the first entry's state again is logged.
  log->addSessionStateLogEntry(entry(12.0, stateOperational_, success_, ""));
  EXPECT_EQ(reasons(*log), (std::vector<std::string>{"", "peer restarted", "peer restarted", ""}));
  EXPECT_EQ(log->sessionStateLogEntry(2).code(), shutdown_);
  EXPECT_EQ(w.take(), (std::vector<uint32_t>{1, 2, 3}));
}

TEST(LdpSessionStateLog, KeepsTheTenNewestUnderIndexesThatOnlyGrow) {
  Zel::Ptr<LogColl> log = ldpSessionStateLogEntryCollFactory("log");
  for (uint32_t i = 0; i < 10; ++i) log->addSessionStateLogEntry(numbered(i));
  EXPECT_EQ(log->sessionStateLogEntrys(), 10u);
  LogWatch w(log);
  // The eleventh evicts the first: one notification for the removal, one for the append.
  log->addSessionStateLogEntry(numbered(10));
  EXPECT_EQ(w.take(), (std::vector<uint32_t>{0, 10}));
  EXPECT_EQ(indexes(*log), (std::vector<uint32_t>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
  EXPECT_EQ(reasons(*log), (std::vector<std::string>{"r1", "r2", "r3", "r4", "r5", "r6", "r7", "r8",
                                                     "r9", "r10"}));

  for (uint32_t i = 11; i < 15; ++i) log->addSessionStateLogEntry(numbered(i));
  EXPECT_EQ(indexes(*log), (std::vector<uint32_t>{5, 6, 7, 8, 9, 10, 11, 12, 13, 14}));
  EXPECT_EQ(log->sessionStateLogEntry(14).reason(), "r14");

  // Emptied, the log accepts any entry and still does not reuse an index.
  log->sessionStateLogEntryDelAll();
  EXPECT_TRUE(log->shouldAddSessionStateLogEntry(numbered(14)));
  log->addSessionStateLogEntry(numbered(14));
  EXPECT_EQ(indexes(*log), std::vector<uint32_t>{15});
  EXPECT_EQ(log->sessionStateLogEntryMetadata().nextIndex(), 16u);
}

TEST(LdpSessionStateLog, EntriesWrittenByIndexAreBoundedToo) {
  // Ten entries written by index leave the next index behind; an append goes above
  // the newest and evicts the oldest.
  Zel::Ptr<LogColl> log = ldpSessionStateLogEntryCollFactory("log");
  for (uint32_t i = 0; i < 10; ++i) log->sessionStateLogEntryIs(i, numbered(i));
  log->addSessionStateLogEntry(numbered(10));
  EXPECT_EQ(indexes(*log), (std::vector<uint32_t>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));

  // More than ten is a broken invariant.
  log->sessionStateLogEntryIs(11, numbered(11));
  EXPECT_DEATH(log->addSessionStateLogEntry(numbered(12)),
               "Assertion failed: sessionStateLogEntrys\\(\\) <= maxSize\\(\\)");
}

class StatusWatch : public LdpSessionStatus::NotifieeConst {
 public:
  explicit StatusWatch(const Zel::Ptr<const LdpSessionStatus>& s) { notifierIs(s); }
  void onSessionStateCount(SessionState s) override { seen.push_back(s); }
  std::vector<SessionState> take() { return std::exchange(seen, {}); }
  std::vector<SessionState> seen;
};

class StatisticsWatch : public LdpSessionStatistics::NotifieeConst {
 public:
  explicit StatisticsWatch(const Zel::Ptr<const LdpSessionStatistics>& s) { notifierIs(s); }
  void onLdpMsgRxCount(LdpMsgType t) override { seen.push_back(t); }
  std::vector<LdpMsgType> take() { return std::exchange(seen, {}); }
  std::vector<LdpMsgType> seen;
};

TEST(LdpSessionCounters, IncrementCreatesAndNotifiesOnlyOnAChange) {
  Zel::Ptr<LdpSessionStatus> status = ldpSessionStatusFactory(kPeer);
  StatusWatch sw(status);
  EXPECT_EQ(status->sessionStateCountInc(stateOperational_), 1u);
  EXPECT_EQ(status->sessionStateCountInc(stateOperational_, 2), 3u);
  EXPECT_EQ(status->sessionStateCountInc(stateOperational_, 0), 3u);
  EXPECT_EQ(sw.take(), (std::vector<SessionState>{stateOperational_, stateOperational_}));
  // A zero increment of a missing entry creates it at 0.
  EXPECT_EQ(status->sessionStateCountInc(stateExpired_, 0), 0u);
  EXPECT_EQ(status->sessionStateCounts(), 2u);
  EXPECT_EQ(sw.take(), std::vector<SessionState>{stateExpired_});

  Zel::Ptr<LdpSessionStatistics> stats = ldpSessionStatisticsFactory(kPeer);
  StatisticsWatch tw(stats);
  stats->ldpMsgRxCountInc(LdpHello_, 5);
  stats->ldpMsgRxCountInc(LdpKeepAlive_);
  stats->ldpMsgRxCountInc(LdpHello_, 0);
  EXPECT_EQ(stats->ldpMsgRxCount(LdpHello_), 5u);
  EXPECT_EQ(stats->ldpMsgRxCount(LdpKeepAlive_), 1u);
  EXPECT_EQ(stats->ldpMsgTxCount(LdpHello_), 0u);
  EXPECT_EQ(tw.take(), (std::vector<LdpMsgType>{LdpHello_, LdpKeepAlive_}));
}

TEST(LdpSessionValues, StringFormsReadBack) {
  expectForm(entry(12.5, stateOpenSent_, keepAliveExpired_, "it's gone"),
             "Value('Ldp::LdpSessionStateLogEntry', ** {'timeStamp': 12.5, 'sessionState': "
             "stateOpenSent, 'code': keepAliveExpired, 'reason': 'it\\'s gone'})");
  expectRefused<LdpSessionStateLogEntry>(
      "Value('Ldp::LdpSessionStateLogEntry', ** {'timeStamp': 0, 'sessionState': stateUp, "
      "'code': success, 'reason': ''})",
      "Invalid value for attribute 'sessionState': Invalid Ldp::SessionState: 'stateUp'");

  const PwFwdEqvClass pw(Pseudowire::PseudowireId(100),
                         Pseudowire::PseudowireType(Pseudowire::PseudowireType::ethernet), true);
  expectForm(PwMsgIdFecMappingInfo(pw, LdpLabelWithdraw_, true),
             "Value('Ldp::PwMsgIdFecMappingInfo', ** {'pwFwdEqvClass': pw100:ethernet:cbit1, "
             "'msgType': LdpLabelWithdraw, 'valid': True})");
  expectLogRoundTrip<PwMsgIdFecMappingInfo>(
      {PwMsgIdFecMappingInfo(), PwMsgIdFecMappingInfo(pw, LdpLabelMapping_, false)});
}

TEST(LdpSessionReflection, AttributeIds) {
  Zel::Ptr<LdpSessionStatus> status = ldpSessionStatusFactory(kPeer);
  Zel::GenericIf s(status);
  EXPECT_EQ(s.attribute(268), "unknownAdvDspl");  // peerLabelAdvDspl
  EXPECT_EQ(s.attribute(269), "unSolicited");     // operLabelAdvDspl
  status->operGrStateIs(grStateActive_);
  EXPECT_EQ(s.attribute(292), "grStateActive");
  s.attributeIs(272, "stateOpenRecv");
  EXPECT_EQ(status->sessionState(), stateOpenRecv_);
  status->sessionStateLogEntryCollIs("log");
  EXPECT_EQ(s.attribute(278), "'log'");

  Zel::Ptr<LogColl> log = status->sessionStateLogEntryColl();
  Zel::GenericIf l(log);
  const Zel::String up = valueToStrep(entry(3.0, stateOperational_, success_, ""));
  EXPECT_EQ(l.call(261, {up}), "True");
  l.call(262, {up});
  EXPECT_EQ(l.call(261, {up}), "False");
  EXPECT_EQ(l.collectionValue(258, "0"), up);
  EXPECT_EQ(l.attribute(259), "10");
  EXPECT_EQ(l.attribute(263), "Value('Ldp::SessionStateLogEntryMetadata', ** {'nextIndex': 1})");

  Zel::Ptr<LdpSessionStatistics> stats = ldpSessionStatisticsFactory(kPeer);
  stats->ldpMsgNotificationTxCountInc(shutdown_, 2);
  EXPECT_EQ(Zel::GenericIf(stats).collectionValue(268, "shutdown"), "2");
}

}  // namespace
