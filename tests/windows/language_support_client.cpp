// The compiler runtime routines of the module, built here under other names, since this program has
// the language library's.
#include "guard_checks.h"

extern "C" {
extern uintptr_t TestedStackGuard;
}

int main() {
  client::CheckGuards();
  CHECK((TestedStackGuard & 0xFF) == 0);
  CHECK(TestedStackGuard != 0);
  return client::Finish();
}
