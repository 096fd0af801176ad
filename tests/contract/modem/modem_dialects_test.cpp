// Modems that say the same in other ways.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>

#include "tests/contract/modem/modem_card_test.h"

namespace kelpin::contract {
namespace {

using platform::SimResult;
using ::testing::HasSubstr;

std::string Replaced(std::string text, std::string_view from, std::string_view to) {
  for (std::size_t at = text.find(from); at != std::string::npos;
       at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

class ModemDialectsTest : public ModemCardTest, public testing::WithParamInterface<WayToCard> {
 protected:
  // The sample card in a modem that answers so.
  void Speak(TestModem::Between between) {
    card = std::make_unique<device::card::SoftCard>("usim");
    modem = std::make_unique<TestModem>(card->Channel(), GetParam().abilities);
    modem->SetBetween(std::move(between));
    Open();
  }
  // Listed, and an entry read, written and read back.
  void Works() {
    ASSERT_NE(sim, nullptr);
    EXPECT_THAT(channel->Description(), HasSubstr(GetParam().told));
    std::uint32_t used = 0;
    std::uint32_t total = 0;
    EXPECT_EQ(sim->Status(used, total), SimResult::kOk);
    EXPECT_EQ(used, 180U);
    EXPECT_EQ(sim->Text(1), u"Bauer, Anna|+12125550100");
    EXPECT_EQ(sim->Write(1, u"Kelpin", u"12"), SimResult::kOk);
    EXPECT_EQ(sim->Text(1), u"Kelpin|12");
  }
};

TEST_P(ModemDialectsTest, LinesThatEndWithOneSign) {
  for (const std::string_view end : {"\r", "\n", "\r\r\n"}) {
    Close();
    Speak([end](std::string_view, const TestModem::Rest& rest) {
      return Replaced(rest(), "\r\n", end);
    });
    Works();
  }
}

TEST_P(ModemDialectsTest, AnEchoThatNothingSwitchesOff) {
  Speak([](std::string_view command, const TestModem::Rest& rest) {
    const std::string answer = rest();
    const std::string echo = std::string(command) + "\r";
    return answer.starts_with(echo) ? answer : echo + answer;
  });
  Works();
}

TEST_P(ModemDialectsTest, HexInLowerCaseWithoutQuotes) {
  Speak([](std::string_view command, const TestModem::Rest& rest) {
    std::string answer = rest();
    const bool hex = command.starts_with("AT+CSIM=") || command.starts_with("AT+CGLA=") ||
                     command.starts_with("AT+CRSM=");
    const std::size_t line = answer.find("\r\n+C");
    if (!hex || line == std::string::npos) return answer;
    answer = Replaced(answer.substr(line), "\"", "");
    for (std::size_t at = answer.find(':'); at < answer.rfind("\r\nOK"); ++at) {
      if (answer[at] >= 'A' && answer[at] <= 'F') answer[at] += 'a' - 'A';
    }
    return answer;
  });
  Works();
}

TEST_P(ModemDialectsTest, RubbishBeforeTheFirstAnswer) {
  bool first = true;
  Speak([&first](std::string_view, const TestModem::Rest& rest) {
    const std::string before = std::exchange(first, false)
                                   ? std::string("\0\x7E\xFF\x7D#!\x01~", 8) + "\r\nOLD: 1\r\n"
                                   : std::string();
    return before + rest();
  });
  Works();
  Close();
}

TEST_P(ModemDialectsTest, AnAnswerAboutThePinWithoutAnEnd) {
  Speak([](std::string_view command, const TestModem::Rest& rest) {
    const std::string answer = rest();
    return command == "AT+CPIN?" ? Replaced(answer, "\r\nOK\r\n", "") : answer;
  });
  Works();
}

TEST_P(ModemDialectsTest, AChannelThatIsNamedByItsNumberAlone) {
  Speak([](std::string_view command, const TestModem::Rest& rest) {
    const std::string answer = rest();
    return command.starts_with("AT+CCHO=") ? Replaced(answer, "+CCHO: ", "") : answer;
  });
  Works();
}

TEST_P(ModemDialectsTest, AModemThatIsSwitchedOffIsSaidToBe) {
  Speak([](std::string_view command, const TestModem::Rest& rest) {
    if (command == "AT+CPIN?") return std::string("\r\n+CME ERROR: 13\r\n");
    return command == "AT+CFUN?" ? std::string("\r\n+CFUN: 0\r\n\r\nOK\r\n") : rest();
  });
  std::uint32_t used = 0;
  std::uint32_t total = 0;
  EXPECT_EQ(sim->Status(used, total), SimResult::kRadioOff);
}

TEST_P(ModemDialectsTest, AFilesInformationIsAskedForShorterWhereItHasToBe) {
  // Some modems refuse to give more than the 15 bytes of old cards.
  Speak([](std::string_view command, const TestModem::Rest& rest) {
    return command.starts_with("AT+CRSM=192,") && command.find(",0,0,255") != std::string::npos
               ? std::string("\r\nERROR\r\n")
               : rest();
  });
  Works();
}

INSTANTIATE_TEST_SUITE_P(Modem, ModemDialectsTest, testing::ValuesIn(WaysToCard()),
                         [](const auto& way) { return way.param.name; });

}  // namespace
}  // namespace kelpin::contract
