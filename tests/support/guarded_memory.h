// Memory whose neighbour cannot be touched: a read or write beyond it ends the test.
#pragma once

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

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
    const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    const size_t room = (size + page - 1) / page * page;
    mapped_ = room + 2 * page;
    void* const map =
        mmap(nullptr, mapped_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, /*fd=*/-1, /*offset=*/0);
    if (map == MAP_FAILED) {
      ADD_FAILURE() << "no memory";
      return;
    }
    map_ = static_cast<uint8_t*>(map);
    EXPECT_EQ(mprotect(map_ + page, room, PROT_READ | PROT_WRITE), 0);
    data_ = map_ + page + (guard == Guard::kBehind ? room - size : 0);
  }
  GuardedMemory(const GuardedMemory&) = delete;
  GuardedMemory& operator=(const GuardedMemory&) = delete;
  ~GuardedMemory() {
    if (map_ != nullptr) munmap(map_, mapped_);
  }

  uint8_t* data() const { return data_; }

  // As a copy of a value, or of values, for which the memory has the size and alignment.
  template <typename T>
  T* Copy(const T* values, size_t count = 1) const {
    if (count != 0) std::memcpy(data_, values, count * sizeof(T));
    return reinterpret_cast<T*>(data_);
  }

 private:
  uint8_t* map_ = nullptr;
  uint8_t* data_ = nullptr;
  size_t mapped_ = 0;
};

}  // namespace mirolta::test
