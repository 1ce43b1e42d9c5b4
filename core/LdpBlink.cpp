#include "core/LdpBlink.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <mutex>
#include <vector>

#include "core/LdpTrace.h"

namespace Ldp::BlinkDetail {

constinit std::atomic<Ring*> ring_{nullptr};

}  // namespace Ldp::BlinkDetail

namespace Ldp::Blink {

namespace {

using namespace BlinkDetail;

struct MappedRing : Ring {
  unsigned char* base = nullptr;
  uint64_t size = 0;
  std::string path;
};

// The formats of the trace points used so far, by id - 1. Copied, so that a new
// file gets them even when the code that held a trace point is gone.
struct Format {
  std::string format;
  std::string tags;
};

// Guards formats, the mapped file's format table, and starting and stopping.
constinit std::mutex mutex_;
constinit std::vector<Format> formats;
MappedRing* mapped = nullptr;

template <class T>
void put(unsigned char* at, T value) {
  std::memcpy(at, &value, sizeof value);
}

uint64_t nowNs(clockid_t clock) {
  timespec ts;
  clock_gettime(clock, &ts);
  return static_cast<uint64_t>(ts.tv_sec) * 1000000000u + static_cast<uint64_t>(ts.tv_nsec);
}

std::atomic_ref<uint64_t> headerWord(const MappedRing& r, uint64_t offset) {
  return std::atomic_ref<uint64_t>(*reinterpret_cast<uint64_t*>(r.base + offset));
}

// Appends format `id` to the file's table, or counts it as dropped when it does not
// fit; after the first dropped format all later ones are dropped too, so that the
// table's ids stay 1, 2, ... in order.
void appendFormat(MappedRing& r, const Format& f, uint32_t id) {
  const uint64_t used = headerWord(r, tableUsedOffset).load(std::memory_order_relaxed);
  const uint64_t entry = (8 + f.tags.size() + f.format.size() + 7) & ~uint64_t{7};
  std::atomic_ref<uint64_t> dropped = headerWord(r, formatsDroppedOffset);
  if (dropped.load(std::memory_order_relaxed) > 0 || used + entry > tableCapacity) {
    dropped.fetch_add(1, std::memory_order_relaxed);
    return;
  }
  unsigned char* at = r.base + tableOffset + used;
  put(at, id);
  put(at + 4, static_cast<uint16_t>(f.tags.size()));
  put(at + 6, static_cast<uint16_t>(f.format.size()));
  // Counted, not NUL-terminated: the entry holds both lengths.
  std::copy_n(f.tags.data(), f.tags.size(), at + 8);
  std::copy_n(f.format.data(), f.format.size(), at + 8 + f.tags.size());
  headerWord(r, tableUsedOffset).store(used + entry, std::memory_order_release);
}

std::string systemError(const char* what, const std::string& path, int error) {
  return std::string(what) + " " + path + ": " + std::strerror(error);
}

}  // namespace

std::string fileName(const char* pattern, long pid) {
  const std::string_view p = pattern && *pattern ? pattern : defaultPattern;
  std::string name;
  for (size_t i = 0; i < p.size(); ++i) {
    if (p[i] == '%' && i + 1 < p.size() && p[i + 1] == 'd') {
      name += std::to_string(pid);
      ++i;
    } else if (p[i] == '%' && i + 1 < p.size() && p[i + 1] == '%') {
      name += '%';
      ++i;
    } else {
      name += p[i];
    }
  }
  return name;
}

std::string fileNameFromEnvironment() { return fileName(std::getenv("BLFILE"), getpid()); }

uint64_t fileSize(unsigned sizeBits) { return headSize + (uint64_t{1} << sizeBits); }

std::string start(const std::string& path, unsigned sizeBits) {
  if (sizeBits < minSizeBits || sizeBits > maxSizeBits) {
    return "size setting " + std::to_string(sizeBits) + " is outside " +
           std::to_string(minSizeBits) + " to " + std::to_string(maxSizeBits);
  }
  const std::lock_guard<std::mutex> lock(mutex_);
  if (mapped) return "Blink already records into " + mapped->path;
  const int fd = open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (fd < 0) return systemError("cannot create", path, errno);
  const uint64_t size = fileSize(sizeBits);
  // Allocated up front: a write through the mapping into a hole that the file
  // system cannot fill would kill the process with SIGBUS.
  if (const int error = posix_fallocate(fd, 0, static_cast<off_t>(size))) {
    close(fd);
    unlink(path.c_str());
    return systemError("cannot allocate", path, error);
  }
  void* map = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
  const int mapError = errno;
  close(fd);
  if (map == MAP_FAILED) {
    unlink(path.c_str());
    return systemError("cannot map", path, mapError);
  }

  auto* r = new MappedRing;
  r->base = static_cast<unsigned char*>(map);
  r->size = size;
  r->path = path;
  r->records = r->base + headSize;
  r->slotMask = (uint64_t{1} << (sizeBits - recordShift)) - 1;
  // Writing the zeros the file holds already takes the page faults now instead of
  // in the first round of trace points.
  std::memset(r->records, 0, size - headSize);

  unsigned char* h = r->base;
  std::memcpy(h, magic, sizeof magic);
  put(h + 8, version);
  put(h + 12, byteOrderMark);
  put(h + 16, uint32_t{sizeBits});
  put(h + 20, static_cast<uint32_t>(recordSize));
  put(h + 24, size);
  put(h + 32, tableOffset);
  put(h + 40, tableCapacity);
  put(h + 48, headSize);
  put(h + 56, size - headSize);
  put(h + 64, nowNs(CLOCK_MONOTONIC_COARSE));
  put(h + 72, nowNs(CLOCK_REALTIME));
  put(h + 80, static_cast<uint32_t>(getpid()));
  for (size_t i = 0; i < formats.size(); ++i) {
    appendFormat(*r, formats[i], static_cast<uint32_t>(i + 1));
  }
  mapped = r;
  ring_.store(r, std::memory_order_release);
  return "";
}

void stop() {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (!mapped) return;
  ring_.store(nullptr, std::memory_order_release);
  munmap(mapped->base, mapped->size);
  delete mapped;
  mapped = nullptr;
}

bool started() { return ring_.load(std::memory_order_acquire) != nullptr; }

std::string path() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return mapped ? mapped->path : "";
}

}  // namespace Ldp::Blink

namespace Ldp::BlinkDetail {

uint32_t siteRegistered(Site& site, const char* tags) {
  using namespace Blink;
  const std::lock_guard<std::mutex> lock(mutex_);
  if (const uint32_t id = site.id.load(std::memory_order_relaxed)) return id;
  formats.push_back({site.format, tags});
  const auto id = static_cast<uint32_t>(formats.size());
  if (mapped) appendFormat(*mapped, formats.back(), id);
  site.id.store(id, std::memory_order_release);
  return id;
}

}  // namespace Ldp::BlinkDetail

extern "C" int Ldp_blinkInitialize(void) {
  const std::string name = Ldp::Blink::fileNameFromEnvironment();
  const std::string error = Ldp::Blink::start(name, Ldp::Blink::defaultSizeBits);
  if (error.empty()) {
    LDP_TRACE(1, "Blink records into %s", name.c_str());
    return 0;
  }
  if (Ldp::Blink::started()) return 0;
  Ldp::trace(Ldp::traceLdp, 0, "Blink not started: %s", error.c_str());
  return -1;
}
