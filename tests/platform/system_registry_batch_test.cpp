// Batches: changes of one thread that take effect together.
#include <dlfcn.h>
#include <sys/stat.h>

#include <atomic>
#include <thread>

#include "all_at_once.h"
#include "portable/registry_mode.h"
#include "portable/test_hooks.h"
#include "registry_support.h"

namespace {

std::atomic<int> syncs{0};

}  // namespace

// Intercepts the runtime's calls.
extern "C" __attribute__((visibility("default"))) int fsync(int file) {
  static auto* const next = reinterpret_cast<int (*)(int)>(dlsym(RTLD_NEXT, "fsync"));
  ++syncs;
  return next(file);
}

namespace mirolta {
namespace {

using RegistryBatch = SharedRegistryTest;

TEST_F(RegistryBatch, ABatchIsOneChange) {
  { const Key key(u"Before"); }
  const std::string before = ReadFile(file_);
  EXPECT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
  EXPECT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
  { const Key key(u"Batch"); }
  EXPECT_EQ(OpenStatus(u"Batch"), ERROR_SUCCESS);
  EXPECT_EQ(ReadFile(file_), before);
  EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_SUCCESS);
  EXPECT_EQ(ReadFile(file_), before);
  EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_SUCCESS);
  EXPECT_NE(ReadFile(file_), before);
  EXPECT_EQ(OpenStatus(u"Batch"), ERROR_SUCCESS);
  EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_INVALID_PARAMETER);
}

TEST_F(RegistryBatch, ABatchIsWrittenOnce) {
  syncs = 0;
  EXPECT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
  for (int i = 0; i < 100; ++i) {
    const Key key(u"K" + Wide(std::to_string(i)));
    SetText(key, nullptr, u"x");
  }
  EXPECT_EQ(syncs, 0);
  EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_SUCCESS);
  EXPECT_EQ(syncs, 1);
  // One that changes nothing is not written.
  EXPECT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
  { const Key key(u"K1"); }
  EXPECT_EQ(SetText(Key(u"K2"), nullptr, u"x"), ERROR_SUCCESS);
  EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_SUCCESS);
  EXPECT_EQ(syncs, 1);
}

TEST_F(RegistryBatch, ADiscardedBatchChangesNothing) {
  { const Key key(u"Before"); }
  const std::string before = ReadFile(file_);
  MiroltaRegistryDiscard();  // there is none
  ASSERT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
  ASSERT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
  { const Key key(u"Batch"); }
  EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, u"Before"), ERROR_SUCCESS);
  MiroltaRegistryDiscard();
  EXPECT_EQ(OpenStatus(u"Batch"), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(OpenStatus(u"Before"), ERROR_SUCCESS);
  EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(ReadFile(file_), before);
  // The next one is not affected.
  ASSERT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
  { const Key key(u"Next"); }
  EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_SUCCESS);
  EXPECT_EQ(SubkeysOf(HKEY_CLASSES_ROOT), (Names{"Before", "Next"}));
}

TEST_F(RegistryBatch, ABatchIsItsThreads) {
  ASSERT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
  { const Key key(u"Mine"); }
  std::thread([&] {
    EXPECT_EQ(OpenStatus(u"Mine"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_INVALID_PARAMETER);
    { const Key key(u"Yours"); }  // written at once
    EXPECT_NE(ReadFile(file_).find("Yours"), std::string::npos);
    EXPECT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
    { const Key key(u"Second"); }
    EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_SUCCESS);
    EXPECT_NE(ReadFile(file_).find("Second"), std::string::npos);
    EXPECT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
    { const Key key(u"Lost"); }
  }).join();                                              // within its batch
  EXPECT_EQ(OpenStatus(u"Yours"), ERROR_FILE_NOT_FOUND);  // the batch sees what it began with
  EXPECT_EQ(ReadFile(file_).find("Mine"), std::string::npos);
  EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_SUCCESS);
  for (const auto* name : {u"Mine", u"Yours", u"Second"}) {
    EXPECT_EQ(OpenStatus(name), ERROR_SUCCESS) << Narrow(name);
  }
  EXPECT_EQ(OpenStatus(u"Lost"), ERROR_FILE_NOT_FOUND);
}

// Whatever others have written meanwhile, a batch's changes are made on it.
TEST_F(RegistryBatch, BatchesMerge) {
  for (const auto* path : {u"Gone\\Below", u"Kept\\Below", u"Set", u"Emptied"}) {
    const Key key(path);
  }
  const Key emptied(u"Emptied");
  SetText(emptied, u"v", u"old");
  const Key set(u"Set");
  SetText(set, u"v", u"old");
  ASSERT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
  EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, u"Gone\\Below"), ERROR_SUCCESS);
  EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, u"Gone"), ERROR_SUCCESS);
  EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, u"Kept\\Below"), ERROR_SUCCESS);
  EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, u"Kept"), ERROR_SUCCESS);
  EXPECT_EQ(SetText(set, u"v", u"old"), ERROR_SUCCESS);  // unchanged, but part of the batch
  EXPECT_EQ(RegDeleteValueW(emptied, u"v"), ERROR_SUCCESS);
  { const Key key(u"Made"); }
  std::thread([] {
    EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, u"Gone\\Below"), ERROR_SUCCESS);
    { const Key key(u"Kept\\Other"); }
    EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, u"Set"), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, u"Emptied"), ERROR_SUCCESS);
    SetText(Key(u"Made"), u"v", u"theirs");
  }).join();
  ASSERT_EQ(MiroltaRegistryBatch(FALSE), ERROR_SUCCESS);
  EXPECT_EQ(SubkeysOf(HKEY_CLASSES_ROOT), (Names{"Kept", "Made", "Set"}));
  EXPECT_EQ(SubkeysOf(Key(u"Kept")), (Names{"Other"}));
  EXPECT_EQ(GetText(Key(u"Made"), u"v"), u"theirs");
  EXPECT_EQ(GetText(Key(u"Set"), u"v"), u"old");
}

TEST_F(RegistryBatch, ABatchInMemoryIsItsThreadsToo) {
  ASSERT_EQ(MiroltaRegistryInMemory(TRUE), ERROR_SUCCESS);
  ASSERT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
  { const Key key(u"Mine"); }
  std::thread([] {
    EXPECT_EQ(OpenStatus(u"Mine"), ERROR_FILE_NOT_FOUND);
    const Key key(u"Yours");
  }).join();
  EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_SUCCESS);
  EXPECT_EQ(SubkeysOf(HKEY_CLASSES_ROOT), (Names{"Yours", "Mine"}));
  EXPECT_EQ(MiroltaRegistryInMemory(FALSE), ERROR_SUCCESS);
  EXPECT_FALSE(std::filesystem::exists(file_));
}

TEST_F(RegistryBatch, ABatchThatCannotBeWrittenChangesNothing) {
  { const Key key(u"Before"); }
  const std::string before = ReadFile(file_);
  ASSERT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
  { const Key key(u"K"); }
  ASSERT_EQ(mkdir((file_ + ".new").c_str(), 0755), 0);
  EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_CANTWRITE);
  EXPECT_EQ(OpenStatus(u"K"), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(ReadFile(file_), before);
  EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_INVALID_PARAMETER);  // it is over
  EXPECT_FALSE(IsLocked());
  // Nor one for whose writing memory is short.
  ASSERT_EQ(rmdir((file_ + ".new").c_str()), 0);
  LONG allowed = 0;
  for (;; ++allowed) {
    ASSERT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
    { const Key key(u"K\\L"); }
    SetText(Key(u"K"), u"v", u"text");
    MiroltaFailAllocationAfter(allowed);
    const LONG error = MiroltaRegistryBatch(FALSE);
    const bool failed = MiroltaAllocationHasFailed();
    MiroltaFailAllocationAfter(-1);
    ASSERT_EQ(error, failed ? ERROR_OUTOFMEMORY : ERROR_SUCCESS) << allowed;
    if (!failed) break;
    ASSERT_EQ(ReadFile(file_), before) << allowed;
    ASSERT_EQ(OpenStatus(u"K"), ERROR_FILE_NOT_FOUND) << allowed;
  }
  EXPECT_GT(allowed, 10);
}

// No lock is held over what others do between the changes of a batch.
TEST_F(RegistryBatch, ABatchLocksNobodyOut) {
  ASSERT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
  { const Key key(u"Mine"); }
  EXPECT_FALSE(IsLocked());
  // Another process begins and ends one meanwhile.
  EXPECT_TRUE(test::Succeeds(test::Fork([] {
    std::thread([] {
      MiroltaRegistryBatch(TRUE);
      { const Key key(u"Theirs"); }
      MiroltaRegistryBatch(FALSE);
    }).join();
    return true;
  })));
  EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_SUCCESS);
  EXPECT_EQ(SubkeysOf(HKEY_CLASSES_ROOT), (Names{"Theirs", "Mine"}));
}

TEST_F(RegistryBatch, WritersAndBatchesOfManyThreadsLoseNothing) {
  test::AllAtOnce(6, [](unsigned t) {
    const std::u16string own = u"T" + Wide(std::to_string(t));
    for (unsigned i = 0; i < 10; ++i) {
      const bool batch = (t + i) % 2 == 0;
      if (batch) {
        EXPECT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
      }
      {
        const Key key(own + u"\\K" + Wide(std::to_string(i)));
        EXPECT_EQ(SetText(key, nullptr, own), ERROR_SUCCESS);
        EXPECT_EQ(GetText(key, nullptr), own);
      }
      if (batch) {
        EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_SUCCESS);
      }
    }
  });
  for (int t = 0; t < 6; ++t) {
    EXPECT_EQ(SubkeysOf(Key(u"T" + Wide(std::to_string(t)))).size(), 10u);
  }
}

}  // namespace
}  // namespace mirolta
