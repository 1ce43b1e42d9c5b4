#pragma once
// The protocol's fixed parameters and its TLV handling switches.

#include "model/LdpProtoParam.gen.h"
