// The byte queue against a vector with the same rule of growth.
#include <algorithm>
#include <cstring>

#include "byte_buffer.h"
#include "fuzz_input.h"

using namespace mirolta;
using namespace mirolta::fuzz;

namespace {

struct Model {
  Bytes content;
  uint32_t maximum = 0;

  void Construct(uint32_t limit, uint32_t step) {
    content.clear();
    step = std::max(step, 256u);
    maximum = (std::max(step, limit) / step + 1) * step;
  }
  bool Append(const Bytes& bytes) {
    if (content.size() + bytes.size() > maximum) return false;
    content.insert(content.end(), bytes.begin(), bytes.end());
    return true;
  }
  Bytes Take(uint32_t count) {
    const size_t taken = std::min<size_t>(count, content.size());
    const Bytes bytes(content.begin(), content.begin() + static_cast<std::ptrdiff_t>(taken));
    content.erase(content.begin(), content.begin() + static_cast<std::ptrdiff_t>(taken));
    return bytes;
  }
  int32_t Find(const Bytes& pattern) const {
    for (size_t at = 0; at + pattern.size() < content.size(); ++at) {
      if (std::equal(pattern.begin(), pattern.end(),
                     content.begin() + static_cast<std::ptrdiff_t>(at))) {
        return static_cast<int32_t>(at);
      }
    }
    return -1;
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzInput in(data, size);
  ByteBuffer buffer;
  Model model;
  model.Construct(0, 0);
  while (!in.IsEmpty()) {
    switch (in.Byte() % 9) {
      case 0: {
        const uint32_t limit = in.Word();
        const uint32_t step = in.Byte() * 8u;
        buffer.Reinit(limit, step);
        model.Construct(limit, step);
        break;
      }
      case 1: {
        const Bytes bytes = in.Some(600);
        const uint32_t added = buffer.Append(bytes.data(), static_cast<uint32_t>(bytes.size()));
        FUZZ_CHECK(added == (model.Append(bytes) ? bytes.size() : 0));
        break;
      }
      case 2: {
        const Bytes bytes(in.Below(2000), in.Byte());
        const uint32_t added =
            buffer.AppendFill(bytes.empty() ? 0 : bytes[0], static_cast<uint32_t>(bytes.size()));
        FUZZ_CHECK(added == (model.Append(bytes) ? bytes.size() : 0));
        break;
      }
      case 3: {
        const Bytes bytes = in.Some(600);
        const uint32_t count = static_cast<uint32_t>(bytes.size());
        uint8_t* const room = buffer.ReserveTail(count);
        const bool fits = model.content.size() + count <= model.maximum;
        FUZZ_CHECK((room != nullptr) == fits);
        if (!fits) break;
        if (count != 0) std::memcpy(room, bytes.data(), count);
        FUZZ_CHECK(buffer.Commit(count) == count);
        model.Append(bytes);
        break;
      }
      case 4: {
        Bytes place(in.Below(700));
        const Bytes expected = model.Take(static_cast<uint32_t>(place.size()));
        const uint32_t taken = buffer.Take(place.data(), static_cast<uint32_t>(place.size()));
        FUZZ_CHECK(taken == expected.size());
        FUZZ_CHECK(std::equal(expected.begin(), expected.end(), place.begin()));
        break;
      }
      case 5: {
        const uint32_t count = in.Below(700);
        FUZZ_CHECK(buffer.Consume(count) == model.Take(count).size());
        break;
      }
      case 6: {
        const Bytes pattern = in.Some(5);
        if (pattern.empty()) break;
        FUZZ_CHECK(buffer.Find(pattern.data(), static_cast<uint32_t>(pattern.size())) ==
                   model.Find(pattern));
        break;
      }
      case 7: {  // bytes of the buffer itself
        const uint32_t count = in.Below(600);
        if (count > buffer.Length()) break;
        const Bytes part(buffer.Data(), buffer.Data() + count);
        const uint32_t added = buffer.Append(buffer.Data(), count);
        FUZZ_CHECK(added == (model.Append(part) ? count : 0));
        break;
      }
      default:
        if (in.Byte() % 2 != 0) {
          buffer.Clear();
        } else {
          buffer.Reset();
        }
        model.content.clear();
        break;
    }
    FUZZ_CHECK(buffer.Length() == model.content.size());
    FUZZ_CHECK(buffer.Capacity() <= buffer.Maximum() && buffer.Maximum() == model.maximum);
    FUZZ_CHECK(model.content.empty() ||
               std::memcmp(buffer.Data(), model.content.data(), model.content.size()) == 0);
  }
  return 0;
}
