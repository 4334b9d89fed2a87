// What holds of an object after any call: its properties read as its state demands, and a task with
// a published answer gives that answer.
#pragma once

#include "status_model.h"

namespace mirolta::test {

// ExpectReadable reads every property of an object that was in `state` until a call of `member`
// ended as `outcome` says: the statuses are those of what the object then holds. After a call that
// must not change anything the values too are those of an untouched object.
void ExpectReadable(const Subject& subject, const Member& member, State state,
                    const Outcome& outcome);

// ExpectKnownAnswer sets everything that the class's task depends on, and compares its result.
void ExpectKnownAnswer(const Subject& subject, const std::string& class_name);

}  // namespace mirolta::test
