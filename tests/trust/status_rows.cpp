#include "status_rows.h"

#include "status_model.h"

namespace mirolta::test {

namespace {

constexpr bool kOptional = true;

constexpr StatusRow kRows[] = {
    {"HashObject.InitHash", "bstrAlg", Rule::kHashName},
    {"HashObject.HashData", "vData", Rule::kWholeData, Needs::kAlgorithm},
    {"HashObject.HashData", "lCP", Rule::kInteger, Needs::kAlgorithm, kOptional},
    {"HashObject.HashUpdate", "vData", Rule::kPieceOfData, Needs::kAlgorithm},
    {"HashObject.HashUpdate", "lCP", Rule::kInteger, Needs::kAlgorithm, kOptional},
    {"HashObject.codePage put", "lCP", Rule::kInteger},
    {"HashObject.Key put", "vKey", Rule::kHashKey, Needs::kAlgorithm},

    {"SymmetricCryptObject.Key put", "vKey", Rule::kAesKey, Needs::kAlgorithm},
    {"SymmetricCryptObject.codePage put", "lCP", Rule::kInteger},
    {"SymmetricCryptObject.Encrypt", "vData", Rule::kEncrypted, Needs::kAlgorithm},
    {"SymmetricCryptObject.Encrypt", "bFinalize", Rule::kSwitch, Needs::kAlgorithm, kOptional},
    {"SymmetricCryptObject.Decrypt", "vData", Rule::kDecrypted, Needs::kAlgorithm},
    {"SymmetricCryptObject.Decrypt", "bFinalize", Rule::kSwitch, Needs::kAlgorithm, kOptional},
    {"SymmetricCryptObject.Reset", "lWhat", Rule::kInteger, Needs::kAlgorithm, kOptional},
    {"SymmetricCryptObject.Init", "vAlg", Rule::kCipherNameValue},
    {"SymmetricCryptObject.PadType put", "lPad", Rule::kInteger, Needs::kAlgorithm},

    {"PexBigNumber.Value put", "vValue", Rule::kDecimal},
    {"PexBigNumber.Hex put", "vValue", Rule::kHexadecimal},
    {"PexBigNumber.Text get", "lCP", Rule::kInteger, Needs::kNothing, kOptional},
    {"PexBigNumber.Text put", "lCP", Rule::kInteger, Needs::kNothing, kOptional},
    {"PexBigNumber.Text put", "bstrText", Rule::kText},
    {"PexBigNumber.Binary put", "vValue", Rule::kDecimal},
    {"PexBigNumber.Add", "v", Rule::kDecimal},
    {"PexBigNumber.Sub", "v", Rule::kDecimal},
    {"PexBigNumber.Mul", "v", Rule::kDecimal},
    {"PexBigNumber.Div", "v", Rule::kDivisor},
    {"PexBigNumber.Mod", "v", Rule::kDivisor},
    {"PexBigNumber.Inc", "v", Rule::kDecimal},
    {"PexBigNumber.Dec", "v", Rule::kDecimal},
    {"PexBigNumber.Cmp", "v", Rule::kDecimal},
    {"PexBigNumber.NewNumber", "v", Rule::kNewNumber},
    {"PexBigNumber.Random", "lSize", Rule::kSize},
    {"PexBigNumber.Random", "bEnsureSize", Rule::kSwitch, Needs::kNothing, kOptional},
    {"PexBigNumber.Random", "bOdd", Rule::kSwitch, Needs::kNothing, kOptional},
    {"PexBigNumber.GCD", "v", Rule::kDecimal},
    {"PexBigNumber.ModExp", "ve", Rule::kDecimal},
    {"PexBigNumber.ModExp", "vm", Rule::kDivisor},
    {"PexBigNumber.ModInv", "vm", Rule::kDivisor},

    {"RSACrypt.CreateKeys", "v1", Rule::kHexadecimal},
    {"RSACrypt.CreateKeys", "v2", Rule::kHexadecimal},
    {"RSACrypt.CreateRandKeys", "lByteSize", Rule::kKeySize, Needs::kNothing, kOptional},
    {"RSACrypt.CreateRandKeys", "bExactSize", Rule::kSwitch, Needs::kNothing, kOptional},
    {"RSACrypt.Modulus put", "vValue", Rule::kHexadecimal},
    {"RSACrypt.PublicExp put", "vValue", Rule::kHexadecimal},
    {"RSACrypt.SecretExp put", "vValue", Rule::kHexadecimal},
    {"RSACrypt.P put", "vValue", Rule::kHexadecimal},
    {"RSACrypt.Q put", "vValue", Rule::kHexadecimal},
    {"RSACrypt.Encrypt", "vData", Rule::kMessage, Needs::kRsaKey},
    {"RSACrypt.Decrypt", "vData", Rule::kHexadecimal, Needs::kRsaKey},
    {"RSACrypt.DecryptPQ", "vData", Rule::kHexadecimal, Needs::kRsaKey},

    {"ToviStreamDigest.Stream putref", "pStream", Rule::kStream},
    {"ToviStreamDigest.ReadAlgorithm put", "bstrAlg", Rule::kHashName},
    {"ToviStreamDigest.WriteAlgorithm put", "bstrAlg", Rule::kHashName},
    {"ToviStreamDigest.WriteKey put", "vKey", Rule::kHashKey, Needs::kAlgorithm},
    {"ToviStreamDigest.ReadKey put", "vKey", Rule::kHashKey, Needs::kAlgorithm},
    {"ToviStreamDigest.WriteHashEnable put", "bEnable", Rule::kSwitch},
    {"ToviStreamDigest.ReadHashEnable put", "bEnable", Rule::kSwitch},
    {"ToviStreamDigest.SeekingForbidden put", "bForbidden", Rule::kSwitch},
    {"ToviStreamDigest.codePage put", "lCP", Rule::kInteger},

    {"ToviStreamCrypt.Stream putref", "pStream", Rule::kStream},
    {"ToviStreamCrypt.ReadAlgorithm put", "bstrAlg", Rule::kCipherName},
    {"ToviStreamCrypt.WriteAlgorithm put", "bstrAlg", Rule::kCipherName},
    // Subject gives the read side AES and the write side DES.
    {"ToviStreamCrypt.ReadKey put", "vKey", Rule::kAesKey, Needs::kAlgorithm},
    {"ToviStreamCrypt.WriteKey put", "vKey", Rule::kDesKey, Needs::kAlgorithm},
    {"ToviStreamCrypt.SeekingForbidden put", "bForbidden", Rule::kSwitch},
    {"ToviStreamCrypt.codePage put", "lCP", Rule::kInteger},
    {"ToviStreamCrypt.WriteDecrypt put", "bDecrypt", Rule::kSwitch},
    {"ToviStreamCrypt.ReadDecrypt put", "bDecrypt", Rule::kSwitch},
    {"ToviStreamCrypt.ReadPadType put", "lPadType", Rule::kInteger, Needs::kAlgorithm},
    {"ToviStreamCrypt.WritePadType put", "lPadType", Rule::kInteger, Needs::kAlgorithm},
};

}  // namespace

const StatusRow* FindStatusRow(const Member& member, const std::string& parameter) {
  for (const StatusRow& row : kRows) {
    if (member.Name() == row.member && parameter == row.parameter) return &row;
  }
  return nullptr;
}

size_t StatusModelRows() {
  return sizeof kRows / sizeof kRows[0];
}

}  // namespace mirolta::test
