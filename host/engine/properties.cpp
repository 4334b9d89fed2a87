#include "engine/properties.h"

namespace mirolta::host {

bool PushOwn(duk_context* engine, duk_idx_t index, const char* key) {
  if (!duk_is_object(engine, index)) return false;
  index = duk_normalize_index(engine, index);
  // Checked first, since few objects have it and the descriptor below is allocated.
  if (!duk_has_prop_string(engine, index, key)) return false;
  duk_push_string(engine, key);
  duk_get_prop_desc(engine, index, 0);
  const bool found = duk_is_object(engine, -1);
  if (found) {
    duk_get_prop_string(engine, -1, "value");
    duk_remove(engine, -2);
  } else {
    duk_pop(engine);
  }
  return found;
}

void DefineHidden(duk_context* engine, const char* name) {
  duk_push_string(engine, name);
  duk_insert(engine, -2);
  duk_def_prop(engine, -3,
               DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_SET_WRITABLE | DUK_DEFPROP_SET_CONFIGURABLE |
                   DUK_DEFPROP_CLEAR_ENUMERABLE | DUK_DEFPROP_FORCE);
}

void DefineAccessor(duk_context* engine, const char* name, duk_c_function get, duk_c_function set,
                    duk_uint_t attributes) {
  duk_push_string(engine, name);
  duk_push_c_function(engine, get, 0);
  duk_push_c_function(engine, set, 1);
  duk_def_prop(engine, -4, DUK_DEFPROP_HAVE_GETTER | DUK_DEFPROP_HAVE_SETTER | attributes);
}

}  // namespace mirolta::host
