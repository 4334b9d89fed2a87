#include "classes/file_system_object.h"

#include <stdio.h>
#include <stdlib.h>

#include <string>

#include "classes/drive_object.h"
#include "classes/file_commands.h"
#include "classes/file_object.h"
#include "classes/folder_object.h"
#include "classes/text_files.h"
#include "engine/file_statuses.h"
#include "engine/host_errors.h"
#include "files/file_paths.h"

namespace mirolta::host {
namespace {

using Fso = FileSystemObject;

template <auto kFunction>
constexpr HostMember Method(const char* name, DISPID id, UINT least, UINT most,
                            const char* signature, const char* help) {
  return {name,      id,  MemberKind::kMethod, least, most, CallMember<kFunction>, nullptr,
          signature, help};
}

constexpr HostMember kMembers[] = {
    {"Drives", 1, MemberKind::kProperty, 0, 0, CallMember<&Fso::GetDrives>, nullptr, " As Drives",
     "The mounted file systems."},
    Method<&Fso::BuildPath>("BuildPath", 2, 2, 2, "(path As String, name As String) As String",
                            "Joins a path and a name by one separator."),
    Method<&Fso::GetDriveName>("GetDriveName", 3, 1, 1, "(path As String) As String",
                               "The drive of a path: / for an absolute one."),
    Method<&Fso::GetParentFolderName>("GetParentFolderName", 4, 1, 1, "(path As String) As String",
                                      "A path without its last part."),
    Method<&Fso::GetFileName>("GetFileName", 5, 1, 1, "(path As String) As String",
                              "The last part of a path."),
    Method<&Fso::GetBaseName>("GetBaseName", 6, 1, 1, "(path As String) As String",
                              "The last part of a path without its extension."),
    Method<&Fso::GetExtensionName>("GetExtensionName", 7, 1, 1, "(path As String) As String",
                                   "What follows the last dot of the last part of a path."),
    Method<&Fso::GetAbsolutePathName>("GetAbsolutePathName", 8, 1, 1, "(path As String) As String",
                                      "The absolute path, without . and .. in it."),
    Method<&Fso::GetTempName>("GetTempName", 9, 0, 0, "() As String",
                              "A name for a temporary file; no file is created."),
    Method<&Fso::DriveExists>("DriveExists", 10, 1, 1, "(path As String) As Boolean",
                              "Whether a file system is mounted on this folder."),
    Method<&Fso::FileExists>("FileExists", 11, 1, 1, "(path As String) As Boolean",
                             "Whether the path is a file."),
    Method<&Fso::FolderExists>("FolderExists", 12, 1, 1, "(path As String) As Boolean",
                               "Whether the path is a folder."),
    Method<&Fso::GetDrive>("GetDrive", 13, 1, 1, "(path As String) As Drive",
                           "The Drive mounted on this folder."),
    Method<&Fso::GetFile>("GetFile", 14, 1, 1, "(path As String) As File", "The File."),
    Method<&Fso::GetFolder>("GetFolder", 15, 1, 1, "(path As String) As Folder", "The Folder."),
    Method<&Fso::GetSpecialFolder>("GetSpecialFolder", 16, 1, 1, "(which As Long) As Folder",
                                   "2: the folder for temporary files; there are no others here."),
    Method<&Fso::DeleteFile>("DeleteFile", 17, 1, 2, "(path As String, [force As Boolean])",
                             "Deletes files; with force, read-only ones too."),
    Method<&Fso::DeleteFolder>("DeleteFolder", 18, 1, 2, "(path As String, [force As Boolean])",
                               "Deletes folders with all that is in them."),
    Method<&Fso::MoveFile>("MoveFile", 19, 2, 2, "(source As String, destination As String)",
                           "Moves files."),
    Method<&Fso::MoveFolder>("MoveFolder", 20, 2, 2, "(source As String, destination As String)",
                             "Moves folders."),
    Method<&Fso::CopyFile>("CopyFile", 21, 2, 3,
                           "(source As String, destination As String, [overwrite As Boolean])",
                           "Copies files."),
    Method<&Fso::CopyFolder>("CopyFolder", 22, 2, 3,
                             "(source As String, destination As String, [overwrite As Boolean])",
                             "Copies folders with all that is in them."),
    Method<&Fso::CreateFolder>("CreateFolder", 23, 1, 1, "(path As String) As Folder",
                               "Creates a folder and returns it."),
    Method<&Fso::CreateTextFile>(
        "CreateTextFile", 24, 1, 3,
        "(path As String, [overwrite As Boolean], [unicode As Boolean]) As TextStream",
        "Creates a text file, or replaces it when the stream is closed."),
    Method<&Fso::OpenTextFile>(
        "OpenTextFile", 25, 1, 4,
        "(path As String, [mode As Long], [create As Boolean], [format As Long]) As TextStream",
        "Opens a text file: mode 1 reads (the default), 2 writes, 8 appends; "
        "format 0 is UTF-8 (the default), -1 UTF-16, -2 what the file is."),
    Method<&Fso::GetStandardStream>("GetStandardStream", 26, 1, 2,
                                    "(which As Long, [unicode As Boolean]) As TextStream",
                                    "0: WScript.StdIn, 1: WScript.StdOut, 2: WScript.StdErr."),
    Method<&Fso::GetFileVersion>("GetFileVersion", 27, 1, 1, "(path As String) As String",
                                 "Empty: files have no version resources here."),
};
static_assert(IsWellFormed(kMembers));

std::string PathAt(const HostCall& call, UINT index) {
  return SystemPath(call.Text(index));
}

}  // namespace

constinit const HostClass FileSystemObject::kClass = {"Scripting.FileSystemObject",
                                                      "Files, folders and paths.", kMembers};

HostObject* NewFileSystemObject() {
  return new FileSystemObject;
}

void FileSystemObject::BuildPath(HostCall& call) {
  call.ReturnText(JoinedPath(call.Text(0), call.Text(1)));
}

void FileSystemObject::GetDriveName(HostCall& call) {
  call.ReturnText(DriveNameOf(call.Text(0)));
}

void FileSystemObject::GetParentFolderName(HostCall& call) {
  call.ReturnText(ParentFolderOf(call.Text(0)));
}

void FileSystemObject::GetFileName(HostCall& call) {
  call.ReturnText(FileNameOf(call.Text(0)));
}

void FileSystemObject::GetBaseName(HostCall& call) {
  call.ReturnText(BaseNameOf(call.Text(0)));
}

void FileSystemObject::GetExtensionName(HostCall& call) {
  call.ReturnText(ExtensionOf(call.Text(0)));
}

void FileSystemObject::GetAbsolutePathName(HostCall& call) {
  call.ReturnText(UnitsFromSystem(AbsolutePath(PathAt(call, 0))));
}

void FileSystemObject::GetTempName(HostCall& call) {
  uint32_t number = 0;
  if (getentropy(&number, sizeof number) != 0) Fail(kDeviceFault);
  char name[16];
  snprintf(name, sizeof name, "rad%05X.tmp", static_cast<unsigned>(number & 0xFFFFFu));
  call.ReturnText(UnitsFromSystem(name));
}

void FileSystemObject::GetDrives(HostCall& call) {
  call.ReturnObject(new DrivesObject);
}

void FileSystemObject::DriveExists(HostCall& call) {
  call.ReturnTruth(IsMountPoint(WithoutEnd(PathAt(call, 0))));
}

void FileSystemObject::FileExists(HostCall& call) {
  call.ReturnTruth(KindOf(PathAt(call, 0)) == PathKind::kFile);
}

void FileSystemObject::FolderExists(HostCall& call) {
  call.ReturnTruth(KindOf(PathAt(call, 0)) == PathKind::kFolder);
}

void FileSystemObject::GetDrive(HostCall& call) {
  const std::string path = WithoutEnd(PathAt(call, 0));
  if (path.empty()) Fail(kInvalidCall);
  if (!IsMountPoint(path)) Fail(kNoSuchDevice);
  call.ReturnObject(new DriveObject(path));
}

void FileSystemObject::GetFile(HostCall& call) {
  const std::string path = PathAt(call, 0);
  if (path.empty()) Fail(kInvalidCall);
  const PathKind kind = KindOf(path);
  if (kind != PathKind::kFile) {
    Fail(kind == PathKind::kFolder ? kFileNotFound : MissingStatus(path));
  }
  call.ReturnObject(new FileObject(AbsolutePath(path)));
}

void FileSystemObject::GetFolder(HostCall& call) {
  const std::string path = PathAt(call, 0);
  if (path.empty()) Fail(kInvalidCall);
  if (KindOf(path) != PathKind::kFolder) Fail(kPathNotFound);
  call.ReturnObject(new FolderObject(AbsolutePath(path)));
}

void FileSystemObject::GetSpecialFolder(HostCall& call) {
  constexpr int32_t kTemporary = 2;
  const int32_t which = call.Integer(0);
  if (which < 0 || which > kTemporary) Fail(kInvalidCall);
  if (which != kTemporary) Fail(kPathNotFound);
  const char* folder = getenv("TMPDIR");
  const bool is_set = folder != nullptr && *folder != '\0';
  call.ReturnObject(new FolderObject(AbsolutePath(is_set ? folder : "/tmp")));
}

void FileSystemObject::DeleteFile(HostCall& call) {
  DeletePaths(PathKind::kFile, PathAt(call, 0), call.Truth(1, false));
}

void FileSystemObject::DeleteFolder(HostCall& call) {
  DeletePaths(PathKind::kFolder, PathAt(call, 0), call.Truth(1, false));
}

void FileSystemObject::MoveFile(HostCall& call) {
  MovePaths(PathKind::kFile, PathAt(call, 0), PathAt(call, 1));
}

void FileSystemObject::MoveFolder(HostCall& call) {
  MovePaths(PathKind::kFolder, PathAt(call, 0), PathAt(call, 1));
}

void FileSystemObject::CopyFile(HostCall& call) {
  CopyPaths(PathKind::kFile, PathAt(call, 0), PathAt(call, 1), call.Truth(2, true));
}

void FileSystemObject::CopyFolder(HostCall& call) {
  CopyPaths(PathKind::kFolder, PathAt(call, 0), PathAt(call, 1), call.Truth(2, true));
}

void FileSystemObject::CreateFolder(HostCall& call) {
  call.ReturnObject(new FolderObject(MakeFolder(PathAt(call, 0))));
}

void FileSystemObject::CreateTextFile(HostCall& call) {
  call.ReturnObject(
      host::CreateTextFile(PathAt(call, 0), call.Truth(1, true), call.Truth(2, false)));
}

void FileSystemObject::OpenTextFile(HostCall& call) {
  const TextFileOptions options = {call.Integer(1, kForReading), call.Truth(2, false),
                                   call.Integer(3, kNarrow)};
  call.ReturnObject(host::OpenTextFile(PathAt(call, 0), options));
}

void FileSystemObject::GetStandardStream(HostCall& call) {
  const int32_t which = call.Integer(0);
  if (which < 0 || which > 2) Fail(kInvalidCall);
  // The standard streams are UTF-8 whatever the script asks for; the argument must be a boolean.
  static_cast<void>(call.Truth(1, false));
  call.ReturnObject(StandardStream(static_cast<StandardStreamNumber>(which)));
}

void FileSystemObject::GetFileVersion(HostCall& call) {
  const std::string path = PathAt(call, 0);
  if (KindOf(path) == PathKind::kNone) Fail(MissingStatus(path));
  call.ReturnText({});
}

}  // namespace mirolta::host
