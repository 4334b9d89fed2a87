// The streams of files that scripts open: the system's stream, which also knows the name that the
// script gave. An operation that fails notes the name, so that an error names the right file when
// several streams work for one call.
#pragma once

#include <memory>
#include <string>

#include "engine/engine_api.h"
#include "files/output_file.h"

namespace mirolta::host {

struct FileMode {
  DWORD access;              // STGM_READ, STGM_WRITE or STGM_READWRITE
  bool makes_file = false;   // what is there is replaced, once the stream is closed
  bool must_be_new = false;  // with makes_file
};

// OpenFileStream opens the file of the engine's text `name`. A folder, pipe or device is opened as
// it is, also by a mode that makes files.
[[nodiscard]] HRESULT OpenFileStream(const std::string& name, const FileMode& mode, bool is_private,
                                     Reference<IStream>* stream);

// OutputOf returns the output that a stream writes, null if it is none or a file in place. It lives
// as long as the stream.
OutputFile* OutputOf(IStream* stream);

// The last file whose operation failed since ForgetFileFailure; "" if there is none.
void ForgetFileFailure();
const std::string& FailedFileName();

}  // namespace mirolta::host
