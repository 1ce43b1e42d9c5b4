#pragma once
// The ldptypes command: prints the registered type descriptors (ids, names, kinds
// and types of every attribute, enumerators with their values), the schema by which
// replicas of the agent's state decode the attribute log. main() only hands its
// arguments and streams to runLdptypes(), so that tests run the command in-process.

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "platform/zel/Type.h"

namespace LdpTypes {

constexpr int exitOk = 0;
constexpr int exitUsage = 2;

// `v` as a JSON string literal, quotes included.
std::string jsonString(std::string_view v);

// Every registered type, the shared entity reflection attributes (Zel::Entity)
// included, sorted by qualified name.
std::vector<const Zel::ZelType*> typesByName();

// One table per type, in the order given.
void writeTable(std::ostream& out, const std::vector<const Zel::ZelType*>& types);
// One JSON document {"types": [...]}, one type per line, in the order given.
void writeJson(std::ostream& out, const std::vector<const Zel::ZelType*>& types);

// `args` excludes the program name.
int runLdptypes(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

}  // namespace LdpTypes
