#include "engine/hidden_property.h"

namespace mirolta::host {

bool PushOwn(duk_context* engine, duk_idx_t index, const char* key) {
  if (!duk_is_object(engine, index)) return false;
  index = duk_normalize_index(engine, index);
  // Few have it: the description that is looked at next is an object.
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

}  // namespace mirolta::host
