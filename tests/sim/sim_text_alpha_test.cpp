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
