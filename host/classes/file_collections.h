// The automation classes Files and Folders: what lies in one folder now.
#pragma once

#include <string>
#include <utility>

#include "classes/host_object.h"
#include "files/file_facts.h"

namespace mirolta::host {

class FolderContent : public HostObject {
 public:
  void GetItem(HostCall& call);
  void GetCount(HostCall& call);
  void GetNewEnum(HostCall& call);

 protected:
  FolderContent(std::string folder, PathKind kind) : folder_(std::move(folder)), kind_(kind) {}
  ~FolderContent() override = default;

  const std::string& Folder() const { return folder_; }
  IDispatch* NewItem(const std::string& path) const;

 private:
  const std::string folder_;
  const PathKind kind_;
};

class FilesObject final : public FolderContent {
 public:
  explicit FilesObject(std::string folder) : FolderContent(std::move(folder), PathKind::kFile) {}
  static const HostClass kClass;
  const HostClass& Class() const override { return kClass; }

 private:
  ~FilesObject() override = default;
};

class FoldersObject final : public FolderContent {
 public:
  explicit FoldersObject(std::string folder)
      : FolderContent(std::move(folder), PathKind::kFolder) {}
  static const HostClass kClass;
  const HostClass& Class() const override { return kClass; }

  void Add(HostCall& call);

 private:
  ~FoldersObject() override = default;
};

}  // namespace mirolta::host
