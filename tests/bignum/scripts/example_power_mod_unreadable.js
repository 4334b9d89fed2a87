// runs: power-mod.js
// arguments: 3|-4|5
// status: 1
// errors: power-mod\.js: cannot read the number -4
