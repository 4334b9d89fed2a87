// Does what the loader and the resource compiler do on Windows: passes the module its handle when
// it is loaded, and contains its resources as tables.
#include "entry_points.h"
#include "messages.h"
#include "portable/module_resources.h"
#include "registry_resources.h"
#include "type_library_table.h"

using namespace mirolta;

namespace {

constexpr unsigned kMessageCount = sizeof(kMessages) / sizeof(kMessages[0]);

struct MessageResources {
  StringResource rows[kMessageCount];
};
constexpr MessageResources CopyMessages() {
  MessageResources copy = {};
  for (unsigned i = 0; i < kMessageCount; ++i) copy.rows[i] = {kMessages[i].id, kMessages[i].text};
  return copy;
}
constexpr MessageResources kStrings = CopyMessages();

// Constant-initialised: an initialiser could run after Load, or while another thread still reads
// the resources of a module that was loaded at the same address before.
constexpr ModuleResources kResources = {kStrings.rows, kMessageCount, kRegistryScripts.data(),
                                        kRegistryScriptCount, &kTypeLibraryTable};

HINSTANCE instance = nullptr;

__attribute__((constructor)) void Load() {
  instance = MiroltaAttachModule(&kResources);
  // Without a handle there is no module state, and every entry point fails.
  if (instance != nullptr) DllMain(instance, DLL_PROCESS_ATTACH, nullptr);
}

__attribute__((destructor)) void Unload() {
  if (instance == nullptr) return;
  DllMain(instance, DLL_PROCESS_DETACH, nullptr);
  MiroltaDetachModule(instance);
}

}  // namespace
