#include "platform/zel/Entity.h"

#include "platform/zel/AttrLogSa.h"

namespace Zel {

Ptr<Entity::ZelNboAttrLogSa> Entity::zelNboAttrLogSaIs(NboAttrLog::Writer*, bool) {
  throwRangeException(String(fwkType()->name()) + " has no attribute-log adapter");
}

void Entity::nameIsFromBackup(const Name& backupName) {
  const Name own = name();
  if (backupName == own) return;
  throwRangeException(String(fwkType()->name()) + ": backup name '" + backupName.view() +
                      "' does not match key '" + own.view() + "'");
}

String Entity::parentAttrName() const {
  if (!parent_) return String();
  const AttrDesc* a = parent_->fwkType()->attr(parentAttr_);
  return a ? String(a->name) : String();
}

String Entity::fullName() const {
  if (!parent_) return name();
  return parent_->fullName() + "/" + parentAttrName().view() + "/" + name().view();
}

const ZelType& Entity::entityType() {
  static const ZelType type(
      "Zel::Entity", ZelType::Kind::entity, nullptr,
      {
          {"name", ReflectionAttr::name, AttrKind::reflection, "Zel::Name",
           [](const Entity& e) { return valueToStrep(e.name()); }},
          {"parent", ReflectionAttr::parent, AttrKind::reflection, "Zel::Entity",
           [](const Entity& e) {
             return valueToStrep(e.parent() ? e.parent()->fullName() : String());
           }},
          {"parentAttrName", ReflectionAttr::parentAttrName, AttrKind::reflection, "Zel::String",
           [](const Entity& e) { return valueToStrep(e.parentAttrName()); }},
          {"fullName", ReflectionAttr::fullName, AttrKind::reflection, "Zel::String",
           [](const Entity& e) { return valueToStrep(e.fullName()); }},
          {"entity", ReflectionAttr::entity, AttrKind::reflection, "Zel::Entity",
           [](const Entity& e) { return valueToStrep(String(e.fwkType()->name())); }},
      });
  return type;
}

}  // namespace Zel
