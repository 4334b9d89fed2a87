// The classes that the host itself implements, by ProgID. A registered class of the same name comes
// first.
#pragma once

#include <span>

#include "classes/host_object.h"

namespace mirolta::host {

struct HostClassRow {
  const char* progid;
  const HostClass* host_class;
  HostObject* (*create)();  // errors: throws std::bad_alloc
};

std::span<const HostClassRow> HostClasses();

// AllHostClasses also has the classes whose objects only other objects return.
std::span<const HostClass* const> AllHostClasses();

// CreateHostObject creates an object of the class with this ProgID, in any letter case.
// Errors: CO_E_CLASSSTRING if the host has no such class; E_OUTOFMEMORY.
[[nodiscard]] HRESULT CreateHostObject(UnitsView progid, OwnedReference<IDispatch>* object);

}  // namespace mirolta::host
