#include "device/card/file_info.h"

#include <gtest/gtest.h>

#include "device/card/tlv.h"
#include "tests/card/hex.h"

namespace kelpin::device::card {
namespace {

struct Fcp {
  const char* why;
  const char* hex;
  FileStructure structure;
  std::uint16_t fileId;
  std::uint32_t size;
  int recordLength;
  int recordCount;
};

// As a card in the field answers.
constexpr Fcp kFcps[] = {
    {"DF TELECOM", "62248202782183027F108A01058B032F0601C61290017883010183010A83010C83010D83010E",
     FileStructure::kDirectory, 0x7F10, 0, 0, 0},
    {"EF_PBR", "62198205422100640183024F308A01058B036F0609800200648800",
     FileStructure::kLinearFixed, 0x4F30, 100, 100, 1},
    {"EF_ADN with a link to the GSM file",
     "622282054221001EFA83024F3AA50691047F106F3A8A01058B036F060B80021D4C880150",
     FileStructure::kLinearFixed, 0x4F3A, 7500, 30, 250},
    {"EF_IAP", "621A820542210002FA83024F158A01058B036F0605800201F4880160",
     FileStructure::kLinearFixed, 0x4F15, 500, 2, 250},
    {"EF_EXT1", "621A82054221000D0A83024F128A01058B036F060580020082880118",
     FileStructure::kLinearFixed, 0x4F12, 130, 13, 10},
    {"EF_PSC", "62178202412183024F228A01058B036F060780020004880168", FileStructure::kTransparent,
     0x4F22, 4, 0, 0},
    {"the length in the 81 form", "6281198205422100640183024F308A01058B036F0609800200648800",
     FileStructure::kLinearFixed, 0x4F30, 100, 100, 1},
    {"tags in another order and unknown ones",
     "621F 88015083024F3A 8B036F060B C7021122 8A0105 80021D4C 82054221001EFA",
     FileStructure::kLinearFixed, 0x4F3A, 7500, 30, 250},
    {"a record count of 255: 254 can be named", "620B 82054221001EFF 83024F3A",
     FileStructure::kLinearFixed, 0x4F3A, 7620, 30, 254},
};

TEST(FileInfo, FcpTemplatesFromTheFieldAreRead) {
  for (const Fcp& fcp : kFcps) {
    SCOPED_TRACE(fcp.why);
    const auto info = ParseFileInfo(Hex(fcp.hex));
    ASSERT_TRUE(info);
    EXPECT_EQ(info->structure, fcp.structure);
    EXPECT_EQ(info->fileId, fcp.fileId);
    EXPECT_EQ(info->size, fcp.size);
    EXPECT_EQ(info->recordLength, fcp.recordLength);
    EXPECT_EQ(info->recordCount, fcp.recordCount);
    EXPECT_FALSE(info->invalidated);
  }
}

TEST(FileInfo, AnswersThatSayTooLittleAreNone) {
  for (const char* hex : {"", "62", "6200", "6203800200", "62048202422183", "620782054221000000",
                          "62078205422101 0001", "0000", "000000000000", "62048201 3983"}) {
    SCOPED_TRACE(hex);
    EXPECT_FALSE(ParseFileInfo(Hex(hex)));
  }
}

TEST(FileInfo, ASecondDescriptorDoesNotCount) {
  const auto info = ParseFileInfo(Hex("620F 82054221001EFA 82024121 83024F3A"));
  ASSERT_TRUE(info);
  EXPECT_EQ(info->structure, FileStructure::kLinearFixed);
  EXPECT_EQ(info->recordLength, 30);
}

TEST(FileInfo, ADeactivatedFileIsInvalidated) {
  const auto info = ParseFileInfo(Hex("620E 82054221001EFA 83024F3A 8A0104"));
  ASSERT_TRUE(info);
  EXPECT_TRUE(info->invalidated);
}

// TS 51.011 9.2.1: EF 6F3A, 280 bytes in records of 28.
constexpr char kGsmAdn[] = "0000 0118 6F3A 04 00 11F022 01 02 01 1C";

TEST(FileInfo, AGsmAnswerIsReadAndMade) {
  const auto info = ParseFileInfo(Hex(kGsmAdn));
  ASSERT_TRUE(info);
  EXPECT_EQ(info->structure, FileStructure::kLinearFixed);
  EXPECT_EQ(info->fileId, 0x6F3A);
  EXPECT_EQ(info->size, 280U);
  EXPECT_EQ(info->recordLength, 28);
  EXPECT_EQ(info->recordCount, 10);

  const auto made = GsmResponse(*info);
  // All but the access conditions, which we do not know.
  EXPECT_EQ(ToHex({made.begin(), made.end()}),
            "000001186F3A0400000000"
            "01"
            "02"
            "01"
            "1C");
}

TEST(FileInfo, AGsmAnswerForACyclicOrTransparentOrInvalidatedFile) {
  const auto cyclic = ParseFileInfo(Hex("0000 0078 6F44 04 40 11F022 01 02 03 0C"));
  ASSERT_TRUE(cyclic);
  EXPECT_EQ(cyclic->structure, FileStructure::kCyclic);
  EXPECT_EQ(cyclic->recordCount, 10);
  EXPECT_EQ(GsmResponse(*cyclic)[13], 0x03);
  const auto transparent = ParseFileInfo(Hex("0000 000A 2FE2 04 00 0FFFFF 01 02 00 00"));
  ASSERT_TRUE(transparent);
  EXPECT_EQ(transparent->structure, FileStructure::kTransparent);
  EXPECT_EQ(transparent->size, 10U);
  EXPECT_EQ(GsmResponse(*transparent)[13], 0x00);
  const auto invalidated = ParseFileInfo(Hex("0000 0118 6F3A 04 00 11F022 00 02 01 1C"));
  ASSERT_TRUE(invalidated);
  EXPECT_TRUE(invalidated->invalidated);
}

TEST(FileInfo, AGsmAnswerWithARecordLengthOfZeroIsNone) {
  EXPECT_FALSE(ParseFileInfo(Hex("0000 0118 6F3A 04 00 11F022 01 02 01 00")));
}

TEST(FileInfo, AFcpBecomesTheAnswerOfAGsmCard) {
  const auto info = ParseFileInfo(Hex(kFcps[2].hex));
  ASSERT_TRUE(info);
  const auto made = GsmResponse(*info);
  EXPECT_EQ(made[2], 0x1D);
  EXPECT_EQ(made[3], 0x4C);
  EXPECT_EQ(made[14], 30);
}

TEST(PinReference, TheFcpTellsThePinAndWhetherItIsOn) {
  // 7C: the bit of the first reference, 01, is clear.
  const auto off = ParsePinReference(
      Hex("62308202782183023F00A507800171830242788A01058B032F0601C61590017C83010183010A83010B"
          "83010C83010D83010E"));
  ASSERT_TRUE(off);
  EXPECT_EQ(off->reference, 0x01);
  EXPECT_FALSE(off->enabled);
  const auto universal = ParsePinReference(Hex("620E C60C 900160 83010A 950108 830111"));
  ASSERT_TRUE(universal);
  EXPECT_EQ(universal->reference, 0x11);
  EXPECT_TRUE(universal->enabled);  // 60: the second reference's bit is set
  EXPECT_FALSE(ParsePinReference(Hex("6205 8202782183")));
}

TEST(PinReference, AGsmCardTellsTheTriesLeft) {
  // Byte 13: bit 8 clear, CHV1 on; byte 18: initialised, 3 tries.
  const auto pin =
      ParsePinReference(Hex("0000 0000 3F00 01 0000000000 0A 13 04 0A 04 00 83 8A 83 8A 00 00 00"));
  ASSERT_TRUE(pin);
  EXPECT_TRUE(pin->enabled);
  EXPECT_EQ(pin->triesLeft, 3);
  const auto off =
      ParsePinReference(Hex("0000 0000 3F00 01 0000000000 0A 93 04 0A 04 00 83 8A 83 8A 00 00 00"));
  ASSERT_TRUE(off);
  EXPECT_FALSE(off->enabled);
}

TEST(Tlv, LengthsBeyondTheEndAreCutAndPaddingEnds) {
  const auto bytes = Hex("C0 02 4F3A C1 10 01 02");
  TlvReader reader(bytes);
  auto object = reader.Next();
  ASSERT_TRUE(object);
  EXPECT_EQ(object->tag, 0xC0);
  object = reader.Next();
  ASSERT_TRUE(object);
  EXPECT_EQ(object->value.size(), 2U);
  EXPECT_FALSE(reader.Next());
  const auto padded = Hex("C0 00 FF C1 00");
  TlvReader ended(padded);
  EXPECT_TRUE(ended.Next());
  EXPECT_FALSE(ended.Next());
  for (const char* broken : {"C0", "C0 80", "C0 81", "C0 82 01", "C0 83 000001 00"}) {
    const auto data = Hex(broken);
    EXPECT_FALSE(TlvReader(data).Next()) << broken;
  }
}

}  // namespace
}  // namespace kelpin::device::card
