#include "registry/registry_name.h"

#include <locale.h>
#include <wctype.h>

#include "texts/characters.h"

namespace mirolta::runtime {
namespace {

// Folds letters of all scripts, in any locale of the process; without the C.UTF-8 locale, of ASCII.
WCHAR Folded(WCHAR c) {
  if (c < 0x80) return LowerAscii(c);
  static const locale_t locale =
      newlocale(LC_CTYPE_MASK, "C.UTF-8", static_cast<locale_t>(nullptr));
  if (locale == static_cast<locale_t>(nullptr)) return c;
  const wint_t folded = towlower_l(towupper_l(c, locale), locale);
  return folded <= 0xFFFF ? static_cast<WCHAR>(folded) : c;
}

}  // namespace

bool SameRegistryName(WideView a, WideView b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (a[i] != b[i] && Folded(a[i]) != Folded(b[i])) return false;
  }
  return true;
}

uint32_t RegistryNameHash(WideView name) {
  uint32_t hash = 2166136261u;
  for (const WCHAR c : name) hash = (hash ^ Folded(c)) * 16777619u;
  return hash;
}

bool TakeName(WideView* path, WideView* name) {
  size_t begin = 0;
  while (begin != path->size() && (*path)[begin] == u'\\') ++begin;
  size_t end = begin;
  while (end != path->size() && (*path)[end] != u'\\') ++end;
  *name = WideView(path->data() + begin, end - begin);
  path->remove_prefix(end);
  return !name->empty();
}

bool HasControls(WideView name) {
  for (const WCHAR c : name) {
    if (c < 0x20) return true;
  }
  return false;
}

}  // namespace mirolta::runtime
