#include "type_library_table.h"

#include "big_number_members.h"
#include "hash_object_members.h"
#include "mirolta.h"
#include "rsa_crypt_members.h"
#include "symmetric_crypt_members.h"
#include "tovi_stream_crypt_members.h"
#include "tovi_stream_digest_members.h"

namespace mirolta {

namespace {

constexpr const InterfaceTable* kInterfaces[] = {
#if MIROLTA_HAS_CLASS_HashObject
    &kHashObjectInterface,
#endif
#if MIROLTA_HAS_CLASS_SymmetricCryptObject
    &kSymmetricCryptInterface,
#endif
#if MIROLTA_HAS_CLASS_PexBigNumber
    &kBigNumberInterface,
#endif
#if MIROLTA_HAS_CLASS_RSACrypt
    &kRsaCryptInterface,
#endif
#if MIROLTA_HAS_CLASS_ToviStreamDigest
    &kToviStreamDigestInterface,
#endif
#if MIROLTA_HAS_CLASS_ToviStreamCrypt
    &kToviStreamCryptInterface,
#endif
};

// clang-format off
constexpr ClassTableRow kClasses[] = {
#if MIROLTA_HAS_CLASS_ToviStreamDigest
    {&CLSID_ToviStreamDigest, OLESTR("ToviStreamDigest"),
     OLESTR("A stream filter that computes digests"), &kToviStreamDigestInterface},
#endif
#if MIROLTA_HAS_CLASS_HashObject
    {&CLSID_HashObject, OLESTR("HashObject"),
     OLESTR("Message digests and HMAC"), &kHashObjectInterface},
#endif
#if MIROLTA_HAS_CLASS_SymmetricCryptObject
    {&CLSID_SymmetricCryptObject, OLESTR("SymmetricCryptObject"),
     OLESTR("AES and DES encryption, block by block"), &kSymmetricCryptInterface},
#endif
#if MIROLTA_HAS_CLASS_RSACrypt
    {&CLSID_RSACrypt, OLESTR("RSACrypt"),
     OLESTR("Raw RSA and its keys"), &kRsaCryptInterface},
#endif
#if MIROLTA_HAS_CLASS_PexBigNumber
    {&CLSID_PexBigNumber, OLESTR("PexBigNumber"),
     OLESTR("Big integers"), &kBigNumberInterface},
#endif
#if MIROLTA_HAS_CLASS_ToviStreamCrypt
    {&CLSID_ToviStreamCrypt, OLESTR("ToviStreamCrypt"),
     OLESTR("A stream filter that encrypts or decrypts"), &kToviStreamCryptInterface},
#endif
};
// clang-format on

template <typename Row, unsigned kCount>
constexpr unsigned CountOf(const Row (&)[kCount]) {
  return kCount;
}

}  // namespace

constexpr TypeLibraryTable kTypeLibraryTable = {
    .id = &LIBID_MIROLTALib,
    .name = OLESTR("MIROLTALib"),
    .help = OLESTR("Mirolta 1.0 Type Library"),
    .major = 1,
    .minor = 0,
    .interfaces = kInterfaces,
    .interface_count = CountOf(kInterfaces),
    .classes = kClasses,
    .class_count = CountOf(kClasses),
};

}  // namespace mirolta
