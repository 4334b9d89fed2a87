#include "objects/active_x.h"

#include "classes/class_list.h"
#include "command_line/module_registration.h"
#include "engine/arguments.h"
#include "engine/host_errors.h"
#include "engine/protected_call.h"
#include "engine/status_text.h"
#include "objects/dispatch_object.h"
#include "platform.h"

namespace mirolta::host {
namespace {

// Creates an object of the class with this ProgID or, in braces, this CLSID.
HRESULT CreateRegistered(const OLECHAR* name, OwnedReference<IDispatch>* object) {
  CLSID id;
  const HRESULT status = CLSIDFromProgID(name, &id);
  if (FAILED(status)) return status;
  void* made = nullptr;
  const HRESULT created = CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, &made);
  object->Attach(static_cast<IDispatch*>(made));
  return created;
}

// The same. If no registered class has the name, a class of the host may have it; if the class is
// unknown, registers the module beside the host.
HRESULT Create(const OLECHAR* name, OwnedReference<IDispatch>* object) {
  const HRESULT status = CreateRegistered(name, object);
  if (status == CO_E_CLASSSTRING) {
    const HRESULT created = CreateHostObject(name, object);
    if (created != CO_E_CLASSSTRING) return created;
  }
  if (SUCCEEDED(status) || !RegisterOwnModule()) return status;
  return CreateRegistered(name, object);
}

struct CreateFunction {
  Units name;
  OwnedReference<IDispatch> object;
  duk_ret_t Run(duk_context* engine) {
    name = UnitsFromEngine(TextArgument(engine, 0));
    const HRESULT status = Create(name.c_str(), &object);
    if (FAILED(status)) {
      const char* reason = StandardText(status, nullptr);
      ThrowText(engine, kCannotCreateObject, "%s: \"%s\" (0x%08X%s%s)",
                StandardText(kCannotCreateObject, ""), duk_get_string(engine, 0),
                static_cast<unsigned>(status), reason != nullptr ? ", " : "",
                reason != nullptr ? reason : "");
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
