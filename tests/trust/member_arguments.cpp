#include "member_calls.h"

namespace mirolta::test {

namespace {

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
