// Registration of modules: by command line, and of the host's own module when nothing is
// registered.
#pragma once

#include <string>

#include "platform.h"

namespace mirolta::host {

// Which registry a registration changes: the user's, or the system-wide one (--system).
enum class RegistryScope : uint8_t { kUser, kSystem };

// CallRegistration loads a module and calls its DllRegisterServer or DllUnregisterServer in one
// batch of registry changes. A symbolic link to the module is registered by its own name. The entries of a module that is gone, or that cannot be loaded, are
// removed without it.
// Errors: the function's status, that of loading the module or of reading or writing the registry,
//         and E_FAIL if a registry still names the module after unregistration; *problem then has
//         a message.
HRESULT CallRegistration(const std::string& module, bool registers, std::string* problem,
                         RegistryScope scope = RegistryScope::kUser);

// OwnModulePath returns the path of the module that was built or installed with the host, by the
// name that later versions keep (libMirolta.so.1), empty if there is none.
std::string OwnModulePath();

// RegisterOwnModule registers the module beside the host in memory, for this process only, unless
// its classes are registered already. Returns true if it registered the module.
bool RegisterOwnModule();
// Whether RegisterOwnModule has registered it.
bool IsOwnModuleRegistered();

}  // namespace mirolta::host
