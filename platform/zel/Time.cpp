#include "platform/zel/Time.h"

#include <chrono>

namespace Zel {

namespace {
std::optional<Seconds> frozen_;
}

Seconds System::currentTime() {
  if (frozen_) return *frozen_;
  using namespace std::chrono;
  return duration<double>(system_clock::now().time_since_epoch()).count();
}

void System::currentTimeIs(Seconds t) { frozen_ = t; }
void System::currentTimeClear() { frozen_.reset(); }

}  // namespace Zel
