#include "classes/shell_object.h"

#include <errno.h>
#include <strings.h>
#include <unistd.h>

#include <filesystem>
#include <new>

#include "classes/environment_collection.h"
#include "classes/special_folders.h"
#include "engine/host_errors.h"
#include "files/file_paths.h"

namespace mirolta::host {
namespace {

// What fails when the current folder is read or set.
struct FolderErrorRow {
  int error;
  HRESULT status;
  const char* text;
};
constexpr FolderErrorRow kFolderErrors[] = {
    {ENOENT, HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), "The folder does not exist"},
    {ENOTDIR, MIROLTA_STATUS(0x8007010Bu), "The path is no folder"},
    {EACCES, E_ACCESSDENIED, "Permission denied"},
    {ENAMETOOLONG, MIROLTA_STATUS(0x800700CEu), "The path is too long"},
    {ENOMEM, E_OUTOFMEMORY, "Out of memory"},
};

[[noreturn]] void FailForFolder(int error) {
  for (const FolderErrorRow& row : kFolderErrors) {
    if (row.error == error) Fail(row.status, row.text);
  }
  Fail(E_FAIL, "The folder cannot be used");
}

constexpr const char* kOtherEnvironments[] = {"SYSTEM", "USER", "VOLATILE"};

class Shell final : public HostObject {
 public:
  const HostClass& Class() const override { return kShellClass; }

  void GetEnvironment(HostCall& call) {
    const std::string type = SystemFromUnits(call.Text(0, OLESTR("SYSTEM")));
    if (strcasecmp(type.c_str(), "PROCESS") == 0) {
      call.ReturnObject(NewEnvironmentCollection());
      return;
    }
    for (const char* other : kOtherEnvironments) {
      if (strcasecmp(type.c_str(), other) != 0) continue;
      Fail(E_NOTIMPL, std::string("WScript.Shell.Environment(\"") + other +
                          "\") is not available: variables belong to processes here. Use "
                          "Environment(\"PROCESS\")");
    }
    Fail(kInvalidCall);
  }

  void GetSpecialFolders(HostCall& call) {
    OwnedReference<HostObject> folders;
    folders.Attach(NewSpecialFolders());
    if (!call.Has(0)) {
      call.ReturnObject(folders.Detach());
      return;
    }
    // SpecialFolders(name) is its item.
    HostMember item = folders->Class().members[0];
    item.get(*folders.Get(), call);
  }

  // %NAME% becomes the variable's value if there is one, and stays otherwise.
  void ExpandEnvironmentStrings(HostCall& call) {
    const std::string text = SystemFromUnits(call.Text(0));
    std::string expanded;
    size_t at = 0;
    for (;;) {
      const size_t start = text.find('%', at);
      const size_t end = start == std::string::npos ? start : text.find('%', start + 1);
      if (end == std::string::npos) break;
      expanded.append(text, at, start - at);
      const char* const value = FindVariable(text.substr(start + 1, end - start - 1));
      if (value != nullptr) {
        expanded += value;
      } else {
        expanded.append(text, start, end + 1 - start);
      }
      at = end + 1;
    }
    expanded.append(text, at);
    call.ReturnText(UnitsFromSystem(expanded));
  }

  void GetCurrentDirectory(HostCall& call) {
    std::error_code failure;
    const std::filesystem::path path = std::filesystem::current_path(failure);
    if (failure) FailForFolder(failure.value());
    call.ReturnText(UnitsFromSystem(path.native()));
  }

  void PutCurrentDirectory(HostCall& call) {
    const Units path = HostCall::TextOf(call.Value());
    if (path.find(OLECHAR{0}) != Units::npos) FailForFolder(ENOENT);
    if (chdir(SystemPath(path).c_str()) != 0) FailForFolder(errno);
  }

 private:
  ~Shell() override = default;
};

constexpr auto kMethod = MemberKind::kMethod;
constexpr auto kProperty = MemberKind::kProperty;

// Members of the platform's object that this one does not have.
struct Refusal {
  const char* name;
  DISPID id;
  UINT least;
  UINT most;
  const char* signature;
  const char* reason;
};
constexpr char kNoPrograms[] = "the host starts no other programs";
constexpr char kNoWindows[] = "the host has no user interface";
constexpr char kNoRegistry[] = "the host's registry contains classes only";
constexpr Refusal kRefusals[] = {
    {"Run", 1000, 1, 3, "(command As String, [window As Long], [wait As Boolean]) As Long",
     kNoPrograms},
    {"Popup", 1001, 1, 4,
     "(text As String, [seconds As Long], [title As String], [type As Long]) As Long",
     "the host has no user interface. Use WScript.Echo"},
    {"CreateShortcut", 1002, 1, 1, "(path As String) As Object",
     "this system has no shortcut files"},
    {"RegRead", 2000, 1, 1, "(name As String) As Variant", kNoRegistry},
    {"RegWrite", 2001, 2, 3, "(name As String, value As Variant, [type As String])", kNoRegistry},
    {"RegDelete", 2002, 1, 1, "(name As String)", kNoRegistry},
    {"LogEvent", 3000, 2, 3, "(type As Long, text As String, [target As String]) As Boolean",
     "this system has no event log. Use WScript.StdErr"},
    {"AppActivate", 3010, 1, 2, "(title As Variant, [wait As Boolean]) As Boolean", kNoWindows},
    {"SendKeys", 3011, 1, 2, "(keys As String, [wait As Boolean])", kNoWindows},
    {"Exec", 3012, 1, 1, "(command As String) As Object", kNoPrograms},
};

template <size_t kRow>
void Refuse(HostObject&, HostCall&) {
  Fail(E_NOTIMPL, std::string("WScript.Shell.") + kRefusals[kRow].name +
                      " is not available: " + kRefusals[kRow].reason);
}

template <size_t kRow>
constexpr HostMember RefusedMember() {
  const Refusal& row = kRefusals[kRow];
  return {row.name,  row.id,        kMethod,
          row.least, row.most,      Refuse<kRow>,
          nullptr,   row.signature, "Not available here: a call is an error that says why."};
}

constexpr HostMember kMembers[] = {
    {"SpecialFolders", 100, kProperty, 0, 1, CallMember<&Shell::GetSpecialFolders>, nullptr,
     " As WScript.Shell.SpecialFolders",
     "The user's and the system's folders, or the path of one."},
    {"Environment", 200, kProperty, 0, 1, CallMember<&Shell::GetEnvironment>, nullptr,
     "([type As String]) As WScript.Shell.Environment",
     "The variables of the process: Environment(\"PROCESS\"). Other types are refused."},
    {"ExpandEnvironmentStrings", 1006, kMethod, 1, 1, CallMember<&Shell::ExpandEnvironmentStrings>,
     nullptr, "(text As String) As String",
     "The text with each %NAME% replaced by the value of that variable, if there is one."},
    {"CurrentDirectory", 3013, kProperty, 0, 0, CallMember<&Shell::GetCurrentDirectory>,
     CallMember<&Shell::PutCurrentDirectory>, " As String", "The process's current folder."},
    RefusedMember<0>(),
    RefusedMember<1>(),
    RefusedMember<2>(),
    RefusedMember<3>(),
    RefusedMember<4>(),
    RefusedMember<5>(),
    RefusedMember<6>(),
    RefusedMember<7>(),
    RefusedMember<8>(),
    RefusedMember<9>(),
};
static_assert(IsWellFormed(kMembers));
static_assert(std::size(kMembers) == 4 + std::size(kRefusals));

}  // namespace

constexpr HostClass kShellClass = {
    "WScript.Shell", "Environment variables, special folders, the current folder.", kMembers};

HostObject* NewShell() {
  return new Shell;
}

}  // namespace mirolta::host
