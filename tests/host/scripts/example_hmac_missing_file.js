// runs: hmac.js
// arguments: MD5|Jefe|nowhere
// status: 1
// errors: hmac\.js: nowhere: File not found
