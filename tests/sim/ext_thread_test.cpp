#include <thread>

#include "tests/sim/ext_bench.h"

namespace kelpin::sim {
namespace {

using ExtThreads = ExtBench;

TEST_F(ExtThreads, FieldsAreWrittenWhileTheLayoutIsLoadedAgain) {
  Load();
  std::thread loads([this] {
    for (int load = 0; load < 20; ++load) {
      EXPECT_TRUE(book_.LoadLayout(all_));
    }
  });
  // Every entry takes and gives up an e-mail; two entries never have one record.
  std::uint32_t first = kNoRecord;
  std::uint32_t second = kNoRecord;
  for (int round = 0; round < 50; ++round) {
    EXPECT_EQ(book_.WriteTextField(kMail, 1, u"one", first), 0u);
    EXPECT_EQ(book_.WriteTextField(kMail, 5, u"two", second), 0u);
    EXPECT_NE(first, second);
    EXPECT_EQ(ReadText(kMail, 1), u"one");
    EXPECT_EQ(ReadText(kMail, 5), u"two");
    EXPECT_EQ(book_.WriteTextField(kMail, 1, u"", first), 0u);
    EXPECT_EQ(book_.WriteTextField(kMail, 5, u"", second), 0u);
  }
  loads.join();
  EXPECT_EQ(book_.Slot(0, kMail).usedCount, 0u);
  EXPECT_EQ(book_.FirstFreeRecord(0, kMail), 1u);
}

TEST_F(ExtThreads, TwoThreadsNeverTakeOneRecord) {
  Load();
  const auto fill = [this](std::uint32_t location, std::uint32_t& record) {
    for (int round = 0; round < 50; ++round) {
      EXPECT_EQ(book_.WriteTextField(kMail, location, u"x", record), 0u);
      EXPECT_EQ(ReadText(kMail, location), u"x");
      if (round < 49) {
        EXPECT_EQ(book_.WriteTextField(kMail, location, u"", record), 0u);
      }
    }
  };
  std::uint32_t first = kNoRecord;
  std::uint32_t second = kNoRecord;
  std::thread other([&] { fill(1, first); });
  fill(5, second);
  other.join();
  EXPECT_NE(first, second);
  EXPECT_EQ(book_.Slot(0, kMail).usedCount, 2u);
  EXPECT_EQ(Record(1, 1)[0], first);
  EXPECT_EQ(Record(11, 1)[0], second);
}

TEST_F(ExtThreads, ASessionThatIsClosedEndsTheLoad) {
  bench_.radio.SetManual(true);
  std::thread load([this] { EXPECT_FALSE(book_.LoadLayout(all_)); });
  bench_.radio.AwaitCommands(1);
  book_.Close();
  load.join();
  EXPECT_FALSE(book_.Loaded());
}

}  // namespace
}  // namespace kelpin::sim
