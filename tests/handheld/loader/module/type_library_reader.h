// A type library as the handheld's modules contain it: the format MSFT, which compilers of
// interface definitions write. Read as far as the runtime's type information needs it: dual
// interfaces, their members, classes.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "image/image_bytes.h"
#include "seam/type_tables.h"

namespace mirolta::loader {

class TypeLibraryReader {
 public:
  // Read makes a table from a library's bytes.
  // Errors: false, with a sentence in `problem`, for what is malformed or of a kind that it does
  //         not read.
  bool Read(const ImageBytes& bytes, std::string* problem);

  const TypeLibraryTable* Table() const { return &table_; }

 private:
  enum SegmentIndex : uint8_t {
    kTypes = 0,
    kReferences = 3,
    kGuids = 5,
    kNames = 7,
    kStrings = 8,
    kTypeDescriptions = 9,
    kCustomData = 11,
    kSegmentCount = 15,
  };

  bool ReadSegments();
  bool ReadInterface(uint32_t type);
  bool ReadClass(uint32_t type);
  bool ReadMembers(uint32_t type, std::vector<MemberRow>* members);
  bool ReadMember(const ImageBytes& record, uint32_t id, uint32_t name, MemberRow* row);
  bool ReadParameters(const ImageBytes& record, MemberRow* row);
  bool ReadDefault(uint32_t encoded, VARTYPE type, LONG* value) const;
  bool ReadType(uint32_t description, ValueType* type);
  bool ReadPointer(uint32_t description, uint32_t* to) const;
  bool ReadName(uint32_t offset, const OLECHAR** name);
  bool ReadString(int32_t offset, const OLECHAR** text);
  bool ReadGuid(uint32_t offset, const GUID** guid);
  const OLECHAR* Keep(const std::u16string& text);

  ImageBytes bytes_;
  ImageBytes segments_[kSegmentCount];
  uint32_t type_count_ = 0;
  // What the rows of the table point to.
  std::deque<std::u16string> texts_;
  std::deque<GUID> guids_;
  std::deque<std::vector<MemberRow>> members_;
  std::deque<InterfaceTable> interfaces_;
  std::vector<uint32_t> interface_types_;
  std::vector<const InterfaceTable*> interface_list_;
  std::vector<ClassTableRow> classes_;
  TypeLibraryTable table_ = {};
};

}  // namespace mirolta::loader
