// runs: rsa-keygen.js
// status: 2
