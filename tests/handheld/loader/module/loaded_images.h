// The modules of the handheld that this process has loaded.
#pragma once

#include <string>

#include "module/handheld_module.h"

namespace mirolta::loader {

// LoadHandheldModule loads an image, or counts one more use of it.
// Errors: null, with a sentence in `problem`; also for an image that needs itself.
HandheldModule* LoadHandheldModule(const std::string& file, std::string* problem);
// ReleaseHandheldModule ends one use; the last unloads the module.
void ReleaseHandheldModule(HandheldModule* module);

// Each returns null if no loaded module matches.
HandheldModule* FindHandheldModule(const void* address);
HandheldModule* HandheldModuleOf(void* handle);  // of the dynamic loader
HandheldModule* HandheldModuleNamed(const std::string& file);

}  // namespace mirolta::loader
