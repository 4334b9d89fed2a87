// A late-bound call of a member of an automation object.
#pragma once

#include "engine/engine_api.h"
#include "engine/script_context.h"
#include "objects/object_table.h"
#include "values/argument_list.h"
#include "values/byte_loan.h"
#include "values/scoped_variant.h"
#include "values/text_encoding.h"
#include "values/value_marshal.h"

namespace mirolta::host {

// Owns the arguments, the result and the error information of a call. Belongs into a
// function object (protected_call.h).
class MemberCall {
 public:
  MemberCall() = default;
  // For a caller that has the engine's context already.
  explicit MemberCall(ScriptContext* context) : context_(context) {}
  MemberCall(const MemberCall&) = delete;
  MemberCall& operator=(const MemberCall&) = delete;
  ~MemberCall();

  // Context is ContextOf, which asks the engine once for each call.
  ScriptContext& Context(duk_context* engine) {
    if (context_ == nullptr) context_ = &ContextOf(engine);
    return *context_;
  }
  // Bind selects the automation object behind the script object at `index`.
  // Errors: throws kNoSuchMember if there is none, kDisconnected if its slot was freed.
  void Bind(duk_context* engine, duk_idx_t index);
  // The same for the object of a slot.
  void Bind(const ObjectSlot& slot) {
    number_ = slot.number;
    object_.Assign(slot.value.pdispVal);
  }
  // FindMember looks up the string at `name`; null if the object has no such member. The member is
  // valid until the object's slot is freed.
  // Errors: throws the object's status for other failures.
  Member* FindMember(duk_context* engine, duk_idx_t name);
  // TakeArguments converts `count` values from `first` on.
  // Errors: throws the status of a value that cannot be converted.
  void TakeArguments(duk_context* engine, duk_idx_t first, duk_idx_t count);
  // The same for plain values and either one automation object or one byte
  // array, which is lent; never throws. Returns false if it took none: there is another value, memory
  // ran out, or the call would have to forget a script error.
  bool TakePlainArguments(duk_context* engine, duk_idx_t first, duk_idx_t count) noexcept;

  // Call calls the member and pushes its result; returns 1, the number of values pushed.
  // Errors: throws the member's.
  duk_ret_t Call(duk_context* engine, DISPID id, WORD flags);
  // Put assigns the last argument: by reference first if it is an object, then by value.
  // Errors: throws the member's.
  void Put(duk_context* engine, DISPID id);
  // Invoke calls the member and returns its status; the result stays here until PushResult.
  HRESULT Invoke(duk_context* engine, DISPID id, WORD flags);
  HRESULT InvokePut(duk_context* engine, DISPID id);
  void PushResult(duk_context* engine);
  // PushOrLeave pushes a result that is a number, boolean, null or undefined, or moves one that is text,
  // bytes or an automation object to *left (PushLeft), and never throws; false for others.
  bool PushOrLeave(duk_context* engine, VARIANT* left) noexcept {
    return PushIfPlain(engine, result_) || LeaveIfCommon(&result_, left);
  }
  // Throw throws the error of a call that failed with `status`: the value that a script object
  // threw during the call, or an Error with the text of the call's error information.
  [[noreturn]] void Throw(duk_context* engine, HRESULT status);

 private:
  ObjectSlot* LookUpSlot(duk_context* engine);
  Member* KeepMember(duk_context* engine, const void* name, DISPID id);
  HRESULT InvokeWith(duk_context* engine, DISPID id, WORD flags, DISPID* named);
  const ObjectSlot* KnownObject(duk_context* engine, duk_idx_t index) noexcept;
  HRESULT TakeOther(duk_context* engine, duk_idx_t index, VARIANT* argument) noexcept;
  HRESULT Lend(duk_context* engine, duk_idx_t index, VARIANT* argument) noexcept;
  void ClearArguments();
  void ClearException();

  SlotNumber number_ = kNoSlot;
  OwnedReference<IDispatch> object_;
  OwnedReference<ITypeInfo> type_info_;
  ScriptContext* context_ = nullptr;  // set by Context
  ArgumentList arguments_;            // last first, as DISPPARAMS has them
  ByteLoan loan_;                     // of one of the arguments
  ScopedVariant result_;
  EXCEPINFO exception_{};
  Units name_;
};

}  // namespace mirolta::host
