#include "classes/file_node.h"

#include <algorithm>

#include "classes/drive_object.h"
#include "classes/file_commands.h"
#include "classes/folder_object.h"
#include "engine/file_statuses.h"
#include "engine/host_errors.h"
#include "files/file_actions.h"
#include "files/file_facts.h"
#include "files/file_paths.h"
#include "values/script_dates.h"

namespace mirolta::host {
namespace {

enum Attribute : int32_t {
  kReadOnly = 1,
  kHidden = 2,
  kDirectory = 16,
  kAlias = 1024,
};
// All attributes that the platform's classes know. Those that mean nothing here may be assigned,
// since scripts assign what they read with one bit changed.
constexpr int32_t kKnownAttributes = 1 | 2 | 4 | 8 | 16 | 32 | 128 | 1024 | 2048;

std::string NameIn(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

void ReturnTime(HostCall& call, double milliseconds) {
  call.ReturnDate(AutomationDate(milliseconds));
}

}  // namespace

void ReturnSize(HostCall& call, double size) {
  if (size <= INT32_MAX) {
    call.ReturnInteger(static_cast<int32_t>(size));
  } else {
    call.ReturnNumber(size);
  }
}

struct stat FileNode::Facts() const {
  if (!IsFolder()) return FactsOf(path_);
  if (KindOf(path_) != PathKind::kFolder) Fail(kPathNotFound);
  return FactsOf(path_);
}

void FileNode::GetPath(HostCall& call) {
  call.ReturnText(UnitsFromSystem(path_));
}

void FileNode::GetName(HostCall& call) {
  call.ReturnText(UnitsFromSystem(NameIn(path_)));
}

void FileNode::PutName(HostCall& call) {
  const std::string name = SystemPath(HostCall::TextOf(call.Value()));
  if (name.empty() || name == "." || name == ".." || name.find('/') != std::string::npos) {
    Fail(kInvalidCall);
  }
  Facts();
  std::string renamed = path_.substr(0, path_.rfind('/') + 1) + name;
  if (renamed == path_) return;
  MoveOne(path_, renamed);
  path_ = std::move(renamed);
}

void FileNode::GetParentFolder(HostCall& call) {
  if (path_ == "/") return call.ReturnObject(nullptr);
  const size_t end = path_.rfind('/');
  call.ReturnObject(new FolderObject(end == 0 ? "/" : path_.substr(0, end)));
}

void FileNode::GetDrive(HostCall& call) {
  call.ReturnObject(new DriveObject(MountPointOf(path_)));
}

void FileNode::GetAttributes(HostCall& call) {
  const struct stat facts = Facts();
  struct stat own = {};
  int32_t attributes = 0;
  if (IsReadOnly(facts)) attributes |= kReadOnly;
  if (NameIn(path_).starts_with('.')) attributes |= kHidden;
  if (S_ISDIR(facts.st_mode)) attributes |= kDirectory;
  if (lstat(path_.c_str(), &own) == 0 && S_ISLNK(own.st_mode)) attributes |= kAlias;
  call.ReturnInteger(attributes);
}

void FileNode::PutAttributes(HostCall& call) {
  const int32_t attributes = HostCall::IntegerOf(call.Value());
  if ((attributes & ~kKnownAttributes) != 0) Fail(kInvalidCall);
  const struct stat facts = Facts();
  const bool is_read_only = (attributes & kReadOnly) != 0;
  if (is_read_only == IsReadOnly(facts)) return;
  constexpr mode_t kWriting = S_IWUSR | S_IWGRP | S_IWOTH;
  const mode_t mode = facts.st_mode & (S_IRWXU | S_IRWXG | S_IRWXO | S_ISUID | S_ISGID | S_ISVTX);
  // Writable again for the owner only: who else could write is not known.
  SetPermissions(path_, is_read_only ? mode & ~kWriting : mode | S_IWUSR);
}

void FileNode::GetDateCreated(HostCall& call) {
  ReturnTime(call, CreationTime(path_, Facts()));
}

void FileNode::GetDateLastModified(HostCall& call) {
  ReturnTime(call, Milliseconds(Facts().st_mtim));
}

void FileNode::GetDateLastAccessed(HostCall& call) {
  ReturnTime(call, Milliseconds(Facts().st_atim));
}

void FileNode::GetSize(HostCall& call) {
  const struct stat facts = Facts();
  ReturnSize(call, IsFolder() ? FolderSize(path_) : static_cast<double>(facts.st_size));
}

void FileNode::GetType(HostCall& call) {
  Facts();
  if (IsFolder()) return call.ReturnText(OLESTR("File folder"));
  Units type = ExtensionOf(UnitsFromSystem(path_));
  std::transform(type.begin(), type.end(), type.begin(), [](OLECHAR unit) {
    return unit >= OLECHAR{'a'} && unit <= OLECHAR{'z'} ? static_cast<OLECHAR>(unit - 32) : unit;
  });
  type += type.empty() ? OLESTR("File") : OLESTR(" File");
  call.ReturnText(type);
}

void FileNode::Copy(HostCall& call) {
  Facts();
  const std::string target = TargetFor(path_, SystemPath(call.Text(0)));
  const bool overwrites = call.Truth(1, true);
  if (IsFolder()) {
    CopyOneFolder(path_, target, overwrites);
  } else {
    CopyOneFile(path_, target, overwrites);
  }
}

void FileNode::Move(HostCall& call) {
  Facts();
  std::string target = AbsolutePath(TargetFor(path_, SystemPath(call.Text(0))));
  MoveOne(path_, target);
  path_ = std::move(target);
}

void FileNode::Delete(HostCall& call) {
  Facts();
  const bool force = call.Truth(0, false);
  if (IsFolder()) {
    DeleteOneFolder(path_, force);
  } else {
    DeleteOneFile(path_, force);
  }
}

}  // namespace mirolta::host
