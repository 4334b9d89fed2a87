#include "registry_script.h"

namespace mirolta {

namespace {

constexpr unsigned kTokenCapacity = kLongestRegistryText + 1;
constexpr int kMaxDepth = 8;

enum class TokenKind { kWord, kQuoted, kOpen, kClose, kEquals, kEnd, kBad };

struct Token {
  TokenKind kind = TokenKind::kBad;
  OLECHAR text[kTokenCapacity] = {};
};

bool IsSpace(BYTE c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool SameText(const OLECHAR* a, const OLECHAR* b) {
  while (*a != 0 && *a == *b) {
    ++a;
    ++b;
  }
  return *a == *b;
}

class TokenReader {
 public:
  TokenReader(const BYTE* text, DWORD length, const OLECHAR* module_file)
      : next_(text), end_(text + length), module_file_(module_file) {}

  void Read(Token& token) {
    while (next_ < end_ && IsSpace(*next_)) ++next_;
    length_ = 0;
    if (next_ == end_) {
      token.kind = TokenKind::kEnd;
    } else if (*next_ == '\'') {
      token.kind = ReadQuoted(token) ? TokenKind::kQuoted : TokenKind::kBad;
    } else {
      token.kind = ReadWord(token) ? KindOfWord(token) : TokenKind::kBad;
    }
  }

 private:
  static TokenKind KindOfWord(const Token& token) {
    if (SameText(token.text, OLESTR("{"))) return TokenKind::kOpen;
    if (SameText(token.text, OLESTR("}"))) return TokenKind::kClose;
    if (SameText(token.text, OLESTR("="))) return TokenKind::kEquals;
    return TokenKind::kWord;
  }

  bool Put(Token& token, OLECHAR c) {
    if (length_ + 1 >= kTokenCapacity) return false;
    token.text[length_++] = c;
    token.text[length_] = 0;
    return true;
  }

  bool PutByte(Token& token, BYTE c) { return c > 0 && c < 0x80 && Put(token, c); }

  bool ReadWord(Token& token) {
    while (next_ < end_ && !IsSpace(*next_)) {
      if (!PutByte(token, *next_++)) return false;
    }
    return true;
  }

  bool ReadQuoted(Token& token) {
    token.text[0] = 0;
    ++next_;
    while (next_ < end_ && *next_ != '\'') {
      const bool fits = *next_ == '%' ? PutReplacement(token) : PutByte(token, *next_++);
      if (!fits) return false;
    }
    if (next_ == end_) return false;
    ++next_;
    return next_ == end_ || IsSpace(*next_);
  }

  // Inserted after quotes are parsed, so that no character of it can end them.
  bool PutReplacement(Token& token) {
    for (const char* c = "%MODULE%"; *c != 0; ++c) {
      if (next_ == end_ || *next_ != static_cast<BYTE>(*c)) return false;
      ++next_;
    }
    for (const OLECHAR* c = module_file_; *c != 0; ++c) {
      if (!Put(token, *c)) return false;
    }
    return true;
  }

  const BYTE* next_;
  const BYTE* const end_;
  const OLECHAR* const module_file_;
  unsigned length_ = 0;
};

// KeyName is the name of a key or value. Keys nest, so it is not in their frames.
class KeyName {
 public:
  KeyName() = default;
  ~KeyName() { delete[] text_; }
  KeyName(const KeyName&) = delete;
  KeyName& operator=(const KeyName&) = delete;

  // Copy copies text[length]; false if memory runs out.
  [[nodiscard]] bool Copy(const OLECHAR* text, unsigned length) {
    text_ = NewArray<OLECHAR>(CheckedSize(length) + 1);
    if (text_ == nullptr) return false;
    for (unsigned i = 0; i < length; ++i) text_[i] = text[i];
    text_[length] = 0;
    return true;
  }
  const OLECHAR* Text() const { return text_; }

 private:
  OLECHAR* text_ = nullptr;
};

class Interpreter {
 public:
  Interpreter(const BYTE* text, DWORD length, const OLECHAR* module_file, RegistryAction& action)
      : reader_(text, length, module_file), action_(action) {
    Advance();
  }

  HRESULT Run() {
    while (token_.kind != TokenKind::kEnd) {
      if (!TakeWord(OLESTR("HKCR")) || token_.kind != TokenKind::kOpen) return kBadRegistryScript;
      const HRESULT status = Block(HKEY_CLASSES_ROOT, 0);
      if (FAILED(status)) return status;
    }
    return S_OK;
  }

 private:
  void Advance() { reader_.Read(token_); }

  bool TakeWord(const OLECHAR* word) {
    if (token_.kind != TokenKind::kWord || !SameText(token_.text, word)) return false;
    Advance();
    return true;
  }

  HRESULT TakeName(KeyName& name) {
    if (token_.kind != TokenKind::kWord && token_.kind != TokenKind::kQuoted) {
      return kBadRegistryScript;
    }
    unsigned length = 0;
    while (token_.text[length] != 0) ++length;
    if (length == 0 || length >= MAX_PATH) return kBadRegistryScript;
    if (!name.Copy(token_.text, length)) return E_OUTOFMEMORY;
    Advance();
    return S_OK;
  }

  // After the equals sign: the type word and the quoted text, which stays the current token.
  bool AtText() {
    Advance();
    return TakeWord(OLESTR("s")) && token_.kind == TokenKind::kQuoted;
  }

  HRESULT Block(HKEY key, int depth) {
    Advance();
    while (token_.kind != TokenKind::kClose) {
      const HRESULT status = TakeWord(OLESTR("val")) ? Value(key) : Key(key, depth);
      if (FAILED(status)) return status;
    }
    Advance();
    return S_OK;
  }

  HRESULT Value(HKEY key) {
    KeyName name;
    HRESULT status = TakeName(name);
    if (FAILED(status)) return status;
    if (token_.kind != TokenKind::kEquals || !AtText()) return kBadRegistryScript;
    status = action_.Value(key, name.Text(), token_.text);
    Advance();
    return status;
  }

  // `depth` counts the keys around this one.
  HRESULT Key(HKEY parent, int depth) {
    if (depth >= kMaxDepth) return kBadRegistryScript;
    const KeyRule rule = TakeWord(OLESTR("NoRemove"))      ? KeyRule::kNoRemove
                         : TakeWord(OLESTR("ForceRemove")) ? KeyRule::kForceRemove
                                                           : KeyRule::kPlain;
    KeyName name;
    HRESULT status = TakeName(name);
    if (FAILED(status)) return status;
    const bool has_value = token_.kind == TokenKind::kEquals;
    if (has_value && !AtText()) return kBadRegistryScript;
    HKEY key = nullptr;
    status = action_.EnterKey(parent, name.Text(), rule, has_value ? token_.text : nullptr, &key);
    if (FAILED(status)) return status;
    if (has_value) Advance();
    if (token_.kind == TokenKind::kOpen) status = Block(key, depth + 1);
    const HRESULT left = action_.LeaveKey(parent, name.Text(), rule, key);
    return FAILED(status) ? status : left;
  }

  TokenReader reader_;
  RegistryAction& action_;
  Token token_;
};

}  // namespace

HRESULT RunRegistryScript(const BYTE* text, DWORD length, const OLECHAR* module_file,
                          RegistryAction& action) {
  return Interpreter(text, length, module_file, action).Run();
}

}  // namespace mirolta
