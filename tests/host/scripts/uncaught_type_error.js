// status: 1
// The report is in the file with the extension errors.
var nothing;
nothing.member();
