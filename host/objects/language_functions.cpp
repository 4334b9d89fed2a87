#include "objects/language_functions.h"

#include "engine/host_errors.h"
#include "engine/properties.h"
#include "engine/script_context.h"
#include "values/script_dates.h"

namespace mirolta::host {
namespace {

// Scripts compare them with the versions of the platform's script language: the host has the
// members of 5.8. The build is the engine's version.
constexpr char kLanguage[] = "JScript";
constexpr int kMajorVersion = 5;
constexpr int kMinorVersion = 8;
constexpr int kBuildVersion = DUK_VERSION;

duk_ret_t PushMagic(duk_context* engine) {
  duk_push_int(engine, duk_get_current_magic(engine));
  return 1;
}

duk_ret_t PushLanguage(duk_context* engine) {
  duk_push_string(engine, kLanguage);
  return 1;
}

duk_ret_t PushBuildVersion(duk_context* engine) {
  duk_push_int(engine, kBuildVersion);
  return 1;
}

duk_ret_t CollectGarbage(duk_context* engine) {
  duk_gc(engine, 0);
  ContextOf(engine).objects.ReleaseDropped();
  // Script objects that only what was released had are garbage now.
  duk_gc(engine, 0);
  ContextOf(engine).objects.ReleaseDropped();
  return 0;
}

// A Date is passed to automation as a date, so the value is a Date too: a copy.
duk_ret_t GetVarDate(duk_context* engine) {
  PushKept(engine, "Date");
  PushKept(engine, "getTime");
  duk_push_this(engine);
  if (duk_pcall_method(engine, 0) != DUK_EXEC_SUCCESS) ThrowStatus(engine, kDateExpected);
  if (!IsAutomationDate(duk_get_number(engine, -1))) ThrowStatus(engine, kInvalidCall);
  duk_new(engine, 1);
  return 1;
}

struct GlobalFunction {
  const char* name;
  duk_c_function function;
  duk_int_t magic;
};
constexpr GlobalFunction kGlobals[] = {
    {"CollectGarbage", CollectGarbage, 0},
    {"ScriptEngine", PushLanguage, 0},
    {"ScriptEngineMajorVersion", PushMagic, kMajorVersion},
    {"ScriptEngineMinorVersion", PushMagic, kMinorVersion},
    {"ScriptEngineBuildVersion", PushBuildVersion, 0},
};

}  // namespace

void InstallLanguageFunctions(duk_context* engine) {
  for (const GlobalFunction& global : kGlobals) {
    duk_push_c_function(engine, global.function, 0);
    duk_set_magic(engine, -1, global.magic);
    duk_put_global_string(engine, global.name);
  }
  PushKept(engine, "Date");
  duk_get_prop_string(engine, -1, "prototype");
  duk_push_c_function(engine, GetVarDate, 0);
  DefineHidden(engine, "getVarDate");
  duk_pop_2(engine);
}

}  // namespace mirolta::host
