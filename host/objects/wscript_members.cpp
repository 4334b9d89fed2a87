#include "objects/wscript_members.h"

#include <string>

#include "classes/arguments_object.h"
#include "engine/arguments.h"
#include "engine/host_errors.h"
#include "engine/properties.h"
#include "engine/protected_call.h"
#include "engine/script_context.h"
#include "engine/time_limit.h"
#include "files/full_path.h"
#include "objects/dispatch_object.h"
#include "values/value_marshal.h"

namespace mirolta::host {
namespace {

constexpr char kArguments[] = "WScript.Arguments";
constexpr char kCreateObject[] = "WScript.CreateObject";

// Scripts compare it with the versions of the platform's host: this one has the members of 5.8.
constexpr char kPlatformVersion[] = "5.8";

constexpr HRESULT kNoSuchFileOrClass = MIROLTA_STATUS(0x800A01B0u);

// WScript.Arguments, made by the first read.
struct ArgumentsFunction {
  OwnedReference<IDispatch> object;

  duk_ret_t Run(duk_context* engine) {
    PushKept(engine, kArguments);
    if (!duk_is_undefined(engine, -1)) return 1;
    const ScriptContext& context = ContextOf(engine);
    const std::string& path = context.script_full_path;
    object.Attach(NewArguments(context.arguments, path.substr(path.rfind('/') + 1)));
    PushDispatch(engine, object.Detach());
    duk_dup_top(engine);
    KeepValue(engine, kArguments);
    return 1;
  }
};

// WScript.FullName and WScript.Path: the program's file and its folder.
template <bool kIsFolder>
struct ProgramFunction {
  std::string path;
  Units text;

  duk_ret_t Run(duk_context* engine) {
    path = FullPath("/proc/self/exe");
    if (kIsFolder) path.resize(path.find_last_not_of('/', path.rfind('/')) + 1);
    if (kIsFolder && path.empty()) path = "/";
    text = UnitsFromSystem(path);
    PushUnits(engine, text);
    return 1;
  }
};

duk_ret_t GetInteractive(duk_context* engine) {
  duk_push_boolean(engine, !ContextOf(engine).is_batch);
  return 1;
}

// Without interaction, as in batch mode, WScript.Echo and reports of errors print nothing.
duk_ret_t PutInteractive(duk_context* engine) {
  ContextOf(engine).is_batch = !duk_to_boolean(engine, 0);
  return 0;
}

duk_ret_t GetTimeout(duk_context* engine) {
  duk_push_uint(engine, ContextOf(engine).time_limit);
  return 1;
}

// The limit counts from the assignment; 0 removes it.
struct PutTimeoutFunction {
  duk_ret_t Run(duk_context* engine) {
    constexpr double kMostSeconds = 32767;
    const double seconds = NumberWithin(engine, 0, 0, kMostSeconds, kInvalidCall);
    if (FAILED(SetTimeLimit(&ContextOf(engine), static_cast<unsigned>(seconds)))) {
      ThrowText(engine, E_NOTIMPL, "The prompt has no time limit");
    }
    return 0;
  }
};

duk_ret_t GetApplication(duk_context* engine) {
  duk_get_global_string(engine, "WScript");
  return 1;
}

bool IsGiven(duk_context* engine, duk_idx_t index) {
  if (duk_is_null_or_undefined(engine, index)) return false;
  return !duk_is_string(engine, index) || duk_get_length(engine, index) != 0;
}

// CreateObject(ProgID [, prefix of event handlers])
duk_ret_t CreateObject(duk_context* engine) {
  constexpr duk_idx_t kProgId = 0, kPrefix = 1;
  if (IsGiven(engine, kPrefix)) {
    ThrowText(engine, E_NOTIMPL,
              "Events of automation objects are not supported: call CreateObject with the ProgID "
              "only");
  }
  PushKept(engine, kCreateObject);
  duk_dup(engine, kProgId);
  duk_call(engine, 1);
  return 1;
}

duk_ret_t RefuseConnecting(duk_context* engine) {
  ThrowText(engine, E_NOTIMPL, "Events of automation objects are not supported");
}

// There is nothing to disconnect: ConnectObject never succeeds.
duk_ret_t RefuseDisconnecting(duk_context* engine) {
  ThrowText(engine, E_NOTIMPL,
            "Events of automation objects are not supported: no object is connected");
}

// GetObject(path [, ProgID]): an empty path creates an object; this host has no table of running
// objects and no class for files.
duk_ret_t GetObject(duk_context* engine) {
  constexpr duk_idx_t kPath = 0, kProgId = 1;
  const bool has_progid = IsGiven(engine, kProgId);
  if (IsGiven(engine, kPath)) {
    TextArgument(engine, kPath);
    ThrowText(engine, kNoSuchFileOrClass,
              "GetObject(\"%s\"): no class opens files or monikers here; create objects by "
              "ActiveXObject or CreateObject",
              duk_get_string(engine, kPath));
  }
  if (!has_progid) ThrowText(engine, kInvalidCall, "GetObject needs a path or a ProgID");
  if (!duk_is_string(engine, kPath)) {
    TextArgument(engine, kProgId);
    ThrowText(engine, kCannotCreateObject,
              "GetObject: there is no running object of the class \"%s\"; "
              "GetObject(\"\", \"%s\") creates one",
              duk_get_string(engine, kProgId), duk_get_string(engine, kProgId));
  }
  PushKept(engine, kCreateObject);
  duk_dup(engine, kProgId);
  duk_call(engine, 1);
  return 1;
}

duk_ret_t PushName(duk_context* engine) {
  duk_push_this(engine);
  duk_get_prop_string(engine, -1, "Name");
  return 1;
}

struct Accessor {
  const char* name;
  duk_c_function get;
  duk_c_function set;  // null for a property that cannot be assigned to
};
constexpr Accessor kAccessors[] = {
    {"Application", GetApplication, nullptr},
    {"Arguments", RunProtected<ArgumentsFunction>, nullptr},
    {"FullName", RunProtected<ProgramFunction<false>>, nullptr},
    {"Interactive", GetInteractive, PutInteractive},
    {"Path", RunProtected<ProgramFunction<true>>, nullptr},
    {"Timeout", GetTimeout, RunProtected<PutTimeoutFunction>},
};

constexpr duk_function_list_entry kFunctions[] = {
    {"ConnectObject", RefuseConnecting, DUK_VARARGS},
    {"CreateObject", CreateObject, 2},
    {"DisconnectObject", RefuseDisconnecting, DUK_VARARGS},
    {"GetObject", GetObject, 2},
    {"toString", PushName, 0},
    {nullptr, nullptr, 0},
};

}  // namespace

void InstallWScriptMembers(duk_context* engine) {
  duk_get_prop_string(engine, -1, "CreateObject");
  KeepValue(engine, kCreateObject);
  duk_put_function_list(engine, -1, kFunctions);
  duk_get_prop_string(engine, -1, "GetObject");
  duk_put_global_string(engine, "GetObject");

  duk_push_string(engine, kPlatformVersion);
  duk_put_prop_string(engine, -2, "Version");
  duk_push_uint(engine, MIROLTA_BUILD_VERSION);
  duk_put_prop_string(engine, -2, "BuildVersion");
  for (const Accessor& accessor : kAccessors) {
    duk_push_string(engine, accessor.name);
    duk_push_c_function(engine, accessor.get, 0);
    duk_uint_t flags = DUK_DEFPROP_HAVE_GETTER | DUK_DEFPROP_SET_ENUMERABLE;
    if (accessor.set != nullptr) {
      duk_push_c_function(engine, accessor.set, 1);
      flags |= DUK_DEFPROP_HAVE_SETTER;
    }
    duk_def_prop(engine, accessor.set != nullptr ? -4 : -3, flags);
  }
}

}  // namespace mirolta::host
