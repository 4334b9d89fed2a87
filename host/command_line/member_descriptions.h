// The members of an object as texts: for completion, help and --describe.
#pragma once

#include <string>
#include <vector>

#include "classes/host_object.h"

namespace mirolta::host {

// Texts are in the system's form.
struct MemberDescription {
  std::string name;
  std::string kind;       // "method", "property", "read-only property" or "write-only property"
  std::string signature;  // "Text([codePage As Long = -1]) As String"
  std::string help;       // a sentence, or empty
};

// DescribeMembers returns the members of an object in the order of its type information, one row a
// name; none if the object does not describe itself.
// Errors: std::bad_alloc.
std::vector<MemberDescription> DescribeMembers(IDispatch* object);
// The same for type information and for a class of the host.
std::vector<MemberDescription> DescribeTypeMembers(ITypeInfo* info);
std::vector<MemberDescription> DescribeHostMembers(const HostClass& host_class);

}  // namespace mirolta::host
