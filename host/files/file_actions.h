// Copying, moving and deleting files and folders. All throw CallError with the number of what
// failed, and std::bad_alloc; what was done before stays done.
#pragma once

#include <string>

namespace mirolta::host {

// CopyOneFile copies a regular file with its permissions and time of change. The target is the old
// file or the whole copy at any time; a link stays, and the file that it leads to is replaced.
// Errors: kFileExists if the target exists and may not be overwritten; kPermissionDenied for a
//         target that is a folder, read-only or the source itself, and for a source that is no file.
void CopyOneFile(const std::string& source, const std::string& target, bool overwrites);
// CopyOneFolder copies the content of a folder into the target, which is made if it is missing.
// Links in the folder are copied as links.
// Errors: as CopyOneFile, for the files; kPermissionDenied if the target lies in the source.
void CopyOneFolder(const std::string& source, const std::string& target, bool overwrites);

// MoveOne renames a file, link or folder. To another file system it is copied, and deleted when the
// copy is whole; a copy that fails is removed.
// Errors: kFileExists if the target exists.
void MoveOne(const std::string& source, const std::string& target);

// DeleteOneFile deletes a file or link. DeleteOneFolder deletes a folder with its content; of a link
// to a folder, and of links in the folder, only the links.
// Errors: kPermissionDenied for a read-only file unless `force`.
void DeleteOneFile(const std::string& path, bool force);
void DeleteOneFolder(const std::string& path, bool force);

}  // namespace mirolta::host
