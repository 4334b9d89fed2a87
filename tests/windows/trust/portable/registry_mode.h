// The Windows form of the runtime's registry mode: the program's HKEY_CLASSES_ROOT is a key of its own.
#pragma once

#include "platform.h"

// The file of the portable registry, which these builds do not have.
inline int setenv(const char*, const char*, int) {
  return 0;
}

namespace mirolta {

extern "C" {
// TRUE makes HKEY_CLASSES_ROOT an empty key, for this process only. FALSE deletes it and
// returns to the system's.
// Errors: those of creating the key.
LONG MiroltaRegistryInMemory(BOOL in_memory);
}

}  // namespace mirolta

using mirolta::MiroltaRegistryInMemory;
