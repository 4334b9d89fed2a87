// Out of memory in the host's native functions: for each of them the first, second, third ...
// allocation of operator new, of the runtime or of the script engine fails. Each failure is an
// out-of-memory error of the script, nothing leaks, and the same call succeeds afterwards. The
// program is the module.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "classes/drive_object.h"
#include "classes/file_collections.h"
#include "classes/file_object.h"
#include "classes/file_system_object.h"
#include "classes/folder_object.h"
#include "classes/text_stream.h"
#include "command_line/help_function.h"
#include "command_line/result_text.h"
#include "engine/host_errors.h"
#include "files/file_actions.h"
#include "files/file_facts.h"
#include "files/output_file.h"
#include "host_fixture.h"
#include "memory_watch.h"
#include "mirolta.h"
#include "objects/dispatch_object.h"
#include "portable/registry_mode.h"
#include "portable/test_hooks.h"
#include "source/member_uses.h"
#include "stub_dispatch.h"

namespace mirolta::host {
namespace {

// A script that calls the native functions named; every run gives the same text.
struct NativeRow {
  const char* name;
  const char* script;
  HRESULT also = E_OUTOFMEMORY;  // another number that the error may have
};
constexpr NativeRow kRows[] = {
    {"Echo", "WScript.Echo('a\\u00e9\\ud83d\\ude00\\ud800' + long, 1, true, undefined, [1, 2])"},
    {"StdOut.Write", "WScript.StdOut.Write(long, 1.5)"},
    {"StdOut.WriteLine", "WScript.StdOut.WriteLine(long)"},
    {"StdErr.Write", "WScript.StdErr.Write(long, null)"},
    {"StdErr.WriteLine", "WScript.StdErr.WriteLine(long)"},
    {"StdErr.WriteBlankLines", "WScript.StdErr.WriteBlankLines(3); typeof WScript.StdErr.Line"},
    {"StdIn", "WScript.StdIn.Column + typeof WScript.StdIn.IsTerminal"},
    {"Sleep", "WScript.Sleep(0)"},
    {"help", "help()"},
    {"help of an object", "help(hash)"},
    {"help of an object of the script", "help({ first: long })"},
    {"help of a class", "help('Vardeko.crypt.Number')"},
    {"results",
     "show(long) + show(bytes) + show([1, { a: long }]) + show(hash) + show(stream) +"
     " show(new Error(long)) + show(function () {})"},
    {"Arguments", "WScript.Arguments(0) + WScript.Arguments.Item(1)"},
    {"Arguments.Count", "WScript.Arguments.Count() + WScript.Arguments.length"},
    {"Arguments.Named",
     "var n = WScript.Arguments.Named; n('name') + n.Item('NAME') + n('on') + n.Exists(long) + "
     "n.Count"
     " + WScript.Arguments.Named('name')"},
    {"Arguments.Unnamed",
     "var u = WScript.Arguments.Unnamed; u(0) + u.Count() + WScript.Arguments.Unnamed(1)"},
    {"Arguments.ShowUsage", "WScript.Arguments.ShowUsage()"},
    {"Enumerator",
     "var t = '', e = new Enumerator(WScript.Arguments);"
     "for (; !e.atEnd(); e.moveNext()) t += e.item();"
     "e.moveFirst(); t + e.item() + new Enumerator(WScript.Arguments.Named).item()"
     " + new Enumerator(WScript.Arguments.Unnamed).item() + new Enumerator().item()"},
    {"Enumerator of none", "failing(function () { new Enumerator([]) })"},
    {"FullName", "WScript.FullName.length + WScript.Path.length"},
    {"Interactive", "WScript.Interactive = true; WScript.interactive"},
    {"Timeout", "WScript.Timeout = 0; WScript.Timeout"},
    {"Application", "typeof WScript.Application + WScript"},
    {"GetObject",
     "failing(function () { WScript.GetObject(long) }) +"
     "failing(function () { GetObject(null, long) }) +"
     "typeof GetObject('', 'Vardeko.crypt.HashObject')"},
    {"ConnectObject",
     "failing(function () { WScript.ConnectObject(number, 'p') }) +"
     "failing(function () { WScript.DisconnectObject(number) }) +"
     "failing(function () { WScript.CreateObject('x', 'p') })"},
    {"ScriptEngine",
     "ScriptEngine() + ScriptEngineMajorVersion() + ScriptEngineMinorVersion() +"
     "ScriptEngineBuildVersion()"},
    {"CollectGarbage", "CollectGarbage()"},
    {"Date of a text",
     "Date.parse('Jan 2, 2003 10:20') + new Date('1/2/2003').getTime() + new Date(5).getTime() +"
     "typeof Date()"},
    {"getVarDate",
     "date.getVarDate().getTime() + failing(function () { new Date(NaN).getVarDate() })"},
    {"any letter case", "typeof WScript.eChO + WScript.STDOUT.wRITE('')"},
    {"OpenFile", "var f = WScript.OpenFile('/dev/null', 'r'); f.Close()"},
    {"OpenFile of none", "failing(function () { WScript.OpenFile(long + '/' + long) })"},
    {"OpenFile of no text", "failing(function () { WScript.OpenFile('\\ud800\\u0000') })"},
    {"file that is made",
     "var f = WScript.OpenFile(file, 'w+', true); f.Write(bytes); f.Close(); f.Close()"},
    {"file that is dropped", "var f = WScript.OpenFile(file, 'w'); f.Write(bytes); f.Discard()"},
    {"IsSameFile", "WScript.IsSameFile('/dev/null', '/dev/' + '../dev/null')"},
    {"EnvironmentVariable",
     "WScript.EnvironmentVariable('PATH') + WScript.EnvironmentVariable(long)"},
    {"MemoryStream", "WScript.MemoryStream(bytes).Size"},
    {"StreamOf", "WScript.StreamOf(stream).Size"},
    {"StreamOf of a script object", "failing(function () { WScript.StreamOf({}) })"},
    {"Read", "stream.Position = 0; stream.Read(100).length + stream.Read().length"},
    {"Write", "stream.Position = 0; stream.Write(bytes)"},
    {"Write beyond", "var s = WScript.MemoryStream(); s.Write(bytes); s.Write(bytes); s.Size"},
    {"Seek", "stream.Seek(1) + stream.Seek(-1, 2)"},
    {"CopyTo", "var s = WScript.MemoryStream(); stream.Position = 0; stream.CopyTo(s) + s.Size"},
    {"Commit", "stream.Commit()"},
    {"Size =", "var s = WScript.MemoryStream(); s.Size = 5000; s.Size"},
    {"Close", "var s = WScript.MemoryStream(); s.Close(); failing(function () { s.Size })"},
    {"stream as text", "'' + stream"},
    {"ActiveXObject", "typeof new ActiveXObject('Vardeko.crypt.Number')"},
    {"CreateObject", "typeof WScript.CreateObject('Vardeko.crypt.HashObject')"},
    {"CreateObject of none", "failing(function () { WScript.CreateObject('None.' + long) })"},
    {"member read", "number.Value = 77; number.Value"},
    {"member not there", "typeof number.Nothing + typeof number[long]"},
    {"member that is not there called", "failing(function () { number.Nothing(1) })"},
    {"member called", "hash.HashData(bytes); hash.Value"},
    {"method read and called later", "var m = hash.Reset; m()"},
    {"text both ways", "number.Value = digits; number.Value = 5; number.Text(65001)"},
    {"bytes both ways", "hash.HashData(bytes); hash.BinaryValue.length"},
    {"object as result", "number.Value = 7; var n = number.NewNumber(); typeof n"},
    {"object as argument",
     "var n = new ActiveXObject('Vardeko.crypt.Number'); n.Value = 7; n.Add(n)",
     // The runtime reports only that reading an object as a value failed.
     DISP_E_EXCEPTION},
    {"property by reference", "filter.Stream = stream; typeof filter.Stream"},
    {"assignment with arguments", "number['Text()='](65001).value = '12'; number.Value"},
    {"reading before assigning", "number['Text()='](65001).value += '3'; 0"},
    {"default value", "number.Value = 7; '' + number + (number - 1) + number()"},
    {"in", "('Value' in number) + ',' + ('None' in number)"},
    {"error of a member", "failing(function () { number.Mod(0, 0, 0, 0, 0, 0) })"},
    {"error with a text", "failing(function () { other.InitHash(long) })"},
    {"VBArray",
     "var v = new VBArray(bytes); v.ubound() + v.lbound() + v.dimensions() + v.getItem(1)"},
    {"VBArray.toArray", "new VBArray(new Uint8Array(40)).toArray().length"},
    {"Date", "sink(new Date(0)) + sink(date).getTime()"},
    {"arrays", "typeof sink('array') + new VBArray(sink('array')).getItem(1)"},
    {"by reference", "sink('reference')"},
    {"plain object", "typeof sink('plain')"},
    {"script object there and back", "var o = { a: 1 }; sink(o) === o"},
    {"callback", "sink(function (x) { return 'called ' + x + long }).length"},
    {"callback's member", "sink({ member: function (x) { return digits + x } })"},
    {"callback that throws",
     "failing(function () { sink(function () { throw new Error(5, long) }) })"},
    {"callback that throws a text", "failing(function () { sink(function () { throw long }) })"},
    {"script object as a value", "number.Value = { valueOf: function () { return digits } }; 0"},
    {"script object that throws",
     "failing(function () { number.Value = { valueOf: function () { throw new Error(7, 'x') } } "
     "})"},
    {"Error",
     "var e = new Error(1, long), t = new TypeError('7'); e.number + e.description + t.number"},
    {"error's members", "try { null.x } catch (e) { e.number + e.description }"},
    {"throw", "try { throw 5 } catch (e) { e }"},
    {"Bytes.FromText",
     "Bytes.FromText(long + '\\u20ac', 1252).length + Bytes.FromText(long, -1).length"},
    {"Bytes.ToText", "Bytes.ToText(bytes, 1252) + Bytes.ToText(bytes, -1)"},
    {"Bytes.FromHex", "Bytes.FromHex('00ff' + long.replace(/x/g, 'a')).length"},
    {"Bytes.ToHex", "Bytes.ToHex(bytes)"},
    {"Bytes.FromBase64", "Bytes.FromBase64(long).length + Bytes.FromBase64(' ' + long).length"},
    {"Bytes.ToBase64", "Bytes.ToBase64(bytes)"},
    {"Bytes.Equal and Xor", "Bytes.Equal(bytes, Bytes.Xor(bytes, bytes))"},
    {"Bytes.Random", "Bytes.Random(300).length"},
    {"Bytes assigned", "var kept = Bytes; Bytes = 1; Bytes = kept; 0"},
    {"error of Bytes", "failing(function () { Bytes.FromHex(long) })"},
    {"Dictionary",
     "var d = new ActiveXObject('Scripting.Dictionary'); d.CompareMode = 1; d.Add(long, digits);"
     "d['Item()=']('a').value = date; d['Key()=']('a').value = number; d.Exists(1.5) + d.Count + "
     "d.CompareMode +"
     "typeof d.Item(bytes.none)"},
    {"Dictionary.Keys",
     "var d = new ActiveXObject('Scripting.Dictionary'); d.Add(long, digits); d.Add(1, bytes);"
     "typeof new VBArray(d.Items()).toArray()[1] + new VBArray(d.Keys()).toArray().join()"},
    {"Dictionary.Remove",
     "var d = new ActiveXObject('Scripting.Dictionary'); d.Add(long, hash); d.Remove(long);"
     "d.Add(1, 2); d.RemoveAll(); failing(function () { d.Remove(1) })"},
    {"ADODB.Stream",
     "var s = new ActiveXObject('ADODB.Stream'); s.Charset = 'utf-8'; s.Open();"
     "s.WriteText(long, 1); s.Position = 0; s.ReadText(3) + s.ReadText(-2).length + s.Size +"
     "s.EOS + s.Charset"},
    {"ADODB.Stream of bytes",
     "var s = new ActiveXObject('ADODB.Stream'); s.Type = 1; s.Open(); s.Write(bytes);"
     "s.Position = 0; WScript.StreamOf(s).Size + s.Read().length"},
    {"ADODB.Stream.CopyTo",
     "var s = new ActiveXObject('ADODB.Stream'), t = new ActiveXObject('ADODB.Stream');"
     "s.Open(); t.Charset = 'shift_jis'; t.Open(); s.WriteText(long); s.Position = 2; s.CopyTo(t);"
     "t.Type + t.Size"},
    {"ADODB.Stream's files",
     "var s = new ActiveXObject('ADODB.Stream'); s.Open(); s.WriteText(long);"
     "s.SaveToFile(file, 2); s.LoadFromFile(file); s.Size"},
    {"WScript.Shell",
     "var s = new ActiveXObject('WScript.Shell'), e = s.Environment('PROCESS');"
     "e['Item()=']('A_VARIABLE').value = long; s.ExpandEnvironmentStrings('%A_VARIABLE%%PATH%') +"
     "e.Item('a_variable') + e.length + e.Count() + e.Remove('A_VARIABLE') +"
     "typeof new Enumerator(e).item()"},
    {"WScript.Shell's folders",
     "var s = new ActiveXObject('WScript.Shell'); s.CurrentDirectory = s.CurrentDirectory;"
     "s.SpecialFolders('Desktop') + s.SpecialFolders(2) + s.SpecialFolders.Count() +"
     "new Enumerator(s.SpecialFolders).item()"},
    {"WScript.Shell's errors",
     "var s = new ActiveXObject('WScript.Shell'); failing(function () { s.Run(long) }) +"
     "failing(function () { s.Environment('USER') }) +"
     "failing(function () { s.CurrentDirectory = long })"},
    {"ADODB.Stream's errors",
     "var s = new ActiveXObject('ADODB.Stream'); s.Open(); s.LoadFromFile('/dev/null');"
     "failing(function () { s.LoadFromFile(long) }) +"
     "failing(function () { s.Charset = long })"},
    {"TextStream that writes",
     "var s = fso.CreateTextFile(file, true, true); s.WriteLine(long); s.Write('\\ud83d');"
     "s.Write('\\ude00', 1.5, null); s.WriteBlankLines(2); var n = s.Line + s.Column; s.Close(); "
     "n"},
    {"TextStream that reads",
     "var s = fso.CreateTextFile(file); s.Write('a\\r\\n\\u20ac\\n' + long); s.Close();"
     "s = fso.OpenTextFile(file, 1, true, -2); s.Skip(1); var t = s.AtEndOfLine + s.Read(2);"
     "s.SkipLine(); t + s.ReadLine() + s.AtEndOfStream"},
    {"ReadAll",
     "var s = fso.CreateTextFile(file); s.Write(long); s.Close();"
     "fso.GetFile(file).OpenAsTextStream(1, -1).ReadAll()"},
    {"TextStream that appends", "fso.OpenTextFile('/dev/null', 8, true).WriteLine(long)"},
    {"GetStandardStream", "fso.GetStandardStream(1).Write(long)"},
    {"paths",
     "var p = fso.BuildPath(long, long); p + fso.GetDriveName('/' + p) + "
     "fso.GetParentFolderName(p) +"
     "fso.GetFileName(p) + fso.GetBaseName(p) + fso.GetExtensionName(p + '.' + long) +"
     "fso.GetAbsolutePathName(p) + fso.GetTempName().length"},
    {"files there",
     "var p = long.substr(0, 9); '' + fso.FileExists(p) + fso.FolderExists('/') + "
     "fso.DriveExists(p) "
     "+ fso.GetFileVersion('/dev/null')"},
    {"error of a file", "failing(function () { fso.GetFile('/none/' + file) })"},
    {"Drive",
     "var d = fso.GetDrive('/'); d.Path + d.DriveLetter + d.ShareName + d.VolumeName + d.DriveType "
     "+"
     "typeof d.AvailableSpace + typeof d.FreeSpace + typeof d.TotalSize + d.FileSystem +"
     "d.SerialNumber + d.IsReady + d.RootFolder.IsRootFolder"},
    {"Drives",
     "var d = fso.Drives; '' + d.Count + d.Item('/') + new Enumerator(d).item() +"
     "typeof fso.GetSpecialFolder(2).Path"},
    {"File",
     "var f = fso.GetFile('/dev/null'); f.Path + f.Name + f.ShortPath + f.ShortName + f.Type + "
     "f.Size +"
     "f.Attributes + f.ParentFolder.Path + typeof f.DateCreated + typeof f.DateLastModified +"
     "typeof f.DateLastAccessed + typeof f.Drive.Path"},
    {"Folder",
     "if (fso.FolderExists(tree)) fso.DeleteFolder(tree, true); fso.CreateFolder(tree); var f = "
     "fso.GetFolder(tree);"
     "f.CreateTextFile(long.substr(0, 99)).Close(); f.SubFolders.Add('sub');"
     "f.Name + f.Files.Count + f.Files.Item(long.substr(0, 99)).Name +"
     "new Enumerator(f.SubFolders).item().Name + new Enumerator(f.Files).item().Name + f.Size"},
    {"files copied, moved and deleted",
     "if (fso.FolderExists(tree)) fso.DeleteFolder(tree, true); fso.CreateFolder(tree);"
     "fso.CreateTextFile(tree + '/a').Close(); fso.CopyFile(tree + '/a', tree + '/b');"
     "fso.MoveFile(tree + '/b', tree + '/c'); fso.DeleteFile(tree + '/*'); fso.FileExists(tree + "
     "'/c')"},
    {"folders copied, moved and deleted",
     "if (fso.FolderExists(tree)) fso.DeleteFolder(tree, true); fso.CreateFolder(tree);"
     "fso.CreateFolder(tree + '/a'); fso.CreateTextFile(tree + '/a/f').Close();"
     "fso.CopyFolder(tree + '/a', tree + '/b'); fso.MoveFolder(tree + '/b', tree + '/c');"
     "fso.DeleteFolder(tree + '/a'); fso.FileExists(tree + '/c/f')"},
    {"File copied, moved and deleted",
     "if (fso.FolderExists(tree)) fso.DeleteFolder(tree, true); fso.CreateFolder(tree);"
     "fso.CreateTextFile(tree + '/a').Close(); var f = fso.GetFile(tree + '/a'); f.Copy(tree + "
     "'/b');"
     "f.Move(tree + '/c'); f.Name = 'd'; f.Attributes = 1; f.Delete(true); f.Name"},
};

constexpr char kStart[] =
    "var long = 'x', digits = '7', bytes = new Uint8Array(300), i, date = new Date(86400000);"
    "for (i = 0; i < 9; i++) { long += long; digits += i }"
    "var stream = WScript.MemoryStream(bytes);"
    "var number = new ActiveXObject('Vardeko.crypt.Number');"
    "var hash = new ActiveXObject('Vardeko.crypt.HashObject');"
    "var other = new ActiveXObject('Vardeko.crypt.HashObject'); hash.InitHash('MD5');"
    "var filter = new ActiveXObject('Vardeko.crypt.ToviStreamDigest');"
    "var fso = new ActiveXObject('Scripting.FileSystemObject');"
    // Returns the error of f; an out-of-memory error is thrown on.
    "function failing(f) {"
    "  try { f() } catch (e) {"
    "    if (e.number === -2147024882 || e.number === -2147287032 ||"
    "        /0x8007000E/.test(e.description)) throw e;"
    "    return '' + (e.number || e);"
    "  }"
    "  throw new Error('no error');"
    "}";

// A function of one argument. For some strings it returns a value that scripts cannot make; it
// calls an object and returns any other argument.
class Sink final : public test::StubDispatch<> {
 public:
  HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS* params, VARIANT* result,
                                   EXCEPINFO* exception, UINT*) override {
    if (params->cArgs != 1) return DISP_E_BADPARAMCOUNT;
    const VARIANT& argument = params->rgvarg[0];
    if (argument.vt == VT_DISPATCH) return Call(argument.pdispVal, result, exception);
    if (argument.vt != VT_BSTR) return VariantCopy(result, &argument);
    switch (argument.bstrVal[0]) {
      case 'a': {
        SAFEARRAYBOUND bound = {3, 0};
        SAFEARRAY* const array = SafeArrayCreate(VT_I4, 1, &bound);
        if (array == nullptr) return E_OUTOFMEMORY;
        result->vt = VT_ARRAY | VT_I4;
        result->parray = array;
        return S_OK;
      }
      case 'r':
        result->vt = VT_BYREF | VT_BSTR;
        result->pbstrVal = &text_;
        return S_OK;
      case 'p':
        result->vt = VT_UNKNOWN;
        result->punkVal = &plain_;
        return S_OK;
      default:
        return VariantCopy(result, &argument);
    }
  }

 private:
  class Plain final : public IUnknown {
   public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
      *out = iid == IID_IUnknown ? this : nullptr;
      return *out != nullptr ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
  };

  static HRESULT Call(IDispatch* object, VARIANT* result, EXCEPINFO* exception) {
    VARIANT one = {};
    one.vt = VT_I4;
    one.lVal = 1;
    DISPPARAMS params = {&one, nullptr, 1, 0};
    OLECHAR name[] = OLESTR("member");
    LPOLESTR names[] = {name};
    DISPID id = DISPID_VALUE;
    const HRESULT found = object->GetIDsOfNames(IID_NULL, names, 1, 0, &id);
    if (found == DISP_E_UNKNOWNNAME) id = DISPID_VALUE;
    if (FAILED(found) && found != DISP_E_UNKNOWNNAME) return found;
    const HRESULT status =
        object->Invoke(id, IID_NULL, 0, DISPATCH_METHOD, &params, result, exception, nullptr);
    if (status != DISP_E_TYPEMISMATCH && status != DISP_E_MEMBERNOTFOUND) return status;
    result->vt = VT_DISPATCH;
    result->pdispVal = object;
    object->AddRef();
    return S_OK;
  }

  BSTR text_ = SysAllocString(OLESTR("referred"));
  Plain plain_;

 public:
  ~Sink() { SysFreeString(text_); }
};

// Discards the output of both standard streams.
class Quiet {
 public:
  Quiet() {
    FlushBoth();
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    for (int i = 0; i < 2; ++i) {
      kept_[i] = fcntl(i + 1, F_DUPFD_CLOEXEC, 3);
      dup2(nowhere, i + 1);
    }
    close(nowhere);
  }
  ~Quiet() {
    FlushBoth();
    for (int i = 0; i < 2; ++i) {
      dup2(kept_[i], i + 1);
      close(kept_[i]);
    }
  }

 private:
  static void FlushBoth() {
    std::fflush(stdout);
    std::fflush(stderr);
  }
  int kept_[2];
};

bool PrepareModule() {
  setenv("MIROLTA_REGISTRY", "/nonexistent/registry", 1);
  return MiroltaRegistryInMemory(TRUE) == ERROR_SUCCESS && DllRegisterServer() == S_OK &&
         SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
}

enum class Heap { kOperatorNew, kRuntime, kEngine };

class HostMemory : public EngineTest, public testing::WithParamInterface<Heap> {
 protected:
  void SetUp() override {
    static const bool prepared = PrepareModule();
    ASSERT_TRUE(prepared);
    engine_.emplace();
    engine_->Context().arguments = {"one", "two \xFF", "/name:value", "/on+"};
    Start(&*engine_);
    PushDispatch(Api(), &sink_);
    duk_put_global_string(Api(), "sink");
    duk_push_string(Api(), file_.c_str());
    duk_put_global_string(Api(), "file");
    InstallHelp(Api());
    duk_push_c_function(
        Api(),
        [](duk_context* engine) -> duk_ret_t {
          PushResultText(engine);
          return 1;
        },
        1);
    duk_put_global_string(Api(), "show");
    duk_push_string(Api(), tree_.c_str());
    duk_put_global_string(Api(), "tree");
    // The table of objects keeps its room, which is no leak.
    ObjectTable& objects = engine_->Context().objects;
    std::vector<SlotNumber> numbers;
    for (int i = 0; i < 1000; ++i) numbers.push_back(objects.Add(SlotKind::kUnknown, VARIANT{}));
    for (const SlotNumber number : numbers) objects.Remove(number);
    ASSERT_EQ(duk_peval_string(Api(), kStart), 0) << PopText();
    duk_pop(Api());
  }
  void TearDown() override {
    DiscardOutputs();
    unlink(file_.c_str());
    if (KindOf(tree_) == PathKind::kFolder) DeleteOneFolder(tree_, true);
    EngineTest::TearDown();
  }

  struct Outcome {
    bool threw = false;
    bool is_out_of_memory = false;
    HRESULT number = S_OK;
    std::string text;
  };

  // Runs the function on top of the stack, which stays there.
  Outcome Run() {
    const Quiet quiet;
    duk_dup_top(Api());
    Outcome outcome;
    outcome.threw = duk_pcall(Api(), 0) != 0;
    return outcome;
  }
  // Reads and pops what Run left, when memory is available again.
  void Look(Outcome* outcome) {
    if (outcome->threw && duk_is_error(Api(), -1)) {
      duk_get_prop_string(Api(), -1, "number");
      const HRESULT number = outcome->number = duk_get_int(Api(), -1);
      duk_pop(Api());
      duk_get_prop_string(Api(), -1, "description");
      const std::string description = PopText();
      outcome->is_out_of_memory =
          number == E_OUTOFMEMORY || number == STG_E_INSUFFICIENTMEMORY ||
          (number == kCannotCreateObject && description.find("8007000E") != std::string::npos);
      outcome->text = std::to_string(number) + " " + description;
      duk_pop(Api());
      return;
    }
    outcome->text = PopText();
  }

  // The number of objects that the script holds after garbage collection.
  size_t ObjectsHeld() {
    ObjectTable& objects = engine_->Context().objects;
    for (int time = 0; time < 2; ++time) {
      duk_gc(Api(), 0);
      objects.ReleaseDropped();
    }
    return objects.Count();
  }

  // Runs with allocation `count` failing; false if there were fewer.
  bool RunFailing(int count, Outcome* outcome) {
    ScriptContext& context = engine_->Context();
    bool failed = false;
    switch (GetParam()) {
      case Heap::kOperatorNew: {
        const test::FailOneAllocation failure(count);
        *outcome = Run();
        failed = test::AllocationHasFailed();
        break;
      }
      case Heap::kRuntime:
        MiroltaFailAllocationAfter(count);
        *outcome = Run();
        failed = MiroltaAllocationHasFailed();
        MiroltaFailAllocationAfter(-1);
        break;
      case Heap::kEngine: {
        constexpr size_t kStep = 184;
        const size_t usual = context.memory_limit;
        context.memory_limit = context.memory_in_use + static_cast<size_t>(count) * kStep;
        *outcome = Run();
        context.memory_limit = usual;
        failed = outcome->threw || count < 3;
        break;
      }
    }
    return failed;
  }

  // Runs the function on top of the stack, which does what the row says, with each of its
  // allocations failing, pops it, and returns the number of failures.
  int FailEach(const NativeRow& row) {
    int failures = 0;
    FailEachInto(row, &failures);
    return failures;
  }
  void FailEachInto(const NativeRow& row, int* failures) {
    Outcome usual = Run();
    Look(&usual);
    ASSERT_FALSE(usual.threw) << usual.text;
    usual = Run();
    Look(&usual);
    DiscardOutputs();
    const size_t held = ObjectsHeld();
    const long blocks = test::LiveAllocations();
    for (int count = 0;; ++count) {
      ASSERT_LT(count, 2000);
      Outcome outcome;
      const bool failed = RunFailing(count, &outcome);
      Look(&outcome);
      if (outcome.threw) {
        EXPECT_TRUE(outcome.is_out_of_memory || outcome.number == row.also)
            << count << ": " << outcome.text;
        ++*failures;
      } else {
        EXPECT_EQ(outcome.text, usual.text) << count;
      }
      Outcome again = Run();
      Look(&again);
      ASSERT_FALSE(again.threw) << count << ": " << again.text;
      ASSERT_EQ(again.text, usual.text) << count;
      if (!failed) break;
    }
    // New files that a row could not close.
    DiscardOutputs();
    EXPECT_EQ(ObjectsHeld(), held) << "after " << *failures << " failures";
    if (GetParam() != Heap::kEngine) {
      EXPECT_EQ(test::LiveAllocations(), blocks) << "after " << *failures << " failures";
    }
    duk_pop(Api());
  }

  const std::string file_ = testing::TempDir() + "mirolta-" + std::to_string(getpid());
  const std::string tree_ = file_ + ".d";
  Sink sink_;
};

TEST_P(HostMemory, EveryFailedAllocationIsAnOutOfMemoryError) {
  int total_failures = 0;
  for (const NativeRow& row : kRows) {
    SCOPED_TRACE(row.name);
    // A function that evaluates the row: the last expression is the result.
    duk_push_string(Api(), row.script);
    duk_put_global_string(Api(), "row");
    ASSERT_EQ(duk_peval_string(Api(), "(function () { return eval(row) })"), 0);
    total_failures += FailEach(row);
    if (HasFatalFailure()) return;
  }
  EXPECT_GT(total_failures, 100);
  EXPECT_EQ(DllCanUnloadNow(), S_FALSE);
  engine_.reset();
  EXPECT_EQ(DllCanUnloadNow(), S_OK);
}

// Without memory an engine does not start; one that does has its link and hides the engine's internals.
TEST_P(HostMemory, AnEngineThatStartsIsComplete) {
  ScriptEngine usual;
  Start(&usual);
  constexpr size_t kStep = 64, kCounts = 256;
  const size_t least = usual.Context().memory_in_use - kCounts / 2 * kStep;
  const long blocks = test::LiveAllocations();
  size_t failures = 0;
  for (size_t count = 0; count < kCounts; ++count) {
    {
      ScriptEngine engine;
      std::string problem;
      bool started = false;
      switch (GetParam()) {
        case Heap::kOperatorNew: {
          const test::FailOneAllocation failure(static_cast<long>(count));
          started = engine.Start(&problem);
          break;
        }
        case Heap::kRuntime:
          MiroltaFailAllocationAfter(static_cast<LONG>(count));
          started = engine.Start(&problem);
          MiroltaFailAllocationAfter(-1);
          break;
        case Heap::kEngine: {
          const size_t limit = engine.Context().memory_limit;
          engine.Context().memory_limit = least + count * kStep;
          started = engine.Start(&problem);
          engine.Context().memory_limit = limit;
          break;
        }
      }
      if (started) {
        EXPECT_NE(engine.Context().link, nullptr) << count;
        EXPECT_EQ(duk_get_global_string(engine.Api(), "CBOR"), 0) << count;
      } else {
        EXPECT_EQ(problem, "not enough memory for the script engine") << count;
        ++failures;
      }
    }
    EXPECT_EQ(test::LiveAllocations(), blocks) << count;
  }
  EXPECT_LT(failures, kCounts);
  if (GetParam() != Heap::kRuntime) {
    EXPECT_GT(failures, 0u);
  }
}

// The library behind Bytes is compiled at its first use: after a failure, at the next.
TEST_P(HostMemory, EveryFailedAllocationOfTheFirstUseOfBytesIsAnOutOfMemoryError) {
  int failures = 0;
  for (int count = 0;; ++count) {
    ASSERT_LT(count, 2000);
    engine_.emplace();
    Start(&*engine_);
    ASSERT_EQ(duk_pcompile_string(Api(), 0, "Bytes.ToHex(Bytes.FromHex('00fF'))"), 0);
    Outcome outcome;
    const bool failed = RunFailing(count, &outcome);
    Look(&outcome);
    if (outcome.threw) {
      EXPECT_TRUE(outcome.is_out_of_memory) << count << ": " << outcome.text;
      ++failures;
    } else {
      EXPECT_EQ(outcome.text, "00ff") << count;
    }
    Outcome again = Run();
    Look(&again);
    EXPECT_EQ(again.text, "00ff") << count;
    if (!failed) break;
  }
  EXPECT_GT(failures, GetParam() == Heap::kRuntime ? -1 : 0);
}

// The host calls members by shorter ways if it knows all code.
TEST_P(HostMemory, EveryFailedAllocationOfAKnownScriptIsAnOutOfMemoryError) {
  std::string script = kStart;
  for (const NativeRow& row : kRows) script += std::string("\n") + row.script;
  engine_->Context().call_sites.NoteScript(Api(), FindMemberUses(script));
  int total_failures = 0;
  for (const NativeRow& row : kRows) {
    SCOPED_TRACE(row.name);
    // It would catch the engine's errors too.
    if (std::string(row.script).find("catch") != std::string::npos) continue;
    ASSERT_EQ(duk_pcompile_string(Api(), DUK_COMPILE_EVAL, row.script), 0);
    total_failures += FailEach(row);
    if (HasFatalFailure()) return;
  }
  EXPECT_TRUE(engine_->Context().call_sites.KnowsAllCode());
  EXPECT_GT(total_failures, 100);
}

// The host sees the code of a call of eval before the engine does (eval_calls.h).
TEST_P(HostMemory, EveryFailedAllocationOfACallOfEvalIsAnOutOfMemoryError) {
  const NativeRow row = {"eval", "typeof eval(__mirolta_code(eval, '[long.length, long[1]]'))"};
  engine_->Context().call_sites.NoteScript(Api(), FindMemberUses(row.script));
  ASSERT_EQ(duk_pcompile_string(Api(), DUK_COMPILE_EVAL, row.script), 0);
  EXPECT_GT(FailEach(row), GetParam() == Heap::kRuntime ? -1 : 2);
}

// Fails for a native function of the host without a row above.
TEST_P(HostMemory, EveryNativeFunctionHasARow) {
  ASSERT_EQ(duk_peval_string(Api(),
                             "[WScript, WScript.StdOut, WScript.StdErr,"
                             " Object.getPrototypeOf(stream), VBArray.prototype,"
                             " Enumerator.prototype].map("
                             "Object.getOwnPropertyNames).join()"),
            0)
      << PopText();
  // Not tested: texts, what ends the process, and what is not the host's own.
  std::string untested;
  std::string names = std::string(duk_get_string(Api(), -1)) + ",";
  for (size_t end = 0; (end = names.find(',')) != std::string::npos; names.erase(0, end + 1)) {
    const std::string name = names.substr(0, end);
    bool found = name == "ScriptName" || name == "ScriptFullName" || name == "Name" ||
                 name == "Version" || name == "BuildVersion" || name == "constructor" ||
                 name == "Quit" || name == "IsTerminal" || name == "prototype" || name == "name" ||
                 name == "toString";
    for (const NativeRow& row : kRows) {
      found = found || std::string(row.script).find(name) != std::string::npos;
    }
    if (!found) untested += name + " ";
  }
  for (const HostClass* host_class :
       {&TextStream::kClass, &FileSystemObject::kClass, &FileObject::kClass, &FolderObject::kClass,
        &FilesObject::kClass, &FoldersObject::kClass, &DriveObject::kClass,
        &DrivesObject::kClass}) {
    for (const HostMember& member : host_class->members) {
      // Enumerator asks for it.
      bool found = member.id == DISPID_NEWENUM;
      for (const NativeRow& row : kRows) {
        found = found || std::string(row.script).find(member.name) != std::string::npos;
      }
      if (!found) untested += std::string(host_class->name) + "." + member.name + " ";
    }
  }
  EXPECT_EQ(untested, "");
}

std::string HeapName(const testing::TestParamInfo<Heap>& heap) {
  if (heap.param == Heap::kEngine) return "Engine";
  return heap.param == Heap::kRuntime ? "Runtime" : "OperatorNew";
}

INSTANTIATE_TEST_SUITE_P(Heaps, HostMemory,
                         testing::Values(Heap::kOperatorNew, Heap::kRuntime, Heap::kEngine),
                         HeapName);

}  // namespace
}  // namespace mirolta::host
