// Two powers side by side modulo odd numbers of one limb.
#pragma once

#include "limb.h"

namespace mirolta {

// PairPower: x^e mod m.
struct PairPower {
  Limb x;  // below m
  Limb e;
  Limb m;  // odd, above 1
};

// PowerPair: z[i] := powers[i].x^powers[i].e mod powers[i].m. Each product waits for the one before
// it, so two chains of them take about the time of one.
// Time: depends on the longer exponent's bits, not on which are set.
// Source: Montgomery, Modular multiplication without trial division, 1985.
void PowerPair(Limb (&z)[2], const PairPower (&powers)[2]) noexcept;

}  // namespace mirolta
