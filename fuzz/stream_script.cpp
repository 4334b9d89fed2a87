#include "stream_script.h"

#include <algorithm>

namespace mirolta::fuzz {
namespace {

constexpr int kVariables = 4;
constexpr int kFiles = 3;
constexpr const char kClosed[] = "E-2146824584;";
constexpr const char kNoMember[] = "E-2146827850;";
constexpr const char kTypeMismatch[] = "E-2147352571;";

// A stream of the system: its content, which others may share, and its position.
struct Device {
  std::shared_ptr<std::string> content;
  size_t position = 0;
};
// The state of a stream's script object.
struct Stream {
  std::shared_ptr<Device> device;
  int new_file = -1;  // replaces this file when it is closed
  bool is_open = true;
};
using StreamPointer = std::shared_ptr<Stream>;

std::string FileName(int file) {
  return "f" + std::to_string(file);
}

class Maker {
 public:
  explicit Maker(FuzzInput& in) : in_(in) {
    for (const auto& [name, text] : FilesBefore()) {
      directory_.push_back(std::make_shared<std::string>(text));
    }
  }

  StreamScript Run() {
    Line("var s = [], heirs = [], kept, log = ''");
    Line(
        "function attempt(f) { try { var r = f(); log += (r === undefined ? '' : r) + ';' }"
        " catch (e) { log += 'E' + e.number + ';' } }");
    Line("function list(b) { return Array.prototype.join.call(b, ',') }");
    Line("function F() {}");
    for (int lines = 0; lines < 40 && !in_.IsEmpty(); ++lines) Step();
    for (int i = 0; i < kFiles; ++i) made_.files[FileName(i)] = *directory_[Index(i)];
    return std::move(made_);
  }

 private:
  static size_t Index(int i) { return static_cast<size_t>(i); }
  void Line(const std::string& text) { made_.script += text + ";\n"; }
  // A step whose result or error is logged.
  void Try(const std::string& expression, const std::string& expected) {
    Line("attempt(function () { " + expression + " })");
    made_.log += expected;
  }
  static std::string Name(int variable) { return "s[" + std::to_string(variable) + "]"; }
  int Variable() { return in_.Byte() % kVariables; }

  std::string Bytes(std::string* text) {
    const size_t size = in_.Byte() % 20;
    std::string values;
    for (size_t i = 0; i < size; ++i) {
      const uint8_t byte = in_.Byte();
      *text += static_cast<char>(byte);
      values += (i > 0 ? "," : "") + std::to_string(byte);
    }
    return "new Uint8Array([" + values + "])";
  }

  void Assign(int variable, StreamPointer stream) { streams_[variable] = std::move(stream); }

  void Step() {
    const int variable = Variable();
    switch (in_.Byte() % 20) {
      case 0:
      case 1:
        return OpenFile(variable);
      case 2:
      case 3:
        return MemoryStream(variable);
      case 4: {
        const int from = Variable();
        Line(Name(variable) + " = " + Name(from));
        return Assign(variable, streams_[from]);
      }
      case 5:
        Line(Name(variable) + " = null");
        return Assign(variable, nullptr);
      case 6:
        // Objects that are created and collected, streams among them.
        return Line(
            "for (var i = 0; i < 20; i++) { kept = WScript.MemoryStream(); kept = { a: kept } }");
      case 7:
        return Line("heirs = []");
      default:
        if (streams_[variable] != nullptr) Use(variable);
        return;
    }
  }

  void OpenFile(int variable) {
    const int file = in_.Byte() % kFiles;
    const bool is_new = in_.Byte() % 2 != 0;
    auto stream = std::make_shared<Stream>();
    stream->device = std::make_shared<Device>();
    stream->device->content = is_new ? std::make_shared<std::string>() : directory_[Index(file)];
    if (is_new) stream->new_file = file;
    Line(Name(variable) + " = WScript.OpenFile(folder + '/" + FileName(file) + "', '" +
         (is_new ? "w+" : "r+") + "')");
    Assign(variable, stream);
  }

  void MemoryStream(int variable) {
    std::string text;
    const std::string bytes = Bytes(&text);
    auto stream = std::make_shared<Stream>();
    stream->device = std::make_shared<Device>();
    stream->device->content = std::make_shared<std::string>(text);
    Line(Name(variable) + " = WScript.MemoryStream(" + bytes + ")");
    Assign(variable, stream);
  }

  void Use(int variable) {
    Stream& stream = *streams_[variable];
    const std::string name = Name(variable);
    const uint8_t what = in_.Byte() % 16;
    if (what < 4) return Inherit(variable, name);
    if (what == 4) return Close(&stream, name);
    if (what == 5) return Copy(variable);
    if (!stream.is_open) {
      static constexpr const char* kUses[] = {
          ".Read(3)", ".Size", ".Position = 0", ".Commit()", ".Write(new Uint8Array(2))", " + ''"};
      return Try("return " + name + kUses[in_.Byte() % 6], kClosed);
    }
    UseOpen(*stream.device, name, what);
  }

  void UseOpen(Device& device, const std::string& name, uint8_t what) {
    std::string& content = *device.content;
    switch (what) {
      case 6:
      case 7: {
        const size_t count = in_.Byte() % 30;
        std::string expected;
        for (size_t i = 0; i < count && device.position < content.size(); ++i) {
          const auto byte = static_cast<unsigned char>(content[device.position++]);
          expected += (i > 0 ? "," : "") + std::to_string(byte);
        }
        return Try("return list(" + name + ".Read(" + std::to_string(count) + "))", expected + ";");
      }
      case 8: {
        const size_t position = in_.Byte() % 40;
        device.position = position;
        return Try("return " + name + ".Seek(" + std::to_string(position) + ")",
                   std::to_string(position) + ";");
      }
      case 9:
        return Try("return " + name + ".Size + ' ' + " + name + ".Position",
                   std::to_string(content.size()) + " " + std::to_string(device.position) + ";");
      case 10: {
        const size_t size = in_.Byte() % 40;
        content.resize(size);
        return Try(name + ".Size = " + std::to_string(size), ";");
      }
      default: {
        std::string text;
        const std::string bytes = Bytes(&text);
        Write(&device, text);
        return Try("return " + name + ".Write(" + bytes + ")", std::to_string(text.size()) + ";");
      }
    }
  }

  static void Write(Device* device, const std::string& text) {
    if (text.empty()) return;
    std::string& content = *device->content;
    const size_t end = device->position + text.size();
    if (content.size() < end) content.resize(end);
    std::copy(text.begin(), text.end(),
              content.begin() + static_cast<std::ptrdiff_t>(device->position));
    device->position = end;
  }

  // Objects that inherit from a stream do not act for it and do not affect it when collected.
  void Inherit(int variable, const std::string& name) {
    static constexpr const char* kHeirs[] = {
        "Object.create(NAME)",
        "(F.prototype = NAME, new F)",
        "Object.setPrototypeOf({}, NAME)",
        "Object.setPrototypeOf(function () {}, NAME)",
        "Object.create(Object.create(NAME))",
        "Object.setPrototypeOf([], NAME)",
    };
    static constexpr const char* kUses[] = {"return X.Size",
                                            "X.Size = 0",
                                            "return list(X.Read(5))",
                                            "X.Write(new Uint8Array([1]))",
                                            "X.Close()",
                                            "X.Discard()",
                                            "X.Commit()",
                                            "return '' + X",
                                            "X.Position = 1"};
    std::string heir = kHeirs[in_.Byte() % 6];
    for (size_t at = 0; (at = heir.find("NAME", at)) != std::string::npos; at += name.size()) {
      heir.replace(at, 4, name);
    }
    if (in_.Byte() % 2 != 0) Line("heirs.push(" + heir + ")");
    if (in_.Byte() % 2 != 0) {
      // Another stream of the same kind does not change.
      const int other = Variable();
      if (streams_[other] != nullptr && other != variable) {
        Line("try { Object.setPrototypeOf(" + Name(other) + ", " + name + ") } catch (e) {}");
      }
    }
    std::string use = kUses[in_.Byte() % 9];
    for (size_t at = 0; (at = use.find('X', at)) != std::string::npos; at += 2) {
      use.replace(at, 1, "x ");
    }
    Try("var x = " + heir + "; F.prototype = {}; " + use, kNoMember);
  }

  void Close(Stream* stream, const std::string& name) {
    const bool discards = in_.Byte() % 4 == 0;
    Try(name + (discards ? ".Discard()" : ".Close()"), ";");
    if (stream->is_open && !discards && stream->new_file >= 0) {
      directory_[Index(stream->new_file)] = stream->device->content;
    }
    stream->is_open = false;
  }

  void Copy(int variable) {
    const int other = Variable();
    const size_t count = in_.Byte() % 40;
    Stream& from = *streams_[variable];
    const std::string call =
        "return " + Name(variable) + ".CopyTo(" + Name(other) + ", " + std::to_string(count) + ")";
    if (!from.is_open) return Try(call, kClosed);
    if (streams_[other] == nullptr) return Try(call, kTypeMismatch);
    Stream& to = *streams_[other];
    if (!to.is_open) return Try(call, kClosed);
    // The result of a copy within one file depends on the sizes of its pieces.
    if (from.device->content == to.device->content) return;
    const std::string& content = *from.device->content;
    const size_t begin = std::min(from.device->position, content.size());
    const std::string text = content.substr(begin, count);
    from.device->position += text.size();
    Write(to.device.get(), text);
    Try(call, std::to_string(text.size()) + ";");
  }

  FuzzInput& in_;
  StreamScript made_;
  StreamPointer streams_[kVariables];
  std::vector<std::shared_ptr<std::string>> directory_;
};

}  // namespace

std::map<std::string, std::string> FilesBefore() {
  return {{FileName(0), ""}, {FileName(1), "abc"}, {FileName(2), std::string(30, '\x80')}};
}

StreamScript MakeStreamScript(FuzzInput& in) {
  return Maker(in).Run();
}

}  // namespace mirolta::fuzz
