#include "engine/script_context.h"

namespace mirolta::host {

ScriptContext& ContextOf(duk_context* engine) {
  duk_memory_functions functions;
  duk_get_memory_functions(engine, &functions);
  return *static_cast<ScriptContext*>(functions.udata);
}

void KeepValue(duk_context* engine, const char* name) {
  duk_push_heap_stash(engine);
  duk_insert(engine, -2);
  duk_put_prop_string(engine, -2, name);
  duk_pop(engine);
}

void PushKept(duk_context* engine, const char* name) {
  duk_push_heap_stash(engine);
  duk_get_prop_string(engine, -1, name);
  duk_remove(engine, -2);
}

}  // namespace mirolta::host
