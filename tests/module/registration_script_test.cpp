// The language of registry scripts: what it means in either direction, and what is refused.
#include <vector>

#include "registrar.h"
#include "registration_fixture.h"
#include "registry_script.h"

namespace mirolta::test {
namespace {

constexpr const OLECHAR* kFile = OLESTR("/folder with blanks/it's 100%/module.so");

HRESULT Register(const std::string& script) {
  return RegisterScript(reinterpret_cast<const BYTE*>(script.data()),
                        static_cast<DWORD>(script.size()), kFile);
}
HRESULT Unregister(const std::string& script) {
  return UnregisterScript(reinterpret_cast<const BYTE*>(script.data()),
                          static_cast<DWORD>(script.size()), kFile);
}

class RegistrationScriptTest : public RegistrationTest {};

TEST_F(RegistrationScriptTest, KeysAndValuesAreWritten) {
  ASSERT_EQ(Register("HKCR { One = s 'first' { val Name = s 'text' Two Three = s '' } 'val' }"),
            S_OK);
  EXPECT_EQ(AllRows(), (Rows{{"One", ""},
                             {"One|@", "first"},
                             {"One|Name", "text"},
                             {"One\\Two", ""},
                             {"One\\Three", ""},
                             {"One\\Three|@", ""},
                             {"val", ""}}));
}

TEST_F(RegistrationScriptTest, QuotesHoldBlanksBracesAndWordsOfTheLanguage) {
  ASSERT_EQ(Register("HKCR\r\n{\t'NoRemove' = s '{ s = }' ForceRemove 'ForceRemove' "
                     "NoRemove 'two words' {braced} }"),
            S_OK);
  EXPECT_EQ(AllRows(), (Rows{{"NoRemove", ""},
                             {"NoRemove|@", "{ s = }"},
                             {"ForceRemove", ""},
                             {"two words", ""},
                             {"{braced}", ""}}));
}

TEST_F(RegistrationScriptTest, TextIsAsciiWithoutNul) {
  ASSERT_EQ(Register("HKCR { \x7F = s '\x01~\x7F' }"), S_OK);
  EXPECT_EQ(AllRows(), (Rows{{"\x7F", ""}, {"\x7F|@", "\x01~\x7F"}}));
}

TEST_F(RegistrationScriptTest, TheFileNameIsPutInAsItIs) {
  ASSERT_EQ(Register("HKCR { A = s '<%MODULE%|%MODULE%>' }"), S_OK);
  const std::string file = Narrow(kFile);
  EXPECT_EQ(AllRows()["A|@"], "<" + file + "|" + file + ">");
}

TEST_F(RegistrationScriptTest, AScriptMayHaveSeveralBlocksOrNone) {
  EXPECT_EQ(Register(""), S_OK);
  EXPECT_EQ(Register(" \r\n\t "), S_OK);
  EXPECT_EQ(Register("HKCR { }"), S_OK);
  EXPECT_EQ(AllRows(), Rows());
  EXPECT_EQ(Register("HKCR { A } HKCR { B }"), S_OK);
  EXPECT_EQ(AllRows(), (Rows{{"A", ""}, {"B", ""}}));
}

TEST_F(RegistrationScriptTest, ForceRemoveDropsWhatWasThere) {
  WriteKey("A\\deep\\er", OLESTR("old"));
  WriteKey("A", OLESTR("old"));
  WriteKey("B\\deep", OLESTR("old"));
  ASSERT_EQ(Register("HKCR { ForceRemove A { New } B }"), S_OK);
  EXPECT_EQ(AllRows(),
            (Rows{{"A", ""}, {"A\\New", ""}, {"B", ""}, {"B\\deep", ""}, {"B\\deep|@", "old"}}));
  ASSERT_EQ(Unregister("HKCR { ForceRemove A }"), S_OK);
  EXPECT_EQ(RowsBelow(AllRows(), "A"), Rows());
}

TEST_F(RegistrationScriptTest, NoRemoveStaysAndWhatIsListedInItGoes) {
  const std::string script = "HKCR { NoRemove A { B = s 'b' { val V = s 'v' } } }";
  ASSERT_EQ(Register(script), S_OK);
  WriteKey("A\\Other", nullptr);
  ASSERT_EQ(Unregister(script), S_OK);
  EXPECT_EQ(AllRows(), (Rows{{"A", ""}, {"A\\Other", ""}}));
}

TEST_F(RegistrationScriptTest, SubkeysOfOthersKeepAPlainKey) {
  const std::string script = "HKCR { A = s 'a' { B } }";
  ASSERT_EQ(Register(script), S_OK);
  WriteKey("A\\B\\Other", OLESTR("kept"));
  WriteKey("A\\Third", nullptr);
  ASSERT_EQ(Unregister(script), S_OK);
  EXPECT_EQ(AllRows(), (Rows{{"A", ""},
                             {"A\\B", ""},
                             {"A\\B\\Other", ""},
                             {"A\\B\\Other|@", "kept"},
                             {"A\\Third", ""}}));
}

// A key that stays loses the default value that the script gave it, and keeps another one.
TEST_F(RegistrationScriptTest, DefaultValuesOfOthersStay) {
  const std::string script = "HKCR { A = s 'a' B = s 'b' C = s 'c' NoRemove D = s 'd' E }";
  const std::string longer(600, 'x');
  ASSERT_EQ(Register(script), S_OK);
  for (const char* key : {"A", "B", "C", "D", "E"}) WriteKey(key + std::string("\\Other"), nullptr);
  WriteKey("B", OLESTR("bb"));
  WriteKey("C", Wide(longer).c_str());
  WriteKey("E", OLESTR("e"));
  ASSERT_EQ(Unregister(script), S_OK);
  Rows left = AllRows();
  for (const char* key : {"A", "B", "C", "D", "E"}) {
    EXPECT_EQ(left.erase(key), 1u);
    EXPECT_EQ(left.erase(key + std::string("\\Other")), 1u);
  }
  EXPECT_EQ(left, (Rows{{"B|@", "bb"}, {"C|@", longer}, {"D|@", "d"}, {"E|@", "e"}}));
}

// One that only begins like ours is another program's.
TEST_F(RegistrationScriptTest, DefaultValuesAreComparedByTypeAndWhole) {
  struct Row {
    const char* name;
    DWORD type;
    const OLECHAR* data;
    size_t units;
    bool is_own;
  };
  constexpr Row kRows[] = {
      {"Ended", REG_SZ, OLESTR("text"), 5, true},
      {"Bare", REG_SZ, OLESTR("text"), 4, true},
      {"Shorter", REG_SZ, OLESTR("tex"), 4, false},
      {"ShorterBare", REG_SZ, OLESTR("tex"), 3, false},
      {"Longer", REG_SZ, OLESTR("texts"), 6, false},
      {"LongerBare", REG_SZ, OLESTR("texts"), 5, false},
      {"Empty", REG_SZ, OLESTR(""), 0, false},
      {"OtherType", REG_BINARY, OLESTR("text"), 5, false},
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.name);
    const std::string script = std::string("HKCR { ") + row.name + " = s 'text' }";
    WriteKey(row.name + std::string("\\Other"), nullptr);
    WriteKey(row.name, row.type, row.data, row.units);
    ASSERT_EQ(Unregister(script), S_OK);
    HKEY key = nullptr;
    ASSERT_EQ(RegOpenKeyExW(HKEY_CLASSES_ROOT, Wide(row.name).c_str(), 0, KEY_READ, &key),
              ERROR_SUCCESS);
    EXPECT_EQ(RegQueryValueExW(key, nullptr, nullptr, nullptr, nullptr, nullptr),
              row.is_own ? ERROR_FILE_NOT_FOUND : ERROR_SUCCESS);
    RegCloseKey(key);
  }
}

TEST_F(RegistrationScriptTest, RemovingWhatIsNotThereIsNoFailure) {
  const std::string script =
      "HKCR { A = s 'a' { B { val V = s 'v' } } NoRemove C { ForceRemove D } ForceRemove E }";
  EXPECT_EQ(Unregister(script), S_OK);
  EXPECT_EQ(AllRows(), Rows());
  WriteKey("C", nullptr);
  WriteKey("A\\B", nullptr);  // without its value
  EXPECT_EQ(Unregister(script), S_OK);
  EXPECT_EQ(AllRows(), (Rows{{"C", ""}}));
}

// Nested keys; `inside` is in the last one.
std::string Nested(int levels, const std::string& inside = "") {
  std::string script = "HKCR {";
  for (int i = 0; i < levels; ++i) script += " K {";
  script += inside;
  for (int i = 0; i < levels; ++i) script += " }";
  return script + " }";
}

TEST_F(RegistrationScriptTest, WhatCannotBeReadHasTheRegistrysStatus) {
  EXPECT_EQ(Register("HKCR {"), static_cast<HRESULT>(0x80040153u));
}

TEST_F(RegistrationScriptTest, KeysNestEightLevelsAndNoMore) {
  EXPECT_EQ(Register(Nested(8)), S_OK);
  EXPECT_EQ(AllRows().size(), 8u);
  EXPECT_EQ(Unregister(Nested(8)), S_OK);
  EXPECT_EQ(Register(Nested(9)), kBadRegistryScript);
  // Nor one without a block of its own; values are allowed there.
  EXPECT_EQ(Register(Nested(8, " K")), kBadRegistryScript);
  EXPECT_EQ(Register(Nested(8, " K = s 'text'")), kBadRegistryScript);
  EXPECT_EQ(Register(Nested(8, " val V = s 'text'")), S_OK);
  EXPECT_EQ(Unregister(Nested(8, " val V = s 'text'")), S_OK);
  EXPECT_EQ(AllRows(), Rows());
}

TEST_F(RegistrationScriptTest, NamesHaveUpTo259Characters) {
  const std::string longest(MAX_PATH - 1, 'k');
  const std::string too_long(MAX_PATH, 'k');
  // The registry itself takes names of 255 characters at most; the language goes further.
  const std::string usable(255, 'k');
  EXPECT_EQ(Register("HKCR { " + usable + " }"), S_OK);
  EXPECT_EQ(AllRows().size(), 1u);
  EXPECT_EQ(Unregister("HKCR { " + longest + " }"), S_OK);
  EXPECT_EQ(Register("HKCR { " + too_long + " }"), kBadRegistryScript);
  EXPECT_EQ(Register("HKCR { '" + too_long + "' }"), kBadRegistryScript);
  EXPECT_EQ(Register("HKCR { A { val " + too_long + " = s '' } }"), kBadRegistryScript);
  EXPECT_EQ(Register("HKCR { A = s '" + std::string(5000, 'k') + "' }"), kBadRegistryScript);
  EXPECT_EQ(AllRows().size(), 1u);
}

TEST_F(RegistrationScriptTest, WhatIsNotInTheLanguageIsRefusedBeforeAnythingChanges) {
  const char* const bad[] = {
      "HKLM { A }",                         // another root
      "hkcr { A }",                         // words are case-sensitive
      "'HKCR' { A }",                       // a quoted word is a name
      "HKCR",                               // no block
      "HKCR A",                             //
      "HKCR { A",                           // a block without end
      "HKCR { A } }",                       // an end without block
      "HKCR { { } }",                       // a block without key
      "HKCR { A { } { } }",                 // two blocks of one key
      "HKCR { = s 'x' }",                   // no name
      "HKCR { A = }",                       // no type
      "HKCR { A = 'x' }",                   //
      "HKCR { A = d '1' }",                 // an unknown type
      "HKCR { A = s x }",                   // no quotes
      "HKCR { A = 's' 'x' }",               // a quoted type
      "HKCR { A = s }",                     // no text
      "HKCR { A = s 'x }",                  // quotes without end
      "HKCR { A = s 'x'y }",                // text after quotes
      "HKCR { A = s 'it''s' }",             // no escapes
      "HKCR { '' }",                        // an empty name
      "HKCR { NoRemove }",                  // a rule without name
      "HKCR { NoRemove ForceRemove A = }",  //
      "HKCR { val A }",                     // a value without text
      "HKCR { val A = s 'x' { B } }",       // a value with a block
      "HKCR { val = s 'x' }",               // a value without name
      "HKCR { A = s '%OTHER%' }",           // an unknown replacement
      "HKCR { A = s '%module%' }",          //
      "HKCR { A = s '%MODULE' }",           //
      "HKCR { A = s '100%' }",              //
      "HKCR { A = s '%%' }",                //
      "HKCR { A{ } }",                      // a brace that is not a word of its own opens no block
      "HKCR { \xC3\xA9 }",                  // not plain ASCII
      "HKCR { 'a\xFF' }",                   //
  };
  for (const char* script : bad) {
    // The good block before it must not be carried out either.
    EXPECT_EQ(Register(std::string("HKCR { First = s 'x' } ") + script), kBadRegistryScript)
        << script;
    EXPECT_EQ(AllRows(), Rows()) << script;
    WriteKey("First", nullptr);
    EXPECT_EQ(Unregister(std::string("HKCR { First = s 'x' } ") + script), kBadRegistryScript)
        << script;
    EXPECT_EQ(AllRows(), (Rows{{"First", ""}})) << script;
    ASSERT_EQ(Unregister("HKCR { First }"), S_OK);
  }
  EXPECT_EQ(Register(std::string("HKCR { A\0B }", 13)), kBadRegistryScript);
  EXPECT_EQ(AllRows(), Rows());
}

TEST_F(RegistrationScriptTest, ATruncatedScriptIsRefused) {
  const std::string script =
      "HKCR { A = s 'a' { CLSID = s '{1}' } NoRemove C { ForceRemove {1} = s 'a' { "
      "InprocServer32 = s '%MODULE%' { val Model = s 'Both' } 'Last' = s 'x' } } }";
  ASSERT_EQ(Register(script), S_OK);
  ASSERT_EQ(Unregister(script), S_OK);
  const Rows before = AllRows();
  for (size_t length = 1; length < script.size(); ++length) {
    EXPECT_EQ(Register(script.substr(0, length)), kBadRegistryScript) << length;
    EXPECT_EQ(AllRows(), before) << length;
  }
}

// An action that fails ends the run; keys that were entered are left.
class Recorder final : public RegistryAction {
 public:
  explicit Recorder(int fails_at) : fails_at_(fails_at) {}
  HRESULT EnterKey(HKEY, const OLECHAR* name, KeyRule, const OLECHAR*, HKEY*) override {
    return Record("+" + Narrow(name));
  }
  HRESULT LeaveKey(HKEY, const OLECHAR* name, KeyRule, HKEY) override {
    return Record("-" + Narrow(name));
  }
  HRESULT Value(HKEY, const OLECHAR* name, const OLECHAR* text) override {
    return Record(Narrow(name) + "=" + Narrow(text));
  }
  std::string steps;

 private:
  HRESULT Record(const std::string& step) {
    steps += step + " ";
    return --fails_at_ == 0 ? E_OUTOFMEMORY : S_OK;
  }
  int fails_at_;
};

TEST_F(RegistrationScriptTest, AFailureEndsTheRun) {
  const std::string script = "HKCR { A { B { val V = s 'v' } C } }";
  const char* const steps[] = {
      "+A +B V=v -B +C -C -A ",  // none fails
      "+A ",
      "+A +B -A ",
      "+A +B V=v -B -A ",
      "+A +B V=v -B -A ",
      "+A +B V=v -B +C -A ",
      "+A +B V=v -B +C -C -A ",
      "+A +B V=v -B +C -C -A ",
  };
  for (int fails_at = 0; fails_at < 8; ++fails_at) {
    Recorder recorder(fails_at);
    EXPECT_EQ(RunRegistryScript(reinterpret_cast<const BYTE*>(script.data()),
                                static_cast<DWORD>(script.size()), kFile, recorder),
              fails_at == 0 ? S_OK : E_OUTOFMEMORY);
    EXPECT_EQ(recorder.steps, steps[fails_at]) << fails_at;
  }
}

}  // namespace
}  // namespace mirolta::test
