// Calls of the classes: overhead of an object over its kernel, and of a late-bound call over an
// early-bound one. The peers are our own.
#include "aes_kernels.h"
#include "bench_digests.h"
#include "bench_module.h"
#include "des_kernels.h"
#include "hash_kernels.h"

namespace mirolta::bench {

namespace {

// Fewer of these long arrays suffice: a predictor cannot learn even one.
constexpr size_t kLargeOperands = 16;

struct DigestCase {
  const char* name;
  const OLECHAR* our_name;
  CompressBlocks (*kernel)() noexcept;
};
constexpr DigestCase kDigests[] = {{"MD5", OLESTR("MD5"), CurrentKernel<kMd5Kernels>},
                                   {"SHA-1", OLESTR("SHA1"), CurrentKernel<kSha1Kernels>},
                                   {"SHA-256", OLESTR("SHA256"), CurrentKernel<kSha256Kernels>}};

std::vector<Contestant> MakeDigests(const DigestCase& digest, size_t size) {
  const ByteOperands in(size);
  const ArrayOperands arrays = Arrays(in, kLargeOperands);
  const auto object = NewHashObject(digest.our_name);
  const std::shared_ptr<HashEngine> engine = MakeHashEngine(digest.our_name);
  const CompressBlocks kernel = digest.kernel();
  const size_t digest_size = static_cast<size_t>(engine->DigestSize());
  // Every contestant reads the arrays, so that caches are in the same state for all.
  const auto data = [=](size_t i) {
    return static_cast<const uint8_t*>(V_ARRAY(&(*arrays)[i].Value())->pvData);
  };
  return {{kOurs, [=](size_t i) { (void)object->HashData((*arrays)[i].Value(), -1); },
           [=] {
             OwnedVariant value;
             (void)object->get_BinaryValue(value.Put());
             return TextOf(value.Value());
           }},
          {"own engine",
           [=](size_t i) {
             engine->Init();
             engine->Update(data(i), static_cast<uint32_t>(size));
             engine->Final();
           },
           [=] { return std::string(engine->RawDigest(), engine->RawDigest() + digest_size); }},
          {"own kernel",
           [=](size_t i) {
             uint32_t words[8] = {};
             kernel(words, data(i), size / kHashBlockSize);
           },
           nullptr}};
}

struct CipherCase {
  const char* name;
  const OLECHAR* our_name;
  uint32_t key_size;
  double required;
};
constexpr CipherCase kCiphers[] = {{"AES-128", OLESTR("AES"), 16, 0.9},
                                   {"DES", OLESTR("DES"), 8, 0.9},
                                   {"Triple DES", OLESTR("DES"), 24, 0.9}};

using Run = std::function<void(const uint8_t* in, uint8_t* out, uint32_t length)>;

Run KeyedKernel(const CipherCase& cipher, const std::vector<uint8_t>& key) {
  if (std::char_traits<OLECHAR>::compare(cipher.our_name, OLESTR("AES"), 3) == 0) {
    const auto schedule = std::make_shared<AesSchedule>();
    (void)ExpandAesKey(key.data(), cipher.key_size, schedule.get());
    return [=](const uint8_t* in, uint8_t* out, uint32_t length) {
      CurrentKernel<kAesEncryptKernels>()(*schedule, in, out, length / kAesBlockSize);
    };
  }
  const auto schedule = std::make_shared<DesSchedule>();
  (void)ExpandDesKey(key.data(), cipher.key_size, schedule.get());
  return [=](const uint8_t* in, uint8_t* out, uint32_t length) {
    CurrentKernel<kDesEncryptKernels>()(*schedule, in, out, length / kDesBlockSize);
  };
}

std::vector<Contestant> MakeCiphers(const CipherCase& cipher, size_t size) {
  const ByteOperands in(size);
  const ArrayOperands arrays = Arrays(in, kLargeOperands);
  const std::vector<uint8_t> key = RandomBytes(cipher.key_size, 3);
  const auto object = CreateFromModule<ISymmetricCryptObject>(CLSID_SymmetricCryptObject,
                                                              IID_ISymmetricCryptObject);
  OwnedVariant name;
  V_VT(name.Get()) = VT_BSTR;
  V_BSTR(name.Get()) = SysAllocString(cipher.our_name);
  OwnedVariant key_value;
  (void)BytesToVariant(key.data(), cipher.key_size, key_value.Put());
  (void)object->Init(name.Value());
  (void)object->put_Key(key_value.Value());
  const auto result = std::make_shared<OwnedVariant>();
  const auto out = std::make_shared<std::vector<uint8_t>>(size);
  const Run kernel = KeyedKernel(cipher, key);
  return {{kOurs,
           [=](size_t i) {
             // As callers do: the last result is cleared, not wiped by its owner too.
             (void)VariantClear(result->Get());
             (void)object->Encrypt((*arrays)[i].Value(), -1, result->Get());
           },
           [=] { return TextOf(result->Value()); }},
          {"own kernel",
           [=](size_t i) {
             const auto* const data =
                 static_cast<const uint8_t*>(V_ARRAY(&(*arrays)[i].Value())->pvData);
             kernel(data, out->data(), static_cast<uint32_t>(size));
           },
           [=] { return mirolta::bench::TextOf(*out); }}};
}

// A member called by name, whose id was looked up before.
class LateCall {
 public:
  LateCall(IDispatch* object, const OLECHAR* name, WORD flags) : object_(object), flags_(flags) {
    LPOLESTR names[] = {const_cast<LPOLESTR>(name)};
    (void)object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id_);
  }
  HRESULT operator()(VARIANT* argument, VARIANT* result) const {
    DISPID put = DISPID_PROPERTYPUT;
    const bool puts = flags_ == DISPATCH_PROPERTYPUT;
    DISPPARAMS parameters = {argument, puts ? &put : nullptr, argument != nullptr ? 1u : 0u,
                             puts ? 1u : 0u};
    return object_->Invoke(id_, IID_NULL, LOCALE_USER_DEFAULT, flags_, &parameters, result, nullptr,
                           nullptr);
  }

 private:
  IDispatch* object_;
  WORD flags_;
  DISPID id_ = DISPID_UNKNOWN;
};

// The member that does least; the early-bound figure is the calls per second.
std::vector<Contestant> MakeGets() {
  const auto object = NewHashObject(OLESTR("SHA256"));
  const LateCall late(object.get(), OLESTR("codePage"), DISPATCH_PROPERTYGET);
  const auto value = std::make_shared<LONG>(-2);
  const auto late_value = std::make_shared<OwnedVariant>();
  return {{kOurs, [=](size_t) { (void)late(nullptr, late_value->Get()); },
           [=] { return std::to_string(V_I4(&late_value->Value())); }},
          {"early-bound", [=](size_t) { (void)object->get_codePage(value.get()); },
           [=] { return std::to_string(*value); }}};
}

std::vector<Contestant> MakePuts() {
  const auto object = NewHashObject(OLESTR("SHA256"));
  const LateCall late(object.get(), OLESTR("codePage"), DISPATCH_PROPERTYPUT);
  const auto read = [=] {
    LONG value = -2;
    (void)object->get_codePage(&value);
    return std::to_string(value);
  };
  return {
      {kOurs,
       [=](size_t i) {
         VARIANT value = {};
         V_VT(&value) = VT_I4;
         V_I4(&value) = static_cast<LONG>(i);
         (void)late(&value, nullptr);
       },
       read},
      {"early-bound", [=](size_t i) { (void)object->put_codePage(static_cast<LONG>(i)); }, read}};
}

std::vector<Contestant> MakeHashCalls() {
  const ByteOperands in(16);
  const ArrayOperands arrays = Arrays(in, kOperands);
  const auto object = NewHashObject(OLESTR("SHA256"));
  const LateCall late(object.get(), OLESTR("HashData"), DISPATCH_METHOD);
  const auto digest = [=] {
    OwnedVariant value;
    (void)object->get_BinaryValue(value.Put());
    return TextOf(value.Value());
  };
  return {
      {kOurs, [=](size_t i) { (void)late((*arrays)[i].Get(), nullptr); }, digest},
      {"early-bound", [=](size_t i) { (void)object->HashData((*arrays)[i].Value(), -1); }, digest}};
}

// Required: a late-bound call takes at most as long as three early-bound ones.
constexpr double kLateRequired = 1.0 / 3;
constexpr double kLateStretch = 1.0;

}  // namespace

void AddClassRows(RowList* rows) {
  for (const size_t size : {size_t{64} << 10, size_t{1} << 20}) {
    const double bytes = static_cast<double>(size);
    for (const DigestCase& digest : kDigests) {
      rows->push_back({"class/" + std::string(digest.name) + " HashData/" + SizeName(size), bytes,
                       0.9, 1.0, kLargeOperands, 0,
                       [&digest, size] { return MakeDigests(digest, size); }});
    }
    for (const CipherCase& cipher : kCiphers) {
      rows->push_back({"class/" + std::string(cipher.name) + " Encrypt/" + SizeName(size), bytes,
                       cipher.required, 1.0, kLargeOperands, 0,
                       [&cipher, size] { return MakeCiphers(cipher, size); }});
    }
  }
  rows->push_back(
      {"class/late-bound/codePage read", 0, kLateRequired, kLateStretch, kOperands, 0, MakeGets});
  rows->push_back(
      {"class/late-bound/codePage set", 0, kLateRequired, kLateStretch, kOperands, 0, MakePuts});
  rows->push_back({"class/late-bound/HashData 16 bytes", 0, kLateRequired, kLateStretch, kOperands,
                   0, MakeHashCalls});
}

}  // namespace mirolta::bench
