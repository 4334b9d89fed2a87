// The page of each class names every status that its members give to a hostile value, and docs/errors.md
// those of all classes and of creating objects.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>

#include "entry_points.h"
#include "hostile_values.h"
#include "module_statuses.h"
#include "status_model.h"

namespace mirolta::test {
namespace {

// What every page leaves out: success, and the failing object's own status, for which each page has
// a row of its own.
const std::set<HRESULT> kNotNamed = {S_OK, E_ACCESSDENIED};

// Computed once: it takes a while.
const std::map<std::string, std::set<HRESULT>>& ModelledStatuses() {
  static std::map<std::string, std::set<HRESULT>> modelled;
  if (!modelled.empty()) return modelled;
  const HostileValues values;
  for (const Member& member : AllMembers()) {
    for (unsigned index = 0; index < member.ParameterCount(); ++index) {
      const ParameterRow& parameter = member.row->parameters.rows[index];
      for (const State state : kStates) {
        for (const bool late : {false, true}) {
          for (const HostileValue& value :
               late ? values.All() : values.OfType(parameter.type.type)) {
            if (late && value.is_long) continue;  // for their time; what they give, others give too
            modelled[member.ClassName()].insert(
                ExpectedOutcome(member, Plain(parameter.name), state, late, value.value).status);
          }
        }
      }
    }
  }
  return modelled;
}

// A section of a page; empty without one.
std::string SectionOf(const std::string& page_name, const std::string& title) {
  std::ifstream in(MIROLTA_TRUST_FILES "/../../docs/" + page_name + ".md");
  std::stringstream text;
  text << in.rdbuf();
  const std::string page = text.str();
  const size_t start = page.find("\n## " + title + "\n");
  if (start == page.npos) return {};
  return page.substr(start, page.find("\n## ", start + 1) - start);
}

std::string StatusText(HRESULT status) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(status));
  return text;
}

// The first cells of a table's rows, as far as they are statuses.
std::set<std::string> RowsOf(const std::string& section) {
  std::set<std::string> rows;
  for (size_t at = section.find("\n| 0x"); at != section.npos;
       at = section.find("\n| 0x", at + 1)) {
    rows.insert(section.substr(at + 3, 10));
  }
  return rows;
}

TEST(DocumentedStatuses, ThePageOfAClassNamesEveryStatusOfItsMembers) {
  const auto& modelled = ModelledStatuses();
  EXPECT_EQ(modelled.size(), 6u);
  size_t named = 0;
  for (const auto& [class_name, statuses] : modelled) {
    const std::string table = SectionOf(class_name, "Statuses");
    for (const HRESULT status : statuses) {
      if (kNotNamed.count(status) != 0) continue;
      EXPECT_NE(table.find(StatusText(status)), table.npos)
          << class_name << " " << StatusText(status);
      ++named;
    }
    EXPECT_NE(table.find("\n| any other failure |"), table.npos) << class_name;
  }
  EXPECT_GT(named, 50u);
}

TEST(DocumentedStatuses, ThePageOfErrorsHasTheStatusesOfTheClassesAndNoOthers) {
  // What the model does not have: pointers, memory, streams, objects without a default value, and states
  // other than its own.
  std::set<std::string> expected;
  for (const HRESULT status :
       {E_POINTER, E_OUTOFMEMORY, E_NOTIMPL, STG_E_REVERTED, STG_E_INVALIDPOINTER, STG_E_CANTSAVE,
        S_FALSE, DISP_E_MEMBERNOTFOUND, kNoStream, kKeyNotSet, kBareNotInitializedStatus}) {
    expected.insert(StatusText(status));
  }
  for (const auto& [class_name, statuses] : ModelledStatuses()) {
    for (const HRESULT status : statuses) {
      if (kNotNamed.count(status) == 0) expected.insert(StatusText(status));
    }
  }
  // The late-bound calls of other systems have another status for arguments that are left out.
  expected.insert(StatusText(DISP_E_PARAMNOTOPTIONAL));
  EXPECT_EQ(RowsOf(SectionOf("errors", "Members")), expected);
}

TEST(DocumentedStatuses, ThePageOfErrorsHasTheStatusesOfCreatingObjectsAndNoOthers) {
  const CLSID unknown = {
      0x1F0C2F5A, 0x93B6, 0x4B39, {0x9A, 0x2C, 0x55, 0x1E, 0x0B, 0x6A, 0x7D, 0x42}};
  std::set<std::string> given = {StatusText(E_OUTOFMEMORY)};  // entry_point_allocation_test
  CLSID class_id;
  void* out = nullptr;
  given.insert(StatusText(CLSIDFromProgID(OLESTR("Vardeko.crypt.Nothing"), &class_id)));
  given.insert(
      StatusText(CoCreateInstance(unknown, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &out)));
  given.insert(StatusText(DllGetClassObject(unknown, IID_IClassFactory, &out)));
  given.insert(StatusText(DllGetClassObject(CLSID_HashObject, IID_IClassFactory, nullptr)));
  ASSERT_EQ(DllGetClassObject(CLSID_HashObject, IID_IClassFactory, &out), S_OK);
  IClassFactory* const factory = static_cast<IClassFactory*>(out);
  given.insert(StatusText(factory->CreateInstance(nullptr, IID_IStream, &out)));
  given.insert(StatusText(factory->CreateInstance(factory, IID_IDispatch, &out)));
  factory->Release();
  EXPECT_EQ(RowsOf(SectionOf("errors", "Creating objects")), given);
}

}  // namespace
}  // namespace mirolta::test
