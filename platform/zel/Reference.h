#pragma once
// The reflection form of a reference attribute: "None" for a null reference, the
// full name (quoted) of a referenced entity, the quoted name of another named
// object, and "object" for an object without a name. References are not written
// through reflection: a form cannot tell which object it means.

#include <type_traits>

#include "platform/zel/Entity.h"
#include "platform/zel/StringForm.h"

namespace Zel {

template <class T>
String referenceStrep(const Ptr<T>& p) {
  if (!p) return String("None");
  if constexpr (std::is_base_of_v<Entity, std::remove_const_t<T>>) {
    return valueToStrep(p->fullName());
  } else if constexpr (requires { p->name(); }) {
    return valueToStrep(String(p->name()));
  } else {
    return String("object");
  }
}

}  // namespace Zel
