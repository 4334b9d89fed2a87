// runs: power-mod.js
// arguments: 3|4|0
// status: 1
// errors: power-mod\.js: the modulus is zero
