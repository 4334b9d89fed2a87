// runs: hmac.js
// arguments: MD5|Jefe|message
// file: message|what do ya want for nothing?
