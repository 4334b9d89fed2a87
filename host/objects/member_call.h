// One late-bound call of an automation object's member: arguments out, result or error back.
#pragma once

#include <vector>

#include "engine/engine_api.h"
#include "objects/object_table.h"
#include "values/scoped_values.h"
#include "values/text_encoding.h"

namespace mirolta::host {

// Holds what a call needs and gives it back at its end. A member of a frame (protected_call.h).
class MemberCall {
 public:
  MemberCall() = default;
  MemberCall(const MemberCall&) = delete;
  MemberCall& operator=(const MemberCall&) = delete;
  ~MemberCall();

  // Bind chooses the automation object that the script object at `index` stands for.
  void Bind(duk_context* engine, duk_idx_t index);
  // AskId looks `name` (in the engine's form) up; false if the object has no such member.
  bool AskId(duk_context* engine, duk_idx_t name, DISPID* id);
  // Takes the `count` values from `first` on as arguments.
  void TakeArguments(duk_context* engine, duk_idx_t first, duk_idx_t count);

  // Call calls the member and pushes its result; returns 1, the number of values pushed.
  // Errors: throws the member's.
  duk_ret_t Call(duk_context* engine, DISPID id, WORD flags);
  // Put assigns the last argument taken: by reference first if it is an object, then by value.
  // Errors: throws the member's.
  void Put(duk_context* engine, DISPID id);
  // Invoke calls the member and returns its status; the result stays here until PushResult.
  HRESULT Invoke(duk_context* engine, DISPID id, WORD flags);
  void PushResult(duk_context* engine);
  // Throw throws the error of a call that failed with `status`.
  [[noreturn]] void Throw(duk_context* engine, HRESULT status);

 private:
  HRESULT PutWith(duk_context* engine, DISPID id);
  HRESULT InvokeWith(duk_context* engine, DISPID id, WORD flags, DISPID* named);
  void ClearException();

  SlotNumber number_ = kNoSlot;
  Reference<IDispatch> object_;
  std::vector<VARIANT> arguments_;  // reversed
  ScopedVariant result_;
  EXCEPINFO exception_{};
  Units name_;
};

}  // namespace mirolta::host
