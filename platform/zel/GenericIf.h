#pragma once
// Reflection: a type-independent view of any entity or value, driven by the type
// registry. Attribute values travel as their string forms (valueToStrep).

#include <memory>

#include "platform/zel/Entity.h"

namespace Zel {

// Receives every attribute change of an entity by id, whatever its type. `key` is
// the changed entry's key form for collections, nullptr for plain attributes.
class GenericIfNotifiee {
 public:
  virtual ~GenericIfNotifiee() = default;
  virtual void onAttribute(AttributeId id, const String* key) = 0;
};

// Signature of the per-type factory of reflection reactors (generated).
using ReflectionReactorFactory =
    std::unique_ptr<Entity::NotifieeConst> (*)(const Ptr<const Entity>&, GenericIfNotifiee*);

class GenericIf {
 public:
  explicit GenericIf(Ptr<Entity> e) : e_(std::move(e)) {}

  const ZelType* type() const { return e_->fwkType(); }
  const Ptr<Entity>& entity() const { return e_; }

  // Each throws RangeException "<type>: no attribute <id>" for an id the type lacks,
  // and "<type>: attribute '<name>' cannot be <read|written|...>" for the wrong kind.
  String attribute(AttributeId id) const;
  void attributeIs(AttributeId id, const String& strep);
  std::vector<String> collectionKeys(AttributeId id) const;
  String collectionValue(AttributeId id, const String& keyStrep) const;
  void invoke(AttributeId id);
  // Calls an operation with its arguments' string forms; gives the result's string
  // form ("" for an operation without a result).
  String call(AttributeId id, const std::vector<String>& args);

  // The entity's hash and string form: those of its full name.
  uint32_t hash() const { return e_->fullName().hash(); }
  String stringValue() const;

  // A reactor that forwards every attribute change to `target`; registered while
  // the returned object lives.
  std::unique_ptr<Entity::NotifieeConst> notifieeIs(GenericIfNotifiee* target) const;

 private:
  const AttrDesc& attrOf(AttributeId id) const;
  Ptr<Entity> e_;
};

// A value of any registered value type, made from a string form.
class GenericIfValue {
 public:
  // Parses `strep` as a value of the registered type `typeName`; the whole text must
  // be used. Throws RangeException for an unknown type or a bad form.
  GenericIfValue(std::string_view typeName, const String& strep);
  GenericIfValue(const GenericIfValue& o);
  GenericIfValue& operator=(const GenericIfValue&) = delete;
  ~GenericIfValue();

  const ZelType* type() const { return type_; }
  String stringValue() const { return type_->valueOps()->strep(storage_.get()); }
  uint32_t hash() const { return type_->valueOps()->hash(storage_.get()); }
  bool operator==(const GenericIfValue& o) const {
    return type_ == o.type_ && type_->valueOps()->equal(storage_.get(), o.storage_.get());
  }
  const void* raw() const { return storage_.get(); }

 private:
  const ZelType* type_;
  std::unique_ptr<unsigned char[]> storage_;
};

// Registers the reflection-reactor factory of an entity type (done by generated code).
void reflectionReactorFactoryIs(const ZelType* type, ReflectionReactorFactory f);

}  // namespace Zel
