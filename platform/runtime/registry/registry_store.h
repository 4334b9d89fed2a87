// The registry as this process sees it: a cached copy of the user's file, or a registry in memory
// only, and what is visible below it; for a thread with a batch, a copy of the file that the batch
// changes, with its changes.
#pragma once

#include "portable/registry_mode.h"
#include "registry/registry_change.h"
#include "registry/registry_file.h"
#include "registry/registry_lock.h"

namespace mirolta::runtime {

enum class RegistryAccess : uint8_t {
  kHandles,  // the table of open keys only; there is no Root()
  kRead,
  kWrite,
};

// RegistryUse locks the process's registry and its table of open keys for its lifetime. If Error()
// is 0, Root() is the current content of what is written. A use for writing also holds the file's
// lock. No thread waits for another process or for the disk while it holds the registry.
class RegistryUse {
 public:
  explicit RegistryUse(RegistryAccess access);
  RegistryUse(const RegistryUse&) = delete;
  RegistryUse& operator=(const RegistryUse&) = delete;
  ~RegistryUse();

  LONG Error() const { return error_; }
  RegistryKey* Root() const;
  // Lower returns what is visible below Root(), which stays while the registry is locked; null if
  // there is none, as within a batch.
  // Errors: those of ReadLowerRegistries.
  LONG Lower(RegistryKey** root) const;

  // Make applies a change and writes the file, unless nothing changed. A thread's batch takes the
  // change instead and sets *change to null. The registry is unlocked while the file is written:
  // Root() may differ afterwards.
  // Errors: MakeChange's and those of writing; nothing is changed then.
  LONG Make(RegistryChange** change, bool* changed);
  // MakeAgain applies the changes of a batch and writes the result once.
  // Errors: RepeatChange's and those of writing; nothing is changed then.
  LONG MakeAgain(const RegistryChange* first);

 private:
  LONG Publish(RegistryKey* draft);

  LONG error_ = ERROR_SUCCESS;
  RegistryLock file_lock_;
};

}  // namespace mirolta::runtime
