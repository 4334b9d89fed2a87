#include "objects/member_call.h"

#include "engine/host_errors.h"
#include "engine/script_context.h"
#include "objects/object_handle.h"
#include "objects/script_object.h"
#include "values/value_marshal.h"

namespace mirolta::host {
namespace {

// The most nested calls: each takes native stack.
constexpr int kMostCalls = 128;
constexpr HRESULT kErrorBase = MIROLTA_STATUS(0x800A0000u);  // of an EXCEPINFO's error code

UnitsView TextOf(BSTR text) {
  return UnitsView(text, SysStringLen(text));
}

}  // namespace

MemberCall::~MemberCall() {
  for (VARIANT& argument : arguments_) VariantClear(&argument);
  ClearException();
}

void MemberCall::ClearException() {
  SysFreeString(exception_.bstrSource);
  SysFreeString(exception_.bstrDescription);
  SysFreeString(exception_.bstrHelpFile);
  exception_ = {};
}

void MemberCall::Bind(duk_context* engine, duk_idx_t index) {
  if (!HandleAt(engine, index, &number_)) ThrowStatus(engine, kNoSuchMember);
  const ObjectSlot* slot = SlotAt(engine, index, SlotKind::kDispatch);
  if (slot == nullptr) ThrowStatus(engine, kNoSuchMember);
  object_.Assign(slot->value.pdispVal);
}

bool MemberCall::FindId(duk_context* engine, duk_idx_t name, DISPID* id) {
  duk_size_t size = 0;
  const char* bytes = duk_get_lstring(engine, name, &size);
  name_ = UnitsFromEngine({bytes, size});
  ObjectTable& objects = ContextOf(engine).objects;
  if (const ObjectSlot* slot = objects.Find(number_, SlotKind::kDispatch)) {
    const auto known = slot->ids.find(name_);
    if (known != slot->ids.end()) {
      *id = known->second;
      return true;
    }
  }
  LPOLESTR text = name_.data();
  *id = DISPID_UNKNOWN;
  const HRESULT status = object_->GetIDsOfNames(IID_NULL, &text, 1, LOCALE_USER_DEFAULT, id);
  if (status == DISP_E_UNKNOWNNAME || status == DISP_E_MEMBERNOTFOUND) return false;
  if (FAILED(status)) Throw(engine, status);
  // Found again: GetIDsOfNames may have run a script.
  if (ObjectSlot* slot = objects.Find(number_, SlotKind::kDispatch)) slot->ids[name_] = *id;
  return true;
}

void MemberCall::TakeArguments(duk_context* engine, duk_idx_t first, duk_idx_t count) {
  arguments_.resize(static_cast<size_t>(count), VARIANT{});
  for (duk_idx_t i = 0; i < count; ++i) {
    const HRESULT status =
        VariantFromScript(engine, first + i, &arguments_[static_cast<size_t>(count - 1 - i)]);
    if (FAILED(status)) ThrowStatus(engine, status);
  }
}

HRESULT MemberCall::InvokeWith(duk_context* engine, DISPID id, WORD flags, DISPID* named) {
  ScriptContext& context = ContextOf(engine);
  if (context.calls_running >= kMostCalls) return kOutOfStack;
  DISPPARAMS params = {};
  params.rgvarg = arguments_.data();
  params.cArgs = static_cast<UINT>(arguments_.size());
  params.rgdispidNamedArgs = named;
  params.cNamedArgs = named != nullptr ? 1 : 0;
  VariantClear(&result_);
  ClearException();
  // Error information of an earlier call must not describe this one.
  SetErrorInfo(0, nullptr);
  ForgetScriptError(engine);
  UINT bad_argument = 0;
  ++context.calls_running;
  const HRESULT status =
      object_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &params,
                      named != nullptr ? nullptr : &result_, &exception_, &bad_argument);
  --context.calls_running;
  return status;
}

HRESULT MemberCall::Invoke(duk_context* engine, DISPID id, WORD flags) {
  return InvokeWith(engine, id, flags, nullptr);
}

HRESULT MemberCall::PutWith(duk_context* engine, DISPID id) {
  DISPID named = DISPID_PROPERTYPUT;
  const VARTYPE type = arguments_.front().vt;
  if (type == VT_DISPATCH || type == VT_UNKNOWN) {
    const HRESULT status = InvokeWith(engine, id, DISPATCH_PROPERTYPUTREF, &named);
    if (status != DISP_E_MEMBERNOTFOUND) return status;
  }
  return InvokeWith(engine, id, DISPATCH_PROPERTYPUT, &named);
}

void MemberCall::Put(duk_context* engine, DISPID id) {
  const HRESULT status = PutWith(engine, id);
  if (FAILED(status)) Throw(engine, status);
}

duk_ret_t MemberCall::Call(duk_context* engine, DISPID id, WORD flags) {
  const HRESULT status = Invoke(engine, id, flags);
  if (FAILED(status)) Throw(engine, status);
  PushResult(engine);
  return 1;
}

void MemberCall::PushResult(duk_context* engine) {
  PushVariant(engine, result_);
}

void MemberCall::Throw(duk_context* engine, HRESULT status) {
  HRESULT number = status;
  if (status == DISP_E_EXCEPTION) {
    if (exception_.pfnDeferredFillIn != nullptr) exception_.pfnDeferredFillIn(&exception_);
    if (exception_.scode != 0) {
      number = exception_.scode;
    } else if (exception_.wCode != 0) {
      number = kErrorBase | exception_.wCode;
    }
  } else {
    ClearException();
  }
  if (TakeScriptError(engine, number)) {
    (void)duk_throw(engine);
    __builtin_unreachable();
  }
  if (number == DISP_E_MEMBERNOTFOUND || number == DISP_E_UNKNOWNNAME) number = kNoSuchMember;
  ThrowStatus(engine, number, TextOf(exception_.bstrDescription), TextOf(exception_.bstrSource));
}

}  // namespace mirolta::host
