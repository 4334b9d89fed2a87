#include "objects/wscript_object.h"

#include <stdio.h>
#include <stdlib.h>
#include <strings.h>
#include <time.h>
#include <unistd.h>

#include <cmath>
#include <string_view>

#include "classes/text_stream.h"
#include "engine/arguments.h"
#include "engine/host_errors.h"
#include "engine/interruption.h"
#include "engine/protected_call.h"
#include "engine/script_context.h"
#include "files/output_file.h"
#include "objects/active_x.h"
#include "objects/dispatch_object.h"
#include "objects/stream_object.h"
#include "objects/wscript_members.h"
#include "values/scoped_variant.h"
#include "values/value_marshal.h"

namespace mirolta::host {
namespace {

constexpr char kCaseHandler[] = "wscript.handler";

// Prints the arguments, separated by spaces. Numbers, booleans and undefined are coerced to text by
// the platform, as its own script host does: true prints as -1, numbers have 15 digits.
struct EchoFunction {
  std::string text;
  ScopedVariant value;

  void Append(duk_context* engine, duk_idx_t index) {
    const bool coerced = duk_is_number(engine, index) || duk_is_boolean(engine, index) ||
                         duk_is_undefined(engine, index);
    if (coerced && SUCCEEDED(VariantFromScript(engine, index, &value)) &&
        SUCCEEDED(VariantChangeType(&value, &value, 0, VT_BSTR))) {
      text += SystemFromUnits({V_BSTR(&value), SysStringLen(V_BSTR(&value))});
      return;
    }
    text += SystemFromUnits(UnitsFromEngine(TextArgument(engine, index)));
  }

  duk_ret_t Run(duk_context* engine) {
    const duk_idx_t count = duk_get_top(engine);
    for (duk_idx_t i = 0; i < count; ++i) {
      if (i > 0) text += ' ';
      VariantClear(&value);
      Append(engine, i);
    }
    text += '\n';
    if (ContextOf(engine).is_batch) return 0;
    if (fwrite(text.data(), 1, text.size(), stdout) != text.size()) {
      ThrowText(engine, STG_E_WRITEFAULT, "The output cannot be written");
    }
    return 0;
  }
};

// Ends the process; no finally block runs.
duk_ret_t Quit(duk_context* engine) {
  const int status = duk_is_undefined(engine, 0) ? 0 : duk_to_int32(engine, 0);
  ScriptContext& context = ContextOf(engine);
  context.objects.ReleaseDropped();
  // An object must not be released during its own call.
  if (context.calls_running == 0) context.objects.Clear();
  const bool succeeded = FlushOutput() && status == 0 && FinishOutputs();
  DiscardOutputs();
  _Exit(succeeded || status != 0 ? status : 1);
}

duk_ret_t Sleep(duk_context* engine) {
  const double most = std::nextafter(2147483648.0, 0.0);
  const double milliseconds = NumberWithin(engine, 0, 0, most, kInvalidCall);
  FlushOutput();
  ContextOf(engine).objects.ReleaseDropped();
  const auto whole = static_cast<int64_t>(milliseconds);
  timespec left = {};
  left.tv_sec = static_cast<time_t>(whole / 1000);
  left.tv_nsec = static_cast<long>(whole % 1000) * 1000000L;
  while (nanosleep(&left, &left) != 0) {
    if (IsInterrupted()) ThrowStatus(engine, E_ABORT);
  }
  return 0;
}

// WScript.EnvironmentVariable(name): its text, undefined if it is not set.
struct EnvironmentFunction {
  std::string name;
  Units text;
  duk_ret_t Run(duk_context* engine) {
    name = SystemFromUnits(UnitsFromEngine(TextArgument(engine, 0)));
    // No name has a zero character.
    const char* value = name.find('\0') == std::string::npos ? getenv(name.c_str()) : nullptr;
    if (value == nullptr) return 0;
    text = UnitsFromSystem(value);
    PushUnits(engine, text);
    return 1;
  }
};

// Replaces the name at `index` by that of the target's own property which differs from it in letter
// case only; false if there is none.
bool FindAnyCase(duk_context* engine, duk_idx_t target, duk_idx_t index) {
  const char* name = duk_get_string(engine, index);
  if (name == nullptr || duk_is_symbol(engine, index)) return false;
  duk_enum(engine, target, DUK_ENUM_OWN_PROPERTIES_ONLY | DUK_ENUM_INCLUDE_NONENUMERABLE);
  while (duk_next(engine, -1, 0)) {
    if (strcasecmp(name, duk_get_string(engine, -1)) == 0) {
      duk_replace(engine, index);
      return true;
    }
    duk_pop(engine);
  }
  return false;
}

// The proxy trap get(target, name), case-insensitive; an exact match comes first.
duk_ret_t GetAnyCase(duk_context* engine) {
  constexpr duk_idx_t kTarget = 0, kName = 1;
  duk_dup(engine, kName);
  if (duk_get_prop(engine, kTarget)) return 1;
  if (!FindAnyCase(engine, kTarget, kName)) return 0;
  duk_dup(engine, kName);
  duk_get_prop(engine, kTarget);
  return 1;
}

// The proxy trap set(target, name, value): only properties with a setter can be assigned to.
duk_ret_t SetAnyCase(duk_context* engine) {
  constexpr duk_idx_t kTarget = 0, kName = 1, kValue = 2;
  if (!FindAnyCase(engine, kTarget, kName)) ThrowStatus(engine, kNoSuchMember);
  duk_dup(engine, kName);
  duk_get_prop_desc(engine, kTarget, 0);
  duk_get_prop_string(engine, -1, "set");
  if (!duk_is_function(engine, -1)) ThrowStatus(engine, kNoSuchMember);
  duk_dup(engine, kValue);
  duk_call(engine, 1);
  duk_push_true(engine);
  return 1;
}

// Wraps the object on top of the stack in a proxy that ignores letter case and assigns to
// properties with a setter only.
void IgnoreCase(duk_context* engine) {
  PushKept(engine, kCaseHandler);
  duk_push_proxy(engine, 0);
}

void PutText(duk_context* engine, const char* name, const std::string& system_text) {
  // Temporaries are safe: before any script runs an engine error ends the host.
  PushUnits(engine, UnitsFromSystem(system_text));
  duk_put_prop_string(engine, -2, name);
}

// WScript.StdIn, StdOut and StdErr: made by the first use, which replaces the accessor.
template <StandardStreamNumber kNumber>
struct StandardStreamFunction {
  static constexpr const char* kNames[] = {"StdIn", "StdOut", "StdErr"};

  duk_ret_t Run(duk_context* engine) {
    duk_push_this(engine);
    duk_push_string(engine, kNames[static_cast<size_t>(kNumber)]);
    PushDispatch(engine, StandardStream(kNumber));
    duk_dup_top(engine);
    duk_insert(engine, -4);
    duk_def_prop(engine, -3, DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_FORCE);
    duk_pop(engine);
    return 1;
  }
};

template <StandardStreamNumber kNumber>
void PutStandardStream(duk_context* engine) {
  using Function = StandardStreamFunction<kNumber>;
  duk_push_string(engine, Function::kNames[static_cast<size_t>(kNumber)]);
  duk_push_c_function(engine, RunProtected<Function>, 0);
  duk_def_prop(engine, -3, DUK_DEFPROP_HAVE_GETTER | DUK_DEFPROP_SET_ENUMERABLE);
}

constexpr duk_function_list_entry kMembers[] = {
    {"Echo", RunProtected<EchoFunction>, DUK_VARARGS},
    {"EnvironmentVariable", RunProtected<EnvironmentFunction>, 1},
    {"Quit", Quit, 1},
    {"Sleep", Sleep, 1},
    {nullptr, nullptr, 0},
};

std::string_view FileName(std::string_view path) {
  return path.substr(path.rfind('/') + 1);
}

}  // namespace

void InstallWScript(duk_context* engine) {
  const ScriptContext& context = ContextOf(engine);
  duk_push_bare_object(engine);
  duk_push_c_function(engine, GetAnyCase, 3);
  duk_put_prop_string(engine, -2, "get");
  duk_push_c_function(engine, SetAnyCase, 4);
  duk_put_prop_string(engine, -2, "set");
  KeepValue(engine, kCaseHandler);

  duk_push_object(engine);
  duk_put_function_list(engine, -1, kMembers);
  PutText(engine, "ScriptName", std::string(FileName(context.script_full_path)));
  PutText(engine, "ScriptFullName", context.script_full_path);
  PutText(engine, "Name", "mirolta-host");
  PutStandardStream<StandardStreamNumber::kInput>(engine);
  PutStandardStream<StandardStreamNumber::kOutput>(engine);
  PutStandardStream<StandardStreamNumber::kError>(engine);
  InstallActiveX(engine);
  InstallWScriptMembers(engine);
  InstallStreams(engine);
  IgnoreCase(engine);
  duk_put_global_string(engine, "WScript");
}

bool FlushOutput() {
  const bool written = fflush(stdout) == 0 && ferror(stdout) == 0;
  if (!written) fputs("mirolta-host: the output cannot be written\n", stderr);
  return written;
}

}  // namespace mirolta::host
