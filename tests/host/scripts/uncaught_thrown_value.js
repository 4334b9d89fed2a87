// status: 1
// errors: .*/scripts/uncaught_thrown_value\.js\(4\): error 0x800A139E \(-2146823266\): Exception thrown and not caught: 42

throw 42;
