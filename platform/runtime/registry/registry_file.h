// The registry's files: read, and replaced atomically. A reader sees the content before or
// after a change; writers hold the lock of registry_lock.h.
#pragma once

#include <sys/types.h>
#include <time.h>

#include "registry/registry_tree.h"

namespace mirolta::runtime {

// Identifies one state of the file.
struct FileState {
  bool exists = false;
  dev_t device = {};
  ino_t inode = {};
  off_t size = {};
  timespec modified = {};
  timespec changed = {};
};
bool operator==(const FileState& a, const FileState& b);

// StateOf reads the state of the file; that it does not exist is a state.
// Errors: ERROR_ACCESS_DENIED, ERROR_OUTOFMEMORY, ERROR_CANTREAD.
LONG StateOf(const char* file, FileState* state);

// LoadRegistryFile reads the file into the empty key `root`; a file that does not exist leaves it
// empty.
// Errors: ERROR_BADDB with the malformed line; ERROR_ACCESS_DENIED, also for a file that others can
//         change (file_trust.h); ERROR_OUTOFMEMORY; ERROR_CANTREAD for anything but a regular file
//         and for other failures to read.
LONG LoadRegistryFile(const char* file, RegistryKey* root, FileState* state, DWORD* bad_line);

// StoreRegistryFile writes a new file and renames it over the old one, or over the target of a
// symbolic link. The file is synced before it is renamed: a crash leaves the old content or the
// new. The new file has the old one's mode; without one, that of the process's umask or, `for_all`,
// one with which everybody can read it.
// Errors: ERROR_ACCESS_DENIED, ERROR_WRITE_PROTECT, ERROR_OUTOFMEMORY, ERROR_DISK_FULL,
//         ERROR_CANTWRITE; the old file is then unchanged.
LONG StoreRegistryFile(const char* file, const RegistryKey& root, bool for_all, FileState* state);

}  // namespace mirolta::runtime
