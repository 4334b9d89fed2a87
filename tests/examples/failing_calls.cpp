// A library to preload: makes calls of the system fail as a broken disk does.
//   FAIL_FSYNC=1        fsync finds the disk full
//   FAIL_READ_AFTER=n   reads fail once n bytes were read
#include <dlfcn.h>
#include <errno.h>
#include <stdlib.h>
#include <unistd.h>

extern "C" int fsync(int file) {
  if (getenv("FAIL_FSYNC") != nullptr) {
    errno = ENOSPC;
    return -1;
  }
  using Function = int (*)(int);
  static const auto next = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "fsync"));
  return next(file);
}

extern "C" ssize_t read(int file, void* bytes, size_t count) {
  static long long done = 0;
  const char* most = getenv("FAIL_READ_AFTER");
  if (most != nullptr && done > atoll(most)) {
    errno = EIO;
    return -1;
  }
  using Function = ssize_t (*)(int, void*, size_t);
  static const auto next = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "read"));
  const ssize_t got = next(file, bytes, most != nullptr && count > 65536 ? 65536 : count);
  if (got > 0) done += got;
  return got;
}
