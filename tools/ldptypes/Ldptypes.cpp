#include "tools/ldptypes/Ldptypes.h"

#include <algorithm>
#include <cstdio>
#include <optional>

#include "platform/zel/Entity.h"

namespace LdpTypes {

using Zel::AttrDesc;
using Zel::ZelType;

namespace {

const char* const usage =
    "usage: ldptypes [--json] [--type NAME]...\n"
    "Prints the attribute schema of libLdp's registered types, sorted by name.\n"
    "  --json       one JSON document instead of tables\n"
    "  --type NAME  only the type with this qualified name (\"Ldp::Config\"); repeatable\n"
    "  --help       this text\n";

const char* typeKindName(ZelType::Kind kind) {
  switch (kind) {
    case ZelType::Kind::entity:
      return "entity";
    case ZelType::Kind::value:
      return "value";
    case ZelType::Kind::enumeration:
      return "enumeration";
    case ZelType::Kind::overlay:
      return "overlay";
  }
  return "unknown";
}

// The key attributes that identify an instance, the bases' first: an entity's key
// may be declared by a base type.
std::vector<const char*> keyNames(const ZelType& t) {
  std::vector<const ZelType*> chain;
  for (const ZelType* p = &t; p; p = p->base()) chain.push_back(p);
  std::vector<const char*> names;
  for (auto it = chain.rbegin(); it != chain.rend(); ++it) {
    for (const AttrDesc& a : (*it)->ownAttrs()) {
      if (a.kind == Zel::AttrKind::key) names.push_back(a.name);
    }
  }
  return names;
}

// The value type, or nothing for an attribute without one (a function).
std::optional<std::string> valueTypeOf(const AttrDesc& a) {
  if (!a.typeName || !*a.typeName) return std::nullopt;
  return a.typeName;
}

std::optional<std::string> keyTypeOf(const AttrDesc& a) {
  if (!a.keyTypeName) return std::nullopt;
  return a.keyTypeName;
}

std::optional<std::string> defaultOf(const AttrDesc& a) {
  if (!a.defaultValue) return std::nullopt;
  return a.defaultValue().str();
}

}  // namespace

std::string jsonString(std::string_view v) {
  std::string s = "\"";
  for (char c : v) {
    if (c == '"' || c == '\\') {
      s += '\\';
      s += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      char esc[8];
      std::snprintf(esc, sizeof esc, "\\u%04x", static_cast<unsigned>(c));
      s += esc;
    } else {
      s += c;
    }
  }
  s += '"';
  return s;
}

std::vector<const ZelType*> typesByName() {
  // Entity types register it as their base; calling it makes sure it is there.
  Zel::Entity::entityType();
  std::vector<const ZelType*> types = ZelType::registered();
  std::stable_sort(types.begin(), types.end(), [](const ZelType* a, const ZelType* b) {
    return std::string_view(a->name()) < std::string_view(b->name());
  });
  return types;
}

namespace {

using Row = std::vector<std::string>;

// A table cell: "-" for nothing, and a quoted form for text that would not show
// as itself (empty, or holding control characters).
std::string cell(const std::optional<std::string>& v) {
  if (!v) return "-";
  const bool plain = !v->empty() && std::none_of(v->begin(), v->end(), [](char c) {
    return static_cast<unsigned char>(c) < 0x20;
  });
  return plain ? *v : jsonString(*v);
}

// Rows indented by two spaces, columns two spaces apart, each as wide as its
// widest cell; the last column is not padded.
void writeColumns(std::ostream& out, const std::vector<Row>& rows) {
  std::vector<size_t> widths;
  for (const Row& r : rows) {
    if (widths.size() < r.size()) widths.resize(r.size());
    for (size_t i = 0; i < r.size(); ++i) widths[i] = std::max(widths[i], r[i].size());
  }
  for (const Row& r : rows) {
    std::string line = " ";
    for (size_t i = 0; i < r.size(); ++i) {
      line += ' ';
      line += r[i];
      if (i + 1 < r.size()) line.append(widths[i] - r[i].size() + 1, ' ');
    }
    out << line << '\n';
  }
}

void writeTypeTable(std::ostream& out, const ZelType& t) {
  out << t.name() << " (" << typeKindName(t.kind());
  if (t.base()) out << ", base " << t.base()->name();
  out << ")\n";
  if (t.kind() != ZelType::Kind::enumeration) {
    const std::vector<const char*> keys = keyNames(t);
    std::string line = "  keys:";
    for (size_t i = 0; i < keys.size(); ++i) line += std::string(i ? ", " : " ") + keys[i];
    if (keys.empty()) line += " -";
    out << line << '\n';
  }
  if (!t.ownAttrs().empty()) {
    std::vector<Row> rows = {{"id", "name", "kind", "type", "key type", "default"}};
    for (const AttrDesc& a : t.ownAttrs()) {
      rows.push_back({std::to_string(a.id), a.name, Zel::attrKindName(a.kind), cell(valueTypeOf(a)),
                      cell(keyTypeOf(a)), cell(defaultOf(a))});
    }
    writeColumns(out, rows);
  }
  if (const auto* e = dynamic_cast<const Zel::EnumType*>(&t)) {
    std::vector<Row> rows = {{"enumerator", "value"}};
    for (const Zel::EnumType::Enumerator& en : e->enumerators()) {
      rows.push_back({en.name, std::to_string(en.value)});
    }
    writeColumns(out, rows);
  }
}

std::string jsonOrNull(const std::optional<std::string>& v) { return v ? jsonString(*v) : "null"; }

void writeTypeJson(std::ostream& out, const ZelType& t) {
  std::string s = "{\"name\":" + jsonString(t.name());
  s += ",\"kind\":" + jsonString(typeKindName(t.kind()));
  s += ",\"base\":" + (t.base() ? jsonString(t.base()->name()) : std::string("null"));
  s += ",\"keys\":[";
  const std::vector<const char*> keys = keyNames(t);
  for (size_t i = 0; i < keys.size(); ++i) {
    if (i) s += ',';
    s += jsonString(keys[i]);
  }
  s += "],\"attributes\":[";
  bool first = true;
  for (const AttrDesc& a : t.ownAttrs()) {
    s += first ? "" : ",";
    first = false;
    s += "{\"id\":" + std::to_string(a.id);
    s += ",\"name\":" + jsonString(a.name);
    s += ",\"kind\":" + jsonString(Zel::attrKindName(a.kind));
    s += ",\"type\":" + jsonOrNull(valueTypeOf(a));
    s += ",\"keyType\":" + jsonOrNull(keyTypeOf(a));
    s += ",\"default\":" + jsonOrNull(defaultOf(a)) + "}";
  }
  s += "]";
  if (const auto* e = dynamic_cast<const Zel::EnumType*>(&t)) {
    s += ",\"enumerators\":[";
    first = true;
    for (const Zel::EnumType::Enumerator& en : e->enumerators()) {
      s += first ? "" : ",";
      first = false;
      s += "{\"name\":" + jsonString(en.name) + ",\"value\":" + std::to_string(en.value) + "}";
    }
    s += "]";
  }
  out << s << "}";
}

}  // namespace

void writeTable(std::ostream& out, const std::vector<const ZelType*>& types) {
  for (size_t i = 0; i < types.size(); ++i) {
    if (i) out << '\n';
    writeTypeTable(out, *types[i]);
  }
}

void writeJson(std::ostream& out, const std::vector<const ZelType*>& types) {
  out << "{\"types\":[";
  for (size_t i = 0; i < types.size(); ++i) {
    out << (i ? ",\n" : "\n");
    writeTypeJson(out, *types[i]);
  }
  out << "\n]}\n";
}

int runLdptypes(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  bool json = false;
  std::vector<std::string> names;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    if (a == "--help" || a == "-h") {
      out << usage;
      return exitOk;
    } else if (a == "--json") {
      json = true;
    } else if (a == "--type") {
      if (i + 1 == args.size()) {
        err << "ldptypes: --type needs a type name\n" << usage;
        return exitUsage;
      }
      names.push_back(args[++i]);
    } else if (a.starts_with("--type=")) {
      names.push_back(a.substr(7));
    } else {
      err << "ldptypes: unknown option '" << a << "'\n" << usage;
      return exitUsage;
    }
  }

  std::vector<const ZelType*> types = typesByName();
  if (!names.empty()) {
    std::vector<const ZelType*> chosen;
    for (const std::string& n : names) {
      const ZelType* t = ZelType::lookup(n);
      if (!t) {
        err << "ldptypes: no type named '" << n << "'\n";
        return exitUsage;
      }
      if (std::find(chosen.begin(), chosen.end(), t) == chosen.end()) chosen.push_back(t);
    }
    std::erase_if(types, [&](const ZelType* t) {
      return std::find(chosen.begin(), chosen.end(), t) == chosen.end();
    });
  }
  if (json) {
    writeJson(out, types);
  } else {
    writeTable(out, types);
  }
  return exitOk;
}

}  // namespace LdpTypes
