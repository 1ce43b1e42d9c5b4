// Builds the LDP configuration of a VRF, watches it with a reactor, changes it,
// and prints what the reactor saw and the configuration's reflection forms.

#include <cstdio>

#include "model/LdpConfig.h"
#include "platform/zel/GenericIf.h"

namespace {

using namespace Ldp;

class ConfigWatcher : public Config::NotifieeConst {
 public:
  explicit ConfigWatcher(const Zel::Ptr<const Config>& c) { notifierIs(c); }
  void onHelloHoldTime() override {
    std::printf("  reactor: helloHoldTime is now %u\n", notifier()->helloHoldTime());
  }
  void onGrOperMode() override {
    std::printf("  reactor: grOperMode is now %s\n",
                stringValue(notifier()->grOperMode()).charPtr());
  }
  void onIntfConfigColl(const Zel::Name& name) override {
    std::printf("  reactor: intfConfigColl[%s] %s\n", name.charPtr(),
                notifier()->intfConfigColl(name) ? "added" : "removed");
  }
  void onStaticTarget(const Ovo::IpGenAddr& addr) override {
    std::printf("  reactor: staticTarget[%s] changed\n", addr.stringValue().charPtr());
  }
};

void printAttribute(const Zel::GenericIf& g, Zel::AttributeId id) {
  const Zel::AttrDesc* a = g.type()->attr(id);
  std::printf("  %3u %-24s %s\n", id, a->name, g.attribute(id).charPtr());
}

}  // namespace

int main() {
  Zel::Ptr<LdpConfigColl> coll = ldpConfigCollFactory("ldpConfig");
  coll->handleInitialized();
  Zel::Ptr<Config> config = coll->config(L3::VrfName("default"));
  std::printf("Config of VRF '%s' (%s)\n", config->vrfName().stringValue().charPtr(),
              config->fullName().charPtr());

  ConfigWatcher watcher(config);
  std::printf("Changes:\n");
  config->helloHoldTimeIs(20);
  config->helloHoldTimeIs(20);  // unchanged: the reactor hears nothing
  config->grOperModeIs(grModeHelper_);
  config->intfConfigCollIs("Ethernet1")->igpSyncIs(on_);
  config->staticTargetIs(Ovo::IpGenAddr(Ovo::IpAddr(0x0A000002)), true);
  config->intfConfigCollDel("Ethernet1");

  std::printf("Reflection:\n");
  Zel::GenericIf g(config);
  for (Zel::AttributeId id : {258u, 259u, 261u, 262u, 267u, 276u, 280u, 281u, 288u}) {
    printAttribute(g, id);
  }
  g.attributeIs(281, "7");
  std::printf("  helloInterval written through reflection: %u\n", config->helloInterval());

  LdpFecBindingInfo binding;
  binding.inputLabelIs(Ovo::MplsLabel(16));
  std::printf("Value form: %s\n", valueToStrep(binding).charPtr());
  return 0;
}
