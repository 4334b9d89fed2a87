// runs: hash-file.js
// arguments: SHA256|empty|no such file|text|back\slash
// file: empty|
// file: text|abc
// file: back\slash|abc
// status: 1
// errors: hash-file\.js: no such file: File not found
