// Interface tables: the members of a dispatch interface, written once. Type information, late-bound
// calls and the interface definition file all come from these rows.
//
// A row reads: id, name, kind, parameters, result, the call it makes, help text. Rows stand in slot
// order. Row checks at compile time that the C++ method has the parameters that the row declares.
#pragma once

#include <tuple>
#include <type_traits>
#include <utility>

#include "portable/dispatch.h"

namespace mirolta {

// A parameter's or result's type. Objects name their interface.
struct ValueType {
  VARTYPE type;
  const OLECHAR* interface_name;
};
inline constexpr ValueType kNone = {VT_EMPTY, nullptr};
inline constexpr ValueType kLong = {VT_I4, nullptr};
inline constexpr ValueType kBool = {VT_BOOL, nullptr};
inline constexpr ValueType kText = {VT_BSTR, nullptr};
inline constexpr ValueType kVariant = {VT_VARIANT, nullptr};
inline constexpr ValueType kUnknown = {VT_UNKNOWN, OLESTR("IUnknown")};

// Whether a caller may leave a parameter out, and what the member then gets.
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

namespace interface_table_detail {

// Slot<T>: how a C++ parameter type travels in a VARIANT.
template <typename T>
struct Slot {
  static constexpr bool kKnown = false;
};

template <typename T, VARTYPE kTag, auto kMember>
struct FieldSlot {
  static constexpr bool kKnown = true;
  static constexpr VARTYPE kType = kTag;
  static T Take(const VARIANT& v) { return v.*kMember; }
  static void Put(VARIANT& v, T value) { v.*kMember = value; }
};

template <>
struct Slot<LONG> : FieldSlot<LONG, VT_I4, &VARIANT::lVal> {};
template <>
struct Slot<VARIANT_BOOL> : FieldSlot<VARIANT_BOOL, VT_BOOL, &VARIANT::boolVal> {};
template <>
struct Slot<BSTR> : FieldSlot<BSTR, VT_BSTR, &VARIANT::bstrVal> {};
template <>
struct Slot<IUnknown*> : FieldSlot<IUnknown*, VT_UNKNOWN, &VARIANT::punkVal> {};
template <>
struct Slot<VARIANT> {
  static constexpr bool kKnown = true;
  static constexpr VARTYPE kType = VT_VARIANT;
  static VARIANT Take(const VARIANT& v) { return v; }
  static void Put(VARIANT& v, const VARIANT& value) { v = value; }
};
template <typename Interface>
requires std::is_base_of_v<IDispatch, Interface>
struct Slot<Interface*> {
  static constexpr bool kKnown = true;
  static constexpr VARTYPE kType = VT_DISPATCH;
  static void Put(VARIANT& v, Interface* value) { v.pdispVal = value; }
};

// A parameter is the result's place if it points to something that travels in a VARIANT: LONG* and
// BSTR* do, BSTR (a pointer to characters) and IUnknown* do not.
template <typename T>
constexpr bool kIsResult = std::is_pointer_v<T>&& Slot<std::remove_pointer_t<T>>::kKnown;

template <typename T>
struct Argument {
  Argument(const VARIANT* arguments, size_t index) : value(Slot<T>::Take(arguments[index])) {}
  T Pass() { return value; }
  void Finish(VARIANT*) {}
  T value;
};
template <typename T>
requires kIsResult<T>
struct Argument<T> {
  Argument(const VARIANT*, size_t) {}
  T Pass() { return &value; }
  void Finish(VARIANT* result) { Slot<std::remove_pointer_t<T>>::Put(*result, value); }
  std::remove_pointer_t<T> value{};
};

template <auto kMethodPointer>
struct Thunk;
template <typename Interface, typename... T, HRESULT (Interface::*kMethodPointer)(T...)>
struct Thunk<kMethodPointer> {
  static HRESULT Call(void* instance, VARIANT* arguments, VARIANT* result) {
    return CallWith(instance, arguments, result, std::index_sequence_for<T...>{});
  }

  // True if the row declares exactly this method's parameters and result.
  static constexpr bool Matches(const Parameters& parameters, ValueType result) {
    constexpr unsigned kResults = (0u + ... + (kIsResult<T> ? 1u : 0u));
    if (parameters.Count() + kResults != sizeof...(T)) return false;
    if ((result.type != VT_EMPTY ? 1u : 0u) != kResults) return false;
    [[maybe_unused]] unsigned index = 0;
    return (MatchesOne<T>(parameters, result, index) && ...);
  }

 private:
  template <size_t... kIndex>
  static HRESULT CallWith(void* instance, [[maybe_unused]] VARIANT* arguments,
                          [[maybe_unused]] VARIANT* result, std::index_sequence<kIndex...>) {
    std::tuple<Argument<T>...> passed{Argument<T>(arguments, kIndex)...};
    const HRESULT status =
        (static_cast<Interface*>(instance)->*kMethodPointer)(std::get<kIndex>(passed).Pass()...);
    (std::get<kIndex>(passed).Finish(result), ...);
    return status;
  }

  template <typename One>
  static constexpr bool MatchesOne(const Parameters& parameters, ValueType result,
                                   unsigned& index) {
    if constexpr (kIsResult<One>) {
      return index == parameters.Count() && result.type == Slot<std::remove_pointer_t<One>>::kType;
    } else {
      return Slot<One>::kType == parameters.rows[index++].type.type;
    }
  }
};

}  // namespace interface_table_detail

// Not constant, so that a call of it in a constant expression stops the compiler.
inline void RowDiffersFromMethod() {}

// Row writes one member of a table. It does not compile if the method's parameters differ from the
// row's; `instance` of the call must be a pointer to the method's own interface.
template <auto kMethodPointer>
consteval MemberRow Row(DISPID id, const OLECHAR* name, INVOKEKIND kind, Parameters parameters,
                        ValueType result, const OLECHAR* help) {
  using Thunk = interface_table_detail::Thunk<kMethodPointer>;
  if (!Thunk::Matches(parameters, result)) RowDiffersFromMethod();
  return {id, name, kind, parameters, result, &Thunk::Call, help};
}

}  // namespace mirolta
