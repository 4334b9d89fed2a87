#include "engine/status_text.h"

#include <stdio.h>

#include "engine/file_statuses.h"
#include "engine/host_errors.h"

namespace mirolta::host {
namespace {

struct StatusText {
  HRESULT status;
  const char* text;
};

constexpr char kNoSuchMemberText[] = "Object doesn't support this property or method";
constexpr char kCannotCreateText[] = "Automation server can't create object";

constexpr StatusText kStatusTexts[] = {
    {E_NOTIMPL, "Not implemented"},
    {E_NOINTERFACE, "No such interface supported"},
    {E_POINTER, "Invalid pointer"},
    {E_ABORT, "Operation aborted"},
    {E_FAIL, "Unspecified error"},
    {E_UNEXPECTED, "Catastrophic failure"},
    {E_ACCESSDENIED, "Permission denied"},
    {E_OUTOFMEMORY, "Out of memory"},
    {E_INVALIDARG, "Invalid procedure call or argument"},
    {DISP_E_UNKNOWNINTERFACE, "Unknown interface"},
    {DISP_E_MEMBERNOTFOUND, kNoSuchMemberText},
    {DISP_E_PARAMNOTFOUND, "Parameter not found"},
    {DISP_E_TYPEMISMATCH, "Type mismatch"},
    {DISP_E_UNKNOWNNAME, kNoSuchMemberText},
    {DISP_E_NONAMEDARGS, "Object doesn't support named arguments"},
    {DISP_E_BADVARTYPE, "Bad variable type"},
    {DISP_E_EXCEPTION, "Exception occurred"},
    {DISP_E_OVERFLOW, "Overflow"},
    {DISP_E_BADINDEX, "Subscript out of range"},
    {DISP_E_ARRAYISLOCKED, "This array is fixed or temporarily locked"},
    {DISP_E_BADPARAMCOUNT, "Wrong number of arguments or invalid property assignment"},
    {DISP_E_PARAMNOTOPTIONAL, "Argument not optional"},
    {DISP_E_NOTACOLLECTION, "Object not a collection"},
    {DISP_E_DIVBYZERO, "Division by zero"},
    {CLASS_E_NOAGGREGATION, "Class does not support aggregation"},
    {CLASS_E_CLASSNOTAVAILABLE, kCannotCreateText},
    {REGDB_E_CLASSNOTREG, "Class not registered"},
    {CO_E_CLASSSTRING, "Invalid class string"},
    {CO_E_DLLNOTFOUND, "The module of the class was not found"},
    {CO_E_ERRORINDLL, "The module of the class could not be loaded"},
    {HRESULT_FROM_WIN32(ERROR_BADDB), "The registry is malformed"},
    {HRESULT_FROM_WIN32(ERROR_CANTREAD), "The registry could not be read"},
    {HRESULT_FROM_WIN32(ERROR_CANTWRITE), "The registry could not be written"},
    {HRESULT_FROM_WIN32(ERROR_KEY_DELETED), "The registry key was deleted"},
    {HRESULT_FROM_WIN32(ERROR_DISK_FULL), "Disk full"},
    {HRESULT_FROM_WIN32(ERROR_WRITE_PROTECT), "Read-only file system"},
    {TYPE_E_REGISTRYACCESS, "The registration of a type library could not be read or changed"},
    {TYPE_E_LIBNOTREGISTERED, "Type library not registered"},
    {TYPE_E_CANTLOADLIBRARY, "The type library could not be loaded"},
    {TYPE_E_ELEMENTNOTFOUND, "Element not found"},
    {STG_E_INVALIDFUNCTION, "Invalid function"},
    {STG_E_FILENOTFOUND, "File not found"},
    {HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), "File not found"},
    {MIROLTA_STATUS(0x80030003u), "Path not found"},
    {MIROLTA_STATUS(0x80070003u), "Path not found"},
    {STG_E_TOOMANYOPENFILES, "Too many open files"},
    {STG_E_ACCESSDENIED, "Permission denied"},
    {STG_E_INSUFFICIENTMEMORY, "Out of memory"},
    {STG_E_INVALIDPOINTER, "Invalid pointer"},
    {STG_E_SEEKERROR, "An error occurred during a seek operation"},
    {STG_E_WRITEFAULT, "A disk error occurred during a write operation"},
    {STG_E_READFAULT, "A disk error occurred during a read operation"},
    {STG_E_FILEALREADYEXISTS, "File already exists"},
    {STG_E_INVALIDPARAMETER, "Invalid parameter"},
    {STG_E_MEDIUMFULL, "Disk full"},
    {STG_E_INVALIDFLAG, "Invalid flag"},
    {STG_E_REVERTED, "The object was reverted and is no longer usable"},
    {STG_E_CANTSAVE, "Cannot save"},
    {kInvalidCall, "Invalid procedure call or argument"},
    {kOutOfStack, "Out of stack space"},
    {kSubscriptOutOfRange, "Subscript out of range"},
    {kCannotCreateObject, kCannotCreateText},
    {kBadFileName, "Bad file name or number"},
    {kFileNotFound, "File not found"},
    {kBadFileMode, "Bad file mode"},
    {kFileAlreadyOpen, "File already open"},
    {kDeviceFault, "Device I/O error"},
    {kFileExists, "File already exists"},
    {kDiskFull, "Disk full"},
    {kPastEndOfFile, "Input past end of file"},
    {kTooManyFiles, "Too many files"},
    {kNoSuchDevice, "Device unavailable"},
    {kPermissionDenied, "Permission denied"},
    {kPathFault, "Path/File access error"},
    {kPathNotFound, "Path not found"},
    {kStreamGone, "Object variable not set"},
    {kNoStandardHandle, "The handle is invalid"},
    {kNoSuchMember, kNoSuchMemberText},
    {kNoSuchAction, "Object doesn't support this action"},
    {kNotACollection, "Object not a collection"},
    {kDateExpected, "Date object expected"},
    {kArrayExpected, "VBArray expected"},
    {kEnumeratorExpected, "Enumerator object expected"},
    {kStreamClosed, "The stream is closed"},
    {kDisconnected, "Object is not connected to server"},
};

}  // namespace

const char* StandardText(HRESULT status, const char* otherwise) {
  for (const StatusText& row : kStatusTexts) {
    if (row.status == status) return row.text;
  }
  return otherwise;
}

std::string DescribeStatus(HRESULT status) {
  char number[16];
  snprintf(number, sizeof number, " (0x%08X)", static_cast<unsigned>(status));
  return StandardText(status, "Error without a known text") + std::string(number);
}

}  // namespace mirolta::host
