// Input: a Blink ring file, whole or compact (fuzz/BlinkInput.h), for the ring-file
// reader. A refusal is a normal outcome. An accepted file must give its records in
// rising sequence order, no more records and damaged slots together than the ring
// has slots, and the same result when read again; a failure prints what broke and
// aborts.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "core/LdpBlinkReader.h"
#include "fuzz/BlinkInput.h"

namespace {

void require(bool ok, const char* what) {
  if (ok) return;
  std::fprintf(stderr, "fuzz_blink: %s\n", what);
  std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string file = LdpFuzz::blinkFileOf(data, size);
  Ldp::Blink::Trace trace;
  const std::string error = Ldp::Blink::readTrace(file, trace);
  if (!error.empty()) return 0;
  const uint64_t slots = (uint64_t{1} << trace.sizeBits) / Ldp::BlinkDetail::recordSize;
  require(trace.records.size() + trace.damaged <= slots, "more records than slots");
  for (size_t k = 0; k < trace.records.size(); ++k) {
    require(trace.records[k].sequence != 0, "a record with sequence number 0");
    require(k == 0 || trace.records[k - 1].sequence < trace.records[k].sequence,
            "records out of sequence order");
  }
  Ldp::Blink::Trace again;
  require(Ldp::Blink::readTrace(file, again).empty(), "accepted once, refused the second time");
  require(again.damaged == trace.damaged && again.records.size() == trace.records.size(),
          "a second reading differs");
  for (size_t k = 0; k < trace.records.size(); ++k) {
    require(again.records[k].message == trace.records[k].message,
            "a message differs when read again");
  }
  return 0;
}
