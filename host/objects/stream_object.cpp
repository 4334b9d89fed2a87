#include "objects/stream_object.h"

#include <algorithm>
#include <span>
#include <string_view>

#include "engine/arguments.h"
#include "engine/host_errors.h"
#include "engine/properties.h"
#include "engine/protected_call.h"
#include "engine/script_context.h"
#include "engine/status_text.h"
#include "files/file_stream.h"
#include "files/target_path.h"
#include "objects/object_handle.h"
#include "seam/memory.h"
#include "values/scoped_variant.h"
#include "values/value_marshal.h"

namespace mirolta::host {
namespace {

constexpr char kPrototype[] = "stream.prototype";
constexpr uint32_t kDefaultRead = 65536;
constexpr size_t kFirstRead = 16384;  // of a file
constexpr uint64_t kMostRead = 512u << 20;
constexpr uint64_t kLeastRoom = 512;                  // at the end of a stream
constexpr double kMostPosition = 9007199254740992.0;  // 2^53: a double is exact up to here

struct ModeRow {
  std::string_view name;
  FileMode mode;
};
constexpr ModeRow kModes[] = {
    {"r", {STGM_READ}},
    {"r+", {STGM_READWRITE}},
    {"w", {STGM_WRITE, true}},
    {"w+", {STGM_READWRITE, true}},
    {"wx", {STGM_WRITE, true, true}},
};

// Throws an error that names the file; `otherwise` is the text if the status has no standard one.
[[noreturn]] void ThrowNamed(duk_context* engine, HRESULT status, const char* file,
                             const char* otherwise) {
  ThrowText(engine, status, "%s: %s", file, StandardText(status, otherwise));
}

// Throws the error of a failed operation, with the name of the file that failed if there is one.
[[noreturn]] void ThrowForFile(duk_context* engine, HRESULT status) {
  const char* file = FailedFileName().c_str();
  if (*file == '\0') ThrowStatus(engine, status);
  ThrowNamed(engine, status, file, "Input or output failed");
}

// The non-negative integer at `index`.
uint64_t CountAt(duk_context* engine, duk_idx_t index) {
  return static_cast<uint64_t>(NumberWithin(engine, index, 0, kMostPosition, kInvalidCall));
}

void PushCount(duk_context* engine, uint64_t count) {
  duk_push_number(engine, static_cast<double>(count));
}

// The base of the native members of stream objects.
struct StreamFunction {
  OwnedReference<IStream> stream;

  // Called again after arguments were converted: that may run a script which closes the stream.
  void Open(duk_context* engine) {
    duk_push_this(engine);
    const ObjectSlot* slot = SlotAt(engine, -1, SlotKind::kStream);
    if (slot == nullptr) ThrowStatus(engine, kNoSuchMember);
    duk_pop(engine);
    if (IsClosedStream(*slot)) ThrowStatus(engine, kStreamClosed);
    ForgetFileFailure();
    stream.Assign(static_cast<IStream*>(slot->value.punkVal));
  }
  void Check(duk_context* engine, HRESULT status) const {
    if (FAILED(status)) ThrowForFile(engine, status);
  }
  uint64_t SeekTo(duk_context* engine, int64_t move, DWORD origin) const {
    LARGE_INTEGER by;
    by.QuadPart = move;
    ULARGE_INTEGER position;
    position.QuadPart = 0;
    Check(engine, stream->Seek(by, origin, &position));
    return position.QuadPart;
  }
};

// Reads until there are enough bytes or a read returns none: one read may return fewer than remain.
struct ReadFunction : StreamFunction {
  duk_ret_t Run(duk_context* engine) {
    Open(engine);
    const uint64_t count = duk_is_undefined(engine, 0) ? kDefaultRead : CountAt(engine, 0);
    Open(engine);
    // More than may be read at once is refused before anything is read.
    const bool is_short = count <= kMostRead && IsFileStream(stream.Get());
    return is_short ? ReadFile(engine, count) : ReadRest(engine, count, {});
  }

  // Most files are small: one read tells their size and content.
  duk_ret_t ReadFile(duk_context* engine, uint64_t count) {
    uint8_t first[kFirstRead];
    ULONG got = 0;
    const HRESULT status =
        stream->Read(first, static_cast<ULONG>(std::min<uint64_t>(count, sizeof first)), &got);
    Check(engine, status);
    if (status == S_OK && got < count) return ReadRest(engine, count, {first, got});
    std::copy_n(first, got, static_cast<uint8_t*>(duk_push_fixed_buffer(engine, got)));
    WipeMemory(first, got);
    duk_push_buffer_object(engine, -1, 0, got, DUK_BUFOBJ_UINT8ARRAY);
    return 1;
  }

  // Reads what is left of `count` bytes after the first ones.
  duk_ret_t ReadRest(duk_context* engine, uint64_t count, std::span<uint8_t> first) {
    uint64_t done = first.size();
    uint64_t room = std::min<uint64_t>(count, done + BytesExpected() + 1);
    auto* bytes = static_cast<uint8_t*>(duk_push_dynamic_buffer(engine, Size(engine, room)));
    if (!first.empty()) {
      std::copy(first.begin(), first.end(), bytes);
      WipeMemory(first.data(), first.size());
    }
    uint8_t none = 0;
    for (;;) {
      const auto wanted = static_cast<ULONG>(room - done);
      ULONG got = 0;
      Check(engine, stream->Read(wanted == 0 ? &none : bytes + done, wanted, &got));
      done += got;
      if (got == 0 || done == count) break;
      if (done < room) continue;
      room = std::min(count, std::max(std::min(2 * room, kMostRead), room + 1));
      bytes = static_cast<uint8_t*>(duk_resize_buffer(engine, -1, Size(engine, room)));
    }
    duk_resize_buffer(engine, -1, static_cast<duk_size_t>(done));
    duk_push_buffer_object(engine, -1, 0, static_cast<duk_size_t>(done), DUK_BUFOBJ_UINT8ARRAY);
    return 1;
  }

  // How many bytes up to the end of the stream to make room for: the engine clears them first. Files of
  // the system that have content say that they have none, so that nothing is known of these.
  uint64_t BytesExpected() const {
    STATSTG statistics = {};
    LARGE_INTEGER stay;
    stay.QuadPart = 0;
    ULARGE_INTEGER position;
    position.QuadPart = 0;
    const bool is_known = SUCCEEDED(stream->Stat(&statistics, STATFLAG_NONAME)) &&
                          SUCCEEDED(stream->Seek(stay, STREAM_SEEK_CUR, &position));
    ForgetFileFailure();
    const uint64_t size = statistics.cbSize.QuadPart;
    if (!is_known || size == 0) return kDefaultRead;
    return size > position.QuadPart ? size - position.QuadPart : kLeastRoom;
  }

  static duk_size_t Size(duk_context* engine, uint64_t room) {
    if (room > kMostRead) ThrowText(engine, E_OUTOFMEMORY, "Read returns at most 512 MB at once");
    return static_cast<duk_size_t>(room);
  }
};

struct WriteFunction : StreamFunction {
  duk_ret_t Run(duk_context* engine) {
    Open(engine);
    const uint8_t* bytes = nullptr;
    size_t size = 0;
    if (!BytesAt(engine, 0, &bytes, &size)) {
      ThrowIfClosed(engine, 0);
      ThrowStatus(engine, DISP_E_TYPEMISMATCH);
    }
    const uint8_t none = 0;
    ULONG done = 0;
    Check(engine, stream->Write(size == 0 ? &none : bytes, static_cast<ULONG>(size), &done));
    duk_push_uint(engine, done);
    return 1;
  }
};

struct SeekFunction : StreamFunction {
  duk_ret_t Run(duk_context* engine) {
    Open(engine);
    const double move = NumberWithin(engine, 0, -kMostPosition, kMostPosition, kInvalidCall);
    const DWORD origin = duk_is_undefined(engine, 1) ? 0u : duk_to_uint32(engine, 1);
    if (origin > STREAM_SEEK_END) ThrowStatus(engine, kInvalidCall);
    Open(engine);
    PushCount(engine, SeekTo(engine, static_cast<int64_t>(move), origin));
    return 1;
  }
};

struct CopyFunction : StreamFunction {
  OwnedReference<IStream> to;
  duk_ret_t Run(duk_context* engine) {
    Open(engine);
    OpenTarget(engine);
    ULARGE_INTEGER count, read, written;
    count.QuadPart = duk_is_undefined(engine, 1) ? INT64_MAX : CountAt(engine, 1);
    Open(engine);
    OpenTarget(engine);
    read.QuadPart = written.QuadPart = 0;
    Check(engine, stream->CopyTo(to.Get(), count, &read, &written));
    PushCount(engine, written.QuadPart);
    return 1;
  }

  void OpenTarget(duk_context* engine) {
    ThrowIfClosed(engine, 0);
    const ObjectSlot* slot = SlotAt(engine, 0, SlotKind::kStream);
    if (slot == nullptr) ThrowStatus(engine, DISP_E_TYPEMISMATCH);
    to.Assign(static_cast<IStream*>(slot->value.punkVal));
  }
};

struct GetPositionFunction : StreamFunction {
  duk_ret_t Run(duk_context* engine) {
    Open(engine);
    PushCount(engine, SeekTo(engine, 0, STREAM_SEEK_CUR));
    return 1;
  }
};
struct SetPositionFunction : StreamFunction {
  duk_ret_t Run(duk_context* engine) {
    Open(engine);
    const uint64_t position = CountAt(engine, 0);
    Open(engine);
    SeekTo(engine, static_cast<int64_t>(position), STREAM_SEEK_SET);
    return 0;
  }
};
struct GetSizeFunction : StreamFunction {
  duk_ret_t Run(duk_context* engine) {
    Open(engine);
    STATSTG statistics = {};
    Check(engine, stream->Stat(&statistics, STATFLAG_NONAME));
    PushCount(engine, statistics.cbSize.QuadPart);
    return 1;
  }
};
struct SetSizeFunction : StreamFunction {
  duk_ret_t Run(duk_context* engine) {
    Open(engine);
    ULARGE_INTEGER size;
    size.QuadPart = CountAt(engine, 0);
    Open(engine);
    Check(engine, stream->SetSize(size));
    return 0;
  }
};
struct CommitFunction : StreamFunction {
  duk_ret_t Run(duk_context* engine) {
    Open(engine);
    Check(engine, stream->Commit(STGC_DEFAULT));
    return 0;
  }
};

// The text of an ordinary object; conversion of a closed stream throws.
struct TextFunction : StreamFunction {
  duk_ret_t Run(duk_context* engine) {
    Open(engine);
    duk_push_string(engine, "[object Object]");
    return 1;
  }
};

// Closes the stream object `this`. Does nothing if it is closed.
struct EndFunction {
  OwnedReference<IStream> stream;

  OutputFile* TakeOutput(duk_context* engine) {
    duk_push_this(engine);
    ObjectSlot* slot = SlotAt(engine, -1, SlotKind::kStream);
    if (slot == nullptr) ThrowStatus(engine, kNoSuchMember);
    if (IsClosedStream(*slot)) return nullptr;
    stream.Attach(static_cast<IStream*>(slot->value.punkVal));
    slot->value = VARIANT{};
    return OutputOf(stream.Get());
  }
};
struct CloseFunction : EndFunction {
  duk_ret_t Run(duk_context* engine) {
    OutputFile* output = TakeOutput(engine);
    if (output == nullptr) return 0;
    const HRESULT status = output->Finish();
    if (SUCCEEDED(status)) return 0;
    ThrowNamed(engine, status, output->Name().c_str(), "The file cannot be written");
  }
};
struct DiscardFunction : EndFunction {
  duk_ret_t Run(duk_context* engine) {
    OutputFile* output = TakeOutput(engine);
    if (output != nullptr) output->Discard();
    return 0;
  }
};

constexpr duk_function_list_entry kMethods[] = {
    {"Read", RunProtected<ReadFunction>, 1},
    {"Write", RunProtected<WriteFunction>, 1},
    {"Seek", RunProtected<SeekFunction>, 2},
    {"CopyTo", RunProtected<CopyFunction>, 2},
    {"Commit", RunProtected<CommitFunction>, 0},
    {"Close", RunProtected<CloseFunction>, 0},
    {"Discard", RunProtected<DiscardFunction>, 0},
    {"toString", RunProtected<TextFunction>, 0},
    {nullptr, nullptr, 0},
};

// WScript.OpenFile(path, mode, isPrivate)
struct OpenFileFunction {
  std::string name;
  OwnedReference<IStream> stream;  // until the script owns it

  ~OpenFileFunction() {
    OutputFile* output = stream ? OutputOf(stream.Get()) : nullptr;
    if (output != nullptr) output->Discard();
  }
  duk_ret_t Run(duk_context* engine) {
    const std::string_view text = TextArgument(engine, 0);
    const ModeRow* mode = FindMode(engine);
    const bool is_private = duk_to_boolean(engine, 2) != 0;
    name = text;
    const HRESULT status = OpenFileStream(name, mode->mode, is_private, &stream);
    if (FAILED(status)) {
      // An empty name, or one that a zero cuts short in the message, is quoted.
      const bool is_plain = !text.empty() && text.find('\0') == std::string_view::npos;
      ThrowText(engine, status, is_plain ? "%s: %s" : "\"%s\": %s", name.c_str(),
                StandardText(status, "The file cannot be opened"));
    }
    stream->AddRef();
    PushStream(engine, stream.Get());
    stream.Reset();
    return 1;
  }

  static const ModeRow* FindMode(duk_context* engine) {
    if (duk_is_undefined(engine, 1)) return &kModes[0];
    const std::string_view name = duk_to_string(engine, 1);
    for (const ModeRow& row : kModes) {
      if (row.name == name) return &row;
    }
    ThrowText(engine, kInvalidCall, "No such file mode: \"%s\" (r, r+, w, w+ or wx)",
              duk_get_string(engine, 1));
  }
};

// WScript.MemoryStream(bytes): copies the bytes; the position is 0.
struct MemoryStreamFunction {
  OwnedReference<IStream> stream;
  duk_ret_t Run(duk_context* engine) {
    const uint8_t* bytes = nullptr;
    size_t size = 0;
    if (!duk_is_null_or_undefined(engine, 0) && !BytesAt(engine, 0, &bytes, &size)) {
      ThrowIfClosed(engine, 0);
      ThrowStatus(engine, DISP_E_TYPEMISMATCH);
    }
    HRESULT status = CreateStreamOnHGlobal(nullptr, TRUE, stream.Put());
    if (SUCCEEDED(status) && size != 0) {
      ULONG done = 0;
      status = stream->Write(bytes, static_cast<ULONG>(size), &done);
      LARGE_INTEGER start;
      start.QuadPart = 0;
      if (SUCCEEDED(status)) status = stream->Seek(start, STREAM_SEEK_SET, nullptr);
    }
    if (FAILED(status)) ThrowStatus(engine, status);
    PushStream(engine, stream.Detach());
    return 1;
  }
};

// WScript.StreamOf(object)
struct StreamOfFunction {
  ScopedVariant value;
  OwnedReference<IStream> stream;
  duk_ret_t Run(duk_context* engine) {
    const HRESULT taken = VariantFromScript(engine, 0, &value);
    if (FAILED(taken)) ThrowStatus(engine, taken);
    if ((value.vt != VT_DISPATCH && value.vt != VT_UNKNOWN) || value.punkVal == nullptr) {
      ThrowStatus(engine, DISP_E_TYPEMISMATCH);
    }
    const HRESULT status = stream.Query(value.punkVal, IID_IStream);
    if (FAILED(status)) ThrowStatus(engine, status);
    PushStream(engine, stream.Detach());
    return 1;
  }
};

// WScript.IsSameFile(a, b)
struct SameFileFunction {
  std::string paths[2];
  duk_ret_t Run(duk_context* engine) {
    // No path has a zero character.
    bool are_paths = true;
    for (duk_idx_t i = 0; i < 2; ++i) {
      paths[i] = SystemFromUnits(UnitsFromEngine(TextArgument(engine, i)));
      are_paths = are_paths && paths[i].find('\0') == std::string::npos;
    }
    duk_push_boolean(engine, are_paths && IsSameFile(paths[0], paths[1]));
    return 1;
  }
};

constexpr duk_function_list_entry kMakers[] = {
    {"OpenFile", RunProtected<OpenFileFunction>, 3},
    {"IsSameFile", RunProtected<SameFileFunction>, 2},
    {"MemoryStream", RunProtected<MemoryStreamFunction>, 1},
    {"StreamOf", RunProtected<StreamOfFunction>, 1},
    {nullptr, nullptr, 0},
};

}  // namespace

void PushStream(duk_context* engine, IStream* stream) {
  VARIANT value = {};
  value.vt = VT_UNKNOWN;
  value.punkVal = stream;
  PushSlotObject(engine, SlotKind::kStream, value, [](duk_context* inner, SlotNumber number) {
    duk_push_object(inner);
    AttachHandle(inner, number);
    duk_push_heapptr(inner, ContextOf(inner).stream_prototype);
    duk_set_prototype(inner, -2);
  });
}

void InstallStreams(duk_context* engine) {
  duk_push_object(engine);
  duk_put_function_list(engine, -1, kMethods);
  DefineAccessor(engine, "Size", RunProtected<GetSizeFunction>, RunProtected<SetSizeFunction>,
                 DUK_DEFPROP_SET_ENUMERABLE);
  DefineAccessor(engine, "Position", RunProtected<GetPositionFunction>,
                 RunProtected<SetPositionFunction>, DUK_DEFPROP_SET_ENUMERABLE);
  ContextOf(engine).stream_prototype = KeepValue(engine, kPrototype);
  duk_put_function_list(engine, -1, kMakers);
}

}  // namespace mirolta::host
