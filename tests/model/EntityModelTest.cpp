// The entity runtime (Zel::Entity, reactors, collections, reflection) as the generator
// uses it, on the test-only types of TestTypes.types.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/zel/GenericIf.h"
#include "tests/model/TestTypes.gen.h"
#include "tests/support/ValueChecks.h"

namespace LdpTest {
void Node::reset() {
  levelIs(0);
  tagDelAll();
}
}  // namespace LdpTest

using namespace LdpTest;
using Strings = std::vector<std::string>;

namespace {

// Handler calls, "<attribute>" or "<attribute>:<key>"; take() hands them over sorted
// when the order is the map's.
struct Calls : Strings {
  Strings take(bool sorted = false) {
    Strings s = std::exchange(*this, {});
    if (sorted) std::sort(s.begin(), s.end());
    return s;
  }
};

class NodeWatch : public Node::NotifieeConst {
 public:
  explicit NodeWatch(const Zel::Ptr<const Node>& n) { notifierIs(n); }
  void onLevel() override { saw("level"); }
  void onColour() override { saw("colour"); }
  void onSample(uint32_t k) override { saw("sample:" + std::to_string(k)); }
  void onTag(const Zel::String& k) override { saw("tag:" + k.str()); }
  void onLink() override { saw("link"); }
  void onLeaf(const Zel::Name& k) override { saw("leaf:" + k.str()); }
  Calls seen;
  std::function<void()> then;  // runs after every handler

 private:
  void saw(std::string s) {
    seen.push_back(std::move(s));
    if (then) then();
  }
};

class MidWatch : public Mid::NotifieeConst {
 public:
  explicit MidWatch(const Zel::Ptr<const Mid>& n) { notifierIs(n); }
  void onLevel() override { seen.push_back("level"); }
  void onDelta() override { seen.push_back("delta"); }
  Calls seen;
};

class TopWatch : public Top::NotifieeConst {
 public:
  explicit TopWatch(const Zel::Ptr<const Top>& n) { notifierIs(n); }
  void onLevel() override { seen.push_back("level"); }
  void onDelta() override { seen.push_back("delta"); }
  void onNote() override { seen.push_back("note"); }
  Calls seen;
};

TEST(Entity, SettersAndCountersNotifyOnlyOnChange) {
  Zel::Ptr<Top> t = topFactory("t");
  TopWatch w(t);
  t->colourIs(blue_);
  t->colourIs(blue_);  // unchanged: nothing
  t->levelInc();
  t->levelInc(4);
  t->levelDec(2);
  t->levelInc(0);  // unchanged
  t->deltaDec(2);
  EXPECT_EQ(t->colour(), blue_);
  EXPECT_EQ(t->level(), 3u);
  EXPECT_EQ(t->delta(), -3);
  EXPECT_EQ(w.seen.take(), (Strings{"level", "level", "level", "delta"}));
}

TEST(Entity, ValueAndSetCollections) {
  Zel::Ptr<Node> n = nodeFactory("n");
  NodeWatch w(n);
  const Sample s(1, 2.0, true, blue_, "s");
  EXPECT_EQ(n->sample(1), Sample());  // absent: the default
  n->sampleIs(1, s);
  n->sampleIs(1, s);         // unchanged
  n->sampleIs(1, Sample());  // changed
  n->sampleIs(2, s);
  n->sampleNotify(2);  // without a change
  n->sampleDel(9);     // absent: nothing
  EXPECT_EQ(w.seen.take(), (Strings{"sample:1", "sample:1", "sample:2", "sample:2"}));
  EXPECT_EQ(n->samples(), 2u);
  uint32_t keys = 0;
  for (const auto& e : n->sampleIter()) {
    keys += e.key;
    EXPECT_EQ(e.value, e.key == 1 ? Sample() : s);
  }
  EXPECT_EQ(keys, 3u);

  n->sampleDel(1);
  n->sampleIs(3, s);
  EXPECT_EQ(w.seen.take(), (Strings{"sample:1", "sample:3"}));
  n->sampleDelAll();  // one notification per entry
  EXPECT_EQ(w.seen.take(true), (Strings{"sample:2", "sample:3"}));
  EXPECT_EQ(n->samples(), 0u);
  n->sampleDelAll();
  EXPECT_EQ(w.seen.take(), Strings{});

  // A set notifies the same way, keyed by the member.
  n->tagIs("a");
  n->tagIs("a");
  n->tagIs("b");
  n->tagDel("c");
  EXPECT_EQ(n->tags(), 2u);
  n->tagDel("a");
  n->tagNotify("a");
  n->tagDelAll();
  EXPECT_EQ(w.seen.take(), (Strings{"tag:a", "tag:b", "tag:a", "tag:a", "tag:b"}));
}

TEST(Entity, ChildCollectionAndInstantiatingChild) {
  Zel::Ptr<Node> n = nodeFactory("n");
  NodeWatch w(n);
  Zel::Ptr<Leaf> a = n->leafIs("a");
  EXPECT_EQ(n->leafIs("a"), a);  // existing: no notification
  EXPECT_EQ(a->fullName(), "n/leaf/a");
  n->leafDel("a");
  n->leafDel("a");
  EXPECT_EQ(w.seen.take(), (Strings{"leaf:a", "leaf:a"}));
  EXPECT_EQ(n->leaf("a"), nullptr);
  a->weightIs(9);  // lives on, detached
  EXPECT_EQ(a->parent(), nullptr);

  n->leafIs("b");
  n->leafIs("c");
  w.seen.take();
  n->leafDelAll();
  EXPECT_EQ(w.seen.take(true), (Strings{"leaf:b", "leaf:c"}));
  EXPECT_EQ(n->leafs(), 0u);

  // The instantiating child: one at a time, replaced when named otherwise.
  Zel::Ptr<Leaf> x = n->linkIs("x");
  EXPECT_EQ(n->linkIs("x"), x);  // same name: kept, no notification
  EXPECT_EQ(x->fullName(), "n/link/x");
  Zel::Ptr<Leaf> y = n->linkIs("y");  // replaces
  EXPECT_EQ(n->link(), y);
  EXPECT_EQ(x->parent(), nullptr);
  n->linkDel();
  n->linkDel();
  EXPECT_EQ(n->link(), nullptr);
  EXPECT_EQ(y->parent(), nullptr);
  EXPECT_EQ(w.seen.take(), (Strings{"link", "link", "link"}));
}

TEST(EntityDerived, HandlersByLevel) {
  EXPECT_EQ(Top::zelType().base(), &Mid::zelType());
  Zel::Ptr<Top> t = topFactory("t");
  NodeWatch base(t);
  MidWatch mid(t);
  TopWatch top2(t);
  t->levelIs(1);
  t->deltaIs(2);
  t->noteIs("x");
  EXPECT_EQ(base.seen.take(), Strings{"level"});
  EXPECT_EQ(mid.seen.take(), (Strings{"level", "delta"}));
  EXPECT_EQ(top2.seen.take(), (Strings{"level", "delta", "note"}));
}

TEST(EntityReactor, RegistrationFollowsTheNotifierAndHoldsItAlive) {
  Zel::Ptr<Node> a = nodeFactory("a"), b = nodeFactory("b");
  NodeWatch w(a);
  EXPECT_TRUE(w.isRegistered());
  w.notifierIs(b);  // re-pointed: unregistered from a
  a->levelIs(1);
  b->levelIs(1);
  EXPECT_EQ(w.notifier(), b);
  { NodeWatch gone(b); }
  w.notifierIs(nullptr);
  EXPECT_FALSE(w.isRegistered());
  b->levelIs(2);
  EXPECT_EQ(w.seen.take(), Strings{"level"});

  // A reactor holds its notifier alive.
  Zel::Ptr<Node> n = nodeFactory("n");
  Zel::Ptr<Leaf> probe = n->leafIs("p");  // detached when n is destroyed
  auto holder = std::make_unique<NodeWatch>(n);
  n = nullptr;
  EXPECT_EQ(probe->parent(), holder->notifier().ptr());
  holder.reset();
  EXPECT_EQ(probe->parent(), nullptr);
}

TEST(EntityReactor, NonConstReactorMayChangeAnotherAttribute) {
  class Follower : public Node::Notifiee {
   public:
    // The handler sees the new value.
    void onLevel() override { notifier()->colourIs(notifier()->level() == 1 ? green_ : blue_); }
  };
  Zel::Ptr<Node> n = nodeFactory("n");
  Follower f;
  f.notifierIs(n);
  NodeWatch w(n);  // registered after f: hears the nested change first
  n->levelIs(1);
  EXPECT_EQ(n->colour(), green_);
  EXPECT_EQ(w.seen.take(), (Strings{"colour", "level"}));
}

TEST(EntityReactor, HandlerMayUnregisterOrDestroyReactors) {
  class SelfDeleting : public Node::NotifieeConst {
   public:
    void onLevel() override { delete this; }
  };
  Zel::Ptr<Node> n = nodeFactory("n");
  NodeWatch first(n);
  (new SelfDeleting)->notifierIs(n);
  auto victim = std::make_unique<NodeWatch>(n);
  NodeWatch quitter(n), last(n);
  first.then = [&] { victim.reset(); };  // a reactor later in the list
  quitter.then = [&] { quitter.notifierIs(nullptr); };
  n->levelIs(1);
  n->levelIs(2);
  EXPECT_EQ(first.seen.take(), (Strings{"level", "level"}));
  EXPECT_EQ(quitter.seen.take(), Strings{"level"});
  EXPECT_EQ(last.seen.take(), (Strings{"level", "level"}));
}

// A reactor that unregisters and drops the only outside reference to its notifier in
// a handler: the notifier lives until the change is over, then goes.
TEST(EntityReactor, NotifierOutlivesTheVisitThatDropsItsLastReference) {
  const std::vector<std::pair<const char*, std::function<void(Node*)>>> changes = {
      {"levelIs", [](Node* n) { n->levelIs(5); }},
      {"linkIs", [](Node* n) { n->linkIs("other"); }},
      {"leafDelAll", [](Node* n) { n->leafDelAll(); }},
  };
  for (const auto& [what, change] : changes) {
    SCOPED_TRACE(what);
    Zel::Ptr<Node> n = nodeFactory("n");
    // Probes: their parent links are cleared when n is destroyed.
    Zel::Ptr<Leaf> p1 = n->linkIs("p"), p2 = n->leafIs("p");
    n->leafIs("q");
    auto alive = [&] { return p1->parent() || p2->parent(); };
    NodeWatch w(n);
    bool aliveInHandler = false;
    w.then = [&] {
      w.notifierIs(nullptr);
      n = nullptr;
      aliveInHandler = alive();
    };
    change(n.ptr());
    EXPECT_TRUE(aliveInHandler);
    EXPECT_FALSE(alive());
    EXPECT_EQ(w.seen.size(), 1u);
  }
}

Strings strings(const std::vector<Zel::String>& v) {
  Strings out;
  for (const Zel::String& s : v) out.push_back(s.str());
  return out;
}

TEST(GenericIf, ReadsAndWritesAttributesById) {
  Zel::Ptr<Top> t = topFactory("t");
  Zel::GenericIf g(t);
  g.attributeIs(258, "5");
  g.attributeIs(259, "blue");
  g.attributeIs(386, "-7");
  g.attributeIs(514, "'it\\'s'");
  EXPECT_EQ(t->level(), 5u);
  EXPECT_EQ(t->colour(), blue_);
  EXPECT_EQ(t->delta(), -7);
  EXPECT_EQ(t->note(), "it's");
  EXPECT_EQ(g.attribute(514), "'it\\'s'");
  EXPECT_EQ(g.attribute(260), "3");  // constant
  EXPECT_EQ(g.stringValue(), "LdpTest::Top(t)");

  expectRangeError([&] { g.attributeIs(258, "x"); },
                   "Invalid value for attribute 'level': Invalid integer");
  expectRangeError([&] { g.attributeIs(258, "7 and more"); },
                   "Invalid value for attribute 'level': trailing text");
  expectRangeError([&] { g.attributeIs(260, "4"); },
                   "LdpTest::Top: attribute 'version' cannot be written");
  expectRangeError([&] { g.attribute(261); }, "LdpTest::Top: attribute 'sample' cannot be read");
  expectRangeError([&] { g.attribute(999); }, "LdpTest::Top: no attribute 999");
  EXPECT_EQ(t->level(), 5u);

  Zel::GenericIf leaf(t->leafIs("a"));
  EXPECT_EQ(leaf.attribute(141), "'t/leaf/a'");
}

TEST(GenericIf, CollectionsAndFunctions) {
  Zel::Ptr<Node> n = nodeFactory("n");
  Zel::GenericIf g(n);
  n->sampleIs(4, Sample(4, 0.25, false, red_, "x"));
  n->tagIs("a");
  n->leafIs("a");
  n->linkIs("x");
  EXPECT_EQ(strings(g.collectionKeys(261)), Strings{"4"});
  EXPECT_EQ(g.collectionValue(261, "4"), valueToStrep(n->sample(4)));
  EXPECT_EQ(g.collectionValue(261, "5"), valueToStrep(Sample()));
  EXPECT_EQ(strings(g.collectionKeys(262)), Strings{"'a'"});
  EXPECT_EQ(g.collectionValue(262, "'a'"), "True");
  EXPECT_EQ(g.collectionValue(262, "'b'"), "False");
  EXPECT_EQ(g.collectionValue(264, "'a'"), "'n/leaf/a'");
  EXPECT_EQ(g.collectionValue(264, "'b'"), "''");
  EXPECT_EQ(g.attribute(263), "'x'");
  expectRangeError([&] { g.collectionValue(264, "a"); }, "Invalid key of leaf");
  expectRangeError([&] { g.collectionKeys(258); },
                   "LdpTest::Node: attribute 'level' cannot be iterated");

  n->levelIs(3);
  g.invoke(265);  // reset()
  EXPECT_EQ(n->level(), 0u);
  EXPECT_EQ(n->tags(), 0u);
  expectRangeError([&] { g.invoke(258); }, "LdpTest::Node: attribute 'level' cannot be invoked");
}

TEST(GenericIf, ReactorHearsEveryChangeById) {
  struct Recorder : Zel::GenericIfNotifiee {
    void onAttribute(Zel::AttributeId id, const Zel::String* key) override {
      std::string s = std::to_string(id);  // appended: g++ -O3 misreads "x" + str (-Wrestrict)
      if (key) s.append(":").append(key->str());
      seen.push_back(s);
    }
    Strings seen;
  } r;
  Zel::Ptr<Top> t = topFactory("t");
  {
    std::unique_ptr<Zel::Entity::NotifieeConst> reactor = Zel::GenericIf(t).notifieeIs(&r);
    t->levelIs(1);
    t->sampleIs(7, Sample());
    t->tagIs("a");
    t->leafIs("a");
    t->linkIs("x");
    t->deltaIs(0);
    t->noteIs("n");
  }
  t->levelIs(2);  // the reactor is gone
  EXPECT_EQ(r.seen, (Strings{"258", "261:7", "262:'a'", "264:'a'", "263", "386", "514"}));
}

const char* const kSampleForm =
    "Value('LdpTest::Sample', ** {'count': 3, 'ratio': 1.25, 'on': True, 'colour': blue, "
    "'label': 'it\\'s'})";

TEST(ValueType, EmptinessStringFormAndLog) {
  const Sample d;
  EXPECT_TRUE(!d);
  Sample t = d;
  t.labelIs("x");
  EXPECT_FALSE(!t);  // any field off its default
  EXPECT_NE(t, d);
  expectForm(Sample(3, 1.25, true, blue_, "it's"), kSampleForm);
  expectForm(Sample(),
             "Value('LdpTest::Sample', ** {'count': 7, 'ratio': 0.5, 'on': False, 'colour': green, "
             "'label': ''})");
  EXPECT_EQ(Zel::GenericIfValue("LdpTest::Sample", kSampleForm).stringValue(), kSampleForm);

  const Sample keep(1, 1.0, false, red_, "keep");
  expectRefused<Sample>("Value('LdpTest::Sample', ** {'count': 3})", "Expected ', 'ratio': '",
                        keep);
  std::string bad = kSampleForm;
  bad.replace(bad.find("blue"), 4, "purple");
  expectRefused<Sample>(
      bad, "Invalid value for attribute 'colour': Invalid LdpTest::Colour: 'purple'", keep);

  expectLogged(Sample(3, 0.5, true, blue_, "ab"), {0,    0,    0, 3,                    // count
                                                   0x3F, 0xE0, 0, 0,    0,   0,  0, 0,  // ratio
                                                   1,                                   // on
                                                   0,    0,    0, 0x10,                 // colour
                                                   0,    0,    0, 2,    'a', 'b'});     // label
}

}  // namespace
