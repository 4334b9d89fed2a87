#include "mirolta/dispatch.h"
#include "mirolta/system.h"
#include "portable/registry_mode.h"
#include "registry/registry_lookup.h"
#include "texts/characters.h"
#include "texts/guid_text.h"
#include "texts/wide_text.h"

namespace mirolta::runtime {
namespace {

// The subkey of a library's file for each system kind, below version and locale.
struct PlatformName {
  SYSKIND kind;
  LPCWSTR name;
};
constexpr PlatformName kPlatforms[] = {{SYS_WIN32, u"linux32"}, {SYS_WIN64, u"linux64"}};
constexpr LPCWSTR kPlatform = kPlatforms[sizeof(void*) == 8 ? 1 : 0].name;
// The platform's proxy/stub classes for automation interfaces and for pure dispatch interfaces.
constexpr LPCWSTR kAutomationMarshaler = u"{00020424-0000-0000-C000-000000000046}";
constexpr LPCWSTR kDispatchMarshaler = u"{00020420-0000-0000-C000-000000000046}";

// The digits of a number; others may follow.
struct NumberDigits {
  WCHAR text[24] = {};
  size_t length = 0;

  NumberDigits(uint32_t number, uint32_t base) { Append(number, base); }
  void Append(uint32_t number, uint32_t base) {
    uint32_t unit = 1;
    while (number / unit >= base) unit *= base;
    for (; unit != 0; unit /= base) text[length++] = u"0123456789abcdef"[number / unit % base];
  }
};

NumberDigits VersionText(WORD major, WORD minor) {
  NumberDigits version(major, 16);
  version.text[version.length++] = u'.';
  version.Append(minor, 16);
  return version;
}

struct OwnedText {
  OwnedText() = default;
  OwnedText(const OwnedText&) = delete;
  OwnedText& operator=(const OwnedText&) = delete;
  ~OwnedText() { SysFreeString(text); }
  LPCWSTR Get() const { return text == nullptr ? u"" : text; }
  BSTR text = nullptr;
};

HRESULT StatusOf(LONG error) {
  if (error == ERROR_SUCCESS) return S_OK;
  return error == ERROR_OUTOFMEMORY ? E_OUTOFMEMORY : TYPE_E_REGISTRYACCESS;
}

// One value to write: path is `base` and `below`.
struct Row {
  LPCWSTR below;
  LPCWSTR name;
  LPCWSTR text;
};

template <size_t kCount>
LONG WriteRows(LPCWSTR base, const Row (&rows)[kCount]) {
  WideText path;
  for (const Row& row : rows) {
    LONG error = SetText(&path, base, row.below);
    if (error == ERROR_SUCCESS) error = WriteText(path.Data(), row.name, row.text);
    if (error != ERROR_SUCCESS) return error;
  }
  return ERROR_SUCCESS;
}

HRESULT WriteLibrary(const TLIBATTR& attributes, LPCWSTR help, LPCWSTR file, LPCWSTR folder) {
  const NumberDigits version = VersionText(attributes.wMajorVerNum, attributes.wMinorVerNum);
  const NumberDigits flags(attributes.wLibFlags, 10);
  const NumberDigits locale(attributes.lcid, 16);
  const GuidText id(attributes.guid);
  WideText base;
  WideText place;
  LONG error = SetText(&base, u"TypeLib\\", id.text, u"\\", version.text);
  if (error == ERROR_SUCCESS) error = SetText(&place, u"\\", locale.text, u"\\", kPlatform);
  if (error != ERROR_SUCCESS) return StatusOf(error);
  const Row rows[] = {
      {u"", nullptr, help},
      {place.Data(), nullptr, file},
      {u"\\FLAGS", nullptr, flags.text},
      {u"\\HELPDIR", nullptr, folder},
  };
  return StatusOf(WriteRows(base.Data(), rows));
}

HRESULT WriteInterface(const TLIBATTR& library, const TYPEATTR& attributes, LPCWSTR name) {
  const bool automation = (attributes.wTypeFlags & (TYPEFLAG_FDUAL | TYPEFLAG_FOLEAUTOMATION)) != 0;
  const bool marshaled = attributes.typekind == TKIND_DISPATCH ||
                         (attributes.typekind == TKIND_INTERFACE && automation);
  if (!marshaled) return S_OK;
  const LPCWSTR marshaler = automation ? kAutomationMarshaler : kDispatchMarshaler;
  const NumberDigits version = VersionText(library.wMajorVerNum, library.wMinorVerNum);
  const GuidText id(library.guid);
  WideText base;
  const LONG error = SetText(&base, u"Interface\\", GuidText(attributes.guid).text);
  if (error != ERROR_SUCCESS) return StatusOf(error);
  const Row rows[] = {
      {u"", nullptr, name},
      {u"\\ProxyStubClsid", nullptr, marshaler},
      {u"\\ProxyStubClsid32", nullptr, marshaler},
      {u"\\TypeLib", nullptr, id.text},
      {u"\\TypeLib", u"Version", version.text},
  };
  return StatusOf(WriteRows(base.Data(), rows));
}

HRESULT WriteInterfaces(ITypeLib* library, const TLIBATTR& attributes) {
  HRESULT status = S_OK;
  const UINT count = library->GetTypeInfoCount();
  for (UINT i = 0; i < count && SUCCEEDED(status); ++i) {
    ITypeInfo* info = nullptr;
    status = library->GetTypeInfo(i, &info);
    if (FAILED(status)) break;
    OwnedText name;
    TYPEATTR* type = nullptr;
    status = library->GetDocumentation(static_cast<INT>(i), &name.text, nullptr, nullptr, nullptr);
    if (SUCCEEDED(status)) status = info->GetTypeAttr(&type);
    if (SUCCEEDED(status)) {
      status = WriteInterface(attributes, *type, name.Get());
      info->ReleaseTypeAttr(type);
    }
    info->Release();
  }
  return status;
}

// DeleteInterfaces deletes the keys of interfaces that name this version of the library.
LONG DeleteInterfaces(LPCWSTR id, LPCWSTR version) {
  WCHAR name[kKeyNameCapacity];
  WideText path;
  WideText library_path;
  WideText found;
  const auto matches = [&](LPCWSTR value, LPCWSTR wanted) {
    return ReadText(library_path.Data(), value, &found) == ERROR_SUCCESS &&
           found.Size() == WideLength(wanted) + 1 &&
           std::memcmp(found.Data(), wanted, found.Size() * sizeof(WCHAR)) == 0;
  };
  for (DWORD index = 0; SubkeyName(u"Interface", index, name) == ERROR_SUCCESS;) {
    LONG error = SetText(&path, u"Interface\\", name);
    if (error == ERROR_SUCCESS) error = SetText(&library_path, path.Data(), u"\\TypeLib");
    if (error == ERROR_SUCCESS && !(matches(nullptr, id) && matches(u"Version", version))) {
      ++index;
      continue;
    }
    if (error == ERROR_SUCCESS) error = DeleteKeyTree(path.Data());
    if (error != ERROR_SUCCESS) return error;
  }
  return ERROR_SUCCESS;
}

// Deletes TypeLib\{id} if no version is left there.
LONG DeleteIfEmpty(LPCWSTR path) {
  WCHAR name[kKeyNameCapacity];
  const LONG error = SubkeyName(path, 0, name);
  return error == ERROR_NO_MORE_ITEMS ? RegDeleteKeyW(HKEY_CLASSES_ROOT, path) : error;
}

// Whether a version still has a file for any locale and system.
LONG HasFiles(LPCWSTR version_path, bool* has) {
  WCHAR name[kKeyNameCapacity];
  *has = false;
  for (DWORD i = 0; !*has; ++i) {
    const LONG error = SubkeyName(version_path, i, name);
    if (error != ERROR_SUCCESS) return error == ERROR_NO_MORE_ITEMS ? ERROR_SUCCESS : error;
    *has = !EqualsIgnoringAsciiCase(name, u"FLAGS") && !EqualsIgnoringAsciiCase(name, u"HELPDIR");
  }
  return ERROR_SUCCESS;
}

LONG DeleteLibrary(REFGUID library, WORD major, WORD minor, LCID locale, SYSKIND kind) {
  const GuidText id(library);
  const NumberDigits version = VersionText(major, minor);
  const NumberDigits locale_text(locale, 16);
  LPCWSTR platform = nullptr;
  for (const PlatformName& row : kPlatforms) {
    if (row.kind == kind) platform = row.name;
  }
  if (platform == nullptr) return ERROR_FILE_NOT_FOUND;
  WideText base;
  WideText path;
  WideText locale_path;
  WideText file_path;
  LONG error = SetText(&base, u"TypeLib\\", id.text);
  if (error == ERROR_SUCCESS) error = SetText(&path, base.Data(), u"\\", version.text);
  if (error == ERROR_SUCCESS) {
    error = SetText(&locale_path, path.Data(), u"\\", locale_text.text);
  }
  if (error == ERROR_SUCCESS) {
    error = SetText(&file_path, locale_path.Data(), u"\\", platform);
  }
  if (error == ERROR_SUCCESS) {  // is it registered?
    WCHAR name[kKeyNameCapacity];
    error = SubkeyName(file_path.Data(), 0, name);
    if (error == ERROR_NO_MORE_ITEMS) error = ERROR_SUCCESS;
  }
  if (error == ERROR_SUCCESS) error = DeleteKeyTree(file_path.Data());
  if (error == ERROR_SUCCESS) error = DeleteIfEmpty(locale_path.Data());
  // With the last file, what all files of the version share is deleted.
  bool has_files = false;
  if (error == ERROR_SUCCESS) error = HasFiles(path.Data(), &has_files);
  if (error != ERROR_SUCCESS || has_files) return error;
  error = DeleteInterfaces(id.text, version.text);
  if (error == ERROR_SUCCESS) error = DeleteKeyTree(path.Data());
  if (error == ERROR_SUCCESS) error = DeleteIfEmpty(base.Data());
  return error;
}

// Reads "major.minor", both hexadecimal.
bool ParseVersion(LPCWSTR text, uint32_t* major, uint32_t* minor) {
  uint32_t* numbers[] = {major, minor};
  for (unsigned i = 0; i < 2; ++i) {
    unsigned digits = 0;
    uint32_t number = 0;
    for (; digits < 4; ++digits, ++text) {
      const int digit = HexDigitValue(*text);
      if (digit < 0) break;
      number = number << 4 | static_cast<uint32_t>(digit);
    }
    if (digits == 0 || *text != (i == 0 ? u'.' : u'\0')) return false;
    ++text;
    *numbers[i] = number;
  }
  return true;
}

// The registered version with this major number and the highest minor one, not below `minor`.
LONG FindVersion(LPCWSTR base, WORD major, WORD minor, WORD* best) {
  WCHAR name[kKeyNameCapacity];
  bool found = false;
  LONG error;
  for (DWORD i = 0; (error = SubkeyName(base, i, name)) == ERROR_SUCCESS; ++i) {
    uint32_t has_major = 0;
    uint32_t has_minor = 0;
    if (!ParseVersion(name, &has_major, &has_minor) || has_major != major || has_minor < minor) {
      continue;
    }
    if (!found || has_minor > *best) *best = static_cast<WORD>(has_minor);
    found = true;
  }
  if (error != ERROR_NO_MORE_ITEMS) return error;
  return found ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
}

}  // namespace
}  // namespace mirolta::runtime

using namespace mirolta::runtime;

extern "C" HRESULT RegisterTypeLib(ITypeLib* library, OLECHAR* file, OLECHAR* help_directory) {
  if (library == nullptr || file == nullptr) return E_INVALIDARG;
  OwnedText help;
  HRESULT status = library->GetDocumentation(-1, nullptr, &help.text, nullptr, nullptr);
  if (FAILED(status)) return status;
  TLIBATTR* attributes = nullptr;
  status = library->GetLibAttr(&attributes);
  if (FAILED(status)) return status;
  status = StatusOf(MiroltaRegistryBatch(TRUE));
  if (SUCCEEDED(status)) {
    const LPCWSTR folder = help_directory == nullptr ? u"" : help_directory;
    status = WriteLibrary(*attributes, help.Get(), file, folder);
    if (SUCCEEDED(status)) status = WriteInterfaces(library, *attributes);
    const HRESULT written = StatusOf(MiroltaRegistryBatch(FALSE));
    if (SUCCEEDED(status)) status = written;
  }
  library->ReleaseTLibAttr(attributes);
  return status;
}

extern "C" HRESULT UnRegisterTypeLib(REFGUID library, WORD major, WORD minor, LCID locale,
                                     SYSKIND kind) {
  HRESULT status = StatusOf(MiroltaRegistryBatch(TRUE));
  if (FAILED(status)) return status;
  status = StatusOf(DeleteLibrary(library, major, minor, locale, kind));
  const HRESULT written = StatusOf(MiroltaRegistryBatch(FALSE));
  return FAILED(status) ? status : written;
}

extern "C" HRESULT LoadRegTypeLib(REFGUID library, WORD major, WORD minor, LCID locale,
                                  ITypeLib** out) {
  if (out == nullptr) return E_INVALIDARG;
  *out = nullptr;
  WORD found = 0;
  WideText base;
  LONG error = SetText(&base, u"TypeLib\\", GuidText(library).text);
  if (error == ERROR_SUCCESS) error = FindVersion(base.Data(), major, minor, &found);
  // First the locale itself, then its language, then the neutral locale.
  WideText path;
  WideText file;
  for (const LCID wanted : {locale, locale & 0x3FFu, LCID{0}}) {
    if (error != ERROR_SUCCESS) break;
    const NumberDigits version = VersionText(major, found);
    const NumberDigits locale_text(wanted, 16);
    WideText place;
    error = SetText(&place, u"\\", version.text, u"\\", locale_text.text, u"\\");
    if (error == ERROR_SUCCESS) error = SetText(&path, base.Data(), place.Data(), kPlatform);
    if (error != ERROR_SUCCESS) break;
    error = ReadText(path.Data(), nullptr, &file);
    if (error == ERROR_SUCCESS) return LoadTypeLib(file.Data(), out);
    if (error == ERROR_FILE_NOT_FOUND && wanted != 0) error = ERROR_SUCCESS;
  }
  return error == ERROR_FILE_NOT_FOUND ? TYPE_E_LIBNOTREGISTERED : StatusOf(error);
}
