#pragma once
// Time in seconds, and the clock. Tests may freeze the clock at a chosen time.

#include <optional>

namespace Zel {

using Seconds = double;

class System {
 public:
  // Seconds since the epoch, or the frozen time when one is set.
  static Seconds currentTime();
  // Freezes the clock at `t`; currentTimeClear() lets it run again.
  static void currentTimeIs(Seconds t);
  static void currentTimeClear();
};

}  // namespace Zel
