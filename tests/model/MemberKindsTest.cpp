// The member kinds beyond plain attributes and collections, on the test-only types of
// TestTypes.types (Hub holds one member of each): construction arguments, multi-part
// keys, counters, references, queues, hand-written access points and operations,
// object types, keys added by a derived type, and nested enumerations.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "platform/acl/PrefixList.h"
#include "platform/zel/GenericIf.h"
#include "tests/model/TestTypes.gen.h"
#include "tests/support/ValueChecks.h"

namespace LdpTest {

// Hand-written members of Hub.
uint32_t Hub::load() const { return level() + static_cast<uint32_t>(reach()); }
// Keeps nothing of its own: lowers the level to the cap.
void Hub::capIs(uint32_t v) {
  if (level() > v) levelIs(v);
}
Zel::String Hub::pending() { return itemDeq().text(); }
Zel::String Hub::scale(uint32_t factor, const Zel::String& unit) {
  levelIs(level() * factor);
  return Zel::String(std::to_string(level()) + " " + unit.str());
}
void Hub::clear() {
  priceDelAll();
  hitsDelAll();
}
uint32_t Hub::loadOf(const Ovo::IpAddr& address) const {
  Zel::Ptr<Peer> p = peer(address);
  return p && p->up() ? load() : 0;
}

}  // namespace LdpTest

using namespace LdpTest;
using Strings = std::vector<std::string>;

namespace {

const Ovo::IpAddr kA(0x0a000001), kB(0x0a000002);  // 10.0.0.1, 10.0.0.2

// Every handler call as "<attribute>" or "<attribute>:<key form>".
class HubWatch : public Hub::NotifieeConst {
 public:
  explicit HubWatch(const Zel::Ptr<const Hub>& h) { notifierIs(h); }
  void onLevel() override { seen.push_back("level"); }
  void onFilter() override { seen.push_back("filter"); }
  void onBuddy() override { seen.push_back("buddy"); }
  void onPrice(uint32_t k) override { saw("price", k); }
  void onFlag(uint32_t k) override { saw("flag", k); }
  void onHits(Colour k) override { saw("hits", k); }
  void onPeer(const Ovo::IpAddr& k) override { saw("peer", k); }
  void onPort(const Zel::Key<Ovo::IpAddr, uint16_t>& k) override { saw("port", k); }
  void onSpoke(const Zel::Name& k) override { saw("spoke", k); }
  void onKnown(const Ovo::IpAddr& k) override { saw("known", k); }
  void onAlias(const Zel::String& k) override { saw("alias", k); }
  void onItem(uint32_t k) override { saw("item", k); }
  void onItemMeta() override { seen.push_back("itemMeta"); }
  void onRouter() override { seen.push_back("router"); }
  void onHubSpoke() override { seen.push_back("hubSpoke"); }

  Strings take() { return std::exchange(seen, {}); }
  Strings seen;

 private:
  template <class K>
  void saw(const char* what, const K& k) {
    using Zel::valueToStrep;
    seen.push_back(std::string(what) + ":" + valueToStrep(k).str());
  }
};

Zel::AttributeId idOf(const Zel::ZelType& t, const char* name) {
  const Zel::AttrDesc* a = t.attr(std::string_view(name));
  EXPECT_NE(a, nullptr) << name;
  return a ? a->id : 0;
}

TEST(MemberKinds, InitArgumentsRefuseAnotherValueAndChangeNothing) {
  Zel::Ptr<Hub> h = hubFactory("h");
  Zel::Ptr<Peer> p = h->peerIs(kA, red_);
  Zel::Ptr<Port> port = h->portIs(kA, 646, 1500);
  Zel::Ptr<Spoke> s = h->spokeIs("s", 1);
  EXPECT_EQ(p->role(), red_);
  EXPECT_EQ(port->mtu(), 1500u);
  HubWatch w(h);

  EXPECT_EQ(h->peerIs(kA, red_), p);  // the same arguments: the existing child
  expectRangeError([&] { h->peerIs(kA, blue_); },
                   "LdpTest::Peer '10.0.0.1' cannot be re-instantiated with a different 'role'");
  expectRangeError([&] { h->portIs(kA, 646, 9000); },
                   "LdpTest::Port '(10.0.0.1, 646)' cannot be re-instantiated with a different "
                   "'mtu'");
  expectRangeError([&] { h->spokeIs("s", 2); },
                   "LdpTest::Spoke 's' cannot be re-instantiated with a different 'zone'");
  // The single child created by the constructor refuses likewise, but only under
  // the same name; another name replaces it.
  Zel::Ptr<Spoke> core = h->hubSpoke();
  expectRangeError([&] { h->hubSpokeIs("core", 8); },
                   "LdpTest::Spoke 'core' cannot be re-instantiated with a different 'zone'");
  EXPECT_EQ(h->hubSpoke(), core);
  EXPECT_EQ(core->zone(), 7u);
  EXPECT_EQ(core->parent(), h.ptr());
  EXPECT_EQ(w.take(), Strings{});
  EXPECT_EQ(p->role(), red_);
  EXPECT_EQ(port->mtu(), 1500u);
  EXPECT_EQ(h->peers() + h->ports() + h->spokes(), 3u);

  Zel::Ptr<Spoke> edge = h->hubSpokeIs("edge", 8);
  EXPECT_EQ(edge->zone(), 8u);
  EXPECT_EQ(core->parent(), nullptr);
  EXPECT_EQ(w.take(), Strings{"hubSpoke"});
}

TEST(MemberKinds, ChildrenKeyedByTwoAttributes) {
  Zel::Ptr<Hub> h = hubFactory("h");
  HubWatch w(h);
  Zel::Ptr<Port> a646 = h->portIs(kA, 646, 1500);
  h->portIs(kA, 647, 1500);
  h->portIs(kB, 646, 9000);
  EXPECT_EQ(h->ports(), 3u);
  EXPECT_EQ(h->port(kA, 646), a646);
  EXPECT_EQ(h->port(Zel::Key<Ovo::IpAddr, uint16_t>(kA, 646)), a646);
  EXPECT_EQ(h->port(kB, 647), nullptr);
  EXPECT_EQ(a646->name(), "(10.0.0.1, 646)");
  EXPECT_EQ(a646->fullName(), "h/port/(10.0.0.1, 646)");
  EXPECT_TRUE(h->portDel(kA, 647));
  EXPECT_FALSE(h->portDel(kA, 647));
  EXPECT_EQ(w.take(), (Strings{"port:(10.0.0.1, 646)", "port:(10.0.0.1, 647)",
                               "port:(10.0.0.2, 646)", "port:(10.0.0.1, 647)"}));

  // Reflection: every key form reads back to its child.
  Zel::GenericIf g(h);
  const Zel::AttributeId port = idOf(Hub::zelType(), "port");
  const std::vector<Zel::String> keys = g.collectionKeys(port);
  ASSERT_EQ(keys.size(), 2u);
  for (const Zel::String& k : keys) {
    Zel::Key<Ovo::IpAddr, uint16_t> key = parsed<Zel::Key<Ovo::IpAddr, uint16_t>>(k.view());
    EXPECT_EQ(g.collectionValue(port, k), valueToStrep(h->port(key)->fullName())) << k;
  }
  EXPECT_EQ(g.collectionValue(port, "(10.0.0.9, 1)"), "''");
  expectRangeError([&] { g.collectionValue(port, "(10.0.0.1 646)"); }, "Invalid key of port");

  // The key's own form names the part that fails, and its log carries the parts.
  using Key = Zel::Key<Ovo::IpAddr, uint16_t>;
  expectForm(Key(kB, 7), "(10.0.0.2, 7)");
  expectRefused<Key>("(10.0.0.2, 70000)",
                     "Invalid value for attribute 'key part 2': Invalid integer");
  expectLogged(Key(kB, 7), {10, 0, 0, 2, 0, 7});
}

TEST(MemberKinds, ChildCreatedByKeyOrWithArguments) {
  Zel::Ptr<Hub> h = hubFactory("h");
  Zel::Ptr<Router> r = h->router();  // made by the constructor
  ASSERT_NE(r, nullptr);
  EXPECT_EQ(r->routerId(), Mpls::RouterId(kA));
  EXPECT_EQ(r->fullName(), "h/router/10.0.0.1");
  EXPECT_EQ(h->hubSpoke()->fullName(), "h/hubSpoke/core");
  HubWatch w(h);
  EXPECT_EQ(h->routerIs(Mpls::RouterId(kA)), r);
  Zel::Ptr<Router> r2 = h->routerIs(Mpls::RouterId(kB));
  EXPECT_NE(r2, r);
  EXPECT_EQ(r->parent(), nullptr);
  EXPECT_EQ(Zel::GenericIf(h).attribute(idOf(Hub::zelType(), "router")), "'10.0.0.2'");
  EXPECT_EQ(w.take(), Strings{"router"});
}

TEST(MemberKinds, CountersStartAtZeroAndNotifyOnlyOnChange) {
  Zel::Ptr<Hub> h = hubFactory("h");
  HubWatch w(h);
  EXPECT_EQ(h->hitsInc(red_), 1u);
  EXPECT_EQ(h->hitsInc(red_, 4), 5u);
  EXPECT_EQ(h->hitsInc(red_, 0), 5u);    // unchanged: nothing
  EXPECT_EQ(h->hitsInc(green_, 0), 0u);  // a new entry at 0
  EXPECT_EQ(h->hits(red_), 5u);
  EXPECT_EQ(h->hitss(), 2u);
  EXPECT_EQ(w.take(), (Strings{"hits:red", "hits:red", "hits:green"}));
  EXPECT_TRUE(h->hitsDel(green_));
  EXPECT_EQ(h->hitsInc(green_, 2), 2u);  // deleted: starts again from 0
  EXPECT_EQ(w.take(), (Strings{"hits:green", "hits:green"}));
}

TEST(MemberKinds, MapDeletionGivesTheRemovedValueOrWhetherThereWasOne) {
  Zel::Ptr<Hub> h = hubFactory("h");
  h->priceIs(1, 2.5);
  h->flagIs(1, true);
  HubWatch w(h);
  EXPECT_EQ(h->priceDel(1), 2.5);
  EXPECT_EQ(h->priceDel(1), 0.0);  // absent: the default, and no notification
  EXPECT_TRUE(h->flagDel(1));
  EXPECT_FALSE(h->flagDel(1));
  EXPECT_EQ(w.take(), (Strings{"price:1", "flag:1"}));
}

TEST(MemberKinds, ReferenceCollectionsDoNotOwn) {
  Zel::Ptr<Hub> h = hubFactory("h");
  HubWatch w(h);
  Zel::Ptr<Peer> p = peerFactory(kA, red_);
  h->knownIs(p);  // filed under its own address
  h->knownIs(p);  // the same object: nothing
  EXPECT_EQ(h->known(kA), p);
  EXPECT_EQ(p->parent(), nullptr);
  Zel::Ptr<Peer> q = h->peerIs(kA, blue_);  // another object, the same address
  w.take();
  h->knownIs(q);
  EXPECT_EQ(h->known(kA), q);
  EXPECT_EQ(q->parent(), h.ptr());  // still its owner's child
  Zel::GenericIf g(h);
  const Zel::AttributeId known = idOf(Hub::zelType(), "known");
  EXPECT_EQ(g.collectionValue(known, "10.0.0.1"), "'h/peer/10.0.0.1'");
  EXPECT_EQ(g.collectionValue(known, "10.0.0.2"), "None");
  EXPECT_TRUE(h->knownDel(kA));
  EXPECT_EQ(h->peer(kA), q);  // deleting the reference leaves the object alone
  EXPECT_EQ(w.take(), (Strings{"known:10.0.0.1", "known:10.0.0.1"}));

  // A referenced entity lives while the collection holds it, and goes when it lets go.
  Zel::Ptr<Hub> other = hubFactory("other");
  Zel::Ptr<Router> probe = other->router();  // detached when `other` is destroyed
  h->aliasIs("x", other);
  other = nullptr;
  EXPECT_EQ(probe->parent(), h->alias("x").ptr());
  EXPECT_EQ(h->alias("x")->parent(), nullptr);
  h->aliasDel("x");
  EXPECT_EQ(probe->parent(), nullptr);

  // Nulls are refused, changing nothing.
  h->aliasIs("y", h);
  w.take();
  expectRangeError([&] { h->knownIs(nullptr); }, "Null peer not allowed for LdpTest::Hub::known");
  expectRangeError([&] { h->aliasIs("y", nullptr); },
                   "Null hub not allowed for LdpTest::Hub::alias");
  EXPECT_EQ(h->alias("y"), h);
  EXPECT_EQ(h->knowns(), 0u);
  EXPECT_EQ(w.take(), Strings{});
  h->aliasDelAll();  // h referred to itself
}

TEST(MemberKinds, ReferenceAttributeNotifiesWhenThePointerChanges) {
  Zel::Ptr<Hub> h = hubFactory("h");
  Zel::GenericIf g(h);
  const Zel::AttributeId buddy = idOf(Hub::zelType(), "buddy");
  const Zel::AttributeId filter = idOf(Hub::zelType(), "filter");
  HubWatch w(h);
  EXPECT_EQ(g.attribute(buddy), "None");
  Zel::Ptr<Peer> p = h->peerIs(kA, red_);
  h->buddyIs(p);
  h->buddyIs(p);
  p->upIs(true);  // the referenced object's own changes are not the reference's
  EXPECT_EQ(g.attribute(buddy), "'h/peer/10.0.0.1'");
  h->buddyIs(peerFactory(kA, red_));  // an equal but other object
  EXPECT_EQ(g.attribute(buddy), "'10.0.0.1'");
  h->buddyIs(nullptr);
  h->filterIs(Acl::prefixListFactory("edge"));
  EXPECT_EQ(g.attribute(filter), "'edge'");
  EXPECT_EQ(w.take(), (Strings{"peer:10.0.0.1", "buddy", "buddy", "buddy", "filter"}));
  expectRangeError([&] { g.attributeIs(buddy, "None"); },
                   "LdpTest::Hub: attribute 'buddy' cannot be written");
}

TEST(MemberKinds, QueueIndexesOnlyGrow) {
  Zel::Ptr<Hub> h = hubFactory("h");
  HubWatch w(h);
  EXPECT_EQ(h->itemEnq(Item("a", 1)), 1u);
  EXPECT_EQ(h->itemEnq(Item("b", 1)), 2u);
  EXPECT_EQ(h->itemEnq(Item("c", 1)), 3u);
  EXPECT_EQ(w.take(), (Strings{"itemMeta", "item:1", "itemMeta", "item:2", "itemMeta", "item:3"}));
  EXPECT_EQ(h->itemDeq().text(), "a");
  EXPECT_TRUE(h->itemDel(3));               // the newest
  EXPECT_EQ(h->itemEnq(Item("d", 1)), 4u);  // not 3: the next index is kept
  EXPECT_EQ(h->itemMeta().nextIndex(), 5u);
  Strings order;
  for (const auto& e : h->itemIter()) order.push_back(std::to_string(e.key) + e.value.text().str());
  EXPECT_EQ(order, (Strings{"2b", "4d"}));
  EXPECT_EQ(h->item(4).text(), "d");
  EXPECT_EQ(w.take(), (Strings{"item:1", "item:3", "itemMeta", "item:4"}));

  // A mirror continues from the replicated next index; an index behind the newest
  // entry is never reused.
  h->itemMetaIs(QueueMeta(10));
  EXPECT_EQ(h->itemEnq(Item("e", 1)), 10u);
  h->itemMetaIs(QueueMeta(1));
  EXPECT_EQ(h->itemEnq(Item("f", 1)), 11u);
  EXPECT_EQ(h->itemMeta().nextIndex(), 12u);

  h->itemDelAll();
  w.take();
  EXPECT_EQ(h->itemDeq(), Item());  // empty: the default, no notification
  EXPECT_EQ(w.take(), Strings{});
  EXPECT_EQ(h->itemEnq(Item("g", 1)), 12u);
}

TEST(MemberKinds, DerivedReadWriteAndTake) {
  Zel::Ptr<Hub> h = hubFactory("h");
  Zel::GenericIf g(h);
  const Zel::ZelType& t = Hub::zelType();
  h->levelIs(5);
  h->peerIs(kA, red_);
  EXPECT_EQ(g.attribute(idOf(t, "load")), "6");
  g.attributeIs(idOf(t, "cap"), "3");
  EXPECT_EQ(h->level(), 3u);
  expectRangeError([&] { g.attributeIs(idOf(t, "cap"), "2 and more"); },
                   "Invalid value for attribute 'cap': trailing text");
  expectRangeError([&] { g.attribute(idOf(t, "cap")); },
                   "LdpTest::Hub: attribute 'cap' cannot be read");
  EXPECT_EQ(h->level(), 3u);

  h->itemEnq(Item("x", 1));
  EXPECT_EQ(h->pending(), "x");  // handed out and forgotten
  EXPECT_EQ(h->pending(), "");
  // Reading through reflection would change the entity.
  expectRangeError([&] { g.attribute(idOf(t, "pending")); },
                   "LdpTest::Hub: attribute 'pending' cannot be read");
}

TEST(MemberKinds, OperationsCalledThroughReflection) {
  Zel::Ptr<Hub> h = hubFactory("h");
  Zel::GenericIf g(h);
  const Zel::ZelType& t = Hub::zelType();
  const Zel::AttributeId scale = idOf(t, "scale");
  h->levelIs(2);
  EXPECT_EQ(g.call(scale, {"3", "'m'"}), "'6 m'");
  EXPECT_EQ(h->level(), 6u);
  expectRangeError([&] { g.call(scale, {"3"}); }, "LdpTest::Hub::scale takes 2 arguments");
  expectRangeError([&] { g.call(scale, {"3x", "'m'"}); }, "Invalid argument 'factor' of scale");
  expectRangeError([&] { g.call(scale, {"3", "m"}); }, "Invalid argument 'unit' of scale");
  EXPECT_EQ(h->level(), 6u);

  h->priceIs(1, 1.0);
  EXPECT_EQ(g.call(idOf(t, "clear"), {}), "");
  EXPECT_EQ(h->prices(), 0u);
  expectRangeError([&] { g.call(idOf(t, "clear"), {"1"}); },
                   "LdpTest::Hub::clear takes no arguments");

  const Zel::AttributeId loadOf = idOf(t, "loadOf");
  h->peerIs(kA, red_)->upIs(true);
  EXPECT_EQ(g.call(loadOf, {"10.0.0.1"}), "7");
  EXPECT_EQ(g.call(loadOf, {"10.0.0.2"}), "0");
  expectRangeError([&] { g.call(loadOf, {}); }, "LdpTest::Hub::loadOf takes 1 argument");
  EXPECT_STREQ(t.attr(scale)->keyTypeName, "U32 factor, Zel::String unit");
  expectRangeError([&] { g.call(idOf(t, "level"), {}); },
                   "LdpTest::Hub: attribute 'level' cannot be called");
}

TEST(MemberKinds, ObjectTypes) {
  Zel::Ptr<Tally> t = tallyFactory();
  EXPECT_EQ(t->packets(), 5u);
  EXPECT_EQ(t->label(), "none");
  t->packetsInc(2);
  t->labelIs("x");
  EXPECT_EQ(t->packets(), 7u);
  EXPECT_EQ(t->label(), "x");
  EXPECT_EQ(tallyFactory()->packets(), 5u);  // each factory call makes a new object

  const Zel::ZelType* type = Zel::ZelType::lookup("LdpTest::Tally");
  ASSERT_EQ(type, &Tally::zelType());
  EXPECT_EQ(type->base(), nullptr);  // not an entity
  Strings attrs;
  for (const Zel::AttrDesc& a : type->ownAttrs()) {
    attrs.push_back(std::to_string(a.id) + " " + a.name + " " + a.typeName + " " +
                    a.defaultValue().str());
    EXPECT_EQ(a.read, nullptr);
  }
  EXPECT_EQ(attrs,
            (Strings{"130 packets U64 5", "131 label Zel::String 'none'", "132 version U8 2"}));
}

TEST(MemberKinds, KeysAddedByADerivedType) {
  Zel::Ptr<Zone> z = zoneFactory(7, "z", red_, 3);
  EXPECT_EQ(z->areaId(), 7u);
  EXPECT_EQ(z->zoneName(), "z");
  EXPECT_EQ(z->kind(), red_);
  EXPECT_EQ(z->depth(), 3u);
  EXPECT_EQ(z->tone(), Outer::bright_);
  EXPECT_EQ(z->name(), "(7, 'z')");
  EXPECT_EQ(areaFactory(7, red_)->name(), "7");
  Zel::GenericIf g(z);
  EXPECT_EQ(g.attribute(idOf(Zone::zelType(), "zoneName")), "'z'");
  EXPECT_EQ(g.attribute(idOf(Zone::zelType(), "areaId")), "7");
  EXPECT_EQ(Zone::zelType().attr("depth")->kind, Zel::AttrKind::init);
}

TEST(MemberKinds, NameFromBackup) {
  Zel::Ptr<Leaf> named = leafFactory("a");
  named->nameIsFromBackup("b");
  EXPECT_EQ(named->name(), "b");

  Zel::Ptr<Peer> keyed = peerFactory(kA, red_);
  keyed->nameIsFromBackup("10.0.0.1");
  expectRangeError([&] { keyed->nameIsFromBackup("10.0.0.2"); },
                   "LdpTest::Peer: backup name '10.0.0.2' does not match key '10.0.0.1'");
  Zel::Ptr<Zone> derived = zoneFactory(7, "z", red_, 3);
  derived->nameIsFromBackup("(7, 'z')");
  expectRangeError([&] { derived->nameIsFromBackup("7"); },
                   "LdpTest::Zone: backup name '7' does not match key '(7, 'z')'");
  EXPECT_EQ(keyed->name(), "10.0.0.1");
}

TEST(MemberKinds, EnumerationNestedInAnEntity) {
  EXPECT_EQ(Zel::ZelType::lookup("LdpTest::Outer::Shade"), &Outer::ShadeEnumType());
  EXPECT_EQ(Zel::valueToStrep(Outer::bright_), "bright");
  EXPECT_EQ(parsed<Outer::Shade>("bright"), Outer::bright_);
  EXPECT_EQ(Zel::valueToStrep(Outer::Shade(9)), "9");
  EXPECT_EQ(Outer::ShadeInstance("dim"), Outer::dim_);
  expectRefused<Outer::Shade>("pale", "Invalid LdpTest::Outer::Shade: 'pale'");

  Zel::Ptr<Outer> o = outerFactory("o");
  Zel::GenericIf g(o);
  const Zel::AttributeId shade = idOf(Outer::zelType(), "shade");
  g.attributeIs(shade, "bright");
  EXPECT_EQ(o->shade(), Outer::bright_);
  o->tintIs(1, Outer::bright_);
  EXPECT_EQ(o->tintDel(1), Outer::bright_);
  EXPECT_STREQ(Outer::zelType().attr(shade)->typeName, "LdpTest::Outer::Shade");

  // As a key part, also through the reflection reactor.
  struct Recorder : Zel::GenericIfNotifiee {
    void onAttribute(Zel::AttributeId id, const Zel::String* key) override {
      std::string s = std::to_string(id);  // appended: g++ -O3 misreads "x" + str (-Wrestrict)
      if (key) s.append(" ").append(key->str());
      seen.push_back(s);
    }
    Strings seen;
  } r;
  const Zel::AttributeId mix = idOf(Outer::zelType(), "mix");
  {
    auto reactor = g.notifieeIs(&r);
    EXPECT_EQ(o->mixInc(Zel::Key<Outer::Shade, uint8_t>(Outer::bright_, 1), 2), 2u);
  }
  EXPECT_EQ(r.seen, Strings{std::to_string(mix) + " (bright, 1)"});
  EXPECT_EQ(g.collectionValue(mix, "(bright, 1)"), "2");
  EXPECT_STREQ(Outer::zelType().attr(mix)->keyTypeName, "LdpTest::Outer::Shade, U8");
  EXPECT_STREQ(Zone::zelType().attr("tone")->typeName, "LdpTest::Outer::Shade");
}

TEST(MemberKinds, RegistryGivesQualifiedTypesAndValueDefaults) {
  const Zel::ZelType* sample = Zel::ZelType::lookup("LdpTest::Sample");
  ASSERT_NE(sample, nullptr);
  Strings fields;
  for (const Zel::AttrDesc& a : sample->ownAttrs()) {
    fields.push_back(std::string(a.name) + " " + a.typeName + " " + a.defaultValue().str());
  }
  EXPECT_EQ(fields,
            (Strings{"count U32 7", "ratio double 0.5", "on bool False",
                     "colour LdpTest::Colour green", "label Zel::String ''", "limit U32 100"}));
  const Zel::ZelType& hub = Hub::zelType();
  EXPECT_STREQ(hub.attr("hits")->keyTypeName, "LdpTest::Colour");
  EXPECT_STREQ(hub.attr("known")->typeName, "const LdpTest::Peer");
  EXPECT_STREQ(hub.attr("port")->keyTypeName, "Ovo::IpAddr, U16");
  EXPECT_STREQ(hub.attr("filter")->typeName, "const Acl::PrefixList");
  EXPECT_EQ(Peer::zelType().attr("role")->kind, Zel::AttrKind::init);
}

}  // namespace
