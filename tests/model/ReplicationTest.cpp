// Replication through the attribute log: adapters writing changes as they happen or
// when room returns, a Replica rebuilding the tree, read-only adapters, and received
// logs that are cut short or corrupt.

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "model/LdpProtoParam.h"
#include "platform/zel/AttrLogReplica.h"
#include "platform/zel/AttrLogWriter.h"
#include "platform/zel/TreeDump.h"
#include "tests/model/TestTypes.gen.h"
#include "tests/support/ValueChecks.h"

using namespace LdpTest;
using Zel::NboAttrLog::Out;
using Zel::NboAttrLog::Replica;
using Zel::NboAttrLog::Writer;

namespace {

const Ovo::IpAddr kA(0x0a000001), kB(0x0a000002);

// The records of a log as "<id>" per record, with select and orphan records as
// "select <handle>" and "orphan <handle> <type>".
std::vector<std::string> records(const Out& out) {
  Zel::NboAttrLog::In in(out.bytes());
  std::vector<std::string> seen;
  while (!in.atEnd()) {
    const Zel::AttributeId id = in.nextAttrId();
    if (id == Zel::NboAttrLog::selectRecord) {
      seen.push_back("select " + std::to_string(in.nextU32()));
    } else if (id == Zel::NboAttrLog::orphanRecord) {
      const uint32_t handle = in.nextU32();
      in.nextU32();
      in.nextU32();
      in.nextString();
      seen.push_back("orphan " + std::to_string(handle) + " " + in.nextString().str());
    } else {
      seen.push_back(std::to_string(id));
    }
  }
  return seen;
}

// Moves what the writer wrote into the replica and lets the writer go on, until it
// writes nothing more. Gives the octets moved.
size_t pump(Writer& w, Replica& r) {
  size_t moved = 0;
  while (!w.out()->bytes().empty()) {
    moved += w.out()->bytes().size();
    r.apply(w.out()->bytes().data(), w.out()->bytes().size());
    w.out()->clear();
    w.flowOut();
  }
  return moved;
}

class ProtoParamWatch : public Ldp::LdpProtoParam::NotifieeConst {
 public:
  explicit ProtoParamWatch(const Zel::Ptr<const Ldp::LdpProtoParam>& p) { notifierIs(p); }
  void onTlvConfigSeqNumInclude() override { ++seqNumInclude; }
  int seqNumInclude = 0;
};

TEST(Replication, ChangesWhileFullGoOutOnceWithTheLatestValueInIdOrder) {
  Zel::Ptr<Ldp::LdpProtoParam> p = Ldp::ldpProtoParamFactory("default");
  Zel::Ptr<Out> out = new Out(1);  // room for one record at a time
  Zel::Ptr<Writer> w = new Writer(out);
  w->rootIs(p);
  EXPECT_EQ(records(*out), (std::vector<std::string>{"orphan 1 Ldp::LdpProtoParam"}));
  Zel::Ptr<Replica> r = new Replica;
  pump(*w, *r);  // the five attributes follow, one per flow-out
  EXPECT_FALSE(w->flowOutPending());

  // Immediate: room and nothing waiting.
  p->fecTlvStrictPrefixWildcardOnlyElementIs(false);
  EXPECT_EQ(records(*out), (std::vector<std::string>{"287"}));
  // Full: 287 twice and then 283 wait, and go out in id order, 287 once.
  p->fecTlvStrictPrefixWildcardOnlyElementIs(true);
  p->fecTlvStrictPrefixWildcardOnlyElementIs(false);
  p->tlvIpTransportAddrIncudeIs(false);
  EXPECT_TRUE(w->flowOutPending());
  r->apply(out->bytes().data(), out->bytes().size());
  out->clear();
  out->capacityIs(1000);
  w->flowOut();
  EXPECT_EQ(records(*out), (std::vector<std::string>{"283", "287"}));
  pump(*w, *r);
  Zel::Ptr<Ldp::LdpProtoParam> mirror =
      Zel::Ptr<Ldp::LdpProtoParam>(static_cast<Ldp::LdpProtoParam*>(r->roots().at(0).ptr()));
  EXPECT_FALSE(mirror->fecTlvStrictPrefixWildcardOnlyElement());  // the latest value
  EXPECT_FALSE(mirror->tlvIpTransportAddrIncude());
  EXPECT_EQ(Zel::treeDump(*mirror), Zel::treeDump(*p));

  // A received 285 sets the attribute through its setter: the mirror's reactors see it once.
  ProtoParamWatch watch(mirror);
  p->tlvConfigSeqNumIncludeIs(false);
  pump(*w, *r);
  EXPECT_FALSE(mirror->tlvConfigSeqNumInclude());
  EXPECT_EQ(watch.seqNumInclude, 1);
}

TEST(Replication, ReadOnlyAdaptersAndMirroredEntitiesRefuseLocalWrites) {
  Zel::Ptr<Ldp::LdpProtoParam> p = Ldp::ldpProtoParamFactory("p");
  Zel::Ptr<Zel::Entity::ZelNboAttrLogSa> ro = p->zelNboAttrLogSaIs(nullptr, true);
  EXPECT_TRUE(ro->readOnly());
  expectRangeError(
      [&] { p->tlvConfigSeqNumIncludeIs(false); },
      "Local write to read-only attribute 'tlvConfigSeqNumInclude' of Ldp::LdpProtoParam");
  // A received update for a read-only proxy is refused too.
  Out rec;
  rec.attrBegin(285);
  rec.putU8(1);
  rec.attrEnd();
  Zel::NboAttrLog::In in(rec.bytes());
  in.nextAttrId();
  Replica r;
  expectRangeError([&] { ro->doHandleAttrDeserialization(285, in, r); },
                   "Write update from read-only proxy refused: Ldp::LdpProtoParam");
  ro = nullptr;

  // An entity a Replica mirrors changes only by received records.
  Zel::Ptr<Writer> w = new Writer(new Out);
  w->rootIs(p);
  pump(*w, r);
  Zel::Ptr<Zel::Entity> mirror = r.roots().at(0);
  expectRangeError(
      [&] { static_cast<Ldp::LdpProtoParam&>(*mirror).tlvIpTransportUnknownBitIs(true); },
      "Local write to read-only attribute 'tlvIpTransportUnknownBit' of Ldp::LdpProtoParam");
}

// Every root of a replica, dumped.
std::string dumpAll(const Replica& r) {
  std::string out;
  for (const auto& root : r.roots()) out += Zel::treeDump(*root).str();
  return out;
}

// A tree of every member kind, changed at random; the mirror must equal it.
class HubChanger {
 public:
  // `other`: another root, which hub's aliases refer to (not hub itself: a hub holding
  // a reference to itself would never be freed).
  HubChanger(const Zel::Ptr<Hub>& hub, const Zel::Ptr<Hub>& other, uint32_t seed)
      : hub_(hub), other_(other), rng_(seed) {}

  void change() {
    const Ovo::IpAddr addr(0x0a000000u + pick(4));
    switch (pick(14)) {
      case 0:
        hub_->levelIs(pick(5));
        break;
      case 1:
        hub_->priceIs(pick(6), pick(100) / 4.0);
        break;
      case 2:
        hub_->priceDel(pick(6));
        break;
      case 3:
        hub_->hitsInc(static_cast<Colour>(pick(2) ? red_ : blue_), 1 + pick(3));
        break;
      case 4:
        hub_->flagIs(pick(3), pick(2));
        break;
      case 5: {
        Zel::Ptr<Peer> p = hub_->peer(addr);
        if (!p) {
          hub_->peerIs(addr, pick(2) ? red_ : green_);
        } else if (pick(3) == 0) {
          // Deleting a peer drops the references to it first, as an agent would.
          if (hub_->buddy() == p) hub_->buddyIs(nullptr);
          hub_->knownDel(addr);
          hub_->peerDel(addr);
        } else {
          p->upIs(!p->up());
        }
        break;
      }
      case 6: {
        const uint16_t number = static_cast<uint16_t>(646 + pick(2));
        if (Zel::Ptr<Port> port = hub_->port(addr, number)) {
          pick(2) ? hub_->portDel(addr, number) : (port->speedIs(pick(4) * 1000), true);
        } else {
          hub_->portIs(addr, number, 1500);
        }
        break;
      }
      case 7: {
        const Zel::Name name(pick(2) ? "s1" : "s2");
        if (hub_->spoke(name)) {
          hub_->spokeDel(name);
        } else {
          hub_->spokeIs(name, static_cast<uint8_t>(pick(9)));
        }
        break;
      }
      case 8:
        // Replaced by a router under another id, or by one under the same id.
        hub_->routerIs(Mpls::RouterId(Ovo::IpAddr(0x01010100u + pick(2))))->hellosIs(pick(9));
        if (pick(4) == 0) {
          const Mpls::RouterId id = hub_->router()->routerId();
          hub_->routerDel();
          hub_->routerIs(id);
        }
        break;
      case 9:
        if (pick(2)) {
          hub_->hubSpokeDel();
        } else if (pick(2)) {
          hub_->hubSpokeIs("core", 7);
        } else {
          hub_->hubSpokeIs("edge", 8);
        }
        break;
      case 10:
        if (hub_->items() >= 3 || pick(3) == 0) {
          hub_->itemDeq();
        } else {
          hub_->itemEnq(
              Item(Zel::String("i" + std::to_string(pick(50))), static_cast<uint16_t>(pick(3))));
        }
        break;
      case 11:
        hub_->buddyIs(hub_->peer(addr));
        break;
      case 12:
        if (Zel::Ptr<Peer> p = hub_->peer(addr)) {
          pick(2) ? hub_->knownIs(p) : (void)hub_->knownDel(addr);
        }
        break;
      case 13:
        pick(2) ? hub_->aliasIs("other", other_) : (void)hub_->aliasDel("other");
        break;
    }
  }

 private:
  uint32_t pick(uint32_t n) { return static_cast<uint32_t>(rng_() % n); }
  Zel::Ptr<Hub> hub_;
  Zel::Ptr<Hub> other_;
  std::mt19937 rng_;
};

void mirrorRandomChanges(size_t capacity, uint32_t seed) {
  Zel::Ptr<Hub> other = hubFactory("other");
  Zel::Ptr<Hub> hub = hubFactory("hub");
  hub->peerIs(kA, red_);  // some state before the mirror connects
  hub->priceIs(1, 2.5);
  Zel::Ptr<Out> out = new Out(capacity);
  Zel::Ptr<Writer> w = new Writer(out);
  Zel::Ptr<Replica> r = new Replica;
  w->rootIs(other);
  w->rootIs(hub);
  auto original = [&] { return Zel::treeDump(*other).str() + Zel::treeDump(*hub).str(); };
  HubChanger changer(hub, other, seed);
  std::mt19937 rng(seed + 1);
  for (int i = 0; i < 3000; ++i) {
    changer.change();
    // The transport takes bytes away now and then, not after every change.
    if (rng() % 4 == 0) pump(*w, *r);
    if (i % 500 == 499) {
      pump(*w, *r);
      ASSERT_EQ(dumpAll(*r), original()) << "after change " << i;
    }
  }
  pump(*w, *r);
  EXPECT_EQ(dumpAll(*r), original());
  EXPECT_EQ(r->unresolvedReferences(), 0u);
  // Every entity of the trees is mirrored once, and nothing deleted stays behind:
  // the dump has one unindented line per entity.
  const std::string dump = original();
  size_t entities = 0;
  for (size_t at = 0; at < dump.size(); at = dump.find('\n', at) + 1) entities += dump[at] != ' ';
  EXPECT_EQ(r->entities(), entities);
}

TEST(Replication, MirrorFollowsRandomChangesOfEveryMemberKind) { mirrorRandomChanges(1 << 20, 7); }

TEST(Replication, MirrorFollowsThroughABufferOfAFewOctets) { mirrorRandomChanges(4, 11); }

// The whole log of a small tree of every member kind.
std::vector<uint8_t> smallTreeLog() {
  Zel::Ptr<Hub> hub = hubFactory("hub");
  Zel::Ptr<Peer> a = hub->peerIs(kA, red_);
  hub->peerIs(kB, blue_)->upIs(true);
  hub->portIs(kA, 646, 1500)->speedIs(10);
  hub->spokeIs("s", 3);
  hub->priceIs(4, 1.5);
  hub->flagIs(1, true);
  hub->hitsInc(red_, 2);
  hub->knownIs(a);
  hub->buddyIs(a);
  Zel::Ptr<Hub> other = hubFactory("other");
  hub->aliasIs("other", other);
  hub->itemEnq(Item("x", 2));
  Zel::Ptr<Writer> w = new Writer(new Out);
  w->rootIs(other);
  w->rootIs(hub);
  return w->out()->bytes();
}

TEST(Replication, CutOrCorruptLogsAreRefusedAndLeaveTheMirrorAsItWas) {
  const std::vector<uint8_t> log = smallTreeLog();
  {
    Replica whole;
    whole.apply(log.data(), log.size());
    EXPECT_NE(dumpAll(whole), "");
  }
  // A log cut anywhere, or with any octet changed: never a crash or a read out of
  // bounds (the sanitizer builds check that); a refused record changes nothing.
  std::vector<std::vector<uint8_t>> variants;
  for (size_t cut = 0; cut < log.size(); ++cut)
    variants.emplace_back(log.begin(), log.begin() + cut);
  for (size_t at = 0; at < log.size(); ++at) {
    for (uint8_t flip : {0x01, 0x80, 0xFF}) {
      variants.push_back(log);
      variants.back()[at] ^= flip;
    }
  }
  size_t refused = 0;
  for (const std::vector<uint8_t>& v : variants) {
    Replica r;
    Zel::NboAttrLog::In in(v);
    std::string before = dumpAll(r);
    for (;;) {
      try {
        if (!r.applyNext(in)) break;
      } catch (const Zel::RangeException&) {
        ++refused;
        ASSERT_EQ(dumpAll(r), before);
        break;
      }
      before = dumpAll(r);
    }
  }
  EXPECT_GT(refused, log.size());  // every cut inside a record at least

  // What the refusals say.
  auto refusal = [](const std::vector<uint8_t>& bytes) {
    Replica r;
    try {
      r.apply(bytes.data(), bytes.size());
    } catch (const Zel::RangeException& e) {
      return std::string(e.what());
    }
    return std::string();
  };
  Out select;
  select.attrBegin(Zel::NboAttrLog::selectRecord);
  select.putU32(9);
  select.attrEnd();
  EXPECT_EQ(refusal(select.bytes()), "NboAttrLog: select of unknown handle 9");
  Out orphan;
  orphan.attrBegin(Zel::NboAttrLog::orphanRecord);
  for (uint32_t v : {1u, 0u, 0u}) orphan.putU32(v);
  orphan.putString("");
  orphan.putString("LdpTest::Nowhere");
  orphan.attrEnd();
  EXPECT_EQ(refusal(orphan.bytes()),
            "NboAttrLog: orphan of unknown entity type 'LdpTest::Nowhere'");
  std::vector<uint8_t> badOp = log;
  Out op;  // a price entry with operation 3 after the whole tree
  op.attrBegin(Hub::zelType().attr(std::string_view("price"))->id);
  op.putU8(3);
  op.putU32(4);
  op.attrEnd();
  badOp.insert(badOp.end(), op.bytes().begin(), op.bytes().end());
  EXPECT_EQ(refusal(badOp), "NboAttrLog: bad entry operation 3");
  EXPECT_EQ(refusal(std::vector<uint8_t>(log.begin(), log.end() - 1)),
            "NboAttrLog::In: record truncated");
}

TEST(Replication, EveryGeneratedEntityTypeHasAnAdapter) {
  // Message parsers are hand-written views of a packet in flight, not state: they
  // are not mirrored.
  const Zel::ZelType* parser = Zel::ZelType::lookup("Ldp::LdpMsgParser");
  ASSERT_NE(parser, nullptr);
  size_t types = 0;
  for (const Zel::ZelType* t : Zel::ZelType::registered()) {
    // Entity types derive from Zel::Entity; object types have no base.
    if (t->kind() != Zel::ZelType::Kind::entity || !t->base() || t->isKindOf(parser)) continue;
    ++types;
    EXPECT_NE(Zel::NboAttrLog::orphanFactory(t), nullptr) << t->name();
  }
  EXPECT_GT(types, 30u);
}

TEST(Replication, ResyncRebuildsAMirrorAfterDroppedState) {
  Zel::Ptr<Hub> hub = hubFactory("hub");
  hub->peerIs(kA, red_)->upIs(true);
  hub->priceIs(3, 4.5);
  Zel::Ptr<Out> out = new Out(1);
  Zel::Ptr<Writer> w = new Writer(out);
  Zel::Ptr<Zel::Entity::ZelNboAttrLogSa> sa = w->rootIs(hub);
  Zel::Ptr<Replica> r = new Replica;
  pump(*w, *r);
  EXPECT_EQ(dumpAll(*r), Zel::treeDump(*hub).str());

  // A clone serves the same entity apart from the log.
  Zel::Ptr<Zel::Entity::ZelNboAttrLogSa> clone = sa->cloneSa();
  EXPECT_EQ(clone->entity(), sa->entity());
  EXPECT_EQ(clone->writer(), nullptr);
  EXPECT_NE(clone, sa);
  clone = nullptr;

  // Changes wait while the output is full; dropping the waiting state loses them...
  hub->levelIs(9);
  hub->priceIs(3, 1.0);
  ASSERT_NE(sa->flowOut(), nullptr);
  sa->freeResyncState(new Zel::NboAttrLog::FlowOut);  // not its state: kept
  ASSERT_NE(sa->flowOut(), nullptr);
  sa->freeResyncState(sa->flowOut());
  EXPECT_EQ(sa->flowOut(), nullptr);
  pump(*w, *r);
  EXPECT_NE(dumpAll(*r), Zel::treeDump(*hub).str());
  // ...until a resynchronisation sends everything again to a cleared mirror.
  r->clear();
  EXPECT_EQ(r->entities(), 0u);
  w->resync();
  pump(*w, *r);
  EXPECT_EQ(dumpAll(*r), Zel::treeDump(*hub).str());
  EXPECT_EQ(r->entities(), 4u);  // the hub, its peer, its router and its spoke
}

TEST(Replication, AChildTheConstructorMadeAndTheOriginalDroppedIsDroppedByTheMirror) {
  // The mirror's constructor makes the child too: the orphan's attributes must say
  // it is gone, however the mirror connects.
  Zel::Ptr<Hub> hub = hubFactory("hub");
  hub->hubSpokeDel();
  Zel::Ptr<Writer> w = new Writer(new Out(4));
  w->rootIs(hub);
  Zel::Ptr<Replica> r = new Replica;
  pump(*w, *r);
  EXPECT_EQ(dumpAll(*r), Zel::treeDump(*hub).str());
  r->clear();
  w->resync();
  pump(*w, *r);
  EXPECT_EQ(dumpAll(*r), Zel::treeDump(*hub).str());
}

}  // namespace
