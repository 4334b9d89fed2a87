// MIROLTA_STEP, for kernels that templates unroll, a function a step: every step is inlined into
// one body.
#pragma once

#define MIROLTA_STEP __attribute__((always_inline)) inline
// The same for a lambda.
#define MIROLTA_STEP_LAMBDA __attribute__((always_inline))
