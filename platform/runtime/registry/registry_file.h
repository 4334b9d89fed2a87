// The registry's file: found, read, and replaced as a whole. A reader sees either what stood there
// before a change or what stands there after it; writers take turns by a lock on a file beside it.
#pragma once

#include <sys/types.h>
#include <time.h>

#include "registry/registry_tree.h"

namespace mirolta::runtime {

// What tells one state of the file from another.
struct FileState {
  bool exists = false;
  dev_t device = 0;
  ino_t inode = 0;
  off_t size = 0;
  timespec modified = {};
  timespec changed = {};
};
bool operator==(const FileState& a, const FileState& b);

// NameRegistryFile sets the empty *file to the name of the user's file with a terminator: what
// MIROLTA_REGISTRY says, else mirolta/registry.reg in XDG_DATA_HOME or in .local/share of the home
// folder. A process with rights that its user does not have has no such file.
// Errors: ERROR_OUTOFMEMORY; ERROR_FILE_NOT_FOUND if there is none.
LONG NameRegistryFile(RuntimeArray<char>* file);

// StateOf looks at the file. Errors: any but that it does not exist.
LONG StateOf(const char* file, FileState* state);

// LoadRegistryFile reads the file into the empty key `root`; one that does not exist leaves it
// empty.
// Errors: ERROR_BADDB with the offending line; ERROR_ACCESS_DENIED, also for a file that others can
//         change (file_trust.h); ERROR_OUTOFMEMORY; ERROR_CANTREAD for what is no file and what
//         else keeps it from being read.
LONG LoadRegistryFile(const char* file, RegistryKey* root, FileState* state, DWORD* bad_line);

// StoreRegistryFile puts a new file in the old one's place, or in the place that a link leads to.
// It is on the disk before it takes the place, so a crash leaves the one or the other.
// Errors: ERROR_ACCESS_DENIED, ERROR_OUTOFMEMORY, ERROR_DISK_FULL, ERROR_CANTWRITE; the old file then
//         stands untouched.
LONG StoreRegistryFile(const char* file, const RegistryKey& root, FileState* state);

}  // namespace mirolta::runtime
