#include "registry_resources.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

#include "class_rows.h"

namespace mirolta {

namespace {

// The script of one row; <NAME> stands for a field of the row.
constexpr char kForm[] = R"(HKCR
{
	<ProgID> = s '<Description>'
	{
		CLSID = s '<CLSID>'
	}
	<VersionIndependentProgID> = s '<Description>'
	{
		CLSID = s '<CLSID>'
		CurVer = s '<ProgID>'
	}
	NoRemove CLSID
	{
		ForceRemove <CLSID> = s '<Description>'
		{
			ProgID = s '<ProgID>'
			VersionIndependentProgID = s '<VersionIndependentProgID>'
			ForceRemove 'Programmable'
			InprocServer32 = s '%MODULE%'
			{
				val ThreadingModel = s '<ThreadingModel>'
			}
			'TypeLib' = s '<TypeLib>'
		}
	}
}
)";

// Writer writes the bytes of a script to an array, or only counts them if that is null.
class Writer {
 public:
  constexpr explicit Writer(BYTE* bytes) : bytes_(bytes) {}

  constexpr DWORD Length() const { return length_; }

  constexpr void Put(OLECHAR c) {
    if (bytes_ != nullptr) bytes_[length_] = static_cast<BYTE>(c);
    ++length_;
  }
  constexpr void Put(const OLECHAR* text) {
    while (*text != 0) Put(*text++);
  }
  // Registry format: {8-4-4-4-12} hexadecimal digits.
  constexpr void Put(const GUID& id) {
    Put(OLECHAR{'{'});
    PutNumber(id.Data1, 8);
    Put(OLECHAR{'-'});
    PutNumber(id.Data2, 4);
    Put(OLECHAR{'-'});
    PutNumber(id.Data3, 4);
    for (int i = 0; i < 8; ++i) {
      if (i == 0 || i == 2) Put(OLECHAR{'-'});
      PutNumber(id.Data4[i], 2);
    }
    Put(OLECHAR{'}'});
  }

 private:
  constexpr void PutNumber(uint32_t number, int digits) {
    while (digits-- > 0) Put(OLESTR("0123456789ABCDEF")[number >> 4 * digits & 15]);
  }

  BYTE* bytes_;
  DWORD length_ = 0;
};

// If *text starts with `name` and a closing bracket, advances *text past them and returns true.
constexpr bool TakeName(const char** text, const char* name) {
  const char* c = *text;
  while (*name != 0 && *c == *name) {
    ++c;
    ++name;
  }
  if (*name != 0 || *c != '>') return false;
  *text = c + 1;
  return true;
}

// Not a constant expression for an unknown name: the text becomes null.
constexpr void PutField(Writer& writer, const ClassRow& row, const char** text) {
  if (TakeName(text, "ProgID")) return writer.Put(row.prog_id);
  if (TakeName(text, "VersionIndependentProgID"))
    return writer.Put(row.version_independent_prog_id);
  if (TakeName(text, "Description")) return writer.Put(row.description);
  if (TakeName(text, "ThreadingModel")) return writer.Put(row.threading_model);
  if (TakeName(text, "CLSID")) return writer.Put(*row.id);
  if (TakeName(text, "TypeLib")) return writer.Put(LIBID_MIROLTALib);
  *text = nullptr;
}

constexpr DWORD WriteScript(WORD script, BYTE* bytes) {
  Writer writer(bytes);
  for (const ClassRow& row : kClassRows) {
    if (row.registry_script != script) continue;
    for (const char* text = kForm; *text != 0;) {
      const char c = *text++;
      if (c == '<') {
        PutField(writer, row, &text);
      } else {
        writer.Put(static_cast<OLECHAR>(c));
      }
    }
  }
  return writer.Length();
}

// The numbers of the scripts, in the order of the rows. The row that ends the table has none.
constexpr auto kScripts = [] {
  std::array<WORD, std::size(kClassRows)> scripts = {};
  size_t count = 0;
  for (const ClassRow& row : kClassRows) {
    const auto end = scripts.begin() + count;
    if (row.registry_script != 0 && std::find(scripts.begin(), end, row.registry_script) == end) {
      scripts[count++] = row.registry_script;
    }
  }
  return std::pair(scripts, count);
}();
static_assert(kScripts.second == kRegistryScriptCount);

template <size_t kIndex>
constexpr auto kText = [] {
  std::array<BYTE, WriteScript(kScripts.first[kIndex], nullptr)> bytes = {};
  WriteScript(kScripts.first[kIndex], bytes.data());
  return bytes;
}();

template <size_t kIndex>
constexpr DataResource kResource = {OLESTR("REGISTRY"), kScripts.first[kIndex],
                                    kText<kIndex>.data(), static_cast<DWORD>(kText<kIndex>.size())};

template <size_t... kIndexes>
constexpr std::array<DataResource, kRegistryScriptCount> Resources(
    std::index_sequence<kIndexes...>) {
  return {kResource<kIndexes>...};
}

}  // namespace

constexpr std::array<DataResource, kRegistryScriptCount> kRegistryScripts =
    Resources(std::make_index_sequence<kRegistryScriptCount>());

}  // namespace mirolta
