// status: 1
// The report is in the file with the extension errors.

throw 42;
