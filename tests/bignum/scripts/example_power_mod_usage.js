// runs: power-mod.js
// arguments: 3
// status: 2
