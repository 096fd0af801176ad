// Random operations on every sample card against a simple model of its entries.
#include <gtest/gtest.h>

#include <array>
#include <random>

#include "tests/card/ext_card.h"
#include "tests/card/ext_image_check.h"
#include "tests/card/sim_client.h"

namespace kelpin::device::card {
namespace {

using sim::FieldResult;
using sim::FieldSlot;
using sim::kAllFieldSlots;
using sim::kNoRecord;
using sim::NumberField;

constexpr std::uint32_t kRounds = 20;
constexpr std::uint32_t kOperationsInARound = 100;  // on each of five cards
constexpr char16_t kFreeLocation[] = u"!88000345";
constexpr std::uint32_t kLocations = 60;  // that operations go to, spread over the card

bool IsNumber(FieldSlot slot) {
  return slot == FieldSlot::kSecondNumber || slot == FieldSlot::kThirdNumber;
}

// What the extended files say of one entry.
using Fields = std::array<std::u16string, 4>;

class ModelRun {
 public:
  ModelRun(const SampleCard& sample, std::uint32_t seed)
      : sample_(sample), card_(sample.name), random_(seed) {
    Start();
    SimClient sim(stack_->service);
    std::uint32_t used = 0;
    EXPECT_EQ(sim.Status(used, total_), platform::SimResult::kOk);
    fields_.resize(total_ + 1);
    texts_.resize(total_ + 1);
    for (std::uint32_t location = 1; location <= total_; ++location) {
      fields_[location] = Read(location);
      texts_[location] = sim.Text(location);
    }
  }

  void Round() {
    {
      SimClient sim(stack_->service);
      for (std::uint32_t i = 0; i < kOperationsInARound; ++i) Operate(sim);
    }
    const std::vector<std::uint32_t> used = UsedCounts();
    Start();
    ASSERT_EQ(UsedCounts(), used) << "what is free was known without reading it again";
    SimClient sim(stack_->service);
    for (std::uint32_t location = 1; location <= total_; ++location) {
      ASSERT_EQ(Read(location), fields_[location]) << location;
      ASSERT_EQ(sim.Text(location), texts_[location]) << location;
    }
    const ImageCheck check(card_.Image(), sample_);
    ASSERT_EQ(check.dangling, std::vector<std::string>{});
    ASSERT_EQ(check.twice, std::vector<std::string>{});
    ASSERT_EQ(check.orphans, std::vector<std::string>{});
  }

  std::uint32_t Written() const { return written_; }
  std::uint32_t Refused() const { return refused_; }

 private:
  // The program and the driver anew, over the same card.
  void Start() {
    stack_.reset();
    stack_ = std::make_unique<ExtStack>(card_);
  }

  std::vector<std::uint32_t> UsedCounts() const {
    std::vector<std::uint32_t> counts;
    for (std::uint32_t set = 0; set < sim::kPhonebookSets; ++set) {
      for (const FieldSlot slot : kAllFieldSlots) {
        counts.push_back(stack_->book.SlotInUse(set, slot).usedCount);
      }
    }
    return counts;
  }

  std::uint32_t Below(std::uint32_t bound) {
    return std::uniform_int_distribution<std::uint32_t>(0, bound - 1)(random_);
  }

  std::u16string ReadField(FieldSlot slot, std::uint32_t location, std::uint32_t& existing) {
    if (IsNumber(slot)) {
      NumberField field;
      const FieldResult result = stack_->book.ReadNumberField(slot, location, existing, field);
      EXPECT_NE(result, FieldResult::kFailed) << location;
      return field.number;
    }
    std::u16string text;
    const FieldResult result = stack_->book.ReadTextField(slot, location, false, existing, text);
    EXPECT_NE(result, FieldResult::kFailed) << location;
    return text;
  }

  Fields Read(std::uint32_t location) {
    Fields fields;
    for (const FieldSlot slot : kAllFieldSlots) {
      std::uint32_t existing = 0;
      fields[static_cast<std::size_t>(slot)] = ReadField(slot, location, existing);
    }
    return fields;
  }

  // Short, up to the record's length, or long enough for an extension.
  std::u16string RandomNumber() {
    constexpr std::u16string_view kDigits = u"0123456789*#p";
    std::u16string number;
    const bool international = Below(2) == 0;
    if (international) number.push_back(u'+');
    // A '+' is found again before a digit alone.
    number.push_back(static_cast<char16_t>(u'1' + Below(9)));
    const std::uint32_t length = Below(40);
    const std::size_t kinds = international ? 10 : kDigits.size();
    while (number.size() < 1 + length) {
      number.push_back(kDigits[Below(static_cast<std::uint32_t>(kinds))]);
    }
    return number;
  }

  std::u16string RandomText() {
    constexpr std::u16string_view kPlain = u"abcxyz@.-_ 0129{}";
    constexpr std::u16string_view kWide = u"\u0416\u4E2D\u00E9z";
    const std::u16string_view from = Below(3) == 0 ? kWide : kPlain;
    // What fits the shortest field: 18 bytes, eight characters of two bytes.
    std::u16string text(1, from[Below(3)]);
    for (std::uint32_t length = Below(8); length > 0; --length) {
      text.push_back(from[Below(static_cast<std::uint32_t>(from.size()))]);
    }
    return text;
  }

  // Nothing free that the write could have taken.
  bool MayRefuse(FieldSlot slot, std::uint32_t location, const std::u16string& value) {
    std::uint32_t set = 0;
    std::uint32_t record = 0;
    EXPECT_EQ(stack_->book.Place(location, set, record), 1);
    const sim::SlotLayout file = stack_->book.SlotInUse(set, slot);
    if (file.recordCount == 0) return true;
    if (file.fileClass == sim::kClassType2 && stack_->book.FirstFreeRecord(set, slot) == 0) {
      return true;
    }
    std::uint32_t first = 0;
    std::uint32_t second = 0;
    EXPECT_TRUE(stack_->book.GetFreeExtRecords(first, second));
    return IsNumber(slot) && value.size() > 20 && first == 0;
  }

  void WriteField(FieldSlot slot, std::uint32_t location, const std::u16string& value) {
    std::uint32_t existing = kNoRecord;
    std::u16string& known = fields_[location][static_cast<std::size_t>(slot)];
    EXPECT_EQ(ReadField(slot, location, existing), known) << location;
    const std::uint32_t result =
        IsNumber(slot) ? stack_->book.WriteNumberField(slot, location, {value, 0}, false, existing)
                       : stack_->book.WriteTextField(slot, location, value, existing);
    if (result == sim::kFieldWritten) {
      known = value;
      ++written_;
    } else {
      EXPECT_TRUE(MayRefuse(slot, location, value)) << location;
      ++refused_;
    }
  }

  void WriteEntry(SimClient& sim, std::uint32_t location) {
    const std::u16string number = RandomNumber();
    const std::u16string name(1 + Below(10), u'n');
    if (sim.Write(location, name, number) == platform::SimResult::kOk) {
      texts_[location] = name + u"|" + number;
    }
    EXPECT_EQ(sim.Text(location), texts_[location]);
  }

  void Operate(SimClient& sim) {
    const std::uint32_t step = std::max(total_ / kLocations, 1U);
    const std::uint32_t location = 1 + Below(total_ / step) * step;
    const FieldSlot slot = kAllFieldSlots[Below(4)];
    // Fields are those of an entry.
    switch (texts_[location] == kFreeLocation ? 0 : Below(10)) {
      case 0:  // a new entry, or one over another, with every field
        WriteEntry(sim, location);
        if (texts_[location] == kFreeLocation) break;
        for (const FieldSlot each : kAllFieldSlots) {
          WriteField(each, location, IsNumber(each) ? RandomNumber() : RandomText());
        }
        break;
      case 1:  // an entry deleted
        for (const FieldSlot each : kAllFieldSlots) WriteField(each, location, u"");
        if (sim.Delete(location) == platform::SimResult::kOk) texts_[location] = kFreeLocation;
        EXPECT_EQ(sim.Text(location), texts_[location]);
        break;
      case 2:
      case 3:
      case 4:
        WriteField(slot, location, u"");
        break;
      default:
        WriteField(slot, location, IsNumber(slot) ? RandomNumber() : RandomText());
        break;
    }
  }

  const SampleCard& sample_;
  MemoryCard card_;
  std::mt19937 random_;
  std::unique_ptr<ExtStack> stack_;
  std::uint32_t total_ = 0;
  std::vector<Fields> fields_;
  std::vector<std::u16string> texts_;  // name and number, as SimClient::Text
  std::uint32_t written_ = 0;
  std::uint32_t refused_ = 0;
};

class ExtProperty : public ::testing::TestWithParam<std::size_t> {};

TEST_P(ExtProperty, TheCardHoldsWhatWasWrittenAndNothingElse) {
  const SampleCard& sample = SampleCards()[GetParam()];
  SCOPED_TRACE(sample.name);
  ModelRun run(sample, 20240600U + static_cast<std::uint32_t>(GetParam()));
  for (std::uint32_t round = 0; round < kRounds && !::testing::Test::HasFailure(); ++round) {
    SCOPED_TRACE(round);
    run.Round();
  }
  EXPECT_GT(run.Written(), kRounds * kOperationsInARound / 4);
}

INSTANTIATE_TEST_SUITE_P(EverySampleCard, ExtProperty, ::testing::Range<std::size_t>(0, 5));

}  // namespace
}  // namespace kelpin::device::card
