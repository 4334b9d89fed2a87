#include "files/file_stream.h"

#include <algorithm>
#include <new>

#include "files/target_path.h"
#include "objects/counted_object.h"
#include "values/text_encoding.h"

namespace mirolta::host {
namespace {

constexpr IID kFileStreamId = {
    0x2B6F1D84, 0x93C7, 0x4E0A, {0xB1, 0x5D, 0x60, 0xE8, 0x4C, 0x7A, 0x39, 0xF2}};

std::string& LastFailedName() {
  static std::string& name = *new std::string;  // never destroyed: streams may outlive statics
  return name;
}

class FileStream final : public CountedObject<FileStream, IStream> {
 public:
  // Takes ownership of *system after the last step that can throw.
  FileStream(OwnedReference<IStream>* system, const std::string& name,
             const std::shared_ptr<OutputFile>& output)
      : name_(name), output_(output) {
    system_.Attach(system->Detach());
  }

  OutputFile* Output() const { return output_.get(); }

  static bool Implements(REFIID iid) {
    return iid == IID_ISequentialStream || iid == IID_IStream || iid == kFileStreamId;
  }

  HRESULT STDMETHODCALLTYPE Read(void* bytes, ULONG count, ULONG* read) override {
    return Recorded(IsEnded() ? STG_E_REVERTED : system_->Read(bytes, count, read));
  }
  HRESULT STDMETHODCALLTYPE Write(const void* bytes, ULONG count, ULONG* written) override {
    return RecordedWrite(IsEnded() ? STG_E_REVERTED : system_->Write(bytes, count, written));
  }
  HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin,
                                 ULARGE_INTEGER* position) override {
    return Recorded(IsEnded() ? STG_E_REVERTED : system_->Seek(move, origin, position));
  }
  HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) override {
    return RecordedWrite(IsEnded() ? STG_E_REVERTED : system_->SetSize(size));
  }
  HRESULT STDMETHODCALLTYPE Commit(DWORD flags) override {
    return RecordedWrite(IsEnded() ? STG_E_REVERTED : system_->Commit(flags));
  }
  HRESULT STDMETHODCALLTYPE Revert() override { return system_->Revert(); }
  HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count,
                                       DWORD type) override {
    return system_->LockRegion(offset, count, type);
  }
  HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count,
                                         DWORD type) override {
    return system_->UnlockRegion(offset, count, type);
  }
  HRESULT STDMETHODCALLTYPE Clone(IStream** out) override { return system_->Clone(out); }

  // Returns the script's name, not that of the temporary file.
  HRESULT STDMETHODCALLTYPE Stat(STATSTG* statistics, DWORD flags) override {
    const HRESULT status =
        Recorded(IsEnded() ? STG_E_REVERTED : system_->Stat(statistics, flags | STATFLAG_NONAME));
    if (FAILED(status) || flags != STATFLAG_DEFAULT) return status;
    const Units name = UnitsFromEngine(name_);
    const size_t size = name.size() + 1;
    statistics->pwcsName = static_cast<LPOLESTR>(CoTaskMemAlloc(size * sizeof(OLECHAR)));
    if (statistics->pwcsName == nullptr) return E_OUTOFMEMORY;
    std::copy_n(name.c_str(), size, statistics->pwcsName);
    return S_OK;
  }

  // By Read, which records its failures, in a loop of our own: failures of `to` are not this
  // file's.
  HRESULT STDMETHODCALLTYPE CopyTo(IStream* to, ULARGE_INTEGER count, ULARGE_INTEGER* read,
                                   ULARGE_INTEGER* written) override {
    ULONGLONG taken = 0, given = 0;
    HRESULT status = to == nullptr ? STG_E_INVALIDPOINTER : S_OK;
    while (SUCCEEDED(status) && taken < count.QuadPart) {
      BYTE block[16384];
      const auto wanted = std::min<ULONGLONG>(count.QuadPart - taken, sizeof block);
      ULONG got = 0, put = 0;
      status = Read(block, static_cast<ULONG>(wanted), &got);
      if (FAILED(status) || got == 0) break;
      taken += got;
      status = to->Write(block, got, &put);
      given += put;
      if (SUCCEEDED(status) && put < got) status = STG_E_MEDIUMFULL;
    }
    if (read != nullptr) read->QuadPart = taken;
    if (written != nullptr) written->QuadPart = given;
    return FAILED(status) ? status : S_OK;
  }

 private:
  friend CountedObject;

  ~FileStream() = default;

  // The output was finished or discarded: the file in place may not change any more.
  bool IsEnded() const { return output_ != nullptr && !output_->IsOpen(); }
  HRESULT Recorded(HRESULT status) const {
    if (SUCCEEDED(status)) return status;
    try {
      LastFailedName() = name_;
    } catch (const std::bad_alloc&) {
      // The caller may be a module built without exceptions. The error then names no file.
      LastFailedName().clear();
    }
    return status;
  }
  HRESULT RecordedWrite(HRESULT status) const {
    if (FAILED(status) && output_ != nullptr) output_->NoteFailure(status);
    return Recorded(status);
  }

  OwnedReference<IStream> system_;
  const std::string name_;
  const std::shared_ptr<OutputFile> output_;
};

// The result of opening a file: the system's stream and, for a new file, its output. An output
// without an owner is discarded here: at the script's end it would replace its target.
struct OpenedFile {
  OpenedFile() = default;
  OpenedFile(const OpenedFile&) = delete;
  OpenedFile& operator=(const OpenedFile&) = delete;
  ~OpenedFile() {
    if (output != nullptr) output->Discard();
  }

  OwnedReference<IStream> stream;
  std::shared_ptr<OutputFile> output;
};

HRESULT Open(const Units& path, const std::string& name, const FileMode& mode, bool is_private,
             OpenedFile* file) {
  if (!mode.makes_file) {
    return SHCreateStreamOnFileEx(path.c_str(), mode.access, 0, FALSE, nullptr, file->stream.Put());
  }
  Target target;
  const std::string system_path = SystemFromUnits(path);
  const int error = FindTarget(system_path, &target);
  if (mode.must_be_new && (target.kind != TargetKind::kNew || target.path != system_path)) {
    return STG_E_FILEALREADYEXISTS;
  }
  // A path that cannot be resolved is opened too: that gives the status to return.
  if (error != 0 || target.kind == TargetKind::kOther) {
    return SHCreateStreamOnFileEx(path.c_str(), mode.access | STGM_CREATE, 0, FALSE, nullptr,
                                  file->stream.Put());
  }
  const OutputOptions options = {mode.access, mode.must_be_new, is_private};
  return OutputFile::Open(target, name, options, &file->stream, &file->output);
}

// The file stream that the stream is, null for others.
const FileStream* FileStreamOf(IStream* stream) {
  void* found = nullptr;
  if (FAILED(stream->QueryInterface(kFileStreamId, &found))) return nullptr;
  auto* file = static_cast<FileStream*>(static_cast<IStream*>(found));
  file->Release();
  return file;
}

}  // namespace

HRESULT OpenFileStream(const std::string& name, const FileMode& mode, bool is_private,
                       OwnedReference<IStream>* stream) {
  const Units path = UnitsFromEngine(name);
  if (path.empty() || path.find(OLECHAR{0}) != Units::npos) return STG_E_FILENOTFOUND;
  OpenedFile file;
  const HRESULT status = Open(path, name, mode, is_private, &file);
  if (FAILED(status)) return status;
  *stream->Put() = new FileStream(&file.stream, name, file.output);
  file.output.reset();
  return S_OK;
}

OutputFile* OutputOf(IStream* stream) {
  const FileStream* const file = FileStreamOf(stream);
  return file != nullptr ? file->Output() : nullptr;
}

bool IsFileStream(IStream* stream) {
  return FileStreamOf(stream) != nullptr;
}

void ForgetFileFailure() {
  LastFailedName().clear();
}

const std::string& FailedFileName() {
  return LastFailedName();
}

}  // namespace mirolta::host
