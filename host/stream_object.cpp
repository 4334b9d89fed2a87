#include "stream_object.h"

#include <string.h>

#include <string_view>

#include "hidden_property.h"
#include "host_errors.h"
#include "object_handle.h"
#include "owned_values.h"
#include "protected_call.h"
#include "script_context.h"
#include "value_marshal.h"

namespace mirolta {
namespace {

constexpr char kPathKey[] = DUK_HIDDEN_SYMBOL("path");
constexpr char kPrototype[] = "stream.prototype";
constexpr uint32_t kUsualRead = 65536;
constexpr uint32_t kMostRead = 16u << 20;
constexpr double kMostPosition = 9007199254740992.0;  // what a script's number can count

struct ModeRow {
  std::string_view name;
  DWORD mode;
};
constexpr ModeRow kModes[] = {
    {"r", STGM_READ},
    {"r+", STGM_READWRITE},
    {"w", STGM_WRITE | STGM_CREATE},
    {"w+", STGM_READWRITE | STGM_CREATE},
};

// Throws for a failed operation on the stream that `this` is, its file named if it has one.
[[noreturn]] void ThrowForThis(duk_context* engine, HRESULT status) {
  duk_push_this(engine);
  if (!PushOwn(engine, -1, kPathKey)) ThrowStatus(engine, status);
  const char* standard = StandardText(status);
  ThrowText(engine, status, "%s: %s", duk_get_string(engine, -1),
            standard != nullptr ? standard : "Input or output failed");
}

// A whole number from 0 up at `index`.
uint64_t CountAt(duk_context* engine, duk_idx_t index) {
  const double number = duk_to_number(engine, index);
  if (!(number >= 0 && number <= kMostPosition)) ThrowStatus(engine, kInvalidCall);
  return static_cast<uint64_t>(number);
}

void PushCount(duk_context* engine, uint64_t count) {
  duk_push_number(engine, static_cast<double>(count));
}

// A native member of a stream object.
struct StreamFrame {
  Reference<IStream> stream;

  void Open(duk_context* engine) {
    duk_push_this(engine);
    const ObjectSlot* slot = SlotAt(engine, -1, SlotKind::kStream);
    if (slot == nullptr) ThrowStatus(engine, kNoSuchMember);
    duk_pop(engine);
    if (IsClosedStream(*slot)) ThrowStatus(engine, kStreamClosed);
    stream.Share(static_cast<IStream*>(slot->value.punkVal));
  }
  void Check(duk_context* engine, HRESULT status) const {
    if (FAILED(status)) ThrowForThis(engine, status);
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

struct ReadFrame : StreamFrame {
  duk_ret_t Run(duk_context* engine) {
    Open(engine);
    uint64_t count = duk_is_undefined(engine, 0) ? kUsualRead : CountAt(engine, 0);
    if (count > kMostRead) count = kMostRead;
    uint8_t* bytes = PushBytes(engine, static_cast<size_t>(count));
    ULONG done = 0;
    uint8_t none = 0;
    Check(engine, stream->Read(count == 0 ? &none : bytes, static_cast<ULONG>(count), &done));
    if (done >= count) return 1;
    uint8_t* fewer = PushBytes(engine, done);
    if (done != 0) memcpy(fewer, bytes, done);
    return 1;
  }
};

struct WriteFrame : StreamFrame {
  duk_ret_t Run(duk_context* engine) {
    Open(engine);
    const uint8_t* bytes = nullptr;
    size_t size = 0;
    if (!TakeBytes(engine, 0, &bytes, &size)) {
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

struct SeekFrame : StreamFrame {
  duk_ret_t Run(duk_context* engine) {
    Open(engine);
    const double move = duk_to_number(engine, 0);
    if (!(move >= -kMostPosition && move <= kMostPosition)) ThrowStatus(engine, kInvalidCall);
    const DWORD origin = duk_is_undefined(engine, 1) ? 0u : duk_to_uint32(engine, 1);
    if (origin > STREAM_SEEK_END) ThrowStatus(engine, kInvalidCall);
    PushCount(engine, SeekTo(engine, static_cast<int64_t>(move), origin));
    return 1;
  }
};

struct CopyFrame : StreamFrame {
  Reference<IStream> to;
  duk_ret_t Run(duk_context* engine) {
    Open(engine);
    ThrowIfClosed(engine, 0);
    const ObjectSlot* slot = SlotAt(engine, 0, SlotKind::kStream);
    if (slot == nullptr) ThrowStatus(engine, DISP_E_TYPEMISMATCH);
    to.Share(static_cast<IStream*>(slot->value.punkVal));
    ULARGE_INTEGER count, read, written;
    count.QuadPart = duk_is_undefined(engine, 1) ? ~uint64_t{0} >> 1 : CountAt(engine, 1);
    read.QuadPart = written.QuadPart = 0;
    Check(engine, stream->CopyTo(to.Get(), count, &read, &written));
    PushCount(engine, written.QuadPart);
    return 1;
  }
};

struct GetPositionFrame : StreamFrame {
  duk_ret_t Run(duk_context* engine) {
    Open(engine);
    PushCount(engine, SeekTo(engine, 0, STREAM_SEEK_CUR));
    return 1;
  }
};
struct SetPositionFrame : StreamFrame {
  duk_ret_t Run(duk_context* engine) {
    Open(engine);
    SeekTo(engine, static_cast<int64_t>(CountAt(engine, 0)), STREAM_SEEK_SET);
    return 0;
  }
};
struct GetSizeFrame : StreamFrame {
  duk_ret_t Run(duk_context* engine) {
    Open(engine);
    STATSTG statistics = {};
    Check(engine, stream->Stat(&statistics, STATFLAG_NONAME));
    PushCount(engine, statistics.cbSize.QuadPart);
    return 1;
  }
};
struct SetSizeFrame : StreamFrame {
  duk_ret_t Run(duk_context* engine) {
    Open(engine);
    ULARGE_INTEGER size;
    size.QuadPart = CountAt(engine, 0);
    Check(engine, stream->SetSize(size));
    return 0;
  }
};
struct CommitFrame : StreamFrame {
  duk_ret_t Run(duk_context* engine) {
    Open(engine);
    Check(engine, stream->Commit(STGC_DEFAULT));
    return 0;
  }
};

// The text of any other object, so that a closed stream has none.
struct TextFrame : StreamFrame {
  duk_ret_t Run(duk_context* engine) {
    Open(engine);
    duk_push_string(engine, "[object Object]");
    return 1;
  }
};

duk_ret_t Close(duk_context* engine) {
  duk_push_this(engine);
  ObjectSlot* slot = SlotAt(engine, -1, SlotKind::kStream);
  if (slot == nullptr) ThrowStatus(engine, kNoSuchMember);
  VARIANT value = slot->value;
  slot->value = VARIANT{};
  VariantClear(&value);
  return 0;
}

constexpr duk_function_list_entry kMethods[] = {
    {"Read", RunProtected<ReadFrame>, 1},
    {"Write", RunProtected<WriteFrame>, 1},
    {"Seek", RunProtected<SeekFrame>, 2},
    {"CopyTo", RunProtected<CopyFrame>, 2},
    {"Commit", RunProtected<CommitFrame>, 0},
    {"Close", Close, 0},
    {"toString", RunProtected<TextFrame>, 0},
    {nullptr, nullptr, 0},
};

void DefineAccessor(duk_context* engine, const char* name, duk_c_function get, duk_c_function set) {
  duk_push_string(engine, name);
  duk_push_c_function(engine, get, 0);
  duk_push_c_function(engine, set, 1);
  duk_def_prop(engine, -4,
               DUK_DEFPROP_HAVE_GETTER | DUK_DEFPROP_HAVE_SETTER | DUK_DEFPROP_SET_ENUMERABLE);
}

// WScript.OpenFile(path, mode)
struct OpenFileFrame {
  Units path;
  Reference<IStream> stream;
  duk_ret_t Run(duk_context* engine) {
    duk_size_t size = 0;
    const char* text = duk_to_lstring(engine, 0, &size);
    const ModeRow* mode = FindMode(engine);
    path = UnitsFromEngine({text, size});
    if (path.empty() || path.find(OLECHAR{0}) != Units::npos) {
      ThrowText(engine, STG_E_FILENOTFOUND, "\"%s\": File not found", text);
    }
    const HRESULT status =
        SHCreateStreamOnFileEx(path.c_str(), mode->mode, 0, FALSE, nullptr, stream.Out());
    if (FAILED(status)) {
      const char* standard = StandardText(status);
      ThrowText(engine, status, "%s: %s", text,
                standard != nullptr ? standard : "The file cannot be opened");
    }
    PushStream(engine, stream.Release());
    duk_dup(engine, 0);
    duk_put_prop_string(engine, -2, kPathKey);
    return 1;
  }

  static const ModeRow* FindMode(duk_context* engine) {
    if (duk_is_undefined(engine, 1)) return &kModes[0];
    const std::string_view name = duk_to_string(engine, 1);
    for (const ModeRow& row : kModes) {
      if (row.name == name) return &row;
    }
    ThrowText(engine, kInvalidCall, "No such file mode: \"%s\" (r, r+, w or w+)",
              duk_get_string(engine, 1));
  }
};

// WScript.MemoryStream(bytes): the bytes are copied, the position is at the start.
struct MemoryStreamFrame {
  Reference<IStream> stream;
  duk_ret_t Run(duk_context* engine) {
    const uint8_t* bytes = nullptr;
    size_t size = 0;
    if (!duk_is_null_or_undefined(engine, 0) && !TakeBytes(engine, 0, &bytes, &size)) {
      ThrowIfClosed(engine, 0);
      ThrowStatus(engine, DISP_E_TYPEMISMATCH);
    }
    HRESULT status = CreateStreamOnHGlobal(nullptr, TRUE, stream.Out());
    if (SUCCEEDED(status) && size != 0) {
      ULONG done = 0;
      status = stream->Write(bytes, static_cast<ULONG>(size), &done);
      LARGE_INTEGER start;
      start.QuadPart = 0;
      if (SUCCEEDED(status)) status = stream->Seek(start, STREAM_SEEK_SET, nullptr);
    }
    if (FAILED(status)) ThrowStatus(engine, status);
    PushStream(engine, stream.Release());
    return 1;
  }
};

// WScript.StreamOf(object)
struct StreamOfFrame {
  OwnedVariant value;
  Reference<IStream> stream;
  duk_ret_t Run(duk_context* engine) {
    const HRESULT taken = VariantFromScript(engine, 0, &value);
    if (FAILED(taken)) ThrowStatus(engine, taken);
    if ((value.vt != VT_DISPATCH && value.vt != VT_UNKNOWN) || value.punkVal == nullptr) {
      ThrowStatus(engine, DISP_E_TYPEMISMATCH);
    }
    void* found = nullptr;
    const HRESULT status = value.punkVal->QueryInterface(IID_IStream, &found);
    if (FAILED(status)) ThrowStatus(engine, status);
    stream.Take(found);
    PushStream(engine, stream.Release());
    return 1;
  }
};

constexpr duk_function_list_entry kMakers[] = {
    {"OpenFile", RunProtected<OpenFileFrame>, 2},
    {"MemoryStream", RunProtected<MemoryStreamFrame>, 1},
    {"StreamOf", RunProtected<StreamOfFrame>, 1},
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
    PushKept(inner, kPrototype);
    duk_set_prototype(inner, -2);
  });
}

void InstallStreams(duk_context* engine) {
  duk_push_object(engine);
  duk_put_function_list(engine, -1, kMethods);
  DefineAccessor(engine, "Size", RunProtected<GetSizeFrame>, RunProtected<SetSizeFrame>);
  DefineAccessor(engine, "Position", RunProtected<GetPositionFrame>,
                 RunProtected<SetPositionFrame>);
  KeepValue(engine, kPrototype);
  duk_put_function_list(engine, -1, kMakers);
}

}  // namespace mirolta
