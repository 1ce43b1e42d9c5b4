// ldptrace: prints the records of a Blink ring file in order.

#include <iostream>
#include <string>
#include <vector>

#include "tools/ldptrace/Ldptrace.h"

int main(int argc, char** argv) {
  return LdpTrace::runLdptrace(std::vector<std::string>(argv + 1, argv + argc), std::cout,
                               std::cerr);
}
