// runs: factorial.js
// arguments: 2000
