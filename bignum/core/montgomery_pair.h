// Two interleaved powers modulo odd numbers of one limb.
#pragma once

#include "limb.h"

namespace mirolta {

// PairPower: x^e mod m.
struct PairPower {
  Limb x;  // below m
  Limb e;
  Limb m;  // odd, above 1
};

// PowerPair: z[i] := powers[i].x^powers[i].e mod powers[i].m. The products of one power depend on
// each other, so that two interleaved powers take about the time of one.
// Time:   depends on the bits of the longer exponent.
// Source: Montgomery, Modular multiplication without trial division, 1985.
void PowerPair(Limb (&z)[2], const PairPower (&powers)[2]) noexcept;

}  // namespace mirolta
