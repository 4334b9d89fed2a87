// runs: is-prime.js
// arguments: 0|1|2|41|43|1681|1763|2147483647|x|3317044064679887385961981|170141183460469231731687303715884105727|0x7fffffffffffffffffffffffffffffff
// status: 1
// errors: is-prime\.js: cannot read the number x
