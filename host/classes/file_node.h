// What the automation classes File and Folder share.
#pragma once

#include <sys/stat.h>

#include <array>
#include <string>

#include "classes/host_object.h"

namespace mirolta::host {

class FileNode : public HostObject {
 public:
  const std::string& Path() const { return path_; }

  void GetPath(HostCall& call);
  void GetName(HostCall& call);
  void PutName(HostCall& call);
  void GetShortPath(HostCall& call) { GetPath(call); }
  void GetShortName(HostCall& call) { GetName(call); }
  void GetParentFolder(HostCall& call);
  void GetDrive(HostCall& call);
  void GetAttributes(HostCall& call);
  void PutAttributes(HostCall& call);
  void GetDateCreated(HostCall& call);
  void GetDateLastModified(HostCall& call);
  void GetDateLastAccessed(HostCall& call);
  void GetSize(HostCall& call);
  void GetType(HostCall& call);
  void Copy(HostCall& call);
  void Move(HostCall& call);
  void Delete(HostCall& call);

 protected:
  // Shapes: an absolute system path.
  explicit FileNode(std::string path) : path_(std::move(path)) {}
  ~FileNode() override = default;

  virtual bool IsFolder() const = 0;
  // Errors: throws CallError if the file, or folder, is gone.
  struct stat Facts() const;

 private:
  std::string path_;
};

inline constexpr std::array kFileNodeMembers = std::to_array<HostMember>({
    {"Path", DISPID_VALUE, MemberKind::kProperty, 0, 0, CallMember<&FileNode::GetPath>, nullptr,
     " As String", "The absolute path."},
    {"Name", 1, MemberKind::kProperty, 0, 0, CallMember<&FileNode::GetName>,
     CallMember<&FileNode::PutName>, " As String", "The last part of the path; assigning renames."},
    {"ShortPath", 2, MemberKind::kProperty, 0, 0, CallMember<&FileNode::GetShortPath>, nullptr,
     " As String", "The path: there are no short names here."},
    {"ShortName", 3, MemberKind::kProperty, 0, 0, CallMember<&FileNode::GetShortName>, nullptr,
     " As String", "The name: there are no short names here."},
    {"ParentFolder", 4, MemberKind::kProperty, 0, 0, CallMember<&FileNode::GetParentFolder>,
     nullptr, " As Folder", "The folder that it lies in, null for the root."},
    {"Drive", 5, MemberKind::kProperty, 0, 0, CallMember<&FileNode::GetDrive>, nullptr, " As Drive",
     "The Drive that it lies on."},
    {"Attributes", 6, MemberKind::kProperty, 0, 0, CallMember<&FileNode::GetAttributes>,
     CallMember<&FileNode::PutAttributes>, " As Long",
     "1 read-only, 2 hidden (a leading dot), 16 folder, 1024 link; assigning changes read-only."},
    {"DateCreated", 7, MemberKind::kProperty, 0, 0, CallMember<&FileNode::GetDateCreated>, nullptr,
     " As Date", "When it was created."},
    {"DateLastModified", 8, MemberKind::kProperty, 0, 0, CallMember<&FileNode::GetDateLastModified>,
     nullptr, " As Date", "When its content was changed last."},
    {"DateLastAccessed", 9, MemberKind::kProperty, 0, 0, CallMember<&FileNode::GetDateLastAccessed>,
     nullptr, " As Date", "When it was read last, as far as the file system notes it."},
    {"Size", 10, MemberKind::kProperty, 0, 0, CallMember<&FileNode::GetSize>, nullptr, " As Double",
     "The number of bytes, of a folder the sum of all files in it."},
    {"Type", 11, MemberKind::kProperty, 0, 0, CallMember<&FileNode::GetType>, nullptr, " As String",
     "A text for users, such as \"TXT File\"."},
    {"Copy", 12, MemberKind::kMethod, 1, 2, CallMember<&FileNode::Copy>, nullptr,
     "(destination As String, [overwrite As Boolean])",
     "Copies it, into a folder if the destination ends with a separator."},
    {"Move", 13, MemberKind::kMethod, 1, 1, CallMember<&FileNode::Move>, nullptr,
     "(destination As String)",
     "Moves it, into a folder if the destination ends with a separator."},
    {"Delete", 14, MemberKind::kMethod, 0, 1, CallMember<&FileNode::Delete>, nullptr,
     "([force As Boolean])", "Deletes it; with force, read-only files too."},
});

// The shared members and a class's own, which have ids from 20 on.
template <size_t kOwn>
constexpr std::array<HostMember, kFileNodeMembers.size() + kOwn> WithFileNodeMembers(
    const HostMember (&own)[kOwn]) {
  std::array<HostMember, kFileNodeMembers.size() + kOwn> all{};
  for (size_t i = 0; i < kFileNodeMembers.size(); ++i) all[i] = kFileNodeMembers[i];
  for (size_t i = 0; i < kOwn; ++i) all[kFileNodeMembers.size() + i] = own[i];
  return all;
}

// Whole numbers up to 2^31 - 1 are integers, others floating-point.
void ReturnSize(HostCall& call, double size);

}  // namespace mirolta::host
