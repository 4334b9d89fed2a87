// runs: hmac.js
// arguments: SHA256|key|-t|The quick brown fox jumps over the lazy dog
