#include "module/loaded_images.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace mirolta::loader {
namespace {

// Recursive: modules call back while they start and stop, as under the system's own lock.
std::recursive_mutex& Lock() {
  static auto* const lock = new std::recursive_mutex;
  return *lock;
}
std::vector<HandheldModule*>& Modules() {
  static auto* const modules = new std::vector<HandheldModule*>;  // outlives those that never stop
  return *modules;
}

// Images that need each other are not loaded before the first of them is.
constexpr unsigned kDeepest = 8;
unsigned g_depth = 0;  // under the lock

template <typename Matches>
HandheldModule* Find(Matches matches) {
  const std::lock_guard<std::recursive_mutex> hold(Lock());
  const auto found = std::find_if(Modules().begin(), Modules().end(), matches);
  return found == Modules().end() ? nullptr : *found;
}

void Unload(HandheldModule* module) {
  delete module;  // which the runtime still asks for while it detaches
  std::erase(Modules(), module);
}

}  // namespace

HandheldModule* LoadHandheldModule(const std::string& file, std::string* problem) {
  const std::lock_guard<std::recursive_mutex> hold(Lock());
  HandheldModule* module = HandheldModuleNamed(file);
  if (module == nullptr) {
    if (g_depth == kDeepest) {
      *problem = "images need each other";
      return nullptr;
    }
    ++g_depth;
    module = HandheldModule::Load(file, problem).release();
    --g_depth;
    if (module == nullptr) return nullptr;
    Modules().push_back(module);
    if (!module->Start(problem)) {
      Unload(module);
      return nullptr;
    }
  }
  ++module->loads;
  return module;
}

void ReleaseHandheldModule(HandheldModule* module) {
  const std::lock_guard<std::recursive_mutex> hold(Lock());
  if (--module->loads == 0) Unload(module);
}

HandheldModule* FindHandheldModule(const void* address) {
  return Find([&](const HandheldModule* module) { return module->Owns(address); });
}

HandheldModule* HandheldModuleOf(void* handle) {
  return Find([&](const HandheldModule* module) { return module == handle; });
}

HandheldModule* HandheldModuleNamed(const std::string& file) {
  return Find([&](const HandheldModule* module) { return module->File() == file; });
}

}  // namespace mirolta::loader
