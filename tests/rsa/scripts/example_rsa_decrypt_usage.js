// runs: rsa-decrypt.js
// status: 2
