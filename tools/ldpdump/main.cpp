// ldpdump: decodes LDP traffic from captures, live interfaces and hex with libLdp's
// parsers, and gives each PDU's and message's verdict.

#include <string>
#include <vector>

#include "tools/ldpdump/Ldpdump.h"

int main(int argc, char** argv) {
  return LdpDump::runLdpdump(std::vector<std::string>(argv + 1, argv + argc), stdin, stdout,
                             stderr);
}
