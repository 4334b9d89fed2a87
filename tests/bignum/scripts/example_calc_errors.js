// runs: bignum-calc.js
// arguments: 10/0|1+1|5%0|2^5%0|2+|2 # 3|12ab|0x|(1|3^-1|(-1)!|2^99999999|hello
// status: 1
// errors: bignum-calc\.js: 10/0: division by zero.bignum-calc\.js: 5%0: division by zero.bignum-calc\.js: 2\^5%0: division by zero.bignum-calc\.js: 2\+: something is missing at the end.bignum-calc\.js: 2 # 3: cannot read "#" at character 3.bignum-calc\.js: 12ab: cannot read "a" at character 3.bignum-calc\.js: 0x: something is missing at the end.bignum-calc\.js: \(1: something is missing at the end.bignum-calc\.js: 3\^-1: the exponent of \^ is below zero.bignum-calc\.js: \(-1\)!: there is no factorial of a number below zero.bignum-calc\.js: 2\^99999999: the result of \^ would have more than 4000000 bits.bignum-calc\.js: hello: cannot read "h" at character 1
