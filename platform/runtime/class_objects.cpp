#include <mutex>

#include "module_table.h"
#include "portable/system.h"
#include "registry_lookup.h"
#include "utf8_text.h"

namespace mirolta {
namespace {

using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
using CanUnloadNow = HRESULT(STDAPICALLTYPE*)();

constexpr INT kGuidCapacity = 39;

// A module that was loaded for its classes.
struct Server {
  Server* next = nullptr;
  LONG users = 0;  // calls that are inside get_class_object now
  HMODULE module = nullptr;
  GetClassObject get_class_object = nullptr;
  CanUnloadNow can_unload_now = nullptr;  // null: stays for good
  WideText file;

  void Unload() {
    FreeLibrary(module);
    DeleteRuntime(this);
  }
};

// No destructors: at the process's end the modules go with it.
std::mutex g_lock;
Server* g_servers = nullptr;
LONG g_initializations = 0;
thread_local LONG t_initializations = 0;

bool SameText(const WideText& a, const WideText& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(WCHAR)) == 0;
}

Server* FindServer(const WideText& file) {
  Server* server = g_servers;
  while (server != nullptr && !SameText(server->file, file)) server = server->next;
  return server;
}

void Insert(Server* server) {
  server->next = g_servers;
  g_servers = server;
}

template <typename Function>
Function Entry(HMODULE module, LPCSTR name) {
  using AnyFunction = void (*)();
  return reinterpret_cast<Function>(reinterpret_cast<AnyFunction>(GetProcAddress(module, name)));
}

HRESULT LoadServer(const WideText& file, Server** out) {
  Server* server = NewRuntime<Server>();
  if (server == nullptr || !server->file.Append(file.data(), file.size())) {
    DeleteRuntime(server);
    return E_OUTOFMEMORY;
  }
  const HRESULT status = OpenLibrary(file.data(), &server->module);
  if (FAILED(status)) {
    DeleteRuntime(server);
    return status;
  }
  server->get_class_object = Entry<GetClassObject>(server->module, "DllGetClassObject");
  server->can_unload_now = Entry<CanUnloadNow>(server->module, "DllCanUnloadNow");
  if (server->get_class_object == nullptr) {
    server->Unload();
    return CO_E_ERRORINDLL;
  }
  *out = server;
  return S_OK;
}

// UseServer finds or loads the module and keeps it from being unloaded until LeaveServer.
HRESULT UseServer(const WideText& file, Server** out) {
  {
    const std::lock_guard<std::mutex> lock(g_lock);
    *out = FindServer(file);
    if (*out != nullptr) {
      ++(*out)->users;
      return S_OK;
    }
  }
  // Not under the lock: a module's start may come back here.
  Server* loaded = nullptr;
  const HRESULT status = LoadServer(file, &loaded);
  if (FAILED(status)) return status;
  {
    const std::lock_guard<std::mutex> lock(g_lock);
    *out = FindServer(file);
    if (*out == nullptr) {
      Insert(loaded);
      *out = loaded;
      loaded = nullptr;
    }
    ++(*out)->users;
  }
  if (loaded != nullptr) loaded->Unload();  // another thread was first
  return S_OK;
}

void LeaveServer(Server* server) {
  const std::lock_guard<std::mutex> lock(g_lock);
  --server->users;
}

// The status for a registry that could not answer; `missing` if it did and has no such entry.
HRESULT RegistryStatus(LONG error, HRESULT missing) {
  if (error == ERROR_FILE_NOT_FOUND) return missing;
  return error == ERROR_OUTOFMEMORY ? E_OUTOFMEMORY : HRESULT_FROM_WIN32(error);
}

// Reads the default value of CLSID\{id}\entry.
LONG ReadClassEntry(REFCLSID id, LPCWSTR entry, WideText* text) {
  WCHAR id_text[kGuidCapacity];
  StringFromGUID2(id, id_text, kGuidCapacity);
  WideText path;
  const LONG error = SetText(&path, u"CLSID\\", id_text, u"\\", entry);
  return error == ERROR_SUCCESS ? ReadText(path.data(), nullptr, text) : error;
}

}  // namespace
}  // namespace mirolta

using namespace mirolta;

extern "C" HRESULT CoInitializeEx(LPVOID reserved, DWORD) {
  if (reserved != nullptr) return E_INVALIDARG;
  const std::lock_guard<std::mutex> lock(g_lock);
  ++g_initializations;
  return ++t_initializations == 1 ? S_OK : S_FALSE;
}

extern "C" void CoUninitialize() {
  if (t_initializations == 0) return;
  --t_initializations;
  bool last;
  {
    const std::lock_guard<std::mutex> lock(g_lock);
    last = --g_initializations == 0;
  }
  if (last) CoFreeUnusedLibraries();
}

extern "C" HRESULT CoGetClassObject(REFCLSID id, DWORD context, LPVOID, REFIID iid, LPVOID* out) {
  if (out == nullptr) return E_INVALIDARG;
  *out = nullptr;
  if ((context & CLSCTX_INPROC_SERVER) == 0) return REGDB_E_CLASSNOTREG;
  WideText file;
  const LONG error = ReadClassEntry(id, u"InprocServer32", &file);
  if (error != ERROR_SUCCESS) return RegistryStatus(error, REGDB_E_CLASSNOTREG);
  Server* server = nullptr;
  HRESULT status = UseServer(file, &server);
  if (FAILED(status)) return status;
  status = server->get_class_object(id, iid, out);
  LeaveServer(server);
  return status;
}

extern "C" HRESULT CoCreateInstance(REFCLSID id, IUnknown* outer, DWORD context, REFIID iid,
                                    LPVOID* out) {
  if (out == nullptr) return E_POINTER;
  *out = nullptr;
  void* object = nullptr;
  HRESULT status = CoGetClassObject(id, context, nullptr, IID_IClassFactory, &object);
  if (FAILED(status)) return status;
  if (object == nullptr) return E_NOINTERFACE;  // a module that says yes and gives nothing
  IClassFactory* factory = static_cast<IClassFactory*>(object);
  status = factory->CreateInstance(outer, iid, out);
  factory->Release();
  return status;
}

extern "C" HRESULT CLSIDFromProgID(LPCOLESTR prog_id, CLSID* id) {
  if (prog_id == nullptr || id == nullptr) return E_INVALIDARG;
  *id = CLSID_NULL;
  if (prog_id[0] == u'{') return CLSIDFromString(prog_id, id);
  if (prog_id[0] == 0) return CO_E_CLASSSTRING;
  WideText path;
  WideText text;
  LONG error = SetText(&path, prog_id, u"\\CLSID");
  if (error == ERROR_SUCCESS) error = ReadText(path.data(), nullptr, &text);
  if (error != ERROR_SUCCESS) return RegistryStatus(error, CO_E_CLASSSTRING);
  return CLSIDFromString(text.data(), id);
}

extern "C" HRESULT ProgIDFromCLSID(REFCLSID id, LPOLESTR* prog_id) {
  if (prog_id == nullptr) return E_INVALIDARG;
  *prog_id = nullptr;
  WideText text;
  const LONG error = ReadClassEntry(id, u"ProgID", &text);
  if (error != ERROR_SUCCESS) return RegistryStatus(error, REGDB_E_CLASSNOTREG);
  *prog_id = static_cast<LPOLESTR>(CoTaskMemAlloc(text.size() * sizeof(WCHAR)));
  if (*prog_id == nullptr) return E_OUTOFMEMORY;
  std::memcpy(*prog_id, text.data(), text.size() * sizeof(WCHAR));
  return S_OK;
}

extern "C" void CoFreeUnusedLibraries() {
  // Take the idle modules out of the table first: who needs one meanwhile loads it anew, and so
  // keeps it by a reference of its own.
  Server* idle = nullptr;
  {
    const std::lock_guard<std::mutex> lock(g_lock);
    for (Server** link = &g_servers; *link != nullptr;) {
      Server* server = *link;
      if (server->users != 0 || server->can_unload_now == nullptr) {
        link = &server->next;
        continue;
      }
      *link = server->next;
      server->next = idle;
      idle = server;
    }
  }
  while (idle != nullptr) {
    Server* server = idle;
    idle = server->next;
    bool unload = server->can_unload_now() == S_OK;
    if (!unload) {
      const std::lock_guard<std::mutex> lock(g_lock);
      unload = FindServer(server->file) != nullptr;  // loaded anew: this reference is one too many
      if (!unload) Insert(server);
    }
    if (unload) server->Unload();
  }
}
