#pragma once
// Runs the ldpdump command in-process with its standard streams captured, and
// the paths the suites read.

#include <cstdio>
#include <string>
#include <vector>

#include "tools/ldpdump/CaptureWriter.h"

namespace LdpdumpTest {

struct Result {
  int status = -1;
  std::string out;
  std::string err;
};

// `input` is what standard input holds.
Result run(const std::vector<std::string>& args, const std::string& input = "");

// A path in the source tree, and in the tests' scratch directory.
std::string sourcePath(const std::string& relative);
std::string scratchPath(const std::string& name);

// The whole content of a file; empty when it cannot be read.
std::string readFile(const std::string& path);

// Writes `frames` (Ethernet) as a capture under the scratch directory.
std::string writeCapture(const std::string& name, const std::vector<LdpDump::Bytes>& frames);

}  // namespace LdpdumpTest
