// What is left of an object, found by using it up.
#pragma once

#include <set>
#include <string>

#include "member_calls.h"

namespace mirolta::test {

// Members that may have consumed their data when they fail: the output is still queued.
const std::set<std::string>& MembersThatQueue();

// The bytes that a cipher's member gives; none if it gives no array.
Bytes Transformed(const Member& member, const Subject& subject, const char* words);

// All that an object shows when it is used, open digests and queued data included. A cipher's
// output that the member has returned already, `taken`, counts as if it were queued.
std::string Looked(const Member& member, const Subject& subject, const Bytes& taken = {});

}  // namespace mirolta::test
