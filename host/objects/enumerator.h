// Enumerator, the script language's walk through an automation collection.
#pragma once

#include "engine/engine_api.h"

namespace mirolta::host {

// InstallEnumerator defines new Enumerator(collection) with atEnd, item, moveFirst and moveNext. A
// collection is an automation object with a member DISPID_NEWENUM; without an argument the
// enumerator is at its end.
// Call once, before any script runs.
void InstallEnumerator(duk_context* engine);

}  // namespace mirolta::host
