#include "engine/error_class.h"

#include <string_view>

#include "engine/host_errors.h"
#include "engine/properties.h"
#include "engine/script_context.h"

namespace mirolta::host {
namespace {

constexpr duk_uint_t kInheritedAccessor =
    DUK_DEFPROP_SET_CONFIGURABLE | DUK_DEFPROP_CLEAR_ENUMERABLE;

constexpr const char* kClasses[] = {"Error",       "EvalError", "RangeError", "ReferenceError",
                                    "SyntaxError", "TypeError", "URIError"};

// The platform's numbers for errors of the engine, by a part of the message; the first row holds.
// An empty part is in all messages.
struct NumberRow {
  std::string_view name;
  std::string_view part;
  HRESULT number;
};
constexpr NumberRow kEngineErrors[] = {
    {"TypeError", "undefined not callable (property", kNoSuchMember},
    {"TypeError", "not callable", kFunctionExpected},
    {"TypeError", "not constructable", kFunctionExpected},
    {"TypeError", "number expected", kNumberExpected},
    {"TypeError", "expected Date", kDateExpected},
    {"TypeError", "", kObjectExpected},
    {"ReferenceError", "", kUndefinedIdentifier},
    {"RangeError", "invalid array length", kBadArrayLength},
    {"RangeError", "invalid length", kBadArrayLength},
    {"RangeError", "stack", kOutOfStack},
    {"RangeError", "recursion limit", kOutOfStack},
    {"RangeError", "", kInvalidCall},
    {"SyntaxError", "unterminated regexp", kSyntaxError},
    {"SyntaxError", "regexp", kRegExpSyntaxError},
    {"SyntaxError", "quantifier", kRegExpSyntaxError},
    {"SyntaxError", "character class", kRegExpSyntaxError},
    {"SyntaxError", "backreference", kRegExpSyntaxError},
    {"SyntaxError", "closing parenthesis", kRegExpSyntaxError},
    {"SyntaxError", "end of pattern", kRegExpSyntaxError},
    {"SyntaxError", "invalid range", kRegExpSyntaxError},
    {"SyntaxError", "", kSyntaxError},
    {"URIError", "", MIROLTA_STATUS(0x800A13A1u)},
    {"DoubleError", "", E_OUTOFMEMORY},  // thrown when there is no memory for an error
    {"Error", "alloc failed", E_OUTOFMEMORY},
};

// Pushes the property of the object on top of the stack; "" if it is no string.
std::string_view PushTextOf(duk_context* engine, const char* name) {
  duk_get_prop_string(engine, -1, name);
  duk_size_t size = 0;
  const char* text = duk_get_lstring_default(engine, -1, &size, "", 0);
  return {text, size};
}

// Error.prototype.number, for errors without a number of their own.
duk_ret_t GetNumber(duk_context* engine) {
  duk_push_this(engine);
  const std::string_view message = PushTextOf(engine, "message");
  duk_dup(engine, -2);
  const std::string_view name = PushTextOf(engine, "name");
  HRESULT number = 0;
  for (const NumberRow& row : kEngineErrors) {
    if (name != row.name || message.find(row.part) == std::string_view::npos) continue;
    number = row.number;
    break;
  }
  duk_push_int(engine, number);
  return 1;
}

duk_ret_t GetDescription(duk_context* engine) {
  duk_push_this(engine);
  duk_get_prop_string(engine, -1, "message");
  return 1;
}

duk_ret_t SetOwn(duk_context* engine, const char* name) {
  duk_push_this(engine);
  duk_dup(engine, 0);
  DefineHidden(engine, name);
  return 0;
}

// Whether the first argument of a constructor is the number: a value of the types that convert to
// a number, and a text that is one.
bool IsNumberArgument(duk_context* engine) {
  if (duk_is_boolean(engine, 0) || duk_is_null(engine, 0)) return true;
  if (!duk_is_number(engine, 0) && !duk_is_string(engine, 0)) return false;
  if (duk_is_symbol(engine, 0)) return false;
  duk_dup(engine, 0);
  const double number = duk_to_number(engine, -1);
  duk_pop(engine);
  return number == number;
}

// new Error([number,] [description]); the function's magic is the class's place in kClasses.
duk_ret_t ConstructError(duk_context* engine) {
  const bool has_number = IsNumberArgument(engine);
  const duk_idx_t text = has_number ? 1 : 0;
  if (duk_is_undefined(engine, text)) {
    duk_push_string(engine, "");
    duk_replace(engine, text);
  }
  duk_to_string(engine, text);
  PushKept(engine, kClasses[duk_get_current_magic(engine)]);
  duk_dup(engine, text);
  duk_new(engine, 1);
  duk_dup(engine, text);
  DefineHidden(engine, "description");
  duk_push_int(engine, has_number ? duk_to_int32(engine, 0) : 0);
  DefineHidden(engine, "number");
  return 1;
}

// Replaces the global constructor; the engine's own is kept.
void ReplaceConstructor(duk_context* engine, duk_int_t place) {
  const char* name = kClasses[place];
  duk_get_global_string(engine, name);
  duk_dup_top(engine);
  KeepValue(engine, name);
  duk_push_c_function(engine, ConstructError, 2);
  duk_set_magic(engine, -1, place);
  duk_push_string(engine, "name");
  duk_push_string(engine, name);
  duk_def_prop(engine, -3, DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_FORCE);
  duk_push_string(engine, "prototype");
  duk_get_prop_string(engine, -3, "prototype");
  duk_def_prop(engine, -3, DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_FORCE);
  duk_get_prop_string(engine, -1, "prototype");
  duk_dup(engine, -2);
  DefineHidden(engine, "constructor");
  duk_pop(engine);
  duk_put_global_string(engine, name);
  duk_pop(engine);
}

}  // namespace

void InstallErrorClasses(duk_context* engine) {
  constexpr auto kCount = static_cast<duk_int_t>(sizeof kClasses / sizeof *kClasses);
  for (duk_int_t place = 0; place < kCount; ++place) ReplaceConstructor(engine, place);
  duk_get_global_string(engine, "Error");
  duk_get_prop_string(engine, -1, "prototype");
  DefineAccessor(
      engine, "number", GetNumber, [](duk_context* inner) { return SetOwn(inner, "number"); },
      kInheritedAccessor);
  DefineAccessor(
      engine, "description", GetDescription,
      [](duk_context* inner) { return SetOwn(inner, "description"); }, kInheritedAccessor);
  duk_pop_2(engine);
}

}  // namespace mirolta::host
