#pragma once
// The type registry: one descriptor per generated type, registered during static
// initialisation. A descriptor lists the type's attributes (name, id, kind) with
// reflection accessors that read and write them through their string forms.

#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/zel/NboAttrLog.h"
#include "platform/zel/StringForm.h"

namespace Zel {

class Entity;

// Reflection attribute ids shared by every entity type.
namespace ReflectionAttr {
constexpr AttributeId name = 130;
constexpr AttributeId parent = 138;
constexpr AttributeId parentAttrName = 139;
constexpr AttributeId fullName = 141;
constexpr AttributeId entity = 143;
}  // namespace ReflectionAttr

// What an attribute is. Whether reflection may read or write it is told by its
// accessors (AttrDesc::read, write, ...), not by its kind.
enum class AttrKind : uint8_t {
  key,                  // fixed at construction, part of the collection key and the name
  init,                 // fixed at construction, not part of the key
  mutableAttr,          // a value with a setter
  derived,              // computed from other state, or an access point (write-only, take-on-read)
  reference,            // a Ptr to an entity the attribute does not own
  valueCollection,      // keyed values (sets map to bool)
  entityCollection,     // keyed child entities the collection owns
  referenceCollection,  // keyed references to entities the collection does not own
  queue,                // a bounded ordered queue keyed by a growing sequence index
  instantiating,        // one owned child entity
  constant,
  function,   // an action without parameters
  operation,  // an action with parameters or a result
  reflection,
};

// The name of an attribute kind as tools print it ("mutable", "entityCollection"...).
const char* attrKindName(AttrKind kind);

struct AttrDesc {
  const char* name;
  AttributeId id;
  AttrKind kind;
  const char* typeName;  // the attribute's value type (for collections: the value or child type)
  // Reflection accessors; null where the kind has none.
  String (*read)(const Entity&) = nullptr;                 // string form of the value
  void (*write)(Entity&, StrIt&, const StrIt&) = nullptr;  // parse a string form and set it
  std::vector<String> (*keys)(const Entity&) = nullptr;    // collections: key forms, map order
  String (*readAt)(const Entity&, const String& key) = nullptr;  // collections: value at a key form
  void (*invoke)(Entity&) = nullptr;                             // functions
  // Collections: the key type; operations: the parameter list ("Mpls::FwdEqvClass fec").
  const char* keyTypeName = nullptr;
  // The string form of the declared default (mutable attributes, value fields, and the
  // values of constants), or nullptr where the kind has none.
  String (*defaultValue)() = nullptr;
  // Operations: parse each parameter from its string form, call, and give the result's
  // string form (empty for an operation without a result).
  String (*call)(Entity&, const std::vector<String>& args) = nullptr;
  // Child entities (collections and single children): the child at a key form (the
  // key is ignored for a single child), or null.
  Entity* (*child)(const Entity&, const String& key) = nullptr;
};

// Type-erased operations of a value type, for GenericIfValue.
struct ValueOps {
  size_t size;
  void (*construct)(void*);
  void (*destroy)(void*);
  void (*copy)(void* to, const void* from);
  bool (*equal)(const void*, const void*);
  uint32_t (*hash)(const void*);
  String (*strep)(const void*);
  void (*parse)(StrIt&, const StrIt&, void* out);
};

class ZelType {
 public:
  // overlay: a type laid over wire octets, never owned.
  enum class Kind : uint8_t { entity, value, enumeration, overlay };

  ZelType(const char* name, Kind kind, const ZelType* base, std::vector<AttrDesc> attrs,
          const ValueOps* valueOps = nullptr);
  ZelType(const ZelType&) = delete;
  ZelType& operator=(const ZelType&) = delete;
  virtual ~ZelType();

  const char* name() const { return name_; }
  Kind kind() const { return kind_; }
  const ZelType* base() const { return base_; }
  const ValueOps* valueOps() const { return valueOps_; }
  // The type's own attributes in declaration order.
  const std::vector<AttrDesc>& ownAttrs() const { return attrs_; }
  // Looks an attribute up by id or by name in this type and then its bases.
  const AttrDesc* attr(AttributeId id) const;
  const AttrDesc* attr(std::string_view name) const;
  bool isKindOf(const ZelType* t) const;

  // The registered type with this qualified name ("Ldp::Config"), or nullptr.
  static const ZelType* lookup(std::string_view qualifiedName);
  // Every registered type, in registration order.
  static const std::vector<const ZelType*>& registered();

 private:
  const char* name_;
  Kind kind_;
  const ZelType* base_;
  std::vector<AttrDesc> attrs_;
  const ValueOps* valueOps_;
};

// An enumeration's descriptor. Its enumerators are in declaration order.
//
// Unknown values: an enumeration holds any 32-bit number. A number that is no
// enumerator prints as itself in decimal, and a decimal number parses back to that
// value, so every value round-trips. A text that is neither an enumerator's name nor
// a decimal number within 32 bits is refused with "Invalid <type name>: '<text>'".
// Names are exact and case-sensitive. instance(text) takes the whole text and quotes
// all of it; sequenceToValue() reads the run of identifier characters ([A-Za-z0-9_])
// at the cursor, quotes that run when refusing it, and otherwise stops after it.
class EnumType : public ZelType {
 public:
  struct Enumerator {
    const char* name;
    uint32_t value;
  };
  EnumType(const char* name, std::vector<Enumerator> enumerators);

  const std::vector<Enumerator>& enumerators() const { return enumerators_; }
  size_t enumeratorCount() const { return enumerators_.size(); }
  bool isEnumerator(uint32_t value) const { return find(value) != nullptr; }
  // The enumerator's name, or nullptr for a value that is no enumerator.
  const char* enumeratorName(uint32_t value) const;

  String valueToStrep(uint32_t value) const;
  uint32_t sequenceToValue(StrIt& it, const StrIt& end) const;
  uint32_t instance(uint32_t value) const { return value; }
  uint32_t instance(const String& name) const;

 private:
  const Enumerator* find(uint32_t value) const;
  std::vector<Enumerator> enumerators_;
  std::vector<Enumerator> byValue_;  // sorted by value for lookup
};

// EnumTraits<E>::type() gives an enumeration's descriptor (specialised by generated
// code), so that any registered enumeration has a string form and a parser.
template <class E>
struct EnumTraits;

template <class E>
concept RegisteredEnum = std::is_enum_v<E> && requires {
  EnumTraits<E>::type();
};

template <RegisteredEnum E>
String valueToStrep(E v) {
  return EnumTraits<E>::type().valueToStrep(static_cast<uint32_t>(v));
}

template <RegisteredEnum E>
void sequenceToValue(StrIt& it, const StrIt& end, E* out) {
  *out = static_cast<E>(EnumTraits<E>::type().sequenceToValue(it, end));
}

}  // namespace Zel
