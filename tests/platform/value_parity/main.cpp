// Prints the results of several thousand automation value operations, one a line, so that the
// output of a build over the portable runtime can be compared with that of a build over the
// platform (scripts/value-parity.sh).
#include <initializer_list>

#include "sections.h"

int main() {
  using namespace mirolta::value_parity;
  for (void (*const section)() : {Tags, Conversions, Texts, Dates, Objects, Copies, Bstrs, Arrays,
                                  RandomValues, CharacterSets}) {
    section();
  }
  return 0;
}
