// Modules in the registry: by command, and the host's own module by itself.
#pragma once

#include <string>

#include "platform.h"

namespace mirolta::host {

// CallRegistration loads the module file and calls its DllRegisterServer or DllUnregisterServer, as
// one change of the registry. Returns its status; *problem says in a sentence what went wrong.
// Errors: also the registry's for reading and writing it, and E_FAIL for a class or type library
//         that the registry still finds in the file after it was to be removed.
HRESULT CallRegistration(const std::string& module, bool registers, std::string* problem);

// RegisterOwnModule is for a host on which nothing was ever registered: unless the module's classes
// are known, it finds the module beside the host (../lib/libMirolta.so from its own place) and
// registers it in memory, for this process only. False if it found nothing to add.
bool RegisterOwnModule();

}  // namespace mirolta::host
