#include "model/LdpConfig.h"

namespace Ldp {

void LdpConfigColl::handleInitialized() {
  configIs(L3::VrfName("default"));
  initializedIs(true);
}

}  // namespace Ldp
