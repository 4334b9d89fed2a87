// The automation class Scripting.FileSystemObject.
#pragma once

#include "classes/host_object.h"

namespace mirolta::host {

class FileSystemObject final : public HostObject {
 public:
  static const HostClass kClass;
  const HostClass& Class() const override { return kClass; }

  void BuildPath(HostCall& call);
  void CopyFile(HostCall& call);
  void CopyFolder(HostCall& call);
  void CreateFolder(HostCall& call);
  void CreateTextFile(HostCall& call);
  void DeleteFile(HostCall& call);
  void DeleteFolder(HostCall& call);
  void DriveExists(HostCall& call);
  void GetDrives(HostCall& call);
  void FileExists(HostCall& call);
  void FolderExists(HostCall& call);
  void GetAbsolutePathName(HostCall& call);
  void GetBaseName(HostCall& call);
  void GetDrive(HostCall& call);
  void GetDriveName(HostCall& call);
  void GetExtensionName(HostCall& call);
  void GetFile(HostCall& call);
  void GetFileName(HostCall& call);
  void GetFileVersion(HostCall& call);
  void GetFolder(HostCall& call);
  void GetParentFolderName(HostCall& call);
  void GetSpecialFolder(HostCall& call);
  void GetStandardStream(HostCall& call);
  void GetTempName(HostCall& call);
  void MoveFile(HostCall& call);
  void MoveFolder(HostCall& call);
  void OpenTextFile(HostCall& call);

 private:
  ~FileSystemObject() override = default;
};

HostObject* NewFileSystemObject();

}  // namespace mirolta::host
