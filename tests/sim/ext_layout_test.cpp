#include "sim/ext_layout.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/sim/bytes.h"

namespace kelpin::sim {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

std::vector<std::uint32_t> Codes(const TypeList& list) {
  return {list.codes.begin(), list.codes.begin() + list.count};
}

TEST(FileCodes, AreThoseOfTheFileCommand) {
  EXPECT_EQ(kReferenceFile, 0u);
  EXPECT_EQ(kGroupNameFile, 4u);
  EXPECT_EQ(kNumberNameFile, 5u);
  EXPECT_EQ(kExtensionFile, 44u);
  EXPECT_EQ(kEntryFile, 50u);
  const std::uint32_t email[] = {2, 12, 22, 32};
  const std::uint32_t nickname[] = {40, 41, 42, 43};
  const std::uint32_t second[] = {6, 16, 26, 36};
  const std::uint32_t third[] = {7, 17, 27, 37};
  const std::uint32_t group[] = {3, 13, 23, 33};
  const std::uint32_t iap[] = {1, 11, 21, 31};
  for (std::uint32_t set = 0; set < 4; ++set) {
    EXPECT_EQ(FieldFileCode(FieldSlot::kEmail, set), email[set]);
    EXPECT_EQ(FieldFileCode(FieldSlot::kNickname, set), nickname[set]);
    EXPECT_EQ(FieldFileCode(FieldSlot::kSecondNumber, set), second[set]);
    EXPECT_EQ(FieldFileCode(FieldSlot::kThirdNumber, set), third[set]);
    EXPECT_EQ(GroupFileCode(set), group[set]);
    EXPECT_EQ(IapFileCode(set), iap[set]);
  }
}

TEST(FileCodes, AreNoneBeyondTheFourthSet) {
  for (const FieldSlot slot : kAllFieldSlots) EXPECT_EQ(FieldFileCode(slot, 4), 0u);
  EXPECT_EQ(GroupFileCode(4), 0u);
  EXPECT_EQ(IapFileCode(0xFFFFFFFF), 0u);
}

TEST(SplitLocation, CountsSetsFromZeroAndRecordsFromOne) {
  const struct {
    std::uint32_t location, set, record;
  } cases[] = {{1, 0, 1}, {250, 0, 250}, {251, 1, 1}, {500, 1, 250}, {501, 2, 1}, {1000, 3, 250}};
  for (const auto& expected : cases) {
    std::uint32_t set = 9;
    std::uint32_t record = 9;
    EXPECT_EQ(SplitLocation(expected.location, 250, set, record), 1);
    EXPECT_EQ(set, expected.set) << expected.location;
    EXPECT_EQ(record, expected.record) << expected.location;
  }
}

TEST(SplitLocation, KnowsNoPlaceForNoLocationAndForAnUnknownSize) {
  std::uint32_t set = 9;
  std::uint32_t record = 8;
  EXPECT_EQ(SplitLocation(0, 250, set, record), 0);
  EXPECT_EQ(SplitLocation(1, 0, set, record), 0);
  EXPECT_EQ(set, 9u);
  EXPECT_EQ(record, 8u);
}

TEST(ReadReference, ResetsTheSetFirst) {
  PhonebookLayout layout;
  SetLayout& set = layout.sets[2];
  set.Slot(FieldSlot::kEmail) = {kClassType2, 30, 5, 2, 1, {0x4F, 0x50}, 1};
  set.Map(FieldSlot::kEmail)[1] = 1;
  set.type1.Append(0);
  set.type2.Append(10);
  ReadReference(Bytes("FF FF FF"), 2, layout);
  for (const FieldSlot slot : kAllFieldSlots) {
    EXPECT_EQ(set.Slot(slot).fileClass, 0xFFFFFFFFu);
    EXPECT_EQ(set.Slot(slot).recordLength, 0u);
    EXPECT_EQ(set.Slot(slot).recordCount, 0u);
    EXPECT_EQ(set.Slot(slot).usedCount, 0u);
    EXPECT_EQ(set.Slot(slot).adnShortFileId, 0xFF);
    EXPECT_THAT(set.Slot(slot).fileId, ElementsAre(0xFF, 0xFF));
    EXPECT_EQ(set.Slot(slot).shared, 0u);
    EXPECT_EQ(set.Map(slot), RecordMap());
  }
  EXPECT_EQ(set.Map(FieldSlot::kEmail).size(), 251u);
  EXPECT_EQ(set.type1.count, 0u);
  EXPECT_EQ(set.type2.count, 0u);
  EXPECT_EQ(set.type1.codes.size(), 13u);
  EXPECT_THAT(set.type1.codes, ::testing::Each(0xFFFFFFFFu));
  EXPECT_THAT(set.type2.codes, ::testing::Each(0xFFFFFFFFu));
}

TEST(ReadReference, ListsTheTypesInTheOrderOfTheRecord) {
  PhonebookLayout layout;
  ReadReference(Bytes("A8 14 C0024F3A C1024F60 C2024F80 C3024F58 C4024F40"
                      "A9 1C C5024F68 C6024F70 C7024F81 C8024F82 C9024F78 CA024F50 CB024F83"),
                0, layout);
  EXPECT_THAT(Codes(layout.sets[0].type1), ElementsAre(0, 1, 2, 3, 4));
  EXPECT_THAT(Codes(layout.sets[0].type2), ElementsAre(5, 6, 7, 8, 9, 10, 11));
}

TEST(ReadReference, FillsTheSlotsOfTheFields) {
  PhonebookLayout layout;
  ReadReference(Bytes("A8 08 C4024F40 C3024F58 A9 08 CA024F50 C4024F48"
                      "A8 05 C0034F3A 07"),
                0, layout);
  const SetLayout& set = layout.sets[0];
  const SlotLayout& second = set.Slot(FieldSlot::kSecondNumber);
  EXPECT_EQ(second.fileClass, 168u);
  EXPECT_THAT(second.fileId, ElementsAre(0x4F, 0x40));
  const SlotLayout& third = set.Slot(FieldSlot::kThirdNumber);
  EXPECT_EQ(third.fileClass, 169u);
  EXPECT_THAT(third.fileId, ElementsAre(0x4F, 0x48));
  EXPECT_EQ(set.Slot(FieldSlot::kEmail).fileClass, 169u);
  EXPECT_THAT(set.Slot(FieldSlot::kEmail).fileId, ElementsAre(0x4F, 0x50));
  EXPECT_EQ(set.Slot(FieldSlot::kNickname).fileClass, 168u);
  EXPECT_THAT(set.Slot(FieldSlot::kNickname).fileId, ElementsAre(0x4F, 0x58));
  // The entry file may come last.
  EXPECT_EQ(set.adnShortFileId, 7);
  for (const FieldSlot slot : kAllFieldSlots) EXPECT_EQ(set.Slot(slot).adnShortFileId, 7);
}

TEST(ReadReference, TwoNumberFilesAreTheSecondAndTheThirdNumber) {
  PhonebookLayout layout;
  ReadReference(Bytes("A9 0C C4024F48 C4024F49 C4024F4A"), 0, layout);
  const SetLayout& set = layout.sets[0];
  EXPECT_THAT(set.Slot(FieldSlot::kSecondNumber).fileId, ElementsAre(0x4F, 0x48));
  EXPECT_THAT(set.Slot(FieldSlot::kThirdNumber).fileId, ElementsAre(0x4F, 0x49));
  // One more keeps its place in the index record.
  EXPECT_THAT(Codes(set.type2), ElementsAre(4, 12, 0xFFFFFFFF));
}

TEST(ReadReference, AFileIdWithoutAShortOneLeavesItUnknown) {
  PhonebookLayout layout;
  ReadReference(Bytes("A8 04 C0024F3A"), 0, layout);
  EXPECT_EQ(layout.sets[0].adnShortFileId, 0xFF);
}

TEST(ReadReference, MarksATypeTwoFileOfTheFirstSetAsShared) {
  PhonebookLayout layout;
  ReadReference(Bytes("A9 08 CA024F50 C4024F48"), 0, layout);
  ReadReference(Bytes("A9 08 CA024F50 C4024F49"), 1, layout);
  EXPECT_EQ(layout.sets[0].Slot(FieldSlot::kEmail).shared, 0u);
  EXPECT_EQ(layout.sets[1].Slot(FieldSlot::kEmail).shared, 1u);
  EXPECT_EQ(layout.sets[1].Slot(FieldSlot::kSecondNumber).shared, 0u);
}

TEST(ReadReference, DoesNotMarkATypeOneFileAsShared) {
  PhonebookLayout layout;
  ReadReference(Bytes("A8 04 CA024F50"), 0, layout);
  ReadReference(Bytes("A8 04 CA024F50"), 1, layout);
  EXPECT_EQ(layout.sets[1].Slot(FieldSlot::kEmail).shared, 0u);
  ReadReference(Bytes("A9 04 CA024F50"), 2, layout);
  EXPECT_EQ(layout.sets[2].Slot(FieldSlot::kEmail).shared, 0u);
}

TEST(ReadReference, WalksTypeThreeBlocksWithoutListingThem) {
  PhonebookLayout layout;
  ReadReference(Bytes("AA 04 C2024F80 A8 04 C0024F3A"), 0, layout);
  EXPECT_THAT(Codes(layout.sets[0].type1), ElementsAre(0));
  EXPECT_EQ(layout.sets[0].type2.count, 0u);
}

TEST(ReadReference, SkipsOtherBytesAndEndsAtPadding) {
  PhonebookLayout layout;
  ReadReference(Bytes("00 12 A8 08 D7024F99 C0024F3A FF A9 04 CA024F50"), 0, layout);
  EXPECT_THAT(Codes(layout.sets[0].type1), ElementsAre(0));
  EXPECT_EQ(layout.sets[0].type2.count, 0u);
}

TEST(ReadReference, SurvivesLengthsThatRunOverTheEnd) {
  PhonebookLayout layout;
  ReadReference(Bytes("A8 7F C0024F3A CA0F4F50"), 0, layout);
  EXPECT_THAT(Codes(layout.sets[0].type1), ElementsAre(0, 10));
  EXPECT_THAT(layout.sets[0].Slot(FieldSlot::kEmail).fileId, ElementsAre(0x4F, 0x50));
  for (const char* record : {"", "A8", "A800", "A801C0", "A802C003", "A803C0034F", "A9FF", "C0",
                             "A900A900", "A804C0000000", "AA81FF", "A8FFC0FF4F"}) {
    ReadReference(Bytes(record), 0, layout);
    EXPECT_EQ(layout.sets[0].Slot(FieldSlot::kEmail).fileClass, 0xFFFFFFFFu) << record;
  }
}

TEST(ReadReference, KeepsNoMoreThanThirteenTypes) {
  ByteVector record = Bytes("A9 50");
  for (int i = 0; i < 20; ++i) {
    for (const std::uint8_t byte : Bytes("C9024F78")) record.push_back(byte);
  }
  PhonebookLayout layout;
  ReadReference(record, 0, layout);
  EXPECT_EQ(layout.sets[0].type2.count, 13u);
  EXPECT_THAT(Codes(layout.sets[0].type2), ElementsAreArray(std::vector<std::uint32_t>(13, 9)));
}

TEST(ReadReference, SurvivesAnyBytes) {
  std::uint32_t state = 12345;
  for (std::uint32_t round = 0; round < 20000; ++round) {
    ByteVector record;
    const std::size_t size = round % 64;
    while (record.size() < size) {
      state = state * 1664525 + 1013904223;
      constexpr std::uint8_t kTags[] = {0xA8, 0xA9, 0xAA, 0xC0, 0xC4, 0xCA, 0xC3, 2};
      const auto byte = static_cast<std::uint8_t>(state >> 24);
      record.push_back(byte % 2 == 0 ? kTags[byte / 2 % 8] : byte);
    }
    PhonebookLayout layout;
    ReadReference(record, round % 5, layout);
    for (const SetLayout& set : layout.sets) {
      ASSERT_LE(set.type1.count, 13u);
      ASSERT_LE(set.type2.count, 13u);
      for (const SlotLayout& slot : set.slots) {
        ASSERT_TRUE(slot.fileClass == kClassType1 || slot.fileClass == kClassType2 ||
                    slot.fileClass == kClassNone);
        ASSERT_TRUE(slot.shared == 0 || slot.fileClass == kClassType2);
      }
    }
  }
}

}  // namespace
}  // namespace kelpin::sim
