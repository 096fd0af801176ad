#include "device/card/alpha.h"

#include <gtest/gtest.h>

#include "tests/card/hex.h"

namespace kelpin::device::card {
namespace {

struct Vector {
  const char* why;
  std::u16string_view text;
  const char* hex;
};

// Both ways: the text takes these bytes and no fewer.
constexpr Vector kVectors[] = {
    {"nothing", u"", ""},
    {"plain letters", u"Kelpin", "4B656C70696E"},
    {"an extension character takes two bytes", u"abc\u20AC", "6162631B65"},
    {"an underscore is 11", u"AA_Meine", "41 41 11 4D 65 69 6E 65"},
    {"an at sign is 00 and is no end", u"a@b", "610062"},
    {"e acute is in the default alphabet", u"caf\u00E9", "63 61 66 05"},
    {"one letter outside the alphabet: plain UCS-2 is shortest", u"\u0416", "80 0416"},
    {"two letters: a tie goes to plain UCS-2", u"\u0416\u0417", "80 0416 0417"},
    // U+0416 = 8 * 80 + 16, so base byte 08 and 80 | 16.
    {"three letters of one half page: 81", u"\u0416\u0417\u0418", "81 03 08 96 97 98"},
    {"81 with letters of the default alphabet in between", u"Ana \u010D\u010D\u010D",
     "81 07 02 41 6E 61 20 8D 8D 8D"},
    // U+05D0 (half page 0580) and U+0600 (half page 0600): one window of 80 from 05D0.
    {"letters across a half page: 82", u"\u05D0\u0600\u05D1\u05D2", "82 04 05D0 80 B0 81 82"},
    {"Han characters of one window above 7FFF: 82, for 81 cannot name it",
     u"\u9000\u9001\u9002\u9003", "82 04 9000 80 81 82 83"},
    {"a pair of surrogates is two units of UCS-2", u"\U0001F600", "80 D83D DE00"},
    {"the extension character inside a UCS-2 text", u"\u20AC\u0416", "80 20AC 0416"},
    // 04 7F would be the byte FF in the 81 form; from base 0477 it is 88.
    {"a character that would look like padding moves to the next form", u"\u0477\u0478\u0479\u047F",
     "82 04 0477 80 81 82 88"},
    {"Han characters far apart", u"\u4E2D\u6587", "80 4E2D 6587"},
};

TEST(Alpha, EveryTextTakesTheShortestFormAndComesBack) {
  for (const Vector& vector : kVectors) {
    SCOPED_TRACE(vector.why);
    const auto bytes = Hex(vector.hex);
    std::vector<std::uint8_t> field(bytes.size(), 0x00);
    ASSERT_TRUE(EncodeAlpha(vector.text, field));
    EXPECT_EQ(ToHex(field), ToHex(bytes));
    EXPECT_EQ(DecodeAlpha(field), vector.text);

    std::vector<std::uint8_t> padded(bytes.size() + 7, 0x00);
    ASSERT_TRUE(EncodeAlpha(vector.text, padded));
    auto expected = bytes;
    expected.resize(bytes.size() + 7, 0xFF);
    EXPECT_EQ(ToHex(padded), ToHex(expected));
    EXPECT_EQ(DecodeAlpha(padded), vector.text);
  }
}

TEST(Alpha, ATextThatDoesNotFitLeavesTheFieldAlone) {
  for (const Vector& vector : kVectors) {
    const auto bytes = Hex(vector.hex);
    if (bytes.empty()) continue;
    SCOPED_TRACE(vector.why);
    std::vector<std::uint8_t> field(bytes.size() - 1, 0x55);
    EXPECT_FALSE(EncodeAlpha(vector.text, field));
    EXPECT_EQ(field, std::vector<std::uint8_t>(bytes.size() - 1, 0x55));
  }
}

TEST(Alpha, CharactersThatNoFieldCanHoldAreRefused) {
  std::vector<std::uint8_t> field(20, 0x55);
  EXPECT_FALSE(EncodeAlpha(std::u16string_view(u"a\0b", 3), field));
  EXPECT_FALSE(EncodeAlpha(u"\uFFFF", field));
}

struct Reading {
  const char* why;
  const char* hex;
  std::u16string_view text;
};

// What others wrote; we would write it in another form, or not at all.
constexpr Reading kReadings[] = {
    {"an empty field", "FFFFFFFF", u""},
    {"a form byte and no more", "80", u""},
    {"80 with an odd byte at the end", "80 0041 00", u"A"},
    {"80 in a field with an odd rest of padding", "80 0041 FF", u"A"},
    {"80: a low byte FF is part of a character", "80 04FF 0041 FFFF", u"\u04FFA"},
    {"80: U+0000 is no character", "80 0000 0041", u"A"},
    {"81 with a count beyond the field", "81 40 08 96 97", u"\u0416\u0417"},
    {"81 with a count of 0", "81 00 08 96", u""},
    {"81 without its header is no text of that form", "81 03", u"\uFFFD\u00A5"},
    {"81: padding ends it by the count", "81 01 08 96 FF FF", u"\u0416"},
    {"82 wraps around at the top of UCS-2, where U+FFFF is none", "82 03 FFF0 80 8F 9F",
     u"\uFFF0\u000F"},
    {"81: two FF at the end are padding", "81 03 08 96 FF FF", u"\u0416"},
    {"81: one FF at the end is a character", "81 02 08 96 FF", u"\u0416\u047F"},
    {"82: an FF inside is a character", "82 03 05D0 90 FF 91", u"\u05E0\u064F\u05E1"},
    {"80: half a surrogate pair", "80 D83D 0041", u"\uFFFDA"},
    {"80: surrogates the wrong way round", "80 DE42 D83D", u"\uFFFD\uFFFD"},
    {"82 with the escape inside", "82 02 0416 1B 65", u"\u20AC"},
    {"the escape before an unknown second byte shows that one", "1B 41", u"A"},
    {"the escape as the last byte is a space", "41 1B", u"A "},
    {"the escape before the padding is a space", "41 1B FF", u"A "},
    {"a byte above 7F stands for nothing", "41 90 42", u"A\uFFFDB"},
    {"forms that do not exist", "90 41", u"\uFFFDA"},
    {"an alpha that fills its field", "4175666C6164756E6720706572426F6E", u"Aufladung perBon"},
};

TEST(Alpha, WhatOthersWroteIsReadAsFarAsItGoes) {
  for (const Reading& reading : kReadings) {
    SCOPED_TRACE(reading.why);
    EXPECT_EQ(DecodeAlpha(Hex(reading.hex)), reading.text);
  }
}

TEST(Alpha, EveryCharacterOfTheDefaultAlphabetKeepsItsByte) {
  for (int byte = 0; byte < 0x80; ++byte) {
    if (byte == 0x1B) continue;
    std::vector<std::uint8_t> field = {0x41, static_cast<std::uint8_t>(byte)};
    const auto text = DecodeAlpha(field);
    ASSERT_EQ(text.size(), 2U) << byte;
    std::vector<std::uint8_t> again(2);
    ASSERT_TRUE(EncodeAlpha(text, again)) << byte;
    EXPECT_EQ(again, field) << byte;
  }
}

}  // namespace
}  // namespace kelpin::device::card
