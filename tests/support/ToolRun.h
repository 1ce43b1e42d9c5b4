#pragma once
// Running a command-line tool's logic in-process, as its tests do: the exit status
// and what it wrote to standard output and standard error.

#include <ostream>
#include <sstream>
#include <string>
#include <vector>

namespace LdpTest {

struct ToolResult {
  int status;
  std::string out, err;
};

// `tool` is the tool's entry point: int(const std::vector<std::string>&, std::ostream& out,
// std::ostream& err).
template <class Tool>
ToolResult runTool(Tool tool, const std::vector<std::string>& args) {
  std::ostringstream out, err;
  const int status = tool(args, out, err);
  return {status, out.str(), err.str()};
}

inline std::vector<std::string> lines(const std::string& text) {
  std::vector<std::string> v;
  std::istringstream in(text);
  for (std::string l; std::getline(in, l);) v.push_back(l);
  return v;
}

}  // namespace LdpTest
