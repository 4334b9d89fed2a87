// The registry as this process sees it: the file's content kept in memory for as long as the file
// does not change, or a registry in memory only; and for a thread that collects changes, what they
// make of it.
#pragma once

#include "portable/registry_mode.h"
#include "registry/registry_change.h"
#include "registry/registry_file.h"
#include "registry/registry_lock.h"

namespace mirolta::runtime {

enum class RegistryAccess : uint8_t {
  kHandles,  // the table of open keys only; there is no root()
  kRead,
  kWrite,
};

// RegistryUse holds the process's registry, its table of open keys included, from its making to its
// end. After error() is 0, root() holds the current content. A use for writing holds the file's
// lock too. Nobody waits for another process or for the disk while holding the registry.
class RegistryUse {
 public:
  explicit RegistryUse(RegistryAccess access);
  RegistryUse(const RegistryUse&) = delete;
  RegistryUse& operator=(const RegistryUse&) = delete;
  ~RegistryUse();

  LONG error() const { return error_; }
  RegistryKey* root() const;

  // Make makes a change and writes it, unless it changes nothing; a thread's batch collects it,
  // taking it over and leaving null. The registry is not held while it is written: root() may be
  // another one afterwards.
  // Errors: MakeChange's and those of writing, with nothing changed.
  LONG Make(RegistryChange** change, bool* changed);
  // MakeAgain repeats a batch's changes and writes the result at once.
  LONG MakeAgain(const RegistryChange* first);

 private:
  LONG Publish(RegistryKey* draft);

  LONG error_ = ERROR_SUCCESS;
  RegistryLock file_lock_;
};

}  // namespace mirolta::runtime
