#include "classes/module_table.h"

#include <dlfcn.h>
#include <limits.h>
#include <link.h>
#include <sys/auxv.h>
#include <unistd.h>

#include <cstring>
#include <mutex>

#include "charsets/escaped_utf8.h"
#include "mirolta/bool.h"
#include "system/file_trust.h"
#include "texts/wide_text.h"

namespace mirolta::runtime {
namespace {

constexpr size_t kLongestPath = PATH_MAX;

// A module stays in the table while it has resources attached or is loaded.
struct Module {
  Module* next = nullptr;
  const ModuleResources* resources = nullptr;
  const void* base = nullptr;  // where the file is mapped: the module's identity
  void* library = nullptr;     // from dlopen
  LONG loads = 0;
  RuntimeArray<WCHAR> file;
};

// Trivially destroyed: modules detach while the process exits.
std::mutex g_lock;
Module* g_modules = nullptr;

// The platform's names of what this library implements.
constexpr const char* kOwnNames[] = {"oleaut32.dll", "ole32.dll"};

HINSTANCE HandleOf(Module* module) {
  return reinterpret_cast<HINSTANCE>(module);
}

// The following are called under g_lock.
Module* Find(HINSTANCE handle) {
  Module* module = g_modules;
  while (module != nullptr && HandleOf(module) != handle) module = module->next;
  return module;
}

Module* FindByBase(const void* base) {
  Module* module = g_modules;
  while (module != nullptr && module->base != base) module = module->next;
  return module;
}

void Insert(Module* module) {
  module->next = g_modules;
  g_modules = module;
}

// Removes the module from the table if it is unused.
void RemoveIfUnused(Module* module) {
  if (module->resources != nullptr || module->loads != 0) return;
  Module** link = &g_modules;
  while (*link != module) link = &(*link)->next;
  *link = module->next;
  DeleteRuntime(module);
}

bool AppendProgramFile(RuntimeArray<WCHAR>* file) {
  char path[kLongestPath];
  const ssize_t length = readlink("/proc/self/exe", path, sizeof(path));
  return length > 0 && AppendWideFromUtf8(path, static_cast<size_t>(length), file);
}

// Finds where the module with `address` is mapped, and its file as an absolute name.
bool Locate(const void* address, const void** base, RuntimeArray<WCHAR>* file) {
  Dl_info info = {};
  if (dladdr(address, &info) == 0) return false;
  *base = info.dli_fbase;
  Dl_info program = {};
  if (dladdr(reinterpret_cast<const void*>(getauxval(AT_PHDR)), &program) != 0 &&
      program.dli_fbase == info.dli_fbase) {
    return AppendProgramFile(file);
  }
  if (info.dli_fname[0] != '/') {
    char folder[kLongestPath];
    if (getcwd(folder, sizeof(folder)) == nullptr ||
        !AppendWideFromUtf8(folder, std::strlen(folder), file) || !file->Append(u'/')) {
      return false;
    }
  }
  return AppendWideFromUtf8(info.dli_fname, std::strlen(info.dli_fname), file);
}

void* OpenSelf() {
  Dl_info info = {};
  void* library = nullptr;
  if (dladdr(reinterpret_cast<const void*>(&OpenSelf), &info) != 0) {
    library = dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD);
  }
  return library != nullptr ? library : dlopen(nullptr, RTLD_NOW);
}

bool IsOwnName(const char* file) {
  for (const char* name : kOwnNames) {
    if (strcasecmp(file, name) == 0) return true;
  }
  return false;
}

}  // namespace

HRESULT OpenLibrary(LPCWSTR file, HMODULE* out) {
  *out = nullptr;
  RuntimeArray<char> name;
  RuntimeArray<char> resolved;
  RuntimeOwner<Module> made(NewRuntime<Module>());
  if (made == nullptr || !AppendUtf8FromWide(file, &name) || !name.Append('\0')) {
    return E_OUTOFMEMORY;
  }
  const bool own = IsOwnName(name.Data());
  if (!own && HasBorrowedRights()) {
    const HRESULT trust = ResolveTrusted(name.Data(), &resolved);
    if (FAILED(trust)) return trust;
    name.Swap(resolved);
  }
  // Outside the lock: modules attach and detach themselves as they are loaded and unloaded.
  void* library = own ? OpenSelf() : dlopen(name.Data(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    return access(name.Data(), F_OK) == 0 ? CO_E_ERRORINDLL : CO_E_DLLNOTFOUND;
  }
  // Another thread may have just loaded the module. The loader's own lock is unknown to the
  // language's memory model; taking ours orders this thread after the module's attaching.
  { const std::lock_guard<std::mutex> lock(g_lock); }
  link_map* map = nullptr;
  const void* base = nullptr;
  if (dlinfo(library, RTLD_DI_LINKMAP, &map) != 0 || !Locate(map->l_ld, &base, &made->file)) {
    dlclose(library);
    return E_OUTOFMEMORY;
  }
  const std::lock_guard<std::mutex> lock(g_lock);
  Module* module = FindByBase(base);
  if (module == nullptr) {
    module = made.release();
    module->base = base;
    Insert(module);
  }
  module->library = library;
  ++module->loads;
  *out = HandleOf(module);
  return S_OK;
}

const ModuleResources* ResourcesOf(HINSTANCE handle) {
  const std::lock_guard<std::mutex> lock(g_lock);
  const Module* module = Find(handle);
  return module == nullptr ? nullptr : module->resources;
}

}  // namespace mirolta::runtime

using namespace mirolta;
using namespace mirolta::runtime;

extern "C" HINSTANCE mirolta::MiroltaAttachModule(const ModuleResources* resources) {
  if (resources == nullptr) return nullptr;
  RuntimeOwner<Module> made(NewRuntime<Module>());
  if (made == nullptr || !Locate(resources, &made->base, &made->file)) return nullptr;
  made->resources = resources;
  const std::lock_guard<std::mutex> lock(g_lock);
  Module* const module = made.release();
  Insert(module);
  return HandleOf(module);
}

extern "C" void mirolta::MiroltaDetachModule(HINSTANCE handle) {
  const std::lock_guard<std::mutex> lock(g_lock);
  Module* module = Find(handle);
  if (module == nullptr) return;
  module->resources = nullptr;
  RemoveIfUnused(module);
}

extern "C" DWORD GetModuleFileNameW(HMODULE handle, LPWSTR file, DWORD capacity) {
  if (file == nullptr || capacity == 0) return 0;
  file[0] = 0;
  RuntimeArray<WCHAR> program;
  if (handle == nullptr && !AppendProgramFile(&program)) return 0;
  const std::lock_guard<std::mutex> lock(g_lock);
  const Module* module = Find(handle);
  if (handle != nullptr && module == nullptr) return 0;
  const RuntimeArray<WCHAR>& name = handle == nullptr ? program : module->file;
  const DWORD copied = name.Size() < capacity ? static_cast<DWORD>(name.Size()) : capacity - 1;
  std::memcpy(file, name.Data(), copied * sizeof(WCHAR));
  file[copied] = 0;
  return name.Size() < capacity ? copied : capacity;  // truncated: the capacity, as on the platform
}

extern "C" BOOL DisableThreadLibraryCalls(HMODULE module) {
  const std::lock_guard<std::mutex> lock(g_lock);
  return Find(module) != nullptr ? TRUE : FALSE;  // there are no such calls to switch off
}

extern "C" HMODULE LoadLibraryW(LPCWSTR file) {
  HMODULE module = nullptr;
  return file != nullptr && SUCCEEDED(OpenLibrary(file, &module)) ? module : nullptr;
}

extern "C" FARPROC GetProcAddress(HMODULE handle, LPCSTR name) {
  if (name == nullptr) return nullptr;
  void* library;
  RuntimeArray<char> file;
  {
    const std::lock_guard<std::mutex> lock(g_lock);
    const Module* module = Find(handle);
    if (module == nullptr) return nullptr;
    library = module->library;
    if (library == nullptr &&
        (!AppendUtf8FromWide(ViewOf(module->file), &file) || !file.Append('\0'))) {
      return nullptr;
    }
  }
  if (library != nullptr) return reinterpret_cast<FARPROC>(dlsym(library, name));
  // Attached but not loaded by name: the program itself or a library that it links.
  library = dlopen(file.Data(), RTLD_NOW | RTLD_NOLOAD);
  if (library == nullptr) library = dlopen(nullptr, RTLD_NOW);
  if (library == nullptr) return nullptr;
  const FARPROC address = reinterpret_cast<FARPROC>(dlsym(library, name));
  dlclose(library);
  return address;
}

extern "C" BOOL FreeLibrary(HMODULE handle) {
  void* library;
  {
    const std::lock_guard<std::mutex> lock(g_lock);
    Module* module = Find(handle);
    if (module == nullptr || module->loads == 0) return FALSE;
    library = module->library;
    if (--module->loads == 0) module->library = nullptr;
    RemoveIfUnused(module);
  }
  dlclose(library);
  return TRUE;
}
