#include "classes/file_collections.h"

#include "classes/file_commands.h"
#include "classes/file_object.h"
#include "classes/folder_object.h"
#include "engine/file_statuses.h"
#include "files/file_paths.h"

namespace mirolta::host {
namespace {

constexpr HostMember ItemAs(const char* signature) {
  return {
      "Item",  DISPID_VALUE, MemberKind::kProperty,    1, 1, CallMember<&FolderContent::GetItem>,
      nullptr, signature,    "The one with this name."};
}
constexpr HostMember kCount = {"Count", 1,          MemberKind::kProperty,
                               0,       0,          CallMember<&FolderContent::GetCount>,
                               nullptr, " As Long", "How many there are now."};
constexpr HostMember NewEnumAs(const char* signature) {
  return {"_NewEnum",
          DISPID_NEWENUM,
          MemberKind::kProperty,
          0,
          0,
          CallMember<&FolderContent::GetNewEnum>,
          nullptr,
          signature,
          "All that are there now, for Enumerator."};
}

constexpr HostMember kFiles[] = {ItemAs("(name As String) As File"), kCount, NewEnumAs(" As File")};
static_assert(IsWellFormed(kFiles));
constexpr HostMember kFolders[] = {
    ItemAs("(name As String) As Folder"),
    kCount,
    NewEnumAs(" As Folder"),
    {"Add", 2, MemberKind::kMethod, 1, 1, CallMember<&FoldersObject::Add>, nullptr,
     "(name As String) As Folder", "Creates a folder and returns it."}};
static_assert(IsWellFormed(kFolders));

}  // namespace

constinit const HostClass FilesObject::kClass = {"Files", "The files of a folder.", kFiles};
constinit const HostClass FoldersObject::kClass = {"Folders", "The folders of a folder.", kFolders};

IDispatch* FolderContent::NewItem(const std::string& path) const {
  if (kind_ == PathKind::kFolder) return new FolderObject(path);
  return new FileObject(path);
}

void FolderContent::GetItem(HostCall& call) {
  const std::string name = SystemPath(call.Text(0));
  const std::string path = PathIn(folder_, name);
  const bool is_name =
      !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos;
  if (!is_name || KindOf(path) != kind_) {
    Fail(kind_ == PathKind::kFolder ? kPathNotFound : kFileNotFound);
  }
  call.ReturnObject(NewItem(path));
}

void FolderContent::GetCount(HostCall& call) {
  call.ReturnInteger(static_cast<int32_t>(NamesIn(folder_, kind_).size()));
}

void FolderContent::GetNewEnum(HostCall& call) {
  ValueList items;
  for (const std::string& name : NamesIn(folder_, kind_)) {
    items.AddObject(NewItem(PathIn(folder_, name)));
  }
  call.ReturnUnknown(NewEnumerator(std::move(items)));
}

void FoldersObject::Add(HostCall& call) {
  const std::string name = SystemPath(call.Text(0));
  call.ReturnObject(new FolderObject(MakeFolder(PathIn(Folder(), name))));
}

}  // namespace mirolta::host
