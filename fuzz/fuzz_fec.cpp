// Input: one FEC TLV. The parser, then every element it stored, prints its string
// form; the parser must pass the FEC oracle.

#include <cstddef>
#include <cstdint>

#include "fuzz/FuzzSupport.h"
#include "fuzz/ParserOracles.h"
#include "parse/LdpFecTlvParser.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  LdpFuzz::runInput([&] {
    Zel::Ptr<Ovo::Pkt> pkt = LdpFuzz::packetOf(data, size);
    Zel::Ptr<Ldp::LdpFecTlvParser> fec = Ldp::ldpFecTlvParserFactory(pkt, 0, nullptr);
    (void)fec->stringValue();
    LdpFuzz::checkFecParser(*fec);
    for (uint32_t i = 0; i < fec->fecElements(); ++i) {
      if (Zel::Ptr<const Ldp::LdpFecTlvElement> element = fec->fecElement(i)) {
        (void)element->stringValue();
      }
    }
  });
  return 0;
}
