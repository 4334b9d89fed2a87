// Rows of interface tables, made from the C++ methods that they call.
//
// A row reads: id, name, kind, parameters, result, help text. Rows are in the order of the virtual
// functions. Row checks at compile time that the method has the parameters that the row declares.
#pragma once

#include <tuple>
#include <type_traits>
#include <utility>

#include "seam/type_tables.h"

namespace mirolta {

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

// A parameter is the result's place if it points to a type that has a Slot: LONG* and BSTR* do;
// BSTR (a pointer to characters) and IUnknown* do not.
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
template <typename Interface, typename... T,
          HRESULT (STDMETHODCALLTYPE Interface::*kMethodPointer)(T...)>
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

// Not constexpr: calling it in a constant expression is a compile error.
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
