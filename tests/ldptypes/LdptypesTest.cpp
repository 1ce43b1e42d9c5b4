// ldptypes run in-process against the library's registry, plus types the tests
// register for what the generated types do not show (defaults, key types, big values).

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "tests/support/ToolRun.h"
#include "tools/ldptypes/Ldptypes.h"

namespace {

using LdpTest::lines;

using Result = LdpTest::ToolResult;

Result run(const std::vector<std::string>& args) {
  return LdpTest::runTool(LdpTypes::runLdptypes, args);
}

// The JSON output holds one type per line, each opening with its name.
const std::string typeOpen = "{\"name\":\"";

std::string jsonTypeLine(const std::string& json, const std::string& type) {
  for (const std::string& l : lines(json)) {
    if (l.starts_with(typeOpen + type + "\",")) return l;
  }
  return "";
}

// A type's table rows, the column headings first.
std::vector<std::string> tableRows(const std::string& table, const std::string& type) {
  const std::vector<std::string> all = lines(table);
  auto it = std::find(all.begin(), all.end(), type + " (entity, base Zel::Entity)");
  if (it == all.end()) it = std::find(all.begin(), all.end(), type + " (entity)");
  std::vector<std::string> rows;
  for (it = it == all.end() ? it : it + 2; it != all.end() && !it->empty(); ++it) {
    rows.push_back(*it);
  }
  return rows;
}

TEST(Ldptypes, JsonStringEscapesQuotesBackslashesAndControlCharacters) {
  EXPECT_EQ(LdpTypes::jsonString(std::string_view("a\"b\\c\n\x1f\x7f \xc3\xa9\0", 12)),
            "\"a\\\"b\\\\c\\u000a\\u001f\x7f \xc3\xa9\\u0000\"");
}

TEST(Ldptypes, JsonListsEveryRegisteredTypeOnceSortedByName) {
  const Zel::EnumType shade("LdptypesTest::Shade", {{"dark", 0}, {"bright", 4294967295u}});
  const Result r = run({"--json"});
  ASSERT_EQ(r.status, LdpTypes::exitOk) << r.err;
  std::vector<std::string> names, expected;
  for (const std::string& l : lines(r.out)) {
    if (l.starts_with(typeOpen)) names.push_back(l.substr(9, l.find('"', 9) - 9));
  }
  for (const Zel::ZelType* t : Zel::ZelType::registered()) expected.push_back(t->name());
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(names, expected);
  EXPECT_EQ(std::count(names.begin(), names.end(), "Zel::Entity"), 1);
  EXPECT_NE(jsonTypeLine(r.out, "LdptypesTest::Shade").find("\"value\":4294967295}]"),
            std::string::npos);
}

TEST(Ldptypes, TableAndJsonGiveTheRegistrysAttributeIds) {
  const std::string table = run({}).out, json = run({"--json"}).out;
  for (const char* name : {"Ldp::Config", "Zel::Entity"}) {
    SCOPED_TRACE(name);
    std::vector<uint32_t> ids, jsonIds, tableIds;
    for (const Zel::AttrDesc& a : Zel::ZelType::lookup(name)->ownAttrs()) ids.push_back(a.id);
    const std::string line = jsonTypeLine(json, name);
    for (size_t p = line.find("\"id\":"); p != std::string::npos; p = line.find("\"id\":", p + 1)) {
      jsonIds.push_back(static_cast<uint32_t>(std::stoul(line.substr(p + 5))));
    }
    EXPECT_EQ(jsonIds, ids);
    const std::vector<std::string> rows = tableRows(table, name);
    ASSERT_GT(rows.size(), 1u);
    for (const std::string& row : rows) {
      // Every cell starts where its column's heading does.
      for (const char* col : {"  name", "  kind", "  type", "  key type", "  default"}) {
        const size_t at = rows[0].find(col) + 2;
        ASSERT_LT(at, row.size()) << row;
        EXPECT_TRUE(row[at - 1] == ' ' && row[at] != ' ') << col << " in: " << row;
      }
      if (&row != &rows[0]) tableIds.push_back(static_cast<uint32_t>(std::stoul(row)));
    }
    EXPECT_EQ(tableIds, ids);
  }
}

TEST(Ldptypes, KeyTypesAndDefaultsShowWhereDeclared) {
  using Zel::AttrKind;
  const Zel::ZelType probe(
      "LdptypesTest::Probe", Zel::ZelType::Kind::entity, nullptr,
      {{.name = "plain", .id = 2, .kind = AttrKind::mutableAttr, .typeName = "U32"},
       {.name = "tricky",
        .id = 3,
        .kind = AttrKind::valueCollection,
        .typeName = "bool",
        .keyTypeName = "Zel::String",
        .defaultValue = [] { return Zel::String("say \"hi\"\n"); }}});
  const std::string line =
      jsonTypeLine(run({"--json", "--type=LdptypesTest::Probe"}).out, "LdptypesTest::Probe");
  EXPECT_NE(line.find("\"type\":\"U32\",\"keyType\":null,\"default\":null}"), std::string::npos);
  EXPECT_NE(line.find("\"keyType\":\"Zel::String\",\"default\":\"say \\\"hi\\\"\\u000a\"}"),
            std::string::npos)
      << line;
  const std::vector<std::string> rows = tableRows(run({}).out, "LdptypesTest::Probe");
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_TRUE(rows[1].ends_with("U32   -            -")) << rows[1];
  EXPECT_TRUE(rows[2].ends_with("bool  Zel::String  \"say \\\"hi\\\"\\u000a\"")) << rows[2];
}

TEST(Ldptypes, UsageErrorsExitTwoWithAMessageAndNoOutput) {
  for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
           {"--type", "Ldp::Config", "--type", "Ldp::NoSuchType"}, {"--type"}, {"--bogus"}}) {
    const Result r = run(args);
    EXPECT_EQ(r.status, LdpTypes::exitUsage) << args.back();
    EXPECT_TRUE(r.out.empty()) << r.out;
    EXPECT_NE(r.err.find(args.back()), std::string::npos) << r.err;
  }
}

}  // namespace
