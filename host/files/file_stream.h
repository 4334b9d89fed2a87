// File streams of scripts: the system's stream together with the name that the script gave. A
// failed operation records that name, so that an error names the right file when a call involves
// several streams.
#pragma once

#include <memory>
#include <string>

#include "engine/engine_api.h"
#include "files/output_file.h"

namespace mirolta::host {

struct FileMode {
  DWORD access;              // STGM_READ, STGM_WRITE or STGM_READWRITE
  bool makes_file = false;   // an existing file is replaced when the stream is closed
  bool must_be_new = false;  // with makes_file: fails if the file exists
};

// OpenFileStream opens a file. A folder, pipe or device is opened in place, whatever the mode.
// Shapes: `name` is in the engine's form of text.
// Errors: STG_E_FILENOTFOUND for an empty name and for one with a zero, STG_E_FILEALREADYEXISTS if
//         the file must be new and exists, the system's status; std::bad_alloc.
[[nodiscard]] HRESULT OpenFileStream(const std::string& name, const FileMode& mode, bool is_private,
                                     OwnedReference<IStream>* stream);

// OutputOf returns the output file of a stream, null for other streams and for a file written in
// place. It is valid while the stream lives.
OutputFile* OutputOf(IStream* stream);

// IsFileStream returns true for the streams that OpenFileStream opens. Their Read returns S_FALSE at the end of
// the file.
bool IsFileStream(IStream* stream);

// FailedFileName returns the name of the file whose operation failed last since ForgetFileFailure,
// "" if none did.
void ForgetFileFailure();
const std::string& FailedFileName();

}  // namespace mirolta::host
