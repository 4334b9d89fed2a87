// runs: bignum-calc.js
// status: 2
