#include "objects/letter_case.h"

#include "engine/properties.h"
#include "engine/script_context.h"

namespace mirolta::host {
namespace {

constexpr duk_size_t kLongest = 256;

struct CaseFunction {
  const char* name;
  char first, last;  // of the letters that change
};
constexpr CaseFunction kFunctions[] = {{"toLowerCase", 'A', 'Z'}, {"toUpperCase", 'a', 'z'}};

// Converts ASCII text; false for other text.
bool ChangeAscii(const char* text, duk_size_t size, const CaseFunction& function, char* changed) {
  unsigned all = 0;
  for (duk_size_t i = 0; i < size; ++i) {
    const char c = text[i];
    all |= static_cast<unsigned char>(c);
    const bool changes = c >= function.first && c <= function.last;
    changed[i] = static_cast<char>(changes ? c ^ 0x20 : c);
  }
  return all < 0x80;
}

// The engine's own function converts what is no short text of ASCII.
duk_ret_t ChangeCase(duk_context* engine) {
  const CaseFunction& function = kFunctions[duk_get_current_magic(engine)];
  duk_push_this(engine);
  duk_size_t size = 0;
  const char* const text = duk_get_lstring(engine, -1, &size);
  char changed[kLongest];
  if (text != nullptr && size <= kLongest && ChangeAscii(text, size, function, changed)) {
    duk_push_lstring(engine, changed, size);
    return 1;
  }
  PushKept(engine, function.name);
  duk_insert(engine, -2);
  duk_call_method(engine, 0);
  return 1;
}

}  // namespace

void InstallLetterCase(duk_context* engine) {
  duk_get_global_string(engine, "String");
  duk_get_prop_string(engine, -1, "prototype");
  duk_int_t number = 0;
  for (const CaseFunction& function : kFunctions) {
    duk_get_prop_string(engine, -1, function.name);
    KeepValue(engine, function.name);
    duk_push_c_function(engine, ChangeCase, 0);
    duk_set_magic(engine, -1, number++);
    duk_push_string(engine, "name");
    duk_push_string(engine, function.name);
    duk_def_prop(engine, -3, DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_FORCE);
    DefineHidden(engine, function.name);
  }
  duk_pop_2(engine);
}

}  // namespace mirolta::host
