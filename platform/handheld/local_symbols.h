// Precedes every source of the handheld's build: all that is declared is in this module or reached by a
// jump of it. For a variable that another module could have, clang with -mno-movt takes the variable's own
// address for that of a pointer to it, and reads what is there.
#pragma once

#pragma GCC visibility push(hidden)
