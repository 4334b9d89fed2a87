#include "engine/host_errors.h"

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

#include <string_view>

#include "engine/error_class.h"
#include "engine/properties.h"
#include "engine/script_context.h"
#include "engine/status_text.h"
#include "values/value_marshal.h"

namespace mirolta::host {
namespace {

constexpr char kThrown[] = "thrown";
// The name of what the engine throws when there is no memory for an error. Its text says nothing.
constexpr char kDoubleError[] = "DoubleError";

// Throws an Error with the description on top of the stack.
[[noreturn]] void ThrowDescribed(duk_context* engine, HRESULT status, UnitsView source) {
  // By the script constructor, so that the error has the script's line and not this file's.
  PushKept(engine, "Error");
  duk_new(engine, 0);
  duk_dup(engine, -2);
  DefineHidden(engine, "message");
  duk_dup(engine, -2);
  DefineHidden(engine, "description");
  duk_push_int(engine, status);
  DefineHidden(engine, "number");
  PushUnits(engine, source);
  DefineHidden(engine, "source");
  (void)duk_throw(engine);
  __builtin_unreachable();
}

// Records the line and the calls where a value that is not an Error is thrown. A native function
// passes on what was thrown before.
duk_ret_t RecordThrow(duk_context* engine) {
  constexpr duk_int_t kThrower = -2;
  if (!duk_is_error(engine, 0)) {
    duk_inspect_callstack_entry(engine, kThrower);
    int line = 0;
    if (duk_is_object(engine, -1)) {
      duk_get_prop_string(engine, -1, "lineNumber");
      line = duk_get_int(engine, -1);
    }
    if (line > 0) {
      ContextOf(engine).last_thrown_line = line;
      duk_push_error_object(engine, DUK_ERR_ERROR, "%s", "");
      KeepValue(engine, kThrown);
    }
  }
  duk_dup(engine, 0);
  return 1;
}

// The text of a value that ReadError left.
std::string TextAt(duk_context* engine, duk_idx_t index) {
  duk_size_t size = 0;
  const char* text = duk_get_lstring(engine, index, &size);
  return text == nullptr ? std::string() : SystemFromUnits(UnitsFromEngine({text, size}));
}

// What ReadError leaves on the stack, one a place.
enum ErrorField : duk_idx_t {
  kNumberField,       // undefined if it is not an error
  kDescriptionField,  // texts, or undefined
  kSourceField,
  kNameField,
  kFileField,
  kLineField,
  kFieldCount,
};
constexpr const char* kFieldNames[kFieldCount] = {"number", "description", "source",
                                                  "name",   "fileName",    "lineNumber"};

// Takes the value thrown.
duk_ret_t ReadError(duk_context* engine, void*) {
  const duk_idx_t error = duk_get_top_index(engine);
  const bool is_error = duk_is_error(engine, error) != 0;
  for (duk_idx_t i = 0; i < kFieldCount; ++i) {
    if (is_error) {
      duk_get_prop_string(engine, error, kFieldNames[i]);
    } else if (i == kDescriptionField) {
      duk_dup(engine, error);
      duk_safe_to_string(engine, -1);
    } else {
      duk_push_undefined(engine);
    }
  }
  if (!is_error) return kFieldCount;
  const duk_idx_t first = duk_get_top(engine) - kFieldCount;
  duk_push_int(engine, duk_is_number(engine, first) ? duk_to_int32(engine, first) : 0);
  duk_replace(engine, first);
  if (!duk_is_undefined(engine, first + kDescriptionField)) {
    duk_safe_to_string(engine, first + kDescriptionField);
  }
  duk_safe_to_string(engine, first + kNameField);
  return kFieldCount;
}

// Restores the height of the engine's stack at the end of its scope.
class StackHeight {
 public:
  explicit StackHeight(duk_context* engine) : engine_(engine), top_(duk_get_top(engine)) {}
  StackHeight(const StackHeight&) = delete;
  StackHeight& operator=(const StackHeight&) = delete;
  ~StackHeight() { duk_set_top(engine_, top_); }

 private:
  duk_context* engine_;
  duk_idx_t top_;
};

}  // namespace

void ThrowStatus(duk_context* engine, HRESULT status, UnitsView description, UnitsView source) {
  const char* standard = StandardText(status, nullptr);
  if (!description.empty()) {
    PushUnits(engine, description);
  } else if (standard != nullptr) {
    duk_push_string(engine, standard);
  } else {
    duk_push_sprintf(engine, "Automation error 0x%08X", static_cast<unsigned>(status));
  }
  ThrowDescribed(engine, status, source);
}

void ThrowText(duk_context* engine, HRESULT status, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  duk_push_vsprintf(engine, format, arguments);
  va_end(arguments);
  ThrowDescribed(engine, status, {});
}

void InstallErrors(duk_context* engine) {
  InstallErrorClasses(engine);
  duk_get_global_string(engine, "Duktape");
  duk_push_c_function(engine, RecordThrow, 1);
  duk_put_prop_string(engine, -2, "errThrow");
  duk_pop(engine);
}

void PushCalls(duk_context* engine) {
  if (duk_is_error(engine, -1)) {
    duk_get_prop_string(engine, -1, "stack");
    return;
  }
  PushKept(engine, kThrown);
  if (!duk_is_object(engine, -1)) return;
  duk_get_prop_string(engine, -1, "stack");
  duk_remove(engine, -2);
}

ErrorReport DescribeError(duk_context* engine) {
  ErrorReport report;
  const ScriptContext& context = ContextOf(engine);
  report.file = context.script_path;
  report.line = duk_is_error(engine, -1) ? 0 : context.last_thrown_line;
  report.number = kThrownValue;
  report.description = "The thrown value cannot be converted to text";
  // For the copy, the fields and an error.
  if (!duk_check_stack(engine, kFieldCount + 2)) return report;
  const StackHeight height(engine);
  duk_dup_top(engine);
  const duk_idx_t first = duk_get_top_index(engine);
  if (duk_safe_call(engine, ReadError, nullptr, 1, kFieldCount) != DUK_EXEC_SUCCESS) return report;
  report.description = TextAt(engine, first + kDescriptionField);
  if (!duk_is_number(engine, first + kNumberField)) {
    report.description = "Exception thrown and not caught: " + report.description;
    return report;
  }
  report.number = duk_get_int(engine, first + kNumberField);
  report.source = TextAt(engine, first + kSourceField);
  const std::string name = TextAt(engine, first + kNameField);
  if (name == kDoubleError) {
    report.description = StandardText(E_OUTOFMEMORY, "");
  } else if (name != "Error") {
    report.description = name + ": " + report.description;
  }
  if (duk_is_string(engine, first + kFileField)) report.file = TextAt(engine, first + kFileField);
  report.line = duk_get_int(engine, first + kLineField);
  return report;
}

}  // namespace mirolta::host
