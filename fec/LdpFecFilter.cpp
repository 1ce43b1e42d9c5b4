#include "fec/LdpFecFilter.h"

namespace Ldp {

bool LdpFecFilter::isPermittedFec(const Mpls::FwdEqvClass& fec) const {
  (void)fec;
  return !prefixList_;
}

}  // namespace Ldp
