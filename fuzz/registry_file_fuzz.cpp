// Any bytes as the registry file: refused with a line number, or read, written and read again
// without a change.
#include <cstring>

#include "fuzz_input.h"
#include "registry/registry_text.h"

using namespace mirolta;
using namespace mirolta::runtime;
using namespace mirolta::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  RegistryKey root;
  DWORD line = 0;
  const LONG error = ParseRegistry(reinterpret_cast<const char*>(data), size, &root, &line);
  FUZZ_CHECK(error == ERROR_SUCCESS || error == ERROR_BADDB);
  if (error == ERROR_BADDB) {
    FUZZ_CHECK(line >= 1 && line <= size + 1);
    return 0;
  }
  RuntimeArray<char> text;
  FUZZ_CHECK(FormatRegistry(root, &text));
  RegistryKey again;
  FUZZ_CHECK(ParseRegistry(text.Data(), text.Size(), &again, &line) == ERROR_SUCCESS);
  RuntimeArray<char> second;
  FUZZ_CHECK(FormatRegistry(again, &second));
  FUZZ_CHECK(text.Size() == second.Size() &&
             (text.Size() == 0 || std::memcmp(text.Data(), second.Data(), text.Size()) == 0));
  return 0;
}
