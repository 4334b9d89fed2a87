#include "member_arguments.h"

#include <sstream>
#include <utility>

#include "member_calls.h"

namespace mirolta::test {

namespace {

VARIANT Released(TestValue value) {
  VARIANT out = value;
  VariantInit(&value);
  return out;
}

VARIANT TextArgument(const Text& text) {
  TestValue value(VT_BSTR);
  value->bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
  return Released(std::move(value));
}

// The bytes of arrays and streams.
Bytes PatternBytes(size_t count) {
  Bytes bytes(count);
  for (size_t i = 0; i < count; ++i) bytes[i] = static_cast<uint8_t>(i * 73 + i / 7 + 0x91);
  return bytes;
}

VARIANT StreamArgument(size_t count) {
  IStream* stream = nullptr;
  TestValue value(VT_UNKNOWN);
  if (CreateStreamOnHGlobal(nullptr, TRUE, &stream) != S_OK) return Released(std::move(value));
  const Bytes bytes = PatternBytes(count);
  ULONG written = 0;
  if (count != 0) stream->Write(bytes.data(), static_cast<ULONG>(count), &written);
  LARGE_INTEGER start;
  start.QuadPart = 0;
  stream->Seek(start, STREAM_SEEK_SET, nullptr);
  value->punkVal = stream;
  return Released(std::move(value));
}

VARIANT NumberObjectArgument() {
  IDispatch* number = nullptr;
  IClassFactory* factory = nullptr;
  DllGetClassObject(CLSID_PexBigNumber, IID_IClassFactory, reinterpret_cast<void**>(&factory));
  factory->CreateInstance(nullptr, IID_IDispatch, reinterpret_cast<void**>(&number));
  factory->Release();
  TestValue value(VT_DISPATCH);
  value->pdispVal = number;
  return Released(std::move(value));
}

Text Digits(size_t count, const OLECHAR* digits, size_t kinds) {
  Text text(count, 0);
  for (size_t i = 0; i < count; ++i) text[i] = digits[(i * 7 + 3) % kinds];
  return text;
}

VARIANT ArgumentOf(const std::string& word) {
  const std::string rest = word.substr(1);
  switch (word[0]) {
    case 'b':
      return Released(BytesValue(PatternBytes(std::stoul(rest))));
    case 'x':
      return Released(BytesValue(BytesOfHex(rest)));
    case 't':
      return TextArgument(WideOf(rest.substr(1)));
    case 'd':
      return TextArgument(Digits(std::stoul(rest), OLESTR("1234567890"), 10));
    case 'h':
      return TextArgument(Digits(std::stoul(rest), OLESTR("123456789abcdef0"), 16));
    case 'i':
      return Released(NumberValue(std::stoi(rest)));
    case 'B': {
      TestValue value(VT_BOOL);
      value->boolVal = static_cast<VARIANT_BOOL>(std::stoi(rest));
      return Released(std::move(value));
    }
    case 'S':
      return StreamArgument(std::stoul(rest));
    case 'N':
      return NumberObjectArgument();
    default: {
      TestValue value(VT_ERROR);
      value->scode = DISP_E_PARAMNOTFOUND;
      return Released(std::move(value));
    }
  }
}

constexpr ArgumentRow kArguments[] = {
    {"HashObject.InitHash", "t:MD5", "t:SHA256"},
    {"HashObject.HashData", "d9 i-1", "d100000 i65001"},
    {"HashObject.HashUpdate", "b40 i-1", "d100000 i-2"},
    {"HashObject.codePage put", "i65001", "i-1"},
    {"HashObject.Key put", "d30", "b5000"},
    {"SymmetricCryptObject.Key put", "d16", "b32"},
    {"SymmetricCryptObject.codePage put", "i65001", "i-1"},
    {"SymmetricCryptObject.Encrypt", "d40 B-1", "b100000 B-1"},
    {"SymmetricCryptObject.Decrypt", "b48 B-1", "d100000 B0"},
    {"SymmetricCryptObject.Reset", "i0", "i2147483647"},
    {"SymmetricCryptObject.Init", "t:DES", "t:AES"},
    {"SymmetricCryptObject.PadType put", "i4", "i-1"},
    {"PexBigNumber.Value put", "d30", "d5000"},
    {"PexBigNumber.Hex put", "h30", "h20000"},
    {"PexBigNumber.Text get", "i1252", "i-1"},
    {"PexBigNumber.Text put", "i0 d20", "i-2 d20000"},
    {"PexBigNumber.Binary put", "b30", "b20000"},
    {"PexBigNumber.Add", "d30", "b20000"},
    {"PexBigNumber.Sub", "i7", "b20000"},
    {"PexBigNumber.Mul", "b30", "b3000"},
    {"PexBigNumber.Div", "d30", "b59"},
    {"PexBigNumber.Mod", "d30", "b59"},
    {"PexBigNumber.Inc", "m", "b20000"},
    {"PexBigNumber.Dec", "i1", "b20000"},
    {"PexBigNumber.Cmp", "d30", "b20000"},
    {"PexBigNumber.NewNumber", "m", "d5000"},
    {"PexBigNumber.Random", "i20 B-1 B-1", "i5000 B0 B0"},
    {"PexBigNumber.GCD", "d30", "b300"},
    {"PexBigNumber.ModExp", "d9 b30", "b40 b61"},
    {"PexBigNumber.ModInv", "d30", "b300"},
    {"RSACrypt.CreateKeys", "d4 d5", "h24 d23"},
    {"RSACrypt.CreateRandKeys", "i8 B-1", "i24 B0"},
    {"RSACrypt.Modulus put", "h30", "b5000"},
    {"RSACrypt.PublicExp put", "i65537", "b5000"},
    {"RSACrypt.SecretExp put", "h30", "b5000"},
    {"RSACrypt.P put", "h30", "b5000"},
    {"RSACrypt.Q put", "h30", "b5000"},
    {"RSACrypt.Encrypt", "h6", "b15"},
    {"RSACrypt.Decrypt", "h6", "b500"},
    {"RSACrypt.DecryptPQ", "h6", "b500"},
    {"ToviStreamDigest.Stream putref", "S10", "S100000"},
    {"ToviStreamDigest.ReadAlgorithm put", "t:SHA1", "t:SHA256"},
    {"ToviStreamDigest.WriteAlgorithm put", "t:MD5", "t:SHA256"},
    {"ToviStreamDigest.WriteKey put", "d30", "b5000"},
    {"ToviStreamDigest.ReadKey put", "b30", "b5000"},
    {"ToviStreamDigest.WriteHashEnable put", "B-1", "B0"},
    {"ToviStreamDigest.ReadHashEnable put", "B-1", "B0"},
    {"ToviStreamDigest.SeekingForbidden put", "B-1", "B0"},
    {"ToviStreamDigest.codePage put", "i65001", "i-1"},
    {"ToviStreamCrypt.Stream putref", "S10", "S100000"},
    {"ToviStreamCrypt.ReadAlgorithm put", "t:DES", "t:AES"},
    {"ToviStreamCrypt.WriteAlgorithm put", "t:AES", "t:DES"},
    {"ToviStreamCrypt.ReadKey put", "d16", "b32"},
    {"ToviStreamCrypt.WriteKey put", "d8", "b24"},
    {"ToviStreamCrypt.SeekingForbidden put", "B-1", "B0"},
    {"ToviStreamCrypt.codePage put", "i65001", "i-1"},
    {"ToviStreamCrypt.WriteDecrypt put", "B-1", "B0"},
    {"ToviStreamCrypt.ReadDecrypt put", "B-1", "B0"},
    {"ToviStreamCrypt.ReadPadType put", "i4", "i-1"},
    {"ToviStreamCrypt.WritePadType put", "i4", "i-1"},
};

}  // namespace

std::string Plain(const OLECHAR* text) {
  std::string plain;
  for (; *text != 0; ++text) plain += static_cast<char>(*text);
  return plain;
}

Text WideOf(const std::string& text) {
  return Text(text.begin(), text.end());
}

Arguments::Arguments(const std::string& words) {
  std::istringstream in(words);
  for (std::string word; in >> word;) values_.push_back(ArgumentOf(word));
}

Arguments::~Arguments() {
  for (VARIANT& value : values_) VariantClear(&value);
}

const std::vector<ArgumentRow>& ArgumentRows() {
  static const std::vector<ArgumentRow> rows(std::begin(kArguments), std::end(kArguments));
  return rows;
}

const char* ArgumentsFor(const Member& member, bool large) {
  for (const ArgumentRow& row : kArguments) {
    if (member.Name() == row.member) return large ? row.large : row.ordinary;
  }
  return member.ParameterCount() == 0 ? "" : nullptr;
}

}  // namespace mirolta::test
