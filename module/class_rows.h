// The rows of the class table, from which also the registry scripts, the resource script and the
// manifest are made.
#pragma once

#include "big_number_object.h"
#include "class_factory.h"
#include "class_registration.h"
#include "hash_object.h"
#include "mirolta.h"
#include "rsa_crypt_object.h"
#include "symmetric_crypt_object.h"
#include "tovi_stream_crypt.h"
#include "tovi_stream_digest.h"

namespace mirolta {

// No class has its own description or categories, or hooks at load and unload.
inline const OLECHAR* NoDescription() {
  return nullptr;
}
inline const void* NoCategories() {
  return nullptr;
}
inline void NoInitTerm(bool) {}

constexpr ClassRow ClassRowOf(const CLSID& id, InstanceCreator create_instance, const OLECHAR* name,
                              const OLECHAR* prog_id, const OLECHAR* version_independent_prog_id,
                              const OLECHAR* description, const OLECHAR* threading_model,
                              WORD registry_script) {
  return {.id = &id,
          .update_registry = UpdateRegistry,
          .create_factory = CreateClassFactory,
          .create_instance = create_instance,
          .factory = nullptr,
          .cookie = 0,
          .object_description = NoDescription,
          .category_map = NoCategories,
          .init_term = NoInitTerm,
          .name = name,
          .prog_id = prog_id,
          .version_independent_prog_id = version_independent_prog_id,
          .description = description,
          .threading_model = threading_model,
          .registry_script = registry_script};
}

// clang-format off
inline constexpr ClassRow kClassRows[] = {
#if MIROLTA_HAS_CLASS_ToviStreamDigest
    ClassRowOf(CLSID_ToviStreamDigest, CreateToviStreamDigest, OLESTR("ToviStreamDigest"),
               OLESTR("Vardeko.crypt.ToviStreamDigest.1"), OLESTR("Vardeko.crypt.ToviStreamDigest"),
               OLESTR("Vardeko ToviStreamDigest Class"), OLESTR("Both"), 10102),
#endif
#if MIROLTA_HAS_CLASS_HashObject
    ClassRowOf(CLSID_HashObject, CreateHashObject, OLESTR("HashObject"),
               OLESTR("Vardeko.crypt.HashObject.1"), OLESTR("Vardeko.crypt.HashObject"),
               OLESTR("Vardeko HashObject Class"), OLESTR("Both"), 10103),
#endif
#if MIROLTA_HAS_CLASS_SymmetricCryptObject
    ClassRowOf(CLSID_SymmetricCryptObject, CreateSymmetricCryptObject, OLESTR("SymmetricCryptObject"),
               OLESTR("Vardeko.crypt.Symmetric.1"), OLESTR("Vardeko.crypt.Symmetric"),
               OLESTR("Vardeko SymmetricCryptObject Class"), OLESTR("Both"), 105),
#endif
#if MIROLTA_HAS_CLASS_RSACrypt
    ClassRowOf(CLSID_RSACrypt, CreateRSACrypt, OLESTR("RSACrypt"),
               OLESTR("Vardeko.crypt.RSA.1"), OLESTR("Vardeko.crypt.RSA"),
               OLESTR("Vardeko RSACrypt Class"), OLESTR("Both"), 106),
#endif
#if MIROLTA_HAS_CLASS_PexBigNumber
    ClassRowOf(CLSID_PexBigNumber, CreatePexBigNumber, OLESTR("PexBigNumber"),
               OLESTR("Vardeko.crypt.Number.1"), OLESTR("Vardeko.crypt.Number"),
               OLESTR("Vardeko BigNumber Class"), OLESTR("Both"), 107),
#endif
#if MIROLTA_HAS_CLASS_ToviStreamCrypt
    ClassRowOf(CLSID_ToviStreamCrypt, CreateToviStreamCrypt, OLESTR("ToviStreamCrypt"),
               OLESTR("Vardeko.crypt.ToviStreamCrypt.1"), OLESTR("Vardeko.crypt.ToviStreamCrypt"),
               OLESTR("Vardeko ToviStreamCrypt Class"), OLESTR("Both"), 108),
#endif
#if MIROLTA_HAS_CLASS_ToviStreamDigest
    ClassRowOf(CLSID_ToviStreamDigestFree, CreateToviStreamDigest, OLESTR("ToviStreamDigest"),
               OLESTR("Vardeko.crypt.ToviStreamDigest.free.1"), OLESTR("Vardeko.crypt.ToviStreamDigest.free"),
               OLESTR("Vardeko ToviStreamDigest Class (freethreaded)"), OLESTR("Free"), 10102),
#endif
#if MIROLTA_HAS_CLASS_HashObject
    ClassRowOf(CLSID_HashObjectFree, CreateHashObject, OLESTR("HashObject"),
               OLESTR("Vardeko.crypt.HashObject.free.1"), OLESTR("Vardeko.crypt.HashObject.free"),
               OLESTR("Vardeko HashObject Class (freethreaded)"), OLESTR("Free"), 10103),
#endif
#if MIROLTA_HAS_CLASS_SymmetricCryptObject
    ClassRowOf(CLSID_SymmetricCryptObjectFree, CreateSymmetricCryptObject, OLESTR("SymmetricCryptObject"),
               OLESTR("Vardeko.crypt.Symmetric.free.1"), OLESTR("Vardeko.crypt.Symmetric.free"),
               OLESTR("Vardeko SymmetricCryptObject Class (freethreaded)"), OLESTR("Free"), 105),
#endif
#if MIROLTA_HAS_CLASS_RSACrypt
    ClassRowOf(CLSID_RSACryptFree, CreateRSACrypt, OLESTR("RSACrypt"),
               OLESTR("Vardeko.crypt.RSA.free.1"), OLESTR("Vardeko.crypt.RSA.free"),
               OLESTR("Vardeko RSACrypt Class (freethreaded)"), OLESTR("Free"), 106),
#endif
#if MIROLTA_HAS_CLASS_PexBigNumber
    ClassRowOf(CLSID_PexBigNumberFree, CreatePexBigNumber, OLESTR("PexBigNumber"),
               OLESTR("Vardeko.crypt.Number.free.1"), OLESTR("Vardeko.crypt.Number.free"),
               OLESTR("Vardeko BigNumber Class (freethreaded)"), OLESTR("Free"), 107),
#endif
#if MIROLTA_HAS_CLASS_ToviStreamCrypt
    ClassRowOf(CLSID_ToviStreamCryptFree, CreateToviStreamCrypt, OLESTR("ToviStreamCrypt"),
               OLESTR("Vardeko.crypt.ToviStreamCrypt.free.1"), OLESTR("Vardeko.crypt.ToviStreamCrypt.free"),
               OLESTR("Vardeko ToviStreamCrypt Class (freethreaded)"), OLESTR("Free"), 108),
#endif
    {},
};
// clang-format on

}  // namespace mirolta
