// runs: is-prime.js
// status: 2
