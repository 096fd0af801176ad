#include "device/card/bcd.h"

#include <gtest/gtest.h>

#include "tests/card/hex.h"

namespace kelpin::device::card {
namespace {

struct Vector {
  const char* why;
  std::u16string_view digits;
  const char* hex;
};

constexpr Vector kVectors[] = {
    {"no digit", u"", ""},
    {"an odd count leaves F in the last high nibble", u"1234567", "21 43 65 F7"},
    {"an even count", u"01189998", "10 81 99 89"},
    {"star, hash, pause and wild digits", u"*#p?", "BA DC"},
    {"a service code", u"*101#", "1A 10 FB"},
};

TEST(Bcd, DigitsArePackedLowNibbleFirst) {
  for (const Vector& vector : kVectors) {
    SCOPED_TRACE(vector.why);
    const auto bytes = Hex(vector.hex);
    std::vector<std::uint8_t> out(10, 0x00);
    EXPECT_EQ(PackDigits(vector.digits, out), bytes.size());
    auto expected = bytes;
    expected.resize(10, 0xFF);
    EXPECT_EQ(ToHex(out), ToHex(expected));
    std::u16string digits;
    AppendDigits(out, digits);
    EXPECT_EQ(digits, vector.digits);
  }
}

TEST(Bcd, DigitsEndAtTheFirstFAndAnEIsLeftOut) {
  std::u16string digits = u"0";
  AppendDigits(Hex("21 F3 54"), digits);
  EXPECT_EQ(digits, u"0123");
  digits.clear();
  AppendDigits(Hex("E1 2E"), digits);
  EXPECT_EQ(digits, u"12");
}

struct Address {
  std::u16string_view text;
  std::u16string_view digits;
  std::uint8_t tonNpi;
};

// Both ways.
constexpr Address kAddresses[] = {
    {u"", u"", 0x81},
    {u"112", u"112", 0x81},
    {u"+442079460000", u"442079460000", 0x91},
    {u"*31#+442079460000", u"*31#442079460000", 0x91},
    {u"*21*+1234#", u"*21*1234#", 0x91},
    {u"*100#", u"*100#", 0x81},
    {u"+1p2?", u"1p2?", 0x91},
};

TEST(Address, ThePlusStandsWhereAUserWritesIt) {
  for (const Address& address : kAddresses) {
    DialNumber number;
    ASSERT_TRUE(ParseAddress(address.text, number));
    EXPECT_EQ(number.digits, address.digits);
    EXPECT_EQ(number.tonNpi, address.tonNpi);
    EXPECT_EQ(AddressText(address.digits, address.tonNpi), address.text);
  }
}

TEST(Address, APlusInFrontIsTakenWhateverFollows) {
  DialNumber number;
  ASSERT_TRUE(ParseAddress(u"+*31#442079460000", number));
  EXPECT_EQ(number.digits, u"*31#442079460000");
  EXPECT_EQ(number.tonNpi, 0x91);
}

TEST(Address, WaitAndCapitalPauseArePauses) {
  DialNumber number;
  ASSERT_TRUE(ParseAddress(u"12w3W4P5", number));
  EXPECT_EQ(number.digits, u"12p3p4p5");
}

TEST(Address, WhatTheCardCannotHoldIsRefusedAndTheNumberKept) {
  for (const std::u16string_view text :
       {u"12+34", u"++12", u"+", u"#+123", u"12#+34", u"12a", u"1 2", u"\u0661"}) {
    DialNumber number = {u"7", 0x55};
    EXPECT_FALSE(ParseAddress(text, number));
    EXPECT_EQ(number.digits, u"7");
    EXPECT_EQ(number.tonNpi, 0x55);
  }
}

TEST(Address, AnInternationalNumberOfOneRunBehindASeparatorShowsNoPlus) {
  EXPECT_EQ(AddressText(u"*1234", 0x91), u"*1234");
  EXPECT_EQ(AddressText(u"", 0x91), u"");
}

}  // namespace
}  // namespace kelpin::device::card
