#pragma once
// MplsLabelSet: the MPLS labels of one FEC and the source that supplied them.

#include "fec/MplsLabelSet.gen.h"
