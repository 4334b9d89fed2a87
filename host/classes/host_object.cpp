#include "classes/host_object.h"

#include <new>
#include <stdexcept>

#include "engine/status_text.h"

namespace mirolta::host {
namespace {

constexpr IID kHostObjectId = {
    0x2B6F04D3, 0x97A8, 0x4C1E, {0x8D, 0x35, 0x60, 0xF2, 0xA9, 0x1B, 0x7C, 0xE4}};

// The objects that wait for the one that is being destroyed.
thread_local HostObject* t_first_unused = nullptr;
thread_local bool t_is_destroying = false;

OLECHAR LowerCase(OLECHAR unit) {
  return unit >= OLECHAR{'A'} && unit <= OLECHAR{'Z'} ? static_cast<OLECHAR>(unit + 32) : unit;
}

bool HasName(const HostMember& member, const OLECHAR* name) {
  const char* own = member.name;
  for (; *own != '\0' && *name != 0; ++own, ++name) {
    if (LowerCase(static_cast<OLECHAR>(*own)) != LowerCase(*name)) return false;
  }
  return *own == '\0' && *name == 0;
}

const HostMember* FindById(std::span<const HostMember> members, DISPID id) {
  for (size_t i = 0; i < members.size(); ++i) {
    if (members[i].id == id) return members.data() + i;
  }
  return nullptr;
}

BSTR BstrOf(UnitsView text) {
  return SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
}

void FillException(const HostClass& host_class, const CallError& error, EXCEPINFO* exception) {
  *exception = {};
  exception->scode = error.number;
  if (!error.description.empty()) {
    exception->bstrDescription = BstrOf(error.description);
  } else if (const char* text = StandardText(error.number, nullptr)) {
    exception->bstrDescription = BstrOf(UnitsFromSystem(text));
  }
  exception->bstrSource = BstrOf(UnitsFromSystem(host_class.name));
}

// Whether the flags ask for what the member does.
bool Allows(const HostMember& member, WORD flags, bool is_put) {
  if (is_put) return member.put != nullptr;
  const WORD needed = member.kind == MemberKind::kMethod ? DISPATCH_METHOD : DISPATCH_PROPERTYGET;
  return member.get != nullptr && (flags & needed) != 0;
}

// Reads the property without arguments, and passes them to the default member of its value, as the
// platform does: folder.Files("name").
HRESULT InvokeValueOf(IDispatch* object, DISPID property, DISPPARAMS* params, VARIANT* result,
                      EXCEPINFO* exception) {
  ScopedVariant value;
  DISPPARAMS none = {};
  const HRESULT status = object->Invoke(property, IID_NULL, 0, DISPATCH_PROPERTYGET, &none, &value,
                                        exception, nullptr);
  if (FAILED(status)) return status;
  if (value.vt != VT_DISPATCH || value.pdispVal == nullptr) return DISP_E_BADPARAMCOUNT;
  return value.pdispVal->Invoke(DISPID_VALUE, IID_NULL, 0, DISPATCH_METHOD | DISPATCH_PROPERTYGET,
                                params, result, exception, nullptr);
}

}  // namespace

bool HasDefaultMember(const HostClass& host_class) {
  return FindById(host_class.members, DISPID_VALUE) != nullptr;
}

HRESULT STDMETHODCALLTYPE HostObject::QueryInterface(REFIID iid, void** out) {
  if (out == nullptr) return E_POINTER;
  const bool is_own = iid == IID_IUnknown || iid == IID_IDispatch || iid == kHostObjectId;
  *out = is_own ? static_cast<IDispatch*>(this) : OtherInterface(iid);
  if (*out == nullptr) return E_NOINTERFACE;
  AddRef();
  return S_OK;
}

ULONG STDMETHODCALLTYPE HostObject::AddRef() {
  return ++references_;
}

ULONG STDMETHODCALLTYPE HostObject::Release() {
  const ULONG left = --references_;
  if (left == 0) Destroy();
  return left;
}

void HostObject::Destroy() {
  next_unused_ = t_first_unused;
  t_first_unused = this;
  if (t_is_destroying) return;
  t_is_destroying = true;
  while (HostObject* const unused = t_first_unused) {
    t_first_unused = unused->next_unused_;
    delete unused;
  }
  t_is_destroying = false;
}

void* HostObject::OtherInterface(REFIID) {
  return nullptr;
}

HRESULT STDMETHODCALLTYPE HostObject::GetTypeInfoCount(UINT* count) {
  if (count == nullptr) return E_POINTER;
  *count = 0;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE HostObject::GetTypeInfo(UINT, LCID, ITypeInfo** out) {
  if (out != nullptr) *out = nullptr;
  return DISP_E_BADINDEX;
}

HRESULT STDMETHODCALLTYPE HostObject::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID,
                                                    DISPID* ids) {
  if (names == nullptr || ids == nullptr) return E_POINTER;
  for (UINT i = 0; i < count; ++i) ids[i] = DISPID_UNKNOWN;
  if (count == 0) return S_OK;
  for (const HostMember& member : Class().members) {
    if (HasName(member, names[0])) ids[0] = member.id;
  }
  // Arguments have no names.
  return count == 1 && ids[0] != DISPID_UNKNOWN ? S_OK : DISP_E_UNKNOWNNAME;
}

HRESULT STDMETHODCALLTYPE HostObject::Invoke(DISPID id, REFIID, LCID, WORD flags,
                                             DISPPARAMS* params, VARIANT* result,
                                             EXCEPINFO* exception, UINT*) {
  if (params == nullptr) return E_POINTER;
  const HostMember* member = FindById(Class().members, id);
  const bool is_put = (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
  if (member == nullptr || !Allows(*member, flags, is_put)) return DISP_E_MEMBERNOTFOUND;
  const UINT values = is_put ? 1 : 0;
  if (params->cNamedArgs > values) return DISP_E_NONAMEDARGS;
  if (!is_put && member->kind == MemberKind::kProperty && member->most == 0 && params->cArgs > 0) {
    return InvokeValueOf(this, id, params, result, exception);
  }
  if (params->cArgs < member->least + values || params->cArgs > member->most + values) {
    return DISP_E_BADPARAMCOUNT;
  }
  ScopedVariant unwanted;
  if (result == nullptr) result = &unwanted;
  VariantInit(result);
  // A member may run a script that releases the object.
  OwnedReference<IDispatch> self;
  self.Assign(this);
  HRESULT status = S_OK;
  try {
    HostCall call(*params, is_put, result);
    (is_put ? member->put : member->get)(*this, call);
    return S_OK;
  } catch (const CallError& error) {
    status = error.number;
    if (exception != nullptr) {
      try {
        FillException(Class(), error, exception);
        status = DISP_E_EXCEPTION;
      } catch (const std::bad_alloc&) {
        status = E_OUTOFMEMORY;
      }
    }
  } catch (const std::bad_alloc&) {
    status = E_OUTOFMEMORY;
  } catch (const std::length_error&) {
    status = E_OUTOFMEMORY;
  }
  VariantClear(result);
  return status;
}

HostObject* HostObjectOf(IUnknown* object) {
  void* found = nullptr;
  if (object == nullptr || FAILED(object->QueryInterface(kHostObjectId, &found))) return nullptr;
  auto* host_object = static_cast<HostObject*>(static_cast<IDispatch*>(found));
  host_object->Release();
  return host_object;
}

}  // namespace mirolta::host
