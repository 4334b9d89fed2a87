// The page of each class names every status that its members gave to a hostile value.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>

namespace mirolta::test {
namespace {

using Statuses = std::set<std::string>;

// What every page leaves out: success, and the failing object's own status, for which each page has
// a row of its own.
const Statuses kNotNamed = {"00000000", "80070005"};

std::map<std::string, Statuses> RecordedStatuses() {
  std::map<std::string, Statuses> recorded;
  std::ifstream in(MIROLTA_TRUST_FILES "/hostile_inputs.txt");
  std::string class_name;
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line[0] == '#') continue;
    if (line[0] == ' ') {
      recorded[class_name].insert(line.substr(2, 8));
    } else {
      class_name = line.substr(0, line.find('.'));
    }
  }
  return recorded;
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

TEST(DocumentedStatuses, EveryStatusOfEveryClass) {
  const auto recorded = RecordedStatuses();
  EXPECT_EQ(recorded.size(), 6u);
  size_t named = 0;
  for (const auto& [class_name, statuses] : recorded) {
    const std::string table = StatusTable(class_name);
    for (const std::string& status : statuses) {
      if (kNotNamed.count(status) != 0) continue;
      EXPECT_NE(table.find("0x" + status), table.npos) << class_name << " " << status;
      ++named;
    }
    EXPECT_NE(table.find("\n| any other failure |"), table.npos) << class_name;
  }
  EXPECT_GT(named, 50u);
}

}  // namespace
}  // namespace mirolta::test
