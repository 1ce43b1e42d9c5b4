// Input: an attribute log as another process would send it. Applying it to a mirror
// must never crash or read out of bounds; a record refused with a RangeException
// must leave the mirror exactly as it was before that record (its reflection dump
// unchanged), which is checked after every refusal. Accepted records may change
// anything. The seeds are the logs of a small state tree (AttrLogTree.h).

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/zel/AttrLogReplica.h"
#include "platform/zel/Exception.h"
#include "platform/zel/TreeDump.h"

namespace {

std::string dumpAll(const Zel::NboAttrLog::Replica& r) {
  std::string out;
  for (const auto& root : r.roots()) out += Zel::treeDump(*root).str();
  return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Zel::Ptr<Zel::NboAttrLog::Replica> r = new Zel::NboAttrLog::Replica;
  Zel::NboAttrLog::In in(data, size);
  // Dumps cost; the oracle compares only around a refusal, so the dump before each
  // record is taken only for logs small enough to keep the run fast.
  const bool check = size <= 4096;
  std::string before;
  for (;;) {
    if (check) before = dumpAll(*r);
    try {
      if (!r->applyNext(in)) break;
    } catch (const Zel::RangeException&) {
      if (check && dumpAll(*r) != before) {
        std::fprintf(stderr, "a refused record changed the mirror\n");
        std::abort();
      }
      break;
    }
  }
  return 0;
}
