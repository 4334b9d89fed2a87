// The automation class Folder.
#pragma once

#include <string>
#include <utility>

#include "classes/file_node.h"

namespace mirolta::host {

class FolderObject final : public FileNode {
 public:
  explicit FolderObject(std::string path) : FileNode(std::move(path)) {}

  static const HostClass kClass;
  const HostClass& Class() const override { return kClass; }

  void GetFiles(HostCall& call);
  void GetSubFolders(HostCall& call);
  void GetIsRootFolder(HostCall& call);
  void CreateTextFile(HostCall& call);

 private:
  ~FolderObject() override = default;
  bool IsFolder() const override { return true; }
};

}  // namespace mirolta::host
