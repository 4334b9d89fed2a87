#include "classes/file_object.h"

#include "classes/text_files.h"

namespace mirolta::host {
namespace {

constexpr HostMember kOwn[] = {
    {"OpenAsTextStream", 20, MemberKind::kMethod, 0, 2, CallMember<&FileObject::OpenAsTextStream>,
     nullptr, "([mode As Long], [format As Long]) As TextStream",
     "Opens the file: mode 1 reads (the default), 2 writes, 8 appends; format -1 is UTF-16."},
};
constexpr auto kMembers = WithFileNodeMembers(kOwn);
static_assert(IsWellFormed(kMembers));

}  // namespace

constinit const HostClass FileObject::kClass = {"File", "A file.", kMembers};

void FileObject::OpenAsTextStream(HostCall& call) {
  const TextFileOptions options = {call.Integer(0, kForReading), false, call.Integer(1, kNarrow)};
  call.ReturnObject(OpenTextFile(Path(), options));
}

}  // namespace mirolta::host
