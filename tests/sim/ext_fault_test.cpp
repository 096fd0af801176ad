// Every command of every write fails once.
#include <gmock/gmock.h>

#include <functional>

#include "tests/sim/ext_bench.h"

namespace kelpin::sim {
namespace {

constexpr char16_t kLong[] = u"1234567890123456789098765";

class ExtFault : public ExtBench {
 protected:
  // An entry at location 1 with every field, both numbers long; nothing else.
  void FillEntry() {
    const std::uint32_t one = 1;
    SetRecord(1, one, Bytes("01 01 01"));
    SetRecord(6, one, Bytes("00 0B 81 21436587092143658709 FF 01"));
    SetRecord(7, one, Bytes("00 0B 81 21436587092143658709 FF 02 FFFF"));
    SetRecord(44, 1, Bytes("02 01 F7"));
    SetRecord(44, 2, Bytes("02 01 F8"));
    SetRecord(2, one, Bytes("61"));
    SetRecord(40, one, Bytes("62"));
    bench_.radio.SetExtensionBitmap(16, Bytes("C0 00"));
  }

  // Runs `write` with its first, second, … command failing, on the card that `fill` made.
  void FailEach(const std::function<void()>& fill, const std::function<std::uint32_t()>& write,
                std::uint32_t code) {
    for (std::uint32_t call = 1;; ++call) {
      ASSERT_LT(call, 20u);
      SetUp();
      if (fill) fill();
      Load();
      bench_.failures.FailCallOf("RIL_DevSpecific", call);
      const std::uint32_t result = write();
      const bool failed = bench_.failures.Failed();
      bench_.failures.FailCall(0);
      if (!failed) {
        EXPECT_EQ(result, 0u);
        return;
      }
      EXPECT_EQ(result, code) << "command " << call;
      EXPECT_EQ(Sent().size(), call) << "nothing is sent after the failure";
      CheckReferences(call);
    }
  }

  // No entry refers to a free record, no two to one.
  void CheckReferences(std::uint32_t call) {
    std::vector<int> extensions(17, 0);
    const auto refer = [&](const ByteVector& record) {
      if (record[0] == 0xFF || record[14] == 0xFF) return;
      EXPECT_EQ(Record(44, record[14])[0], 2) << "command " << call;
      ++extensions[record[14]];
    };
    for (std::uint32_t entry = 1; entry <= 4; ++entry) {
      refer(Record(6, entry));
      refer(Record(16, entry));
      const ByteVector iap = Record(1, entry);
      const std::uint32_t files[] = {2, 7, 40};
      for (std::size_t i = 0; i < 3; ++i) {
        if (iap[i] == 0xFF) continue;
        EXPECT_NE(Record(files[i], iap[i])[0], 0xFF) << "command " << call;
        if (files[i] == 7) refer(Record(7, iap[i]));
      }
    }
    for (const int references : extensions) EXPECT_LE(references, 1) << "command " << call;
  }
};

TEST_F(ExtFault, NewNumbersLongEnoughForAnExtension) {
  FailEach(
      nullptr, [this] { return WriteNumber(kSecond, 2, kLong, existing_ = kNoRecord); }, 256);
  FailEach(
      nullptr, [this] { return WriteNumber(kThird, 2, kLong, existing_ = kNoRecord); }, 258);
}

TEST_F(ExtFault, NewTexts) {
  FailEach(
      nullptr, [this] { return book_.WriteTextField(kMail, 2, u"x", existing_ = kNoRecord); }, 257);
  FailEach(
      nullptr, [this] { return book_.WriteTextField(kNick, 2, u"x", existing_ = kNoRecord); }, 259);
}

TEST_F(ExtFault, NumbersThatGrowPastTheirRecord) {
  const auto fill = [this] {
    FillEntry();
    SetRecord(6, 1, Bytes("00 02 81 F1"));
    SetRecord(7, 1, Bytes("00 02 81 F1"));
    bench_.radio.SetExtensionBitmap(16, Bytes("00 00"));
  };
  FailEach(
      fill, [this] { return WriteNumber(kSecond, 1, kLong, existing_ = kNoRecord); }, 256);
  FailEach(
      fill, [this] { return WriteNumber(kThird, 1, kLong, existing_ = 1); }, 258);
}

TEST_F(ExtFault, NumbersThatFitTheirRecordAgain) {
  const auto fill = [this] { FillEntry(); };
  FailEach(
      fill, [this] { return WriteNumber(kSecond, 1, u"12", existing_ = kNoRecord); }, 256);
  FailEach(
      fill, [this] { return WriteNumber(kThird, 1, u"12", existing_ = 1); }, 258);
}

TEST_F(ExtFault, FieldsThatAreCleared) {
  const auto fill = [this] { FillEntry(); };
  FailEach(
      fill, [this] { return WriteNumber(kSecond, 1, u"", existing_ = kNoRecord); }, 256);
  FailEach(
      fill, [this] { return WriteNumber(kThird, 1, u"", existing_ = 1); }, 258);
  FailEach(
      fill, [this] { return book_.WriteTextField(kMail, 1, u"", existing_ = 1); }, 257);
  FailEach(
      fill, [this] { return book_.WriteTextField(kNick, 1, u"", existing_ = 1); }, 259);
}

TEST_F(ExtFault, ALoadGoesOnWithoutWhatCannotBeRead) {
  FillEntry();
  for (std::uint32_t call = 1;; ++call) {
    ASSERT_LT(call, 100u);
    if (!book_.IsOpen()) {
      ASSERT_TRUE(book_.Open(0));
    }
    bench_.failures.FailCallOf("RIL_DevSpecific", call);
    EXPECT_EQ(book_.LoadLayout(all_), call != 1);
    EXPECT_EQ(book_.IsOpen(), call != 1);
    if (!bench_.failures.Failed()) break;
  }
  bench_.failures.FailCall(0);
  EXPECT_EQ(ReadText(kMail, 1), u"a");
}

TEST_F(ExtFault, AReadThatFailsLeavesWhatTheCallerHad) {
  FillEntry();
  Load();
  for (const FieldSlot slot : {kSecond, kThird}) {
    for (std::uint32_t call = 1;; ++call) {
      ASSERT_LT(call, 10u);
      bench_.failures.FailCallOf("RIL_DevSpecific", call);
      NumberField field{u"kept", 3};
      const FieldResult result = book_.ReadNumberField(slot, 1, existing_, field);
      if (!bench_.failures.Failed()) {
        EXPECT_EQ(result, FieldResult::kRead);
        break;
      }
      EXPECT_EQ(result, FieldResult::kFailed);
      EXPECT_EQ(field.number, u"kept");
      EXPECT_EQ(field.nameId, 3u);
    }
    bench_.failures.FailCall(0);
  }
}

}  // namespace
}  // namespace kelpin::sim
