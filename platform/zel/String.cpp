#include "platform/zel/String.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <ostream>

#include "platform/zel/Hash.h"

namespace Zel {

const char String::emptyBytes_[1] = {};

String::String(std::string_view s) {
  if (s.empty()) return;
  void* mem = std::malloc(offsetof(Rep, bytes) + s.size() + 1);
  if (!mem) throw std::bad_alloc();
  rep_ = static_cast<Rep*>(mem);
  rep_->refs = 1;
  rep_->size = static_cast<uint32_t>(s.size());
  std::memcpy(rep_->bytes, s.data(), s.size());
  rep_->bytes[s.size()] = '\0';
}

String& String::operator=(const String& o) {
  if (this == &o) return *this;
  // Take the source block before dropping ours: `o` may share it, and unref()
  // clears rep_.
  Rep* r = o.rep_;
  o.ref();
  unref();
  rep_ = r;
  return *this;
}

String& String::operator=(String&& o) noexcept {
  if (this != &o) {
    unref();
    rep_ = o.rep_;
    o.rep_ = nullptr;
  }
  return *this;
}

void String::release() {
  if (--rep_->refs == 0) std::free(rep_);
  rep_ = nullptr;
}

uint32_t String::hash() const { return hashBytes(charPtr(), size()); }

String operator+(const String& a, std::string_view b) {
  std::string s(a.view());
  s.append(b);
  return String(s);
}

std::ostream& operator<<(std::ostream& os, const String& s) {
  return os.write(s.charPtr(), static_cast<std::streamsize>(s.size()));
}

}  // namespace Zel
