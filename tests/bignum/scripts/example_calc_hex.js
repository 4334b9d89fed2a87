// runs: bignum-calc.js
// arguments: --hex|255|-16|0|0xFFFFFFFFFFFFFFFF*0xFFFFFFFFFFFFFFFF|7^3562
