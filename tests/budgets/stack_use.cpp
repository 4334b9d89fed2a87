// Calls every member of every class, with large arguments, on a stack that is painted before, and prints how
// much of it the module has used: lines "class member bytes", which scripts/size.py compares with what it
// has computed. Functions of other libraries run on a stack of their own (system_calls.py).
#include <algorithm>
#include <cstddef>

#include "module_objects.h"

extern "C" {
void RunOnStack(void* top, void (*work)(void*), void* context);
unsigned char* measured_low = nullptr;
unsigned char* measured_top = nullptr;
unsigned char* system_top = nullptr;
}

namespace mirolta::test {
namespace {

constexpr size_t kMeasuredBytes = 65536;
constexpr size_t kSystemBytes = 1u << 20;
constexpr unsigned char kPaint = 0xA5;

alignas(16) unsigned char measured[kMeasuredBytes];
alignas(16) unsigned char system_stack[kSystemBytes];

template <typename Work>
void Measure(const char* class_name, const char* member, Work work) {
  struct Context {
    Work* work;
    HRESULT status;
  } context = {&work, S_OK};
  std::fill(measured, measured + sizeof measured, kPaint);
  RunOnStack(
      measured + sizeof measured,
      [](void* argument) {
        Context* const inner = static_cast<Context*>(argument);
        inner->status = (*inner->work)();
      },
      &context);
  const unsigned char* const lowest = std::find_if(measured, measured + sizeof measured,
                                                   [](unsigned char c) { return c != kPaint; });
  Require(context.status, member);
  std::printf("%s %s %zu\n", class_name, member,
              static_cast<size_t>(measured + sizeof measured - lowest));
}

// A stream of any length, whose functions use next to no stack.
class EndlessStream final : public IStream {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    const bool known = iid == IID_IUnknown || iid == IID_IStream || iid == IID_ISequentialStream;
    *out = known ? this : nullptr;
    return known ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE Read(void* bytes, ULONG count, ULONG* done) override {
    std::memset(bytes, 0x5A, count);
    *done = count;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Write(const void*, ULONG count, ULONG* done) override {
    *done = count;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER, DWORD, ULARGE_INTEGER* place) override {
    if (place != nullptr) place->QuadPart = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*,
                                   ULARGE_INTEGER*) override {
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Commit(DWORD) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE Revert() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Stat(STATSTG* status, DWORD) override {
    std::memset(status, 0, sizeof *status);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Clone(IStream**) override { return E_NOTIMPL; }
};

EndlessStream endless;

// MIROLTA_PUT, MIROLTA_GET and MIROLTA_DO measure one member of `object`, of the class class_name.
#define MIROLTA_DO(member, ...) \
  Measure(class_name, #member, [&] { return object->member(__VA_ARGS__); })
#define MIROLTA_GET_VARIANT(member)                                     \
  do {                                                                  \
    VARIANT got;                                                        \
    VariantInit(&got);                                                  \
    Measure(class_name, #member, [&] { return object->member(&got); }); \
    VariantClear(&got);                                                 \
  } while (false)
#define MIROLTA_GET_TEXT(member, ...)                                                \
  do {                                                                               \
    BSTR got = nullptr;                                                              \
    Measure(class_name, #member, [&] { return object->member(__VA_ARGS__ & got); }); \
    SysFreeString(got);                                                              \
  } while (false)
#define MIROLTA_GET(type, member)                                       \
  do {                                                                  \
    type got = {};                                                      \
    Measure(class_name, #member, [&] { return object->member(&got); }); \
  } while (false)

void MeasureHashObject(const VARIANT& bytes, const VARIANT& key) {
  const char* const class_name = "HashObject";
  IHashObject* const object = Created<IHashObject>(CLSID_HashObject, IID_IHashObject);
  for (const OLECHAR* algorithm : {OLESTR("MD5"), OLESTR("SHA1"), OLESTR("SHA256")}) {
    VARIANT name = NameValue(algorithm);
    MIROLTA_DO(InitHash, V_BSTR(&name));
    VariantClear(&name);
    MIROLTA_DO(put_codePage, 65001);
    MIROLTA_DO(HashData, bytes, -1);
    MIROLTA_DO(put_Key, key);
    MIROLTA_DO(HashUpdate, bytes, -1);
    MIROLTA_DO(HashFinalize);
    MIROLTA_GET_TEXT(get_Value);
    MIROLTA_GET_VARIANT(get_BinaryValue);
    MIROLTA_GET_VARIANT(get_Key);
    MIROLTA_GET(LONG, get_HashSize);
    MIROLTA_GET(LONG, get_BlockSize);
    MIROLTA_GET(LONG, get_codePage);
    MIROLTA_DO(Reset);
    MIROLTA_DO(ResetKey);
  }
  Measure(class_name, "Release", [&] { return object->Release() == 0 ? S_OK : E_FAIL; });
}

void MeasureCipher(const VARIANT& bytes) {
  const char* const class_name = "SymmetricCryptObject";
  ISymmetricCryptObject* const object =
      Created<ISymmetricCryptObject>(CLSID_SymmetricCryptObject, IID_ISymmetricCryptObject);
  for (const OLECHAR* algorithm : {OLESTR("AES"), OLESTR("DES")}) {
    VARIANT name = NameValue(algorithm);
    MIROLTA_DO(Init, name);
    VariantClear(&name);
    VARIANT key = ByteValue(24);
    MIROLTA_DO(put_Key, key);
    VariantClear(&key);
    VARIANT out;
    VariantInit(&out);
    MIROLTA_DO(Encrypt, bytes, VARIANT_TRUE, &out);
    MIROLTA_DO(Reset, 0);
    VARIANT back;
    VariantInit(&back);
    MIROLTA_DO(Decrypt, out, VARIANT_TRUE, &back);
    VariantClear(&back);
    VariantClear(&out);
    MIROLTA_GET_VARIANT(get_Key);
    MIROLTA_GET(LONG, get_BlockSize);
    MIROLTA_GET(LONG, get_codePage);
    MIROLTA_DO(put_codePage, 65001);
    MIROLTA_GET(LONG, get_PadType);
    MIROLTA_DO(put_PadType, 1);
    MIROLTA_DO(ResetKey);
  }
  Measure(class_name, "Release", [&] { return object->Release() == 0 ? S_OK : E_FAIL; });
}

void MeasureNumber(ULONG large, ULONG small) {
  const char* const class_name = "PexBigNumber";
  IPexBigNumber* const object = Created<IPexBigNumber>(CLSID_PexBigNumber, IID_IPexBigNumber);
  IPexBigNumber* made = nullptr;
#define MIROLTA_MAKE(member, ...)           \
  do {                                      \
    MIROLTA_DO(member, __VA_ARGS__, &made); \
    made->Release();                        \
  } while (false)
  VARIANT number = ByteValue(large);
  VARIANT half = ByteValue(large / 2 + 17);
  VARIANT few = ByteValue(small);
  VARIANT fewer = ByteValue(small - 7);
  VARIANT digits = TextValue(2 * large, 10);
  VARIANT hex = TextValue(2 * large, 16);
  MIROLTA_DO(put_Value, digits);
  MIROLTA_DO(put_Hex, hex);
  MIROLTA_DO(put_Text, -1, V_BSTR(&hex));
  MIROLTA_DO(put_Binary, number);
  MIROLTA_GET_VARIANT(get_Value);
  MIROLTA_GET_VARIANT(get_Hex);
  MIROLTA_GET_VARIANT(get_Binary);
  MIROLTA_GET_TEXT(get_Text, -1, );
  for (const VARIANT* operand : {&number, &half, &few}) {
    MIROLTA_MAKE(Add, *operand);
    MIROLTA_MAKE(Sub, *operand);
    MIROLTA_MAKE(Mul, *operand);
    MIROLTA_MAKE(Div, *operand);
    MIROLTA_MAKE(Mod, *operand);
    MIROLTA_MAKE(NewNumber, *operand);
    LONG order = 0;
    MIROLTA_DO(Cmp, *operand, &order);
    MIROLTA_DO(Inc, *operand);
    MIROLTA_DO(Dec, *operand);
  }
  MIROLTA_DO(put_Binary, few);
  MIROLTA_MAKE(GCD, fewer);
  MIROLTA_MAKE(ModExp, few, fewer);
  // An odd modulus and another that has an inverse.
  VARIANT odd = TextValue(small, 10);
  V_BSTR(&odd)[small - 1] = OLESTR('7');
  VARIANT two = TextValue(1, 2);
  MIROLTA_MAKE(ModExp, few, odd);
  MIROLTA_DO(put_Value, two);
  MIROLTA_MAKE(ModInv, odd);
  MIROLTA_DO(Random, static_cast<LONG>(large), VARIANT_TRUE, VARIANT_TRUE);
  // A number as an argument, whose value is asked for.
  IPexBigNumber* const other = Created<IPexBigNumber>(CLSID_PexBigNumber, IID_IPexBigNumber);
  Require(other->put_Binary(number), "Binary");
  VARIANT argument;
  VariantInit(&argument);
  V_VT(&argument) = VT_UNKNOWN;
  V_UNKNOWN(&argument) = other;
  // The system's part of a call by name is on the same stack.
  Measure("PexBigNumber/system", "Mul", [&] { return object->Mul(argument, &made); });
  made->Release();
  other->Release();
  for (VARIANT* value : {&number, &half, &few, &fewer, &digits, &hex, &odd, &two})
    VariantClear(value);
  Measure(class_name, "Release", [&] { return object->Release() == 0 ? S_OK : E_FAIL; });
}

void MeasureRsa(LONG bytes) {
  const char* const class_name = "RSACrypt";
  IRSACrypt* const object = Created<IRSACrypt>(CLSID_RSACrypt, IID_IRSACrypt);
  MIROLTA_DO(CreateRandKeys, bytes, VARIANT_TRUE);
  VARIANT first = ByteValue(static_cast<ULONG>(bytes) / 2);
  VARIANT second = TextValue(static_cast<ULONG>(bytes), 16);
  MIROLTA_DO(CreateKeys, first, second);
  VARIANT plain = ByteValue(20);
  VARIANT out, back;
  VariantInit(&out);
  VariantInit(&back);
  MIROLTA_DO(Encrypt, plain, &out);
  MIROLTA_DO(Decrypt, out, &back);
  VariantClear(&back);
  MIROLTA_DO(DecryptPQ, out, &back);
  VariantClear(&back);
  VariantClear(&out);
  MIROLTA_GET_VARIANT(get_Modulus);
  MIROLTA_GET_VARIANT(get_PublicExp);
  MIROLTA_GET_VARIANT(get_SecretExp);
  MIROLTA_GET_VARIANT(get_P);
  MIROLTA_GET_VARIANT(get_Q);
  MIROLTA_GET(LONG, get_BlockSize);
  MIROLTA_DO(put_Modulus, first);
  MIROLTA_DO(put_PublicExp, second);
  MIROLTA_DO(put_SecretExp, second);
  MIROLTA_DO(put_P, first);
  MIROLTA_DO(put_Q, second);
  MIROLTA_DO(Reset);
  for (VARIANT* value : {&first, &second, &plain}) VariantClear(value);
  Measure(class_name, "Release", [&] { return object->Release() == 0 ? S_OK : E_FAIL; });
}

// What both filters have. `object` is bound to a stream already.
template <typename Filter>
void MeasureFilter(const char* class_name, Filter* object, const VARIANT& bytes) {
  void* found = nullptr;
  Require(object->QueryInterface(IID_IStream, &found), "IStream");
  IStream* const stream = static_cast<IStream*>(found);
  void* const memory = V_ARRAY(&bytes)->pvData;
  ULONG done = 0;
  Measure(class_name, "Write", [&] { return stream->Write(memory, 10000, &done); });
  Measure(class_name, "Read", [&] { return stream->Read(memory, 10000, &done); });
  ULARGE_INTEGER count, read, written;
  count.QuadPart = 20000;
  Measure(class_name, "CopyTo", [&] { return stream->CopyTo(&endless, count, &read, &written); });
  Measure(class_name, "Commit", [&] { return stream->Commit(0); });
  STATSTG status;
  Measure(class_name, "Stat", [&] { return stream->Stat(&status, 0); });
  stream->Release();
  IUnknown* bound = nullptr;
  Measure(class_name, "get_Stream", [&] { return object->get_Stream(&bound); });
  MIROLTA_GET_TEXT(get_ReadAlgorithm);
  MIROLTA_GET_TEXT(get_WriteAlgorithm);
  MIROLTA_GET_VARIANT(get_ReadKey);
  MIROLTA_GET_VARIANT(get_WriteKey);
  MIROLTA_DO(ReadFinalize);
  MIROLTA_DO(WriteFinalize);
  MIROLTA_DO(ReadReset);
  MIROLTA_DO(WriteReset);
  MIROLTA_DO(ReadResetKey);
  MIROLTA_DO(WriteResetKey);
  MIROLTA_GET(VARIANT_BOOL, get_SeekingForbidden);
  MIROLTA_DO(put_SeekingForbidden, VARIANT_TRUE);
  MIROLTA_GET(LONG, get_codePage);
  MIROLTA_DO(put_codePage, 65001);
}

void MeasureDigestFilter(const VARIANT& bytes, const VARIANT& key) {
  const char* const class_name = "ToviStreamDigest";
  IToviStreamDigest* const object =
      Created<IToviStreamDigest>(CLSID_ToviStreamDigest, IID_IToviStreamDigest);
  VARIANT name = NameValue(OLESTR("SHA256"));
  MIROLTA_DO(putref_Stream, &endless);
  MIROLTA_DO(put_ReadAlgorithm, V_BSTR(&name));
  MIROLTA_DO(put_WriteAlgorithm, V_BSTR(&name));
  VariantClear(&name);
  MIROLTA_DO(put_ReadKey, key);
  MIROLTA_DO(put_WriteKey, key);
  MeasureFilter(class_name, object, bytes);
  MIROLTA_GET_TEXT(get_ReadValue);
  MIROLTA_GET_TEXT(get_WriteValue);
  MIROLTA_GET_VARIANT(get_ReadBinaryValue);
  MIROLTA_GET_VARIANT(get_WriteBinaryValue);
  MIROLTA_GET(VARIANT_BOOL, get_ReadHashEnable);
  MIROLTA_GET(VARIANT_BOOL, get_WriteHashEnable);
  MIROLTA_DO(put_ReadHashEnable, VARIANT_FALSE);
  MIROLTA_DO(put_WriteHashEnable, VARIANT_FALSE);
  object->Release();
}

void MeasureCryptFilter(const VARIANT& bytes) {
  const char* const class_name = "ToviStreamCrypt";
  IToviStreamCrypt* const object =
      Created<IToviStreamCrypt>(CLSID_ToviStreamCrypt, IID_IToviStreamCrypt);
  VARIANT name = NameValue(OLESTR("AES"));
  VARIANT key = ByteValue(32);
  MIROLTA_DO(putref_Stream, &endless);
  MIROLTA_DO(put_ReadAlgorithm, V_BSTR(&name));
  MIROLTA_DO(put_WriteAlgorithm, V_BSTR(&name));
  VariantClear(&name);
  MIROLTA_DO(put_ReadKey, key);
  MIROLTA_DO(put_WriteKey, key);
  VariantClear(&key);
  MIROLTA_GET(VARIANT_BOOL, get_ReadDecrypt);
  MIROLTA_GET(VARIANT_BOOL, get_WriteDecrypt);
  MIROLTA_GET(LONG, get_ReadPadType);
  MIROLTA_GET(LONG, get_WritePadType);
  MIROLTA_DO(put_ReadDecrypt, VARIANT_FALSE);
  MIROLTA_DO(put_WriteDecrypt, VARIANT_FALSE);
  MIROLTA_DO(put_ReadPadType, 1);
  MIROLTA_DO(put_WritePadType, 1);
  MeasureFilter(class_name, object, bytes);
  object->Release();
}

int Main(ULONG large, ULONG small, LONG key_bytes) {
  measured_low = measured;
  measured_top = measured + sizeof measured;
  system_top = system_stack + sizeof system_stack;
  const char* const class_name = "module";
  Measure(class_name, "DllRegisterServer", [] { return DllRegisterServer(); });
  void* factory = nullptr;
  Measure(class_name, "DllGetClassObject",
          [&] { return DllGetClassObject(CLSID_HashObject, IID_IClassFactory, &factory); });
  static_cast<IClassFactory*>(factory)->Release();
  VARIANT bytes = ByteValue(100000);
  VARIANT key = ByteValue(5000);
  MeasureHashObject(bytes, key);
  MeasureCipher(bytes);
  MeasureNumber(large, small);
  MeasureRsa(key_bytes);
  MeasureDigestFilter(bytes, key);
  MeasureCryptFilter(bytes);
  Measure(class_name, "DllUnregisterServer", [] { return DllUnregisterServer(); });
  VariantClear(&key);
  VariantClear(&bytes);
  return 0;
}

}  // namespace
}  // namespace mirolta::test

// stack_use LARGE SMALL KEY: bytes of numbers for arithmetic, for powers, and of an RSA key.
int main(int count, char** arguments) {
  if (count != 4) return 2;
  return mirolta::test::Main(static_cast<ULONG>(std::atol(arguments[1])),
                             static_cast<ULONG>(std::atol(arguments[2])),
                             static_cast<LONG>(std::atol(arguments[3])));
}
