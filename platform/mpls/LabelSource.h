#pragma once
// LabelSource: who supplied an MPLS label (configuration, LDP, BGP, RSVP-TE, segment routing).

#include "platform/mpls/LabelSource.gen.h"
