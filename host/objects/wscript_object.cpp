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
#include "engine/protected_call.h"
#include "engine/script_context.h"
#include "files/output_file.h"
#include "objects/active_x.h"
#include "objects/dispatch_object.h"
#include "objects/stream_object.h"
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
  const auto whole = static_cast<int64_t>(milliseconds);
  timespec left = {};
  left.tv_sec = static_cast<time_t>(whole / 1000);
  left.tv_nsec = static_cast<long>(whole % 1000) * 1000000L;
  while (nanosleep(&left, &left) != 0) {
  }
  return 0;
}

// WScript.Arguments(i) and WScript.Arguments.Item(i)
struct ArgumentFunction {
  Units text;
  duk_ret_t Run(duk_context* engine) {
    const auto& arguments = ContextOf(engine).arguments;
    // The index is truncated: with three arguments 2.5 names the last.
    const double most = std::nextafter(static_cast<double>(arguments.size()), -1.0);
    const double index = NumberWithin(engine, 0, 0, most, kSubscriptOutOfRange);
    text = UnitsFromSystem(arguments[static_cast<size_t>(index)]);
    PushUnits(engine, text);
    return 1;
  }
};

// WScript.EnvironmentVariable(name): its text, undefined if it is not set.
struct EnvironmentFunction {
  std::string name;
  Units text;
  duk_ret_t Run(duk_context* engine) {
    name = SystemFromUnits(UnitsFromEngine(TextArgument(engine, 0)));
    const char* value = getenv(name.c_str());
    if (value == nullptr) return 0;
    text = UnitsFromSystem(value);
    PushUnits(engine, text);
    return 1;
  }
};

duk_ret_t CountArguments(duk_context* engine) {
  duk_push_uint(engine, static_cast<duk_uint_t>(ContextOf(engine).arguments.size()));
  return 1;
}

// The proxy trap get(target, name), case-insensitive; an exact match comes first.
duk_ret_t GetAnyCase(duk_context* engine) {
  constexpr duk_idx_t kTarget = 0, kName = 1;
  duk_dup(engine, kName);
  if (duk_get_prop(engine, kTarget) || !duk_is_string(engine, kName)) return 1;
  const char* name = duk_get_string(engine, kName);
  duk_enum(engine, kTarget, DUK_ENUM_OWN_PROPERTIES_ONLY | DUK_ENUM_INCLUDE_NONENUMERABLE);
  while (duk_next(engine, -1, 0)) {
    if (strcasecmp(name, duk_get_string(engine, -1)) == 0) {
      duk_get_prop(engine, kTarget);
      return 1;
    }
    duk_pop(engine);
  }
  return 0;
}

duk_ret_t RefuseAssignment(duk_context* engine) {
  ThrowStatus(engine, kNoSuchMember);
}

// Wraps the object on top of the stack in a proxy that ignores letter case and rejects assignment.
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

void PutArguments(duk_context* engine) {
  duk_push_c_function(engine, RunProtected<ArgumentFunction>, 1);
  duk_push_c_function(engine, RunProtected<ArgumentFunction>, 1);
  duk_put_prop_string(engine, -2, "Item");
  duk_push_c_function(engine, CountArguments, 0);
  duk_put_prop_string(engine, -2, "Count");
  duk_push_string(engine, "length");
  CountArguments(engine);
  duk_def_prop(engine, -3, DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_FORCE);
  IgnoreCase(engine);
  duk_put_prop_string(engine, -2, "Arguments");
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
  duk_push_c_function(engine, RefuseAssignment, 4);
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
  PutArguments(engine);
  InstallActiveX(engine);
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
