#include "tests/softcard/card_fixture.h"

namespace kelpin::device::softcard {
namespace {

constexpr char kRight[] = "31323334FFFFFFFF";  // 1234
constexpr char kWrong[] = "31313131FFFFFFFF";
constexpr char kPuk[] = "3132333435363738";

class PinTest : public CardTest {
 protected:
  PinTest() : CardTest(SmallCard("", R"({"code": "1234", "enabled": true, "puk": "12345678"})")) {}

  std::string Verify(const std::string& code) { return Say("0020000108" + code); }
};

TEST_F(PinTest, WithoutThePinTheFileIsClosed) {
  Go("7F106F3A");
  EXPECT_EQ(Say("00B2010410"), "6982");
  EXPECT_EQ(Say("A0B2010410"), "9804");
  EXPECT_EQ(Say("00A20104024142"), "6982");
  EXPECT_EQ(Verify(kRight), "9000");
  EXPECT_EQ(Say("00B2010410").substr(32), "9000");
  EXPECT_EQ(Say("A0B2010410").substr(32), "9000");
  card_->Reset();
  Go("7F106F3A");
  EXPECT_EQ(Say("00B2010410"), "6982");
  EXPECT_EQ(saves_, 0);  // nothing was lost, nothing to keep
}

TEST_F(PinTest, AskingCostsNothing) {
  EXPECT_EQ(Say("00200001"), "63C3");
  EXPECT_EQ(Say("0020000100"), "63C3");
  EXPECT_EQ(Verify(kWrong), "63C2");
  EXPECT_EQ(Say("00200001"), "63C2");
  EXPECT_EQ(Say("002C0001"), "63CA");
}

TEST_F(PinTest, WrongCodesCountDownAcrossPowerOff) {
  EXPECT_EQ(Verify(kWrong), "63C2");
  EXPECT_EQ(saves_, 1);
  card_->Reset();
  EXPECT_EQ(Verify(kWrong), "63C1");
  EXPECT_EQ(Verify(kWrong), "63C0");
  EXPECT_EQ(Verify(kRight), "6983");
  EXPECT_EQ(Say("00200001"), "6983");
  EXPECT_EQ(Say("A020000108" + std::string(kRight)), "9840");
  EXPECT_EQ(image_.pin1.tries, 0);
  EXPECT_EQ(saves_, 3);
}

TEST_F(PinTest, ARightCodeGivesTheTriesBack) {
  Verify(kWrong);
  Verify(kWrong);
  EXPECT_EQ(Verify(kRight), "9000");
  EXPECT_EQ(Say("00200001"), "63C3");
  EXPECT_EQ(saves_, 3);
}

TEST_F(PinTest, AWrongCodeClosesWhatWasOpen) {
  Verify(kRight);
  Go("7F106F3A");
  Verify(kWrong);
  EXPECT_EQ(Say("00B2010410"), "6982");
}

TEST_F(PinTest, ATryThatCannotBeKeptIsNoTry) {
  diskWorks_ = false;
  EXPECT_EQ(Verify(kWrong), "6581");
  EXPECT_EQ(image_.pin1.tries, 3);
}

TEST_F(PinTest, ASimSaysWrongThenBlocked) {
  const std::string wrong = "A020000108" + std::string(kWrong);
  EXPECT_EQ(Say(wrong), "9804");
  EXPECT_EQ(Say(wrong), "9804");
  EXPECT_EQ(Say(wrong), "9840");
  EXPECT_EQ(Say(wrong), "9840");
  // The answer to STATUS counts with it: byte 19, no try left of a code there is.
  EXPECT_EQ(Say("A0F2000016").substr(36, 4), "808A");
}

TEST_F(PinTest, ThePukOpensABlockedPinAndSetsANewOne) {
  for (int i = 0; i < 3; ++i) {
    Verify(kWrong);
  }
  EXPECT_EQ(Say("002C000110" + std::string("3838383838383838") + "39393939FFFFFFFF"), "63C9");
  EXPECT_EQ(Say("002C000110" + std::string(kPuk) + "39393939FFFFFFFF"), "9000");
  EXPECT_EQ(Say("002C0001"), "63CA");
  Go("7F106F3A");
  EXPECT_EQ(Say("00B2010410").substr(32), "9000");  // verified with it
  EXPECT_EQ(Verify(kRight), "63C2");
  EXPECT_EQ(Verify("39393939FFFFFFFF"), "9000");
}

TEST_F(PinTest, TenWrongPuksEndIt) {
  const std::string wrong =
      "002C000110"
      "3838383838383838"
      "39393939FFFFFFFF";
  for (int left = 9; left >= 0; --left) {
    EXPECT_EQ(Say(wrong), "63C" + std::to_string(left));
  }
  EXPECT_EQ(Say("002C000110" + std::string(kPuk) + "39393939FFFFFFFF"), "6983");
  EXPECT_EQ(Say("A02C000010" + std::string(kPuk) + "39393939FFFFFFFF"), "9840");
}

TEST_F(PinTest, ASimNamesTheFirstPinZeroWhenUnblocking) {
  EXPECT_EQ(Say("A02C000010" + std::string(kPuk) + "39393939FFFFFFFF"), "9000");
  EXPECT_EQ(image_.pin1.code, "9999");
  EXPECT_EQ(Say("A02C000110" + std::string(kPuk) + "39393939FFFFFFFF"), "9802");
}

TEST_F(PinTest, ThePinIsChangedWithTheOldOne) {
  EXPECT_EQ(Say("0024000110" + std::string(kWrong) + "35353535FFFFFFFF"), "63C2");
  EXPECT_EQ(Say("0024000110" + std::string(kRight) + "35353535FFFFFFFF"), "9000");
  EXPECT_EQ(Verify("35353535FFFFFFFF"), "9000");
  EXPECT_EQ(Say("0024000110"
                "35353535FFFFFFFF"
                "353535FFFFFFFFFF"),
            "6A80");  // three digits
  EXPECT_EQ(Say("0024000110"
                "35353535FFFFFFFF"
                "35353535FF35FFFF"),
            "6A80");
  EXPECT_EQ(Say("0024000108"
                "35353535FFFFFFFF"),
            "6700");
}

TEST_F(PinTest, ThePinIsSwitchedOffAndOn) {
  EXPECT_EQ(Say("0026000108" + std::string(kRight)), "9000");
  card_->Reset();
  Go("7F106F3A");
  EXPECT_EQ(Say("00B2010410").substr(32), "9000");
  EXPECT_EQ(Verify(kRight), "6984");
  EXPECT_EQ(Say("A020000108" + std::string(kRight)), "9808");
  EXPECT_EQ(Say("0026000108" + std::string(kRight)), "6984");
  EXPECT_EQ(Say("0028000108" + std::string(kWrong)), "63C2");
  EXPECT_EQ(Say("0028000108" + std::string(kRight)), "9000");
  EXPECT_EQ(Say("A028000108" + std::string(kRight)), "9808");
  card_->Reset();
  Go("7F106F3A");
  EXPECT_EQ(Say("00B2010410"), "6982");
}

TEST_F(PinTest, TheSecondPinIsItsOwn) {
  Verify(kRight);
  Go("7F106F3B");
  EXPECT_EQ(Say("00DC010402AAAA"), "6982");
  EXPECT_EQ(Say("0020008108"
                "3536373839FFFFFF"),
            "9000");
  EXPECT_EQ(Say("00DC010402AAAA"), "9000");
  EXPECT_EQ(Say("A020000208"
                "3536373830FFFFFF"),
            "9804");
  EXPECT_EQ(Say("00200081"), "63C2");
}

TEST_F(PinTest, ACodeThatIsNotThereIsUnknown) {
  EXPECT_EQ(Say("0020000A08" + std::string(kRight)), "6A88");
  EXPECT_EQ(Say("0020001108" + std::string(kRight)), "6A88");
  EXPECT_EQ(Say("A020000308" + std::string(kRight)), "9802");
  EXPECT_EQ(Say("0020010108" + std::string(kRight)), "6A86");
  EXPECT_EQ(Say("002000010731323334FFFFFF"), "6700");
  EXPECT_EQ(Say("A02000010731323334FFFFFF"), "6708");
}

TEST_F(PinTest, EveryChannelSeesAVerifiedPin) {
  Say("0070000001");
  Verify(kRight);
  Say("01A4000C027F10");
  Say("01A4000C026F3A");
  EXPECT_EQ(Say("01B2010410").substr(32), "9000");
}

}  // namespace
}  // namespace kelpin::device::softcard
