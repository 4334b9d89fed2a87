// The streams of files that scripts open.
#include "files/file_stream.h"

#include <gtest/gtest.h>

#include "temporary_folder.h"
#include "values/text_encoding.h"

namespace mirolta::host {
namespace {

TEST(FileStream, ItsStatisticsNameTheScriptsFile) {
  const test::TemporaryFolder folder;
  const std::string name = folder.File("caf\xC3\xA9");
  OwnedReference<IStream> stream;
  ASSERT_EQ(OpenFileStream(name, {.access = STGM_WRITE, .makes_file = true}, false, &stream), S_OK);
  STATSTG statistics = {};
  ASSERT_EQ(stream->Stat(&statistics, STATFLAG_DEFAULT), S_OK);
  ASSERT_NE(statistics.pwcsName, nullptr);
  EXPECT_EQ(Units(statistics.pwcsName), UnitsFromEngine(name));
  CoTaskMemFree(statistics.pwcsName);
}

}  // namespace
}  // namespace mirolta::host
