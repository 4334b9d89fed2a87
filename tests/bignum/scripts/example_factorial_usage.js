// runs: factorial.js
// arguments: 50001
// status: 2
