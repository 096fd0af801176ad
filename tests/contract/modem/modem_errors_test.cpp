// What a modem says when it does not do as it is told, on each way to its card.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "tests/contract/modem/modem_card_test.h"

namespace kelpin::contract {
namespace {

using platform::SimResult;

const std::vector<std::string> kAdn = {"7F10", "5F3A", "4F3A"};

class ModemErrorsTest : public ModemCardTest, public testing::WithParamInterface<WayToCard> {
 protected:
  void SetUp() override { Use("usim", GetParam().abilities); }

  static bool AsksTheCard(std::string_view command) {
    return command.starts_with("AT+CGLA=") || command.starts_with("AT+CSIM=") ||
           command.starts_with("AT+CRSM=") || command.starts_with("AT+CCHO=");
  }
  std::size_t UpdatesSent() {
    const auto commands = modem->TakeCommands();
    return static_cast<std::size_t>(std::count_if(commands.begin(), commands.end(),
                                                  [](const auto& one) { return IsUpdate(one); }));
  }
  SimResult Status() {
    std::uint32_t used = 0;
    std::uint32_t total = 0;
    return sim->Status(used, total);
  }
  // As soon as the card is found to be back.
  bool Recovers() {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (Status() != SimResult::kOk) {
      if (std::chrono::steady_clock::now() > limit) return false;
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
  }
};

struct Row {
  std::string_view error;
  SimResult result;
};
// TS 27.007 9.2.1.
constexpr Row kRows[] = {
    {"10", SimResult::kNotInserted},   {"SIM not inserted", SimResult::kNotInserted},
    {"11", SimResult::kPinRequired},   {"12", SimResult::kPukRequired},
    {"13", SimResult::kSimFailure},    {"14", SimResult::kSimBusy},
    {"SIM busy", SimResult::kSimBusy}, {"16", SimResult::kPinRequired},
    {"17", SimResult::kPin2Required},  {"18", SimResult::kPuk2Required},
};

TEST_P(ModemErrorsTest, EachReasonIsToldAndForgottenWhenItIsOver) {
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.error);
    Open(row.result == SimResult::kSimBusy ? ShortPatience() : LongPatience());
    modem->SetBetween([&row](std::string_view command, const TestModem::Rest& rest) {
      return AsksTheCard(command) ? "\r\n+CME ERROR: " + std::string(row.error) + "\r\n" : rest();
    });
    EXPECT_EQ(Status(), row.result);
    modem->SetBetween(nullptr);
    EXPECT_TRUE(Recovers());
    Close();
  }
}

TEST_P(ModemErrorsTest, AnUpdateThatWasRefusedIsSentOnceAndChangesNothing) {
  const std::string before = Held(kAdn, 1);
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.error);
    Open();
    ASSERT_EQ(Status(), SimResult::kOk);
    modem->TakeCommands();
    modem->SetBetween([&row](std::string_view command, const TestModem::Rest& rest) {
      return IsUpdate(command) ? "\r\n+CME ERROR: " + std::string(row.error) + "\r\n" : rest();
    });
    EXPECT_NE(sim->Write(1, u"Kelpin", u"12"), SimResult::kOk);
    EXPECT_EQ(UpdatesSent(), 1U);
    EXPECT_EQ(Held(kAdn, 1), before);
    modem->SetBetween(nullptr);
    EXPECT_TRUE(Recovers());
    EXPECT_EQ(sim->Text(1), u"Bauer, Anna|+12125550100");
    Close();
  }
}

TEST_P(ModemErrorsTest, AnUpdateWhoseAnswerIsLostIsReadBackAndNotSentAgain) {
  Open(ShortPatience());
  ASSERT_EQ(Status(), SimResult::kOk);
  modem->TakeCommands();
  modem->SetBetween([](std::string_view command, const TestModem::Rest& rest) {
    const std::string answer = rest();
    return IsUpdate(command) ? std::string() : answer;
  });
  EXPECT_EQ(sim->Write(1, u"Kelpin", u"12"), SimResult::kOk);
  EXPECT_EQ(UpdatesSent(), 1U);
  EXPECT_EQ(Held(kAdn, 1).substr(0, 12), "4B656C70696E");
}

TEST_P(ModemErrorsTest, AnUpdateThatTheModemClaimsAndTheCardNeverSawIsNoSuccess) {
  ASSERT_EQ(Status(), SimResult::kOk);
  const std::string way = GetParam().told;
  modem->SetBetween([&way](std::string_view command, const TestModem::Rest& rest) {
    if (!IsUpdate(command)) return rest();
    return way == "(+CRSM)"   ? std::string("\r\n+CRSM: 144,0\r\n\r\nOK\r\n")
           : way == "(+CSIM)" ? std::string("\r\n+CSIM: 4,\"9000\"\r\n\r\nOK\r\n")
                              : std::string("\r\n+CGLA: 4,\"9000\"\r\n\r\nOK\r\n");
  });
  EXPECT_NE(sim->Write(1, u"Kelpin", u"12"), SimResult::kOk);
  EXPECT_EQ(sim->Text(1), u"Bauer, Anna|+12125550100");
}

TEST_P(ModemErrorsTest, ACardThatIsBusyForAMomentIsAskedAgain) {
  int busy = 3;
  modem->SetBetween([&busy](std::string_view command, const TestModem::Rest& rest) {
    return AsksTheCard(command) && busy-- > 0 ? std::string("\r\n+CME ERROR: 14\r\n") : rest();
  });
  EXPECT_EQ(Status(), SimResult::kOk);
  modem->SetBetween(nullptr);
}

TEST_P(ModemErrorsTest, ADamagedAnswerIsNeverTakenForTheCards) {
  for (const std::string_view damaged :
       {"\r\n+CSIM: 8,\"ABCD90\"\r\n\r\nOK\r\n", "\r\n+CGLA: 6,\"9000\"\r\n\r\nOK\r\n",
        "\r\n+CRSM: 144\r\n\r\nOK\r\n", "\r\nOK\r\n"}) {
    Open();
    modem->SetBetween([damaged](std::string_view command, const TestModem::Rest& rest) {
      return AsksTheCard(command) ? std::string(damaged) : rest();
    });
    EXPECT_EQ(Status(), SimResult::kSimFailure) << damaged;
    modem->SetBetween(nullptr);
    EXPECT_TRUE(Recovers());
    Close();
  }
}

TEST_P(ModemErrorsTest, ALateAnswerIsNotTakenForTheNextOne) {
  // The late answer and the one that was waited for come one after the other.
  device::modem::Patience patience = ShortPatience();
  patience.quiet = std::chrono::milliseconds(500);
  patience.drain = std::chrono::milliseconds(2000);
  Open(patience);
  ASSERT_EQ(Status(), SimResult::kOk);
  bool late = true;
  modem->SetBetween([&late, &patience](std::string_view command, const TestModem::Rest& rest) {
    const std::string answer = rest();
    if (AsksTheCard(command) && late) {
      late = false;
      std::this_thread::sleep_for(patience.card + std::chrono::milliseconds(100));
    }
    return answer;
  });
  service->ReadAfresh();
  EXPECT_NE(Status(), SimResult::kOk);
  EXPECT_TRUE(Recovers());
  EXPECT_EQ(sim->Text(1), u"Bauer, Anna|+12125550100");
  EXPECT_EQ(sim->Text(2).front() == u'!', false);
  modem->SetBetween(nullptr);
}

TEST_P(ModemErrorsTest, ALineThatNeverEndsIsGivenUpAndForgotten) {
  Open(ShortPatience());
  bool first = true;
  modem->SetBetween([&first](std::string_view command, const TestModem::Rest& rest) {
    if (!AsksTheCard(command) || !first) return rest();
    first = false;
    return std::string(100000, 'A');
  });
  EXPECT_EQ(Status(), SimResult::kUndetermined);
  EXPECT_TRUE(Recovers());
  EXPECT_EQ(sim->Text(1), u"Bauer, Anna|+12125550100");
  modem->SetBetween(nullptr);
}

TEST_P(ModemErrorsTest, WhatNobodyAskedForStandsBetweenTheLinesOfNoAnswer) {
  modem->SetBetween([](std::string_view /*command*/, const TestModem::Rest& rest) {
    // Before the answer, and between its line and its end.
    std::string answer = rest();
    const std::size_t end = answer.rfind("\r\nOK");
    if (end != std::string::npos) answer.insert(end, "\r\n^RSSI: 17\r\n\r\n+CREG: 1\r\n");
    return "\r\n+CMTI: \"SM\",3\r\n\r\nRING\r\n" + answer + "\r\n+CSQ: 17,99\r\n";
  });
  std::uint32_t used = 0;
  std::uint32_t total = 0;
  EXPECT_EQ(sim->Status(used, total), SimResult::kOk);
  EXPECT_EQ(used, 180U);
  EXPECT_EQ(sim->Text(1), u"Bauer, Anna|+12125550100");
  modem->SetBetween(nullptr);
}

INSTANTIATE_TEST_SUITE_P(Modem, ModemErrorsTest, testing::ValuesIn(WaysToCard()),
                         [](const auto& way) { return way.param.name; });

}  // namespace
}  // namespace kelpin::contract
