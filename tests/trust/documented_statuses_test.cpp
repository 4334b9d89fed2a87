// The page of each class names every status that its members give to a hostile value.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>

#include "hostile_values.h"
#include "status_model.h"

namespace mirolta::test {
namespace {

// What every page leaves out: success, and the failing object's own status, for which each page has
// a row of its own.
const std::set<HRESULT> kNotNamed = {S_OK, E_ACCESSDENIED};

std::map<std::string, std::set<HRESULT>> ModelledStatuses() {
  const HostileValues values;
  std::map<std::string, std::set<HRESULT>> modelled;
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

// The table of statuses on a page; empty without one.
std::string StatusTable(const std::string& class_name) {
  std::ifstream in(MIROLTA_TRUST_FILES "/../../docs/" + class_name + ".md");
  std::stringstream text;
  text << in.rdbuf();
  const std::string page = text.str();
  const size_t start = page.find("\n## Statuses\n");
  if (start == page.npos) return {};
  return page.substr(start, page.find("\n## ", start + 1) - start);
}

TEST(DocumentedStatuses, ThePageOfAClassNamesEveryStatusOfItsMembers) {
  const auto modelled = ModelledStatuses();
  EXPECT_EQ(modelled.size(), 6u);
  size_t named = 0;
  for (const auto& [class_name, statuses] : modelled) {
    const std::string table = StatusTable(class_name);
    for (const HRESULT status : statuses) {
      if (kNotNamed.count(status) != 0) continue;
      char text[16];
      std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(status));
      EXPECT_NE(table.find(text), table.npos) << class_name << " " << text;
      ++named;
    }
    EXPECT_NE(table.find("\n| any other failure |"), table.npos) << class_name;
  }
  EXPECT_GT(named, 50u);
}

}  // namespace
}  // namespace mirolta::test
