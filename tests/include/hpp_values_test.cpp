// Texts, values, objects, errors and results of mirolta.hpp.
#include <gtest/gtest.h>

#include <mirolta.hpp>
#include <type_traits>

#include "hpp_testing.h"

namespace {

using mirolta::Bytes;
using mirolta::Error;
using mirolta::Object;
using mirolta::Result;
using mirolta::Text;
using mirolta::Value;

TEST(HppTextTest, ConvertsUtf8AndUtf16) {
  const Text text("a\xC3\xA9\xE2\x82\xAC\xF0\x9D\x84\x9E");
  EXPECT_EQ(text.Utf16(), u"a\u00E9\u20AC\U0001D11E");
  EXPECT_EQ(text.Size(), 5u);
  EXPECT_EQ(text.Utf8(), "a\xC3\xA9\xE2\x82\xAC\xF0\x9D\x84\x9E");
  EXPECT_EQ(Text(u"a\u00E9\u20AC\U0001D11E"), text);
  EXPECT_EQ(Text(std::u16string(u"\u00E9")).Utf8(), "\xC3\xA9");
  EXPECT_EQ(Text(std::string("\xC3\xA9")).Utf16(), u"\u00E9");
}

TEST(HppTextTest, ConvertsTheBoundsOfEveryLength) {
  for (const char32_t character :
       {0x1u, 0x7Fu, 0x80u, 0x7FFu, 0x800u, 0xD7FFu, 0xE000u, 0xFFFFu, 0x10000u, 0x10FFFFu}) {
    std::u16string units;
    mirolta::detail::AppendUtf16(character, &units);
    const std::string utf8 = Text(units).Utf8();
    EXPECT_EQ(utf8.size(), character < 0x80      ? 1u
                           : character < 0x800   ? 2u
                           : character < 0x10000 ? 3u
                                                 : 4u);
    EXPECT_EQ(Text(utf8).Utf16(), units) << std::hex << static_cast<unsigned>(character);
  }
}

TEST(HppTextTest, ReplacesWhatIsMalformed) {
  const struct {
    const char* utf8;
    const char16_t* utf16;
  } cases[] = {
      {"\x80", u"\uFFFD"},
      {"\xC1\xBF", u"\uFFFD\uFFFD"},
      {"\xE0\x9F\xBF", u"\uFFFD\uFFFD\uFFFD"},
      {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},
      {"\xF0\x8F\xBF\xBF", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
      {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
      {"\xF5", u"\uFFFD"},
      {"\xE2\x82", u"\uFFFD"},
      {"\xE2\x82z", u"\uFFFDz"},
      {"\xF0\x9D\x84", u"\uFFFD"},
  };
  for (const auto& row : cases) EXPECT_EQ(Text(row.utf8).Utf16(), row.utf16) << row.utf8;
  const char16_t lone[] = {0xD834, u'x', 0xDD1E, 0};
  EXPECT_EQ(Text(lone).Utf8(), "\xEF\xBF\xBDx\xEF\xBF\xBD");
  const char16_t last[] = {u'x', 0xD834, 0};
  EXPECT_EQ(Text(last).Utf8(), "x\xEF\xBF\xBD");
}

TEST(HppTextTest, KeepsZeros) {
  const Text text(std::string_view("a\0b", 3));
  EXPECT_EQ(text.Size(), 3u);
  EXPECT_EQ(text.Utf8(), std::string("a\0b", 3));
  EXPECT_NE(text, Text("a"));
}

TEST(HppTextTest, OwnsItsBstr) {
  Text text("one");
  Text copy = text;
  EXPECT_NE(copy.Get(), text.Get());
  EXPECT_EQ(copy, text);
  const BSTR place = text.Get();
  Text moved = std::move(text);
  EXPECT_EQ(moved.Get(), place);
  EXPECT_TRUE(text.IsEmpty());
  EXPECT_EQ(text, Text());
  const Text attached = Text::Attach(moved.Detach());
  EXPECT_EQ(attached.Get(), place);
  EXPECT_EQ(moved.Get(), nullptr);
  *copy.Put() = SysAllocStringLen(attached.Get(), 2);
  EXPECT_EQ(copy.Utf8(), "on");
  copy = attached;
  EXPECT_EQ(copy.Utf8(), "one");
  EXPECT_TRUE(Text("").IsEmpty());
#ifdef _WIN32
  EXPECT_EQ(Text(L"one"), attached);
  EXPECT_EQ(Text(std::wstring(L"one")), attached);
#endif
}

TEST(HppValueTest, HasTheTypeOfWhatItIsMadeOf) {
  EXPECT_EQ(Value().Type(), VT_EMPTY);
  EXPECT_TRUE(Value().IsEmpty());
  EXPECT_EQ(Value::Null().Type(), VT_NULL);
  EXPECT_EQ(Value(true).Type(), VT_BOOL);
  EXPECT_EQ(V_BOOL(&Value(true).Get()), VARIANT_TRUE);
  EXPECT_EQ(V_BOOL(&Value(false).Get()), VARIANT_FALSE);
  EXPECT_EQ(Value(1.5).Type(), VT_R8);
  EXPECT_EQ(Value(1.5f).ToDouble(), 1.5);
  EXPECT_EQ(Value("text").Type(), VT_BSTR);
  EXPECT_EQ(Value(Bytes()).Type(), VT_ARRAY | VT_UI1);
  EXPECT_NE(V_ARRAY(&Value(Bytes()).Get()), nullptr);
  for (const int number : {0, -1, 2147483647, -2147483647 - 1}) {
    EXPECT_EQ(Value(number).Type(), VT_I4);
    EXPECT_EQ(Value(std::int64_t{number}).Type(), VT_I4);
    EXPECT_EQ(Value(number).ToInteger(), number);
  }
  EXPECT_EQ(Value(4294967295u).Type(), VT_UI4);
  EXPECT_EQ(V_UI4(&Value(4294967295u).Get()), 4294967295u);
  EXPECT_EQ(Value(std::int64_t{2147483648}).Type(), VT_I8);
  EXPECT_EQ(V_I8(&Value(std::int64_t{-2147483649}).Get()), -2147483649);
  EXPECT_EQ(Value(std::uint64_t{1} << 32).Type(), VT_UI8);
  EXPECT_EQ(V_UI8(&Value(~std::uint64_t{0}).Get()), ~std::uint64_t{0});
}

TEST(HppValueTest, ConvertsAsThePlatformDoes) {
  EXPECT_EQ(Value(-42).ToText().Utf8(), "-42");
  EXPECT_EQ(Value("17").ToInteger(), 17);
  EXPECT_EQ(Value(u"17").ToInteger(), 17);
  EXPECT_EQ(Value(std::string("17")).ToInteger(), 17);
  EXPECT_EQ(Value(std::u16string(u"17")).ToInteger(), 17);
  EXPECT_EQ(Value(std::string_view("0.5")).ToDouble(), 0.5);
  EXPECT_EQ(Value().ToText().Utf8(), "");
  EXPECT_EQ(Value("x").TryToInteger().Failure().Number(), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(Value("x").TryToDouble().Failure().Number(), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(Value(4294967296.0).TryToInteger().Failure().Number(), DISP_E_OVERFLOW);
  EXPECT_EQ(Value::Null().TryToText().Failure().Number(), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(hpp_testing::ThrownBy([] { (void)Value("x").ToInteger(); }), DISP_E_TYPEMISMATCH);
}

TEST(HppValueTest, GivesUpItsBytesWithoutCopying) {
  Value value(mirolta::FromHex("0102"));
  const SAFEARRAY* const array = V_ARRAY(&value.Get());
  const Bytes bytes = value.TakeBytes();
  EXPECT_EQ(bytes.Get(), array);
  EXPECT_TRUE(value.IsEmpty());
  EXPECT_TRUE(value.TakeBytes().empty());
  Value text("0102");
  EXPECT_EQ(text.TryTakeBytes().Failure().Number(), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(text.ToText().Utf8(), "0102");
}

TEST(HppValueTest, CopiesAndMoves) {
  Value value(mirolta::FromHex("0102"));
  Value copy = value;
  EXPECT_NE(V_ARRAY(&copy.Get()), V_ARRAY(&value.Get()));
  EXPECT_EQ(mirolta::ToHex(copy.TakeBytes()), "0102");
  const Value moved = std::move(value);
  EXPECT_TRUE(value.IsEmpty());
  EXPECT_EQ(moved.Type(), VT_ARRAY | VT_UI1);
  value = moved;
  EXPECT_EQ(mirolta::ToHex(value.TakeBytes()), "0102");
  *value.Put() = Value(5).Get();
  EXPECT_EQ(value.ToInteger(), 5);
}

TEST(HppValueTest, WipesItsBytes) {
  SAFEARRAY* array = nullptr;
  {
    Value value(mirolta::FromHex("a5a5"));
    array = V_ARRAY(&value.Get());
    ASSERT_EQ(SafeArrayLock(array), S_OK);
  }
  const auto* const bytes = static_cast<const std::uint8_t*>(array->pvData);
  EXPECT_EQ(bytes[0] | bytes[1], 0);
  SafeArrayUnlock(array);
  SafeArrayDestroy(array);
}

TEST(HppObjectTest, CountsReferences) {
  const auto count = [](IUnknown* object) {
    object->AddRef();
    return object->Release();
  };
  auto object = mirolta::CreateObject<IHashObject>(CLSID_HashObject);
  IHashObject* const raw = object.Get();
  EXPECT_EQ(count(raw), 1u);
  {
    const Object<IHashObject> copy = object;
    EXPECT_EQ(count(raw), 2u);
    EXPECT_TRUE(copy == object);
    const Object<IHashObject> further(raw);
    EXPECT_EQ(count(raw), 3u);
    const Value value(object);
    EXPECT_EQ(value.Type(), VT_DISPATCH);
    EXPECT_EQ(count(raw), 4u);
  }
  EXPECT_EQ(count(raw), 1u);
  Object<IHashObject> moved = std::move(object);
  EXPECT_FALSE(object);
  EXPECT_TRUE(moved);
  EXPECT_EQ(count(raw), 1u);
  Object<IHashObject> attached = Object<IHashObject>::Attach(moved.Detach());
  EXPECT_TRUE(moved != attached);
  const Object<IHashObject>& itself = attached;
  attached = itself;
  EXPECT_EQ(count(raw), 1u);
  EXPECT_EQ(*attached.Put(), nullptr);
}

TEST(HppObjectTest, HasItsOtherInterfaces) {
  const auto object = mirolta::CreateObject<IToviStreamDigest>(CLSID_ToviStreamDigest);
  EXPECT_TRUE(object.As<IStream>());
  EXPECT_TRUE(object.As<IDispatch>().As<IUnknown>().As<IToviStreamDigest>());
  EXPECT_EQ(object.TryAs<IHashObject>().Failure().Number(), E_NOINTERFACE);
  EXPECT_EQ(Object<IUnknown>().TryAs<IStream>().Failure().Number(), E_POINTER);
  EXPECT_EQ(Object<IUnknown>(nullptr).Get(), nullptr);
  EXPECT_EQ(hpp_testing::ThrownBy([&] { (void)object.As<IHashObject>(); }), E_NOINTERFACE);
}

TEST(HppObjectTest, CreatesEveryClassAndNoOthers) {
  EXPECT_TRUE(mirolta::TryCreateObject<IHashObject>(CLSID_HashObject));
  EXPECT_TRUE(mirolta::TryCreateObject<ISymmetricCryptObject>(CLSID_SymmetricCryptObject));
  EXPECT_TRUE(mirolta::TryCreateObject<IPexBigNumber>(CLSID_PexBigNumber));
  EXPECT_TRUE(mirolta::TryCreateObject<IRSACrypt>(CLSID_RSACrypt));
  EXPECT_TRUE(mirolta::TryCreateObject<IToviStreamDigest>(CLSID_ToviStreamDigest));
  EXPECT_TRUE(mirolta::TryCreateObject<IToviStreamCrypt>(CLSID_ToviStreamCrypt));
  EXPECT_TRUE(mirolta::TryCreateObject<IHashObject>(CLSID_HashObjectFree));
  EXPECT_EQ(mirolta::TryCreateObject<IHashObject>(CLSID_RSACrypt).Failure().Number(),
            E_NOINTERFACE);
  const auto unknown = mirolta::TryCreateObject<IHashObject>(LIBID_MIROLTALib);
  ASSERT_FALSE(unknown);
  EXPECT_EQ(unknown.Failure().Number(), CLASS_E_CLASSNOTAVAILABLE);
}

TEST(HppObjectTest, IsCreatedInAnApartmentOfEitherKind) {
  for (const auto threads :
       {mirolta::Apartment::Threads::kMany, mirolta::Apartment::Threads::kOne}) {
    const mirolta::Apartment apartment(threads);
    EXPECT_EQ(apartment.Number(), S_OK);
    EXPECT_EQ(mirolta::Apartment(threads).Number(), S_FALSE);
    EXPECT_TRUE(mirolta::TryCreateObject<IHashObject>(CLSID_HashObject));
  }
}

TEST(HppErrorTest, HasTheNumberAndTheTextsThatTheClassPublishes) {
  const auto object = mirolta::CreateObject<IHashObject>(CLSID_HashObject);
  const Result<void> done = mirolta::detail::Call(object.Get(), &IHashObject::Reset);
  ASSERT_FALSE(done);
  EXPECT_EQ(done.Failure().Number(), hpp_testing::kNotInitialized);
  EXPECT_EQ(done.Failure().Description(), "Not initialized.");
  EXPECT_STREQ(done.Failure().what(), "Not initialized.");
}

// Publishes an error as another component of the thread might.
void PublishError(const char* description) {
  ICreateErrorInfo* create = nullptr;
  ASSERT_EQ(CreateErrorInfo(&create), S_OK);
  create->SetSource(Text("Another").Get());
  create->SetDescription(Text(description).Get());
  Object<ICreateErrorInfo> owner = Object<ICreateErrorInfo>::Attach(create);
  void* info = nullptr;
  ASSERT_EQ(create->QueryInterface(IID_IErrorInfo, &info), S_OK);
  SetErrorInfo(0, static_cast<IErrorInfo*>(info));
  static_cast<IErrorInfo*>(info)->Release();
}

TEST(HppErrorTest, HasNoTextOfAnEarlierFailure) {
  PublishError("stale");
  const auto object = mirolta::CreateObject<IPexBigNumber>(CLSID_PexBigNumber);
  VARIANT value;
  VariantInit(&value);
  const Result<void> done = mirolta::detail::Call(object.Get(), &IPexBigNumber::get_Value, &value);
  ASSERT_FALSE(done);
  EXPECT_EQ(done.Failure().Number(), E_OUTOFMEMORY);
  EXPECT_EQ(done.Failure().Description(), "");
  EXPECT_EQ(done.Failure().Source(), "");
  EXPECT_STREQ(done.Failure().what(), "status 0x8007000E");
}

TEST(HppErrorTest, ReadsSourceAndDescription) {
  PublishError("described \xC3\xA9");
  const auto object = mirolta::CreateObject<IHashObject>(CLSID_HashObject);
  const Error error = mirolta::detail::ErrorOf(E_FAIL, object.Get(), IID_IHashObject);
  EXPECT_EQ(error.Number(), E_FAIL);
  EXPECT_EQ(error.Source(), "Another");
  EXPECT_EQ(error.Description(), "described \xC3\xA9");
  // The slot is empty then, and of an interface without such texts it is not read.
  EXPECT_EQ(mirolta::detail::ErrorOf(E_FAIL, object.Get(), IID_IHashObject).Description(), "");
  PublishError("of another");
  EXPECT_EQ(mirolta::detail::ErrorOf(E_FAIL, object.Get(), IID_IStream).Description(), "");
  SetErrorInfo(0, nullptr);
}

TEST(HppErrorTest, CopiesWithoutThrowing) {
  static_assert(std::is_nothrow_copy_constructible_v<Error>);
  static_assert(std::is_base_of_v<std::exception, Error>);
  const Error error(E_FAIL, "source", "description");
  const Error copy = error;
  EXPECT_EQ(copy.Source(), "source");
  EXPECT_STREQ(copy.what(), "description");
  EXPECT_STREQ(Error(static_cast<HRESULT>(0x8123ABCDu)).what(), "status 0x8123ABCD");
  EXPECT_STREQ(Error(E_FAIL, "source", "").what(), "status 0x80004005");
}

TEST(HppResultTest, HoldsAValueOrAFailure) {
  Result<std::string> value(std::string("value"));
  ASSERT_TRUE(value.HasValue());
  EXPECT_EQ(*value, "value");
  EXPECT_EQ(value->size(), 5u);
  EXPECT_EQ(value.Value(), "value");
  EXPECT_EQ(value.Failure().Number(), S_OK);
  EXPECT_EQ(std::move(value).Value(), "value");
  const Result<std::string> failure(Error(E_FAIL, "", "described"));
  ASSERT_FALSE(failure);
  EXPECT_EQ(failure.Failure().Number(), E_FAIL);
  try {
    (void)failure.Value();
    ADD_FAILURE() << "nothing was thrown";
  } catch (const std::exception& error) {
    EXPECT_STREQ(error.what(), "described");
  }
  EXPECT_TRUE(Result<void>());
  EXPECT_NO_THROW(Result<void>().Value());
  EXPECT_FALSE(Result<void>(Error(E_FAIL)));
  EXPECT_EQ(hpp_testing::ThrownBy([] { Result<void>(Error(E_FAIL)).Value(); }), E_FAIL);
}

}  // namespace
