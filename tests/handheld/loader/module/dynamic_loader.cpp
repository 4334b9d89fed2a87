// The program's dynamic loader, which loads images of the handheld too. The C library's functions
// of these names are replaced for the program and its libraries, so the portable runtime loads,
// finds and unloads an image as it does a library of its own.
#include <dlfcn.h>
#include <limits.h>
#include <link.h>
#include <stdio.h>
#include <stdlib.h>

#include <string>

#include "module/loaded_images.h"

using namespace mirolta::loader;

namespace {

// The C library's version that has all these functions in one library.
constexpr const char* kLibraryVersion = "GLIBC_2.34";

template <typename Function>
Function Next(const char* name) {
  void* const found = dlvsym(RTLD_NEXT, name, kLibraryVersion);
  if (found == nullptr) {
    fprintf(stderr, "the C library has no %s of %s\n", name, kLibraryVersion);
    abort();
  }
  return reinterpret_cast<Function>(found);
}

std::string FullName(const char* file) {
  char full[PATH_MAX];
  return realpath(file, full) != nullptr ? full : "";
}

}  // namespace

#define MIROLTA_REPLACEMENT extern "C" __attribute__((visibility("default")))

MIROLTA_REPLACEMENT void* dlopen(const char* file,
                                 int mode) noexcept(noexcept(dlopen(file, mode))) {
  const std::string name = file == nullptr ? "" : FullName(file);
  if (name.empty() || !IsImage(name)) {
    static const auto next = Next<decltype(&dlopen)>("dlopen");
    return next(file, mode);
  }
  if ((mode & RTLD_NOLOAD) != 0 && HandheldModuleNamed(name) == nullptr) return nullptr;
  std::string problem;
  HandheldModule* const module = LoadHandheldModule(name, &problem);
  if (module == nullptr) fprintf(stderr, "%s: %s\n", file, problem.c_str());
  return module;
}

MIROLTA_REPLACEMENT void* dlsym(void* handle, const char* name) noexcept {
  static const auto next = Next<decltype(&dlsym)>("dlsym");
  const HandheldModule* const module = HandheldModuleOf(handle);
  return module == nullptr ? next(handle, name) : module->Image().Export(name);
}

MIROLTA_REPLACEMENT int dlclose(void* handle) noexcept {
  static const auto next = Next<decltype(&dlclose)>("dlclose");
  HandheldModule* const module = HandheldModuleOf(handle);
  if (module == nullptr) return next(handle);
  ReleaseHandheldModule(module);
  return 0;
}

MIROLTA_REPLACEMENT int dlinfo(void* handle, int request, void* out) noexcept {
  static const auto next = Next<decltype(&dlinfo)>("dlinfo");
  HandheldModule* const module = HandheldModuleOf(handle);
  if (module == nullptr) return next(handle, request, out);
  if (request != RTLD_DI_LINKMAP) return -1;
  *static_cast<link_map**>(out) = module->Map();
  return 0;
}

MIROLTA_REPLACEMENT int dladdr(const void* address, Dl_info* info) noexcept {
  static const auto next = Next<decltype(&dladdr)>("dladdr");
  const HandheldModule* const module = FindHandheldModule(address);
  if (module == nullptr) return next(address, info);
  *info = {};
  info->dli_fname = module->File().c_str();
  info->dli_fbase = const_cast<uint8_t*>(module->Image().Base());
  return 1;
}
