#include "device/card/pbr.h"

#include <gtest/gtest.h>

#include "tests/card/hex.h"

namespace kelpin::device::card {
namespace {

struct File {
  PbrTag tag;
  PbrGroup group;
  std::uint16_t id;
};

void ExpectFiles(const char* hex, std::initializer_list<File> files) {
  SCOPED_TRACE(hex);
  auto record = Hex(hex);
  record.resize(100, 0xFF);
  const auto set = ParsePbrRecord(record);
  ASSERT_TRUE(set);
  ASSERT_EQ(set->files.size(), files.size());
  std::size_t i = 0;
  for (const File& file : files) {
    EXPECT_EQ(set->files[i].tag, file.tag) << i;
    EXPECT_EQ(set->files[i].group, file.group) << i;
    EXPECT_EQ(set->files[i].fileId, file.id) << i;
    ++i;
  }
}

constexpr PbrGroup k1 = PbrGroup::kType1;
constexpr PbrGroup k2 = PbrGroup::kType2;
constexpr PbrGroup k3 = PbrGroup::kType3;

TEST(Pbr, RecordsFromTheFieldAreRead) {
  ExpectFiles(
      "A819 C0034F3A0A C1034F150C C5034F0901 C9034F1605 C4034F1102"
      "A90A CA034F5109 C3034F1904 AA0A C2034F1203 CB034F3D08",
      {{PbrTag::kAdn, k1, 0x4F3A},
       {PbrTag::kIap, k1, 0x4F15},
       {PbrTag::kPbc, k1, 0x4F09},
       {PbrTag::kUid, k1, 0x4F16},
       {PbrTag::kAnr, k1, 0x4F11},
       {PbrTag::kEmail, k2, 0x4F51},
       {PbrTag::kSne, k2, 0x4F19},
       {PbrTag::kExt1, k3, 0x4F12},
       {PbrTag::kCcp1, k3, 0x4F3D}});
  ExpectFiles("A809 C0034F3A04 C9024F80 A905 C5034F60 08 AA08 C2024F4A CB024F5A",
              {{PbrTag::kAdn, k1, 0x4F3A},
               {PbrTag::kUid, k1, 0x4F80},
               {PbrTag::kPbc, k2, 0x4F60},
               {PbrTag::kExt1, k3, 0x4F4A},
               {PbrTag::kCcp1, k3, 0x4F5A}});
  ExpectFiles("A80F C0034F3A01 C5034F0909 C9034F210B AA0E C2034F4A08 C7024F4B CB034F3D0F",
              {{PbrTag::kAdn, k1, 0x4F3A},
               {PbrTag::kPbc, k1, 0x4F09},
               {PbrTag::kUid, k1, 0x4F21},
               {PbrTag::kExt1, k3, 0x4F4A},
               {PbrTag::kAas, k3, 0x4F4B},
               {PbrTag::kCcp1, k3, 0x4F3D}});
}

TEST(Pbr, ATagNamedTwiceIsFoundFirstLastAndByNumber) {
  auto record =
      Hex("A823 C0034F3A0A C1034F1505 C5034F0901 C6034F4C0B CA034F5109 C3034F1904 C9034F1606"
          "A90F C4034F1102 C4034F1307 CA034F1408 AA12 C2034F1203 CB034F3D0C C7024F4B C8024F4D");
  const auto set = ParsePbrRecord(record);
  ASSERT_TRUE(set);
  ASSERT_NE(set->Find(PbrTag::kEmail), nullptr);
  EXPECT_EQ(set->Find(PbrTag::kEmail)->fileId, 0x4F51);
  EXPECT_EQ(set->FindLast(PbrTag::kEmail)->fileId, 0x4F14);
  EXPECT_EQ(set->Find(PbrTag::kAnr, 0)->fileId, 0x4F11);
  EXPECT_EQ(set->Find(PbrTag::kAnr, 1)->fileId, 0x4F13);
  EXPECT_EQ(set->Find(PbrTag::kAnr, 2), nullptr);
  EXPECT_EQ(set->FindLast(PbrTag::kIap)->fileId, 0x4F15);
}

TEST(Pbr, GroupsAndTagsStandInAnyOrder) {
  ExpectFiles(
      "AA05 C2034F1203 A80A C5034F0901 C0034F3A0A",
      {{PbrTag::kExt1, k3, 0x4F12}, {PbrTag::kPbc, k1, 0x4F09}, {PbrTag::kAdn, k1, 0x4F3A}});
}

TEST(Pbr, UnknownTagsAreSkipped) {
  ExpectFiles("A803 010203 A80B CF020000 C0034F3A0A B0021122", {{PbrTag::kAdn, k1, 0x4F3A}});
}

TEST(Pbr, RecordsThatNameNoEntriesAreNone) {
  for (const char* hex : {"", "FFFFFFFF", "00", "A8", "A805", "A805 C1034F150C", "A802 C000",
                          "A803 C0014F", "C0034F3A0A"}) {
    SCOPED_TRACE(hex);
    EXPECT_FALSE(ParsePbrRecord(Hex(hex)));
  }
}

TEST(Pbr, AFileIsThereForOneUseAndEntriesComeFirst) {
  std::vector<PbrSet> sets;
  for (const char* hex : {"A80C C0024F3A C1024F60 C4024F3B A904 CA024F30 AA08 C2024F60 C7024F81",
                          "A80C C0024F3B C1024F61 C4024F41 A904 CA024F24 AA08 C2024F80 C7024F81"}) {
    sets.push_back(ParsePbrRecord(Hex(hex)).value());
  }
  LeaveOutConflicts(sets);
  const auto idsOf = [](const PbrSet& set) {
    std::vector<std::uint16_t> ids;
    for (const PbrFile& file : set.files) ids.push_back(file.fileId);
    return ids;
  };
  // The second set's entries are no numbers of the first; a number's name may belong to both.
  EXPECT_EQ(idsOf(sets[0]),
            (std::vector<std::uint16_t>{0x4F3A, 0x4F60, kNoFileId, kNoFileId, kNoFileId, 0x4F81}));
  EXPECT_EQ(idsOf(sets[1]),
            (std::vector<std::uint16_t>{0x4F3B, 0x4F61, 0x4F41, kNoFileId, 0x4F80, 0x4F81}));
  EXPECT_EQ(sets[0].Find(PbrTag::kEmail), nullptr);
  EXPECT_EQ(sets[0].FindLast(PbrTag::kAnr), nullptr);
}

TEST(Pbr, ALengthBeyondTheRecordEndsWithIt) {
  const auto set = ParsePbrRecord(Hex("A8FF"));
  EXPECT_FALSE(set);
  const auto cut = ParsePbrRecord(Hex("A830 C0034F3A0A C1034F15"));
  ASSERT_TRUE(cut);
  ASSERT_EQ(cut->files.size(), 2U);
  EXPECT_EQ(cut->files[1].fileId, 0x4F15);
}

}  // namespace
}  // namespace kelpin::device::card
