// ldptypes: prints the schema of libLdp's registered types.

#include <iostream>
#include <string>
#include <vector>

#include "tools/ldptypes/Ldptypes.h"

int main(int argc, char** argv) {
  return LdpTypes::runLdptypes(std::vector<std::string>(argv + 1, argv + argc), std::cout,
                               std::cerr);
}
