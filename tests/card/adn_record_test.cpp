#include "device/card/adn_record.h"

#include <gtest/gtest.h>

#include "device/card/alpha.h"
#include "tests/card/hex.h"

namespace kelpin::device::card {
namespace {

struct Sample {
  const char* alpha;
  const char* numberPart;
  std::u16string_view name;
  std::u16string_view address;
};

// Records as cards in the field hold them.
constexpr Sample kSamples[] = {
    {"4141114D65696E65204E756D6D6572FF", "0891945109072758F1FFFFFFFFFF", u"AA_Meine Nummer",
     u"+4915907072851"},
    {"4D61696C626F78FFFFFFFFFFFFFFFFFF", "0791947139003033FFFFFFFFFFFF", u"Mailbox",
     u"+491793000333"},
    {"4B6F6E746F2D41626672616765FFFFFF", "04811A10FBFFFFFFFFFFFFFFFFFF", u"Konto-Abfrage",
     u"*101#"},
    {"4175666C6164756E6720706572426F6E", "04811A30FBFFFFFFFFFFFFFFFFFF", u"Aufladung perBon",
     u"*103#"},
    {"4B756E64656E626574726575756E67FF", "0891947186884545F5FFFFFFFFFF", u"Kundenbetreuung",
     u"+4917688854545"},
    {"414441432050616E6E656E68696C6665", "0481222222FFFFFFFFFFFFFFFFFF", u"ADAC Pannenhilfe",
     u"222222"},
    {"546178692D53657276696365FFFFFFFF", "03812849FFFFFFFFFFFFFFFFFFFF", u"Taxi-Service", u"8294"},
};

TEST(AdnRecord, RecordsFromTheFieldAreReadAndWrittenBackByteForByte) {
  for (const Sample& sample : kSamples) {
    const auto record = Hex(std::string(sample.alpha) + sample.numberPart);
    const AdnView view(record);
    EXPECT_EQ(view.Name(), sample.name);
    const DialNumber number = view.Number();
    EXPECT_EQ(AddressText(number.digits, number.tonNpi), sample.address);
    EXPECT_EQ(view.Capability(), 0);
    EXPECT_EQ(view.Extension(), 0);
    EXPECT_FALSE(view.IsEmpty());

    std::vector<std::uint8_t> again(record.size(), 0x00);
    ASSERT_TRUE(EncodeAlpha(sample.name, std::span(again).first(again.size() - kAdnNumberPart)));
    DialNumber parsed;
    ASSERT_TRUE(ParseAddress(sample.address, parsed));
    EncodeAdnNumber(parsed, 0, 0, std::span(again).last(kAdnNumberPart));
    EXPECT_EQ(ToHex(again), ToHex(record));
  }
}

TEST(AdnRecord, LengthsThatAreNoneOrTooLongDoNoHarm) {
  // No alpha field at all: the record is the number part.
  EXPECT_TRUE(AdnView(Hex("FFFFFFFFFFFFFFFFFFFFFFFFFFFF")).IsEmpty());
  EXPECT_TRUE(AdnView(Hex("0081214365FFFFFFFFFFFFFFFFFF")).IsEmpty());
  EXPECT_TRUE(AdnView(Hex("0181214365FFFFFFFFFFFFFFFFFF")).IsEmpty());
  // Length 00 with an extension byte of 00, as blank cards come.
  EXPECT_TRUE(AdnView(Hex("FFFF0000000000000000000000000000")).IsEmpty());
  // A length beyond the digits: the ten bytes there are.
  const auto tooLong = Hex("4091214365870921436587090105");
  const AdnView view(tooLong);
  EXPECT_EQ(view.Number().digits, u"12345678901234567890");
  EXPECT_EQ(view.Capability(), 1);
  EXPECT_EQ(view.Extension(), 5);
  EXPECT_FALSE(view.IsEmpty());
}

TEST(AdnRecord, ANameWithoutANumberAndANumberWithoutANameAreEntries) {
  const auto nameOnly = Hex("41FFFFFFFFFFFFFFFFFFFFFFFFFFFFFF");
  EXPECT_FALSE(AdnView(nameOnly).IsEmpty());
  EXPECT_EQ(AdnView(nameOnly).Name(), u"A");
  const auto numberOnly = Hex("FFFF0281F1FFFFFFFFFFFFFFFFFFFFFF");
  EXPECT_FALSE(AdnView(numberOnly).IsEmpty());
  EXPECT_EQ(AdnView(numberOnly).Number().digits, u"1");
}

TEST(AdnRecord, TheNumberPartHoldsCapabilityAndExtension) {
  std::vector<std::uint8_t> part(kAdnNumberPart);
  EncodeAdnNumber({u"12345678901234567890", 0x91}, 2, 7, part);
  EXPECT_EQ(ToHex(part),
            "0B912143658709214365870902"
            "07");
  EncodeAdnNumber({u"", 0x91}, 2, 7, part);
  EXPECT_EQ(ToHex(part), "FFFFFFFFFFFFFFFFFFFFFFFFFFFF");
}

TEST(ExtensionRecord, DigitsGoOnInTheNextRecord) {
  std::vector<std::uint8_t> record(kExtensionLength);
  EncodeExtension(u"123456789012345", 9, record);
  EXPECT_EQ(ToHex(record),
            "0208"
            "21436587092143F5"
            "FFFF"
            "09");
  std::u16string digits = u"0";
  AppendExtensionDigits(record, digits);
  EXPECT_EQ(digits, u"0123456789012345");
  EXPECT_EQ(NextExtension(record), 9);
  EXPECT_FALSE(ExtensionIsFree(record));
}

TEST(ExtensionRecord, FreeOnesStartWith00OrFF) {
  EXPECT_TRUE(ExtensionIsFree(Hex("00FFFFFFFFFFFFFFFFFFFFFFFF")));
  EXPECT_TRUE(ExtensionIsFree(Hex("FFFFFFFFFFFFFFFFFFFFFFFFFF")));
  EXPECT_EQ(NextExtension(Hex("00FFFFFFFFFFFFFFFFFFFFFF05")), 0);
}

TEST(ExtensionRecord, ASubaddressHasNoDigitsButMayGoOn) {
  const auto subaddress = Hex("01 0A A0 5012345678 FFFFFFFF 03");
  std::u16string digits;
  AppendExtensionDigits(subaddress, digits);
  EXPECT_EQ(digits, u"");
  EXPECT_EQ(NextExtension(subaddress), 3);
}

TEST(ExtensionRecord, ALengthBeyondTheTenBytesIsTenBytes) {
  std::u16string digits;
  AppendExtensionDigits(Hex("02 40 21436587092143658709 FF"), digits);
  EXPECT_EQ(digits, u"12345678901234567890");
}

}  // namespace
}  // namespace kelpin::device::card
