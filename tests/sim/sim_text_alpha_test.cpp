#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "sim/sim_text.h"
#include "tests/sim/bytes.h"

namespace kelpin::sim {
namespace {

struct Vector {
  std::string_view why;
  std::u16string_view text;
  std::string_view hex;
};

// Automatic mode, and what it is read back as.
constexpr Vector kVectors[] = {
    {"no text is no bytes", u"", ""},
    {"letters are their own septets", u"Ana", "41 6E 61"},
    {"letters of the default table below 0x20 and above 0x5A", u"Müller, Jörg",
     "4D 7E 6C 6C 65 72 2C 20 4A 7C 72 67"},
    {"an extension character takes two bytes", u"abc€", "61 62 63 1B 65"},
    {"every extension character", u"|^{}[]~\\€",
     "1B 40 1B 14 1B 28 1B 29 1B 3C 1B 3E 1B 3D 1B 2F 1B 65"},
    {"an e with an acute is in the default table", u"abcé", "61 62 63 05"},
    {"a commercial at is zero", u"@", "00"},
    {"a commercial at within", u"a@b", "61 00 62"},
    {"a space is 0x20, not the escape", u"a b", "61 20 62"},
    {"capital Greek that has no Latin twin", u"ΔΦΓΛΩΠΨΣΘΞ", "10 12 13 14 15 16 17 18 19 1A"},
    {"line feed and carriage return", u"\n\r", "0A 0D"},
    {"an e with a circumflex is in neither table", u"ê", "80 00 EA"},
    {"one character outside takes the whole text with it", u"abcő", "80 00 61 00 62 00 63 01 51"},
    {"Cyrillic", u"Иван", "80 04 18 04 32 04 30 04 3D"},
    {"small Greek is in neither table", u"Σω", "80 03 A3 03 C9"},
    {"Chinese", u"日本", "80 65 E5 67 2C"},
    {"beyond the first plane, as two units", u"\U0001F600", "80 D8 3D DE 00"},
};

TEST(Alpha, EncodesAsTheTablesSay) {
  for (const Vector& vector : kVectors) {
    SCOPED_TRACE(vector.why);
    std::u16string text(vector.text);
    std::array<std::uint8_t, kAlphaWorkSize> out{};
    std::size_t written = 99;
    EXPECT_EQ(EncodeAlpha(text, out, 255, kAlphaAutomatic, written), 1);
    EXPECT_EQ(First(out, written), Bytes(vector.hex));
    EXPECT_TRUE(text == vector.text);
  }
}

TEST(Alpha, DecodesWhatWasEncoded) {
  for (const Vector& vector : kVectors) {
    SCOPED_TRACE(vector.why);
    const ByteVector record = Bytes(vector.hex);
    std::u16string text = u"left over";
    EXPECT_EQ(DecodeAlpha(record, text, record.size(), false), 1);
    EXPECT_TRUE(text == vector.text);
  }
}

TEST(Alpha, DecodesTheSameWithPaddingBehind) {
  for (const Vector& vector : kVectors) {
    for (std::size_t padding = 1; padding <= 5; ++padding) {
      SCOPED_TRACE(std::string(vector.why) + ", " + std::to_string(padding) + " more");
      const ByteVector record = Padded(Bytes(vector.hex), padding);
      std::u16string text;
      EXPECT_EQ(DecodeAlpha(record, text, record.size(), false), 1);
      EXPECT_TRUE(text == vector.text);
    }
  }
}

// TS 23.038 6.2.1, column by column.
constexpr std::u16string_view kColumns[] = {
    u"@£$¥èéùìòÇ\nØø\rÅå", u"Δ_ΦΓΛΩΠΨΣΘΞ ÆæßÉ", u" !\"#¤%&'()*+,-./", u"0123456789:;<=>?",
    u"¡ABCDEFGHIJKLMNO",   u"PQRSTUVWXYZÄÖÑÜ§", u"¿abcdefghijklmno",  u"pqrstuvwxyzäöñüà"};

TEST(GsmAlphabet, EverySeptetStandsForItsCharacterBothWays) {
  for (std::size_t column = 0; column < 8; ++column) {
    ASSERT_EQ(kColumns[column].size(), 16u);
    for (std::size_t row = 0; row < 16; ++row) {
      const auto septet = static_cast<std::uint8_t>(16 * column + row);
      if (septet == 0x1B) {
        continue;
      }
      SCOPED_TRACE(static_cast<int>(septet));
      std::u16string text;
      EXPECT_EQ(DecodeAlpha(std::array{septet}, text, 1, false), 1);
      EXPECT_TRUE(text == kColumns[column].substr(row, 1));

      std::array<std::uint8_t, 2> out{};
      std::size_t written = 0;
      EXPECT_EQ(EncodeAlpha(text, out, 2, kAlphaGsm, written), 1);
      EXPECT_EQ(written, 1u);
      EXPECT_EQ(out[0], septet);
      EXPECT_EQ(GsmCharClass(text[0]), kCharGsmDefault);
    }
  }
}

TEST(GsmAlphabet, TheEscapeItselfReadsAsASpace) {
  std::u16string text;
  EXPECT_EQ(DecodeAlpha(Bytes("61 1B 1B 62"), text, 4, false), 1);
  EXPECT_TRUE(text == u"a b");
}

TEST(GsmAlphabet, TellsTheClassOfACharacter) {
  EXPECT_EQ(GsmCharClass(u'a'), 1);
  EXPECT_EQ(GsmCharClass(u' '), 1);
  for (const char16_t character : std::u16string_view(u"|^{}[]~\\€")) {
    EXPECT_EQ(GsmCharClass(character), 2);
  }
  EXPECT_EQ(GsmCharClass(u'日'), 0);
  EXPECT_EQ(GsmCharClass(u'`'), 0);
  EXPECT_EQ(GsmCharClass(u'\f'), 0);
  EXPECT_EQ(GsmCharClass(u'\u001B'), 0);
  EXPECT_EQ(GsmCharClass(u'\0'), 0);
}

TEST(GsmAlphabet, TextIsGsmWhenEveryCharacterIs) {
  EXPECT_EQ(IsGsmText(u""), 1);
  EXPECT_EQ(IsGsmText(u"abc€"), 1);
  EXPECT_EQ(IsGsmText(u"abcé"), 1);
  EXPECT_EQ(IsGsmText(u"abc日"), 0);
  EXPECT_EQ(IsGsmText(u"ê"), 0);
}

TEST(EncodeAlpha, EveryModeButGsmAndAutomaticIsUcs2) {
  for (const int mode : {0, 3, -1, 100}) {
    std::u16string text = u"ab";
    std::array<std::uint8_t, 20> out{};
    std::size_t written = 0;
    EXPECT_EQ(EncodeAlpha(text, out, 20, mode, written), 1);
    EXPECT_EQ(First(out, written), Bytes("80 0061 0062")) << mode;
  }
}

TEST(EncodeAlpha, ACharacterOfNeitherTableIsItsLowByteInGsmMode) {
  std::u16string text = u"ařê";  // U+0159, U+00EA
  std::array<std::uint8_t, 8> out{};
  std::size_t written = 0;
  EXPECT_EQ(EncodeAlpha(text, out, 8, kAlphaGsm, written), 1);
  EXPECT_EQ(First(out, written), Bytes("61 59 EA"));
}

TEST(EncodeAlpha, Ucs2IsCutToTheFieldAndTheTextWithIt) {
  std::u16string text = u"абвгдежзик";
  std::array<std::uint8_t, 32> out;
  out.fill(0xFF);
  std::size_t written = 0;
  EXPECT_EQ(EncodeAlpha(text, out, 14, kAlphaAutomatic, written), 1);
  EXPECT_EQ(written, 13u);
  EXPECT_TRUE(text == u"абвгде");
  EXPECT_EQ(First(out, 15), Bytes("80 0430 0431 0432 0433 0434 0435 FF FF"));
}

TEST(EncodeAlpha, AnOddFieldTakesNoMoreUcs2ThanTheEvenOneBelow) {
  std::u16string text = u"абвгдежзик";
  std::array<std::uint8_t, 32> out{};
  std::size_t written = 0;
  EXPECT_EQ(EncodeAlpha(text, out, 15, kAlphaUcs2, written), 1);
  EXPECT_EQ(text.size(), 6u);
  EXPECT_EQ(written, 13u);
}

TEST(EncodeAlpha, TinyFieldsTakeNoUcs2Character) {
  for (const std::size_t size : {1u, 2u, 3u}) {
    std::u16string text = u"аб";
    std::array<std::uint8_t, 4> out{};
    std::size_t written = 0;
    EXPECT_EQ(EncodeAlpha(text, out, size, kAlphaUcs2, written), 1) << size;
    EXPECT_EQ(written, 1u) << size;
    EXPECT_EQ(out[0], 0x80) << size;
    EXPECT_TRUE(text.empty()) << size;
  }
  std::u16string text = u"аб";
  std::size_t written = 9;
  EXPECT_EQ(EncodeAlpha(text, {}, 0, kAlphaUcs2, written), 0);
  EXPECT_EQ(written, 0u);
  EXPECT_TRUE(text == u"аб");
}

TEST(EncodeAlpha, Ucs2StaysInsideABufferSmallerThanTheField) {
  std::u16string text = u"абвгд";
  std::array<std::uint8_t, 6> out{};
  std::size_t written = 0;
  EXPECT_EQ(EncodeAlpha(text, out, 40, kAlphaUcs2, written), 1);
  EXPECT_EQ(written, 5u);
  EXPECT_TRUE(text == u"аб");
}

TEST(EncodeAlpha, GsmTextIsWrittenWholeWhateverTheFieldTakes) {
  std::u16string text(20, u'[');
  std::array<std::uint8_t, kAlphaWorkSize> out{};
  std::size_t written = 0;
  EXPECT_EQ(EncodeAlpha(text, out, 20, kAlphaAutomatic, written), 1);
  EXPECT_EQ(written, 40u);
  EXPECT_EQ(text.size(), 20u);
  for (std::size_t i = 0; i < 40; i += 2) {
    EXPECT_EQ(out[i], 0x1B);
    EXPECT_EQ(out[i + 1], 0x3C);
  }
}

TEST(EncodeAlpha, TheWorkBufferTakesAnyTextOfAnEditField) {
  std::u16string text(512, u'€');
  std::array<std::uint8_t, kAlphaWorkSize> out{};
  std::size_t written = 0;
  EXPECT_EQ(EncodeAlpha(text, out, 20, kAlphaGsm, written), 1);
  EXPECT_EQ(written, 1024u);
}

TEST(EncodeAlpha, GsmTextThatTheBufferCannotTakeWritesNothing) {
  std::u16string text = u"ab€";
  std::array<std::uint8_t, 3> out = {7, 7, 7};
  std::size_t written = 9;
  EXPECT_EQ(EncodeAlpha(text, out, 3, kAlphaGsm, written), 0);
  EXPECT_EQ(written, 0u);
  EXPECT_EQ(First(out, 3), Bytes("07 07 07"));
  EXPECT_TRUE(text == u"ab€");
}

TEST(DecodeAlpha, FormsOtherThanGsmAndPlainUcs2AreNotRead) {
  for (unsigned first = 0x81; first <= 0xFE; ++first) {
    const ByteVector record = {static_cast<std::uint8_t>(first), 0x02, 0x08, 0x41, 0x42};
    std::u16string text = u"left over";
    EXPECT_EQ(DecodeAlpha(record, text, record.size(), false), 0) << first;
    EXPECT_TRUE(text.empty()) << first;
  }
}

TEST(DecodeAlpha, APaddedOrMissingFieldIsNoText) {
  std::u16string text = u"left over";
  EXPECT_EQ(DecodeAlpha(Bytes("FF 41 42"), text, 3, false), 1);
  EXPECT_TRUE(text.empty());
  text = u"left over";
  EXPECT_EQ(DecodeAlpha(Bytes("41 42"), text, 0, false), 1);
  EXPECT_TRUE(text.empty());
  text = u"left over";
  EXPECT_EQ(DecodeAlpha({}, text, 20, true), 1);
  EXPECT_TRUE(text.empty());
}

TEST(DecodeAlpha, ReadsNoFurtherThanTheFieldOrTheRecord) {
  std::u16string text;
  EXPECT_EQ(DecodeAlpha(Bytes("41 42 43"), text, 2, false), 1);
  EXPECT_TRUE(text == u"AB");
  EXPECT_EQ(DecodeAlpha(Bytes("41 42 43"), text, 200, false), 1);
  EXPECT_TRUE(text == u"ABC");
}

TEST(DecodeAlpha, WithoutTheAsciiSettingAFieldIsGsm) {
  std::u16string text;
  EXPECT_EQ(DecodeAlpha(Bytes("61 40 62"), text, 3, false), 1);
  EXPECT_TRUE(text == u"a¡b");
}

TEST(DecodeAlpha, WithTheAsciiSettingTheFirstAtSignDecides) {
  struct Case {
    std::string_view hex;
    std::u16string_view text;
  };
  const Case cases[] = {
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
  for (const Case& one : cases) {
    const ByteVector record = Bytes(one.hex);
    std::u16string text;
    EXPECT_EQ(DecodeAlpha(record, text, record.size(), true), 1);
    EXPECT_TRUE(text == one.text) << one.hex;
  }
}

TEST(DecodeAlpha, TheAsciiSettingLeavesUcs2Alone) {
  std::u16string text;
  EXPECT_EQ(DecodeAlpha(Bytes("80 0040 0041"), text, 5, true), 1);
  EXPECT_TRUE(text == u"@A");
}

TEST(DecodeAlpha, ReadsAtMost128BytesOfAField) {
  for (const bool ascii : {false, true}) {
    const ByteVector record(200, 0x61);
    std::u16string text;
    EXPECT_EQ(DecodeAlpha(record, text, record.size(), ascii), 1);
    EXPECT_TRUE(text == std::u16string(128, u'a'));
  }
}

TEST(DecodeAlpha, AnEscapeTakesTheNextByte) {
  std::u16string text;
  EXPECT_EQ(DecodeAlpha(Bytes("1B 65"), text, 2, false), 1);
  EXPECT_TRUE(text == u"€");
  EXPECT_EQ(DecodeAlpha(Bytes("1B 41"), text, 2, false), 1);
  EXPECT_TRUE(text == u"A");
}

TEST(DecodeAlpha, AnEscapeWithNothingBehindIsNoCharacter) {
  for (const std::string_view hex : {"61 1B", "61 1B FF", "61 1B 85 62"}) {
    const ByteVector record = Bytes(hex);
    std::u16string text;
    EXPECT_EQ(DecodeAlpha(record, text, record.size(), false), 1);
    EXPECT_TRUE(text == u"a") << hex;
  }
  ByteVector record(127, 0x61);
  record.push_back(0x1B);
  record.push_back(0x65);
  std::u16string text;
  EXPECT_EQ(DecodeAlpha(record, text, record.size(), false), 1);
  EXPECT_TRUE(text == std::u16string(127, u'a'));
}

TEST(DecodeAlpha, GsmTextEndsAtAByteThatIsNoSeptet) {
  std::u16string text;
  EXPECT_EQ(DecodeAlpha(Bytes("61 85 62"), text, 3, false), 1);
  EXPECT_TRUE(text == u"a");
}

TEST(DecodeAlpha, Ucs2TakesWholeCharactersUpToThePadding) {
  struct Case {
    std::string_view hex;
    std::u16string_view text;
  };
  const Case cases[] = {
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
  for (const Case& one : cases) {
    const ByteVector record = Bytes(one.hex);
    std::u16string text = u"left over";
    EXPECT_EQ(DecodeAlpha(record, text, record.size(), false), 1);
    EXPECT_TRUE(text == one.text) << one.hex;
  }
}

TEST(DecodeAlpha, UsesTheRoomItsResultHas) {
  std::u16string text;
  text.reserve(300);
  const char16_t* before = text.data();
  EXPECT_EQ(DecodeAlpha(ByteVector(100, 0x61), text, 100, true), 1);
  EXPECT_EQ(DecodeAlpha(Bytes("80 0041"), text, 3, false), 1);
  EXPECT_EQ(text.data(), before);
}

TEST(DecodeAlphaRaw, ReadsTheNameBehindTheHeaderAndBeforeTheNumber) {
  const ByteVector record = Bytes(
      "41 6C FF FF FF FF FF FF FF FF FF FF FF FF 03 91 44 21 FF FF FF "
      "FF FF FF FF FF FF FF");
  ASSERT_EQ(record.size(), 28u);
  std::u16string text;
  EXPECT_EQ(DecodeAlphaRaw(Response(record), text, 28, 14), 1);
  EXPECT_TRUE(text == u"Al");
}

TEST(DecodeAlphaRaw, AFullNameEndsBeforeTheNumber) {
  const ByteVector record = Bytes("41 42 43 03 91 44 21 FF FF FF FF FF FF FF FF FF FF");
  ASSERT_EQ(record.size(), 17u);
  std::u16string text;
  EXPECT_EQ(DecodeAlphaRaw(Response(record), text, 17, 255), 1);
  EXPECT_TRUE(text == u"ABC");
  EXPECT_EQ(DecodeAlphaRaw(Response(record), text, 17, 2), 1);
  EXPECT_TRUE(text == u"AB");
}

TEST(DecodeAlphaRaw, ARecordThatIsAllNameIsReadToItsEnd) {
  std::u16string text;
  EXPECT_EQ(DecodeAlphaRaw(Response(Bytes("46 72 69 65 6E 64 73 FF FF FF")), text, 10, 10, 0), 1);
  EXPECT_TRUE(text == u"Friends");
}

TEST(DecodeAlphaRaw, IsNeverAscii) {
  std::u16string text;
  EXPECT_EQ(DecodeAlphaRaw(Response(Bytes("61 40 62")), text, 3, 10, 0), 1);
  EXPECT_TRUE(text == u"a¡b");
}

TEST(DecodeAlphaRaw, FormsThatAreNotReadSaySo) {
  std::u16string text = u"left over";
  EXPECT_EQ(DecodeAlphaRaw(Response(Bytes("81 02 08 41 42")), text, 5, 10, 0), 0);
  EXPECT_TRUE(text.empty());
}

TEST(DecodeAlphaRaw, AShortAnswerOrRecordIsNoText) {
  for (const std::size_t size : {0u, 15u, 16u}) {
    std::u16string text = u"left over";
    EXPECT_EQ(DecodeAlphaRaw(ByteVector(size, 0x41), text, 28, 14), 1) << size;
    EXPECT_TRUE(text.empty()) << size;
  }
  std::u16string text = u"left over";
  EXPECT_EQ(DecodeAlphaRaw(Response(ByteVector(40, 0x41)), text, 13, 14), 1);
  EXPECT_TRUE(text.empty());
}

TEST(FitsOneByte, TakesEveryCharacterBelow256) {
  EXPECT_EQ(FitsOneByte(u""), 1);
  EXPECT_EQ(FitsOneByte(u"é"), 1);
  EXPECT_EQ(FitsOneByte(u"ÿ"), 1);
  EXPECT_EQ(FitsOneByte(u"Ā"), 0);
  EXPECT_EQ(FitsOneByte(u"日"), 0);
  EXPECT_EQ(FitsOneByte(u"a€"), 0);
}

TEST(CutToBytes, CutsATextThatDoesNotFit) {
  struct Case {
    std::size_t length;
    std::size_t bytes;
    std::size_t left;
  };
  const Case cases[] = {{20, 16, 7}, {20, 17, 7},  {20, 40, 19}, {20, 41, 20}, {20, 2, 0},
                        {20, 1, 0},  {20, 0, 0},   {0, 0, 0},    {0, 16, 0},   {1, 2, 0},
                        {1, 3, 1},   {255, 16, 7}, {8, 16, 7},   {7, 16, 7}};
  for (const Case& one : cases) {
    std::u16string text(one.length, u'я');
    EXPECT_EQ(CutToBytes(text, one.bytes), one.length);
    EXPECT_EQ(text.size(), one.left) << one.length << " in " << one.bytes;
  }
}

}  // namespace
}  // namespace kelpin::sim
