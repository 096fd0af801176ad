#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "sim/sim_text.h"
#include "tests/sim/bytes.h"

namespace kelpin::sim {
namespace {

// The text of a field whose form is read.
std::u16string Decoded(std::span<const std::uint8_t> record, std::size_t length, bool ascii) {
  std::u16string text = u"left over";
  EXPECT_EQ(DecodeAlpha(record, text, length, ascii), 1);
  return text;
}
std::u16string Decoded(std::string_view hex, bool ascii = false) {
  const ByteVector record = Bytes(hex);
  return Decoded(record, record.size(), ascii);
}

struct Field {
  std::string_view hex;
  std::u16string_view text;
};

TEST(DecodeAlpha, FormsOtherThanGsmAndPlainUcs2AreNotRead) {
  for (unsigned first = 0x81; first <= 0xFE; ++first) {
    const ByteVector record = {static_cast<std::uint8_t>(first), 0x02, 0x08, 0x41, 0x42};
    std::u16string text = u"left over";
    EXPECT_EQ(DecodeAlpha(record, text, record.size(), false), 0) << first;
    EXPECT_TRUE(text.empty()) << first;
  }
}

TEST(DecodeAlpha, APaddedOrMissingFieldIsNoText) {
  EXPECT_EQ(Decoded("FF 41 42"), u"");
  EXPECT_EQ(Decoded(Bytes("41 42"), 0, false), u"");
  EXPECT_EQ(Decoded({}, 20, true), u"");
}

TEST(DecodeAlpha, ReadsNoFurtherThanTheFieldOrTheRecord) {
  EXPECT_EQ(Decoded(Bytes("41 42 43"), 2, false), u"AB");
  EXPECT_EQ(Decoded(Bytes("41 42 43"), 200, false), u"ABC");
}

TEST(DecodeAlpha, WithoutTheAsciiSettingAFieldIsGsm) {
  EXPECT_EQ(Decoded("61 40 62"), u"a¡b");
}

TEST(DecodeAlpha, WithTheAsciiSettingTheFirstAtSignDecides) {
  const Field fields[] = {
      {"61 40 62", u"a@b"},    // ASCII
      {"61 00 62", u"a@b"},    // GSM
      {"61 62", u"ab"},        // neither: ASCII
      {"61 5F", u"a_"},        // neither: ASCII, where GSM would read a section sign
      {"61 00 40", u"a@¡"},    // 0x00 is first: GSM
      {"61 40 00", u"a@"},     // 0x40 is first: ASCII, which ends at a zero
      {"00 5F", u"@§"},        // GSM from the first byte
      {"40 5F", u"@_"},        // ASCII from the first byte
      {"24 61 FF 62", u"$a"},  // the padding ends it
      {"61 E9 80", u"aé€"},    // the Latin code page above 0x7F
      {"1B 65 FF 00", u"€"},   // the whole field is searched, its padding too
  };
  for (const Field& field : fields) EXPECT_EQ(Decoded(field.hex, true), field.text) << field.hex;
}

TEST(DecodeAlpha, TheAsciiSettingLeavesUcs2Alone) {
  EXPECT_EQ(Decoded("80 0040 0041", true), u"@A");
}

TEST(DecodeAlpha, ReadsAtMost128BytesOfAField) {
  for (const bool ascii : {false, true}) {
    EXPECT_EQ(Decoded(ByteVector(200, 0x61), 200, ascii), std::u16string(128, u'a'));
  }
}

TEST(DecodeAlpha, AnEscapeTakesTheNextByte) {
  EXPECT_EQ(Decoded("1B 65"), u"€");
  EXPECT_EQ(Decoded("1B 41"), u"A");
}

TEST(DecodeAlpha, AnEscapeWithNothingBehindIsNoCharacter) {
  for (const std::string_view hex : {"61 1B", "61 1B FF", "61 1B 85 62"}) {
    EXPECT_EQ(Decoded(hex), u"a") << hex;
  }
  ByteVector record(127, 0x61);
  record.push_back(0x1B);
  record.push_back(0x65);
  EXPECT_EQ(Decoded(record, record.size(), false), std::u16string(127, u'a'));
}

TEST(DecodeAlpha, GsmTextEndsAtAByteThatIsNoSeptet) {
  EXPECT_EQ(Decoded("61 85 62"), u"a");
}

TEST(DecodeAlpha, Ucs2TakesWholeCharactersUpToThePadding) {
  const Field fields[] = {
      {"80 0041 0042 FF FF", u"AB"},
      {"80 0041 0042 0043", u"ABC"},
      {"80 0041 0042 00", u"AB"},  // half a character
      {"80 00FF 0042", u""},       // a low byte of 0xFF ends the text
      {"80 0041 01FF 0042", u"A"},
      {"80 FF41 0042", u"\uFF41B"},  // a high byte does not
      {"80", u""},
      {"80 00", u""},
      {"80 FFFF", u""},
      {"80 0041 0000 0042", u"A"},  // the end of a text
  };
  for (const Field& field : fields) EXPECT_EQ(Decoded(field.hex), field.text) << field.hex;
}

TEST(DecodeAlpha, UsesTheRoomItsResultHas) {
  std::u16string text;
  text.reserve(300);
  const char16_t* before = text.data();
  EXPECT_EQ(DecodeAlpha(ByteVector(100, 0x61), text, 100, true), 1);
  EXPECT_EQ(DecodeAlpha(Bytes("80 0041"), text, 3, false), 1);
  EXPECT_EQ(text.data(), before);
}

// The name of a record behind its answer's header.
std::u16string DecodedRaw(const ByteVector& answer, std::size_t recordLength, std::size_t limit) {
  std::u16string text = u"left over";
  EXPECT_EQ(DecodeAlphaRaw(answer, text, recordLength, limit), 1);
  return text;
}
// The same of a record that is all name.
std::u16string DecodedName(std::string_view hex) {
  const ByteVector record = Bytes(hex);
  std::u16string text = u"left over";
  EXPECT_EQ(DecodeAlphaRaw(Response(record), text, record.size(), 10, 0), 1);
  return text;
}

TEST(DecodeAlphaRaw, ReadsTheNameBehindTheHeaderAndBeforeTheNumber) {
  const ByteVector record = Bytes(
      "41 6C FF FF FF FF FF FF FF FF FF FF FF FF 03 91 44 21 FF FF FF "
      "FF FF FF FF FF FF FF");
  ASSERT_EQ(record.size(), 28u);
  EXPECT_EQ(DecodedRaw(Response(record), 28, 14), u"Al");
}

TEST(DecodeAlphaRaw, AFullNameEndsBeforeTheNumber) {
  const ByteVector record = Bytes("41 42 43 03 91 44 21 FF FF FF FF FF FF FF FF FF FF");
  ASSERT_EQ(record.size(), 17u);
  EXPECT_EQ(DecodedRaw(Response(record), 17, 255), u"ABC");
  EXPECT_EQ(DecodedRaw(Response(record), 17, 2), u"AB");
}

TEST(DecodeAlphaRaw, ARecordThatIsAllNameIsReadToItsEnd) {
  EXPECT_EQ(DecodedName("46 72 69 65 6E 64 73 FF FF FF"), u"Friends");
}

TEST(DecodeAlphaRaw, IsNeverAscii) {
  EXPECT_EQ(DecodedName("61 40 62"), u"a¡b");
}

TEST(DecodeAlphaRaw, FormsThatAreNotReadSaySo) {
  std::u16string text = u"left over";
  EXPECT_EQ(DecodeAlphaRaw(Response(Bytes("81 02 08 41 42")), text, 5, 10, 0), 0);
  EXPECT_TRUE(text.empty());
}

TEST(DecodeAlphaRaw, AShortAnswerOrRecordIsNoText) {
  for (const std::size_t size : {0u, 15u, 16u}) {
    EXPECT_EQ(DecodedRaw(ByteVector(size, 0x41), 28, 14), u"") << size;
  }
  EXPECT_EQ(DecodedRaw(Response(ByteVector(40, 0x41)), 13, 14), u"");
}

}  // namespace
}  // namespace kelpin::sim
