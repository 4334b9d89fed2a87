// The reader of registry files against a small model that reads the grammar of registry_text.h: every text of a few
// tokens after each of a few beginnings; what is read is also written and read again. Readers with a planted fault
// each must be reported.
//
//   registry_reader          texts of up to four tokens
//   registry_reader --full   of up to five
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "registry/registry_text.h"
#include "verdict.h"

namespace mirolta::runtime {

namespace {

constexpr std::string_view kBeginnings[] = {"",
                                            "REGEDIT4\n",
                                            "REGEDIT4\n[a]\n",
                                            "REGEDIT4\n[a]\n@=",
                                            "REGEDIT4\n[a]\n\"a\"=hex(2):",
                                            "\xEF\xBB\xBFREGEDIT4\n[k\\"};
constexpr std::string_view kTokens[] = {
    "a",  "A", "\"", "\\", "[", "]", "=", "@",    ";",      "\n",   " ",       "\t",      ",",
    "41", "1", "-",  "0",  "(", ")", ":", "\r\n", "dword:", "hex:", "hex(1):", "REGEDIT4"};

// What a text gives: a listing of the tree, or the number of its malformed line.
struct Outcome {
  std::string listing;
  unsigned long bad_line = 0;
  bool operator==(const Outcome& other) const {
    return bad_line == other.bad_line && (bad_line != 0 || listing == other.listing);
  }
};

// --- The model
// ----------------------------------------------------------------------------------------

struct Entry {
  std::string name;  // "@" and empty for the default value, ";" for a comment, else quoted
  std::string data;
};
struct Key {
  std::string name;
  std::vector<Entry> entries;
  std::vector<Key> children;
};

std::string Lower(std::string text) {
  for (char& c : text) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return text;
}

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r';
}

// Removes a prefix.
bool Eat(std::string_view& text, std::string_view prefix) {
  if (!text.starts_with(prefix)) return false;
  text.remove_prefix(prefix.size());
  return true;
}
void EatBlanks(std::string_view& text) {
  while (!text.empty() && IsBlank(text[0])) text.remove_prefix(1);
}
bool EatHex(std::string_view& text, size_t most, unsigned long* number) {
  const size_t count =
      std::min({text.find_first_not_of("0123456789abcdefABCDEF"), most, text.size()});
  if (count == 0) return false;
  *number = std::stoul(std::string(text.substr(0, count)), nullptr, 16);
  text.remove_prefix(count);
  return true;
}
bool EatQuoted(std::string_view& text, std::string* content) {
  if (!Eat(text, "\"")) return false;
  while (!Eat(text, "\"")) {
    if (text.empty() || static_cast<unsigned char>(text[0]) < 0x20) return false;
    if (text[0] == '\\') {
      if (text.size() < 2 || (text[1] != '\\' && text[1] != '"')) return false;
      text.remove_prefix(1);
    }
    *content += text[0];
    text.remove_prefix(1);
  }
  return true;
}

class Model {
 public:
  explicit Model(std::string_view text) {
    Eat(text, "\xEF\xBB\xBF");
    while (!text.empty()) {
      const size_t end = text.find('\n');
      std::string_view line = text.substr(0, end);
      text.remove_prefix(end == text.npos ? text.size() : end + 1);
      while (!line.empty() && IsBlank(line.back())) line.remove_suffix(1);
      lines_.push_back(line);
    }
  }
  Outcome Run() {
    if (lines_.empty() || lines_[0] != "REGEDIT4") return {"", 1};
    for (at_ = 1; at_ < lines_.size(); ++at_) {
      if (!Line(lines_[at_])) return {"", at_ + 1};
    }
    Outcome outcome;
    List(root_, &outcome.listing);
    return outcome;
  }
  // After Run: what is left when the tree has been written, which omits outermost keys without content.
  Outcome Written() {
    std::erase_if(root_.children,
                  [](const Key& key) { return key.entries.empty() && key.children.empty(); });
    Outcome outcome;
    List(root_, &outcome.listing);
    return outcome;
  }
  static void List(const Key& key, std::string* out) {
    for (const Entry& entry : key.entries) *out += entry.name + "=" + entry.data + "\n";
    for (const Key& child : key.children) {
      *out += "[" + child.name + "\n";
      List(child, out);
      *out += "]\n";
    }
  }

 private:
  bool Line(std::string_view line) {
    const std::string_view whole = line;
    EatBlanks(line);
    if (line.empty()) return true;
    if (line[0] == ';') {
      (has_key_ ? *KeyAt(path_) : root_).entries.push_back({";", std::string(whole)});
      return true;
    }
    if (Eat(line, "["))
      return !line.empty() && line.back() == ']' && Path(line.substr(0, line.size() - 1));
    return has_key_ && Value(line);
  }
  bool Path(std::string_view text) {
    if (text.starts_with('-')) return false;
    std::vector<std::string> path;
    std::string name;
    for (const char c : std::string(text) + "\\") {
      if (static_cast<unsigned char>(c) < 0x20) return false;
      if (c != '\\') {
        name += c;
      } else if (!name.empty()) {
        path.push_back(name);
        name.clear();
      }
    }
    path_ = path;
    has_key_ = !path.empty();
    return has_key_ && KeyAt(path) != nullptr;
  }
  // Makes the keys that are missing.
  Key* KeyAt(const std::vector<std::string>& path) {
    Key* key = &root_;
    for (const std::string& name : path) {
      Key* found = nullptr;
      for (Key& child : key->children) {
        if (Lower(child.name) == Lower(name)) found = &child;
      }
      if (found == nullptr) {
        key->children.push_back({name, {}, {}});
        found = &key->children.back();
      }
      key = found;
    }
    return key;
  }
  bool Value(std::string_view line) {
    std::string name, data;
    const bool is_default = Eat(line, "@");
    if (!is_default && (!EatQuoted(line, &name) || name.empty())) return false;
    Key* const key = KeyAt(path_);
    const std::string shown = is_default ? "@" : "\"" + name;
    for (const Entry& entry : key->entries) {
      if (Lower(entry.name) == Lower(shown)) return false;
    }
    EatBlanks(line);
    if (!Eat(line, "=")) return false;
    EatBlanks(line);
    if (!Data(line, &data)) return false;
    key->entries.insert(is_default ? key->entries.begin() : key->entries.end(), {shown, data});
    return true;
  }
  bool Data(std::string_view line, std::string* data) {
    unsigned long type = 3, number = 0;
    std::string bytes;
    if (line.starts_with('"')) {
      *data = "1:";
      return EatQuoted(line, data) && line.empty();
    }
    if (Eat(line, "dword:")) {
      if (!EatHex(line, 8, &number)) return false;
      for (int i = 0; i < 4; ++i) bytes += static_cast<char>(number >> (8 * i));
      *data = "4:" + bytes;
      return line.empty();
    }
    if (!Eat(line, "hex")) return false;
    if (Eat(line, "(") && (!EatHex(line, 8, &type) || !Eat(line, ")"))) return false;
    if (!Eat(line, ":") || !Bytes(line, &bytes) || !line.empty()) return false;
    const bool is_text = type == 1 || type == 2 || type == 7;
    if (is_text && bytes.ends_with('\0')) bytes.pop_back();
    *data = std::to_string(type) + ":" + bytes;
    return true;
  }
  bool Bytes(std::string_view& line, std::string* bytes) {
    EatBlanks(line);
    if (line.empty()) return true;
    for (;;) {
      while (Eat(line, "\\")) {
        if (!line.empty()) return false;
        if (++at_ == lines_.size()) return false;
        line = lines_[at_];
        EatBlanks(line);
      }
      unsigned long byte = 0;
      if (!EatHex(line, 2, &byte)) return false;
      *bytes += static_cast<char>(byte);
      EatBlanks(line);
      if (!Eat(line, ",")) return true;
      EatBlanks(line);
    }
  }

  std::vector<std::string_view> lines_;
  size_t at_ = 0;
  Key root_;
  std::vector<std::string> path_;
  bool has_key_ = false;
};

// --- The reader
// ----------------------------------------------------------------------------------------

std::string Narrow(WideView text) {
  std::string narrow;
  for (const WCHAR c : text) narrow += static_cast<char>(c);
  return narrow;
}

void List(const RegistryKey& key, std::string* out) {
  for (const RegistryValue* value = key.FirstValue(); value != nullptr; value = value->Next()) {
    std::string data(reinterpret_cast<const char*>(value->data.Data()), value->data.Size());
    if (value->is_comment) {
      *out += ";=" + data + "\n";
      continue;
    }
    if (IsTextType(value->type)) {
      std::u16string units(data.size() / 2, u'?');
      std::memcpy(units.data(), data.data(), units.size() * 2);
      // With the terminator, which every text has.
      data = units.empty() || units.back() != 0 ? "no terminator"
                                                : Narrow(units).substr(0, units.size() - 1);
    }
    *out += (value->Name().empty() ? "@" : "\"" + Narrow(value->Name())) + "=" +
            std::to_string(value->type) + ":" + data + "\n";
  }
  for (const RegistryKey* child = key.FirstChild(); child != nullptr; child = child->Next()) {
    *out += "[" + Narrow(child->Name()) + "\n";
    List(*child, out);
    *out += "]\n";
  }
}

Outcome Read(std::string_view text) {
  RegistryKey root;
  DWORD bad_line = 0;
  const LONG error = ParseRegistry(text.data(), text.size(), &root, &bad_line);
  if (error != ERROR_SUCCESS) return {"", error == ERROR_BADDB ? bad_line : ~0ul};
  Outcome outcome;
  List(root, &outcome.listing);
  return outcome;
}

// Written and read again.
Outcome ReadAgain(std::string_view text) {
  RegistryKey root;
  DWORD bad_line = 0;
  RuntimeArray<char> written;
  if (ParseRegistry(text.data(), text.size(), &root, &bad_line) != ERROR_SUCCESS ||
      !FormatRegistry(root, &written)) {
    return {"", ~0ul};
  }
  return Read({written.Data(), written.Size()});
}

// Readers that are wrong for few texts.
Outcome CountsContinuationsAsOne(std::string_view text) {
  Outcome outcome = Read(text);
  if (outcome.bad_line > 4 && text.find("\\\n") != text.npos) --outcome.bad_line;
  return outcome;
}
Outcome TakesDeletions(std::string_view text) {
  std::string changed(text);
  const size_t at = changed.find("[-a]");
  if (at != changed.npos) changed.erase(at + 1, 1);
  return Read(changed);
}
Outcome MindsLetterCase(std::string_view text) {
  std::string changed(text);
  const size_t at = changed.find("[A]");
  if (at != changed.npos && text.find("[a]") != text.npos) changed[at + 1] = 'b';
  return Read(changed);
}

using Reader = Outcome (*)(std::string_view text);

bool Run(const char* name, Reader read, int most, bool is_planted) {
  uint64_t texts = 0, accepted = 0, wrong = 0;
  for (const std::string_view beginning : kBeginnings) {
    uint64_t sequences = 1;
    for (int length = 0; length <= most; ++length, sequences *= std::size(kTokens)) {
      for (uint64_t number = 0; number < sequences; ++number) {
        std::string text(beginning);
        uint64_t rest = number;
        for (int i = 0; i < length; ++i, rest /= std::size(kTokens)) {
          text += kTokens[rest % std::size(kTokens)];
        }
        ++texts;
        Model model(text);
        // An empty file is an empty registry.
        const Outcome expected = text.empty() ? Outcome() : model.Run();
        accepted += expected.bad_line == 0;
        if (read(text) == expected &&
            (is_planted || expected.bad_line != 0 || ReadAgain(text) == model.Written())) {
          continue;
        }
        if (wrong++ == 0 && !is_planted) {
          const Outcome got = read(text);
          std::printf("%s\n  line %lu, not %lu\n%s", text.c_str(), got.bad_line, expected.bad_line,
                      got.listing.c_str());
        }
      }
    }
  }
  const std::string what = "accepted of " + std::to_string(texts) + " texts";
  return prove::Report(name, accepted, what, wrong, is_planted);
}

}  // namespace

}  // namespace mirolta::runtime

int main(int argc, char** argv) {
  using namespace mirolta::runtime;
  const bool is_full = mirolta::prove::WantsAll(argc, argv);
  bool holds = Run("registry reader", Read, is_full ? 5 : 4, false);
  holds &= Run("registry reader that counts continuations as one line", CountsContinuationsAsOne, 3,
               true);
  holds &= Run("registry reader that takes deletions", TakesDeletions, 4, true);
  holds &= Run("registry reader that minds letter case", MindsLetterCase, 3, true);
  return holds ? 0 : 1;
}
