// runs: bignum-calc.js
// arguments: 2^(256^752) % 1000003|256^752 % 1000003|(256^752 + 1) - 256^752|(10^1811 - 1) % 1000003|2^(10^1811 - 1) % 1000003|gcd(10^1811 - 1, 99)|(7 * (10^1811 - 1)) / (10^1811 - 1)
// Operands of 1811 digits: as decimal text these would lose their top.
