// runs: hash-file.js
// status: 2
