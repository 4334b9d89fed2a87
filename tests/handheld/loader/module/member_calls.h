// Calls of members by the slot and the types that a type library declares.
#pragma once

#include "seam/type_tables.h"

namespace mirolta::loader {

// MakeMemberCall returns a function that calls the slot with the row's parameters and result; the
// same one for the same slot and types.
// Errors: null for a type that it cannot pass, and if the process has asked for too many.
MemberCall MakeMemberCall(unsigned slot, const MemberRow& row);

}  // namespace mirolta::loader
