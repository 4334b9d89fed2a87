#include "engine/script_context.h"

namespace mirolta::host {
namespace {

constexpr char kNames[] = "names";

}  // namespace

ScriptContext& ContextOf(duk_context* engine) {
  duk_memory_functions functions;
  duk_get_memory_functions(engine, &functions);
  return *static_cast<ScriptContext*>(functions.udata);
}

void* KeepValue(duk_context* engine, const char* name) {
  void* const address = duk_get_heapptr(engine, -1);
  duk_push_heap_stash(engine);
  duk_insert(engine, -2);
  duk_put_prop_string(engine, -2, name);
  duk_pop(engine);
  return address;
}

void PushKept(duk_context* engine, const char* name) {
  duk_push_heap_stash(engine);
  duk_get_prop_string(engine, -1, name);
  duk_remove(engine, -2);
}

void* KeepName(duk_context* engine, std::string_view name) {
  PushKept(engine, kNames);
  duk_push_lstring(engine, name.data(), name.size());
  void* address = duk_get_heapptr(engine, -1);
  duk_push_true(engine);
  duk_put_prop(engine, -3);
  duk_pop(engine);
  return address;
}

void InstallNames(duk_context* engine) {
  duk_push_bare_object(engine);
  KeepValue(engine, kNames);
}

}  // namespace mirolta::host
