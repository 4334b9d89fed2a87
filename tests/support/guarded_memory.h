// Memory beside a page without access: a read or write beyond it ends the test.
#pragma once

#include <gtest/gtest.h>
#ifdef _WIN32
  #include "platform.h"
#else
  #include <sys/mman.h>
  #include <unistd.h>
#endif

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace mirolta::test {

enum class Guard {
  kBefore,  // the memory starts where a page does
  kBehind,  // the memory ends where a page does
};

class GuardedMemory {
 public:
  GuardedMemory(Guard guard, size_t size) {
    const size_t page = PageSize();
    const size_t room = (size + page - 1) / page * page;
    Map(page, room);
    if (map_ == nullptr) {
      ADD_FAILURE() << "no memory";
      return;
    }
    data_ = map_ + page + (guard == Guard::kBehind ? room - size : 0);
  }
  GuardedMemory(const GuardedMemory&) = delete;
  GuardedMemory& operator=(const GuardedMemory&) = delete;
  ~GuardedMemory() {
    if (map_ == nullptr) return;
#ifdef _WIN32
    VirtualFree(map_, 0, MEM_RELEASE);
#else
    munmap(map_, mapped_);
#endif
  }

  uint8_t* data() const { return data_; }

  // As a copy of a value, or of values, for which the memory has the size and alignment.
  template <typename T>
  T* Copy(const T* values, size_t count = 1) const {
    if (count != 0) std::memcpy(data_, values, count * sizeof(T));
    EXPECT_EQ(reinterpret_cast<uintptr_t>(data_) % alignof(T), 0u);
    return static_cast<T*>(static_cast<void*>(data_));
  }

 private:
#ifdef _WIN32
  static size_t PageSize() {
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    return info.dwPageSize;
  }
  void Map(size_t page, size_t room) {
    void* const map = VirtualAlloc(nullptr, room + 2 * page, MEM_RESERVE, PAGE_NOACCESS);
    if (map == nullptr) return;
    map_ = static_cast<uint8_t*>(map);
    if (room == 0) return;
    EXPECT_NE(VirtualAlloc(map_ + page, room, MEM_COMMIT, PAGE_READWRITE), nullptr);
  }
#else
  static size_t PageSize() { return static_cast<size_t>(sysconf(_SC_PAGESIZE)); }
  void Map(size_t page, size_t room) {
    mapped_ = room + 2 * page;
    void* const map =
        mmap(nullptr, mapped_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, /*fd=*/-1, /*offset=*/0);
    if (map == MAP_FAILED) return;
    map_ = static_cast<uint8_t*>(map);
    if (room == 0) return;
    EXPECT_EQ(mprotect(map_ + page, room, PROT_READ | PROT_WRITE), 0);
  }
  size_t mapped_ = 0;
#endif

  uint8_t* map_ = nullptr;
  uint8_t* data_ = nullptr;
};

}  // namespace mirolta::test
