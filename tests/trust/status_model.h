// A model of the statuses that members return for their arguments: the rules of the interfaces by
// type and content of the value, independent of the module's code and of the runtime's operations.
#pragma once

#include "member_calls.h"

namespace mirolta::test {

struct Outcome {
  HRESULT status;
  bool called;  // false if a late-bound call did not get as far as the member
};

// ExpectedOutcome says how a member answers when one argument is `value` and all others are the
// ordinary ones of member_arguments.cpp. The object is in `state` as Subject makes it.
// Fails the test if the argument has no row.
Outcome ExpectedOutcome(const Member& member, const std::string& parameter, State state, bool late,
                        const VARIANT& value);

// The number of rows: one for each parameter of each member.
size_t StatusModelRows();

}  // namespace mirolta::test
