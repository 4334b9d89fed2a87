// The module's classes as CoCreateInstance finds them, for this process only and by no entry of the user's.
#pragma once

#include "loaded_module.h"

#ifndef _WIN32
  #include <cstdlib>

  #include "portable/registry_mode.h"
#endif

namespace mirolta::test {

// MakeClassesCreatable has CoCreateInstance find the built module until EndCreatableClasses.
#ifndef _WIN32

// By a registry in memory.
inline void MakeClassesCreatable() {
  ASSERT_EQ(setenv("MIROLTA_REGISTRY", "/nonexistent/registry", 1), 0);
  ASSERT_EQ(MiroltaRegistryInMemory(TRUE), ERROR_SUCCESS);
  LoadedModule module;
  ASSERT_NE(module.handle(), nullptr);
  ASSERT_EQ(module.register_server(), S_OK);
}

inline void EndCreatableClasses() {
  MiroltaRegistryInMemory(FALSE);
}

#else

inline ULONG_PTR creatable_classes = 0;

// By the manifest beside the module. Threads take it over from the one that makes them.
inline void MakeClassesCreatable() {
  Text file = ModuleFile();
  file.replace(file.rfind(OLESTR(".dll")), Text::npos, OLESTR(".manifest"));
  ACTCTXW request = {};
  request.cbSize = sizeof request;
  request.lpSource = file.c_str();
  const HANDLE context = CreateActCtxW(&request);
  ASSERT_NE(context, INVALID_HANDLE_VALUE);
  EXPECT_TRUE(ActivateActCtx(context, &creatable_classes));
  ReleaseActCtx(context);
}

inline void EndCreatableClasses() {
  DeactivateActCtx(0, creatable_classes);
}

#endif

}  // namespace mirolta::test
