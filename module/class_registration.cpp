#include "class_registration.h"

#include "mirolta.h"
#include "module_state.h"

namespace mirolta {

namespace {

constexpr INT kGuidCapacity = 39;
constexpr unsigned kPathCapacity = 160;

// A registry path put together from pieces; every path here is far below the capacity.
class KeyPath {
 public:
  KeyPath(const OLECHAR* first, const OLECHAR* second = nullptr, const OLECHAR* third = nullptr) {
    Append(first);
    Append(second);
    Append(third);
  }
  const OLECHAR* text() const { return text_; }

 private:
  void Append(const OLECHAR* piece) {
    if (piece == nullptr) return;
    if (length_ > 0) Put(OLESTR('\\'));
    while (*piece != 0) Put(*piece++);
    text_[length_] = 0;
  }
  void Put(OLECHAR c) {
    if (length_ + 1 < kPathCapacity) text_[length_++] = c;
  }

  OLECHAR text_[kPathCapacity] = {};
  unsigned length_ = 0;
};

DWORD TextSize(const OLECHAR* text) {
  DWORD length = 0;
  while (text[length] != 0) ++length;
  return (length + 1) * static_cast<DWORD>(sizeof(OLECHAR));
}

LONG WriteValue(const KeyPath& path, const OLECHAR* name, const OLECHAR* value) {
  HKEY key = nullptr;
  LONG error = RegCreateKeyExW(HKEY_CLASSES_ROOT, path.text(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                               KEY_WRITE, nullptr, &key, nullptr);
  if (error != ERROR_SUCCESS) return error;
  error = value == nullptr ? ERROR_SUCCESS
                           : RegSetValueExW(key, name, 0, REG_SZ,
                                            reinterpret_cast<const BYTE*>(value), TextSize(value));
  RegCloseKey(key);
  return error;
}

// One value of a class's registration; a null value makes just the key.
struct Entry {
  KeyPath path;
  const OLECHAR* name;
  const OLECHAR* value;
};

LONG Write(const Entry* entries, unsigned count) {
  for (unsigned i = 0; i < count; ++i) {
    const LONG error = WriteValue(entries[i].path, entries[i].name, entries[i].value);
    if (error != ERROR_SUCCESS) return error;
  }
  return ERROR_SUCCESS;
}

void Remove(const Entry* entries, unsigned count) {
  // Backwards, so that subkeys go before the keys that hold them; some entries share a key.
  while (count-- > 0) RegDeleteKeyW(HKEY_CLASSES_ROOT, entries[count].path.text());
}

}  // namespace

HRESULT UpdateRegistry(const ClassRow& row, bool registers) {
  OLECHAR id[kGuidCapacity];
  OLECHAR library[kGuidCapacity];
  OLECHAR file[MAX_PATH + 1];
  if (StringFromGUID2(*row.id, id, kGuidCapacity) == 0 ||
      StringFromGUID2(LIBID_MIROLTALib, library, kGuidCapacity) == 0 || !ModuleFileName(file)) {
    return E_FAIL;
  }
  const OLECHAR* const kClasses = OLESTR("CLSID");
  const Entry entries[] = {
      {{row.prog_id}, nullptr, row.description},
      {{row.prog_id, OLESTR("CLSID")}, nullptr, id},
      {{row.version_independent_prog_id}, nullptr, row.description},
      {{row.version_independent_prog_id, OLESTR("CLSID")}, nullptr, id},
      {{row.version_independent_prog_id, OLESTR("CurVer")}, nullptr, row.prog_id},
      {{kClasses, id}, nullptr, row.description},
      {{kClasses, id, OLESTR("ProgID")}, nullptr, row.prog_id},
      {{kClasses, id, OLESTR("VersionIndependentProgID")},
       nullptr,
       row.version_independent_prog_id},
      {{kClasses, id, OLESTR("Programmable")}, nullptr, nullptr},
      {{kClasses, id, OLESTR("InprocServer32")}, nullptr, file},
      {{kClasses, id, OLESTR("InprocServer32")}, OLESTR("ThreadingModel"), row.threading_model},
      {{kClasses, id, OLESTR("TypeLib")}, nullptr, library},
  };
  constexpr unsigned kCount = sizeof(entries) / sizeof(entries[0]);
  if (registers) return HRESULT_FROM_WIN32(Write(entries, kCount));
  Remove(entries, kCount);
  return S_OK;
}

HRESULT RegisterModule() {
  for (const ClassRow* row = ClassTable(); row->id != nullptr; ++row) {
    const HRESULT status = row->update_registry(*row, true);
    if (FAILED(status)) return status;
  }
  return S_OK;
}

HRESULT UnregisterModule() {
  for (const ClassRow* row = ClassTable(); row->id != nullptr; ++row) {
    row->update_registry(*row, false);
  }
  return S_OK;
}

}  // namespace mirolta
