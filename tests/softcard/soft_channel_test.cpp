#include "device/softcard/soft_channel.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "tests/softcard/card_fixture.h"
#include "tests/softcard/temporary_folder.h"

namespace kelpin::device::softcard {
namespace {

using card::TransportError;

class Listener : public card::CardChannelListener {
 public:
  void CardInserted() override { Add('I'); }
  void CardRemoved() override { Add('R'); }
  void CardReset() override { Add('S'); }
  void CardTouched() override { Add('T'); }

  // Waits until `count` events came; what they were.
  std::string Wait(std::size_t count) {
    const MutexLock hold(lock_);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (events_.size() < count && std::chrono::steady_clock::now() < end) {
      changed_.wait_until(lock_, end);
    }
    return events_;
  }

 private:
  void Add(char event) {
    const MutexLock hold(lock_);
    events_ += event;
    changed_.notify_all();
  }
  Mutex lock_;
  Condition changed_;
  std::string events_ GUARDED_BY(lock_);
};

class SoftChannelTest : public ::testing::Test {
 protected:
  SoftChannelTest() { Put(SmallCard(R"("atr": "3B00", )")); }
  ~SoftChannelTest() override {
    if (channel_) {
      channel_->SetListener(nullptr);
    }
  }

  void Put(const std::string& text) {
    channel_.reset();
    path_ = folder_.Write("card.json", text);
    std::string error;
    channel_ = SoftChannel::Open(path_, error);
    ASSERT_TRUE(channel_) << error;
    channel_->SetListener(&listener_);
  }

  TransportError Connect() { return channel_->Connect(atr_); }

  TransportError Send(const std::string& command) {
    std::vector<std::uint8_t> bytes;
    EXPECT_TRUE(FromHex(command, bytes));
    response_.clear();
    return channel_->Transmit(bytes, response_);
  }

  std::string Say(const std::string& command) {
    EXPECT_EQ(Send(command), TransportError::kNone);
    return ToHex(response_);
  }

  void Go(const std::string& path) {
    for (std::size_t i = 0; i < path.size(); i += 4) {
      EXPECT_EQ(Say("00A4000C02" + path.substr(i, 4)), "9000");
    }
  }

  TemporaryFolder folder_;
  Listener listener_;
  std::string path_;
  std::unique_ptr<SoftChannel> channel_;
  std::vector<std::uint8_t> atr_;
  std::vector<std::uint8_t> response_;
};

constexpr char kWrite[] = "00DC02041058580281FFFFFFFFFFFFFFFFFFFFFFFF";
constexpr char kWritten[] = "58580281FFFFFFFFFFFFFFFFFFFFFFFF9000";
constexpr char kFree[] = "FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF9000";

TEST_F(SoftChannelTest, TheCardAnswersWhenItHasPower) {
  EXPECT_EQ(Send("80F2000C"), TransportError::kReset);
  ASSERT_EQ(Connect(), TransportError::kNone);
  EXPECT_EQ(ToHex(atr_), "3B00");
  EXPECT_EQ(Say("80F2000C"), "9000");
  EXPECT_EQ(channel_->CommandCount(), 1u);
  channel_->Disconnect();
  EXPECT_EQ(Send("80F2000C"), TransportError::kReset);
  EXPECT_EQ(channel_->CommandCount(), 1u);
  EXPECT_EQ(channel_->Description(), "software card " + path_);
}

TEST_F(SoftChannelTest, WhatCannotBeOpenedSaysWhy) {
  std::string error;
  EXPECT_EQ(SoftChannel::Open(path_, error), nullptr);
  EXPECT_NE(error.find("in use by"), std::string::npos);
  EXPECT_EQ(SoftChannel::Open(folder_.Write("bad.json", "{}"), error), nullptr);
  EXPECT_NE(error.find("\"format\" is missing"), std::string::npos) << error;
}

TEST_F(SoftChannelTest, AnUpdateIsInTheFileBeforeItIsAnswered) {
  ASSERT_EQ(Connect(), TransportError::kNone);
  Go("7F106F3A");
  EXPECT_EQ(Say(kWrite), "9000");
  EXPECT_NE(TemporaryFolder::Read(path_).find("58580281FFFFFFFFFFFFFFFFFFFFFFFF"),
            std::string::npos);
  channel_.reset();
  std::string error;
  channel_ = SoftChannel::Open(path_, error);
  ASSERT_TRUE(channel_) << error;
  ASSERT_EQ(Connect(), TransportError::kNone);
  Go("7F106F3A");
  EXPECT_EQ(Say("00B2020410"), kWritten);
}

TEST_F(SoftChannelTest, ADiskThatRefusesIsToldAndTheCardKeepsTheOldRecord) {
  ASSERT_EQ(Connect(), TransportError::kNone);
  Go("7F106F3A");
  TransportError error = TransportError::kNone;
  {
    const FullDisk full;
    error = Send(kWrite);
  }
  EXPECT_EQ(error, TransportError::kStorage);
  EXPECT_EQ(ToHex(response_), "6581");
  EXPECT_NE(channel_->LastError().find("cannot be saved"), std::string::npos);
  EXPECT_EQ(Say("00B2020410"), kFree);
  EXPECT_EQ(Say(kWrite), "9000");  // there is room again
  EXPECT_EQ(Say("00B2020410"), kWritten);
}

TEST_F(SoftChannelTest, AFileThatWentAwayIsNoReaderUntilItIsBack) {
  ASSERT_EQ(Connect(), TransportError::kNone);
  Go("7F106F3A");
  const std::string away = path_ + ".away";
  std::filesystem::rename(path_, away);
  EXPECT_EQ(Send(kWrite), TransportError::kReset);
  EXPECT_EQ(Connect(), TransportError::kNoReader);
  EXPECT_NE(channel_->LastError().find("cannot be read: it is not there"), std::string::npos);
  EXPECT_EQ(channel_->Trouble().find(path_ + ": the card file cannot be read: "), 0u);
  std::filesystem::rename(away, path_);
  ASSERT_EQ(Connect(), TransportError::kNone);
  EXPECT_EQ(channel_->Trouble(), "");
  Go("7F106F3A");
  EXPECT_EQ(Say("00B2020410"), kFree);
}

TEST_F(SoftChannelTest, ResetBehindVoidsSelectionUntilConnect) {
  ASSERT_EQ(Connect(), TransportError::kNone);
  Go("7F106F3A");
  EXPECT_TRUE(channel_->Reset());
  EXPECT_EQ(Send("00B2010410"), TransportError::kReset);
  EXPECT_EQ(Send("00B2010410"), TransportError::kReset);
  EXPECT_EQ(listener_.Wait(1), "S");
  ASSERT_EQ(Connect(), TransportError::kNone);
  EXPECT_EQ(Say("00B2010410"), "6986");
}

TEST_F(SoftChannelTest, ATransactionKeepsOthersOff) {
  EXPECT_EQ(channel_->BeginTransaction(), TransportError::kReset);
  ASSERT_EQ(Connect(), TransportError::kNone);
  EXPECT_EQ(channel_->BeginTransaction(), TransportError::kNone);
  EXPECT_EQ(channel_->BeginTransaction(), TransportError::kNone);
  channel_->EndTransaction();
  EXPECT_FALSE(channel_->Reset());
  EXPECT_EQ(Say("80F2000C"), "9000");
  channel_->EndTransaction();
  EXPECT_TRUE(channel_->Reset());
}

TEST_F(SoftChannelTest, ARemovedCardIsGoneUntilItIsBackAndConnected) {
  ASSERT_EQ(Connect(), TransportError::kNone);
  channel_->Remove();
  EXPECT_EQ(Send("80F2000C"), TransportError::kRemoved);
  EXPECT_EQ(Connect(), TransportError::kNoCard);
  EXPECT_EQ(channel_->BeginTransaction(), TransportError::kRemoved);
  channel_->Insert();
  EXPECT_EQ(Send("80F2000C"), TransportError::kRemoved);
  EXPECT_EQ(Connect(), TransportError::kNone);
  EXPECT_EQ(Say("80F2000C"), "9000");
  EXPECT_EQ(listener_.Wait(2), "RI");
}

TEST_F(SoftChannelTest, AnotherCardCanBePutIn) {
  ASSERT_EQ(Connect(), TransportError::kNone);
  std::string error;
  EXPECT_FALSE(channel_->Insert(folder_.Write("bad.json", "{}"), error));
  EXPECT_EQ(Say("80F2000C"), "9000");  // the slot is as it was
  const std::string other = folder_.Write("other.json", SmallCard(R"("atr": "3B0177", )"));
  ASSERT_TRUE(channel_->Insert(other, error)) << error;
  EXPECT_EQ(Send("80F2000C"), TransportError::kRemoved);
  ASSERT_EQ(Connect(), TransportError::kNone);
  EXPECT_EQ(ToHex(atr_), "3B0177");
  EXPECT_EQ(listener_.Wait(2), "RI");
  EXPECT_TRUE(SoftChannel::Open(path_, error)) << error;  // the first one is free again
}

TEST_F(SoftChannelTest, AFileWrittenBySomebodyElseIsReadAnewAtConnect) {
  ASSERT_EQ(Connect(), TransportError::kNone);
  std::string text = SmallCard();
  text.replace(text.find("4142"), 4, "5A5A");
  folder_.Write("card.json", text);
  ASSERT_EQ(Connect(), TransportError::kNone);
  EXPECT_EQ(listener_.Wait(1), "T");
  Go("7F106F3A");
  EXPECT_EQ(Say("00B2010410").substr(0, 4), "5A5A");
}

TEST_F(SoftChannelTest, AnUpdateNeverOverwritesWhatSomebodyElseWrote) {
  ASSERT_EQ(Connect(), TransportError::kNone);
  Go("7F106F3A");
  std::string text = SmallCard();
  text.replace(text.find("4142"), 4, "5A5A");
  folder_.Write("card.json", text);
  EXPECT_EQ(Send(kWrite), TransportError::kReset);
  EXPECT_EQ(TemporaryFolder::Read(path_), text);
  EXPECT_EQ(listener_.Wait(1).substr(0, 1), "T");
  ASSERT_EQ(Connect(), TransportError::kNone);
  Go("7F106F3A");
  EXPECT_EQ(Say("00B2010410").substr(0, 4), "5A5A");
  EXPECT_EQ(Say("00B2020410"), kFree);
}

TEST_F(SoftChannelTest, AFileThatBecameBrokenIsNoReader) {
  folder_.Write("card.json", "{");
  EXPECT_EQ(Connect(), TransportError::kNoReader);
  EXPECT_NE(channel_->LastError().find("this is no JSON"), std::string::npos);
}

TEST_F(SoftChannelTest, TheTraceMasksPins) {
  std::vector<std::string> lines;
  channel_->SetTrace([&lines](std::string_view line) { lines.emplace_back(line); });
  ASSERT_EQ(Connect(), TransportError::kNone);
  EXPECT_EQ(Say("A020000208"
                "3536373839FFFFFF"),
            "9000");
  EXPECT_EQ(Say("002000810835363738FFFFFFFF00"), "63C2");
  EXPECT_EQ(Say("00200081"), "63C2");
  EXPECT_EQ(Say("00A40004023F00").substr(0, 2), "61");
  channel_->SetTrace(nullptr);
  Say("80F2000C");
  ASSERT_EQ(lines.size(), 8u);
  EXPECT_EQ(lines[0], "> A020000208****************");
  EXPECT_EQ(lines[1], "< 9000");
  EXPECT_EQ(lines[2], "> 0020008108******************");
  EXPECT_EQ(lines[4], "> 00200081");
  EXPECT_EQ(lines[6], "> 00A40004023F00");
}

TEST_F(SoftChannelTest, TriesLostSurvivePowerOffAndTheProgram) {
  ASSERT_EQ(Connect(), TransportError::kNone);
  EXPECT_EQ(Say("002000810835363738FFFFFFFF"), "63C2");
  channel_.reset();
  std::string error;
  channel_ = SoftChannel::Open(path_, error);
  ASSERT_TRUE(channel_) << error;
  ASSERT_EQ(Connect(), TransportError::kNone);
  EXPECT_EQ(Say("00200081"), "63C2");
}

TEST_F(SoftChannelTest, ACommandTakesItsTimeAndARemovalEndsIt) {
  Put(SmallCard(R"("delayMs": 30, )"));
  ASSERT_EQ(Connect(), TransportError::kNone);
  const auto before = std::chrono::steady_clock::now();
  EXPECT_EQ(Say("80F2000C"), "9000");
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(30));
  // Ended by the removal, or the test runs into its time limit.
  Put(SmallCard(R"("delayMs": 60000, )"));
  ASSERT_EQ(Connect(), TransportError::kNone);
  std::thread person([this] {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    channel_->Remove();
  });
  EXPECT_EQ(Send("80F2000C"), TransportError::kRemoved);
  person.join();
  EXPECT_EQ(channel_->CommandCount(), 0u);
}

TEST_F(SoftChannelTest, ManyThreadsMayTalkAndOneMayPullTheCard) {
  Put(SmallCard(R"("delayMs": 1, )"));
  ASSERT_EQ(Connect(), TransportError::kNone);
  std::atomic<int> answered = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i) {
    threads.emplace_back([this, &answered] {
      const std::vector<std::uint8_t> command = {0x80, 0xF2, 0x00, 0x0C};
      for (int n = 0; n < 20; ++n) {
        std::vector<std::uint8_t> response;
        if (channel_->Transmit(command, response) == TransportError::kNone) {
          EXPECT_EQ(ToHex(response), "9000");
          ++answered;
        }
      }
    });
  }
  threads.emplace_back([this] {
    std::vector<std::uint8_t> atr;
    for (int n = 0; n < 5; ++n) {
      channel_->Remove();
      channel_->Insert();
      EXPECT_EQ(channel_->Connect(atr), TransportError::kNone);
      channel_->Reset();
      EXPECT_EQ(channel_->Connect(atr), TransportError::kNone);
    }
  });
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(channel_->CommandCount(), static_cast<std::uint64_t>(answered.load()));
  ASSERT_EQ(Connect(), TransportError::kNone);
  EXPECT_EQ(Say("80F2000C"), "9000");
}

}  // namespace
}  // namespace kelpin::device::softcard
