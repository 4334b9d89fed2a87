// mirolta-host --describe: a class and its members, as its type information describes them.
#pragma once

#include <string>

namespace mirolta::host {

// DescribeClass writes the help text of a class, by its ProgID or its CLSID in braces, and that of
// each member with its arguments, to standard output. It returns the exit status of the command: 1,
// after a message, if no object of the class can be created or it has no type information.
// Errors: std::bad_alloc.
int DescribeClass(const std::string& prog_id);

}  // namespace mirolta::host
