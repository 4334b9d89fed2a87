// The automation classes Drive and Drives. A drive is a mounted file system, named by the folder
// that it is mounted on; "/" is one always.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "classes/host_object.h"

namespace mirolta::host {

class DriveObject final : public HostObject {
 public:
  // Shapes: a mount point.
  explicit DriveObject(std::string path) : path_(std::move(path)) {}

  static const HostClass kClass;
  const HostClass& Class() const override { return kClass; }

  void GetPath(HostCall& call);
  void GetDriveLetter(HostCall& call);
  void GetShareName(HostCall& call);
  void GetVolumeName(HostCall& call);
  void GetDriveType(HostCall& call);
  void GetRootFolder(HostCall& call);
  void GetAvailableSpace(HostCall& call);
  void GetFreeSpace(HostCall& call);
  void GetTotalSize(HostCall& call);
  void GetFileSystem(HostCall& call);
  void GetSerialNumber(HostCall& call);
  void GetIsReady(HostCall& call);

 private:
  ~DriveObject() override = default;
  const std::string path_;
};

class DrivesObject final : public HostObject {
 public:
  static const HostClass kClass;
  const HostClass& Class() const override { return kClass; }

  void GetItem(HostCall& call);
  void GetCount(HostCall& call);
  void GetNewEnum(HostCall& call);

 private:
  ~DrivesObject() override = default;
};

// The mount point of the file system that a path lies on.
// Shapes: an absolute path.
std::string MountPointOf(const std::string& path);
// "/" and the mount points of disks.
std::vector<std::string> MountPoints();
// Whether a path is a mount point.
bool IsMountPoint(const std::string& path);

}  // namespace mirolta::host
