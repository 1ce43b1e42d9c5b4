// Input: a selector octet, then text for one of the string-form parsers. A refused
// text (RangeException) is an expected outcome. A text that is accepted must
// round-trip: the string form of the parsed value parses back to a value with the
// same string form; a failure prints both forms and aborts.
//
// Selector 0 and 1: LdpAdjId and LdpFecSessionId stringValueIs. 2 to 7:
// sequenceToValue of value types and enumerations. 8: a registered value type
// through Zel::GenericIfValue, the text being "<type name>\n<string form>".

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "core/LdpTypes.h"
#include "fuzz/FuzzSupport.h"
#include "platform/mpls/FwdEqvClass.h"
#include "platform/ovo/IpGenPrefix.h"
#include "platform/pseudowire/PseudowireType.h"
#include "platform/zel/Exception.h"
#include "platform/zel/GenericIf.h"
#include "platform/zel/String.h"
#include "platform/zel/StringForm.h"
#include "platform/zel/Type.h"

namespace {

void requireSame(const char* what, const Zel::String& first, const Zel::String& second) {
  if (first == second) return;
  std::fprintf(stderr, "%s does not round-trip: '%s' became '%s'\n", what, first.charPtr(),
               second.charPtr());
  std::abort();
}

// The string form of an accepted value must itself be accepted.
template <class F>
Zel::String reparsed(const char* what, const Zel::String& form, F&& parse) {
  try {
    return parse(form);
  } catch (const Zel::RangeException& e) {
    std::fprintf(stderr, "%s refuses its own form '%s': %s\n", what, form.charPtr(), e.what());
    std::abort();
  }
}

template <class T>
void checkStringValueIs(const char* what, const Zel::String& text) {
  T value;
  value.stringValueIs(text);
  const Zel::String form = value.stringValue();
  requireSame(what, form, reparsed(what, form, [](const Zel::String& f) {
                T again;
                again.stringValueIs(f);
                return again.stringValue();
              }));
}

template <class T>
Zel::String parsedForm(const Zel::String& text) {
  using Zel::sequenceToValue;
  using Zel::valueToStrep;
  T value{};
  Zel::StrIt it = text.begin();
  const Zel::StrIt end = text.end();
  sequenceToValue(it, end, &value);
  return valueToStrep(value);
}

template <class T>
void checkSequence(const char* what, const Zel::String& text) {
  const Zel::String form = parsedForm<T>(text);
  requireSame(what, form, reparsed(what, form, parsedForm<T>));
}

void checkGeneric(std::string_view text) {
  const size_t newline = text.find('\n');
  if (newline == std::string_view::npos) return;
  const std::string_view typeName = text.substr(0, newline);
  const Zel::GenericIfValue value(typeName, Zel::String(text.substr(newline + 1)));
  const Zel::String form = value.stringValue();
  const char* what = value.type()->name();
  requireSame(what, form, reparsed(what, form, [&](const Zel::String& f) {
                return Zel::GenericIfValue(typeName, f).stringValue();
              }));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const std::string_view rest(reinterpret_cast<const char*>(data) + 1, size - 1);
  const Zel::String text(rest);
  LdpFuzz::runInput([&] {
    try {
      switch (data[0] % 9) {
        case 0:
          checkStringValueIs<Ldp::LdpAdjId>("LdpAdjId", text);
          break;
        case 1:
          checkStringValueIs<Ldp::LdpFecSessionId>("LdpFecSessionId", text);
          break;
        case 2:
          checkSequence<Ldp::LdpIdentifier>("LdpIdentifier", text);
          break;
        case 3:
          checkSequence<Ovo::IpGenPrefix>("IpGenPrefix", text);
          break;
        case 4:
          checkSequence<Mpls::FwdEqvClass>("FwdEqvClass", text);
          break;
        case 5:
          checkSequence<Pseudowire::PseudowireType>("PseudowireType", text);
          break;
        case 6:
          checkSequence<Ldp::LdpFecElementType>("LdpFecElementType", text);
          break;
        case 7:
          checkSequence<Ldp::LdpLabelAdvDspl>("LdpLabelAdvDspl", text);
          break;
        default:
          checkGeneric(rest);
          break;
      }
    } catch (const Zel::RangeException&) {
    }
  });
  return 0;
}
