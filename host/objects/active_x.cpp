#include "objects/active_x.h"

#include "classes/object_creation.h"
#include "engine/arguments.h"
#include "engine/host_errors.h"
#include "engine/protected_call.h"
#include "engine/status_text.h"
#include "objects/dispatch_object.h"
#include "platform.h"

namespace mirolta::host {
namespace {

struct CreateFunction {
  Units name;
  std::string problem;
  OwnedReference<IDispatch> object;
  duk_ret_t Run(duk_context* engine) {
    name = UnitsFromEngine(TextArgument(engine, 0));
    if (FAILED(CreateObject(name, &object, &problem))) {
      problem = EngineFromUnits(UnitsFromSystem(problem));
      ThrowText(engine, kCannotCreateObject, "%s: \"%s\" %s", StandardText(kCannotCreateObject, ""),
                duk_get_string(engine, 0), problem.c_str());
    }
    PushDispatch(engine, object.Detach());
    return 1;
  }
};

}  // namespace

void InstallActiveX(duk_context* engine) {
  duk_push_c_function(engine, RunProtected<CreateFunction>, 1);
  duk_dup_top(engine);
  duk_put_global_string(engine, "ActiveXObject");
  duk_put_prop_string(engine, -2, "CreateObject");
}

}  // namespace mirolta::host
