#include "tests/ldpdump/RunLdpdump.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "tools/ldpdump/Ldpdump.h"

namespace LdpdumpTest {

namespace {
// The text a memory stream holds once closed.
struct MemoryFile {
  MemoryFile() { file = open_memstream(&data, &size); }
  std::string close() {
    std::fclose(file);
    std::string text(data, size);
    std::free(data);
    return text;
  }
  char* data = nullptr;
  size_t size = 0;
  FILE* file;
};
}  // namespace

Result run(const std::vector<std::string>& args, const std::string& input) {
  MemoryFile out, err;
  std::string inputCopy = input;
  FILE* in = inputCopy.empty() ? std::fopen("/dev/null", "r")
                               : fmemopen(inputCopy.data(), inputCopy.size(), "r");
  Result r;
  r.status = LdpDump::runLdpdump(args, in, out.file, err.file);
  std::fclose(in);
  r.out = out.close();
  r.err = err.close();
  return r;
}

std::string sourcePath(const std::string& relative) {
  return std::string(LDP_SOURCE_DIR) + "/" + relative;
}

std::string scratchPath(const std::string& name) { return testing::TempDir() + "ldpdump_" + name; }

std::string readFile(const std::string& path) {
  std::ifstream f(path, std::ios::binary);
  std::stringstream s;
  s << f.rdbuf();
  return s.str();
}

std::string writeCapture(const std::string& name, const std::vector<LdpDump::Bytes>& frames) {
  LdpDump::PcapWriter w;
  int64_t usec = 0;
  for (const LdpDump::Bytes& f : frames) {
    w.frame(1714564800, static_cast<int32_t>(usec), f);
    usec += 1000;
  }
  std::string path = scratchPath(name);
  EXPECT_TRUE(w.save(path)) << path;
  return path;
}

}  // namespace LdpdumpTest
