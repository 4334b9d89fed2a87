// runtime_calls FROM TO: uses the runtime as a program without the host does. Creates a registered object, copies a
// file by streams, cuts, syncs and reads the copy. Prints what it finds; a failure is named with its status.
#include <cstdio>
#include <string>
#include <vector>

#include "platform.h"
#include "seam/owned_reference.h"

namespace {

using mirolta::OwnedReference;

bool Succeeds(const char* operation, HRESULT status) {
  if (FAILED(status))
    fprintf(stderr, "%s failed: 0x%08X\n", operation, static_cast<unsigned>(status));
  return SUCCEEDED(status);
}

std::u16string Wide(const char* text) {
  return {text, text + std::char_traits<char>::length(text)};
}

bool Open(const char* name, DWORD mode, OwnedReference<IStream>* stream) {
  return Succeeds(
      name, SHCreateStreamOnFileEx(Wide(name).c_str(), mode, 0, FALSE, nullptr, stream->Put()));
}

bool Create() {
  CLSID id = {};
  OwnedReference<IUnknown> object;
  if (!Succeeds("finding the class", CLSIDFromProgID(OLESTR("Vardeko.crypt.Number"), &id)))
    return false;
  void* made = nullptr;
  const HRESULT status = CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &made);
  if (!Succeeds("creating the object", status)) return false;
  static_cast<IUnknown*>(made)->Release();
  puts("created");
  return true;
}

bool Copy(const char* from, const char* to) {
  OwnedReference<IStream> source, target;
  if (!Open(from, STGM_READ, &source) || !Open(to, STGM_WRITE | STGM_CREATE, &target)) return false;
  ULARGE_INTEGER all = {}, read = {}, written = {};
  all.QuadPart = ~ULONGLONG{0};
  if (!Succeeds("copying", source->CopyTo(target.Get(), all, &read, &written))) return false;
  ULARGE_INTEGER size = {};
  size.QuadPart = read.QuadPart - 1;
  if (!Succeeds("cutting", target->SetSize(size))) return false;
  if (!Succeeds("syncing", target->Commit(STGC_DEFAULT))) return false;
  STATSTG facts = {};
  if (!Succeeds("looking at the copy", target->Stat(&facts, STATFLAG_NONAME))) return false;
  printf("%llu %llu %llu\n", static_cast<unsigned long long>(read.QuadPart),
         static_cast<unsigned long long>(written.QuadPart),
         static_cast<unsigned long long>(facts.cbSize.QuadPart));
  return true;
}

bool ReadLast(const char* name) {
  OwnedReference<IStream> stream;
  if (!Open(name, STGM_READ, &stream)) return false;
  LARGE_INTEGER back = {};
  back.QuadPart = -3;
  if (!Succeeds("seeking", stream->Seek(back, STREAM_SEEK_END, nullptr))) return false;
  BYTE bytes[8] = {};
  ULONG got = 0;
  if (!Succeeds("reading", stream->Read(bytes, sizeof bytes, &got))) return false;
  printf("%lu: %u %u %u\n", static_cast<unsigned long>(got), bytes[0], bytes[1], bytes[2]);
  return true;
}

bool Run(const char* from, const char* to) {
  if (!Succeeds("starting", CoInitializeEx(nullptr, COINIT_MULTITHREADED))) return false;
  const bool is_done = Create() && Copy(from, to) && ReadLast(to);
  CoUninitialize();
  if (fflush(stdout) == 0) return is_done;
  fputs("the output cannot be written\n", stderr);
  return false;
}

}  // namespace

int main(int count, char** words) {
  if (count != 3) return 2;
  return Run(words[1], words[2]) ? 0 : 1;
}
