#include "classes/drive_object.h"

#include <errno.h>
#include <mntent.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <algorithm>

#include "classes/file_node.h"
#include "classes/folder_object.h"
#include "engine/file_statuses.h"
#include "files/file_facts.h"
#include "files/file_paths.h"
#include "files/full_path.h"

namespace mirolta::host {
namespace {

enum DriveType : int32_t { kFixed = 2 };

constexpr HostMember kDriveMembers[] = {
    {"Path", DISPID_VALUE, MemberKind::kProperty, 0, 0, CallMember<&DriveObject::GetPath>, nullptr,
     " As String", "The folder that the file system is mounted on."},
    {"DriveLetter", 1, MemberKind::kProperty, 0, 0, CallMember<&DriveObject::GetDriveLetter>,
     nullptr, " As String", "Empty: drives have no letters here."},
    {"ShareName", 2, MemberKind::kProperty, 0, 0, CallMember<&DriveObject::GetShareName>, nullptr,
     " As String", "Empty: shares are not told from disks here."},
    {"VolumeName", 3, MemberKind::kProperty, 0, 0, CallMember<&DriveObject::GetVolumeName>, nullptr,
     " As String", "Empty: names of volumes are not known here."},
    {"DriveType", 4, MemberKind::kProperty, 0, 0, CallMember<&DriveObject::GetDriveType>, nullptr,
     " As Long", "2, a fixed disk: kinds of drives are not told apart here."},
    {"RootFolder", 5, MemberKind::kProperty, 0, 0, CallMember<&DriveObject::GetRootFolder>, nullptr,
     " As Folder", "The folder that the file system is mounted on, as a Folder."},
    {"AvailableSpace", 6, MemberKind::kProperty, 0, 0, CallMember<&DriveObject::GetAvailableSpace>,
     nullptr, " As Double", "The number of bytes that the user may still write."},
    {"FreeSpace", 7, MemberKind::kProperty, 0, 0, CallMember<&DriveObject::GetFreeSpace>, nullptr,
     " As Double", "The number of free bytes."},
    {"TotalSize", 8, MemberKind::kProperty, 0, 0, CallMember<&DriveObject::GetTotalSize>, nullptr,
     " As Double", "The number of bytes."},
    {"FileSystem", 9, MemberKind::kProperty, 0, 0, CallMember<&DriveObject::GetFileSystem>, nullptr,
     " As String", "The type of the file system, such as \"ext4\"."},
    {"SerialNumber", 10, MemberKind::kProperty, 0, 0, CallMember<&DriveObject::GetSerialNumber>,
     nullptr, " As Long", "The number by which the system identifies the file system."},
    {"IsReady", 11, MemberKind::kProperty, 0, 0, CallMember<&DriveObject::GetIsReady>, nullptr,
     " As Boolean", "Whether the file system answers."},
};
static_assert(IsWellFormed(kDriveMembers));

constexpr HostMember kDrivesMembers[] = {
    {"Item", DISPID_VALUE, MemberKind::kProperty, 1, 1, CallMember<&DrivesObject::GetItem>, nullptr,
     "(path As String) As Drive", "The drive that is mounted on this folder."},
    {"Count", 1, MemberKind::kProperty, 0, 0, CallMember<&DrivesObject::GetCount>, nullptr,
     " As Long", "The number of drives: / and the mounted disks."},
    {"_NewEnum", DISPID_NEWENUM, MemberKind::kProperty, 0, 0, CallMember<&DrivesObject::GetNewEnum>,
     nullptr, " As Drive", "All drives, for Enumerator."},
};
static_assert(IsWellFormed(kDrivesMembers));

struct statvfs SpaceOf(const std::string& path) {
  struct statvfs space = {};
  if (statvfs(path.c_str(), &space) != 0) Fail(FileStatusOf(errno));
  return space;
}

// Returns a number of blocks as bytes.
void ReturnBlocks(HostCall& call, const struct statvfs& space, fsblkcnt_t blocks) {
  ReturnSize(call, static_cast<double>(blocks) * static_cast<double>(space.f_frsize));
}

// The table of mounted file systems; without /proc it is empty.
class MountTable {
 public:
  MountTable() : table_(setmntent("/proc/self/mounts", "re")) {}
  MountTable(const MountTable&) = delete;
  MountTable& operator=(const MountTable&) = delete;
  ~MountTable() {
    if (table_ != nullptr) endmntent(table_);
  }

  // The next entry, null at the end; valid until the next call.
  const mntent* Next() {
    return table_ == nullptr ? nullptr : getmntent_r(table_, &entry_, text_, sizeof text_);
  }

 private:
  FILE* const table_;
  mntent entry_ = {};
  char text_[8192] = {};
};

}  // namespace

constinit const HostClass DriveObject::kClass = {"Drive", "A mounted file system.", kDriveMembers};
constinit const HostClass DrivesObject::kClass = {"Drives", "The mounted file systems.",
                                                  kDrivesMembers};

std::string MountPointOf(const std::string& path) {
  std::string place = FullPath(path);
  if (place.empty()) return "/";
  struct stat facts = {}, above = {};
  if (stat(place.c_str(), &facts) != 0) return "/";
  while (place != "/") {
    const size_t end = place.rfind('/');
    std::string parent = end == 0 ? "/" : place.substr(0, end);
    if (stat(parent.c_str(), &above) != 0 || above.st_dev != facts.st_dev) break;
    place = std::move(parent);
  }
  return place;
}

bool IsMountPoint(const std::string& path) {
  return path.starts_with('/') && KindOf(path) == PathKind::kFolder && MountPointOf(path) == path;
}

std::vector<std::string> MountPoints() {
  std::vector<std::string> points = {"/"};
  MountTable table;
  while (const mntent* entry = table.Next()) {
    const std::string point = entry->mnt_dir;
    // Files are mounted too, in containers.
    if (std::string_view(entry->mnt_fsname).starts_with("/dev/") && IsMountPoint(point) &&
        std::find(points.begin(), points.end(), point) == points.end()) {
      points.push_back(point);
    }
  }
  return points;
}

void DriveObject::GetPath(HostCall& call) {
  call.ReturnText(UnitsFromSystem(path_));
}

void DriveObject::GetDriveLetter(HostCall& call) {
  call.ReturnText({});
}

void DriveObject::GetShareName(HostCall& call) {
  call.ReturnText({});
}

void DriveObject::GetVolumeName(HostCall& call) {
  call.ReturnText({});
}

void DriveObject::GetDriveType(HostCall& call) {
  call.ReturnInteger(kFixed);
}

void DriveObject::GetRootFolder(HostCall& call) {
  call.ReturnObject(new FolderObject(path_));
}

void DriveObject::GetAvailableSpace(HostCall& call) {
  const struct statvfs space = SpaceOf(path_);
  ReturnBlocks(call, space, space.f_bavail);
}

void DriveObject::GetFreeSpace(HostCall& call) {
  const struct statvfs space = SpaceOf(path_);
  ReturnBlocks(call, space, space.f_bfree);
}

void DriveObject::GetTotalSize(HostCall& call) {
  const struct statvfs space = SpaceOf(path_);
  ReturnBlocks(call, space, space.f_blocks);
}

void DriveObject::GetFileSystem(HostCall& call) {
  std::string type;
  // The last one mounted there is the one to be seen.
  MountTable table;
  while (const mntent* entry = table.Next()) {
    if (path_ == entry->mnt_dir) type = entry->mnt_type;
  }
  call.ReturnText(UnitsFromSystem(type));
}

void DriveObject::GetSerialNumber(HostCall& call) {
  call.ReturnInteger(static_cast<int32_t>(static_cast<uint32_t>(SpaceOf(path_).f_fsid)));
}

void DriveObject::GetIsReady(HostCall& call) {
  struct statvfs space = {};
  call.ReturnTruth(statvfs(path_.c_str(), &space) == 0);
}

void DrivesObject::GetItem(HostCall& call) {
  const std::string path = WithoutEnd(SystemPath(call.Text(0)));
  if (!IsMountPoint(path)) Fail(kNoSuchDevice);
  call.ReturnObject(new DriveObject(path));
}

void DrivesObject::GetCount(HostCall& call) {
  call.ReturnInteger(static_cast<int32_t>(MountPoints().size()));
}

void DrivesObject::GetNewEnum(HostCall& call) {
  ValueList drives;
  for (const std::string& path : MountPoints()) drives.AddObject(new DriveObject(path));
  call.ReturnUnknown(NewEnumerator(std::move(drives)));
}

}  // namespace mirolta::host
