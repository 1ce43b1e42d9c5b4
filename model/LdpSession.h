#pragma once
// Per-session configuration, status, statistics and state log.

#include "model/LdpSession.gen.h"
