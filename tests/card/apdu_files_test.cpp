#include "device/card/apdu_files.h"

#include <gtest/gtest.h>

#include "tests/card/scripted_channel.h"

namespace kelpin::device::card {
namespace {

const FilePath kAdnPath = {0x7F10, 0x5F3A, 0x4F3A};
const FilePath kPbcPath = {0x7F10, 0x5F3A, 0x4F09};
constexpr char kAdnFcp[] = "620B 8205422100 04 FA 83024F3A";  // 250 records of 4

// A UICC that is open; nothing is selected but the master file.
struct Card {
  Card() {
    channel.Expect("00A40004023F00", "6130");
    EXPECT_EQ(files.Open(), TransportError::kNone);
  }
  std::string Read(const FilePath& path, std::uint8_t record) {
    std::vector<std::uint8_t> data;
    return files.ReadRecord(path, record, 4, data).Ok() ? ToHex(data) : "error";
  }
  ScriptedChannel channel;
  ApduFiles files{channel};
};

TEST(ApduFiles, AT0CardsAnswersAreFetchedAndASelectedFileIsNotSelectedAgain) {
  Card card;
  card.channel.Expect("00A4080406 7F105F3A4F3A 00", "610D")
      .Expect("00C000000D", std::string(kAdnFcp) + "9000")
      .Expect("00B2070404", "01020304 9000")
      .Expect("00DC080404 0A0B0C0D", "9000");
  FileInfo info;
  ASSERT_TRUE(card.files.Info(kAdnPath, info).Ok());
  EXPECT_EQ(info.recordLength, 4);
  EXPECT_EQ(info.recordCount, 250);
  EXPECT_EQ(card.Read(kAdnPath, 7), "01020304");
  EXPECT_TRUE(card.files.UpdateRecord(kAdnPath, 8, Hex("0A0B0C0D")).Ok());
  ASSERT_TRUE(card.files.Info(kAdnPath, info).Ok());  // known
}

TEST(ApduFiles, AnswersThatTheReaderFetchedAreTakenAsWell) {
  Card card;
  card.channel.Expect("00A4080406 7F105F3A4F3A 00", std::string(kAdnFcp) + "9000")
      .Expect("00A2010404 FFFFFFFF 00", "0305 9000");
  FileInfo info;
  ASSERT_TRUE(card.files.Info(kAdnPath, info).Ok());
  std::vector<std::uint8_t> records;
  ASSERT_TRUE(card.files.SearchRecords(kAdnPath, Hex("FFFFFFFF"), records).Ok());
  EXPECT_EQ(ToHex(records), "0305");
}

TEST(ApduFiles, ACardThatTakesNoPathsIsWalkedStepByStep) {
  Card card;
  card.channel.Expect("00A4080406 7F105F3A4F3A", "6A86")
      .Expect("00A40004023F00", "6130")
      .Expect("00A40004027F10", "6130")
      .Expect("00A40004025F3A", "6130")
      .Expect("00A40004024F3A", "6130")
      .Expect("00B2010404", "01020304 9000")
      .Expect("00A40004024F09", "6130")  // in the same folder
      .Expect("00B2020404", "05060708 9000");
  EXPECT_EQ(card.Read(kAdnPath, 1), "01020304");
  EXPECT_EQ(card.Read(kPbcPath, 2), "05060708");
}

TEST(ApduFiles, TheApplicationIsFoundByItsIdWhereItsStandInIsUnknown) {
  Card card;
  const auto aid = Hex("A0000000871002FF49FF0589");
  card.channel.Expect("00A404040C A0000000871002FF49FF0589", "6130")
      .Expect("00A4080404 7FFF6F40", "6A82")
      .Expect("00A404040C A0000000871002FF49FF0589", "6130")
      .Expect("00A40004026F40", "6130")
      .Expect("00B2010404", "01020304 9000");
  ASSERT_TRUE(card.files.SelectApplication(aid).Ok());
  EXPECT_EQ(card.Read({kApplication, 0x6F40}, 1), "01020304");
}

TEST(ApduFiles, WithoutAnApplicationItsFilesAreMissing) {
  Card card;
  FileInfo info;
  EXPECT_TRUE(card.files.Info({kApplication, 0x6F40}, info).Missing());
}

TEST(ApduFiles, ACardOfTheGsmClassIsSpokenToInIt) {
  ScriptedChannel channel;
  channel.Expect("00A40004023F00", "6E00")
      .Expect("A0A40000023F00", "9F16")
      .Expect("A0A40000023F00", "9F16")
      .Expect("A0A40000027F10", "9F16")
      .Expect("A0A40000026F3A00", "9F0F")
      .Expect("A0C000000F", "0000 0118 6F3A 04 00 11F022 01 02 01 1C 9000");
  ApduFiles files(channel);
  ASSERT_EQ(files.Open(), TransportError::kNone);
  FileInfo info;
  ASSERT_TRUE(files.Info({0x7F10, 0x6F3A}, info).Ok());
  EXPECT_EQ(info.recordLength, 28);
  EXPECT_EQ(info.recordCount, 10);
  std::vector<std::uint8_t> records;
  EXPECT_EQ(files.SearchRecords({0x7F10, 0x6F3A}, Hex("FF"), records).Word(),
            StatusWord::kUnknownInstruction);
  EXPECT_TRUE(files.SelectApplication(Hex("A0000000871002")).Missing());
}

TEST(ApduFiles, ASelectionThatTheCardLostIsMadeAgainOnce) {
  Card card;
  card.channel.Expect("00A4080406 7F105F3A4F3A", "6130")
      .Expect("00B2010404", "01020304 9000")
      .Expect("00DC010404 0A0B0C0D", "6986")
      .Expect("00A4080406 7F105F3A4F3A", "6130")
      .Expect("00DC010404 0A0B0C0D", "6986");
  EXPECT_EQ(card.Read(kAdnPath, 1), "01020304");
  EXPECT_EQ(card.files.UpdateRecord(kAdnPath, 1, Hex("0A0B0C0D")).Word(),
            StatusWord::kNoFileSelected);
}

TEST(ApduFiles, ASelectionIsNotTrustedWhereOthersMaySelect) {
  Card card;
  card.channel.othersMaySelect = true;
  for (int i = 0; i < 2; ++i) {
    card.channel.Expect("00A4080406 7F105F3A4F3A", "6130").Expect("00B2010404", "01020304 9000");
    EXPECT_EQ(card.Read(kAdnPath, 1), "01020304");
  }
  card.channel.Expect("00A4080406 7F105F3A4F3A", "6130")
      .Expect("00B2010404", "01020304 9000")
      .Expect("00B2020404", "01020304 9000");
  const CardTransaction transaction(card.files);  // keeps them off
  EXPECT_EQ(card.Read(kAdnPath, 1), "01020304");
  EXPECT_EQ(card.Read(kAdnPath, 2), "01020304");
}

TEST(ApduFiles, ACardThatCannotSearchIsAskedOnce) {
  for (const char* word : {"6D00", "6A81", "6E00", "6A86"}) {
    Card card;
    card.channel.Expect("00A4080406 7F105F3A4F3A", "6130").Expect("00A2010404 FFFFFFFF 00", word);
    std::vector<std::uint8_t> records;
    for (int i = 0; i < 2; ++i) {
      EXPECT_EQ(card.files.SearchRecords(kAdnPath, Hex("FFFFFFFF"), records).Word(),
                StatusWord::kUnknownInstruction);
    }
  }
}

TEST(ApduFiles, ASearchThatFindsNothingIsASuccessWithoutRecords) {
  Card card;
  card.channel.Expect("00A4080406 7F105F3A4F3A", "6130").Expect("00A2010404 FFFFFFFF 00", "6282");
  std::vector<std::uint8_t> records = {9};
  EXPECT_TRUE(card.files.SearchRecords(kAdnPath, Hex("FFFFFFFF"), records).Ok());
  EXPECT_TRUE(records.empty());
}

TEST(ApduFiles, AnInvalidatedFilesAnswerIsFetchedBehindTheWarning) {
  Card card;
  card.channel.Expect("00A4080406 7F105F3A4F3A 00", "6283")
      .Expect("00C0000000", "6C10")
      .Expect("00C0000010", "620E 8205422100 04 FA 83024F3A 8A0104 9000");
  FileInfo info;
  ASSERT_TRUE(card.files.Info(kAdnPath, info).Ok());
  EXPECT_TRUE(info.invalidated);
}

TEST(ApduFiles, ALostCardIsClosedAndNotSpokenTo) {
  for (const TransportError error : {TransportError::kRemoved, TransportError::kReset,
                                     TransportError::kNoCard, TransportError::kNoReader}) {
    Card card;
    card.channel.Expect("00A4080406 7F105F3A4F3A", "", error);
    std::vector<std::uint8_t> data;
    EXPECT_EQ(card.files.ReadRecord(kAdnPath, 1, 4, data).Error(), error);
    EXPECT_FALSE(card.files.IsOpen());
    EXPECT_EQ(card.files.ReadRecord(kAdnPath, 1, 4, data).Error(), TransportError::kReset);
  }
}

TEST(ApduFiles, AfterALostAnswerTheFileIsSelectedAgain) {
  Card card;
  card.channel.Expect("00A4080406 7F105F3A4F3A", "6130")
      .Expect("00DC010404 0A0B0C0D", "", TransportError::kTimeout)
      .Expect("00A4080406 7F105F3A4F3A", "6130")
      .Expect("00B2010404", "0A0B0C0D 9000");
  EXPECT_EQ(card.files.UpdateRecord(kAdnPath, 1, Hex("0A0B0C0D")).Error(),
            TransportError::kTimeout);
  EXPECT_TRUE(card.files.IsOpen());
  EXPECT_EQ(card.Read(kAdnPath, 1), "0A0B0C0D");
}

TEST(ApduFiles, LongTransparentFilesAreReadInPieces) {
  Card card;
  card.channel.Expect("00A40004022F05", "6130")
      .Expect("00B00000FF", std::string(510, 'A') + "9000")
      .Expect("00B000FF02", "0102 9000");
  std::vector<std::uint8_t> data;
  ASSERT_TRUE(card.files.ReadBinary({0x2F05}, 0, 257, data).Ok());
  EXPECT_EQ(data.size(), 257U);
  EXPECT_EQ(data.back(), 0x02);
}

constexpr char kMfFcp[] = "6211 82027821 83023F00 C607 900180 830101";

TEST(ApduFiles, AskingForThePinsStateSendsNoPin) {
  Card card;
  card.channel.Expect("00A40004023F0000", std::string(kMfFcp) + "9000").Expect("00200001", "63C2");
  PinState state;
  ASSERT_TRUE(card.files.GetPinState(state).Ok());
  EXPECT_TRUE(state.enabled);
  EXPECT_FALSE(state.verified);
  EXPECT_FALSE(state.blocked);
  EXPECT_EQ(state.triesLeft, 2);
}

TEST(ApduFiles, APinIsSentOncePaddedAndARefusalIsTold) {
  Card card;
  card.channel.Expect("00A40004023F0000", std::string(kMfFcp) + "9000")
      .Expect("0020000108 31323334FFFFFFFF", "63C1")
      .Expect("00A40004023F0000", std::string(kMfFcp) + "9000")
      .Expect("00200001", "63C1");
  PinState state;
  ASSERT_TRUE(card.files.VerifyPin("1234", state).Ok());
  EXPECT_FALSE(state.verified);
  EXPECT_EQ(state.triesLeft, 1);
  EXPECT_FALSE(card.files.VerifyPin("123", state).Ok());
  EXPECT_FALSE(card.files.VerifyPin("123456789", state).Ok());
  EXPECT_FALSE(card.files.VerifyPin("12a4", state).Ok());
}

TEST(ApduFiles, ABlockedPinIsToldWithTheTriesOfItsPuk) {
  Card card;
  card.channel.Expect("00A40004023F0000", std::string(kMfFcp) + "9000")
      .Expect("00200001", "6983")
      .Expect("002C0001", "63C9");
  PinState state;
  ASSERT_TRUE(card.files.GetPinState(state).Ok());
  EXPECT_TRUE(state.blocked);
  EXPECT_EQ(state.triesLeft, 0);
  EXPECT_EQ(state.unblockTriesLeft, 9);
}

TEST(ApduFiles, APukIsSentOnceWithTheNewPin) {
  Card card;
  card.channel.Expect("00A40004023F0000", std::string(kMfFcp) + "9000")
      .Expect("002C000110 3132333435363738 32343638FFFFFFFF", "9000")
      .Expect("00A40004023F0000", std::string(kMfFcp) + "9000")
      .Expect("00200001", "63C3");
  PinState state;
  ASSERT_TRUE(card.files.UnblockPin("12345678", "2468", state).Ok());
  EXPECT_TRUE(state.verified);
  EXPECT_FALSE(state.blocked);
  EXPECT_FALSE(card.files.UnblockPin("1234567", "2468", state).Ok());
  EXPECT_FALSE(card.files.UnblockPin("12345678", "246", state).Ok());
}

// Three times more, then the card's word counts.
TEST(ApduFiles, AReadThatMeetsABusyCardIsSentAgainAFewTimes) {
  Card card;
  card.channel.Expect("00A40004022FE2", "9300")
      .Expect("00A40004022FE2", "9300")
      .Expect("00A40004022FE2", "9000")
      .Expect("00B000000A", "9300")
      .Expect("00B000000A", "98001032547698103254 9000");
  std::vector<std::uint8_t> data;
  EXPECT_TRUE(card.files.ReadBinary({0x2FE2}, 0, 10, data).Ok());
  card.channel.Expect("00B000000A", "9300")
      .Expect("00B000000A", "9300")
      .Expect("00B000000A", "9300")
      .Expect("00B000000A", "9300");
  const CardResult busy = card.files.ReadBinary({0x2FE2}, 0, 10, data);
  EXPECT_EQ(static_cast<int>(busy.Word()), 0x9300);
}

TEST(ApduFiles, AnUpdateThatMeetsABusyCardIsNotSentAgain) {
  Card card;
  card.channel.Expect("00A40004022FE2", "9000").Expect("00D6000001 55", "9300");
  const std::uint8_t byte[] = {0x55};
  const CardResult busy = card.files.UpdateBinary({0x2FE2}, 0, byte);
  EXPECT_EQ(static_cast<int>(busy.Word()), 0x9300);
}

TEST(ApduFiles, ACodeThatMeetsABusyCardIsNotSentAgain) {
  Card card;
  card.channel.Expect("00A40004023F0000", std::string(kMfFcp) + "9000")
      .Expect("0020000108 31323334FFFFFFFF", "9300");
  PinState state;
  EXPECT_FALSE(card.files.VerifyPin("1234", state).Ok());
}

TEST(ApduFiles, AfterAStopNothingIsBegun) {
  Card card;
  card.files.Stop();
  std::vector<std::uint8_t> data;
  EXPECT_EQ(card.files.ReadBinary({0x2FE2}, 0, 10, data).Error(), TransportError::kBusy);
}

}  // namespace
}  // namespace kelpin::device::card
