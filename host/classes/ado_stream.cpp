#include "classes/ado_stream.h"

#include <algorithm>

#include "classes/ado_errors.h"
#include "engine/status_text.h"
#include "files/file_paths.h"
#include "files/file_stream.h"

namespace mirolta::host {
namespace {

constexpr int32_t kReadAll = -1;
constexpr int32_t kReadLine = -2;
constexpr int32_t kWriteLine = 1;
constexpr int32_t kModeRead = 1;
constexpr int32_t kModeWrite = 2;
constexpr int32_t kModeAccess = kModeRead | kModeWrite;
constexpr int32_t kModeBits = 0x40001F;  // access, sharing, recursive
constexpr int32_t kCreateNotExist = 1;
constexpr int32_t kCreateOverWrite = 2;
constexpr uint64_t kEverything = ~uint64_t{0};
constexpr size_t kFirstBlock = 256;
constexpr size_t kLargestBlock = 65536;

struct SeparatorRow {
  int32_t value;
  const OLECHAR* text;
};
constexpr SeparatorRow kSeparators[] = {
    {-1, OLESTR("\r\n")},
    {10, OLESTR("\n")},
    {13, OLESTR("\r")},
};

UnitsView SeparatorOf(int32_t value) {
  for (const SeparatorRow& row : kSeparators) {
    if (row.value == value) return row.text;
  }
  return {};
}

// The number of bytes or characters to read; everything for -1.
uint64_t CountArgument(int32_t count) {
  if (count < kReadAll) FailAdo(kAdoBadArgument);
  return count == kReadAll ? kEverything : static_cast<uint64_t>(count);
}

// The place of `wanted` at a multiple of `step`, npos if there is none.
size_t FindAligned(std::string_view bytes, std::string_view wanted, size_t from, size_t step) {
  size_t at = bytes.find(wanted, from);
  while (at != std::string_view::npos && at % step != 0) at = bytes.find(wanted, at + 1);
  return at;
}

// The name of a file in the engine's form. As in the other classes for files, \ separates too.
std::string FileArgument(UnitsView name) {
  if (name.empty() || name.find(OLECHAR{0}) != UnitsView::npos) FailAdo(kAdoBadArgument);
  return EngineFromUnits(UnitsFromSystem(SystemPath(name)));
}

// The error of a file. The usual reason needs no words.
[[noreturn]] void FailForFile(HRESULT number, HRESULT status, HRESULT usual) {
  if (status == E_OUTOFMEMORY || status == STG_E_INSUFFICIENTMEMORY) Fail(E_OUTOFMEMORY);
  FailAdo(number, status == usual ? "" : StandardText(status, ""));
}

// A file that is being written; it is discarded unless it was finished.
struct NewFile {
  NewFile() = default;
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  ~NewFile() {
    if (Output() != nullptr) Output()->Discard();
  }
  // Null for a file written in place.
  OutputFile* Output() const { return stream ? OutputOf(stream.Get()) : nullptr; }
  HRESULT Finish() const { return Output() != nullptr ? Output()->Finish() : S_OK; }

  OwnedReference<IStream> stream;
};

// The bytes of an array argument.
class LockedBytes {
 public:
  explicit LockedBytes(const VARIANT& value) {
    const bool is_reference = value.vt == (VT_BYREF | VT_ARRAY | VT_UI1);
    if (!is_reference && value.vt != (VT_ARRAY | VT_UI1)) FailAdo(kAdoBadArgument);
    array_ = is_reference ? *value.pparray : value.parray;
    LONG lower = 0;
    LONG upper = -1;
    if (array_ == nullptr || SafeArrayGetDim(array_) != 1 ||
        FAILED(SafeArrayGetLBound(array_, 1, &lower)) ||
        FAILED(SafeArrayGetUBound(array_, 1, &upper)) ||
        FAILED(SafeArrayAccessData(array_, &data_))) {
      FailAdo(kAdoBadArgument);
    }
    size_ = static_cast<size_t>(int64_t{upper} - lower + 1);
  }
  LockedBytes(const LockedBytes&) = delete;
  LockedBytes& operator=(const LockedBytes&) = delete;
  ~LockedBytes() { static_cast<void>(SafeArrayUnaccessData(array_)); }
  std::string_view View() const { return {static_cast<const char*>(data_), size_}; }

 private:
  SAFEARRAY* array_ = nullptr;
  void* data_ = nullptr;
  size_t size_ = 0;
};

}  // namespace

void* AdoStream::OtherInterface(REFIID iid) {
  const bool is_stream = iid == IID_IStream || iid == IID_ISequentialStream;
  return is_stream ? static_cast<IStream*>(&bytes_) : nullptr;
}

void AdoStream::RequireOpen() const {
  if (!bytes_.IsOpen()) FailAdo(kAdoClosed);
}

void AdoStream::RequireStart() const {
  if (bytes_.IsOpen() && bytes_.Position() != 0) FailAdo(kAdoNotInThisContext);
}

void AdoStream::RequireType(Type type) const {
  RequireOpen();
  if (type_ != type) FailAdo(kAdoNotInThisContext);
}

void AdoStream::RequireReading(Type type) const {
  RequireType(type);
  if (!bytes_.MayRead()) FailAdo(kAdoNotInThisContext);
}

void AdoStream::RequireWriting(Type type) const {
  RequireType(type);
  if (!bytes_.MayWrite()) FailAdo(kAdoNotInThisContext);
}

void AdoStream::GetSize(HostCall& call) const {
  RequireOpen();
  call.ReturnInteger(static_cast<int32_t>(bytes_.Size()));
}

void AdoStream::GetEos(HostCall& call) const {
  RequireOpen();
  call.ReturnTruth(bytes_.Position() >= bytes_.Size());
}

void AdoStream::GetPosition(HostCall& call) const {
  RequireOpen();
  call.ReturnNumber(static_cast<double>(bytes_.Position()));
}

// Arguments are converted first, here and below: that may run a script which closes the stream.

// A position beyond the end lengthens a stream that may be written.
void AdoStream::PutPosition(HostCall& call) {
  const int32_t position = HostCall::IntegerOf(call.Value());
  RequireOpen();
  if (position < 0) FailAdo(kAdoBadArgument);
  const auto target = static_cast<uint64_t>(position);
  if (target > bytes_.Size() && bytes_.MayWrite()) bytes_.Resize(target);
  bytes_.SetPosition(target);
}

void AdoStream::GetType(HostCall& call) const {
  call.ReturnInteger(static_cast<int32_t>(type_));
}

void AdoStream::PutType(HostCall& call) {
  const int32_t type = HostCall::IntegerOf(call.Value());
  RequireStart();
  if (type != static_cast<int32_t>(Type::kBinary) && type != static_cast<int32_t>(Type::kText)) {
    FailAdo(kAdoBadArgument);
  }
  type_ = static_cast<Type>(type);
}

void AdoStream::GetLineSeparator(HostCall& call) const {
  call.ReturnInteger(line_separator_);
}

void AdoStream::PutLineSeparator(HostCall& call) {
  const int32_t separator = HostCall::IntegerOf(call.Value());
  if (SeparatorOf(separator).empty()) FailAdo(kAdoBadArgument);
  line_separator_ = separator;
}

void AdoStream::GetState(HostCall& call) const {
  call.ReturnInteger(bytes_.IsOpen() ? 1 : 0);
}

void AdoStream::GetMode(HostCall& call) const {
  call.ReturnInteger(mode_);
}

void AdoStream::PutMode(HostCall& call) {
  const int32_t mode = HostCall::IntegerOf(call.Value());
  if (bytes_.IsOpen()) FailAdo(kAdoOpen);
  if ((mode & ~kModeBits) != 0) FailAdo(kAdoBadArgument);
  mode_ = mode;
}

void AdoStream::GetCharset(HostCall& call) const {
  call.ReturnText(charset_name_);
}

void AdoStream::PutCharset(HostCall& call) {
  Units name = HostCall::TextOf(call.Value());
  RequireStart();
  TextCharset charset;
  if (!TextCharset::Find(name, &charset)) {
    FailAdo(kAdoBadArgument,
            "Streams do not know the character set \"" + SystemFromUnits(name) + "\".");
  }
  charset_name_ = std::move(name);
  charset_ = charset;
}

void AdoStream::Open(HostCall& call) {
  if (bytes_.IsOpen()) FailAdo(kAdoOpen);
  const bool has_source = call.Has(0) && call.At(0).vt != VT_EMPTY && call.At(0).vt != VT_NULL &&
                          (call.At(0).vt != VT_BSTR || SysStringLen(call.At(0).bstrVal) != 0);
  if (has_source) {
    FailAdo(kAdoNotCapable,
            "A source needs a provider, and there is none: open the stream without "
            "one, and use LoadFromFile.");
  }
  const int32_t mode = call.Integer(1, 0);
  if ((mode & ~kModeBits) != 0) FailAdo(kAdoBadArgument);
  if (mode != 0) mode_ = mode;
  // An unknown mode allows both.
  const int32_t access = (mode_ & kModeAccess) != 0 ? mode_ & kModeAccess : kModeAccess;
  bytes_.Open((access & kModeRead) != 0, (access & kModeWrite) != 0);
}

void AdoStream::Close(HostCall&) {
  RequireOpen();
  bytes_.Close();
}

void AdoStream::Read(HostCall& call) {
  const int32_t wanted = call.Integer(0, kReadAll);
  RequireReading(Type::kBinary);
  const uint64_t count = CountArgument(wanted);
  std::string read;
  if (bytes_.Append(count, &read) == 0) {
    call.ReturnNull();
  } else {
    call.ReturnBytes(read);
  }
}

void AdoStream::Write(HostCall& call) {
  RequireWriting(Type::kBinary);
  const LockedBytes bytes(call.At(0));
  bytes_.Put(bytes.View());
}

void AdoStream::SkipMark() {
  const std::string_view mark = charset_.Mark();
  if (mark.empty() || bytes_.Position() != 0) return;
  std::string start;
  bytes_.Append(mark.size(), &start);
  if (start != mark) bytes_.SetPosition(0);
}

// Reads up to `count` code units. Of a character with two units both are read.
Units AdoStream::NextCharacters(uint64_t count) {
  constexpr uint64_t kMostBytes = 4;  // of a character
  const uint64_t start = bytes_.Position();
  std::string read;
  bytes_.Append(count > kEverything / kMostBytes ? kEverything : count * kMostBytes, &read);
  if (count == kEverything) return charset_.Decode(read);
  size_t used = 0;
  uint64_t units = 0;
  while (units < count && used < read.size()) {
    size_t more = 0;
    used += charset_.FirstCharacter(std::string_view(read).substr(used), &more);
    units += more;
  }
  read.resize(used);
  bytes_.SetPosition(start + used);
  return charset_.Decode(read);
}

std::string AdoStream::NextLine() {
  const std::string separator = charset_.Encode(SeparatorOf(line_separator_));
  const uint64_t start = bytes_.Position();
  std::string read;
  size_t block = kFirstBlock;
  size_t searched = 0;
  while (bytes_.Append(block, &read) != 0) {
    const size_t at = FindAligned(read, separator, searched, charset_.UnitSize());
    if (at != std::string::npos) {
      read.resize(at);
      bytes_.SetPosition(start + at + separator.size());
      break;
    }
    // A separator may begin at the end of a block.
    searched = read.size() - std::min(read.size(), separator.size() - 1);
    block = std::min(2 * block, kLargestBlock);
  }
  return read;
}

void AdoStream::ReadText(HostCall& call) {
  const int32_t count = call.Integer(0, kReadAll);
  RequireReading(Type::kText);
  if (count < kReadLine) FailAdo(kAdoBadArgument);
  SkipMark();
  call.ReturnText(count == kReadLine ? charset_.Decode(NextLine())
                                     : NextCharacters(CountArgument(count)));
}

void AdoStream::PutText(UnitsView text) {
  std::string encoded(bytes_.Position() == 0 ? charset_.Mark() : std::string_view());
  encoded += charset_.Encode(text);
  bytes_.Put(encoded);
}

void AdoStream::WriteText(HostCall& call) {
  Units text = call.Text(0);
  const int32_t options = call.Integer(1, 0);
  RequireWriting(Type::kText);
  if (options != 0 && options != kWriteLine) FailAdo(kAdoBadArgument);
  if (options == kWriteLine) text += SeparatorOf(line_separator_);
  PutText(text);
}

void AdoStream::SkipLine(HostCall&) {
  RequireReading(Type::kText);
  SkipMark();
  static_cast<void>(NextLine());
}

void AdoStream::SetEos(HostCall&) {
  RequireOpen();
  RequireWriting(type_);
  bytes_.Resize(bytes_.Position());
}

// Text is copied to a text stream in the character set of that, and to a binary one as it is.
void AdoStream::CopyTo(HostCall& call) {
  const int32_t wanted = call.Integer(1, kReadAll);
  RequireReading(type_);
  const VARIANT& value = call.At(0);
  HostObject* const object = value.vt == VT_DISPATCH ? HostObjectOf(value.pdispVal) : nullptr;
  if (object == nullptr || &object->Class() != &Class() || object == this) {
    FailAdo(kAdoBadArgument, "The destination is another ADODB.Stream.");
  }
  auto& to = static_cast<AdoStream&>(*object);
  to.RequireWriting(to.type_);
  if (type_ == Type::kBinary && to.type_ == Type::kText) {
    FailAdo(kAdoNotInThisContext, "Bytes cannot be copied to a text stream.");
  }
  const uint64_t count = CountArgument(wanted);
  if (to.type_ == Type::kText) {
    SkipMark();
    to.PutText(NextCharacters(count));
    return;
  }
  uint64_t left = count;
  if (type_ == Type::kText && count != kEverything) {
    const uint64_t start = bytes_.Position();
    SkipMark();
    static_cast<void>(NextCharacters(count));
    left = bytes_.Position() - start;
    bytes_.SetPosition(start);
  }
  for (std::string block; left != 0; block.clear()) {
    const size_t got = bytes_.Append(std::min<uint64_t>(left, kLargestBlock), &block);
    if (got == 0) break;
    to.bytes_.Put(block);
    left -= got;
  }
}

void AdoStream::LoadFromFile(HostCall& call) {
  const Units path = call.Text(0);
  RequireOpen();
  const std::string name = FileArgument(path);
  OwnedReference<IStream> file;
  const HRESULT opened = OpenFileStream(name, {STGM_READ}, false, &file);
  if (FAILED(opened)) FailForFile(kAdoCannotOpenFile, opened, STG_E_FILENOTFOUND);
  const HRESULT loaded = bytes_.Load(file.Get());
  if (FAILED(loaded)) FailForFile(kAdoCannotReadFile, loaded, STG_E_READFAULT);
}

void AdoStream::SaveToFile(HostCall& call) {
  const Units path = call.Text(0);
  const int32_t options = call.Integer(1, kCreateNotExist);
  RequireOpen();
  const std::string name = FileArgument(path);
  if (options != kCreateNotExist && options != kCreateOverWrite) FailAdo(kAdoBadArgument);
  NewFile file;
  const FileMode mode = {STGM_WRITE, true, options == kCreateNotExist};
  HRESULT status = OpenFileStream(name, mode, false, &file.stream);
  if (SUCCEEDED(status)) status = bytes_.Save(file.stream.Get());
  if (SUCCEEDED(status)) status = file.Finish();
  if (FAILED(status)) FailForFile(kAdoCannotWriteFile, status, STG_E_FILEALREADYEXISTS);
}

void AdoStream::Flush(HostCall&) {
  RequireOpen();
}

// Nothing runs that could be cancelled.
void AdoStream::Cancel(HostCall&) {
  RequireOpen();
}

namespace {

constexpr auto kMethod = MemberKind::kMethod;
constexpr auto kProperty = MemberKind::kProperty;

constexpr HostMember kMembers[] = {
    {"Size", 1, kProperty, 0, 0, CallMember<&AdoStream::GetSize>, nullptr, " As Double",
     "The number of bytes."},
    {"EOS", 2, kProperty, 0, 0, CallMember<&AdoStream::GetEos>, nullptr, " As Boolean",
     "Whether the position is at the end."},
    {"Position", 3, kProperty, 0, 0, CallMember<&AdoStream::GetPosition>,
     CallMember<&AdoStream::PutPosition>, " As Double",
     "The position in bytes. A position beyond the end lengthens the stream by zeros."},
    {"Type", 4, kProperty, 0, 0, CallMember<&AdoStream::GetType>, CallMember<&AdoStream::PutType>,
     " As Long", "1 for bytes, 2 for text (the default). It changes at position 0 only."},
    {"LineSeparator", 5, kProperty, 0, 0, CallMember<&AdoStream::GetLineSeparator>,
     CallMember<&AdoStream::PutLineSeparator>, " As Long",
     "What ends a line: -1 for CR LF (the default), 10 for LF, 13 for CR."},
    {"State", 6, kProperty, 0, 0, CallMember<&AdoStream::GetState>, nullptr, " As Long",
     "1 if the stream is open, else 0."},
    {"Mode", 7, kProperty, 0, 0, CallMember<&AdoStream::GetMode>, CallMember<&AdoStream::PutMode>,
     " As Long",
     "1 to read, 2 to write, 3 or 0 (the default) for both. It changes while closed only."},
    {"Charset", 8, kProperty, 0, 0, CallMember<&AdoStream::GetCharset>,
     CallMember<&AdoStream::PutCharset>, " As String",
     "The character set of text: \"Unicode\" (UTF-16, the default), \"utf-8\", \"windows-1252\" "
     "and "
     "others. It changes at position 0 only."},
    {"Read", 9, kMethod, 0, 1, CallMember<&AdoStream::Read>, nullptr, "([count As Long]) As Byte()",
     "The next bytes as an array, null at the end; all of them without a count."},
    {"Open", 10, kMethod, 0, 5, CallMember<&AdoStream::Open>, nullptr,
     "([source As Variant], [mode As Long], [options As Long], [user As String], [password As "
     "String])",
     "Opens an empty stream. A source is refused."},
    {"Close", 11, kMethod, 0, 0, CallMember<&AdoStream::Close>, nullptr, "()",
     "Closes the stream and drops its bytes."},
    {"SkipLine", 12, kMethod, 0, 0, CallMember<&AdoStream::SkipLine>, nullptr, "()",
     "Goes behind the next line separator."},
    {"Write", 13, kMethod, 1, 1, CallMember<&AdoStream::Write>, nullptr, "(bytes As Byte())",
     "Writes an array of bytes."},
    {"SetEOS", 14, kMethod, 0, 0, CallMember<&AdoStream::SetEos>, nullptr, "()",
     "Cuts the stream at the position."},
    {"CopyTo", 15, kMethod, 1, 2, CallMember<&AdoStream::CopyTo>, nullptr,
     "(stream As ADODB.Stream, [count As Long])",
     "Copies bytes or characters to another open ADODB.Stream, all of them without a count."},
    {"Flush", 16, kMethod, 0, 0, CallMember<&AdoStream::Flush>, nullptr, "()",
     "Does nothing: the stream is in memory."},
    {"SaveToFile", 17, kMethod, 1, 2, CallMember<&AdoStream::SaveToFile>, nullptr,
     "(path As String, [options As Long])",
     "Writes all bytes to a file and goes to position 0; with options 2 it replaces an existing "
     "file, otherwise that is an error."},
    {"LoadFromFile", 18, kMethod, 1, 1, CallMember<&AdoStream::LoadFromFile>, nullptr,
     "(path As String)", "Replaces the bytes by those of a file and goes to position 0."},
    {"ReadText", 19, kMethod, 0, 1, CallMember<&AdoStream::ReadText>, nullptr,
     "([count As Long]) As String",
     "The next characters: all of them without a count, the next line with -2."},
    {"WriteText", 20, kMethod, 1, 2, CallMember<&AdoStream::WriteText>, nullptr,
     "(text As String, [options As Long])",
     "Writes text, with options 1 and a line separator. At position 0 the mark of UTF-16 or UTF-8 "
     "comes first."},
    {"Cancel", 21, kMethod, 0, 0, CallMember<&AdoStream::Cancel>, nullptr, "()",
     "Does nothing: no call runs in the background."},
};
static_assert(IsWellFormed(kMembers));

}  // namespace

constexpr HostClass kAdoStreamClass = {
    "ADODB.Stream", "Bytes or text in memory, read from and written to files.", kMembers};

const HostClass& AdoStream::Class() const {
  return kAdoStreamClass;
}

HostObject* NewAdoStream() {
  return new AdoStream;
}

}  // namespace mirolta::host
