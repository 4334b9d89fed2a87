// The module's registration as rows of the installer: those that its registry scripts describe,
// and those of RegisterTypeLib.
#include <string>
#include <string_view>

#include "definition_files.h"
#include "registry_resources.h"
#include "registry_script.h"
#include "type_library_table.h"

namespace mirolta {

namespace {

// The system's marshaler of automation interfaces.
constexpr const OLECHAR* kAutomationMarshaler = OLESTR("{00020424-0000-0000-C000-000000000046}");

using Text = std::basic_string<OLECHAR>;

Text Widen(std::string_view text) {
  return {text.begin(), text.end()};
}

Text GuidText(const GUID& id) {
  OLECHAR text[39] = {};
  StringFromGUID2(id, text, 39);
  return text;
}

// Registration writes the numbers in hexadecimal; each is one digit.
Text VersionText() {
  return {static_cast<OLECHAR>('0' + kTypeLibraryTable.major), OLECHAR{'.'},
          static_cast<OLECHAR>('0' + kTypeLibraryTable.minor)};
}

// The separators of a key need no escape here, unlike in the other files.
void WriteKeyName(FILE* out, const Text& key) {
  size_t start = 0;
  for (size_t end; (end = key.find(OLECHAR{'\\'}, start)) != Text::npos; start = end + 1) {
    WriteText(out, key.substr(start, end - start).c_str());
    fputc('\\', out);
  }
  WriteText(out, key.substr(start).c_str());
}

class Rows final : public RegistryAction {
 public:
  explicit Rows(FILE* out) : out_(out) {}

  // `name` is null for the key's default value.
  void WriteValue(const Text& key, const OLECHAR* name, const Text& text) {
    fputs("  <RegistryValue Root=\"HKCR\" Key=\"", out_);
    WriteKeyName(out_, key);
    if (name != nullptr) {
      fputs("\" Name=\"", out_);
      WriteText(out_, name);
    }
    fputs("\" Type=\"string\" Value=\"", out_);
    WriteText(out_, text.c_str());
    fputs("\"/>\n", out_);
  }

  // Creates a key that removal deletes with all that is in it.
  void WriteOwnKey(const Text& key) { WriteValue(key, OLESTR("*"), Text()); }

  HRESULT EnterKey(HKEY parent, const OLECHAR* name, KeyRule rule, const OLECHAR* value,
                   HKEY* key) override {
    if (!path_.empty()) path_ += OLESTR("\\");
    path_ += name;
    *key = parent;
    if (rule == KeyRule::kForceRemove) WriteOwnKey(path_);
    if (value != nullptr) WriteValue(path_, nullptr, value);
    return S_OK;
  }

  HRESULT LeaveKey(HKEY, const OLECHAR*, KeyRule, HKEY) override {
    const size_t separator = path_.rfind(OLECHAR{'\\'});
    path_.resize(separator == Text::npos ? 0 : separator);
    return S_OK;
  }

  HRESULT Value(HKEY, const OLECHAR* name, const OLECHAR* text) override {
    WriteValue(path_, name, text);
    return S_OK;
  }

 private:
  FILE* const out_;
  Text path_;
};

void WriteTypeLibrary(Rows& rows, const InstalledModule& module, const Text& file) {
  const Text library = GuidText(*kTypeLibraryTable.id);
  const Text key = OLESTR("TypeLib\\") + library + OLESTR("\\") + VersionText();
  rows.WriteValue(key, nullptr, kTypeLibraryTable.help);
  rows.WriteValue(key + OLESTR("\\0\\") + Widen(module.system), nullptr, file);
  rows.WriteValue(key + OLESTR("\\FLAGS"), nullptr, OLESTR("0"));
  rows.WriteValue(key + OLESTR("\\HELPDIR"), nullptr,
                  OLESTR("[") + Widen(module.folder) + OLESTR("]"));
  for (unsigned i = 0; i < kTypeLibraryTable.interface_count; ++i) {
    const InterfaceTable& table = *kTypeLibraryTable.interfaces[i];
    const Text interface_key = OLESTR("Interface\\") + GuidText(*table.iid);
    rows.WriteValue(interface_key, nullptr, table.name);
    for (const OLECHAR* name : {OLESTR("\\ProxyStubClsid"), OLESTR("\\ProxyStubClsid32")}) {
      rows.WriteValue(interface_key + name, nullptr, kAutomationMarshaler);
    }
    rows.WriteValue(interface_key + OLESTR("\\TypeLib"), nullptr, library);
    rows.WriteValue(interface_key + OLESTR("\\TypeLib"), OLESTR("Version"), VersionText());
  }
}

}  // namespace

bool WriteInstallerRegistration(FILE* out, const InstalledModule& module) {
  // The installer replaces the identifiers by paths.
  const Text file = OLESTR("[#") + Widen(module.file) + OLESTR("]");
  fputs("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Include>\n", out);
  Rows rows(out);
  for (const DataResource& script : kRegistryScripts) {
    if (FAILED(RunRegistryScript(script.bytes, script.size, file.c_str(), rows))) return false;
  }
  WriteTypeLibrary(rows, module, file);
  fputs("</Include>\n", out);
  return true;
}

}  // namespace mirolta
