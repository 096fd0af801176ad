// The extended fields from the program's calls down to the card's bytes.
#include <gtest/gtest.h>

#include <array>

#include "tests/card/ext_card.h"
#include "tests/card/ext_image_check.h"
#include "tests/card/hex.h"
#include "tests/card/sim_client.h"

namespace kelpin::device::card {
namespace {

using sim::FieldResult;
using sim::FieldSlot;
using sim::kNoRecord;
using sim::NumberField;

constexpr char16_t kLong[] = u"+123456789012345678907654321";
constexpr char kUsimFolder[] = "3F00/7F10/5F3A/";

std::u16string Number(sim::RilExtPhonebook& book, FieldSlot slot, std::uint32_t location,
                      std::uint32_t& existing) {
  NumberField field;
  return book.ReadNumberField(slot, location, existing, field) == FieldResult::kRead ? field.number
                                                                                     : u"!";
}

std::u16string Text(sim::RilExtPhonebook& book, FieldSlot slot, std::uint32_t location,
                    std::uint32_t& existing) {
  std::u16string text;
  return book.ReadTextField(slot, location, false, existing, text) == FieldResult::kRead ? text
                                                                                         : u"!";
}

std::vector<std::uint8_t> Bytes(const MemoryCard& card, const std::string& file,
                                std::size_t record) {
  const auto bytes = card.Image().Find(kUsimFolder + file)->content->Record(record);
  return {bytes.begin(), bytes.end()};
}

std::vector<std::uint8_t> Blank(std::size_t length) {
  return std::vector<std::uint8_t>(length, 0xFF);
}

void ExpectSound(const MemoryCard& card, const SampleCard& sample) {
  const ImageCheck check(card.Image(), sample);
  EXPECT_EQ(check.dangling, std::vector<std::string>{});
  EXPECT_EQ(check.twice, std::vector<std::string>{});
  EXPECT_EQ(check.orphans, std::vector<std::string>{});
}

TEST(ExtPhonebookFlow, TheSampleCardsAreSound) {
  for (const SampleCard& sample : SampleCards()) {
    SCOPED_TRACE(sample.name);
    ExpectSound(MemoryCard(sample.name), sample);
  }
}

TEST(ExtPhonebookFlow, TheLayoutIsTheCards) {
  MemoryCard card("usim");
  ExtStack stack(card);
  EXPECT_EQ(stack.book.AdnRecords(), 250u);
  EXPECT_EQ(stack.book.EmailCapacity(), 100u);         // one file for both sets
  EXPECT_EQ(stack.book.SecondNumberCapacity(), 500u);  // one record for every entry
  EXPECT_EQ(stack.book.NumberNameLength(), 14u);
  EXPECT_EQ(stack.book.NumberNameCount(), 10u);
  EXPECT_EQ(stack.book.GroupNameLength(), 16u);
  EXPECT_EQ(stack.book.GroupNameCount(), 10u);
  EXPECT_EQ(stack.book.GroupRecordLength(1), 3u);
  EXPECT_EQ(stack.book.Slot(1, FieldSlot::kEmail).shared, 1u);
  EXPECT_EQ(stack.book.Slot(0, FieldSlot::kEmail).usedCount, 46u);
  EXPECT_EQ(stack.book.Slot(0, FieldSlot::kThirdNumber).usedCount, 19u);
  EXPECT_EQ(stack.book.Slot(1, FieldSlot::kThirdNumber).usedCount, 8u);
  EXPECT_EQ(stack.book.Slot(0, FieldSlot::kNickname).usedCount, 22u);
  EXPECT_EQ(stack.book.Slot(0, FieldSlot::kSecondNumber).fileClass, sim::kClassType1);
  EXPECT_EQ(stack.book.Slot(2, FieldSlot::kEmail).fileClass, sim::kClassNone);
}

TEST(ExtPhonebookFlow, FieldsOfTheSampleAreRead) {
  MemoryCard card("usim");
  ExtStack stack(card);
  std::uint32_t existing = 0;
  EXPECT_EQ(Number(stack.book, FieldSlot::kSecondNumber, 2, existing), u"+496990009331");
  EXPECT_EQ(Number(stack.book, FieldSlot::kThirdNumber, 3, existing), u"+493023125034");
  EXPECT_EQ(existing, 1u);
  EXPECT_EQ(Text(stack.book, FieldSlot::kEmail, 4, existing), u"info@example.org");
  EXPECT_EQ(existing, 1u);
  EXPECT_EQ(Text(stack.book, FieldSlot::kEmail, 3, existing), u"!");
}

TEST(ExtPhonebookFlow, EveryFieldIsWrittenReadBackAndClearedInEverySet) {
  const SampleCard& sample = SampleCards()[0];
  for (const std::uint32_t location : {17u, 499u}) {
    SCOPED_TRACE(location);
    MemoryCard card("usim");
    const std::size_t set = location > 250 ? 1 : 0;
    const std::size_t record = location > 250 ? location - 250 : location;
    std::array<std::uint32_t, 3> existing = {kNoRecord, kNoRecord, kNoRecord};
    {
      ExtStack stack(card);
      SimClient sim(stack.service);
      ASSERT_EQ(sim.Write(location, u"Test", u"123"), platform::SimResult::kOk);
      std::uint32_t none = kNoRecord;
      EXPECT_EQ(
          stack.book.WriteNumberField(FieldSlot::kSecondNumber, location, {kLong, 2}, true, none),
          0u);
      EXPECT_EQ(stack.book.WriteNumberField(FieldSlot::kThirdNumber, location, {kLong, 3}, true,
                                            existing[0]),
                0u);
      EXPECT_EQ(stack.book.WriteTextField(FieldSlot::kEmail, location, u"a@b.c", existing[1]), 0u);
      EXPECT_EQ(stack.book.WriteTextField(FieldSlot::kNickname, location, u"\u0416", existing[2]),
                0u);
      EXPECT_TRUE(stack.book.WriteGroup(location, std::vector<std::uint8_t>{2, 1}));
    }
    ExpectSound(card, sample);
    // Records 1 to 4 are used on the sample; digits 7654321 are the rest.
    EXPECT_EQ(Bytes(card, "4F80", 5), Hex("0204674523F1FFFFFFFFFFFFFF"));
    EXPECT_EQ(Bytes(card, "4F80", 6), Hex("0204674523F1FFFFFFFFFFFFFF"));
    EXPECT_EQ(Bytes(card, set == 0 ? "4F40" : "4F41", record),
              Hex("020B9121436587092143658709FF05"));
    EXPECT_EQ(Bytes(card, set == 0 ? "4F48" : "4F49", existing[0]),
              Hex("030B9121436587092143658709FF06FFFF"));
    std::vector<std::uint8_t> mail = Hex("6100622E63");
    mail.resize(42, 0xFF);
    EXPECT_EQ(Bytes(card, "4F50", existing[1]), mail);
    std::vector<std::uint8_t> nickname = Hex("800416");
    nickname.resize(20, 0xFF);
    EXPECT_EQ(Bytes(card, set == 0 ? "4F58" : "4F59", existing[2]), nickname);
    EXPECT_EQ(Bytes(card, set == 0 ? "4F60" : "4F61", record),
              (std::vector<std::uint8_t>{static_cast<std::uint8_t>(existing[1]),
                                         static_cast<std::uint8_t>(existing[0]),
                                         static_cast<std::uint8_t>(existing[2])}));
    EXPECT_EQ(Bytes(card, set == 0 ? "4F70" : "4F71", record), Hex("020100"));
    {
      ExtStack stack(card);
      std::uint32_t found = 0;
      EXPECT_EQ(Number(stack.book, FieldSlot::kSecondNumber, location, found), kLong);
      EXPECT_EQ(Number(stack.book, FieldSlot::kThirdNumber, location, found), kLong);
      EXPECT_EQ(found, existing[0]);
      EXPECT_EQ(Text(stack.book, FieldSlot::kEmail, location, found), u"a@b.c");
      EXPECT_EQ(found, existing[1]);
      EXPECT_EQ(Text(stack.book, FieldSlot::kNickname, location, found), u"\u0416");
      EXPECT_EQ(found, existing[2]);
      std::vector<std::uint8_t> groups;
      EXPECT_EQ(stack.book.ReadGroup(location, groups), FieldResult::kRead);
      EXPECT_EQ(groups, (std::vector<std::uint8_t>{2, 1}));

      // Shrink one number, then clear everything.
      std::uint32_t third = existing[0];
      EXPECT_EQ(
          stack.book.WriteNumberField(FieldSlot::kThirdNumber, location, {u"12", 3}, true, third),
          0u);
      EXPECT_EQ(Bytes(card, "4F80", 6), Blank(13));
      std::uint32_t none = kNoRecord;
      EXPECT_EQ(
          stack.book.WriteNumberField(FieldSlot::kSecondNumber, location, {u"", 0}, true, none),
          0u);
      EXPECT_EQ(
          stack.book.WriteNumberField(FieldSlot::kThirdNumber, location, {u"", 0}, true, third),
          0u);
      std::uint32_t mailRecord = existing[1];
      EXPECT_EQ(stack.book.WriteTextField(FieldSlot::kEmail, location, u"", mailRecord), 0u);
      std::uint32_t nickRecord = existing[2];
      EXPECT_EQ(stack.book.WriteTextField(FieldSlot::kNickname, location, u"", nickRecord), 0u);
      EXPECT_TRUE(stack.book.WriteGroup(location, {}));
    }
    ExpectSound(card, sample);
    EXPECT_EQ(Bytes(card, "4F80", 5), Blank(13));
    EXPECT_EQ(Bytes(card, set == 0 ? "4F60" : "4F61", record), Blank(3));
    EXPECT_EQ(Bytes(card, "4F50", existing[1]), Blank(42));
    EXPECT_EQ(Bytes(card, set == 0 ? "4F70" : "4F71", record), Hex("000000"));
  }
}

TEST(ExtPhonebookFlow, ACardWithoutAReferenceFileHasNoExtendedFields) {
  MemoryCard card("sim-250");
  SimService service(card);
  test::Journal journal;
  test::FailPlan failures;
  test::FakeKernel kernel(journal, failures);
  test::FakeDevices devices(journal, failures);
  sim::RilExtPhonebook book(service, kernel, devices);
  ASSERT_TRUE(book.Open(0));
  EXPECT_FALSE(book.LoadLayout({}));
  EXPECT_FALSE(book.IsOpen());
  std::uint32_t existing = 0;
  EXPECT_EQ(Number(book, FieldSlot::kSecondNumber, 1, existing), u"!");
}

}  // namespace
}  // namespace kelpin::device::card
