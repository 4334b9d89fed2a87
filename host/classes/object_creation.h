// Objects by the names of their classes: registered classes, the host's own, and those of the
// module beside the host.
#pragma once

#include <string>

#include "platform.h"
#include "values/text_encoding.h"

namespace mirolta::host {

// CreateObject creates an object of the class with this ProgID or, in braces, this CLSID. A
// registered class comes before one of the host, and both before the module beside the host, which
// is registered for this process if nobody has registered its classes.
// Errors: the status of the failure, with a text that gives the status, its wording and, where the
//         registry or the module is to blame, the file and the remedy; E_OUTOFMEMORY;
//         std::bad_alloc.
[[nodiscard]] HRESULT CreateObject(const Units& name, OwnedReference<IDispatch>* object,
                                   std::string* problem);

// ReportModules makes CreateObject report on standard error which module an object comes from, and
// that the module beside the host is not the one where this has the class too (--verbose).
void ReportModules(bool wanted);

}  // namespace mirolta::host
