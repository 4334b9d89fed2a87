// What the memory checkers must report: `read` branches on a byte that nothing has written, `leak` loses the
// only pointer to a block.
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

// Opaque to compilers, which would warn of both faults or remove them.
void* (*volatile allocate)(size_t) = std::malloc;

bool ReadUnwritten() {
  auto* const bytes = static_cast<unsigned char*>(allocate(16));
  const bool is_set = bytes[3] != 0;
  std::free(bytes);
  return is_set;
}

bool Leak() {
  return allocate(100) != nullptr;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view fault = argc == 2 ? argv[1] : "";
  if (fault != "read" && fault != "leak") return 2;
  if (fault == "read" ? ReadUnwritten() : Leak()) std::puts("done");
  return 0;
}
