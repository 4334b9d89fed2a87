#include "system/opened_file.h"

#include <cerrno>

namespace mirolta::runtime {

LONG ErrorOfErrno(int error, LONG otherwise) {
  switch (error) {
    case EACCES:
    case EPERM:
      return ERROR_ACCESS_DENIED;
    case EROFS:
      return ERROR_WRITE_PROTECT;
    case ENOMEM:
      return ERROR_OUTOFMEMORY;
    case ENOSPC:
    case EDQUOT:
      return ERROR_DISK_FULL;
    default:
      return otherwise;
  }
}

}  // namespace mirolta::runtime
