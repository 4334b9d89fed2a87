// runs: rsa-encrypt.js
// status: 2
