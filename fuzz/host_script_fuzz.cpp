// Scripts without endless loops, made from the input, on two script hosts, which must log the same.
// The program is the module, and the only one that is registered. The first byte of the input
// selects what the script is made of:
// - automation objects: statements that create them, get and set their properties, call them and
//   assign to calls, with each other's results, heirs and odd values as arguments; one host runs
//   what RewriteCallAssignments makes of the script, the other what the generator expects;
// - classes of the host: the same, with collections, streams of bytes and dates; nothing of them
//   reaches a file;
// - streams: a model says what the script must log and what its files must hold;
// - the grammar of the language: the rewritten script is known, and compiles;
// - any text: if it compiles, it compiles after rewriting too.
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <span>
#include <string>

#include "engine/script_engine.h"
#include "files/output_file.h"
#include "fuzz_input.h"
#include "generated_script.h"
#include "mirolta.h"
#include "portable/registry_mode.h"
#include "source/call_assignment.h"
#include "stream_script.h"

using namespace mirolta::host;
using namespace mirolta::fuzz;

namespace {

// Without this check no class might be found, and every script would only see errors.
bool CreatesObjects() {
  ScriptEngine engine;
  std::string problem;
  return engine.Start(&problem) &&
         duk_peval_string(engine.Api(), "new ActiveXObject('Vardeko.crypt.Number')") == 0 &&
         duk_peval_string(engine.Api(), "new ActiveXObject('Scripting.Dictionary').Items()") == 0;
}

bool PrepareModule() {
  setenv("MIROLTA_REGISTRY", "/nonexistent/registry", 1);
  FUZZ_CHECK(MiroltaRegistryInMemory(TRUE) == ERROR_SUCCESS);
  FUZZ_CHECK(DllRegisterServer() == S_OK);
  FUZZ_CHECK(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED) == S_OK);
  FUZZ_CHECK(CreatesObjects());
  return true;
}

constexpr const char* kObjects[] = {"new ActiveXObject('Vardeko.crypt.HashObject')",
                                    "new ActiveXObject('Vardeko.crypt.Symmetric')",
                                    "new ActiveXObject('Vardeko.crypt.Number')",
                                    "new ActiveXObject('Vardeko.crypt.RSA')",
                                    "new ActiveXObject('Vardeko.crypt.ToviStreamDigest')",
                                    "new ActiveXObject('Vardeko.crypt.ToviStreamCrypt')",
                                    "new ActiveXObject('Vardeko.crypt.none')"};
constexpr const char* kValues[] = {"null",
                                   "undefined",
                                   "true",
                                   "0",
                                   "1",
                                   "-1",
                                   "7",
                                   "33",
                                   "1.5",
                                   "1e300",
                                   "NaN",
                                   "''",
                                   "'abc'",
                                   "'MD5'",
                                   "'SHA1'",
                                   "'AES'",
                                   "'DES'",
                                   "'0123456789abcdef'",
                                   "'\\u0000x'",
                                   "'\\ud800'",
                                   "[]",
                                   "[1,2,3]",
                                   "{}",
                                   "new Date(0)",
                                   "function(){return 1}",
                                   "a",
                                   "b",
                                   "c",
                                   "a.Value",
                                   "b.Binary",
                                   "new VBArray(b.Binary)",
                                   "new VBArray(c)",
                                   "this",
                                   "WScript",
                                   "a.Key",
                                   "Object.create(a)",
                                   "Object.create(c)",
                                   "(F.prototype = b, new F)",
                                   "Object.setPrototypeOf({}, a)",
                                   "WScript.MemoryStream(new Uint8Array(5))",
                                   "Object.create(WScript.MemoryStream())",
                                   "WScript.StreamOf(a)",
                                   "Object.create(new VBArray(b.Binary))"};
constexpr const char* kNames[] = {
    "Value",        "Hex",       "Binary",   "Text",          "Key",
    "Init",         "InitHash",  "HashData", "HashUpdate",    "HashFinalize",
    "BinaryValue",  "Encrypt",   "Decrypt",  "Add",           "Sub",
    "Mul",          "Div",       "Mod",      "GCD",           "Cmp",
    "NewNumber",    "Inc",       "Dec",      "codePage",      "PadType",
    "Reset",        "ResetKey",  "Stream",   "ReadAlgorithm", "WriteKey",
    "ReadFinalize", "BlockSize", "nothing",  "toString",      "length",
    "constructor",  "P",         "Modulus",  "ModInv"};

// Of these members none reaches a file, and none depends on the time or the environment.
constexpr const char* kHostObjects[] = {"WScript.Arguments",
                                        "WScript.Arguments.Named",
                                        "WScript.Arguments.Unnamed",
                                        "new ActiveXObject('Scripting.Dictionary')",
                                        "WScript.CreateObject('Scripting.Dictionary')",
                                        "GetObject('', 'ADODB.Stream')",
                                        "new ActiveXObject('ADODB.Stream')",
                                        "new ActiveXObject('Scripting.FileSystemObject')",
                                        "new Enumerator(a)",
                                        "new Enumerator(b)",
                                        "new Enumerator(c)",
                                        "new Enumerator",
                                        "new VBArray(a)",
                                        "new VBArray(b)",
                                        "new Date(b)",
                                        "new Date('1/2/2003 4:05 PM')",
                                        "new Error(a, b)",
                                        "new TypeError(c)"};
constexpr const char* kHostValues[] = {"null",
                                       "undefined",
                                       "true",
                                       "0",
                                       "1",
                                       "2",
                                       "-1",
                                       "1.5",
                                       "1e300",
                                       "NaN",
                                       "''",
                                       "'abc'",
                                       "'name'",
                                       "'ON'",
                                       "'utf-8'",
                                       "'unicode'",
                                       "'iso-8859-1'",
                                       "'\\u0000x'",
                                       "'\\ud800'",
                                       "'2 Jan 2003'",
                                       "[]",
                                       "[1,2,3]",
                                       "{}",
                                       "new Date(0)",
                                       "new Date(0).getVarDate()",
                                       "new Uint8Array([0xEF, 0xBB, 0xBF, 0x61, 0xC3])",
                                       "function(){return 1}",
                                       "{toString: function(){return a.Count}}",
                                       "{valueOf: function(){throw new Error(5, 'x')}}",
                                       "a",
                                       "b",
                                       "c",
                                       "a.Items",
                                       "a.Keys",
                                       "a.Count",
                                       "new VBArray(b.Items())",
                                       "WScript",
                                       "WScript.Arguments",
                                       "Object.create(a)",
                                       "(F.prototype = b, new F)"};
constexpr const char* kHostNames[] = {"Item",
                                      "Items",
                                      "Keys",
                                      "Key",
                                      "Add",
                                      "Exists",
                                      "Remove",
                                      "RemoveAll",
                                      "Count",
                                      "length",
                                      "CompareMode",
                                      "_NewEnum",
                                      "Named",
                                      "Unnamed",
                                      "Open",
                                      "Close",
                                      "Type",
                                      "Charset",
                                      "Position",
                                      "Size",
                                      "EOS",
                                      "Read",
                                      "Write",
                                      "ReadText",
                                      "WriteText",
                                      "SkipLine",
                                      "SetEOS",
                                      "CopyTo",
                                      "State",
                                      "Mode",
                                      "Flush",
                                      "LineSeparator",
                                      "BuildPath",
                                      "GetBaseName",
                                      "GetFileName",
                                      "GetExtensionName",
                                      "GetParentFolderName",
                                      "atEnd",
                                      "item",
                                      "moveFirst",
                                      "moveNext",
                                      "getItem",
                                      "lbound",
                                      "ubound",
                                      "toArray",
                                      "dimensions",
                                      "number",
                                      "description",
                                      "message",
                                      "getVarDate",
                                      "getTime",
                                      "nothing"};

using Words = std::span<const char* const>;

const char* Pick(FuzzInput& in, Words words) {
  return words[in.Byte() % words.size()];
}

// What scripts are made of.
struct Vocabulary {
  Words objects;
  Words values;
  Words names;
};
constexpr Vocabulary kModule = {kObjects, kValues, kNames};
constexpr Vocabulary kHost = {kHostObjects, kHostValues, kHostNames};

struct ObjectScript {
  std::string script;
  std::string rewritten;
};

// An assignment to a call, as written and as rewritten.
ObjectScript CallAssignment(FuzzInput& in, const Vocabulary& words, const std::string& object) {
  const std::string name = Pick(in, words.names), argument = Pick(in, words.values),
                    value = Pick(in, words.values);
  const std::string tail = "(" + argument + ")";
  return {object + "." + name + tail + " = " + value,
          object + "[\"" + name + "()=\"]" + tail + ".value = " + value};
}

ObjectScript Script(FuzzInput& in, const Vocabulary& words) {
  ObjectScript script;
  script.script = script.rewritten = "var a, b, c, log = ''; function F() {}\n";
  for (int lines = 0; lines < 25 && !in.IsEmpty(); ++lines) {
    const std::string name(1, static_cast<char>('a' + in.Byte() % 3));
    ObjectScript line;
    switch (in.Byte() % 9) {
      case 0:
      case 1:
        line.script = name + " = " + Pick(in, words.objects);
        break;
      case 2:
        line.script = name + " = " + Pick(in, words.values);
        break;
      case 3:
        line.script = name + "." + Pick(in, words.names) + " = " + Pick(in, words.values);
        break;
      case 4:
        line.script = name + " = b." + Pick(in, words.names);
        break;
      case 5:
        line = CallAssignment(in, words, name);
        break;
      case 6:
        line.script = "if (true) (" + name + ") = " + Pick(in, words.values);
        break;
      default: {
        line.script = name + " = a." + Pick(in, words.names) + "(";
        const uint8_t count = in.Byte() % 4;
        for (int i = 0; i < count; ++i) {
          line.script += std::string(i > 0 ? ", " : "") + Pick(in, words.values);
        }
        line.script += ")";
        break;
      }
    }
    if (line.rewritten.empty()) line.rewritten = line.script;
    const std::string end = "; log += typeof " + name +
                            " } catch (e) { log += e.number + e.message + e.description }\n";
    script.script += "try { " + line.script + end;
    script.rewritten += "try { " + line.rewritten + end;
  }
  return script;
}

bool Compiles(duk_context* api, const std::string& text) {
  const bool compiles = duk_pcompile_lstring(api, 0, text.data(), text.size()) == 0;
  duk_pop(api);
  return compiles;
}

// Runs the script in a new engine and returns the global `log`.
std::string LogOf(const std::string& script, const std::string& folder = "") {
  ScriptEngine engine;
  engine.Context().arguments = {"one", "/name:value", "/on+", "two \xFF"};
  std::string problem;
  FUZZ_CHECK(engine.Start(&problem));
  duk_push_lstring(engine.Api(), folder.data(), folder.size());
  duk_put_global_string(engine.Api(), "folder");
  const bool went_well = duk_peval_lstring(engine.Api(), script.data(), script.size()) == 0;
  if (!went_well) {
    std::fprintf(stderr, "%s\n%s\n", script.c_str(), duk_safe_to_string(engine.Api(), -1));
  }
  FUZZ_CHECK(went_well);
  duk_get_global_string(engine.Api(), "log");
  duk_size_t size = 0;
  const char* log = duk_get_lstring(engine.Api(), -1, &size);
  FUZZ_CHECK(log != nullptr);
  return {log, size};
}

void RunObjects(FuzzInput& in, const Vocabulary& words) {
  const ObjectScript made = Script(in, words);
  const std::string rewritten = RewriteCallAssignments(made.script);
  if (rewritten != made.rewritten) std::fprintf(stderr, "%s", made.script.c_str());
  FUZZ_CHECK(rewritten == made.rewritten);
  const std::string first = LogOf(rewritten), second = LogOf(made.rewritten);
  if (first != second) {
    std::fprintf(stderr, "%s\n%s\n%s\n", made.script.c_str(), first.c_str(), second.c_str());
  }
  FUZZ_CHECK(first == second);
}

// A folder of this process.
const std::string& Folder() {
  static const std::string folder = [] {
    char name[] = "/tmp/mirolta-fuzz-XXXXXX";
    FUZZ_CHECK(mkdtemp(name) != nullptr);
    return std::string(name);
  }();
  return folder;
}
struct FolderEnd {
  // The name is constructed before this object and so outlives it.
  FolderEnd() { (void)Folder(); }
  FolderEnd(const FolderEnd&) = delete;
  FolderEnd& operator=(const FolderEnd&) = delete;
  ~FolderEnd() {
    for (const auto& [name, text] : FilesBefore()) unlink((Folder() + "/" + name).c_str());
    rmdir(Folder().c_str());
  }
};

void RunStreams(FuzzInput& in) {
  static const FolderEnd end;
  const StreamScript made = MakeStreamScript(in);
  FUZZ_CHECK(RewriteCallAssignments(made.script) == made.script);
  for (int host = 0; host < 2; ++host) {
    for (const auto& [name, text] : FilesBefore()) {
      std::ofstream(Folder() + "/" + name, std::ios::binary | std::ios::trunc) << text;
    }
    const std::string log = LogOf(made.script, Folder());
    DiscardOutputs();
    if (log != made.log) {
      std::fprintf(stderr, "%s\n%s\n%s\n", made.script.c_str(), log.c_str(), made.log.c_str());
    }
    FUZZ_CHECK(log == made.log);
    for (const auto& [name, text] : made.files) {
      std::ifstream file(Folder() + "/" + name, std::ios::binary);
      const std::string got((std::istreambuf_iterator<char>(file)),
                            std::istreambuf_iterator<char>());
      if (got != text) std::fprintf(stderr, "%s%s\n", made.script.c_str(), name.c_str());
      FUZZ_CHECK(got == text);
    }
  }
}

ScriptEngine& Compiler() {
  static ScriptEngine engine;
  std::string problem;
  if (engine.Api() == nullptr) FUZZ_CHECK(engine.Start(&problem));
  return engine;
}

void RunGrammar(FuzzInput& in) {
  const std::function<uint32_t(uint32_t)> choose = [&](uint32_t count) {
    return in.Byte() % count;
  };
  const mirolta::test::GeneratedScript made = mirolta::test::MakeScript(choose);
  const bool as_meant = RewriteCallAssignments(made.script) == made.rewritten;
  const bool compiles = Compiles(Compiler().Api(), made.rewritten);
  if (!as_meant || !compiles) std::fprintf(stderr, "%s\n", made.script.c_str());
  FUZZ_CHECK(as_meant);
  FUZZ_CHECK(compiles);
}

void RunText(FuzzInput& in) {
  const Bytes rest = in.Rest();
  const std::string text(rest.begin(), rest.end());
  const std::string rewritten = RewriteCallAssignments(text);
  const bool compiled = Compiles(Compiler().Api(), text);
  const bool compiles = Compiles(Compiler().Api(), rewritten);
  if (compiled && !compiles) std::fprintf(stderr, "%s\n", rewritten.c_str());
  FUZZ_CHECK(compiles || !compiled);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  [[maybe_unused]] static const bool prepared = PrepareModule();
  FuzzInput in(data, size);
  switch (in.Byte() % 8) {
    case 0:
      RunText(in);
      break;
    case 1:
      RunGrammar(in);
      break;
    case 2:
    case 3:
    case 4:
      RunStreams(in);
      break;
    case 5:
      RunObjects(in, kHost);
      break;
    default:
      RunObjects(in, kModule);
      break;
  }
  return 0;
}
