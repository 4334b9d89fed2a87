// CheckPowers on the limbs that the library was compiled for.
#include "secret_numbers.h"

int main() {
  mirolta::constant_time::CheckPowers(MIROLTA_LIMBS);
  return 0;
}
