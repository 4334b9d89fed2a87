// An early-bound client under the platform's own object model: the registered module, called
// through the public header in slot order; aggregation; error information; streams; threads.
#include <shlwapi.h>

#include <initializer_list>

#include "client_checks.h"

using namespace client;

namespace {

struct ClassCase {
  const CLSID* both;
  const CLSID* free;
  const IID* iid;
  bool is_stream;
};
constexpr ClassCase kClasses[] = {
    {&CLSID_ToviStreamDigest, &CLSID_ToviStreamDigestFree, &IID_IToviStreamDigest, true},
    {&CLSID_HashObject, &CLSID_HashObjectFree, &IID_IHashObject, false},
    {&CLSID_SymmetricCryptObject, &CLSID_SymmetricCryptObjectFree, &IID_ISymmetricCryptObject,
     false},
    {&CLSID_RSACrypt, &CLSID_RSACryptFree, &IID_IRSACrypt, false},
    {&CLSID_PexBigNumber, &CLSID_PexBigNumberFree, &IID_IPexBigNumber, false},
    {&CLSID_ToviStreamCrypt, &CLSID_ToviStreamCryptFree, &IID_IToviStreamCrypt, true},
};

template <typename Interface>
HRESULT Create(REFCLSID id, REFIID iid, Pointer<Interface>& out) {
  return CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, iid, out.PutVoid());
}

void Interfaces() {
  for (const ClassCase& row : kClasses) {
    for (const CLSID* id : {row.both, row.free}) {
      Pointer<IDispatch> dual;
      if (!CHECK_STATUS(Create(*id, *row.iid, dual), S_OK)) continue;
      Pointer<IDispatch> dispatch;
      CHECK_STATUS(dual->QueryInterface(IID_IDispatch, dispatch.PutVoid()), S_OK);
      CHECK(dispatch.Get() == dual.Get());
      Pointer<ISupportErrorInfo> support;
      CHECK_STATUS(dual->QueryInterface(IID_ISupportErrorInfo, support.PutVoid()), S_OK);
      CHECK_STATUS(support->InterfaceSupportsErrorInfo(*row.iid), S_OK);
      CHECK_STATUS(support->InterfaceSupportsErrorInfo(IID_IStream), S_FALSE);
      Pointer<IStream> stream;
      CHECK_STATUS(dual->QueryInterface(IID_IStream, stream.PutVoid()),
                   row.is_stream ? S_OK : E_NOINTERFACE);
      Pointer<IUnknown> identity;
      Pointer<IUnknown> again;
      CHECK_STATUS(dual->QueryInterface(IID_IUnknown, identity.PutVoid()), S_OK);
      CHECK_STATUS(support->QueryInterface(IID_IUnknown, again.PutVoid()), S_OK);
      CHECK(identity.Get() == again.Get());
      Pointer<ITypeInfo> info;
      CHECK_STATUS(dual->GetTypeInfo(0, LOCALE_USER_DEFAULT, info.Put()), S_OK);
      TYPEATTR* attributes = nullptr;
      if (CHECK_STATUS(info->GetTypeAttr(&attributes), S_OK)) {
        CHECK(attributes->guid == *row.iid);
        info->ReleaseTypeAttr(attributes);
      }
    }
  }
}

void Hashes() {
  Pointer<IHashObject> hash;
  if (!CHECK_STATUS(Create(CLSID_HashObject, IID_IHashObject, hash), S_OK)) return;
  CHECK_STATUS(hash->InitHash(String(L"SHA256")), S_OK);
  CHECK_STATUS(hash->HashData(Value(L"abc"), -1), S_OK);
  String text;
  CHECK_STATUS(hash->get_Value(text.Put()), S_OK);
  CHECK(text.Is(kSha256OfAbc));
  CHECK_STATUS(hash->get_Value(nullptr), E_POINTER);
  LONG size = 0;
  CHECK_STATUS(hash->get_HashSize(&size), S_OK);
  CHECK(size == 32);
  CHECK_STATUS(hash->put_codePage(65001), S_OK);
  CHECK_STATUS(hash->get_codePage(&size), S_OK);
  CHECK(size == 65001);
  Value key;
  CHECK_STATUS(hash->put_Key(Value(L"key")), S_OK);
  CHECK_STATUS(hash->get_Key(key.Put()), S_OK);
  CHECK(key.Holds(reinterpret_cast<const BYTE*>("key"), 3));
  CHECK_STATUS(hash->ResetKey(), S_OK);
  CHECK_STATUS(hash->HashUpdate(Value(L"ab"), -1), S_OK);
  CHECK_STATUS(hash->HashUpdate(Value(L"c"), -1), S_OK);
  CHECK_STATUS(hash->HashFinalize(), S_OK);
  CHECK_STATUS(hash->get_Value(text.Put()), S_OK);
  CHECK(text.Is(kSha256OfAbc));
}

constexpr BYTE kCount[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
constexpr BYTE kAesPlain[16] = {0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77,
                                0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF};
constexpr BYTE kAesCipher[16] = {0x69, 0xC4, 0xE0, 0xD8, 0x6A, 0x7B, 0x04, 0x30,
                                 0xD8, 0xCD, 0xB7, 0x80, 0x70, 0xB4, 0xC5, 0x5A};

void Ciphers() {
  Pointer<ISymmetricCryptObject> crypt;
  if (!CHECK_STATUS(Create(CLSID_SymmetricCryptObject, IID_ISymmetricCryptObject, crypt), S_OK)) {
    return;
  }
  CHECK_STATUS(crypt->Init(Value(L"AES")), S_OK);
  CHECK_STATUS(crypt->put_Key(Value(kCount, 16)), S_OK);
  Value out;
  CHECK_STATUS(crypt->Encrypt(Value(kAesPlain, 16), VARIANT_TRUE, out.Put()), S_OK);
  CHECK(out.Holds(kAesCipher, 16));
  CHECK_STATUS(crypt->Decrypt(Value(kAesCipher, 16), VARIANT_TRUE, out.Put()), S_OK);
  CHECK(out.Holds(kAesPlain, 16));
  LONG number = 0;
  CHECK_STATUS(crypt->get_BlockSize(&number), S_OK);
  CHECK(number == 16);
  CHECK_STATUS(crypt->put_PadType(7), S_OK);
  CHECK_STATUS(crypt->get_PadType(&number), S_OK);
  CHECK(number == 7);
}

void Numbers() {
  Pointer<IPexBigNumber> number;
  if (!CHECK_STATUS(Create(CLSID_PexBigNumber, IID_IPexBigNumber, number), S_OK)) return;
  CHECK_STATUS(number->put_Value(Value(L"123456789012345678901234567890")), S_OK);
  Pointer<IPexBigNumber> product;
  CHECK_STATUS(number->Mul(Value(L"987654321098765432109876543210"), product.Put()), S_OK);
  Value text;
  CHECK_STATUS(product->get_Value(text.Put()), S_OK);
  CHECK(text.IsText(L"121932631137021795226185032733622923332237463801111263526900"));
  LONG order = 0;
  CHECK_STATUS(number->Cmp(Value(L"5"), &order), S_OK);
  CHECK(order == 1);
  Pointer<IPexBigNumber> power;
  CHECK_STATUS(number->ModExp(Value(L"65537"), Value(L"1000000007"), power.Put()), S_OK);
  CHECK_STATUS(power->Cmp(Value(L"1000000007"), &order), S_OK);
  CHECK(order == -1);
  CHECK_STATUS(number->Div(Value(L"0"), product.Put()), DISP_E_DIVBYZERO);
  CHECK(product.Get() == nullptr);
}

void Keys() {
  Pointer<IRSACrypt> rsa;
  if (!CHECK_STATUS(Create(CLSID_RSACrypt, IID_IRSACrypt, rsa), S_OK)) return;
  CHECK_STATUS(rsa->CreateRandKeys(32, VARIANT_TRUE), S_OK);
  const BYTE message[3] = {1, 2, 3};
  Value cipher;
  Value plain;
  CHECK_STATUS(rsa->Encrypt(Value(message, 3), cipher.Put()), S_OK);
  CHECK_STATUS(rsa->Decrypt(cipher, plain.Put()), S_OK);
  CHECK(plain.Holds(message, 3));
  CHECK_STATUS(rsa->DecryptPQ(cipher, plain.Put()), S_OK);
  CHECK(plain.Holds(message, 3));
  CHECK_STATUS(rsa->Reset(), S_OK);
}

void Errors() {
  Pointer<IHashObject> hash;
  if (!CHECK_STATUS(Create(CLSID_HashObjectFree, IID_IHashObject, hash), S_OK)) return;
  SetErrorInfo(0, nullptr);
  CHECK_STATUS(hash->HashData(Value(L"abc"), -1), static_cast<HRESULT>(0x80042778u));
  Pointer<IErrorInfo> error;
  if (!CHECK_STATUS(GetErrorInfo(0, error.Put()), S_OK)) return;
  String text;
  CHECK_STATUS(error->GetDescription(text.Put()), S_OK);
  CHECK(text.Is(L"Not initialized."));
  CHECK_STATUS(error->GetSource(text.Put()), S_OK);
  CHECK(text.Is(L"Vardeko HashObject Class"));
  GUID id = IID_IUnknown;
  CHECK_STATUS(error->GetGUID(&id), S_OK);
  CHECK(id == GUID_NULL);
  // A failure of a lower layer publishes nothing.
  CHECK_STATUS(hash->InitHash(String(L"MD5")), S_OK);
  Value odd;
  V_VT(odd.Put()) = VT_NULL;
  CHECK(FAILED(hash->HashData(odd, -1)));
  CHECK_STATUS(GetErrorInfo(0, error.Put()), S_FALSE);
}

// An object that aggregates a component.
class Outer final : public IUnknown {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    *out = nullptr;
    if (iid != IID_IUnknown) return part->QueryInterface(iid, out);
    AddRef();
    *out = this;
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override { return --references; }

  IUnknown* part = nullptr;
  ULONG references = 1;
};

void Aggregation() {
  for (const ClassCase& row : kClasses) {
    Outer outer;
    void* wrong = &outer;
    CHECK_STATUS(CoCreateInstance(*row.both, &outer, CLSCTX_INPROC_SERVER, *row.iid, &wrong),
                 CLASS_E_NOAGGREGATION);
    CHECK(wrong == nullptr);
    if (!CHECK_STATUS(CoCreateInstance(*row.both, &outer, CLSCTX_INPROC_SERVER, IID_IUnknown,
                                       reinterpret_cast<void**>(&outer.part)),
                      S_OK)) {
      continue;
    }
    CHECK(outer.references == 1);
    Pointer<IDispatch> dual;
    CHECK_STATUS(outer.QueryInterface(*row.iid, dual.PutVoid()), S_OK);
    CHECK(outer.references == 2);
    Pointer<IUnknown> identity;
    CHECK_STATUS(dual->QueryInterface(IID_IUnknown, identity.PutVoid()), S_OK);
    CHECK(identity.Get() == &outer);
    identity.Reset();
    dual.Reset();
    CHECK(outer.references == 1);
    CHECK(outer.part->Release() == 0);
  }
}

LARGE_INTEGER Offset(LONGLONG offset) {
  LARGE_INTEGER place;
  place.QuadPart = offset;
  return place;
}

// Writes plain bytes through an encrypting filter, reads them back through a decrypting one, with
// digests taken on the way; the bound stream is the platform's.
void FilterOver(IStream* bound) {
  Pointer<IToviStreamCrypt> crypt;
  Pointer<IToviStreamDigest> digest;
  if (!CHECK_STATUS(Create(CLSID_ToviStreamCrypt, IID_IToviStreamCrypt, crypt), S_OK)) return;
  if (!CHECK_STATUS(Create(CLSID_ToviStreamDigest, IID_IToviStreamDigest, digest), S_OK)) return;
  CHECK_STATUS(crypt->putref_Stream(bound), S_OK);
  for (int i = 0; i < 2; ++i) {
    CHECK_STATUS(i == 0 ? crypt->put_WriteAlgorithm(String(L"AES"))
                        : crypt->put_ReadAlgorithm(String(L"AES")),
                 S_OK);
    CHECK_STATUS(
        i == 0 ? crypt->put_WriteKey(Value(kCount, 16)) : crypt->put_ReadKey(Value(kCount, 16)),
        S_OK);
  }
  CHECK_STATUS(digest->putref_Stream(crypt.Get()), S_OK);
  CHECK_STATUS(digest->put_WriteAlgorithm(String(L"SHA256")), S_OK);
  CHECK_STATUS(digest->put_ReadAlgorithm(String(L"SHA256")), S_OK);

  Pointer<IStream> stream;
  if (!CHECK_STATUS(digest->QueryInterface(IID_IStream, stream.PutVoid()), S_OK)) return;
  BYTE data[4096];
  for (unsigned i = 0; i < sizeof(data); ++i) data[i] = static_cast<BYTE>(i * 7 + i / 256);
  ULONG moved = 0;
  CHECK_STATUS(stream->Write(data, 1000, &moved), S_OK);
  CHECK(moved == 1000);
  CHECK_STATUS(stream->Write(data + 1000, 3096, &moved), S_OK);
  CHECK_STATUS(crypt->WriteFinalize(), S_OK);

  // The bound stream holds ciphertext.
  BYTE found[4096] = {};
  CHECK_STATUS(bound->Seek(Offset(0), STREAM_SEEK_SET, nullptr), S_OK);
  CHECK(SUCCEEDED(bound->Read(found, sizeof(found), &moved)));
  CHECK(moved == sizeof(found));
  CHECK(memcmp(found, data, 16) != 0);
  STATSTG status = {};
  CHECK_STATUS(stream->Stat(&status, STATFLAG_NONAME), S_OK);
  CHECK(status.cbSize.QuadPart == sizeof(data));

  // Back through the filters by CopyTo into a memory stream of the platform.
  CHECK_STATUS(bound->Seek(Offset(0), STREAM_SEEK_SET, nullptr), S_OK);
  Pointer<IStream> copy;
  CHECK_STATUS(CreateStreamOnHGlobal(nullptr, TRUE, copy.Put()), S_OK);
  ULARGE_INTEGER size;
  size.QuadPart = sizeof(data);
  ULARGE_INTEGER read = {};
  ULARGE_INTEGER written = {};
  CHECK_STATUS(stream->CopyTo(copy.Get(), size, &read, &written), S_OK);
  CHECK(read.QuadPart == sizeof(data) && written.QuadPart == sizeof(data));
  CHECK_STATUS(copy->Seek(Offset(0), STREAM_SEEK_SET, nullptr), S_OK);
  memset(found, 0, sizeof(found));
  CHECK_STATUS(copy->Read(found, sizeof(found), &moved), S_OK);
  CHECK(memcmp(found, data, sizeof(data)) == 0);
  String at_writing;
  String at_reading;
  CHECK_STATUS(digest->get_WriteValue(at_writing.Put()), S_OK);
  CHECK_STATUS(digest->get_ReadValue(at_reading.Put()), S_OK);
  CHECK(at_writing.Is(at_reading));
}

void Streams() {
  Pointer<IStream> memory;
  if (CHECK_STATUS(CreateStreamOnHGlobal(nullptr, TRUE, memory.Put()), S_OK)) {
    FilterOver(memory.Get());
  }
  WCHAR folder[MAX_PATH] = {};
  WCHAR name[MAX_PATH] = {};
  CHECK(GetTempPathW(MAX_PATH, folder) != 0);
  CHECK(GetTempFileNameW(folder, L"mir", 0, name) != 0);
  {
    Pointer<IStream> file;
    if (CHECK_STATUS(SHCreateStreamOnFileW(name, STGM_CREATE | STGM_READWRITE, file.Put()), S_OK)) {
      FilterOver(file.Get());
    }
  }
  DeleteFileW(name);

  Pointer<IToviStreamCrypt> crypt;
  if (!CHECK_STATUS(Create(CLSID_ToviStreamCrypt, IID_IToviStreamCrypt, crypt), S_OK)) return;
  Pointer<IHashObject> no_stream;
  CHECK_STATUS(Create(CLSID_HashObject, IID_IHashObject, no_stream), S_OK);
  CHECK_STATUS(crypt->putref_Stream(no_stream.Get()), static_cast<HRESULT>(0x80042775u));
  Pointer<IUnknown> bound;
  CHECK_STATUS(crypt->get_Stream(bound.Put()), static_cast<HRESULT>(0x80042776u));
}

// Hashes in one object that all threads share, and in one of each thread's own.
IHashObject* shared = nullptr;

DWORD WINAPI HashInFreeThread(void*) {
  CHECK(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED)));
  {
    Pointer<IHashObject> own;
    if (CHECK_STATUS(Create(CLSID_HashObjectFree, IID_IHashObject, own), S_OK)) {
      CHECK_STATUS(own->InitHash(String(L"SHA256")), S_OK);
      for (int i = 0; i < 500; ++i) {
        CHECK_STATUS(own->HashData(Value(L"abc"), -1), S_OK);
        CHECK_STATUS(shared->HashData(Value(L"abc"), -1), S_OK);
        String text;
        CHECK_STATUS(own->get_Value(text.Put()), S_OK);
        CHECK(text.Is(kSha256OfAbc));
      }
    }
  }
  CoUninitialize();
  return 0;
}

void FreeThreads() {
  Pointer<IHashObject> object;
  if (!CHECK_STATUS(Create(CLSID_HashObject, IID_IHashObject, object), S_OK)) return;
  CHECK_STATUS(object->InitHash(String(L"SHA256")), S_OK);
  shared = object.Get();
  HANDLE threads[4];
  for (HANDLE& thread : threads) {
    thread = CreateThread(nullptr, 0, HashInFreeThread, nullptr, 0, nullptr);
    CHECK(thread != nullptr);
  }
  CHECK(WaitForMultipleObjects(4, threads, TRUE, 60000) == WAIT_OBJECT_0);
  for (HANDLE thread : threads) CloseHandle(thread);
  String text;
  CHECK_STATUS(object->get_Value(text.Put()), S_OK);
  CHECK(text.Is(kSha256OfAbc));
}

// In an apartment: "Both" gives the object itself; "Free" lives outside and is called through the
// platform's marshaling of automation interfaces, which relies on the type library.
DWORD WINAPI CallFromApartment(void*) {
  CHECK(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)));
  for (const CLSID* id : {&CLSID_HashObject, &CLSID_HashObjectFree}) {
    Pointer<IHashObject> hash;
    if (!CHECK_STATUS(Create(*id, IID_IHashObject, hash), S_OK)) continue;
    CHECK_STATUS(hash->InitHash(String(L"SHA256")), S_OK);
    CHECK_STATUS(hash->HashData(Value(L"abc"), -1), S_OK);
    String text;
    CHECK_STATUS(hash->get_Value(text.Put()), S_OK);
    CHECK(text.Is(kSha256OfAbc));
    LONG size = 0;
    CHECK_STATUS(hash->get_HashSize(&size), S_OK);
    CHECK(size == 32);
    CHECK_STATUS(hash->InitHash(String(L"none")), static_cast<HRESULT>(0x80042777u));
  }
  CoUninitialize();
  return 0;
}

void Apartments() {
  const HANDLE thread = CreateThread(nullptr, 0, CallFromApartment, nullptr, 0, nullptr);
  CHECK(WaitForSingleObject(thread, 60000) == WAIT_OBJECT_0);
  CloseHandle(thread);
}

void Unloading() {
  const HMODULE module = GetModuleHandleW(L"Mirolta.dll");
  if (!CHECK(module != nullptr)) return;
  using CanUnload = HRESULT(STDAPICALLTYPE*)();
  const CanUnload can_unload = reinterpret_cast<CanUnload>(
      reinterpret_cast<void*>(GetProcAddress(module, "DllCanUnloadNow")));
  if (!CHECK(can_unload != nullptr)) return;
  CHECK_STATUS(can_unload(), S_OK);
  Pointer<IHashObject> hash;
  CHECK_STATUS(Create(CLSID_HashObject, IID_IHashObject, hash), S_OK);
  CHECK_STATUS(can_unload(), S_FALSE);
  hash.Reset();
  CHECK_STATUS(can_unload(), S_OK);
}

// Blocks in use of the process heap, from which the module allocates.
size_t HeapBlocks() {
  size_t count = 0;
  PROCESS_HEAP_ENTRY entry = {};
  HeapLock(GetProcessHeap());
  while (HeapWalk(GetProcessHeap(), &entry)) {
    count += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? 1u : 0u;
  }
  HeapUnlock(GetProcessHeap());
  return count;
}

// The first uses of the classes allocate what stays.
void Memory() {
  constexpr size_t kRounds = 200;
  size_t before = 0;
  for (size_t i = 0; i < 2 * kRounds; ++i) {
    if (i == kRounds) before = HeapBlocks();
    Hashes();
    Ciphers();
    Numbers();
    Streams();
  }
  const size_t after = HeapBlocks();
  CHECK(before != 0);
  if (!CHECK(after < before + kRounds / 2)) {
    printf("  %u blocks, then %u\n", static_cast<unsigned>(before), static_cast<unsigned>(after));
  }
}

struct Step {
  const char* name;
  void (*run)();
};
constexpr Step kSteps[] = {
    {"interfaces", Interfaces},
    {"hashes", Hashes},
    {"ciphers", Ciphers},
    {"numbers", Numbers},
    {"keys", Keys},
    {"errors", Errors},
    {"aggregation", Aggregation},
    {"streams", Streams},
    {"memory", Memory},
    {"free threads", FreeThreads},
    // Before the marshaling tests: the peer keeps a marshaled object's stub after the last call.
    {"unloading", Unloading},
    {"apartments", Apartments},
};

}  // namespace

int main() {
  if (!CHECK(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED)))) return 1;
  for (const Step& step : kSteps) {
    const LONG before = failures;
    step.run();
    printf("%s: %s\n", step.name, failures == before ? "passed" : "FAILED");
    fflush(stdout);
  }
  CoUninitialize();
  printf("%ld checks, %ld failed\n", static_cast<long>(checks), static_cast<long>(failures));
  return failures == 0 ? 0 : 1;
}
