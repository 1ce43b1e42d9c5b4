#include "platform/zel/TreeDump.h"

#include <algorithm>
#include <string>
#include <vector>

namespace Zel {

namespace {

void dumpInto(const Entity& e, std::string& out) {
  const ZelType* type = e.fwkType();
  out.append(e.fullName().view()).append(" (").append(type->name()).append(")\n");
  std::vector<const ZelType*> chain;
  for (const ZelType* t = type; t; t = t->base()) chain.push_back(t);
  std::reverse(chain.begin(), chain.end());
  std::vector<const Entity*> children;
  for (const ZelType* t : chain) {
    for (const AttrDesc& a : t->ownAttrs()) {
      switch (a.kind) {
        case AttrKind::key:
        case AttrKind::init:
        case AttrKind::mutableAttr:
        case AttrKind::reference:
          if (a.read)
            out.append("  ").append(a.name).append(" = ").append(a.read(e).view()).append("\n");
          break;
        case AttrKind::valueCollection:
        case AttrKind::referenceCollection:
        case AttrKind::queue:
        case AttrKind::entityCollection: {
          std::vector<String> keys = a.keys(e);
          std::sort(keys.begin(), keys.end(),
                    [](const String& x, const String& y) { return x.view() < y.view(); });
          for (const String& k : keys) {
            out.append("  ").append(a.name).append("[").append(k.view()).append("]");
            if (a.kind == AttrKind::entityCollection) {
              if (const Entity* c = a.child(e, k)) children.push_back(c);
            } else {
              out.append(" = ").append(a.readAt(e, k).view());
            }
            out.append("\n");
          }
          break;
        }
        case AttrKind::instantiating: {
          const Entity* c = a.child(e, String());
          out.append("  ")
              .append(a.name)
              .append(" = ")
              .append(c ? c->name().view() : "None")
              .append("\n");
          if (c) children.push_back(c);
          break;
        }
        default:
          break;
      }
    }
  }
  for (const Entity* c : children) dumpInto(*c, out);
}

}  // namespace

String treeDump(const Entity& root) {
  std::string out;
  dumpInto(root, out);
  return String(out);
}

}  // namespace Zel
