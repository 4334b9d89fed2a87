#include "objects/member_call.h"

#include <new>

#include "engine/host_errors.h"
#include "engine/script_context.h"
#include "objects/object_handle.h"
#include "objects/script_object.h"
#include "values/array_value.h"
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
  ClearArguments();
  ClearException();
}

void MemberCall::ClearException() {
  for (const BSTR text :
       {exception_.bstrSource, exception_.bstrDescription, exception_.bstrHelpFile}) {
    if (text != nullptr) SysFreeString(text);
  }
  exception_ = {};
}

void MemberCall::Bind(duk_context* engine, duk_idx_t index) {
  SlotNumber number = kNoSlot;
  if (!HandleAt(engine, index, &number)) ThrowStatus(engine, kNoSuchMember);
  const ObjectSlot* slot = Context(engine).objects.Find(number);
  if (slot == nullptr) ThrowStatus(engine, kDisconnected);
  if (slot->kind != SlotKind::kDispatch) ThrowStatus(engine, kNoSuchMember);
  Bind(*slot);
}

// The slot of the object, with its type information's table; null if the slot was freed meanwhile.
ObjectSlot* MemberCall::LookUpSlot(duk_context* engine) {
  ScriptContext& context = Context(engine);
  ObjectSlot* slot = context.objects.Find(number_, SlotKind::kDispatch);
  if (slot == nullptr || slot->is_looked_up) return slot;
  const HRESULT status = object_->GetTypeInfo(0, LOCALE_USER_DEFAULT, type_info_.Put());
  // Found again: the object may have run a script.
  slot = context.objects.Find(number_, SlotKind::kDispatch);
  if (slot == nullptr) return nullptr;
  if (SUCCEEDED(status) && type_info_) slot->described = context.described.Of(type_info_.Get());
  slot->is_looked_up = true;
  return slot;
}

Member* MemberCall::FindMember(duk_context* engine, duk_idx_t name) {
  ObjectSlot* slot = LookUpSlot(engine);
  if (slot == nullptr) ThrowStatus(engine, kDisconnected);
  if (Member* known = slot->FindMember(duk_get_heapptr(engine, name))) return known;
  duk_size_t size = 0;
  const char* bytes = duk_get_lstring(engine, name, &size);
  name_ = UnitsFromEngine({bytes, size});
  LPOLESTR text = name_.data();
  DISPID id = DISPID_UNKNOWN;
  const HRESULT status = object_->GetIDsOfNames(IID_NULL, &text, 1, LOCALE_USER_DEFAULT, &id);
  if (status == DISP_E_UNKNOWNNAME || status == DISP_E_MEMBERNOTFOUND) return nullptr;
  if (FAILED(status)) Throw(engine, status);
  return KeepMember(engine, KeepName(engine, {bytes, size}), id);
}

Member* MemberCall::KeepMember(duk_context* engine, const void* name, DISPID id) {
  Member member;
  member.id = id;
  member.use = Context(engine).call_sites.UseOf(name);
  // Found again: GetIDsOfNames may have run a script.
  ObjectSlot* slot = Context(engine).objects.Find(number_, SlotKind::kDispatch);
  if (slot == nullptr) ThrowStatus(engine, kDisconnected);
  if (slot->described != nullptr &&
      IsDescribed(slot->described->info.Get(), id, &member.is_method)) {
    member.described = slot->described;
  }
  MemberTable& table = member.described != nullptr ? member.described->members : slot->own;
  return &(table[name] = member);
}

void MemberCall::ClearArguments() {
  loan_.End();
  arguments_.Clear();
}

void MemberCall::TakeArguments(duk_context* engine, duk_idx_t first, duk_idx_t count) {
  ClearArguments();
  if (TakePlainArguments(engine, first, count)) return;
  arguments_.Resize(static_cast<size_t>(count));
  VARIANT* argument = arguments_.Values() + count;
  for (duk_idx_t i = first; i < first + count; ++i) {
    const HRESULT status = VariantFromScript(engine, i, --argument);
    if (FAILED(status)) ThrowStatus(engine, status);
  }
}

bool MemberCall::TakePlainArguments(duk_context* engine, duk_idx_t first,
                                    duk_idx_t count) noexcept {
  if (HasScriptError(Context(engine))) return false;
  // So that no text before another value is converted in vain.
  int others = 0;
  for (duk_idx_t i = first; count > 1 && i < first + count; ++i) {
    if (IsPlain(engine, i)) continue;
    if (++others > 1 || (KnownObject(engine, i) == nullptr && !CanBeLent(engine, i))) return false;
  }
  try {
    arguments_.Resize(static_cast<size_t>(count));
  } catch (const std::bad_alloc&) {
    return false;
  }
  VARIANT* argument = arguments_.Values() + count;
  for (duk_idx_t i = first; i < first + count; ++i) {
    HRESULT status = PlainFromScript(engine, i, --argument);
    if (status == S_FALSE) status = TakeOther(engine, i, argument);
    if (status != S_OK) {
      ClearArguments();
      return false;
    }
  }
  return true;
}

// The automation object at `index`, null if there is none.
const ObjectSlot* MemberCall::KnownObject(duk_context* engine, duk_idx_t index) noexcept {
  const SlotNumber number = SlotOfBlock(duk_get_heapptr(engine, index));
  return Context(engine).objects.Find(number, SlotKind::kDispatch);
}

HRESULT MemberCall::TakeOther(duk_context* engine, duk_idx_t index, VARIANT* argument) noexcept {
  const ObjectSlot* const slot = KnownObject(engine, index);
  if (slot != nullptr) return VariantCopy(argument, &slot->value);
  return CanBeLent(engine, index) ? Lend(engine, index, argument) : S_FALSE;
}

HRESULT MemberCall::Lend(duk_context* engine, duk_idx_t index, VARIANT* argument) noexcept {
  const uint8_t* bytes = nullptr;
  size_t size = 0;
  BytesAt(engine, index, &bytes, &size);
  const bool is_lent = loan_.Begin(&Context(engine).spare_array, bytes, size, argument);
  return is_lent ? S_OK : E_OUTOFMEMORY;
}

HRESULT MemberCall::InvokeWith(duk_context* engine, DISPID id, WORD flags, DISPID* named) {
  ScriptContext& context = Context(engine);
  if (context.calls_running >= kMostCalls) return kOutOfStack;
  DISPPARAMS params = {};
  params.rgvarg = arguments_.Values();
  params.cArgs = static_cast<UINT>(arguments_.Count());
  params.rgdispidNamedArgs = named;
  params.cNamedArgs = named != nullptr ? 1 : 0;
  ClearBeforeEnd(result_);
  result_.vt = VT_EMPTY;
  ClearException();
  // Error information of an earlier call must not describe this one.
  SetErrorInfo(0, nullptr);
  if (HasScriptError(context)) ForgetScriptError(engine);
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

HRESULT MemberCall::InvokePut(duk_context* engine, DISPID id) {
  DISPID named = DISPID_PROPERTYPUT;
  const VARTYPE type = arguments_.Values()->vt;
  if (type == VT_DISPATCH || type == VT_UNKNOWN) {
    const HRESULT status = InvokeWith(engine, id, DISPATCH_PROPERTYPUTREF, &named);
    if (status != DISP_E_MEMBERNOTFOUND) return status;
  }
  return InvokeWith(engine, id, DISPATCH_PROPERTYPUT, &named);
}

void MemberCall::Put(duk_context* engine, DISPID id) {
  const HRESULT status = InvokePut(engine, id);
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
