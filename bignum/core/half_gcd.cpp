#include "half_gcd.h"

#include <utility>

#include "divide.h"
#include "euclid_steps.h"
#include "limb_basics.h"

namespace mirolta {

namespace {

void SetToNoSteps(EuclidMatrix* matrix) {
  matrix->n = 1;
  matrix->odd = false;
  for (size_t c = 0; c < 2; ++c) {
    matrix->first[c][0] = c == 0;
    matrix->second[c][0] = c != 0;
  }
}

size_t Longer(size_t a, size_t b) {
  return a > b ? a : b;
}

// x := x + z modulo B^m; returns the carry. Likewise x - z.
// Shapes: x[m], z[n], n <= m.
Limb AddTo(Limb* x, size_t m, const Limb* z, size_t n) {
  return AddLimb(x + n, m - n, CurrentLimbKernels().add(x, x, z, n));
}
Limb SubtractFrom(Limb* x, size_t m, const Limb* z, size_t n) {
  return SubtractLimb(x + n, m - n, CurrentLimbKernels().subtract(x, x, z, n));
}

// The scratch of a pair of products and their results.
CheckedSize ResultScratch(size_t m, size_t n, PairSums sums = PairSums::kTogether) {
  return 2 * (CheckedSize(m) + CheckedSize(n) + 1) + PairScratch(m, n, sums);
}

// matrix := next * matrix.
// Shapes: entries of matrix that hold the result; scratch[ResultScratch(next.n, matrix->n, sums)].
void AddSteps(EuclidMatrix* matrix, const EuclidMatrix& next, Limb* scratch,
              PairSums sums = PairSums::kTogether) {
  const size_t room = next.n + matrix->n + 1;
  Limb* const z0 = scratch;
  Limb* const z1 = z0 + room;
  size_t used[2];
  for (size_t c = 0; c < 2; ++c) {
    MultiplyPair(next, z0, z1, matrix->first[c], matrix->second[c], matrix->n, z1 + room, sums);
    used[c] = Longer(SignificantLimbs(z0, room), SignificantLimbs(z1, room));
    CopyLimbs(matrix->first[c], z0, used[c]);
    CopyLimbs(matrix->second[c], z1, used[c]);
  }
  matrix->n = Longer(used[0], used[1]);
  for (size_t c = 0; c < 2; ++c) {
    ZeroLimbs(matrix->first[c] + used[c], matrix->n - used[c]);
    ZeroLimbs(matrix->second[c] + used[c], matrix->n - used[c]);
  }
  matrix->odd = matrix->odd != next.odd;
}

// Of TakeSteps for n limbs: a second pair and a second matrix, or what a division takes, whose quotient
// and the matrix together have less than n / 2 + 4 limbs.
CheckedSize StepScratch(size_t n) {
  const size_t half = n / 2 + 4;
  return 4 * CheckedSize(n) + 2 * CheckedSize(half) + PairScratch(half, half, PairSums::kInTurn);
}

// What the steps of one level of the recursion work on.
struct Level {
  Limb* x;
  Limb* y;
  size_t n;
  size_t floor;  // remainders and differences keep more limbs than that
  EuclidMatrix* matrix;
};

// One step by a division. Returns false without a step if the remainder or its difference from the
// divisor would be too small, or memory runs out.
bool DivisionStep(Level* level, Limb* scratch) {
  Limb* const x = level->x;
  Limb* const y = level->y;
  const size_t n = level->n;
  const size_t yn = SignificantLimbs(y, n);
  if (yn <= level->floor) return false;
  size_t count = n - yn + 1;
  Limb* const quotient = scratch;
  Limb* const remainder = quotient + count;
  Limb* const rest = remainder + yn;
  if (!DivideLimbs(quotient, remainder, x, n, y, yn)) return false;
  if (SignificantLimbs(remainder, yn) <= level->floor) return false;
  CurrentLimbKernels().subtract(rest, y, remainder, yn);
  if (SignificantLimbs(rest, yn) <= level->floor) return false;
  CopyLimbs(x, y, n);
  CopyLimbs(y, remainder, yn);
  ZeroLimbs(y + yn, n - yn);
  level->n = yn;

  count = SignificantLimbs(quotient, count);
  ZeroLimbs(quotient + count, 3 * count);
  const EuclidMatrix step = {
      {quotient + count, quotient + 2 * count}, {quotient + 3 * count, quotient}, count, true};
  step.first[1][0] = 1;
  step.second[0][0] = 1;
  // (0 1; 1 q): its second row is 1, q.
  AddSteps(level->matrix, step, quotient + 4 * count, PairSums::kInTurn);
  return true;
}

// Takes steps until x has at most `wanted` limbs or no step is possible.
// Shapes: wanted > floor; scratch[StepScratch(n)].
void TakeSteps(Level* level, size_t wanted, Limb* scratch) {
  const size_t n = level->n;
  EuclidMatrix& matrix = *level->matrix;
  const size_t entry = level->floor + 1;
  Limb* x = scratch;
  Limb* y = x + n;
  EuclidMatrix other;
  PlaceEntries(&other, y + n, entry);
  bool swapped = false;
  const auto swap = [&] {
    std::swap(level->x, x);
    std::swap(level->y, y);
    for (size_t c = 0; c < 2; ++c) {
      std::swap(matrix.first[c], other.first[c]);
      std::swap(matrix.second[c], other.second[c]);
    }
    swapped = !swapped;
  };
  const auto settle = [&] {
    if (!swapped) return;
    swap();
    CopyLimbs(level->x, x, level->n);
    CopyLimbs(level->y, y, level->n);
    for (size_t c = 0; c < 2; ++c) {
      CopyLimbs(matrix.first[c], other.first[c], matrix.n);
      CopyLimbs(matrix.second[c], other.second[c], matrix.n);
    }
  };
  while (level->n > wanted) {
    EuclidSteps steps;
    // One limb less at most, as FindEuclidSteps bounds them.
    if (FindEuclidSteps(&steps, level->x, level->y, level->n)) {
      ReduceByEuclidSteps(steps, x, y, level->x, level->y, level->n);
      Limb top = 0;
      for (size_t c = 0; c < 2; ++c) {
        MultiplyByEuclidSteps(steps, other.first[c], other.second[c], matrix.first[c],
                              matrix.second[c], matrix.n);
        top = static_cast<Limb>(top | other.first[c][matrix.n] | other.second[c][matrix.n]);
      }
      if (top != 0) ++matrix.n;
      matrix.odd = matrix.odd != steps.odd;
      swap();
      level->n = SignificantLimbs(level->x, level->n);
    } else {
      settle();
      if (!DivisionStep(level, scratch)) break;
    }
  }
  settle();
  ZeroLimbs(level->x + level->n, n - level->n);
  ZeroLimbs(level->y + level->n, n - level->n);
}

}  // namespace

CheckedSize HalfGcdScratch(size_t n, size_t low, size_t least, PairSums sums) noexcept {
  // Of the first level, which takes more than the next ones; and the second matrix of each level.
  CheckedSize scratch = LargerOf(StepScratch(n), ResultScratch(n / 4 + 3, n / 2 + 2));
  scratch = LargerOf(scratch, ResultScratch(HalfGcdEntry(n), low, sums));
  for (; n >= least; n = n / 2 + 2) {
    const size_t entry = n / 4 + 3;
    scratch = scratch + 4 * CheckedSize(entry);
  }
  return scratch;
}

size_t JoinLowLimbs(const EuclidMatrix& matrix, Limb* x, Limb* y, size_t low, size_t n,
                    Limb* scratch, PairSums sums) noexcept {
  const size_t room = matrix.n + low + 1;
  const size_t all = low + n;
  Limb* const z0 = scratch;
  Limb* const z1 = z0 + room;
  // With y' = B^low - 1 - y for the low limbs, u x - v y = u x + v y' + v - v B^low: sums only.
  ComplementLimbs(y, y, low);
  MultiplyPair(matrix, z0, z1, x, y, low, z1 + room, sums);
  ZeroLimbs(x, low);
  ZeroLimbs(y, low);
  // The results are the first or second row's sums, added to one and subtracted from the other.
  Limb* const up = matrix.odd ? y : x;
  Limb* const down = matrix.odd ? x : y;
  const Limb* const v_up = matrix.odd ? matrix.second[1] : matrix.first[1];
  const Limb* const v_down = matrix.odd ? matrix.first[1] : matrix.second[1];
  Limb up_carry = AddTo(up, all, matrix.odd ? z1 : z0, room);
  up_carry = static_cast<Limb>(up_carry + AddTo(up, all, v_up, matrix.n));
  up_carry = static_cast<Limb>(up_carry - SubtractFrom(up + low, n, v_up, matrix.n));
  Limb down_carry = AddTo(down + low, n, v_down, matrix.n);
  down_carry = static_cast<Limb>(down_carry - SubtractFrom(down, all, matrix.odd ? z0 : z1, room));
  down_carry = static_cast<Limb>(down_carry - SubtractFrom(down, all, v_down, matrix.n));
  // The new x is the larger one.
  const Limb carry = matrix.odd ? down_carry : up_carry;
  if (carry != 0) {
    x[all] = carry;
    y[all] = matrix.odd ? up_carry : down_carry;
    return all + 1;
  }
  return SignificantLimbs(x, all);
}

size_t HalfGcd(Limb* x, Limb* y, size_t n, EuclidMatrix* matrix, Limb* scratch,
               size_t least) noexcept {
  // Steps whose remainders and differences are at least B^floor have cofactors below B^(n - floor), and
  // limbs below change both by less than 2 B^(n - floor) <= B^floor.
  const size_t floor = n / 2 + 1;
  Level level = {x, y, n, floor, matrix};
  SetToNoSteps(matrix);
  if (n >= least) {
    // The steps of the upper half leave about three quarters.
    size_t low = n / 2;
    size_t high = HalfGcd(x + low, y + low, n - low, matrix, scratch, least);
    if (matrix->Changed()) high = JoinLowLimbs(*matrix, x, y, low, high, scratch) - low;
    level.n = low + high;
    const size_t middle = floor + (n - floor) / 2 + 1;
    if (level.n > middle) TakeSteps(&level, middle, scratch);
    if (level.n > middle) return level.n;
    // Those of as many upper limbs as leave remainders of more than floor limbs.
    low = 2 * floor + 1 - level.n;
    if (level.n >= low + 4) {
      EuclidMatrix second;
      const size_t entry = HalfGcdEntry(level.n - low);
      PlaceEntries(&second, scratch, entry);
      Limb* const rest = scratch + 4 * entry;
      high = HalfGcd(x + low, y + low, level.n - low, &second, rest, least);
      if (second.Changed()) {
        level.n = JoinLowLimbs(second, x, y, low, high, rest);
        AddSteps(matrix, second, rest);
      }
    }
  }
  TakeSteps(&level, floor + 1, scratch);
  return level.n;
}

}  // namespace mirolta
