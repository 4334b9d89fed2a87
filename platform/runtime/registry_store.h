// The registry as this process sees it: the file's content kept in memory for as long as the file
// does not change, or a registry in memory only.
#pragma once

#include "portable/registry_mode.h"
#include "registry_tree.h"

namespace mirolta {

enum class RegistryAccess : uint8_t {
  kHandles,  // the table of open keys only; there is no root()
  kRead,
  kWrite,
};

// RegistryUse holds the process's registry from its making to its end. After error() is 0, root()
// holds the current content. A use for writing holds the file's lock too.
class RegistryUse {
 public:
  explicit RegistryUse(RegistryAccess access);
  RegistryUse(const RegistryUse&) = delete;
  RegistryUse& operator=(const RegistryUse&) = delete;
  ~RegistryUse();

  LONG error() const { return error_; }
  RegistryKey* root() const;

  // Writes the change that was made. Errors: why it could not be written; the registry is then what
  // the file says again.
  LONG Store();

 private:
  LONG error_;
  const RegistryAccess access_;
};

}  // namespace mirolta
