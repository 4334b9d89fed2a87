// The tables that describe a type library: its interfaces with their members, and its classes. The
// module writes them; the runtime's type information and late-bound calls, and the interface
// definition file, are derived from them.
#pragma once

#include <cstdint>

#include "system_headers.h"

namespace mirolta {

// A parameter's or result's type. Objects name their interface. A VARIANT result has the type
// `content` or is empty; of any type if `content` is VT_EMPTY.
struct ValueType {
  VARTYPE type;
  const OLECHAR* interface_name;
  VARTYPE content = VT_EMPTY;
};
inline constexpr ValueType kNone = {VT_EMPTY, nullptr};
inline constexpr ValueType kLong = {VT_I4, nullptr};
inline constexpr ValueType kBool = {VT_BOOL, nullptr};
inline constexpr ValueType kText = {VT_BSTR, nullptr};
inline constexpr ValueType kVariant = {VT_VARIANT, nullptr};
inline constexpr ValueType kBytesVariant = {VT_VARIANT, nullptr, VT_ARRAY | VT_UI1};
inline constexpr ValueType kTextVariant = {VT_VARIANT, nullptr, VT_BSTR};
inline constexpr ValueType kUnknown = {VT_UNKNOWN, OLESTR("IUnknown")};

// Whether a caller may omit a parameter, and what the member then receives.
enum class Presence : uint8_t {
  kRequired,
  kOptional,  // a VARIANT: VT_ERROR with DISP_E_PARAMNOTFOUND
  kDefault,   // default_value
};

struct ParameterRow {
  const OLECHAR* name = nullptr;
  ValueType type = kNone;
  Presence presence = Presence::kRequired;
  LONG default_value = 0;
};

// In, Optional and Default write a parameter the way the member tables read.
constexpr ParameterRow In(const OLECHAR* name, ValueType type) {
  return {name, type};
}
constexpr ParameterRow Optional(const OLECHAR* name, ValueType type) {
  return {name, type, Presence::kOptional, 0};
}
constexpr ParameterRow Default(const OLECHAR* name, ValueType type, LONG value) {
  return {name, type, Presence::kDefault, value};
}

constexpr unsigned kMaxParameters = 3;
struct Parameters {
  ParameterRow rows[kMaxParameters];
  constexpr unsigned Count() const {
    unsigned count = 0;
    while (count < kMaxParameters && rows[count].name != nullptr) ++count;
    return count;
  }
};

// Calls the member on `instance` (a pointer to the dual interface) with arguments already of the
// declared types, in declared order; `result` receives the value, its type set by the caller.
using MemberCall = HRESULT (*)(void* instance, VARIANT* arguments, VARIANT* result);

struct MemberRow {
  DISPID id;
  const OLECHAR* name;
  INVOKEKIND kind;
  Parameters parameters;
  ValueType result;
  MemberCall call;
  const OLECHAR* help;
};

inline constexpr INVOKEKIND kMethod = INVOKE_FUNC;
inline constexpr INVOKEKIND kGet = INVOKE_PROPERTYGET;
inline constexpr INVOKEKIND kPut = INVOKE_PROPERTYPUT;
inline constexpr INVOKEKIND kPutRef = INVOKE_PROPERTYPUTREF;

struct InterfaceTable {
  const IID* iid;
  const OLECHAR* name;
  const OLECHAR* help;
  const MemberRow* members;
  unsigned member_count;
};

struct ClassTableRow {
  const CLSID* id;
  const OLECHAR* name;
  const OLECHAR* help;
  const InterfaceTable* default_interface;
};

struct TypeLibraryTable {
  const GUID* id;
  const OLECHAR* name;
  const OLECHAR* help;
  WORD major;
  WORD minor;
  const InterfaceTable* const* interfaces;
  unsigned interface_count;
  const ClassTableRow* classes;
  unsigned class_count;
};

}  // namespace mirolta
