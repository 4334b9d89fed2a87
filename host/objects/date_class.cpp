#include "objects/date_class.h"

#include <string_view>

#include "engine/properties.h"
#include "engine/script_context.h"
#include "values/date_text.h"

namespace mirolta::host {
namespace {

constexpr char kParse[] = "Date.parse";

// Whether the engine reads the text: ISO 8601 starts with a year of four digits, alone or before a
// hyphen, or with a signed year, which ParseDateText refuses.
bool IsForEngine(std::string_view text) {
  constexpr size_t kYearDigits = 4;
  size_t digits = 0;
  while (digits < text.size() && text[digits] >= '0' && text[digits] <= '9') ++digits;
  return digits == kYearDigits && (text.size() == digits || text[digits] == '-');
}

// Replaces the string on top of the stack by its milliseconds, NaN if it is no date.
void ParseTop(duk_context* engine) {
  duk_size_t size = 0;
  const char* bytes = duk_get_lstring(engine, -1, &size);
  const std::string_view text(bytes, size);
  double milliseconds = 0;
  if (!IsForEngine(text) && ParseDateText(text, &milliseconds)) {
    duk_push_number(engine, milliseconds);
    duk_replace(engine, -2);
    return;
  }
  PushKept(engine, kParse);
  duk_insert(engine, -2);
  duk_call(engine, 1);
}

duk_ret_t Parse(duk_context* engine) {
  duk_to_string(engine, 0);
  ParseTop(engine);
  return 1;
}

// new Date(...), and Date() for the text of the time.
duk_ret_t ConstructDate(duk_context* engine) {
  const duk_idx_t count = duk_get_top(engine);
  if (!duk_is_constructor_call(engine)) {
    PushKept(engine, "Date");
    duk_call(engine, 0);
    return 1;
  }
  if (count == 1 && duk_is_string(engine, 0) && !duk_is_symbol(engine, 0)) ParseTop(engine);
  PushKept(engine, "Date");
  duk_insert(engine, 0);
  duk_new(engine, count);
  return 1;
}

}  // namespace

void InstallDateClass(duk_context* engine) {
  PushKept(engine, "Date");
  duk_get_prop_string(engine, -1, "parse");
  KeepValue(engine, kParse);

  constexpr int kMostParts = 7;
  duk_push_c_function(engine, ConstructDate, DUK_VARARGS);
  for (const char* name : {"UTC", "now"}) {
    duk_get_prop_string(engine, -2, name);
    DefineHidden(engine, name);
  }
  duk_push_c_function(engine, Parse, 1);
  DefineHidden(engine, "parse");
  duk_push_string(engine, "length");
  duk_push_int(engine, kMostParts);
  duk_def_prop(engine, -3, DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_FORCE);
  duk_push_string(engine, "name");
  duk_push_string(engine, "Date");
  duk_def_prop(engine, -3, DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_FORCE);
  duk_push_string(engine, "prototype");
  duk_get_prop_string(engine, -3, "prototype");
  duk_def_prop(engine, -3, DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_FORCE);

  duk_get_prop_string(engine, -2, "prototype");
  duk_dup(engine, -2);
  DefineHidden(engine, "constructor");
  duk_pop(engine);
  duk_put_global_string(engine, "Date");
  duk_pop(engine);
}

}  // namespace mirolta::host
