// Paths of registry keys: keys made, found and removed beside a list of the paths that exist.
#include <algorithm>
#include <string>
#include <vector>

#include "fuzz_input.h"
#include "registry/registry_name.h"
#include "registry/registry_tree.h"

using namespace mirolta::fuzz;
using namespace mirolta::runtime;

namespace {

using Path = std::vector<std::u16string>;

// Characters between which names differ: letters of two cases, a control character, few others.
std::u16string NextText(FuzzInput& in) {
  constexpr char16_t kCharacters[] = u"aAbBxX\\\\\\\x01\x00e9\x00c9 ";
  std::u16string text;
  const size_t count = in.Byte() % 12;
  const size_t copies = in.Byte() == 0xFF ? 60 : 1;  // beyond the longest name
  while (text.size() < count * copies) {
    text.append(copies, kCharacters[in.Byte() % (std::size(kCharacters) - 1)]);
  }
  return text;
}

char16_t Lower(char16_t c) {
  if (c == u'\x00c9') return u'\x00e9';
  return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c - u'A' + u'a') : c;
}

Path Split(const std::u16string& text) {
  Path path;
  std::u16string name;
  for (const char16_t c : text + u"\\") {
    if (c != u'\\') {
      name += Lower(c);
    } else if (!name.empty()) {
      path.push_back(name);
      name.clear();
    }
  }
  return path;
}

bool IsAllowed(const Path& path) {
  return std::all_of(path.begin(), path.end(), [](const std::u16string& name) {
    return name.size() <= kLongestKeyName && name.find(u'\x01') == name.npos;
  });
}

bool StartsWith(const Path& path, const Path& start) {
  return path.size() >= start.size() && std::equal(start.begin(), start.end(), path.begin());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzInput in(data, size);
  RegistryKey root;
  std::vector<Path> keys = {{}};
  const auto exists = [&](const Path& path) {
    return std::find(keys.begin(), keys.end(), path) != keys.end();
  };
  while (!in.IsEmpty()) {
    const uint8_t what = in.Byte();
    const std::u16string text = NextText(in);
    const Path path = Split(text);
    RegistryKey* const found = root.FindPath(text);
    FUZZ_CHECK((found != nullptr) == exists(path));
    if (found != nullptr && !path.empty()) {
      FUZZ_CHECK(SameRegistryName(found->Name(), path.back()) &&
                 RegistryNameHash(found->Name()) == RegistryNameHash(path.back()));
    }
    if (what % 4 == 0 && found != nullptr && found != &root) {
      found->Parent()->RemoveChild(found);
      std::erase_if(keys, [&](const Path& one) { return StartsWith(one, path); });
    } else if (what % 4 != 1) {
      RegistryKey* key = nullptr;
      bool made = false;
      const LONG error = root.MakePath(text, &key, &made);
      FUZZ_CHECK(error == (IsAllowed(path) ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER));
      if (error != ERROR_SUCCESS) continue;
      FUZZ_CHECK(key == root.FindPath(text) && made == (found == nullptr));
      for (Path part; part.size() < path.size();) {
        part.push_back(path[part.size()]);
        if (!exists(part)) keys.push_back(part);
      }
    }
  }
  for (const Path& path : keys) {
    std::u16string text;
    for (const std::u16string& name : path) text += name + u"\\";
    RegistryKey* const key = root.FindPath(text);
    FUZZ_CHECK(key != nullptr);
    const auto is_child = [&](const Path& one) {
      return one.size() == path.size() + 1 && StartsWith(one, path);
    };
    FUZZ_CHECK(key->ChildCount() ==
               static_cast<size_t>(std::count_if(keys.begin(), keys.end(), is_child)));
  }
  return 0;
}
