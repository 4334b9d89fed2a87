// Any value with any code page: conversions in place equal the copying ones.
#include <cstring>

#include "byte_view.h"
#include "fuzz_values.h"
#include "key_conversion.h"
#include "value_conversion.h"

using namespace mirolta;
using namespace mirolta::fuzz;

namespace {

bool Same(const ByteView& view, const ByteString& bytes) {
  return view.Count() == bytes.Count() &&
         (bytes.Count() == 0 || std::memcmp(view.Data(), bytes.Data(), bytes.Count()) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzInput in(data, size);
  const LONG code_page = NextCodePage(in);
  FuzzValues values;
  const VARIANT value = values.Next(in);
  VARIANT before = value;

  ByteString bytes;
  ByteView view;
  HRESULT status = VariantToBytes(value, code_page, &bytes);
  FUZZ_CHECK(view.Open(value, code_page) == status);
  FUZZ_CHECK(FAILED(status) ? bytes.Count() == 0 : Same(view, bytes));
  status = VariantToByteArrayBytes(value, &bytes);
  FUZZ_CHECK(view.OpenByteArray(value) == status);
  FUZZ_CHECK(FAILED(status) ? bytes.Count() == 0 : Same(view, bytes));
  view.OpenUnresolved(value, code_page);
  view.Close();

  ByteString key;
  status = KeyFromVariant(value, code_page, &key);
  FUZZ_CHECK(!FAILED(status) || !key.IsPresent());
  FUZZ_CHECK(std::memcmp(&before, &value, sizeof value) == 0);

  // Bytes to text, and back where every byte string is a text.
  const Bytes rest = in.Rest();
  BSTR text = nullptr;
  status = BytesToWide(rest.data(), static_cast<uint32_t>(rest.size()), code_page, &text);
  FUZZ_CHECK(status == S_OK && text != nullptr);
  FUZZ_CHECK(WideToBytes(text, code_page, &bytes) == S_OK);
  if (code_page < 0) {
    size_t whole = 0;
    while (whole + 1 < rest.size() && (rest[whole] != 0 || rest[whole + 1] != 0)) whole += 2;
    FUZZ_CHECK(bytes.Count() == whole &&
               (whole == 0 || std::memcmp(bytes.Data(), rest.data(), whole) == 0));
  }
  SysFreeString(text);
  return 0;
}
