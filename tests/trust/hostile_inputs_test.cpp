// Every argument of every member with every kind of value, and what the call says: the statuses
// are those of hostile_inputs.txt. MIROLTA_RECORD_HOSTILE_INPUTS=1 writes the file anew; whoever
// does so reads what has changed.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <map>
#include <utility>
#include <vector>

#include "hostile_values.h"
#include "member_calls.h"
#include "module_state.h"
#include "portable/registry_mode.h"

namespace mirolta::test {
namespace {

constexpr char kFile[] = MIROLTA_TRUST_FILES "/hostile_inputs.txt";

// Heading (member, argument, state, way of the call) -> value -> status, values in order.
using Row = std::vector<std::pair<std::string, std::string>>;
using Table = std::map<std::string, Row>;

// Sanitizers make the calls slow: they look at every fourth value of each row, another four in the
// next row.
#ifdef MIROLTA_SLOW_BUILD
constexpr size_t kStride = 4;
#else
constexpr size_t kStride = 1;
#endif

Table ReadTable() {
  Table table;
  std::ifstream in(kFile);
  std::string heading;
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line[0] == '#') continue;
    if (line[0] != ' ') {
      heading = line;
      continue;
    }
    const size_t colon = line.find(':');
    const std::string status = line.substr(2, colon - 2);
    for (size_t at = colon + 2; at < line.size();) {
      const size_t end = std::min(line.find(", ", at), line.size());
      table[heading].emplace_back(line.substr(at, end - at), status);
      at = end + 2;
    }
  }
  return table;
}

void WriteTable(const Table& table) {
  std::ofstream out(kFile);
  out << "# What each member says to each value of each argument, the others ordinary. Early: the\n"
         "# method called as such; late: through Invoke. Fresh: as created; ready: with whatever\n"
         "# the class needs. Values: tests/trust/hostile_values.cpp; & by reference. Invoke knows\n"
         "# one success only, and looks behind a reference to a value by itself.\n";
  for (const auto& [heading, row] : table) {
    std::map<std::string, std::string> lines;
    for (const auto& [value, status] : row) {
      lines[status] += (lines[status].empty() ? "" : ", ") + value;
    }
    out << "\n" << heading << "\n";
    for (const auto& [status, values] : lines) out << "  " << status << ": " << values << "\n";
  }
}

// Calls that the table leaves out, each for its time; nothing in the module limits them.
bool TakesTooLong(const Member& member, VARTYPE parameter, const HostileValue& value) {
  if (!value.is_long) return false;
  const std::string name = member.Name();
  if (parameter == VT_I4) {
    // Only numbers are read as sizes. A prime of 600 bytes takes seconds, one of 30,000 days;
    // drawing two gigabytes takes a minute and as much memory.
    if (V_VT(&value.value) != VT_I4) return false;
    return name == "RSACrypt.CreateRandKeys" ||
           (name == "PexBigNumber.Random" && value.value.lVal == 0x7FFFFFFF);
  }
  const bool is_text = V_VT(&value.value) == VT_BSTR;
  // The next prime from 40,000 bits on takes an hour. The long arrays of zeros are the number zero.
  if (name == "RSACrypt.CreateKeys") return is_text || value.name == "bytes-10000-full";
  // Eight million decimal digits take seconds to read, and as many again to look at the object.
  return member.ClassName() == "PexBigNumber" && is_text &&
         value.name.find("16MB") != value.name.npos;
}

// A failing status that is no member's: the runtime's or the module's own are all right.
bool IsSensible(HRESULT status) {
  constexpr HRESULT kKnown[] = {S_OK,
                                S_FALSE,
                                10104,
                                E_POINTER,
                                E_FAIL,
                                E_UNEXPECTED,
                                E_OUTOFMEMORY,
                                E_INVALIDARG,
                                E_ACCESSDENIED,    // the failing object's own
                                DISP_E_EXCEPTION,  // of a number whose text cannot be read
                                DISP_E_TYPEMISMATCH,
                                DISP_E_OVERFLOW,
                                DISP_E_BADVARTYPE,
                                DISP_E_DIVBYZERO,
                                DISP_E_PARAMNOTOPTIONAL,
                                DISP_E_PARAMNOTFOUND,
                                DISP_E_ARRAYISLOCKED,
                                STG_E_CANTSAVE,
                                MIROLTA_STATUS(0x80042775u),
                                MIROLTA_STATUS(0x80042776u),
                                MIROLTA_STATUS(0x80042777u),
                                MIROLTA_STATUS(0x80042778u),
                                MIROLTA_STATUS(0x80042779u),
                                MIROLTA_STATUS(0x8004277Au)};
  for (const HRESULT known : kKnown) {
    if (status == known) return true;
  }
  return false;
}

bool IsModulesOwn(HRESULT status) {
  return (static_cast<uint32_t>(status) & 0xFFFFFFF0u) == 0x80042770u;
}

class HostileInputsTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(setenv("MIROLTA_REGISTRY", "/nonexistent/registry", 1), 0);
    ASSERT_EQ(MiroltaRegistryInMemory(TRUE), ERROR_SUCCESS);
  }
  void TearDown() override {
    SetErrorInfo(0, nullptr);
    MiroltaRegistryInMemory(FALSE);
  }

  std::string Call(const Member& member, State state, unsigned index, const HostileValue& hostile,
                   bool late) {
    PlannedChance::Restart();
    const LONG objects = CurrentModule()->lock_count;
    HRESULT status = E_FAIL;
    {
      const Subject subject(*member.class_row, state);
      Arguments others(ArgumentsFor(member, false));
      std::vector<VARIANT> arguments(others.Get(), others.Get() + others.Count());
      arguments[index] = hostile.value;
      SetErrorInfo(0, nullptr);
      VARIANT result;
      {
        const LockBalance locks;
        status = late ? subject.Invoke(*member.row, arguments.data(),
                                       static_cast<unsigned>(arguments.size()), &result)
                      : subject.Call(*member.row, arguments.data(), &result);
        EXPECT_EQ(locks.Held(), 0);
      }
      EXPECT_EQ(std::memcmp(&arguments[index], &hostile.value, sizeof(VARIANT)), 0)
          << "the argument has changed";
      OwnedReference<IErrorInfo> info;
      const bool published = GetErrorInfo(0, info.Put()) == S_OK;
      // A late-bound call hands the report to its caller.
      EXPECT_EQ(published, !late && IsModulesOwn(status));
      if (FAILED(status)) {
        const std::string shown = Shown(result);
        EXPECT_TRUE(shown == "(empty)" || shown == "(null text)" || shown == "(no object)" ||
                    shown == "i4 0" || shown == "bool 0")
            << shown;
      }
      VariantClear(&result);
      // The object still answers.
      EXPECT_FALSE(subject.Snapshot().empty());
      SetErrorInfo(0, nullptr);
    }
    EXPECT_EQ(CurrentModule()->lock_count, objects);
    EXPECT_TRUE(IsSensible(status)) << std::hex << status;
    char text[16];
    std::snprintf(text, sizeof text, "%08X", static_cast<unsigned>(status));
    return text;
  }

  PlannedChance chance;
  HostileValues values;
};

TEST_F(HostileInputsTest, EveryArgumentOfEveryMember) {
  const bool records = getenv("MIROLTA_RECORD_HOSTILE_INPUTS") != nullptr;
  const Table expected = records ? Table() : ReadTable();
  Table table;
  long calls = 0;
  size_t known = 0;
  for (const Member& member : AllMembers()) {
    for (unsigned index = 0; index < member.ParameterCount(); ++index) {
      const ParameterRow& parameter = member.row->parameters.rows[index];
      for (const State state : kStates) {
        for (const bool late : {false, true}) {
          const std::string heading = member.Name() + " " + Plain(parameter.name) +
                                      (state == State::kFresh ? " fresh" : " ready") +
                                      (late ? " late" : " early");
          Row& row = table[heading];
          const auto found = expected.find(heading);
          EXPECT_TRUE(records || found != expected.end()) << "not in the table: " << heading;
          std::map<std::string, std::string> said;
          if (found != expected.end()) said.insert(found->second.begin(), found->second.end());
          known += said.size();
          size_t place = records ? 0 : table.size();
          for (const HostileValue& value :
               late ? values.All() : values.OfType(parameter.type.type)) {
            if (TakesTooLong(member, parameter.type.type, value)) continue;
            if (!records && place++ % kStride != 0) continue;
            const std::string status = Call(member, state, index, value, late);
            row.emplace_back(value.name, status);
            ++calls;
            if (!records) {
              EXPECT_EQ(status, said[value.name]) << heading << ": " << value.name;
            }
            ASSERT_FALSE(HasFatalFailure()) << heading << ": " << value.name << " " << status;
          }
        }
      }
    }
  }
  std::cout << calls << " calls under " << table.size() << " headings\n";
  if (records) {
    WriteTable(table);
    GTEST_SKIP() << "recorded: " << kFile;
  }
  // Nothing stands in the table that is not called.
  EXPECT_EQ(expected.size(), table.size());
  if (kStride == 1) {
    EXPECT_EQ(static_cast<size_t>(calls), known);
  }
}

// Places for results that are null, in every member that has one, and the other pointers.
template <auto kMethod>
struct WithoutResult;
template <typename Interface, typename... T, HRESULT (Interface::*kMethod)(T...)>
struct WithoutResult<kMethod> {
  static HRESULT Call(void* object) { return (static_cast<Interface*>(object)->*kMethod)(T{}...); }
};

struct NullCase {
  const char* class_name;
  const char* name;
  HRESULT (*call)(void* object);
  HRESULT fresh = E_POINTER;
};
#define NULL_CASE(class_name, interface_name, method, ...) \
  { class_name, #method, &WithoutResult<&interface_name::method>::Call __VA_OPT__(, ) __VA_ARGS__ }

TEST_F(HostileInputsTest, NoPlaceForTheResult) {
  const NullCase cases[] = {
      // The readers of digests look at the place only when they have something to put there.
      NULL_CASE("HashObject", IHashObject, get_Value, 10104),
      NULL_CASE("HashObject", IHashObject, get_HashSize),
      NULL_CASE("HashObject", IHashObject, get_BlockSize),
      NULL_CASE("HashObject", IHashObject, get_BinaryValue),
      NULL_CASE("HashObject", IHashObject, get_codePage),
      NULL_CASE("HashObject", IHashObject, get_Key),
      NULL_CASE("SymmetricCryptObject", ISymmetricCryptObject, get_Key),
      NULL_CASE("SymmetricCryptObject", ISymmetricCryptObject, get_BlockSize),
      NULL_CASE("SymmetricCryptObject", ISymmetricCryptObject, get_codePage),
      NULL_CASE("SymmetricCryptObject", ISymmetricCryptObject, Encrypt),
      NULL_CASE("SymmetricCryptObject", ISymmetricCryptObject, Decrypt),
      NULL_CASE("SymmetricCryptObject", ISymmetricCryptObject, get_PadType),
      NULL_CASE("PexBigNumber", IPexBigNumber, get_Value),
      NULL_CASE("PexBigNumber", IPexBigNumber, get_Hex),
      NULL_CASE("PexBigNumber", IPexBigNumber, get_Text),
      NULL_CASE("PexBigNumber", IPexBigNumber, get_Binary),
      NULL_CASE("PexBigNumber", IPexBigNumber, Add),
      NULL_CASE("PexBigNumber", IPexBigNumber, Sub),
      NULL_CASE("PexBigNumber", IPexBigNumber, Mul),
      NULL_CASE("PexBigNumber", IPexBigNumber, Div),
      NULL_CASE("PexBigNumber", IPexBigNumber, Mod),
      NULL_CASE("PexBigNumber", IPexBigNumber, Cmp),
      NULL_CASE("PexBigNumber", IPexBigNumber, NewNumber),
      NULL_CASE("PexBigNumber", IPexBigNumber, GCD),
      NULL_CASE("PexBigNumber", IPexBigNumber, ModExp),
      NULL_CASE("PexBigNumber", IPexBigNumber, ModInv),
      NULL_CASE("RSACrypt", IRSACrypt, get_Modulus),
      NULL_CASE("RSACrypt", IRSACrypt, get_PublicExp),
      NULL_CASE("RSACrypt", IRSACrypt, get_SecretExp),
      NULL_CASE("RSACrypt", IRSACrypt, get_P),
      NULL_CASE("RSACrypt", IRSACrypt, get_Q),
      NULL_CASE("RSACrypt", IRSACrypt, Encrypt),
      NULL_CASE("RSACrypt", IRSACrypt, Decrypt),
      NULL_CASE("RSACrypt", IRSACrypt, DecryptPQ),
      NULL_CASE("RSACrypt", IRSACrypt, get_BlockSize),
      NULL_CASE("ToviStreamDigest", IToviStreamDigest, get_Stream),
      NULL_CASE("ToviStreamDigest", IToviStreamDigest, get_ReadAlgorithm),
      NULL_CASE("ToviStreamDigest", IToviStreamDigest, get_WriteAlgorithm),
      NULL_CASE("ToviStreamDigest", IToviStreamDigest, get_WriteKey),
      NULL_CASE("ToviStreamDigest", IToviStreamDigest, get_ReadKey),
      NULL_CASE("ToviStreamDigest", IToviStreamDigest, get_ReadValue, 10104),
      NULL_CASE("ToviStreamDigest", IToviStreamDigest, get_WriteValue, 10104),
      NULL_CASE("ToviStreamDigest", IToviStreamDigest, get_WriteHashEnable),
      NULL_CASE("ToviStreamDigest", IToviStreamDigest, get_ReadHashEnable),
      NULL_CASE("ToviStreamDigest", IToviStreamDigest, get_SeekingForbidden),
      NULL_CASE("ToviStreamDigest", IToviStreamDigest, get_codePage),
      NULL_CASE("ToviStreamDigest", IToviStreamDigest, get_ReadBinaryValue),
      NULL_CASE("ToviStreamDigest", IToviStreamDigest, get_WriteBinaryValue),
      NULL_CASE("ToviStreamCrypt", IToviStreamCrypt, get_Stream),
      NULL_CASE("ToviStreamCrypt", IToviStreamCrypt, get_ReadAlgorithm),
      NULL_CASE("ToviStreamCrypt", IToviStreamCrypt, get_WriteAlgorithm),
      NULL_CASE("ToviStreamCrypt", IToviStreamCrypt, get_ReadKey),
      NULL_CASE("ToviStreamCrypt", IToviStreamCrypt, get_WriteKey),
      NULL_CASE("ToviStreamCrypt", IToviStreamCrypt, get_SeekingForbidden),
      NULL_CASE("ToviStreamCrypt", IToviStreamCrypt, get_codePage),
      NULL_CASE("ToviStreamCrypt", IToviStreamCrypt, get_WriteDecrypt),
      NULL_CASE("ToviStreamCrypt", IToviStreamCrypt, get_ReadDecrypt),
      NULL_CASE("ToviStreamCrypt", IToviStreamCrypt, get_ReadPadType),
      NULL_CASE("ToviStreamCrypt", IToviStreamCrypt, get_WritePadType),
  };
  size_t members = 0;
  for (const Member& member : AllMembers()) members += member.row->result.type != VT_EMPTY;
  EXPECT_EQ(members, sizeof cases / sizeof cases[0]);
  for (const NullCase& one : cases) {
    for (const ClassTableRow* class_row : AllClasses()) {
      if (Plain(class_row->name) != one.class_name) continue;
      for (const State state : kStates) {
        const Subject subject(*class_row, state);
        const LockBalance locks;
        EXPECT_EQ(one.call(subject.Dispatch()), state == State::kFresh ? one.fresh : E_POINTER)
            << one.class_name << "." << one.name;
        EXPECT_EQ(locks.Held(), 0);
        // Where it is seen first, it is seen without the lock.
        EXPECT_EQ(locks.Entered(), one.fresh == E_POINTER ? 0 : 1) << one.name;
      }
    }
  }
}

}  // namespace
}  // namespace mirolta::test
