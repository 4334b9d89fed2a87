// runs: power-mod.js
// arguments: 0x123456789ABCDEF|65537|1000000007
