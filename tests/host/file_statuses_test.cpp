#include "engine/file_statuses.h"

#include <errno.h>
#include <gtest/gtest.h>

#include <vector>

namespace mirolta::host {
namespace {

TEST(FileStatuses, ErrorsOfTheSystemHaveTheNumbersOfTheAutomationClasses) {
  const struct {
    HRESULT status;
    std::vector<int> errors;
  } kRows[] = {
      {kFileNotFound, {ENOENT}},
      {kPathNotFound, {ENOTDIR}},
      {kFileExists, {EEXIST, ENOTEMPTY}},
      {kPermissionDenied, {EACCES, EPERM, EBUSY, EROFS, EISDIR, ETXTBSY}},
      {kDiskFull, {ENOSPC, EDQUOT, EFBIG}},
      {kTooManyFiles, {EMFILE, ENFILE}},
      {kBadFileName, {ENAMETOOLONG, EINVAL}},
      {kPathFault, {ELOOP}},
      {kNoSuchDevice, {ENODEV, ENXIO}},
      {kNoStandardHandle, {EBADF}},
      {E_OUTOFMEMORY, {ENOMEM}},
      {kDeviceFault, {EIO, 0, -1}},
  };
  for (const auto& row : kRows) {
    for (const int error : row.errors) EXPECT_EQ(FileStatusOf(error), row.status) << error;
  }
}

}  // namespace
}  // namespace mirolta::host
