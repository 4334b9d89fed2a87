#include "engine/file_statuses.h"

#include <errno.h>

namespace mirolta::host {
namespace {

struct ErrorRow {
  int error;
  HRESULT status;
};
constexpr ErrorRow kErrors[] = {
    {ENOENT, kFileNotFound},      {ENOTDIR, kPathNotFound},    {EEXIST, kFileExists},
    {EACCES, kPermissionDenied},  {EPERM, kPermissionDenied},  {EBUSY, kPermissionDenied},
    {EROFS, kPermissionDenied},   {EISDIR, kPermissionDenied}, {ETXTBSY, kPermissionDenied},
    {ENOTEMPTY, kFileExists},     {ENOSPC, kDiskFull},         {EDQUOT, kDiskFull},
    {EFBIG, kDiskFull},           {EMFILE, kTooManyFiles},     {ENFILE, kTooManyFiles},
    {ENAMETOOLONG, kBadFileName}, {EINVAL, kBadFileName},      {ELOOP, kPathFault},
    {ENODEV, kNoSuchDevice},      {ENXIO, kNoSuchDevice},      {EBADF, kNoStandardHandle},
    {ENOMEM, E_OUTOFMEMORY},
};

struct StreamRow {
  HRESULT stream_status;
  HRESULT status;
};
constexpr StreamRow kStreamStatuses[] = {
    {STG_E_FILENOTFOUND, kFileNotFound},
    {MIROLTA_STATUS(0x80030003u), kPathNotFound},
    {MIROLTA_STATUS(0x80070003u), kPathNotFound},
    {HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), kFileNotFound},
    {STG_E_ACCESSDENIED, kPermissionDenied},
    {E_ACCESSDENIED, kPermissionDenied},
    {STG_E_FILEALREADYEXISTS, kFileExists},
    {STG_E_MEDIUMFULL, kDiskFull},
    {STG_E_INSUFFICIENTMEMORY, E_OUTOFMEMORY},
    {STG_E_WRITEFAULT, kDeviceFault},
    {STG_E_READFAULT, kDeviceFault},
};

}  // namespace

HRESULT FileStatusOf(int error) {
  for (const ErrorRow& row : kErrors) {
    if (row.error == error) return row.status;
  }
  return kDeviceFault;
}

HRESULT FileStatusOfStream(HRESULT status) {
  for (const StreamRow& row : kStreamStatuses) {
    if (row.stream_status == status) return row.status;
  }
  return status;
}

}  // namespace mirolta::host
