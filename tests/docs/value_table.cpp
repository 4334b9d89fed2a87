// Prints the tables of docs/values.md: what the classes make of a value of each automation type.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "big_number_object.h"
#include "fake_object.h"
#include "hash_object.h"
#include "mirolta.h"
#include "symmetric_crypt_object.h"
#include "test_values.h"

namespace mirolta::test {
namespace {

struct Row {
  const char* type;
  const char* example;
  VARIANT value;  // borrowed
};

// Rows owns a value of each automation type.
class Rows {
 public:
  Rows() {
    object_.value = TextValue(OLESTR("abc"));
    bytes_object_.value = BytesValue({0x00, 0xFF});
    without_value_.status = DISP_E_MEMBERNOTFOUND;
    undispatched_.has_dispatch = false;

    Add("VT_EMPTY", "", TestValue());
    Add("VT_NULL", "", TestValue(VT_NULL));
    Number("VT_I1", "-1", VT_I1)->cVal = static_cast<CHAR>(-1);
    Number("VT_I2", "-2", VT_I2)->iVal = -2;
    Number("VT_I4", "255", VT_I4)->lVal = 255;
    Number("VT_I8", "255", VT_I8)->llVal = 255;
    Number("VT_INT", "255", VT_INT)->intVal = 255;
    Number("VT_UI1", "255", VT_UI1)->bVal = 255;
    Number("VT_UI2", "255", VT_UI2)->uiVal = 255;
    Number("VT_UI4", "255", VT_UI4)->ulVal = 255;
    Number("VT_UI8", "255", VT_UI8)->ullVal = 255;
    Number("VT_UINT", "255", VT_UINT)->uintVal = 255;
    Number("VT_R4", "2.5", VT_R4)->fltVal = 2.5F;
    Number("VT_R8", "2.5", VT_R8)->dblVal = 2.5;
    Number("VT_R8", "2^53 + 1, which it cannot hold", VT_R8)->dblVal = 9007199254740992.0;
    Number("VT_CY", "2.5", VT_CY)->cyVal.int64 = 25000;
    TestValue decimal;
    decimal->decVal = {};
    decimal->decVal.scale = 1;
    decimal->decVal.Lo64 = 25;
    V_VT(&decimal) = VT_DECIMAL;
    Add("VT_DECIMAL", "2.5", std::move(decimal));
    Number("VT_DATE", "2026-01-02", VT_DATE)->date = 46024.0;
    Number("VT_BOOL", "true", VT_BOOL)->boolVal = VARIANT_TRUE;
    Number("VT_BOOL", "false", VT_BOOL)->boolVal = VARIANT_FALSE;
    Number("VT_ERROR", "an argument left out", VT_ERROR)->scode = DISP_E_PARAMNOTFOUND;
    Add("VT_BSTR", "`abc`", TextValue(OLESTR("abc")));
    Add("VT_BSTR", "`12` (digits)", TextValue(OLESTR("12")));
    Add("VT_BSTR", "`\u00e9\u20ac` (e acute, euro)", TextValue(OLESTR("\u00E9\u20AC")));
    Add("VT_BSTR", "`a`, zero character, `b`", TextValue(OLESTR("a\0b")));
    Add("VT_BSTR", "empty", TextValue(OLESTR("")));
    Add("VT_ARRAY \\| VT_UI1", "bytes 00 ff", BytesValue({0x00, 0xFF}));
    Add("VT_ARRAY \\| VT_UI1", "no bytes", BytesValue({}));
    Add("VT_ARRAY \\| VT_I2", "1, 2", ArrayValue(VT_I2, 2, {1, 0, 2, 0}));
    Add("VT_ARRAY \\| VT_I4", "1, 2", ArrayValue(VT_I4, 2, {1, 0, 0, 0, 2, 0, 0, 0}));
    Add("VT_ARRAY \\| VT_UI4", "1, 2", ArrayValue(VT_UI4, 2, {1, 0, 0, 0, 2, 0, 0, 0}));
    Add("VT_ARRAY \\| VT_VARIANT", "two empty values", ArrayValue(VT_VARIANT, 2, {}));
    Add("VT_DISPATCH", "its default value is `abc`", ObjectValue(&object_));
    Add("VT_DISPATCH", "its default value is the bytes 00 ff", ObjectValue(&bytes_object_));
    Add("VT_DISPATCH", "without a default value", ObjectValue(&without_value_));
    Add("VT_DISPATCH", "null", TestValue(VT_DISPATCH));
    Add("VT_UNKNOWN", "its default value is `abc`", UnknownValue(&object_));
    Add("VT_UNKNOWN", "without `IDispatch`", UnknownValue(&undispatched_));

    number_ = NumberValue(255);
    text_ = TextValue(OLESTR("abc"));
    array_ = BytesValue({0x00, 0xFF});
    rows_.push_back({"VT_BYREF \\| VT_I4", "255", ReferenceTo(VT_I4, &number_->lVal)});
    rows_.push_back({"VT_BYREF \\| VT_BSTR", "`abc`", ReferenceTo(VT_BSTR, &text_->bstrVal)});
    rows_.push_back({"VT_BYREF \\| VT_ARRAY \\| VT_UI1", "bytes 00 ff",
                     ReferenceTo(VT_ARRAY | VT_UI1, &array_->parray)});
    rows_.push_back({"VT_BYREF \\| VT_VARIANT", "`abc`", ReferenceTo(VT_VARIANT, &text_)});
  }

  const std::vector<Row>& All() const { return rows_; }

 private:
  void Add(const char* type, const char* example, TestValue&& value) {
    owned_.push_back(std::move(value));
    rows_.push_back({type, example, owned_.back()});
  }
  VARIANT* Number(const char* type, const char* example, VARTYPE tag) {
    rows_.push_back({type, example, {}});
    V_VT(&rows_.back().value) = tag;
    return &rows_.back().value;
  }

  FakeObject object_, bytes_object_, without_value_, undispatched_;
  TestValue number_, text_, array_;
  std::vector<TestValue> owned_;
  std::vector<Row> rows_;
};

template <class Interface>
class Object {
 public:
  Object(HRESULT (*create)(IUnknown*, REFIID, void**), REFIID iid) {
    void* out = nullptr;
    if (create(nullptr, iid, &out) != S_OK) std::exit(1);
    object_ = static_cast<Interface*>(out);
  }
  ~Object() { object_->Release(); }
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  Interface* operator->() { return object_; }

 private:
  Interface* object_;
};

std::string StatusText(HRESULT status) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(status));
  return text;
}

std::string BytesText(const Bytes& bytes) {
  return bytes.empty() ? "none" : "`" + HexOf(bytes) + "`";
}

std::string PlainText(const VARIANT& value) {
  if (V_VT(&value) != VT_BSTR) return "none";
  std::string text;
  for (UINT i = 0; i < SysStringLen(value.bstrVal); ++i)
    text += static_cast<char>(value.bstrVal[i]);
  return "`" + text + "`";
}

// Data as a cipher takes it. It is followed by the pad: two pads show where it ends.
std::string DataText(const VARIANT& value, LONG code_page) {
  Bytes results[2];
  for (int pad = 0; pad < 2; ++pad) {
    Object<ISymmetricCryptObject> crypt(CreateSymmetricCryptObject, IID_ISymmetricCryptObject);
    TestValue encrypted, decrypted;
    if (crypt->Init(TextValue(OLESTR("DES"))) != S_OK ||
        crypt->put_Key(TextValue(OLESTR("8 bytes."))) != S_OK || crypt->put_PadType(pad) != S_OK ||
        crypt->put_codePage(code_page) != S_OK) {
      std::exit(1);
    }
    const HRESULT status = crypt->Encrypt(value, VARIANT_TRUE, &encrypted);
    if (FAILED(status)) return StatusText(status);
    if (crypt->Decrypt(encrypted, VARIANT_TRUE, &decrypted) != S_OK) std::exit(1);
    results[pad] = BytesOfArray(decrypted);
  }
  size_t length = results[0].size();
  while (length > 0 && results[0][length - 1] != results[1][length - 1]) --length;
  results[0].resize(length);
  return BytesText(results[0]);
}

std::string KeyText(const VARIANT& value, LONG code_page) {
  Object<IHashObject> hash(CreateHashObject, IID_IHashObject);
  TestValue key;
  if (hash->InitHash(TextValue(OLESTR("SHA256"))->bstrVal) != S_OK ||
      hash->put_codePage(code_page) != S_OK) {
    std::exit(1);
  }
  const HRESULT status = hash->put_Key(value);
  if (FAILED(status)) return StatusText(status);
  if (hash->get_Key(&key) != S_OK) std::exit(1);
  return BytesText(BytesOfArray(key));
}

std::string NumberText(const VARIANT& value, bool is_hexadecimal) {
  Object<IPexBigNumber> number(CreatePexBigNumber, IID_IPexBigNumber);
  const HRESULT status = is_hexadecimal ? number->put_Hex(value) : number->put_Value(value);
  if (FAILED(status)) return StatusText(status);
  LONG order = 0;
  TestValue text;
  if (number->Cmp(NumberValue(0), &order) != S_OK) std::exit(1);
  if (order == 0) return "`0`";
  if (number->get_Value(&text) != S_OK) std::exit(1);
  return PlainText(text);
}

const struct {
  LONG code_page;
  const char* name;
} kCodePages[] = {{65001, "65001 (UTF-8)"}, {1252, "1252"},      {932, "932"},
                  {20127, "20127 (ASCII)"}, {-1, "-1 (UTF-16)"}, {-2, "-2 (UTF-16)"},
                  {99, "99 (unknown)"}};

void PrintBytes(const char* title, const Rows& rows, std::string (*text)(const VARIANT&, LONG)) {
  std::printf("## %s\n\n| type | example |", title);
  for (const auto& column : kCodePages) std::printf(" %s |", column.name);
  std::printf("\n|---|---|");
  for (size_t i = 0; i < sizeof kCodePages / sizeof kCodePages[0]; ++i) std::printf("---|");
  std::printf("\n");
  for (const Row& row : rows.All()) {
    std::printf("| `%s` | %s |", row.type, row.example);
    for (const auto& column : kCodePages) {
      std::printf(" %s |", text(row.value, column.code_page).c_str());
    }
    std::printf("\n");
  }
  std::printf("\n");
}

void PrintNumbers(const Rows& rows) {
  std::printf(
      "## Numbers\n\n| type | example | operand, `Value`, `Binary` | `Hex`, RSA "
      "|\n|---|---|---|---|\n");
  for (const Row& row : rows.All()) {
    std::printf("| `%s` | %s | %s | %s |\n", row.type, row.example,
                NumberText(row.value, false).c_str(), NumberText(row.value, true).c_str());
  }
}

}  // namespace
}  // namespace mirolta::test

int main() {
  const mirolta::test::Rows rows;
  mirolta::test::PrintBytes("Data", rows, mirolta::test::DataText);
  mirolta::test::PrintBytes("Keys", rows, mirolta::test::KeyText);
  mirolta::test::PrintNumbers(rows);
  return 0;
}
