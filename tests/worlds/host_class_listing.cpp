// Prints the members of every class that the host itself implements: class, member, and how it is used.
#include <cstdio>

#include "classes/class_list.h"

namespace mirolta::host {
namespace {

const char* UseOf(const HostMember& member) {
  if (member.kind == MemberKind::kMethod) return "method";
  if (member.put == nullptr) return "read";
  return member.get == nullptr ? "write" : "read and write";
}

void PrintClass(const HostClass& row) {
  for (const HostMember& member : row.members) {
    std::printf("%s\t%s\t%s\t%s\t%s\n", row.name, member.name, UseOf(member), member.signature,
                member.help);
  }
}

}  // namespace
}  // namespace mirolta::host

int main() {
  for (const mirolta::host::HostClass* row : mirolta::host::AllHostClasses()) {
    mirolta::host::PrintClass(*row);
  }
}
