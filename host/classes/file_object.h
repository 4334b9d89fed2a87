// The automation class File.
#pragma once

#include <string>
#include <utility>

#include "classes/file_node.h"

namespace mirolta::host {

class FileObject final : public FileNode {
 public:
  explicit FileObject(std::string path) : FileNode(std::move(path)) {}

  static const HostClass kClass;
  const HostClass& Class() const override { return kClass; }

  void OpenAsTextStream(HostCall& call);

 private:
  ~FileObject() override = default;
  bool IsFolder() const override { return false; }
};

}  // namespace mirolta::host
