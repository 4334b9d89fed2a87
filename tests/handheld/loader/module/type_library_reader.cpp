#include "module/type_library_reader.h"

#include "image/problem.h"
#include "module/member_calls.h"

namespace mirolta::loader {
namespace {

constexpr uint32_t kMagic = 0x5446534D;  // "MSFT"
constexpr uint32_t kHeaderSize = 0x54;
constexpr uint32_t kHelpLibraryFlag = 0x100;  // of the header: one more word follows
constexpr uint32_t kTypeSize = 0x64;
constexpr uint32_t kFixedMemberSize = 0x18;
constexpr uint32_t kParameterSize = 12;
constexpr uint32_t kDefaultsFlag = 0x1000;  // of a member: default values precede the parameters
constexpr uint32_t kNoValue = 0xFFFFFFFF;

// Flags of a parameter.
constexpr uint32_t kReturned = 0x08;
constexpr uint32_t kOptional = 0x10;
constexpr uint32_t kHasDefault = 0x20;

constexpr uint32_t kDispatchKind = 4;
constexpr uint32_t kClassKind = 5;
constexpr VARTYPE kPointerType = 26;
constexpr VARTYPE kUserType = 29;

constexpr uint32_t kSimpleFlag = 0x80000000;  // of a description: the type itself

}  // namespace

bool TypeLibraryReader::Read(const ImageBytes& bytes, std::string* problem) {
  bytes_ = bytes;
  if (!ReadSegments()) return Fail(problem, "the type library's header is malformed");
  uint32_t id = 0;
  uint32_t version = 0;
  int32_t help = 0;
  uint32_t name = 0;
  static_cast<void>(bytes_.Read(0x08, &id) && bytes_.Read(0x18, &version) &&
                    bytes_.Read(0x24, &help) && bytes_.Read(0x38, &name));
  if (!ReadGuid(id, &table_.id) || !ReadName(name, &table_.name) ||
      !ReadString(help, &table_.help)) {
    return Fail(problem, "the type library's name is malformed");
  }
  table_.major = static_cast<WORD>(version);
  table_.minor = static_cast<WORD>(version >> 16);
  for (uint32_t i = 0; i < type_count_; ++i) {
    uint32_t kind = 0;
    const uint32_t type = i * kTypeSize;
    if (!segments_[kTypes].Read(type, &kind)) return Fail(problem, "a type is missing");
    kind &= 0xF;
    if (kind != kDispatchKind && kind != kClassKind) {
      return Fail(problem, "type ", i, " of the type library is of kind ", kind);
    }
    if (kind == kDispatchKind ? !ReadInterface(type) : !ReadClass(type)) {
      return Fail(problem, "type ", i, " of the type library is malformed");
    }
  }
  for (const InterfaceTable& one : interfaces_) interface_list_.push_back(&one);
  table_.interfaces = interface_list_.data();
  table_.interface_count = static_cast<unsigned>(interface_list_.size());
  table_.classes = classes_.data();
  table_.class_count = static_cast<unsigned>(classes_.size());
  return true;
}

bool TypeLibraryReader::ReadSegments() {
  uint32_t magic = 0;
  uint32_t flags = 0;
  if (!bytes_.Read(0, &magic) || magic != kMagic || !bytes_.Read(0x14, &flags) ||
      !bytes_.Read(0x20, &type_count_) || type_count_ > 0xFFFF) {
    return false;
  }
  uint64_t at = kHeaderSize + ((flags & kHelpLibraryFlag) != 0 ? 4 : 0) + uint64_t{type_count_} * 4;
  for (ImageBytes& segment : segments_) {
    int32_t offset = 0;
    uint32_t length = 0;
    if (!bytes_.Read(at, &offset) || !bytes_.Read(at + 4, &length)) return false;
    at += 16;
    if (offset < 0) continue;  // an empty one
    if (!bytes_.Part(static_cast<uint32_t>(offset), length, &segment)) return false;
  }
  return true;
}

bool TypeLibraryReader::ReadInterface(uint32_t type) {
  uint32_t guid = 0;
  uint32_t name = 0;
  int32_t help = 0;
  InterfaceTable one = {};
  std::vector<MemberRow> members;
  const ImageBytes& types = segments_[kTypes];
  if (!types.Read(type + 0x2C, &guid) || !types.Read(type + 0x34, &name) ||
      !types.Read(type + 0x3C, &help) || !ReadGuid(guid, &one.iid) || !ReadName(name, &one.name) ||
      !ReadString(help, &one.help) || !ReadMembers(type, &members)) {
    return false;
  }
  members_.push_back(std::move(members));
  one.members = members_.back().data();
  one.member_count = static_cast<unsigned>(members_.back().size());
  interfaces_.push_back(one);
  interface_types_.push_back(type);
  return true;
}

// The records of the members follow each other; arrays of their ids and names follow the records.
bool TypeLibraryReader::ReadMembers(uint32_t type, std::vector<MemberRow>* members) {
  uint32_t place = 0;
  uint32_t counts = 0;
  uint32_t records_size = 0;
  if (!segments_[kTypes].Read(type + 0x04, &place) ||
      !segments_[kTypes].Read(type + 0x18, &counts) || counts >> 16 != 0) {  // variables
    return false;
  }
  const uint32_t count = counts & 0xFFFF;
  if (count == 0) return true;
  if (!bytes_.Read(place, &records_size)) return false;
  const uint64_t ids = uint64_t{place} + 4 + records_size;
  uint64_t at = uint64_t{place} + 4;
  for (uint32_t i = 0; i < count; ++i) {
    uint16_t size = 0;
    ImageBytes record;
    uint32_t id = 0;
    uint32_t name = 0;
    MemberRow row = {};
    if (!bytes_.Read(at, &size) || size < kFixedMemberSize || !bytes_.Part(at, size, &record) ||
        !bytes_.Read(ids + uint64_t{i} * 4, &id) ||
        !bytes_.Read(ids + (uint64_t{count} + i) * 4, &name) ||
        !ReadMember(record, id, name, &row)) {
      return false;
    }
    members->push_back(row);
    at += size;
  }
  return true;
}

bool TypeLibraryReader::ReadMember(const ImageBytes& record, uint32_t id, uint32_t name,
                                   MemberRow* row) {
  uint16_t slot = 0;
  uint32_t kinds = 0;
  uint16_t count = 0;
  int32_t help = -1;
  static_cast<void>(record.Read(0x0C, &slot) && record.Read(0x10, &kinds) &&
                    record.Read(0x14, &count));
  const uint64_t parameters_size =
      uint64_t{count} * (kParameterSize + ((kinds & kDefaultsFlag) != 0 ? 4u : 0u));
  if (record.Size() < kFixedMemberSize + parameters_size) return false;
  // Attributes that a record is too short for are not there: the context of the help, its text.
  if (record.Size() - parameters_size >= 0x20 && !record.Read(0x1C, &help)) return false;
  row->id = static_cast<DISPID>(id);
  row->kind = static_cast<INVOKEKIND>(kinds >> 3 & 0xF);
  if (!ReadName(name, &row->name) || !ReadString(help, &row->help) ||
      !ReadParameters(record, row)) {
    return false;
  }
  // Offsets of slots count in pointers of the library's system, 32 bits.
  row->call = MakeMemberCall(slot / 4, *row);
  return row->call != nullptr;
}

bool TypeLibraryReader::ReadParameters(const ImageBytes& record, MemberRow* row) {
  uint32_t kinds = 0;
  uint16_t count = 0;
  static_cast<void>(record.Read(0x10, &kinds) && record.Read(0x14, &count));
  const uint64_t parameters = record.Size() - uint64_t{count} * kParameterSize;
  const uint64_t defaults = parameters - uint64_t{count} * 4;
  row->result = kNone;
  uint32_t arguments = 0;
  for (uint32_t i = 0; i < count; ++i) {
    uint32_t description = 0;
    uint32_t name = 0;
    uint32_t flags = 0;
    ValueType type = kNone;
    static_cast<void>(record.Read(parameters + uint64_t{i} * kParameterSize, &description) &&
                      record.Read(parameters + uint64_t{i} * kParameterSize + 4, &name) &&
                      record.Read(parameters + uint64_t{i} * kParameterSize + 8, &flags));
    if ((flags & kReturned) != 0) {
      if (i + 1 != count || !ReadPointer(description, &description)) return false;
      if (!ReadType(description, &row->result)) return false;
      continue;
    }
    if (arguments == kMaxParameters || !ReadType(description, &type)) return false;
    ParameterRow& parameter = row->parameters.rows[arguments++];
    parameter.type = type;
    // A property's new value need not have a name.
    if (name == kNoValue) {
      parameter.name = Keep(u"value");
    } else if (!ReadName(name, &parameter.name)) {
      return false;
    }
    uint32_t value = kNoValue;
    if ((flags & kHasDefault) != 0) {
      if ((kinds & kDefaultsFlag) == 0 || !record.Read(defaults + uint64_t{i} * 4, &value) ||
          !ReadDefault(value, type.type, &parameter.default_value)) {
        return false;
      }
      parameter.presence = Presence::kDefault;
    } else if ((flags & kOptional) != 0) {
      parameter.presence = Presence::kOptional;
    }
  }
  return true;
}

// Small values are encoded in place: a flag, 5 bits of type, 26 of value. Others lie in the custom
// data: the type in 16 bits, then the value.
bool TypeLibraryReader::ReadDefault(uint32_t encoded, VARTYPE type, LONG* value) const {
  if (encoded == kNoValue) return false;
  VARTYPE found = 0;
  uint32_t bits = 0;
  if ((encoded & kSimpleFlag) != 0) {
    found = static_cast<VARTYPE>(encoded >> 26 & 0x1F);
    bits = encoded & 0x3FFFFFF;
  } else {
    uint16_t high = 0;
    uint16_t low = 0;
    const ImageBytes& data = segments_[kCustomData];
    if (!data.Read(encoded, &found) || !data.Read(uint64_t{encoded} + 2, &low) ||
        !data.Read(uint64_t{encoded} + 4, &high)) {
      return false;
    }
    bits = low | uint32_t{high} << 16;
  }
  *value = static_cast<LONG>(bits);
  if (type == VT_BOOL) *value = (bits & 0xFFFF) != 0 ? VARIANT_TRUE : VARIANT_FALSE;
  return found == type || found == VT_I4 || found == VT_I2;
}

bool TypeLibraryReader::ReadPointer(uint32_t description, uint32_t* to) const {
  const ImageBytes& types = segments_[kTypeDescriptions];
  uint16_t type = 0;
  return (description & kSimpleFlag) == 0 && types.Read(description, &type) &&
         type == kPointerType && types.Read(uint64_t{description} + 4, to);
}

bool TypeLibraryReader::ReadType(uint32_t description, ValueType* type) {
  if ((description & kSimpleFlag) != 0) {
    *type = {static_cast<VARTYPE>(description & 0xFFFF), nullptr};
    return true;
  }
  // A pointer to an interface: of this library, by its type, or of the system's.
  uint32_t to = 0;
  uint16_t user = 0;
  uint32_t reference = 0;
  const ImageBytes& types = segments_[kTypeDescriptions];
  if (!ReadPointer(description, &to)) return false;
  if ((to & kSimpleFlag) != 0) {
    if ((to & 0xFFFF) != VT_UNKNOWN) return false;
    *type = kUnknown;
    return true;
  }
  if (!types.Read(to, &user) || user != kUserType || !types.Read(uint64_t{to} + 4, &reference)) {
    return false;
  }
  if ((reference & 3) == 1) {  // IUnknown is the only import beside the base of all interfaces
    *type = kUnknown;
    return true;
  }
  uint32_t name = 0;
  type->type = VT_DISPATCH;
  return segments_[kTypes].Read(uint64_t{reference} + 0x34, &name) &&
         ReadName(name, &type->interface_name);
}

bool TypeLibraryReader::ReadClass(uint32_t type) {
  uint32_t guid = 0;
  uint32_t name = 0;
  int32_t help = 0;
  uint32_t implemented = 0;
  uint32_t reference = 0;
  ClassTableRow row = {};
  const ImageBytes& types = segments_[kTypes];
  if (!types.Read(type + 0x2C, &guid) || !types.Read(type + 0x34, &name) ||
      !types.Read(type + 0x3C, &help) || !types.Read(type + 0x54, &implemented) ||
      !segments_[kReferences].Read(implemented, &reference) || !ReadGuid(guid, &row.id) ||
      !ReadName(name, &row.name) || !ReadString(help, &row.help)) {
    return false;
  }
  for (size_t i = 0; i < interface_types_.size(); ++i) {
    if (interface_types_[i] == reference) row.default_interface = &interfaces_[i];
  }
  classes_.push_back(row);
  return row.default_interface != nullptr;
}

// A name: two words, its length in the lowest byte of a third, its characters.
bool TypeLibraryReader::ReadName(uint32_t offset, const OLECHAR** name) {
  uint32_t length = 0;
  ImageBytes characters;
  if (!segments_[kNames].Read(uint64_t{offset} + 8, &length) ||
      !segments_[kNames].Part(uint64_t{offset} + 12, length & 0xFF, &characters)) {
    return false;
  }
  *name = Keep(std::u16string(characters.Data(), characters.Data() + characters.Size()));
  return true;
}

bool TypeLibraryReader::ReadString(int32_t offset, const OLECHAR** text) {
  *text = u"";
  if (offset < 0) return true;
  uint16_t length = 0;
  ImageBytes characters;
  const auto at = static_cast<uint64_t>(offset);
  if (!segments_[kStrings].Read(at, &length) ||
      !segments_[kStrings].Part(at + 2, length, &characters)) {
    return false;
  }
  *text = Keep(std::u16string(characters.Data(), characters.Data() + characters.Size()));
  return true;
}

bool TypeLibraryReader::ReadGuid(uint32_t offset, const GUID** guid) {
  GUID id = {};
  ImageBytes bytes;
  if (!segments_[kGuids].Part(offset, 16, &bytes)) return false;
  static_cast<void>(bytes.Read(0, &id.Data1) && bytes.Read(4, &id.Data2) &&
                    bytes.Read(6, &id.Data3));
  for (int i = 0; i < 8; ++i) id.Data4[i] = bytes.Data()[8 + i];
  guids_.push_back(id);
  *guid = &guids_.back();
  return true;
}

const OLECHAR* TypeLibraryReader::Keep(const std::u16string& text) {
  texts_.push_back(text);
  return texts_.back().c_str();
}

}  // namespace mirolta::loader
