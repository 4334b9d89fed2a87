// Scripts without loops, made of the input, on the script host: statements that create objects,
// read and set their members and call them with each other's results and odd values. The program
// is the module, and the only one that is registered.
#include <string>

#include "duktape.h"
#include "fuzz_input.h"
#include "mirolta.h"
#include "portable/registry_mode.h"
#include "script_engine.h"

MIROLTA_ENTRY HRESULT STDAPICALLTYPE DllRegisterServer();

using namespace mirolta;
using namespace mirolta::fuzz;

namespace {

bool PrepareModule() {
  setenv("MIROLTA_REGISTRY", "/nonexistent/registry", 1);
  FUZZ_CHECK(MiroltaRegistryInMemory(TRUE) == ERROR_SUCCESS);
  FUZZ_CHECK(DllRegisterServer() == S_OK);
  FUZZ_CHECK(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED) == S_OK);
  return true;
}

constexpr const char* kClasses[] = {"HashObject",       "Symmetric",       "Number", "RSA",
                                    "ToviStreamDigest", "ToviStreamCrypt", "none"};
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
                                   "a.Key"};
constexpr const char* kNames[] = {
    "Value",        "Hex",       "Binary",   "Text",          "Key",
    "Init",         "InitHash",  "HashData", "HashUpdate",    "HashFinalize",
    "BinaryValue",  "Encrypt",   "Decrypt",  "Add",           "Sub",
    "Mul",          "Div",       "Mod",      "GCD",           "Cmp",
    "NewNumber",    "Inc",       "Dec",      "codePage",      "PadType",
    "Reset",        "ResetKey",  "Stream",   "ReadAlgorithm", "WriteKey",
    "ReadFinalize", "BlockSize", "nothing",  "toString",      "length",
    "constructor",  "P",         "Modulus",  "ModInv"};

template <size_t kCount>
const char* Pick(FuzzInput& in, const char* const (&choices)[kCount]) {
  return choices[in.Byte() % kCount];
}

std::string Script(FuzzInput& in) {
  std::string script = "var a, b, c;\n";
  for (int lines = 0; lines < 25 && !in.IsEmpty(); ++lines) {
    const std::string name(1, static_cast<char>('a' + in.Byte() % 3));
    std::string line;
    switch (in.Byte() % 7) {
      case 0:
      case 1:
        line = name + " = new ActiveXObject('Vardeko.crypt." + Pick(in, kClasses) + "')";
        break;
      case 2:
        line = name + " = " + Pick(in, kValues);
        break;
      case 3:
        line = name + "." + Pick(in, kNames) + " = " + Pick(in, kValues);
        break;
      case 4:
        line = name + " = b." + Pick(in, kNames);
        break;
      default: {
        line = name + " = a." + Pick(in, kNames) + "(";
        const uint8_t count = in.Byte() % 4;
        for (int i = 0; i < count; ++i) line += std::string(i > 0 ? ", " : "") + Pick(in, kValues);
        line += ")";
        break;
      }
    }
    script += "try { " + line + " } catch (e) { e.number + e.message + e.description }\n";
  }
  return script;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  [[maybe_unused]] static const bool prepared = PrepareModule();
  FuzzInput in(data, size);
  // Or any text at all, compiled only: it may hold loops.
  const bool compiles_only = in.Byte() % 8 == 0;
  const Bytes rest = compiles_only ? in.Rest() : Bytes();
  const std::string script = compiles_only ? std::string(rest.begin(), rest.end()) : Script(in);
  ScriptEngine engine;
  std::string problem;
  FUZZ_CHECK(engine.Start(&problem));
  if (compiles_only) {
    duk_pcompile_lstring(engine.api(), 0, script.data(), script.size());
  } else {
    const bool went_well = duk_peval_lstring(engine.api(), script.data(), script.size()) == 0;
    if (!went_well) std::fprintf(stderr, "%s\n", script.c_str());
    FUZZ_CHECK(went_well);
  }
  return 0;
}
