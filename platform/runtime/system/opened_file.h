// An open file, and system error numbers for the C library's.
#pragma once

#include <unistd.h>

#include "mirolta/status.h"

namespace mirolta::runtime {

// OpenedFile closes the file; a negative number is none.
struct OpenedFile {
  explicit OpenedFile(int opened) : number(opened) {}
  OpenedFile(const OpenedFile&) = delete;
  OpenedFile& operator=(const OpenedFile&) = delete;
  ~OpenedFile() {
    if (number >= 0) close(number);
  }
  int number;
};

// ErrorOfErrno returns the system error number for an errno, `otherwise` if it has none of its own.
LONG ErrorOfErrno(int error, LONG otherwise);

}  // namespace mirolta::runtime
