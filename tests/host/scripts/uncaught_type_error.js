// status: 1
// errors: .*/scripts/uncaught_type_error\.js\(4\): error 0x800A138F \(-2146823281\): TypeError: .*undefined.*
var nothing;
nothing.member();
