#include "object_handle.h"

#include "script_context.h"

namespace mirolta {
namespace {

constexpr char kHandleKey[] = DUK_HIDDEN_SYMBOL("handle");

duk_ret_t Finalize(duk_context* engine) {
  uint32_t number = 0;
  if (HandleAt(engine, 0, &number)) {
    // First of all: a finalizer may run twice for an object that came back to life.
    duk_del_prop_string(engine, 0, kHandleKey);
    ContextOf(engine).objects.Remove(number);
  }
  return 0;
}

}  // namespace

void AttachHandle(duk_context* engine, duk_idx_t index, uint32_t number) {
  index = duk_normalize_index(engine, index);
  duk_push_uint(engine, number);
  duk_put_prop_string(engine, index, kHandleKey);
  duk_push_c_function(engine, Finalize, 2);
  duk_set_finalizer(engine, index);
}

bool HandleAt(duk_context* engine, duk_idx_t index, uint32_t* number) {
  if (!duk_is_object(engine, index)) return false;
  const bool found = duk_get_prop_string(engine, index, kHandleKey) && duk_is_number(engine, -1);
  if (found) *number = duk_get_uint(engine, -1);
  duk_pop(engine);
  return found;
}

ObjectSlot* SlotAt(duk_context* engine, duk_idx_t index, SlotKind kind) {
  uint32_t number = 0;
  if (!HandleAt(engine, index, &number)) return nullptr;
  return ContextOf(engine).objects.Find(number, kind);
}

}  // namespace mirolta
