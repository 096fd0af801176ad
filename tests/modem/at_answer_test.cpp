#include "device/modem/at_answer.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelpin::device::modem {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Values = std::vector<std::string>;

TEST(AtAnswer, WhatEndsAnAnswerIsAWholeLine) {
  EXPECT_EQ(ParseLastLine("OK")->end, AtEnd::kOk);
  EXPECT_EQ(ParseLastLine(" OK ")->end, AtEnd::kOk);
  for (const std::string_view line :
       {"ERROR", "COMMAND NOT SUPPORT", "NA", "NO CARRIER", "+CMS ERROR: 302", "MODEM ERROR: 7"}) {
    const auto last = ParseLastLine(line);
    ASSERT_TRUE(last) << line;
    EXPECT_EQ(last->end, AtEnd::kError) << line;
  }
  for (const std::string_view line : {"OKAY", "ok", "+CSIM: OK", "\"OK\"", "ERRORS", "+CME", "RING",
                                      "NATIONAL", "+CPIN: READY"}) {
    EXPECT_FALSE(ParseLastLine(line)) << line;
  }
}

TEST(AtAnswer, AnErrorOfTheModemHasItsNumberInDigitsOrInWords) {
  struct Row {
    std::string_view line;
    int error;
  };
  // TS 27.007 9.2.1.
  constexpr Row kRows[] = {
      {"+CME ERROR: 10", 10},
      {"+CME ERROR:14", 14},
      {"+cme error: 3", 3},
      {"+CME ERROR : 513", 513},
      {"+CME ERROR: operation not allowed", 3},
      {"+CME ERROR: operation not supported", 4},
      {"+CME ERROR: SIM not inserted", 10},
      {"+CME ERROR: SIM PIN required", 11},
      {"+CME ERROR: SIM PUK required", 12},
      {"+CME ERROR: SIM failure", 13},
      {"+CME ERROR: SIM busy", 14},
      {"+CME ERROR: sim wrong", 15},
      {"+CME ERROR: incorrect password", 16},
      {"+CME ERROR: SIM PIN2 required", 17},
      {"+CME ERROR: SIM PUK2 required", 18},
      {"+CME ERROR: Parameters error", 100},
      {"+CME ERROR:", 100},
  };
  for (const Row& row : kRows) {
    const auto last = ParseLastLine(row.line);
    ASSERT_TRUE(last) << row.line;
    EXPECT_EQ(last->end, AtEnd::kCme) << row.line;
    EXPECT_EQ(last->error, row.error) << row.line;
  }
}

TEST(AtAnswer, TheTextBehindANameIsFoundWithBlanksAndInEitherCase) {
  EXPECT_EQ(Behind("+CPIN: READY", "+CPIN"), "READY");
  EXPECT_EQ(Behind("+CPIN:READY", "+CPIN"), "READY");
  EXPECT_EQ(Behind(" +cpin :  READY ", "+CPIN"), "READY");
  EXPECT_EQ(Behind("+CPIN:", "+CPIN"), "");
  EXPECT_EQ(Behind("+CPINR: SIM PIN,3", "+CPIN"), std::nullopt);
  EXPECT_EQ(Behind("+CPIN READY", "+CPIN"), std::nullopt);
  EXPECT_EQ(Behind("+CP", "+CPIN"), std::nullopt);
  EXPECT_EQ(Behind("", "+CPIN"), std::nullopt);
}

TEST(AtAnswer, ValuesAreTakenApartAtCommasOutsideQuotes) {
  EXPECT_EQ(SplitValues("144, 0,\"AB,CD\""), (Values{"144", "0", "AB,CD"}));
  EXPECT_EQ(SplitValues("\"SIM PIN\",3"), (Values{"SIM PIN", "3"}));
  EXPECT_EQ(SplitValues("1,,"), (Values{"1", "", ""}));
  EXPECT_EQ(SplitValues(""), (Values{""}));
  EXPECT_EQ(SplitValues("\"no end,1"), (Values{"no end,1"}));
}

TEST(AtAnswer, NumbersAreNothingButDigits) {
  EXPECT_EQ(ParseNumber("0"), 0);
  EXPECT_EQ(ParseNumber("255"), 255);
  for (const std::string_view text : {"", "1a", " 1", "+1", "99999999999"}) {
    EXPECT_EQ(ParseNumber(text), std::nullopt) << text;
  }
}

TEST(AtAnswer, HexIsReadInEitherCaseAndWrittenInUpper) {
  EXPECT_EQ(FromHex("00aFfA"), (Bytes{0x00, 0xAF, 0xFA}));
  EXPECT_EQ(FromHex(""), Bytes{});
  EXPECT_EQ(FromHex("0"), std::nullopt);
  EXPECT_EQ(FromHex("0G"), std::nullopt);
  EXPECT_EQ(FromHex("0 "), std::nullopt);
  EXPECT_EQ(ToHex(Bytes{0x00, 0xAF, 0xFA}), "00AFFA");
}

TEST(AtAnswer, ACardsResponseIsAsLongAsTheModemSays) {
  EXPECT_EQ(ParseApduAnswer("4,\"9000\""), (Bytes{0x90, 0x00}));
  EXPECT_EQ(ParseApduAnswer("8,\"ABCD9000\""), (Bytes{0xAB, 0xCD, 0x90, 0x00}));
  EXPECT_EQ(ParseApduAnswer("8, abcd9000"), (Bytes{0xAB, 0xCD, 0x90, 0x00}));     // no quotes
  EXPECT_EQ(ParseApduAnswer("4,\"ABCD9000\""), (Bytes{0xAB, 0xCD, 0x90, 0x00}));  // in bytes
  for (const std::string_view cut :
       {"8,\"ABCD90\"", "8,\"ABCD900\"", "10,\"ABCD9000\"", "2,\"90\"", "4", "", "-4,\"9000\"",
        "4,\"9000\",1", "x,\"9000\"", "4,\"90 0\""}) {
    EXPECT_EQ(ParseApduAnswer(cut), std::nullopt) << cut;
  }
  const std::string longest(2 * 258, '0');
  EXPECT_EQ(ParseApduAnswer("516,\"" + longest + '"')->size(), 258U);
  EXPECT_EQ(ParseApduAnswer("518,\"" + longest + "00\""), std::nullopt);
}

TEST(AtAnswer, AFilesAnswerHasItsStatusWordBehindTheData) {
  EXPECT_EQ(ParseFileAnswer("144,0,\"414E4EFF\""), (Bytes{0x41, 0x4E, 0x4E, 0xFF, 0x90, 0x00}));
  EXPECT_EQ(ParseFileAnswer("144,0"), (Bytes{0x90, 0x00}));
  EXPECT_EQ(ParseFileAnswer("106, 130,\"\""), (Bytes{0x6A, 0x82}));
  EXPECT_EQ(ParseFileAnswer("159,30,ab"), (Bytes{0xAB, 0x9F, 0x1E}));
  for (const std::string_view wrong :
       {"", "144", "144,256", "-1,0", "144,0,\"A\"", "144,0,\"XY\"", "144,0,\"AB\",1", "a,b"}) {
    EXPECT_EQ(ParseFileAnswer(wrong), std::nullopt) << wrong;
  }
}

}  // namespace
}  // namespace kelpin::device::modem
