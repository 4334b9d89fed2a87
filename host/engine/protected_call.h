// Native functions of the script engine. The engine reports errors by longjmp, which runs no
// destructors: a native function keeps what must be freed in a function object outside a protected
// call and works inside the call. Exceptions must not reach the engine: std::bad_alloc becomes a
// script error.
#pragma once

#include <new>
#include <stdexcept>

#include "engine/engine_api.h"
#include "engine/host_errors.h"
#include "engine/interruption.h"
#include "engine/script_context.h"
#include "values/value_marshal.h"

namespace mirolta::host {

// ThrowIfExhausted runs `work` for a function that the engine calls.
// Errors: std::bad_alloc and std::length_error become a script error with E_OUTOFMEMORY.
template <typename Work>
duk_ret_t ThrowIfExhausted(duk_context* engine, Work work) {
  bool exhausted = false;
  duk_ret_t results = 0;
  try {
    results = work();
  } catch (const std::bad_alloc&) {
    exhausted = true;
  } catch (const std::length_error&) {
    exhausted = true;
  }
  // Outside the handlers: longjmp out of one would not release the exception.
  if (exhausted) ThrowStatus(engine, E_OUTOFMEMORY);
  return results;
}

// RunProtected is a native function that calls Function::Run(duk_context*). Run finds the arguments
// on the stack and returns 1 with its result on top, or 0 for undefined. Every call into the engine
// may leave Run by longjmp: what Run must free is a member of Function, and its locals have trivial
// destructors. RunProtectedIn is the same for a caller that has the engine's context already; Function is
// initialized from `arguments`.
//
// Function may have bool RunUnprotected(duk_context*, VARIANT* left) noexcept, which runs first, without
// the cost of a protected call, and makes no call into the engine that may throw. It returns true with
// its result on top or in *left (value_marshal.h), or false for Run to do the rest.
// What scripts dropped before is released first (ObjectTable::Drop).
// Errors: E_ABORT if the script is to be interrupted (interruption.h).
template <typename Function, typename... Arguments>
duk_ret_t RunProtectedIn(ScriptContext& context, duk_context* engine,
                         const Arguments&... arguments) {
  struct Local {
    static duk_ret_t Enter(duk_context* inner, void* function) {
      return ThrowIfExhausted(inner, [&] { return static_cast<Function*>(function)->Run(inner); });
    }
  };
  if (IsInterrupted()) ThrowStatus(engine, E_ABORT);
  context.objects.ReleaseDropped();
  duk_int_t status = DUK_EXEC_SUCCESS;
  VARIANT left = {};
  {
    Function function{arguments...};
    bool is_done = false;
    if constexpr (requires { function.RunUnprotected(engine, &left); }) {
      is_done = function.RunUnprotected(engine, &left);
    }
    if (!is_done) status = duk_safe_call(engine, &Local::Enter, &function, 0, 1);
  }
  // Nothing is left on this stack that would have to be freed.
  if (left.vt != VT_EMPTY) PushLeft(engine, left);
  if (status != DUK_EXEC_SUCCESS) return duk_throw(engine);
  return 1;
}

template <typename Function>
duk_ret_t RunProtected(duk_context* engine) {
  return RunProtectedIn<Function>(ContextOf(engine), engine);
}

}  // namespace mirolta::host
