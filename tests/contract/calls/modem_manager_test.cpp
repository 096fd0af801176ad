#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QThread>
#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "device/calls/modem_manager_telephone.h"
#include "tests/contract/calls/modem_manager_bench.h"
#include "tests/contract/telephone_contract.h"
#include "tests/device/scratch_folder.h"

namespace kelpin::contract {
namespace {

using device::calls::ModemManagerTelephone;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr char kNoMock[] = "python3-dbusmock is not installed";
// Long enough for a machine that has much else to do; nothing waits for its end.
constexpr std::chrono::milliseconds kPatience(60000);

class ModemTest : public testing::Test {
 protected:
  void SetUp() override {
    if (MockPython().isEmpty()) GTEST_SKIP() << kNoMock;
    ASSERT_TRUE(PrivateBus::Start()) << "dbus-daemon does not start";
  }

  void Open(std::chrono::milliseconds patience = kPatience) {
    std::string why;
    telephone_ = ModemManagerTelephone::Open(
        {.busAddress = PrivateBus::Address(),
         .patience = patience,
         .failed = [this](const std::string& reason) { told_.push_back(reason); }},
        why);
    ASSERT_NE(telephone_, nullptr) << why;
  }
  int Call(std::u16string_view number = u"+4917") {
    platform::PhoneCallRequest request;
    request.destinationAddress = number;
    return telephone_->PhoneMakeCall(request);
  }
  // Serves the event loop until something is told.
  void AwaitTold() {
    const QDeadlineTimer end(kPatience);
    while (told_.empty() && !end.hasExpired()) {
      QCoreApplication::processEvents();
      QThread::msleep(1);
    }
  }

  std::vector<std::string> told_;
  std::unique_ptr<ModemManagerTelephone> telephone_;
};

TEST_F(ModemTest, TheModemIsGivenTheNumberAndTheCallIsStarted) {
  ModemManagerMock service(kOneModem);
  Open();
  EXPECT_EQ(Call(u"+491711234567"), 1);
  EXPECT_EQ(service.NextLine(),
            "create /org/freedesktop/ModemManager1/Modem/0 number=+491711234567");
  EXPECT_EQ(service.NextLine(), "start /org/freedesktop/ModemManager1/Call/0");
  EXPECT_EQ(Call(u"*100#"), 1);
  EXPECT_EQ(service.NextLine(), "create /org/freedesktop/ModemManager1/Modem/0 number=*100#");
  EXPECT_EQ(service.NextLine(), "start /org/freedesktop/ModemManager1/Call/1");
  EXPECT_THAT(told_, IsEmpty());
}

TEST_F(ModemTest, TheFirstModemThatCanSpeakTakesTheCall) {
  ModemManagerMock service(R"({"modems": [[10, true], [1, false], [2, true]]})");
  Open();
  EXPECT_EQ(Call(), 1);
  EXPECT_EQ(service.NextLine(), "create /org/freedesktop/ModemManager1/Modem/2 number=+4917");
}

TEST_F(ModemTest, WithoutTheServiceNobodyIsCalled) {
  Open();
  EXPECT_EQ(Call(), 0);
  EXPECT_THAT(told_, ElementsAre("ModemManager is not running. Install the package modemmanager "
                                 "and start it."));
}

TEST_F(ModemTest, TheServiceMayComeAfterTheProgram) {
  Open();
  EXPECT_EQ(Call(), 0);
  ModemManagerMock service(kOneModem);
  EXPECT_EQ(Call(), 1);
  EXPECT_EQ(service.NextLine(), "create /org/freedesktop/ModemManager1/Modem/0 number=+4917");
}

TEST_F(ModemTest, WithoutAModemNobodyIsCalled) {
  ModemManagerMock service(R"({"modems": []})");
  Open();
  EXPECT_EQ(Call(), 1);
  AwaitTold();
  EXPECT_THAT(told_, ElementsAre(HasSubstr("knows no modem")));
}

TEST_F(ModemTest, AModemForDataAloneCallsNobody) {
  ModemManagerMock service(R"({"modems": [[0, false]]})");
  Open();
  EXPECT_EQ(Call(), 1);
  AwaitTold();
  EXPECT_THAT(told_, ElementsAre(HasSubstr("The modem cannot make calls")));
}

TEST_F(ModemTest, ACallThatIsRefusedIsToldWithTheModemsReason) {
  ModemManagerMock service(R"({"modems": [[0, true]], "create": "refused"})");
  Open();
  EXPECT_EQ(Call(), 1);
  AwaitTold();
  EXPECT_THAT(told_, ElementsAre("The modem did not take the call: no network"));
}

TEST_F(ModemTest, ACallWhoseStartIsRefusedIsToldAndTakenAway) {
  ModemManagerMock service(R"({"modems": [[0, true]], "start": "refused"})");
  Open();
  EXPECT_EQ(Call(), 1);
  EXPECT_THAT(told_, IsEmpty());
  AwaitTold();
  EXPECT_THAT(told_, ElementsAre("The modem did not take the call: no network"));
  EXPECT_EQ(service.NextLine(), "create /org/freedesktop/ModemManager1/Modem/0 number=+4917");
  EXPECT_EQ(service.NextLine(), "start /org/freedesktop/ModemManager1/Call/0");
  EXPECT_EQ(service.NextLine(), "delete /org/freedesktop/ModemManager1/Call/0");
}

TEST_F(ModemTest, AServiceThatEndsInsteadOfAnsweringTakesNoCall) {
  ModemManagerMock service(R"({"modems": [[0, true]], "create": "vanish"})");
  Open();
  EXPECT_EQ(Call(), 1);
  AwaitTold();
  EXPECT_THAT(told_, ElementsAre(HasSubstr("does not answer")));
  service.AwaitEnd();
  told_.clear();
  EXPECT_EQ(Call(), 0);
  EXPECT_THAT(told_, ElementsAre(HasSubstr("is not running")));
}

TEST_F(ModemTest, AServiceThatEndsWhileItDialsIsTold) {
  ModemManagerMock service(R"({"modems": [[0, true]], "start": "vanish"})");
  Open();
  EXPECT_EQ(Call(), 1);
  AwaitTold();
  EXPECT_THAT(told_, ElementsAre(HasSubstr("does not answer")));
}

TEST_F(ModemTest, AServiceThatEndsInMidCallIsToldAtTheNextCall) {
  ModemManagerMock service(kOneModem);
  Open();
  EXPECT_EQ(Call(), 1);
  EXPECT_EQ(service.NextLine(), "create /org/freedesktop/ModemManager1/Modem/0 number=+4917");
  EXPECT_EQ(service.NextLine(), "start /org/freedesktop/ModemManager1/Call/0");
  service.End();
  QCoreApplication::processEvents();
  EXPECT_EQ(Call(), 0);
  EXPECT_THAT(told_, testing::Contains(HasSubstr("is not running")));
}

TEST_F(ModemTest, AServiceThatDoesNotAnswerIsNotWaitedForLongerThanToldTo) {
  ModemManagerMock service(R"({"modems": [[0, true]], "create": "silent"})");
  Open(std::chrono::milliseconds(100));
  EXPECT_EQ(Call(), 1);
  AwaitTold();
  EXPECT_THAT(told_, ElementsAre(HasSubstr("does not answer")));
}

// The mock serves one question after the other, so that nothing but the second call is left.
TEST_F(ModemTest, ACallThatIsReadyTooLateIsNeverStarted) {
  const test::ScratchFolder folder;
  const std::string gate = (folder / "gate").string();
  std::vector<std::string> asked;
  // A slow machine may have used up the time before the first call is created: once more then.
  for (const int patience : {200, 2000, 20000}) {
    std::filesystem::remove(gate);
    told_.clear();
    ModemManagerMock service(R"({"modems": [[0, true]], "create": "late", "gate": ")" + gate +
                             "\"}");
    Open(std::chrono::milliseconds(patience));
    EXPECT_EQ(Call(u"12"), 1);
    AwaitTold();
    EXPECT_THAT(told_, ElementsAre(HasSubstr("does not answer")));
    const std::unique_ptr<ModemManagerTelephone> impatient = std::move(telephone_);
    test::WriteText(gate, "open");
    Open();
    EXPECT_EQ(Call(u"34"), 1);
    asked = {service.NextLine(), service.NextLine()};
    if (asked.front().ends_with("number=12")) {
      asked.push_back(service.NextLine());
      break;
    }
  }
  EXPECT_THAT(asked, ElementsAre("create /org/freedesktop/ModemManager1/Modem/0 number=12",
                                 "create /org/freedesktop/ModemManager1/Modem/0 number=34",
                                 "start /org/freedesktop/ModemManager1/Call/1"));
}

TEST_F(ModemTest, WhileAModemPreparesACallTheWindowGoesOnAndNoSecondOneIsMade) {
  ModemManagerMock service(R"({"modems": [[0, true]], "create": "silent"})");
  Open();
  EXPECT_EQ(Call(u"12"), 1);  // and did not wait: this service never answers
  EXPECT_EQ(service.NextLine(), "create /org/freedesktop/ModemManager1/Modem/0 number=12");
  EXPECT_EQ(Call(u"34"), 0);
  EXPECT_THAT(told_, ElementsAre(HasSubstr("Wait a moment")));
  telephone_.reset();
  QCoreApplication::processEvents();
  EXPECT_EQ(told_.size(), 1u);
}

TEST_F(ModemTest, ACallIsHandedOverBeforeTheModemHasDialled) {
  ModemManagerMock service(R"({"modems": [[0, true]], "start": "silent"})");
  Open();
  EXPECT_EQ(Call(), 1);
  EXPECT_EQ(service.NextLine(), "create /org/freedesktop/ModemManager1/Modem/0 number=+4917");
  EXPECT_EQ(service.NextLine(), "start /org/freedesktop/ModemManager1/Call/0");
  telephone_.reset();
  QCoreApplication::processEvents();
  EXPECT_THAT(told_, IsEmpty());
}

TEST_F(ModemTest, ANumberWithPausesIsRefusedInsteadOfDialledWithoutThem) {
  ModemManagerMock service(kOneModem);
  Open();
  for (const std::u16string_view number : {u"12p3", u"12P3", u"12w3", u"12W3", u"p"}) {
    told_.clear();
    EXPECT_EQ(Call(number), 0);
    EXPECT_THAT(told_, ElementsAre(HasSubstr("pauses")));
  }
  EXPECT_EQ(Call(u"34"), 1);
  EXPECT_EQ(service.NextLine(), "create /org/freedesktop/ModemManager1/Modem/0 number=34");
}

TEST_F(ModemTest, TheBusMayGoAndComeAgain) {
  Open();
  PrivateBus::End();
  EXPECT_EQ(Call(), 0);
  EXPECT_EQ(told_.size(), 1u);
  ASSERT_TRUE(PrivateBus::Start());
  ModemManagerMock service(kOneModem);
  EXPECT_EQ(Call(), 1);
  EXPECT_EQ(service.NextLine(), "create /org/freedesktop/ModemManager1/Modem/0 number=+4917");
}

TEST(ModemBus, ABusThatCannotBeReachedIsToldAtTheStart) {
  std::string why;
  const QString nowhere = QDir::tempPath() + QStringLiteral("/kelpin-no-such-folder/bus");
  EXPECT_EQ(ModemManagerTelephone::Open({.busAddress = "unix:path=" + nowhere.toStdString()}, why),
            nullptr);
  EXPECT_THAT(why, HasSubstr("system bus"));
}

class ModemManagerMaker {
 public:
  ModemManagerMaker() {
    if (Missing() != nullptr) return;
    EXPECT_TRUE(PrivateBus::Start()) << "dbus-daemon does not start";
    service_ = std::make_unique<ModemManagerMock>(kOneModem);
    std::string why;
    telephone_ = ModemManagerTelephone::Open(
        {.busAddress = PrivateBus::Address(), .patience = kPatience}, why);
    EXPECT_NE(telephone_, nullptr) << why;
  }
  static const char* Missing() { return MockPython().isEmpty() ? kNoMock : nullptr; }
  platform::Telephone& Port() { return *telephone_; }
  std::string NextNumber() {
    const std::string start = "create /org/freedesktop/ModemManager1/Modem/0 number=";
    const std::string created = service_->NextLine();
    const std::string started = service_->NextLine();
    const bool called = created.starts_with(start) && started.starts_with("start ");
    return called ? created.substr(start.size()) : created + ", " + started;
  }
  void MakeUnreachable() { service_->End(); }

 private:
  std::unique_ptr<ModemManagerMock> service_;
  std::unique_ptr<ModemManagerTelephone> telephone_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Modem, TelephoneContract, ModemManagerMaker);

}  // namespace
}  // namespace kelpin::contract
