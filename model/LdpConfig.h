#pragma once
// The operator's configuration of LDP, per VRF.

#include "model/LdpConfig.gen.h"
