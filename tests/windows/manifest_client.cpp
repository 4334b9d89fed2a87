// Creates the classes by their names without registration: the manifest beside the module says
// where they are.
//
//   manifest_client MANIFEST_FILE
#include <initializer_list>

#include "client_checks.h"

using namespace client;

namespace {

HRESULT Create(const OLECHAR* name, REFIID iid, void** out) {
  CLSID id;
  const HRESULT status = CLSIDFromProgID(name, &id);
  return FAILED(status) ? status : CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, iid, out);
}

void UseClasses() {
  for (const OLECHAR* name :
       {L"Vardeko.crypt.HashObject", L"Vardeko.crypt.HashObject.1",
        L"Vardeko.crypt.HashObject.free", L"Vardeko.crypt.Symmetric.free.1",
        L"Vardeko.crypt.Number", L"Vardeko.crypt.RSA.1", L"Vardeko.crypt.ToviStreamDigest",
        L"Vardeko.crypt.ToviStreamCrypt.free"}) {
    Pointer<IDispatch> object;
    if (!CHECK_STATUS(Create(name, IID_IDispatch, object.PutVoid()), S_OK)) continue;
    Pointer<ITypeInfo> info;
    CHECK_STATUS(object->GetTypeInfo(0, LOCALE_USER_DEFAULT, info.Put()), S_OK);
  }
  Pointer<IHashObject> hash;
  if (!CHECK_STATUS(Create(L"Vardeko.crypt.HashObject", IID_IHashObject, hash.PutVoid()), S_OK)) {
    return;
  }
  CHECK_STATUS(hash->InitHash(String(L"SHA256")), S_OK);
  CHECK_STATUS(hash->HashData(Value(L"abc"), -1), S_OK);
  String text;
  CHECK_STATUS(hash->get_Value(text.Put()), S_OK);
  CHECK(text.Is(kSha256OfAbc));
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) return 2;
  CHECK(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED)));
  CLSID id;
  CHECK(FAILED(CLSIDFromProgID(L"Vardeko.crypt.HashObject", &id)));

  WCHAR file[MAX_PATH] = {};
  MultiByteToWideChar(CP_ACP, 0, arguments[1], -1, file, MAX_PATH);
  ACTCTXW request = {};
  request.cbSize = sizeof(request);
  request.lpSource = file;
  const HANDLE context = CreateActCtxW(&request);
  ULONG_PTR cookie = 0;
  if (CHECK(context != INVALID_HANDLE_VALUE) && CHECK(ActivateActCtx(context, &cookie))) {
    UseClasses();
    CHECK(DeactivateActCtx(0, cookie));
    ReleaseActCtx(context);
  }
  CoUninitialize();
  printf("%ld checks, %ld failed\n", static_cast<long>(checks), static_cast<long>(failures));
  return failures == 0 ? 0 : 1;
}
