#include "system/file_trust.h"

#include <sys/auxv.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>

namespace mirolta::runtime {

bool HasBorrowedRights() {
  return getauxval(AT_SECURE) != 0;
}

bool IsTrusted(const struct stat& facts) {
  const bool ours = facts.st_uid == 0 || facts.st_uid == geteuid();
  return ours && (facts.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

HRESULT ResolveTrusted(const char* file, RuntimeArray<char>* resolved) {
  if (file[0] != '/') return E_ACCESSDENIED;
  char name[PATH_MAX];
  if (realpath(file, name) == nullptr) return CO_E_DLLNOTFOUND;
  const size_t length = std::strlen(name);
  if (!resolved->Append(name, length + 1)) return E_OUTOFMEMORY;
  // The file, then each folder up to the outermost one.
  for (size_t end = length; end != 0;) {
    name[end] = 0;
    struct stat facts = {};
    if (stat(name, &facts) != 0 || !IsTrusted(facts)) return E_ACCESSDENIED;
    do {
      --end;
    } while (name[end] != '/');
  }
  struct stat facts = {};
  return stat("/", &facts) == 0 && IsTrusted(facts) ? S_OK : E_ACCESSDENIED;
}

}  // namespace mirolta::runtime
