#pragma once
// The reflection dump of an entity tree, for comparing a mirror with its original
// and for showing a whole tree: each entity's full name and type, then its keys,
// attributes and collection entries with their string forms, entries in the order
// of their key forms; child entities follow their parent, depth first. Constants,
// operations and derived attributes are left out. Two trees with equal dumps hold
// the same state, whatever process built them and in whatever order.

#include "platform/zel/Entity.h"

namespace Zel {

String treeDump(const Entity& root);

}  // namespace Zel
