// An object of mirolta.hpp comes from the registered module if there is one, else from the program's
// own: prints which, by asking the own one whether it has any objects.
#include <cstdio>
#include <mirolta.hpp>

int main() {
  const mirolta::Apartment apartment;
  const char* const before = DllCanUnloadNow() == S_OK ? "" : "objects before; ";
  const auto hash = mirolta::Hash<>::TryCreate("none");
  const mirolta::Number number = 5;
  std::printf("%s%s, source [%s], %s\n", before, DllCanUnloadNow() == S_OK ? "registered" : "own",
              hash.Failure().Source().c_str(), (number + 1).ToText().c_str());
  return 0;
}
