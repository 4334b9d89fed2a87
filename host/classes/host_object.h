// Automation objects that the host itself implements: one table of members a class, one frame for
// calls.
#pragma once

#include <atomic>
#include <span>

#include "classes/host_call.h"
#include "classes/member_signature.h"

namespace mirolta::host {

class HostObject;

enum class MemberKind : uint8_t { kMethod, kProperty };

// A member of a host class. A property is read by `get` and written by `put`, a method called by
// `get`; null if that is not possible.
struct HostMember {
  const char* name;
  DISPID id;  // DISPID_VALUE for the default member
  MemberKind kind;
  UINT least;  // number of arguments, without the value of a put
  UINT most;
  void (*get)(HostObject& object, HostCall& call);
  void (*put)(HostObject& object, HostCall& call);
  // Arguments and value (member_signature.h); of the member for enumeration, that of the elements.
  const char* signature;
  const char* help;  // one sentence
};

struct HostClass {
  const char* name;  // that errors have as their source
  const char* help;  // one sentence
  std::span<const HostMember> members;
};

// HasDefaultMember returns whether objects of the class can be called or stand for a value.
bool HasDefaultMember(const HostClass& host_class);

// CallMember is the function of a row: CallMember<&Dictionary::Exists>.
template <auto kFunction>
struct MemberFunction;
template <typename Object, void (Object::*kFunction)(HostCall&)>
struct MemberFunction<kFunction> {
  static void Call(HostObject& object, HostCall& call) {
    (static_cast<Object&>(object).*kFunction)(call);
  }
};
template <typename Object, void (Object::*kFunction)(HostCall&) const>
struct MemberFunction<kFunction> {
  static void Call(HostObject& object, HostCall& call) {
    (static_cast<const Object&>(object).*kFunction)(call);
  }
};
template <auto kFunction>
constexpr void CallMember(HostObject& object, HostCall& call) {
  MemberFunction<kFunction>::Call(object, call);
}

// Takes any number of arguments.
inline constexpr UINT kAnyCount = UINT_MAX;

// Whether a signature has the numbers of arguments that its row says.
constexpr bool HasItsSignature(const HostMember& row) {
  MemberSignature signature(row.signature);
  if (!signature.HasList()) return row.kind == MemberKind::kProperty && row.least == 0;
  SignatureParameter parameter;
  UINT least = 0, most = 0;
  while (signature.Next(&parameter)) {
    ++most;
    if (!parameter.is_optional) ++least;
  }
  if (signature.IsRepeated()) most = kAnyCount;
  return !signature.IsMalformed() && least == row.least && most == row.most;
}

// IsWellFormed is asserted for each table: ids and names are unique, methods are not written,
// signatures say how many arguments a member takes.
constexpr bool IsWellFormed(std::span<const HostMember> members) {
  for (size_t i = 0; i < members.size(); ++i) {
    const HostMember& row = members[i];
    if (!HasItsSignature(row) || (row.kind == MemberKind::kMethod && row.put != nullptr))
      return false;
    for (size_t j = 0; j < i; ++j) {
      if (members[j].id == row.id) return false;
      if (std::string_view(members[j].name) == row.name) return false;
    }
  }
  return true;
}

// The base of host objects, which start with one reference and end by Release. Names of members are
// case-insensitive; members report errors by exception (Fail, std::bad_alloc). An object that loses
// its last reference while another one is destroyed is destroyed after it, so that a chain of
// objects of any length takes no stack.
class HostObject : public IDispatch {
 public:
  HostObject(const HostObject&) = delete;
  HostObject& operator=(const HostObject&) = delete;

  virtual const HostClass& Class() const = 0;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
  ULONG STDMETHODCALLTYPE AddRef() override;
  ULONG STDMETHODCALLTYPE Release() override;
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override;
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** out) override;
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale,
                                          DISPID* ids) override;
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID locale, WORD flags,
                                   DISPPARAMS* params, VARIANT* result, EXCEPINFO* exception,
                                   UINT* bad_argument) override;

 protected:
  HostObject() = default;
  virtual ~HostObject() = default;

  // Another interface of the object, null if it has none; the caller adds the reference.
  virtual void* OtherInterface(REFIID iid);

 private:
  void Destroy();

  std::atomic<ULONG> references_{1};
  HostObject* next_unused_ = nullptr;
};

// HostObjectOf returns the host object, null for others. It is valid while `object` is.
HostObject* HostObjectOf(IUnknown* object);

}  // namespace mirolta::host
