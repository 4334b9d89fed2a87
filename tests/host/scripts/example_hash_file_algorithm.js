// runs: hash-file.js
// arguments: sha256|x
// status: 2
// errors: hash-file\.js: sha256: Algorithm not found\.
