#include "object_core.h"

#include "module_state.h"

namespace mirolta {

ObjectCore::ObjectCore(IUnknown* outer) : inner_(*this), outer_(outer) {
  InitializeCriticalSection(&lock_);
  LockModule();
}

ObjectCore::~ObjectCore() {
  DeleteCriticalSection(&lock_);
  UnlockModule();
}

HRESULT ObjectCore::Construct() {
  InterlockedIncrement(&references_);
  const HRESULT status = FinalConstruct();
  InterlockedDecrement(&references_);
  return status;
}

void ObjectCore::Destroy() {
  // With a count of one, references taken and released by the destructor cannot destroy it again.
  references_ = 1;
  delete this;
}

HRESULT ObjectCore::Raise(const ClassDescription& description, UINT message_id) {
  const ModuleState* const module = CurrentModule();
  return RaiseError(*description.class_id, message_id, GUID_NULL, 0,
                    module == nullptr ? nullptr : module->instance);
}

HRESULT STDMETHODCALLTYPE ObjectCore::InnerUnknown::QueryInterface(REFIID iid, void** out) {
  if (out == nullptr) return E_POINTER;
  IUnknown* found = nullptr;
  if (iid == IID_IUnknown) {
    found = core_.outer_ != nullptr ? this : core_.FirstInterface();
  } else {
    found = core_.FindInterface(iid);
  }
  *out = found;
  if (found == nullptr) return E_NOINTERFACE;
  found->AddRef();
  return S_OK;
}

ULONG STDMETHODCALLTYPE ObjectCore::InnerUnknown::AddRef() {
  return static_cast<ULONG>(InterlockedIncrement(&core_.references_));
}

ULONG STDMETHODCALLTYPE ObjectCore::InnerUnknown::Release() {
  const LONG left = InterlockedDecrement(&core_.references_);
  if (left == 0) core_.Destroy();
  return static_cast<ULONG>(left);
}

HRESULT FinishObject(ObjectCore* object, bool constructs, REFIID iid, void** out) {
  HRESULT status = constructs ? object->Construct() : S_OK;
  if (SUCCEEDED(status)) status = object->Inner()->QueryInterface(iid, out);
  if (FAILED(status)) object->Destroy();
  return status;
}

}  // namespace mirolta
