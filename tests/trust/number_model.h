// The part of the model of statuses that is about numbers of any size.
#pragma once

#include "status_rows.h"

namespace mirolta::test {

// What a member answers that takes a number by one of the rules from kDecimal to kNewNumber.
HRESULT NumberStatus(const VARIANT& value, Rule rule);

}  // namespace mirolta::test
