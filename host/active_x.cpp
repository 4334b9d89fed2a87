#include "active_x.h"

#include "dispatch_object.h"
#include "host_errors.h"
#include "module_registration.h"
#include "owned_values.h"
#include "protected_call.h"

namespace mirolta {
namespace {

// The class identifier of a ProgID, or of an identifier's registry text.
HRESULT FindClass(const OLECHAR* name, CLSID* id) {
  if (name[0] == OLECHAR{'{'}) return CLSIDFromString(name, id);
  HRESULT status = CLSIDFromProgID(name, id);
  if (FAILED(status) && RegisterOwnModule()) status = CLSIDFromProgID(name, id);
  return status;
}

struct CreateFrame {
  Units name;
  Reference<IDispatch> object;
  duk_ret_t Run(duk_context* engine) {
    duk_size_t size = 0;
    const char* text = duk_to_lstring(engine, 0, &size);
    name = UnitsFromEngine({text, size});
    CLSID id;
    HRESULT status = FindClass(name.c_str(), &id);
    if (SUCCEEDED(status)) {
      void* made = nullptr;
      status = CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, &made);
      object.Take(made);
    }
    if (FAILED(status)) {
      const char* reason = StandardText(status);
      ThrowText(engine, kCannotCreateObject, "%s: \"%s\" (0x%08X%s%s)",
                StandardText(kCannotCreateObject), text, static_cast<unsigned>(status),
                reason != nullptr ? ", " : "", reason != nullptr ? reason : "");
    }
    PushDispatch(engine, object.Release());
    return 1;
  }
};

}  // namespace

void InstallActiveX(duk_context* engine) {
  duk_push_c_function(engine, RunProtected<CreateFrame>, 1);
  duk_dup_top(engine);
  duk_put_global_string(engine, "ActiveXObject");
  duk_put_prop_string(engine, -2, "CreateObject");
}

}  // namespace mirolta
