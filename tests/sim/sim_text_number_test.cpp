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
  std::string_view bcd;
  bool reads = true;  // back as it was written
};

// Digits, and their BCD.
constexpr Vector kDigits[] = {
    {"one digit", u"7", "F7"},
    {"two digits, the first in the low nibble", u"12", "21"},
    {"seven digits take four bytes with 0xF as the last high nibble", u"1234567", "21 43 65 F7"},
    {"twenty digits fill a record", u"12345678901234567890", "21 43 65 87 09 21 43 65 87 09"},
    {"star, hash and pause", u"*21#p5", "2A B1 5C"},
    {"a wait is stored as a pause", u"12w3", "21 3C", false},
    {"a capital wait as well", u"12W3", "21 3C", false},
    {"and a capital pause", u"12P3", "21 3C", false},
    {"anything else is 0xD, which reads as nothing", u"1x2", "D1 F2", false},
};

ByteVector Framed(std::string_view front, const Vector& vector) {
  ByteVector record = Bytes(front);
  const ByteVector digits = Bytes(vector.bcd);
  record.insert(record.end(), digits.begin(), digits.end());
  return record;
}

std::string LengthHex(const Vector& vector, std::size_t more) {
  constexpr std::string_view kHex = "0123456789ABCDEF";
  const std::size_t length = Bytes(vector.bcd).size() + more;
  return {kHex[length / 16], kHex[length % 16]};
}

// "1x2" reads as "12", and every kind of pause as 'p'.
std::u16string ReadBack(std::u16string_view text) {
  std::u16string read;
  for (const char16_t character : text) {
    if (character == u'w' || character == u'W' || character == u'P') {
      read.push_back(u'p');
    } else if (character != u'x') {
      read.push_back(character);
    }
  }
  return read;
}

TEST(AnrNumber, IsLengthTypeAndDigitsBothWays) {
  for (const Vector& vector : kDigits) {
    SCOPED_TRACE(vector.why);
    const ByteVector expected = Framed("00" + LengthHex(vector, 1) + "81", vector);
    std::u16string text(vector.text);
    ByteVector record(17, 0xFF);
    EXPECT_EQ(EncodeAnrNumber(text, record, record.size()), 1);
    EXPECT_EQ(record, Padded(expected, 17 - expected.size()));

    std::u16string read = u"left over";
    DecodeAnrNumber(expected, read, 40);
    EXPECT_TRUE(read == ReadBack(vector.text));
    EXPECT_EQ(read == vector.text, vector.reads);
    DecodeAnrNumber(Padded(expected, 5), read, 40);
    EXPECT_TRUE(read == ReadBack(vector.text));
  }
}

TEST(ExtNumber, IsTypeLengthAndDigitsBothWays) {
  for (const Vector& vector : kDigits) {
    SCOPED_TRACE(vector.why);
    const ByteVector expected = Framed("02" + LengthHex(vector, 0), vector);
    std::u16string text(vector.text);
    ByteVector record(13, 0xFF);
    EXPECT_EQ(EncodeExtNumber(text, record, record.size()), 1);
    EXPECT_EQ(record, Padded(expected, 13 - expected.size()));

    std::u16string read = u"left over";
    DecodeExtNumber(expected, read, 40);
    EXPECT_TRUE(read == ReadBack(vector.text));
    DecodeExtNumber(Padded(expected, 5), read, 40);
    EXPECT_TRUE(read == ReadBack(vector.text));
    DecodeExtRaw(Response(Padded(expected, 13 - expected.size())), read);
    EXPECT_TRUE(read == ReadBack(vector.text));
  }
}

TEST(AdnNumber, StandsInTheLast14BytesBothWays) {
  for (const Vector& vector : kDigits) {
    SCOPED_TRACE(vector.why);
    const ByteVector part = Framed(LengthHex(vector, 1) + "81", vector);
    ByteVector expected = Padded(Bytes("41 6C"), 12);
    expected.insert(expected.end(), part.begin(), part.end());
    expected.resize(28, 0xFF);

    std::u16string alpha = u"Al";
    std::u16string number(vector.text);
    ByteVector record(28, 0x00);
    EXPECT_EQ(EncodeAdnRecord(record, alpha, number, 28, 14), 1);
    EXPECT_EQ(record, expected);

    std::u16string read = u"left over";
    DecodeAdnNumber(Response(expected), read, 28, 20);
    EXPECT_TRUE(read == ReadBack(vector.text));
    DecodeAdnNumber(Response(Padded(expected, 4)), read, 28, 20);
    EXPECT_TRUE(read == ReadBack(vector.text));
  }
}

TEST(NumberEncoders, ANumberWithAPlusIsInternational) {
  for (const std::u16string_view number : {u"+4412", u"44+12", u"4412+"}) {
    std::u16string text(number);
    ByteVector anr(15, 0xFF);
    EXPECT_EQ(EncodeAnrNumber(text, anr, anr.size()), 1);
    EXPECT_EQ(anr, Padded(Bytes("00 03 91 44 21"), 10));
    text = number;
    ByteVector ext(13, 0xFF);
    EXPECT_EQ(EncodeExtNumber(text, ext, ext.size()), 1);
    EXPECT_EQ(ext, Padded(Bytes("02 02 44 21"), 9));
  }
}

TEST(NumberEncoders, ThePlusOfTheCallersTextMovesToTheFront) {
  for (const std::u16string_view number : {u"+4412", u"44+12", u"4412+", u"+44+12"}) {
    std::u16string text(number);
    ByteVector record(28, 0xFF);
    EXPECT_EQ(EncodeAnrNumber(text, record, 15), 1);
    EXPECT_TRUE(text == u"+4412");
    text = number;
    EXPECT_EQ(EncodeExtNumber(text, record, 13), 1);
    EXPECT_TRUE(text == u"+4412");
    text = number;
    std::u16string alpha;
    EXPECT_EQ(EncodeAdnRecord(record, alpha, text, 28, 14), 1);
    EXPECT_TRUE(text == u"+4412");
  }
  std::u16string text = u"12w3";
  ByteVector record(15, 0xFF);
  EXPECT_EQ(EncodeAnrNumber(text, record, 15), 1);
  EXPECT_TRUE(text == u"12p3");
}

TEST(NumberEncoders, SevenDigitsCountFourBytesAndTheType) {
  std::u16string text = u"1234567";
  std::u16string alpha;
  ByteVector record(28, 0xFF);
  EXPECT_EQ(EncodeAnrNumber(text, record, 15), 1);
  EXPECT_EQ(record[1], 5);
  EXPECT_EQ(EncodeExtNumber(text, record, 13), 1);
  EXPECT_EQ(record[1], 4);
  EXPECT_EQ(EncodeAdnRecord(record, alpha, text, 28, 14), 1);
  EXPECT_EQ(record[14], 5);
}

TEST(NumberEncoders, TakeTwentyDigitsAndAPlus) {
  std::u16string text = u"+12345678901234567890";
  ByteVector record(15, 0xFF);
  EXPECT_EQ(EncodeAnrNumber(text, record, 15), 1);
  EXPECT_EQ(record, Bytes("00 0B 91 21 43 65 87 09 21 43 65 87 09 FF FF"));
  EXPECT_TRUE(text == u"+12345678901234567890");
}

TEST(NumberEncoders, RefuseMoreAndTouchNothing) {
  std::u16string text = u"+123456789012345678901";  // 21 digits
  const std::u16string before = text;
  ByteVector record(28, 0x07);
  EXPECT_EQ(EncodeAnrNumber(text, record, 28), 0);
  EXPECT_EQ(EncodeExtNumber(text, record, 28), 0);
  std::u16string alpha = u"Al";
  EXPECT_EQ(EncodeAdnRecord(record, alpha, text, 28, 14), 0);
  EXPECT_EQ(record, ByteVector(28, 0x07));
  EXPECT_EQ(text, before);
}

TEST(NumberEncoders, RefuseABufferThatIsTooSmall) {
  std::u16string text = u"1234";
  ByteVector record(28, 0x07);
  EXPECT_EQ(EncodeAnrNumber(text, record, 4), 0);
  EXPECT_EQ(EncodeAnrNumber(text, std::span(record).first(4), 15), 0);
  EXPECT_EQ(EncodeExtNumber(text, record, 3), 0);
  EXPECT_EQ(EncodeExtNumber(text, std::span(record).first(3), 13), 0);
  EXPECT_EQ(record, ByteVector(28, 0x07));
  EXPECT_EQ(EncodeAnrNumber(text, record, 5), 1);
  EXPECT_EQ(EncodeExtNumber(text, record, 4), 1);
}

TEST(NumberEncoders, NoDigitsAreALengthAndAType) {
  std::u16string text;
  ByteVector record(15, 0xFF);
  EXPECT_EQ(EncodeAnrNumber(text, record, 15), 1);
  EXPECT_EQ(record, Padded(Bytes("00 01 81"), 12));
  text = u"+";
  EXPECT_EQ(EncodeAnrNumber(text, record, 15), 1);
  EXPECT_EQ(record, Padded(Bytes("00 01 91"), 12));
  EXPECT_TRUE(text == u"+");
}

TEST(AdnRecord, IsTheNameThePaddingAndTheNumber) {
  std::u16string alpha = u"Al";
  std::u16string number = u"+4412";
  ByteVector record(28, 0x00);
  EXPECT_EQ(EncodeAdnRecord(record, alpha, number, 28, 14), 1);
  EXPECT_EQ(record, Bytes("41 6C FF FF FF FF FF FF FF FF FF FF FF FF "
                          "03 91 44 21 FF FF FF FF FF FF FF FF FF FF"));
}

TEST(AdnRecord, AUcs2NameIsCutToItsFieldAndNeverReachesTheNumber) {
  std::u16string alpha = u"Александра";
  std::u16string number = u"12";
  ByteVector record(28, 0x00);
  EXPECT_EQ(EncodeAdnRecord(record, alpha, number, 28, 14), 1);
  EXPECT_TRUE(alpha == u"Алекса");
  EXPECT_EQ(record, Bytes("80 0410 043B 0435 043A 0441 0430 FF "
                          "02 81 21 FF FF FF FF FF FF FF FF FF FF FF"));
}

TEST(AdnRecord, RefusesAGsmNameLongerThanItsField) {
  std::u16string number = u"+12";
  ByteVector record(28, 0x07);
  std::u16string alpha(14, u'a');
  EXPECT_EQ(EncodeAdnRecord(record, alpha, number, 28, 14), 1);
  EXPECT_EQ(First(record, 15), Bytes("61 61 61 61 61 61 61 61 61 61 61 61 61 61 02"));
  record.assign(28, 0x07);
  alpha.assign(8, u'[');  // sixteen bytes
  EXPECT_EQ(EncodeAdnRecord(record, alpha, number, 28, 14), 0);
  EXPECT_EQ(record, ByteVector(28, 0x07));
  EXPECT_TRUE(number == u"+12");
  EXPECT_EQ(alpha.size(), 8u);
}

TEST(AdnRecord, RefusesAShortRecord) {
  std::u16string alpha;
  std::u16string number = u"12";
  ByteVector record(28, 0x07);
  EXPECT_EQ(EncodeAdnRecord(record, alpha, number, 13, 0), 0);
  EXPECT_EQ(EncodeAdnRecord(std::span(record).first(20), alpha, number, 28, 14), 0);
  EXPECT_EQ(EncodeAdnRecord({}, alpha, number, 0, 0), 0);
  EXPECT_EQ(record, ByteVector(28, 0x07));
}

TEST(AdnRecord, OfNumberPartAloneTakesNoName) {
  std::u16string alpha;
  std::u16string number = u"12";
  ByteVector record(14, 0x00);
  EXPECT_EQ(EncodeAdnRecord(record, alpha, number, 14, 14), 1);
  EXPECT_EQ(record, Padded(Bytes("02 81 21"), 11));
  alpha = u"A";
  EXPECT_EQ(EncodeAdnRecord(record, alpha, number, 14, 14), 0);
  alpha = u"Я";
  EXPECT_EQ(EncodeAdnRecord(record, alpha, number, 14, 14), 0);
  EXPECT_TRUE(alpha == u"Я");
}

TEST(AnrNumber, ThePlusOfAnInternationalOneSkipsTheServiceCode) {
  struct Case {
    std::string_view hex;
    std::u16string_view text;
  };
  const Case cases[] = {
      {"00 03 91 21 43", u"+1234"},
      {"00 06 91 2A A1 21 43 FB", u"*21*+1234#"},
      {"00 04 91 1A 32 F4", u"*1234"},  // no second run of separators
      {"00 04 91 21 3A F4", u"+12*34"},
      {"00 05 91 2B B1 44 02", u"#21#+4420"},
      {"00 03 91 AA F5", u"**5"},
      {"00 04 91 AA A5 F6", u"**5*+6"},
      {"00 05 91 1A 2A 3A F4", u"*1*+2*34"},  // one plus, however many runs
      {"00 02 91 BA", u"*#"},
      {"00 01 91", u""},
  };
  for (const Case& one : cases) {
    std::u16string text;
    DecodeAnrNumber(Bytes(one.hex), text, 40);
    EXPECT_TRUE(text == one.text) << one.hex;
    ByteVector national = Bytes(one.hex);
    national[2] = 0x81;
    DecodeAnrNumber(national, text, 40);
    EXPECT_TRUE(text.find(u'+') == std::u16string::npos) << one.hex;
  }
}

TEST(AnrNumber, WithoutALengthIsEmpty) {
  for (const std::string_view hex :
       {"", "00", "00 03", "00 00 91 21 43", "00 FF 91 21 43", "FF FF FF FF FF"}) {
    std::u16string text = u"left over";
    DecodeAnrNumber(Bytes(hex), text, 40);
    EXPECT_TRUE(text.empty()) << hex;
  }
}

TEST(NumberDecoders, ReadNoMoreThanTheLimitTheRecordAndTenBytes) {
  std::u16string text;
  const ByteVector anr = Bytes("00 0B 81 21 43 65 87 09 21 43 65 87 09 33 44 55 66");
  DecodeAnrNumber(anr, text, 8);
  EXPECT_TRUE(text == u"12345678");
  DecodeAnrNumber(anr, text, 9);
  EXPECT_TRUE(text == u"12345678");
  DecodeAnrNumber(anr, text, 40);
  EXPECT_TRUE(text == u"12345678901234567890");
  ByteVector tooLong = anr;
  tooLong[1] = 0xFE;
  DecodeAnrNumber(tooLong, text, 510);
  EXPECT_TRUE(text == u"12345678901234567890");
  DecodeAnrNumber(First(anr, 5), text, 40);
  EXPECT_TRUE(text == u"1234");

  ByteVector ext = Bytes("02 0A 21 43 65 87 09 21 43 65 87 09 33");
  DecodeExtNumber(ext, text, 6);
  EXPECT_TRUE(text == u"123456");
  ext[1] = 0x0C;
  DecodeExtNumber(ext, text, 40);
  EXPECT_TRUE(text == u"12345678901234567890");
  DecodeExtRaw(Response(ext), text);
  EXPECT_TRUE(text == u"12345678901234567890");
  DecodeExtNumber(First(ext, 3), text, 40);
  EXPECT_TRUE(text == u"12");
}

TEST(NumberDecoders, SkipNibblesThatAreNoDigit) {
  std::u16string text;
  DecodeExtNumber(Bytes("02 04 D1 2E F3 CB"), text, 40);
  EXPECT_TRUE(text == u"123#p");
}

TEST(ExtNumber, AnEmptyRecordHasNoDigits) {
  for (const ByteVector& record : {ByteVector(13, 0xFF), Bytes("02 00 21 43"), Bytes("02"), {}}) {
    std::u16string text = u"left over";
    DecodeExtNumber(record, text, 40);
    EXPECT_TRUE(text.empty());
    text = u"left over";
    DecodeExtRaw(Response(record), text);
    EXPECT_TRUE(text.empty());
  }
  std::u16string text = u"left over";
  DecodeExtRaw(ByteVector(15, 0x02), text);
  EXPECT_TRUE(text.empty());
}

TEST(AdnNumber, AnInternationalOneBeginsWithItsPlus) {
  std::u16string text;
  DecodeAdnNumber(Response(Padded(Bytes("03 91 44 21"), 10)), text, 14, 20);
  EXPECT_TRUE(text == u"+4412");
  DecodeAdnNumber(Response(Padded(Bytes("04 91 2A A1 44"), 9)), text, 14, 20);
  EXPECT_TRUE(text == u"+*21*44");
  DecodeAdnNumber(Response(Padded(Bytes("03 81 44 21"), 10)), text, 14, 20);
  EXPECT_TRUE(text == u"4412");
}

TEST(AdnNumber, WithoutALengthIsEmpty) {
  for (const std::string_view hex : {"00 91 44 21", "01 91 44 21", "FF 91 44 21", "FF FF FF FF"}) {
    std::u16string text = u"left over";
    DecodeAdnNumber(Response(Padded(Bytes(hex), 10)), text, 14, 20);
    EXPECT_TRUE(text.empty()) << hex;
  }
}

TEST(AdnNumber, TakesAtMostTenBytesAndTheLimit) {
  const ByteVector record = Bytes("0D 91 21 43 65 87 09 21 43 65 87 09 33 44");
  std::u16string text;
  DecodeAdnNumber(Response(record), text, 14, 40);
  EXPECT_TRUE(text == u"+12345678901234567890");
  DecodeAdnNumber(Response(record), text, 14, 4);
  EXPECT_TRUE(text == u"+1234");
}

TEST(AdnNumber, AShortAnswerIsEmpty) {
  const ByteVector answer = Response(Padded(Bytes("03 91 44 21"), 10));
  std::u16string text;
  for (std::size_t size = 0; size < answer.size(); ++size) {
    text = u"left over";
    DecodeAdnNumber(First(answer, size), text, 14, 20);
    EXPECT_TRUE(text.empty()) << size;
  }
  text = u"left over";
  DecodeAdnNumber(answer, text, 13, 20);
  EXPECT_TRUE(text.empty());
}

TEST(NumberDecoders, UseTheRoomTheirResultHas) {
  std::u16string text;
  text.reserve(64);
  const char16_t* before = text.data();
  DecodeAnrNumber(Bytes("00 0B 91 21 43 65 87 09 21 43 65 87 09"), text, 40);
  EXPECT_EQ(text.size(), 21u);
  DecodeAdnNumber(Response(Padded(Bytes("03 91 44 21"), 10)), text, 14, 20);
  EXPECT_EQ(text.data(), before);
}

}  // namespace
}  // namespace kelpin::sim
