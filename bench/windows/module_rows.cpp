// The classes, by the interfaces of the built module.
#include "bench_module.h"
#include "speed_row.h"

namespace mirolta::bench {

namespace {

std::shared_ptr<OwnedVariant> ByteArray(size_t size, uint64_t seed) {
  const auto value = std::make_shared<OwnedVariant>();
  (void)BytesToVariant(RandomBytes(size, seed).data(), static_cast<uint32_t>(size), value->Put());
  return value;
}

SpeedTask HashData(const OLECHAR* algorithm, size_t size) {
  const auto object = NewHashObject(algorithm);
  return {[=, data = ByteArray(size, 1)] { (void)object->HashData(data->Value(), -1); },
          [=] {
            OwnedVariant value;
            (void)object->get_BinaryValue(value.Put());
            return TextOf(value.Value());
          }};
}

SpeedTask Encrypt(const OLECHAR* algorithm, size_t key_size, size_t size) {
  const auto object = CreateFromModule<ISymmetricCryptObject>(CLSID_SymmetricCryptObject,
                                                              IID_ISymmetricCryptObject);
  OwnedVariant name;
  V_VT(name.Get()) = VT_BSTR;
  V_BSTR(name.Get()) = SysAllocString(algorithm);
  (void)object->Init(name.Value());
  (void)object->put_Key(ByteArray(key_size, 3)->Value());
  const auto result = std::make_shared<OwnedVariant>();
  return {[=, data = ByteArray(size, 1)] {
            (void)VariantClear(result->Get());
            (void)object->Encrypt(data->Value(), -1, result->Get());
          },
          [=] { return TextOf(result->Value()); }};
}

std::shared_ptr<IPexBigNumber> NewNumber(size_t bits, uint64_t seed) {
  const auto number = CreateFromModule<IPexBigNumber>(CLSID_PexBigNumber, IID_IPexBigNumber);
  (void)number->put_Binary(ByteArray(bits / 8, seed)->Value());
  return number;
}

SpeedTask ModExp(size_t bits) {
  const auto object = [](const std::shared_ptr<IPexBigNumber>& number) {
    VARIANT value = {};
    V_VT(&value) = VT_DISPATCH;
    V_DISPATCH(&value) = number.get();
    return value;
  };
  const auto result = std::make_shared<OwnedReference<IPexBigNumber>>();
  return {
      [=, base = NewNumber(bits, 1), exponent = NewNumber(bits, 2), modulus = NewNumber(bits, 4)] {
        *result = OwnedReference<IPexBigNumber>();
        (void)base->ModExp(object(exponent), object(modulus), result->Put());
      },
      [=] {
        OwnedVariant value;
        (void)(*result)->get_Binary(value.Put());
        return TextOf(value.Value());
      }};
}

SpeedTask DecryptPQ(size_t bits) {
  const auto object = CreateFromModule<IRSACrypt>(CLSID_RSACrypt, IID_IRSACrypt);
  const auto first = ByteArray(bits / 16, 7), second = ByteArray(bits / 16, 8);
  (void)object->CreateKeys(first->Value(), second->Value());
  const auto result = std::make_shared<OwnedVariant>();
  return {[=, data = ByteArray(bits / 8 - 4, 9)] {
            (void)VariantClear(result->Get());
            (void)object->DecryptPQ(data->Value(), result->Get());
          },
          [=] { return TextOf(result->Value()); }};
}

SpeedTask ReadCodePage() {
  const auto object = NewHashObject(OLESTR("SHA256"));
  LPOLESTR name = const_cast<LPOLESTR>(OLESTR("codePage"));
  DISPID id = DISPID_UNKNOWN;
  (void)object->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id);
  const auto value = std::make_shared<OwnedVariant>();
  return {[=] {
            DISPPARAMS none = {};
            (void)object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none,
                                 value->Get(), nullptr, nullptr);
          },
          [=] { return std::to_string(V_I4(&value->Value())); }};
}

SpeedTask Create() {
  const auto size = std::make_shared<LONG>(0);
  return {[=] { (void)NewHashObject(OLESTR("MD5"))->get_HashSize(size.get()); },
          [=] { return std::to_string(*size); }};
}

constexpr size_t kLong = size_t{64} << 10;

}  // namespace

void AddModuleRows(SpeedRows* rows) {
  const SpeedRow own[] = {
      {"class/MD5 HashData/64 bytes", 64, [] { return HashData(OLESTR("MD5"), 64); }},
      {"class/SHA-256 HashData/64 KiB", kLong, [] { return HashData(OLESTR("SHA256"), kLong); }},
      {"class/AES-128 Encrypt/64 bytes", 64, [] { return Encrypt(OLESTR("AES"), 16, 64); }},
      {"class/AES-128 Encrypt/64 KiB", kLong, [] { return Encrypt(OLESTR("AES"), 16, kLong); }},
      {"class/DES Encrypt/64 KiB", kLong, [] { return Encrypt(OLESTR("DES"), 8, kLong); }},
      {"class/Triple DES Encrypt/64 KiB", kLong, [] { return Encrypt(OLESTR("DES"), 24, kLong); }},
      {"class/ModExp/1,024 bits", 0, [] { return ModExp(1024); }},
      {"class/ModExp/2,048 bits", 0, [] { return ModExp(2048); }},
      {"class/DecryptPQ/2,048 bits", 0, [] { return DecryptPQ(2048); }},
      {"class/late-bound/codePage read", 0, ReadCodePage},
      {"class/HashObject/created", 0, Create},
  };
  rows->insert(rows->end(), std::begin(own), std::end(own));
}

}  // namespace mirolta::bench
