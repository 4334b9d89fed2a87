#include "charsets/escaped_utf8.h"
#include "registry/registry_text.h"
#include "texts/characters.h"

namespace mirolta::runtime {
namespace {

constexpr char kByteOrderMark[] = "\xEF\xBB\xBF";

// Parser holds one line at a time; every step returns a system error number.
class Parser {
 public:
  Parser(const char* text, size_t size, RegistryKey* root)
      : rest_(text), end_(text + size), root_(root), key_(root) {}

  DWORD LineNumber() const { return line_number_; }

  LONG Run() {
    if (static_cast<size_t>(end_ - rest_) >= 3 && std::memcmp(rest_, kByteOrderMark, 3) == 0) {
      rest_ += 3;
    }
    if (!NextLine() || !Take(kRegistryFirstLine) || !AtEnd()) return ERROR_BADDB;
    while (NextLine()) {
      const LONG error = Line();
      if (error != ERROR_SUCCESS) return error;
    }
    return ERROR_SUCCESS;
  }

 private:
  // Advances to the next line, without its line break and trailing blanks.
  bool NextLine() {
    ++line_number_;
    if (rest_ == end_) return false;
    at_ = rest_;
    const void* feed = std::memchr(rest_, '\n', static_cast<size_t>(end_ - rest_));
    line_end_ = feed == nullptr ? end_ : static_cast<const char*>(feed);
    rest_ = feed == nullptr ? end_ : line_end_ + 1;
    while (line_end_ != at_ && IsBlank(line_end_[-1])) --line_end_;
    return true;
  }
  static bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r'; }
  bool AtEnd() const { return at_ == line_end_; }
  bool Take(char c) {
    if (AtEnd() || *at_ != c) return false;
    ++at_;
    return true;
  }
  bool Take(const char* word) {
    const size_t length = std::strlen(word);
    if (static_cast<size_t>(line_end_ - at_) < length || std::memcmp(at_, word, length) != 0) {
      return false;
    }
    at_ += length;
    return true;
  }
  int NextHexDigit() const { return HexDigitValue(static_cast<BYTE>(*at_)); }
  void SkipBlanks() {
    while (!AtEnd() && IsBlank(*at_)) ++at_;
  }

  LONG Line() {
    const char* const begin = at_;
    SkipBlanks();
    if (AtEnd()) return ERROR_SUCCESS;
    if (*at_ == ';') {
      const size_t size = static_cast<size_t>(line_end_ - begin);
      return key_->AddComment(begin, size) ? ERROR_SUCCESS : ERROR_OUTOFMEMORY;
    }
    if (Take('[')) return KeyLine();
    return key_ == root_ ? ERROR_BADDB : ValueLine();
  }

  LONG KeyLine() {
    if (AtEnd() || line_end_[-1] != ']' || *at_ == '-') return ERROR_BADDB;
    RuntimeArray<WCHAR> path;
    if (!AppendWideFromUtf8(at_, static_cast<size_t>(line_end_ - 1 - at_), &path)) {
      return ERROR_OUTOFMEMORY;
    }
    bool made;
    key_ = root_;
    const LONG error = root_->MakePath(ViewOf(path), &key_, &made);
    if (error == ERROR_OUTOFMEMORY) return error;
    return error == ERROR_SUCCESS && key_ != root_ ? ERROR_SUCCESS : ERROR_BADDB;
  }

  LONG ValueLine() {
    RuntimeArray<WCHAR> name;
    if (!Take('@')) {
      const LONG error = Quoted(&name);
      if (error != ERROR_SUCCESS) return error;
      // A quoted name is not empty, and a duplicate would replace the first value.
      if (name.IsEmpty() || name.Size() > kLongestValueName) return ERROR_BADDB;
    }
    if (key_->FindValue(ViewOf(name)) != nullptr) return ERROR_BADDB;
    SkipBlanks();
    if (!Take('=')) return ERROR_BADDB;
    SkipBlanks();
    DWORD type = REG_NONE;
    RuntimeArray<BYTE> data;
    const LONG error = Data(&type, &data);
    if (error != ERROR_SUCCESS) return error;
    if (!AtEnd()) return ERROR_BADDB;
    return key_->SetValue(ViewOf(name), type, data.Data(), data.Size()) ? ERROR_SUCCESS
                                                                        : ERROR_OUTOFMEMORY;
  }

  LONG Data(DWORD* type, RuntimeArray<BYTE>* data) {
    if (!AtEnd() && *at_ == '"') {
      *type = REG_SZ;
      RuntimeArray<WCHAR> text;
      const LONG error = Quoted(&text);
      return error != ERROR_SUCCESS ? error : TextData(&text, data);
    }
    if (Take("dword:")) {
      *type = REG_DWORD;
      DWORD number;
      if (!Number(8, &number)) return ERROR_BADDB;
      const BYTE* bytes = reinterpret_cast<const BYTE*>(&number);
      return data->Append(bytes, sizeof(number)) ? ERROR_SUCCESS : ERROR_OUTOFMEMORY;
    }
    *type = REG_BINARY;
    if (!Take("hex")) return ERROR_BADDB;
    if (Take('(') && (!Number(8, type) || !Take(')'))) return ERROR_BADDB;
    if (!Take(':')) return ERROR_BADDB;
    RuntimeArray<BYTE> bytes;
    const LONG error = HexBytes(&bytes);
    if (error != ERROR_SUCCESS) return error;
    if (!IsTextType(*type)) {
      data->Swap(bytes);
      return ERROR_SUCCESS;
    }
    RuntimeArray<WCHAR> text;
    if (!AppendWideFromUtf8(reinterpret_cast<const char*>(bytes.Data()), bytes.Size(), &text)) {
      return ERROR_OUTOFMEMORY;
    }
    if (!text.IsEmpty() && text[text.Size() - 1] == 0) text.Shorten(text.Size() - 1);
    return TextData(&text, data);
  }

  static LONG TextData(RuntimeArray<WCHAR>* text, RuntimeArray<BYTE>* data) {
    if (!text->Append(u'\0')) return ERROR_OUTOFMEMORY;
    const BYTE* bytes = reinterpret_cast<const BYTE*>(text->Data());
    return data->Append(bytes, text->Size() * sizeof(WCHAR)) ? ERROR_SUCCESS : ERROR_OUTOFMEMORY;
  }

  // One to `most` hexadecimal digits.
  bool Number(unsigned most, DWORD* number) {
    *number = 0;
    unsigned count = 0;
    for (; count < most && !AtEnd() && NextHexDigit() >= 0; ++count, ++at_) {
      *number = *number << 4 | static_cast<DWORD>(NextHexDigit());
    }
    return count != 0;
  }

  // Bytes separated by commas; a backslash at the end of a line continues it.
  LONG HexBytes(RuntimeArray<BYTE>* bytes) {
    SkipBlanks();
    if (AtEnd()) return ERROR_SUCCESS;
    for (;;) {
      while (Take('\\')) {
        if (!AtEnd() || !NextLine()) return ERROR_BADDB;
        SkipBlanks();
      }
      DWORD byte;
      if (!Number(2, &byte)) return ERROR_BADDB;
      if (!bytes->Append(static_cast<BYTE>(byte))) return ERROR_OUTOFMEMORY;
      SkipBlanks();
      if (!Take(',')) return ERROR_SUCCESS;
      SkipBlanks();
    }
  }

  LONG Quoted(RuntimeArray<WCHAR>* text) {
    if (!Take('"')) return ERROR_BADDB;
    RuntimeArray<char> bytes;
    while (!Take('"')) {
      if (AtEnd()) return ERROR_BADDB;
      if (Take('\\') && (AtEnd() || (*at_ != '\\' && *at_ != '"'))) return ERROR_BADDB;
      if (static_cast<BYTE>(*at_) < 0x20) return ERROR_BADDB;
      if (!bytes.Append(*at_++)) return ERROR_OUTOFMEMORY;
    }
    return AppendWideFromUtf8(bytes.Data(), bytes.Size(), text) ? ERROR_SUCCESS : ERROR_OUTOFMEMORY;
  }

  const char* rest_;
  const char* const end_;
  const char* at_ = nullptr;
  const char* line_end_ = nullptr;
  DWORD line_number_ = 0;
  RegistryKey* const root_;
  RegistryKey* key_;
};

}  // namespace

LONG ParseRegistry(const char* text, size_t size, RegistryKey* root, DWORD* bad_line) {
  *bad_line = 0;
  if (size == 0) return ERROR_SUCCESS;  // an empty file is an empty registry
  Parser parser(text, size, root);
  const LONG error = parser.Run();
  if (error == ERROR_BADDB) *bad_line = parser.LineNumber();
  return error;
}

}  // namespace mirolta::runtime
