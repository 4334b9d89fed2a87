#include "classes/folder_object.h"

#include "classes/file_collections.h"
#include "classes/text_files.h"
#include "files/file_paths.h"

namespace mirolta::host {
namespace {

constexpr HostMember kOwn[] = {
    {"Files", 20, MemberKind::kProperty, 0, 0, CallMember<&FolderObject::GetFiles>, nullptr,
     " As Files", "The files in the folder, hidden ones too, in the order of their names."},
    {"SubFolders", 21, MemberKind::kProperty, 0, 0, CallMember<&FolderObject::GetSubFolders>,
     nullptr, " As Folders",
     "The folders in the folder, hidden ones too, in the order of their names."},
    {"IsRootFolder", 22, MemberKind::kProperty, 0, 0, CallMember<&FolderObject::GetIsRootFolder>,
     nullptr, " As Boolean", "Whether the folder is /."},
    {"CreateTextFile", 23, MemberKind::kMethod, 1, 3, CallMember<&FolderObject::CreateTextFile>,
     nullptr, "(name As String, [overwrite As Boolean], [unicode As Boolean]) As TextStream",
     "Creates a text file in the folder."},
};
constexpr auto kMembers = WithFileNodeMembers(kOwn);
static_assert(IsWellFormed(kMembers));

}  // namespace

constinit const HostClass FolderObject::kClass = {"Folder", "A folder.", kMembers};

void FolderObject::GetFiles(HostCall& call) {
  Facts();
  call.ReturnObject(new FilesObject(Path()));
}

void FolderObject::GetSubFolders(HostCall& call) {
  Facts();
  call.ReturnObject(new FoldersObject(Path()));
}

void FolderObject::GetIsRootFolder(HostCall& call) {
  call.ReturnTruth(Path() == "/");
}

void FolderObject::CreateTextFile(HostCall& call) {
  const std::string path = PathIn(Path(), SystemPath(call.Text(0)));
  call.ReturnObject(host::CreateTextFile(path, call.Truth(1, true), call.Truth(2, false)));
}

}  // namespace mirolta::host
