#include <gmock/gmock.h>

#include "tests/sim/ext_bench.h"

namespace kelpin::sim {
namespace {

constexpr char16_t kTwenty[] = u"12345678901234567890";
constexpr char16_t kThirtyFive[] = u"12345678901234567890987654321012345";
constexpr char kTwentyBcd[] = "21436587092143658709";

class ExtNumberField : public ExtBench {
 protected:
  void SetUp() override {
    ExtBench::SetUp();
    Load();
  }
};

TEST_F(ExtNumberField, ATypeOneNumberGoesToTheEntrysOwnRecord) {
  EXPECT_EQ(WriteNumber(kSecond, 6, u"1234567890", existing_), 0u);
  EXPECT_EQ(Sent(), (Strings{"read 16 2", "write 16 2"}));
  EXPECT_EQ(BlockOf("write 16 2"),
            Block({128, 15, 5, 16, 2, 4, 15, 15}, Bytes("00 06 81 2143658709 FFFFFFFFFF FF FF")));
  EXPECT_EQ(existing_, kNoRecord);
  EXPECT_EQ(ReadNumber(kSecond, 6), u"1234567890");
}

TEST_F(ExtNumberField, LocationsWrapAtTheSetsSize) {
  EXPECT_EQ(WriteNumber(kSecond, 4, u"1", existing_), 0u);
  EXPECT_EQ(WriteNumber(kSecond, 5, u"2", existing_), 0u);
  EXPECT_EQ(WriteNumber(kSecond, 8, u"3", existing_), 0u);
  EXPECT_EQ(Written(), (Strings{"write 6 4", "write 16 1", "write 16 4"}));
}

TEST_F(ExtNumberField, ANewTypeTwoNumberTakesTheLowestFreeRecordAndIsReferredToLast) {
  book_.MarkRecord(0, kThird, 1, 1);
  SetRecord(1, 3, Bytes("05 FF 02"));
  EXPECT_EQ(WriteNumber(kThird, 3, u"+4930123", existing_), 0u);
  EXPECT_EQ(Sent(), (Strings{"read 1 3", "read 7 2", "write 7 2", "write 1 3"}));
  EXPECT_EQ(BlockOf("write 7 2"), Block({128, 15, 5, 7, 2, 4, 17, 17},
                                        Bytes("00 05 91 940321F3 FFFFFFFFFFFF FF FF FFFF")));
  // The type is the second of the set's list; the update is padded with FF.
  EXPECT_EQ(BlockOf("write 1 3"), Block({128, 15, 5, 1, 3, 4, 3, 3}, Bytes("05 02 02"), 0xFF));
  EXPECT_EQ(existing_, 2u);
  EXPECT_EQ(book_.FirstFreeRecord(0, kThird), 3u);
  EXPECT_EQ(ReadNumber(kThird, 3), u"+4930123");
}

TEST_F(ExtNumberField, AnExistingTypeTwoNumberIsWrittenInPlace) {
  SetRecord(1, 1, Bytes("FF 03 FF"));
  SetRecord(7, 3, Bytes("00 02 81 F1 FFFFFFFFFFFFFFFFFF FF FF 0101"));
  NumberField field;
  EXPECT_EQ(book_.ReadNumberField(kThird, 1, existing_, field), FieldResult::kRead);
  EXPECT_EQ(field.number, u"1");
  EXPECT_EQ(existing_, 3u);
  Forget();
  EXPECT_EQ(WriteNumber(kThird, 1, u"23", existing_), 0u);
  EXPECT_EQ(Sent(), (Strings{"read 1 1", "read 7 3", "write 7 3"}));
  EXPECT_EQ(Record(7, 3), Bytes("00 02 81 32 FFFFFFFFFFFFFFFFFF FF FF 0101"));
  EXPECT_EQ(existing_, 3u);
}

TEST_F(ExtNumberField, ARecordThatTheEntryNoLongerRefersToIsLeftAlone) {
  SetRecord(1, 1, Bytes("FF FF FF"));
  existing_ = 2;
  book_.MarkRecord(0, kThird, 2, 1);
  EXPECT_EQ(WriteNumber(kThird, 1, u"23", existing_), 0u);
  EXPECT_EQ(Written(), (Strings{"write 7 1", "write 1 1"}));
  EXPECT_EQ(existing_, 1u);
  existing_ = 3;
  EXPECT_EQ(WriteNumber(kThird, 1, u"", existing_), 0u);
  EXPECT_EQ(Record(1, 1), Bytes("FF 01 FF"));
}

TEST_F(ExtNumberField, WithoutAFreeRecordNothingIsSent) {
  for (const std::uint32_t record : {1u, 2u, 3u}) book_.MarkRecord(0, kThird, record, 1);
  EXPECT_EQ(WriteNumber(kThird, 1, u"1", existing_), 258u);
  EXPECT_EQ(Sent(), Strings{});
}

TEST_F(ExtNumberField, TwentyDigitsNeedNoExtension) {
  EXPECT_EQ(WriteNumber(kSecond, 1, kTwenty, existing_), 0u);
  EXPECT_EQ(Sent(), (Strings{"read 6 1", "write 6 1"}));
  EXPECT_EQ(Record(6, 1), Bytes(std::string("00 0B 81") + kTwentyBcd + "FF FF"));
  EXPECT_EQ(WriteNumber(kSecond, 1, std::u16string(u"+") + kTwenty, existing_), 0u);
  EXPECT_EQ(Record(6, 1), Bytes(std::string("00 0B 91") + kTwentyBcd + "FF FF"));
  EXPECT_EQ(ReadNumber(kSecond, 1), std::u16string(u"+") + kTwenty);
}

TEST_F(ExtNumberField, TwentyOneDigitsNeedAnExtension) {
  EXPECT_EQ(WriteNumber(kSecond, 1, std::u16string(kTwenty) + u"7", existing_), 0u);
  EXPECT_EQ(Sent(), (Strings{"read 6 1", "extensions", "write 44 1", "write 6 1"}));
  EXPECT_EQ(Record(6, 1), Bytes(std::string("00 0B 81") + kTwentyBcd + "FF 01"));
  EXPECT_EQ(Record(44, 1), Bytes("02 01 F7 FFFFFFFFFFFFFFFFFF FF"));
  EXPECT_EQ(ReadNumber(kSecond, 1), std::u16string(kTwenty) + u"7");
}

TEST_F(ExtNumberField, ALongNumberTakesTheFirstFreeExtension) {
  bench_.radio.SetExtensionBitmap(16, Bytes("FF 7F"));
  EXPECT_EQ(WriteNumber(kSecond, 1, kThirtyFive, existing_), 0u);
  EXPECT_EQ(BlockOf("write 44 9"),
            Block({128, 15, 5, 44, 9, 4, 13, 13}, Bytes("02 08 89674523012143F5 FFFF FF")));
  EXPECT_EQ(BlockOf("write 6 1"), Block({128, 15, 5, 6, 1, 4, 15, 15},
                                        Bytes(std::string("00 0B 81") + kTwentyBcd + "FF 09")));
  EXPECT_EQ(ReadNumber(kSecond, 1), kThirtyFive);
}

TEST_F(ExtNumberField, ALongNumberKeepsItsExtensionRecord) {
  SetRecord(6, 1, Bytes(std::string("00 0B 81") + kTwentyBcd + "FF 03"));
  EXPECT_EQ(WriteNumber(kSecond, 1, kThirtyFive, existing_), 0u);
  EXPECT_EQ(Sent(), (Strings{"read 6 1", "write 44 3", "write 6 1"}));
  EXPECT_EQ(Record(44, 3), Bytes("02 08 89674523012143F5 FFFF FF"));
  EXPECT_EQ(Record(6, 1)[14], 3);
}

TEST_F(ExtNumberField, WithoutAFreeExtensionTheNumbersRecordIsNotTouched) {
  const struct {
    std::uint32_t count;
    const char* map;
  } cases[] = {{16, "FF FF"}, {0, "00 00"}, {16, ""}, {3, "E0"}};
  for (const auto& one : cases) {
    Forget();
    bench_.radio.SetExtensionBitmap(one.count, Bytes(one.map));
    EXPECT_EQ(WriteNumber(kSecond, 1, kThirtyFive, existing_), 256u);
    EXPECT_EQ(Sent(), (Strings{"read 6 1", "extensions"}));
    EXPECT_EQ(WriteNumber(kThird, 1, kThirtyFive, existing_), 258u);
    EXPECT_EQ(Written(), Strings{});
    EXPECT_EQ(existing_, kNoRecord);
    EXPECT_EQ(book_.FirstFreeRecord(0, kThird), 1u);
  }
}

TEST_F(ExtNumberField, MoreThanFortyDigitsAreNotWritten) {
  const std::u16string forty = std::u16string(kTwenty) + kTwenty;
  EXPECT_EQ(WriteNumber(kSecond, 1, forty, existing_), 0u);
  EXPECT_EQ(ReadNumber(kSecond, 1), forty);
  Forget();
  EXPECT_EQ(WriteNumber(kSecond, 2, forty + u"1", existing_), 256u);
  EXPECT_EQ(Written(), Strings{});
}

TEST_F(ExtNumberField, ANumberThatFitsAgainFreesItsExtensionLast) {
  SetRecord(6, 1, Bytes(std::string("00 0B 81") + kTwentyBcd + "FF 03"));
  SetRecord(44, 3, Bytes("02 01 F7"));
  EXPECT_EQ(WriteNumber(kSecond, 1, u"12", existing_), 0u);
  EXPECT_EQ(Sent(), (Strings{"read 6 1", "write 6 1", "write 44 3"}));
  EXPECT_EQ(BlockOf("write 44 3"), Block({128, 15, 5, 44, 3, 4, 13, 13}, Blank(13)));
  EXPECT_EQ(Record(6, 1), Bytes("00 02 81 21 FFFFFFFFFFFFFFFFFF FF FF"));
}

TEST_F(ExtNumberField, ANewNumberIgnoresWhatAFreeRecordHolds) {
  SetRecord(7, 1, Bytes(std::string("FF 0B 81") + kTwentyBcd + "02 03 0109"));
  EXPECT_EQ(WriteNumber(kThird, 1, u"12", existing_), 0u);
  EXPECT_EQ(Written(), (Strings{"write 7 1", "write 1 1"}));
  EXPECT_EQ(Record(7, 1), Bytes("00 02 81 21 FFFFFFFFFFFFFFFFFF 02 FF 0109"));
}

TEST_F(ExtNumberField, AnEmptyTypeOneNumberBlanksItsRecordAndThenItsExtension) {
  SetRecord(6, 2, Bytes(std::string("00 0B 81") + kTwentyBcd + "FF 03"));
  SetRecord(44, 3, Bytes("02 01 F7"));
  EXPECT_EQ(WriteNumber(kSecond, 2, u"", existing_), 0u);
  EXPECT_EQ(Sent(), (Strings{"read 6 2", "write 6 2", "write 44 3"}));
  EXPECT_EQ(Record(6, 2), Blank(15));
  EXPECT_EQ(Record(44, 3), Blank(13));
  EXPECT_EQ(ReadNumber(kSecond, 2), u"");
}

TEST_F(ExtNumberField, AnEmptyTypeOneNumberIsWrittenEvenWhenThereWasNone) {
  EXPECT_EQ(WriteNumber(kSecond, 2, u"", existing_), 0u);
  EXPECT_EQ(BlockOf("write 6 2"), Block({128, 15, 5, 6, 2, 4, 15, 15}, Blank(15)));
}

TEST_F(ExtNumberField, AnEmptyTypeTwoNumberGivesUpItsRecordAndItsExtension) {
  SetRecord(1, 1, Bytes("04 03 FF"));
  SetRecord(7, 3, Bytes(std::string("00 0B 81") + kTwentyBcd + "FF 05 0101"));
  SetRecord(44, 5, Bytes("02 01 F7"));
  Load();
  existing_ = 3;
  EXPECT_EQ(WriteNumber(kThird, 1, u"", existing_), 0u);
  EXPECT_EQ(Sent(), (Strings{"read 1 1", "read 7 3", "write 1 1", "write 7 3", "write 44 5"}));
  EXPECT_EQ(BlockOf("write 1 1"), Block({128, 15, 5, 1, 1, 4, 3, 3}, Bytes("04 FF FF"), 0xFF));
  EXPECT_EQ(Record(7, 3), Blank(17));
  EXPECT_EQ(Record(44, 5), Blank(13));
  EXPECT_EQ(existing_, kNoRecord);
  EXPECT_EQ(book_.Slot(0, kThird).usedCount, 0u);
  Forget();
  EXPECT_EQ(WriteNumber(kThird, 1, u"", existing_), 0u);
  EXPECT_EQ(Sent(), Strings{});
}

TEST_F(ExtNumberField, TheNameIsTheCallersOnlyWhenNamesAreOn) {
  for (const auto& [old, kept] : std::vector<std::pair<int, int>>{{7, 7}, {0, 0}, {255, 0}}) {
    SetRecord(6, 1, ByteVector{static_cast<std::uint8_t>(old), 2, 0x81, 0xF1});
    EXPECT_EQ(book_.WriteNumberField(kSecond, 1, {u"2", 3}, false, existing_), 0u);
    EXPECT_EQ(Record(6, 1)[0], kept);
    EXPECT_EQ(book_.WriteNumberField(kSecond, 1, {u"2", 3}, true, existing_), 0u);
    EXPECT_EQ(Record(6, 1)[0], 3);
    EXPECT_EQ(book_.WriteNumberField(kSecond, 1, {u"2", 0}, true, existing_), 0u);
    EXPECT_EQ(Record(6, 1)[0], 0);
  }
}

TEST_F(ExtNumberField, TheOldCapabilityIsKept) {
  for (const int capability : {0x02, 0xFF}) {
    ByteVector old = Bytes("00 02 81 F1 FFFFFFFFFFFFFFFFFF FF FF");
    old[13] = static_cast<std::uint8_t>(capability);
    SetRecord(6, 1, old);
    EXPECT_EQ(WriteNumber(kSecond, 1, u"2", existing_), 0u);
    EXPECT_EQ(Record(6, 1)[13], capability);
  }
}

// Neither the type nor a wild digit (nibble D) is shown, so that the user has not edited them.
TEST_F(ExtNumberField, ANumberThatIsNotEditedKeepsItsTypeAndDigits) {
  for (const char* part : {"04 91 1A32F4",     // *1234, international
                           "04 A1 214365",     // 123456, national
                           "04 81 21DC43"}) {  // 12p?34
    const ByteVector old = Bytes(std::string("07 ") + part + " FFFFFFFFFFFFFF FF FF");
    SetRecord(6, 1, old);
    const std::u16string shown = ReadNumber(kSecond, 1);
    EXPECT_EQ(book_.WriteNumberField(kSecond, 1, {shown, 3}, true, existing_), 0u);
    ByteVector expected = old;
    expected[0] = 3;
    EXPECT_EQ(Record(6, 1), expected) << part;
  }
}

TEST_F(ExtNumberField, AnEditedNumberHasTheTypeThatWasTyped) {
  const ByteVector old = Bytes("00 04 91 1A32F4 FFFFFFFFFFFFFF FF FF");
  SetRecord(6, 1, old);
  EXPECT_EQ(WriteNumber(kSecond, 1, u"*12345", existing_), 0u);
  EXPECT_EQ(Record(6, 1), Bytes("00 04 81 1A3254 FFFFFFFFFFFFFF FF FF"));
  SetRecord(6, 1, Bytes("00 04 81 1A32F4 FFFFFFFFFFFFFF FF FF"));
  EXPECT_EQ(WriteNumber(kSecond, 1, u"+*1234", existing_), 0u);
  EXPECT_EQ(Record(6, 1), old);
}

TEST_F(ExtNumberField, ANewNumberHasNotTheTypeThatAFreeRecordHolds) {
  SetRecord(7, 1, Bytes("FF 04 91 1A32F4 FFFFFFFFFFFFFF FF FF FFFF"));
  EXPECT_EQ(WriteNumber(kThird, 1, u"*1234", existing_), 0u);
  EXPECT_EQ(Record(7, 1), Bytes("00 04 81 1A32F4 FFFFFFFFFFFFFF FF FF FFFF"));
}

TEST_F(ExtNumberField, TheNameIsReadWithTheNumber) {
  SetRecord(6, 1, Bytes("07 05 91 940321F3"));
  NumberField field;
  EXPECT_EQ(book_.ReadNumberField(kSecond, 1, existing_, field), FieldResult::kRead);
  EXPECT_EQ(field.number, u"+4930123");
  EXPECT_EQ(field.nameId, 7u);
  EXPECT_EQ(existing_, kNoRecord);
  SetRecord(6, 1, Bytes("FF 05 91 940321F3"));
  EXPECT_EQ(book_.ReadNumberField(kSecond, 1, existing_, field), FieldResult::kRead);
  EXPECT_EQ(field.nameId, 0u);
}

TEST_F(ExtNumberField, ThePlusStandsInTheRecordsDigitsAlone) {
  SetRecord(6, 1, Bytes(std::string("00 0B 91") + kTwentyBcd + "FF 02"));
  SetRecord(44, 2, Bytes("02 02 1AB2"));  // *12#: low nibble first
  EXPECT_EQ(ReadNumber(kSecond, 1), std::u16string(u"+") + kTwenty + u"*12#");
  SetRecord(44, 2, Bytes("02 02 A12B"));
  EXPECT_EQ(ReadNumber(kSecond, 1), std::u16string(u"+") + kTwenty + u"1*#2");
}

TEST_F(ExtNumberField, AnExtensionThatCannotBeReadFailsTheField) {
  SetRecord(6, 1, Bytes(std::string("00 0B 81") + kTwentyBcd + "FF 63"));
  NumberField field{u"kept", 4};
  EXPECT_EQ(book_.ReadNumberField(kSecond, 1, existing_, field), FieldResult::kFailed);
  EXPECT_EQ(field.number, u"kept");
  EXPECT_EQ(field.nameId, 4u);
}

TEST_F(ExtNumberField, AnExtensionNumberOfZeroIsAskedForAndMayBeMissing) {
  SetRecord(6, 1, Bytes("00 02 81 F1 FFFFFFFFFFFFFFFFFF FF 00"));
  EXPECT_EQ(ReadNumber(kSecond, 1), u"1");
  EXPECT_EQ(Sent(), (Strings{"read 6 1", "read 44 0"}));
  // It is no record to be written.
  EXPECT_EQ(WriteNumber(kSecond, 1, u"2", existing_), 0u);
  EXPECT_EQ(Written(), (Strings{"write 6 1"}));
  EXPECT_EQ(Record(6, 1)[14], 0xFF);
}

TEST_F(ExtNumberField, AnExtensionThatIsFreeOrOfAnotherKindAddsNothing) {
  SetRecord(6, 1, Bytes(std::string("00 0B 81") + kTwentyBcd + "FF 02"));
  EXPECT_EQ(ReadNumber(kSecond, 1), kTwenty);
  SetRecord(44, 2, Bytes("01 02 2143"));  // a called party subaddress
  EXPECT_EQ(ReadNumber(kSecond, 1), kTwenty);
}

TEST_F(ExtNumberField, ATypeTwoNumberWithoutAReferenceIsAbsent) {
  for (const char* iap : {"FF 00 FF", "FF FF FF", "FF 04 FF"}) {
    SetRecord(1, 1, Bytes(iap));
    Forget();
    EXPECT_EQ(ReadNumber(kThird, 1), u"!") << iap;
    EXPECT_EQ(Sent(), (Strings{"read 1 1"})) << iap;
  }
  NumberField field;
  EXPECT_EQ(book_.ReadNumberField(kThird, 1, existing_, field), FieldResult::kAbsent);
}

TEST_F(ExtNumberField, BeyondTheCardsSetsFieldsAreAbsentAndNothingIsSent) {
  for (const std::uint32_t location : {0u, 9u, 16u, 17u, 5000u, 0xFFFFFFFFu}) {
    EXPECT_EQ(ReadNumber(kSecond, location), u"!");
    EXPECT_EQ(WriteNumber(kSecond, location, u"1", existing_), 256u);
    EXPECT_EQ(WriteNumber(kThird, location, u"1", existing_), 258u);
    EXPECT_EQ(WriteNumber(kSecond, location, u"", existing_), 0u);
  }
  EXPECT_EQ(Sent(), Strings{});
}

TEST_F(ExtNumberField, APlusAloneClears) {
  SetRecord(6, 1, Bytes("00 02 81 F1"));
  EXPECT_EQ(WriteNumber(kSecond, 1, u"+", existing_), 0u);
  EXPECT_EQ(Record(6, 1), Blank(15));
}

}  // namespace
}  // namespace kelpin::sim
