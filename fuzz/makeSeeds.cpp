// Writes the seed corpora of the fuzz targets: makeSeeds <dir> fills
// <dir>/fuzz_pdu, <dir>/fuzz_msg, <dir>/fuzz_fec, <dir>/fuzz_strings,
// <dir>/fuzz_blink and <dir>/fuzz_attrlog with a few well-formed inputs each (and one PDU with the
// 0xFFFC length that the targets treat as an expected outcome).

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "core/LdpBlink.h"
#include "core/LdpTypes.h"
#include "fuzz/AttrLogTree.h"
#include "fuzz/BlinkInput.h"
#include "platform/zel/Type.h"
#include "tests/support/PduBuilder.h"

using namespace Ldp;
using namespace LdpTest;

namespace {

std::filesystem::path root;

void write(const char* target, const std::vector<uint8_t>& bytes) {
  static int count = 0;
  const std::filesystem::path dir = root / target;
  std::filesystem::create_directories(dir);
  std::ofstream out(dir / ("seed" + std::to_string(++count)), std::ios::binary);
  out.write(reinterpret_cast<const char*>(bytes.data()),
            static_cast<std::streamsize>(bytes.size()));
  if (!out) {
    std::fprintf(stderr, "makeSeeds: cannot write in %s\n", dir.c_str());
    std::exit(1);
  }
}

void writeText(const char* target, uint8_t selector, std::string_view text) {
  std::vector<uint8_t> bytes{selector};
  bytes.insert(bytes.end(), text.begin(), text.end());
  write(target, bytes);
}

const LdpIdentifier local(0x0A000001, 0);
const LdpIdentifier peer(0x0A000002, 0);
const std::vector<uint8_t> mtu = pwSubTlv(0x01, 4, 0x05);

// One message of each kind that fuzz_msg's selector reaches, in its order there.
std::vector<PduBuilder> messages() {
  return {
      PduBuilder::bare().message(LdpNotification_, 1).status(0x80000000 | shutdown_),
      PduBuilder::bare().message(LdpHello_, 2).commonHello(15).ipv4Transport(0x0A000001),
      PduBuilder::bare()
          .message(LdpInit_, 3)
          .sessionParams(180, false, false, 0, 0, peer)
          .capability(dynamicCapabilityTlv_, true),
      PduBuilder::bare()
          .message(LdpCapability_, 4)
          .capability(typedWildcardFecCapabilityTlv_, false),
      PduBuilder::bare().message(LdpAddress_, 5).ipv4AddressList({0x0A000001, 0x0A010001}),
      PduBuilder::bare().message(LdpAddressWithdraw_, 6).ipv4AddressList({0x0A000001}),
      PduBuilder::bare()
          .message(LdpLabelMapping_, 7)
          .fec({prefixElement(1, 24, {10, 1, 2})})
          .genLabel(16001)
          .hopCount(1),
      PduBuilder::bare()
          .message(LdpLabelRequest_, 8)
          .fec({hostElement(1, {10, 0, 0, 1})})
          .hopCount(1)
          .pathVector({0x0A000001}),
      PduBuilder::bare().message(LdpLabelWithdraw_, 9).fec({wildcardFec()}),
      PduBuilder::bare()
          .message(LdpLabelRelease_, 10)
          .fec({pwIdFec(0x0005, 7, 100, mtu)})
          .genLabel(3),
      PduBuilder::bare()
          .message(LdpLabelAbortReq_, 11)
          .fec({prefixElement(1, 16, {10, 2})})
          .labelReqMsgId(8),
  };
}

void pduSeeds() {
  write("fuzz_pdu",
        PduBuilder(local).message(LdpHello_, 1).commonHello(15).configSeqNum(1).bytes());
  write("fuzz_pdu", PduBuilder(local)
                        .message(LdpInit_, 2)
                        .sessionParams(180, false, false, 0, 0, peer)
                        .ftSession(0x0001, 120000, 0)
                        .message(LdpKeepAlive_, 3)
                        .bytes());
  write("fuzz_pdu", PduBuilder(local)
                        .message(LdpLabelMapping_, 4)
                        .fec({p2mpElement(1, {10, 0, 0, 9}, genericLspId(1))})
                        .genLabel(16003)
                        .message(LdpNotification_, 5)
                        .status(pwStatus_)
                        .pwStatus(1)
                        .fec({pwIdFec(0x0005, 0, 100, mtu)})
                        .bytes());
  PduBuilder all(local);
  for (const PduBuilder& m : messages()) all.raw(m.bytes());
  write("fuzz_pdu", all.bytes());
  // A TLV length field of 0xFFFC.
  write("fuzz_pdu",
        PduBuilder(local).message(LdpHello_, 6).commonHello(15).tlvLength(0xFFFC).bytes());
}

void msgSeeds() {
  uint8_t selector = 0;
  for (const PduBuilder& m : messages()) {
    const std::vector<uint8_t> bytes = m.bytes();
    write("fuzz_msg", bytes);
    std::vector<uint8_t> picked{selector++};
    picked.insert(picked.end(), bytes.begin(), bytes.end());
    write("fuzz_msg", picked);
  }
}

void fecSeeds() {
  const std::vector<std::vector<std::vector<uint8_t>>> fecs = {
      {wildcardFec()},
      {prefixElement(1, 24, {10, 1, 2}), hostElement(1, {10, 0, 0, 1})},
      {prefixElement(2, 64, {0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 1})},
      {hostElement(2, {0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1})},
      {p2mpElement(1, {10, 0, 0, 9}, genericLspId(7))},
      {pwIdFec(0x0005, 7, 100, mtu)},
      {pwIdFec(0x0005, 7, std::nullopt)},
  };
  for (const auto& elements : fecs) write("fuzz_fec", PduBuilder::bare().fec(elements).bytes());
}

void stringSeeds() {
  writeText("fuzz_strings", 0, LdpAdjId().stringValue().view());
  writeText("fuzz_strings", 1, LdpFecSessionId().stringValue().view());
  writeText("fuzz_strings", 2, valueToStrep(local).view());
  writeText("fuzz_strings", 3, "10.1.2.0/24");
  writeText("fuzz_strings", 3, "2001:db8::/32");
  writeText("fuzz_strings", 4, valueToStrep(Mpls::FwdEqvClass()).view());
  writeText("fuzz_strings", 5, "5");
  writeText("fuzz_strings", 6, "prefixElement");
  writeText("fuzz_strings", 7, "unSolicited");
  // Every registered value type by name, with the string form of its default value.
  for (const Zel::ZelType* type : Zel::ZelType::registered()) {
    const Zel::ValueOps* ops = type->valueOps();
    if (!ops) continue;
    std::vector<unsigned char> storage(ops->size);
    ops->construct(storage.data());
    const Zel::String form = ops->strep(storage.data());
    ops->destroy(storage.data());
    writeText("fuzz_strings", 8, std::string(type->name()) + "\n" + std::string(form.view()));
  }
}

// Ring files of the smallest size recorded by Blink, compact: one with a record of
// every argument type, one wrapped around, one with a torn record; and the head of
// a whole file.
void blinkSeeds() {
  const std::string path = (root / "blink.tmp").string();
  const auto recorded = [&](auto record) {
    const std::string error = Ldp::Blink::start(path, Ldp::Blink::minSizeBits);
    if (!error.empty()) {
      std::fprintf(stderr, "makeSeeds: %s\n", error.c_str());
      std::exit(1);
    }
    record();
    Ldp::Blink::stop();
    std::ifstream in(path, std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::filesystem::remove(path);
    return bytes;
  };
  const std::string types = recorded([] {
    LDP_BLINK("%d %u %x %lld %c", int8_t{-1}, uint16_t{2}, 0xffu, -5ll, 'c');
    LDP_BLINK("%.3f %-8e|%p", 2.5, 1e9, static_cast<const void*>(&root));
    LDP_BLINK("%s [%8.2s] %s", "fec", std::string("10.0.0.0/8"), std::string(80, 'x'));
    LDP_BLINK("100%% done");
  });
  write("fuzz_blink", LdpFuzz::compactBlinkInput(types));
  write("fuzz_blink", LdpFuzz::compactBlinkInput(recorded([] {
          for (unsigned i = 0; i < 20; ++i) LDP_BLINK("record %u of %s", i, "20");
        })));
  std::string torn = recorded([] {
    LDP_BLINK("first");
    LDP_BLINK("second %d", 2);
  });
  torn[Ldp::BlinkDetail::headSize + 2 * Ldp::BlinkDetail::recordSize + 32] ^= 1;
  write("fuzz_blink", LdpFuzz::compactBlinkInput(torn));
  std::vector<uint8_t> head{0};
  head.insert(head.end(), types.begin(), types.begin() + 256);
  write("fuzz_blink", head);
}

// The log of a small state tree, whole, written through a roomy and a tiny buffer
// (the same records, chunked otherwise), and its first half.
void attrLogSeeds() {
  const std::vector<uint8_t> log = LdpFuzz::attrLogOfSmallTree();
  write("fuzz_attrlog", log);
  write("fuzz_attrlog", LdpFuzz::attrLogOfSmallTree(4));
  write(
      "fuzz_attrlog",
      std::vector<uint8_t>(log.begin(), log.begin() + static_cast<std::ptrdiff_t>(log.size() / 2)));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: makeSeeds <dir>\n");
    return 2;
  }
  root = argv[1];
  pduSeeds();
  msgSeeds();
  fecSeeds();
  stringSeeds();
  blinkSeeds();
  attrLogSeeds();
  return 0;
}
