#pragma once
// The attribute log of a small state tree (configuration, protocol configuration,
// session status with a state log, statistics, a label set): the seed of the
// attribute-log fuzz target, written whole as a mirror would first receive it.

#include <cstdint>
#include <vector>

#include "fec/MplsLabelSet.h"
#include "model/LdpConfig.h"
#include "model/LdpSession.h"
#include "platform/zel/AttrLogWriter.h"

namespace LdpFuzz {

inline std::vector<uint8_t> attrLogOfSmallTree(size_t capacity = ~size_t{0}) {
  using namespace Ldp;
  Zel::Ptr<LdpConfigColl> configs = ldpConfigCollFactory("config");
  configs->handleInitialized();
  Zel::Ptr<Config> red = configs->configIs(L3::VrfName("red"));
  red->helloHoldTimeIs(30);
  red->intfConfigCollIs("eth0")->igpSyncIs(LdpIgpSyncMode::on_);
  red->staticTargetIs(Ovo::IpGenAddr(Ovo::IpAddr(0x0a000001)), true);
  red->ldpEnabledIntfIs(Ovo::IntfId("eth0"));
  Zel::Ptr<LdpProtoConfigColl> protos = ldpProtoConfigCollFactory("proto");
  protos->protoConfigIs(L3::VrfName("red"))->fecFilterIs("filter");
  Zel::Ptr<LdpSessionStatusColl> sessions = ldpSessionStatusCollFactory("status");
  Zel::Ptr<LdpSessionStatus> s =
      sessions->sessionStatusIs(LdpSessionId(LdpIdentifier(0x0a000002, 0)));
  s->sessionStateCountInc(stateOperational_, 2);
  s->sessionStateLogEntryCollIs("log")->addSessionStateLogEntry(
      LdpSessionStateLogEntry(1.5, stateOperational_, LdpStatusCode(), "up"));
  Zel::Ptr<MplsLabelSet> labels = mplsLabelSetFactory(
      "labels",
      Mpls::FwdEqvClass::forPrefix(Ovo::IpGenPrefix(Ovo::IpGenAddr(Ovo::IpAddr(0x0a000000)), 8)));
  labels->mplsLabelIs(Ovo::MplsLabel(100), true);

  Zel::Ptr<Zel::NboAttrLog::Writer> w =
      new Zel::NboAttrLog::Writer(new Zel::NboAttrLog::Out(capacity));
  std::vector<uint8_t> log;
  for (const Zel::Ptr<Zel::Entity>& root :
       std::vector<Zel::Ptr<Zel::Entity>>{configs, protos, sessions, labels}) {
    w->rootIs(root);
  }
  while (!w->out()->bytes().empty()) {
    log.insert(log.end(), w->out()->bytes().begin(), w->out()->bytes().end());
    w->out()->clear();
    w->flowOut();
  }
  return log;
}

}  // namespace LdpFuzz
