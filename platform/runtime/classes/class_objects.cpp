#include <chrono>
#include <mutex>

#include "classes/module_table.h"
#include "registry/registry_lookup.h"
#include "texts/guid_text.h"
#include "texts/wide_text.h"

namespace mirolta::runtime {
namespace {

using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
using CanUnloadNow = HRESULT(STDAPICALLTYPE*)();

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kUsualDelay = std::chrono::minutes(10);

// A module that was loaded for its classes.
struct Server {
  Server* next = nullptr;
  LONG users = 0;          // runtime calls in the module now
  uint64_t uses = 0;       // runtime calls so far
  bool is_shared = false;  // used by threads that had not initialized
  bool is_idle = false;    // at the last clean-up, and unused since
  Clock::time_point idle_since;
  HMODULE module = nullptr;
  GetClassObject get_class_object = nullptr;
  CanUnloadNow can_unload_now = nullptr;  // null: never unloaded
  WideText file;

  void Unload() {
    FreeLibrary(module);
    DeleteRuntime(this);
  }
};

// Not destroyed at exit: the modules are unloaded with the process.
std::mutex g_lock;
Server* g_servers = nullptr;
bool g_cleaning = false;
LONG g_initializations = 0;
thread_local LONG t_initializations = 0;

Server* FindServer(const WideText& file) {
  Server* server = g_servers;
  while (server != nullptr && ViewOf(server->file) != ViewOf(file)) server = server->next;
  return server;
}

void Insert(Server* server) {
  server->next = g_servers;
  g_servers = server;
}

template <typename Function>
Function Entry(HMODULE module, LPCSTR name) {
  return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

HRESULT LoadServer(const WideText& file, Server** out) {
  Server* server = NewRuntime<Server>();
  if (server == nullptr || !server->file.Append(file.Data(), file.Size())) {
    DeleteRuntime(server);
    return E_OUTOFMEMORY;
  }
  const HRESULT status = OpenLibrary(file.Data(), &server->module);
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

// Under g_lock.
Server* Use(Server* server) {
  ++server->users;
  ++server->uses;
  server->is_idle = false;
  if (t_initializations == 0) server->is_shared = true;
  return server;
}

// ServerUse finds or loads a module and prevents its unloading while it exists.
class ServerUse {
 public:
  ServerUse() = default;
  ServerUse(const ServerUse&) = delete;
  ServerUse& operator=(const ServerUse&) = delete;
  ~ServerUse() {
    if (server_ == nullptr) return;
    const std::lock_guard<std::mutex> lock(g_lock);
    --server_->users;
  }

  HRESULT Begin(const WideText& file) {
    {
      const std::lock_guard<std::mutex> lock(g_lock);
      if (Server* server = FindServer(file)) {
        server_ = Use(server);
        return S_OK;
      }
    }
    // Outside the lock: a module's initialisation may call back.
    Server* loaded = nullptr;
    const HRESULT status = LoadServer(file, &loaded);
    if (FAILED(status)) return status;
    {
      const std::lock_guard<std::mutex> lock(g_lock);
      Server* server = FindServer(file);
      if (server == nullptr) {
        Insert(loaded);
        server = loaded;
        loaded = nullptr;
      }
      server_ = Use(server);
    }
    if (loaded != nullptr) loaded->Unload();  // another thread was first
    return S_OK;
  }

  HRESULT GetClassObject(REFCLSID id, REFIID iid, void** out) const {
    return server_->get_class_object(id, iid, out);
  }

 private:
  Server* server_ = nullptr;
};

// Only clean-up removes servers, one thread at a time.
void Remove(Server* server) {
  Server** link = &g_servers;
  while (*link != server) link = &(*link)->next;
  *link = server->next;
}

// Unloads servers that have been idle for delay(server). A module's count reaches zero before the
// last Release has left its code; the delay covers the rest of that call. After a module looked
// idle, only the runtime calls into it again, and such a call restarts the delay.
template <typename Delay>
void FreeUnused(Delay delay) {
  Server* unused = nullptr;
  std::unique_lock<std::mutex> lock(g_lock);
  if (g_cleaning) return;
  g_cleaning = true;
  for (Server* next = g_servers; next != nullptr;) {
    Server* const server = next;
    next = server->next;
    if (server->can_unload_now == nullptr || server->users != 0) continue;
    const uint64_t uses = server->uses;
    // Outside the lock: this is the module's code.
    lock.unlock();
    const bool can_unload = server->can_unload_now() == S_OK;
    lock.lock();
    const Clock::time_point now = Clock::now();
    if (!can_unload || server->uses != uses) {
      server->is_idle = false;
      continue;
    }
    if (!server->is_idle) server->idle_since = now;
    server->is_idle = true;
    if (now - server->idle_since < delay(*server)) continue;
    Remove(server);
    server->next = unused;
    unused = server;
  }
  g_cleaning = false;
  lock.unlock();
  while (unused != nullptr) {
    Server* const server = unused;
    unused = server->next;
    server->Unload();
  }
}

// The status of a registry error; `missing` if there is no such entry.
HRESULT RegistryStatus(LONG error, HRESULT missing) {
  if (error == ERROR_FILE_NOT_FOUND) return missing;
  return error == ERROR_OUTOFMEMORY ? E_OUTOFMEMORY : HRESULT_FROM_WIN32(error);
}

// Reads the default value of CLSID\{id}\entry.
LONG ReadClassEntry(REFCLSID id, LPCWSTR entry, WideText* text) {
  WideText path;
  const LONG error = SetText(&path, u"CLSID\\", GuidText(id).text, u"\\", entry);
  return error == ERROR_SUCCESS ? ReadText(path.Data(), nullptr, text) : error;
}

// Loads the module of a class, which `use` then holds, and asks it for the class object.
HRESULT FindClassObject(REFCLSID id, DWORD context, REFIID iid, ServerUse* use, void** out) {
  if ((context & CLSCTX_INPROC_SERVER) == 0) return REGDB_E_CLASSNOTREG;
  WideText file;
  const LONG error = ReadClassEntry(id, u"InprocServer32", &file);
  if (error != ERROR_SUCCESS) return RegistryStatus(error, REGDB_E_CLASSNOTREG);
  const HRESULT status = use->Begin(file);
  return FAILED(status) ? status : use->GetClassObject(id, iid, out);
}

}  // namespace
}  // namespace mirolta::runtime

using namespace mirolta::runtime;

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
  if (!last) return;
  FreeUnused([](const Server& server) {
    return server.is_shared ? kUsualDelay : std::chrono::milliseconds::zero();
  });
}

extern "C" HRESULT CoGetClassObject(REFCLSID id, DWORD context, LPVOID, REFIID iid, LPVOID* out) {
  if (out == nullptr) return E_INVALIDARG;
  *out = nullptr;
  ServerUse use;
  return FindClassObject(id, context, iid, &use, out);
}

extern "C" HRESULT CoCreateInstance(REFCLSID id, IUnknown* outer, DWORD context, REFIID iid,
                                    LPVOID* out) {
  if (out == nullptr) return E_POINTER;
  *out = nullptr;
  ServerUse use;  // until the factory's last Release has returned
  void* object = nullptr;
  HRESULT status = FindClassObject(id, context, IID_IClassFactory, &use, &object);
  if (FAILED(status)) return status;
  if (object == nullptr) return E_NOINTERFACE;  // a module that succeeds without an object
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
  if (error == ERROR_SUCCESS) error = ReadText(path.Data(), nullptr, &text);
  if (error != ERROR_SUCCESS) return RegistryStatus(error, CO_E_CLASSSTRING);
  return CLSIDFromString(text.Data(), id);
}

extern "C" HRESULT ProgIDFromCLSID(REFCLSID id, LPOLESTR* prog_id) {
  if (prog_id == nullptr) return E_INVALIDARG;
  *prog_id = nullptr;
  WideText text;
  const LONG error = ReadClassEntry(id, u"ProgID", &text);
  if (error != ERROR_SUCCESS) return RegistryStatus(error, REGDB_E_CLASSNOTREG);
  *prog_id = static_cast<LPOLESTR>(CoTaskMemAlloc(text.Size() * sizeof(WCHAR)));
  if (*prog_id == nullptr) return E_OUTOFMEMORY;
  std::memcpy(*prog_id, text.Data(), text.Size() * sizeof(WCHAR));
  return S_OK;
}

extern "C" void CoFreeUnusedLibrariesEx(DWORD delay, DWORD) {
  const std::chrono::milliseconds wanted =
      delay == INFINITE ? kUsualDelay : std::chrono::milliseconds(delay);
  FreeUnused([wanted](const Server&) { return wanted; });
}

extern "C" void CoFreeUnusedLibraries() {
  CoFreeUnusedLibrariesEx(INFINITE, 0);
}
