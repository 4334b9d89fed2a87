// Runs a harness once on each file of the given folders, the corpus, and fails if there is none.
// Without a compiler's fuzzer it also tries mutations of the files, the same in every run.
#include <dirent.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>

#include "fuzz_input.h"

namespace {

using mirolta::fuzz::Bytes;

#ifdef MIROLTA_SLOW_BUILD
constexpr int kChangesOfEach = 5;
#else
constexpr int kChangesOfEach = 40;
#endif

uint32_t state = 1;
uint32_t Next() {
  state = state * 1664525u + 1013904223u;
  return state >> 8;
}

void Change(Bytes* bytes) {
  for (uint32_t i = Next() % 4; i-- > 0 && !bytes->empty();) {
    const size_t at = Next() % bytes->size();
    switch (Next() % 4) {
      case 0:
        (*bytes)[at] = static_cast<uint8_t>(Next());
        break;
      case 1:
        (*bytes)[at] = static_cast<uint8_t>((*bytes)[at] ^ 1u << Next() % 8);
        break;
      case 2:
        bytes->erase(bytes->begin() + static_cast<std::ptrdiff_t>(at));
        break;
      default:
        bytes->insert(bytes->begin() + static_cast<std::ptrdiff_t>(at),
                      static_cast<uint8_t>(Next()));
        break;
    }
  }
}

}  // namespace

int main(int count, char** words) {
  long runs = 0;
  for (int i = 1; i < count; ++i) {
    DIR* const folder = opendir(words[i]);
    if (folder == nullptr) {
      std::fprintf(stderr, "%s cannot be read\n", words[i]);
      return 1;
    }
    std::vector<std::string> names;
    while (const dirent* entry = readdir(folder)) {
      if (entry->d_name[0] != '.') names.push_back(entry->d_name);
    }
    closedir(folder);
    std::sort(names.begin(), names.end());
    for (const std::string& name : names) {
      std::ifstream in(std::string(words[i]) + "/" + name, std::ios::binary);
      const Bytes bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
      for (int change = 0; change <= kChangesOfEach; ++change) {
        Bytes input = bytes;
        if (change != 0) Change(&input);
        LLVMFuzzerTestOneInput(input.data(), input.size());
        ++runs;
      }
    }
  }
  std::printf("%ld inputs\n", runs);
  return runs == 0 ? 1 : 0;
}
