#include "platform/zel/GenericIf.h"

#include <unordered_map>

namespace Zel {

namespace {
std::unordered_map<const ZelType*, ReflectionReactorFactory>& reactorFactories() {
  static std::unordered_map<const ZelType*, ReflectionReactorFactory> m;
  return m;
}

[[noreturn]] void refuse(const ZelType* t, const AttrDesc& a, const char* what) {
  throwRangeException(String(t->name()) + ": attribute '" + a.name + "' cannot be " + what);
}
}  // namespace

void reflectionReactorFactoryIs(const ZelType* type, ReflectionReactorFactory f) {
  reactorFactories()[type] = f;
}

const AttrDesc& GenericIf::attrOf(AttributeId id) const {
  const AttrDesc* a = type()->attr(id);
  if (!a) a = Entity::entityType().attr(id);
  if (!a) {
    throwRangeException(String(type()->name()) + ": no attribute " +
                        valueToStrep(static_cast<uint64_t>(id)).view());
  }
  return *a;
}

String GenericIf::attribute(AttributeId id) const {
  const AttrDesc& a = attrOf(id);
  if (!a.read) refuse(type(), a, "read");
  return a.read(*e_);
}

void GenericIf::attributeIs(AttributeId id, const String& strep) {
  const AttrDesc& a = attrOf(id);
  if (!a.write) refuse(type(), a, "written");
  StrIt it = strep.begin();
  a.write(*e_, it, strep.end());
}

std::vector<String> GenericIf::collectionKeys(AttributeId id) const {
  const AttrDesc& a = attrOf(id);
  if (!a.keys) refuse(type(), a, "iterated");
  return a.keys(*e_);
}

String GenericIf::collectionValue(AttributeId id, const String& keyStrep) const {
  const AttrDesc& a = attrOf(id);
  if (!a.readAt) refuse(type(), a, "read by key");
  return a.readAt(*e_, keyStrep);
}

void GenericIf::invoke(AttributeId id) {
  const AttrDesc& a = attrOf(id);
  if (!a.invoke) refuse(type(), a, "invoked");
  a.invoke(*e_);
}

String GenericIf::call(AttributeId id, const std::vector<String>& args) {
  const AttrDesc& a = attrOf(id);
  if (!a.call) refuse(type(), a, "called");
  return a.call(*e_, args);
}

String GenericIf::stringValue() const {
  return String(type()->name()) + "(" + e_->fullName().view() + ")";
}

std::unique_ptr<Entity::NotifieeConst> GenericIf::notifieeIs(GenericIfNotifiee* target) const {
  for (const ZelType* t = type(); t; t = t->base()) {
    auto it = reactorFactories().find(t);
    if (it != reactorFactories().end()) return it->second(e_, target);
  }
  throwRangeException(String(type()->name()) + ": no reflection reactor");
}

GenericIfValue::GenericIfValue(std::string_view typeName, const String& strep) {
  type_ = ZelType::lookup(typeName);
  if (!type_ || !type_->valueOps()) {
    throwRangeException(String("Unknown value type '") + typeName + "'");
  }
  const ValueOps* ops = type_->valueOps();
  storage_.reset(new unsigned char[ops->size]);
  ops->construct(storage_.get());
  StrIt it = strep.begin();
  try {
    ops->parse(it, strep.end(), storage_.get());
    if (it != strep.end()) throwRangeException(String("Invalid ") + type_->name());
  } catch (...) {
    ops->destroy(storage_.get());
    throw;
  }
}

GenericIfValue::GenericIfValue(const GenericIfValue& o) : type_(o.type_) {
  const ValueOps* ops = type_->valueOps();
  storage_.reset(new unsigned char[ops->size]);
  ops->construct(storage_.get());
  ops->copy(storage_.get(), o.storage_.get());
}

GenericIfValue::~GenericIfValue() { type_->valueOps()->destroy(storage_.get()); }

}  // namespace Zel
