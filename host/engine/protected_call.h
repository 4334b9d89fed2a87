// Native functions of the script engine. The engine reports errors with longjmp, which runs no
// destructors; a native function therefore keeps everything that must be freed in a frame object
// outside a protected call and does its work inside. Exceptions, on the other hand, must not reach
// the engine: missing memory becomes a script error.
#pragma once

#include <new>
#include <stdexcept>

#include "engine/engine_api.h"
#include "engine/host_errors.h"

namespace mirolta::host {

// ThrowIfExhausted does the work of a function that the engine calls; an exception for want of
// memory becomes a script error with E_OUTOFMEMORY.
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
  // Not from within the handlers: longjmp would not end them.
  if (exhausted) ThrowStatus(engine, E_OUTOFMEMORY);
  return results;
}

// RunProtected is a native function built from Frame: Frame::Run(duk_context*) works with the
// function's arguments and `this` and returns 1 with its result on top, or 0 for undefined. Run may
// be left by an engine error at any call into the engine: whatever it must free is a member of
// Frame, and its local objects have trivial destructors.
template <typename Frame>
duk_ret_t RunProtected(duk_context* engine) {
  struct Local {
    static duk_ret_t Enter(duk_context* inner, void* frame) {
      return ThrowIfExhausted(inner, [&] { return static_cast<Frame*>(frame)->Run(inner); });
    }
  };
  duk_int_t status = DUK_EXEC_SUCCESS;
  {
    Frame frame;
    status = duk_safe_call(engine, &Local::Enter, &frame, 0, 1);
  }
  if (status != DUK_EXEC_SUCCESS) return duk_throw(engine);
  return 1;
}

}  // namespace mirolta::host
