// The card comes, goes and is changed by others.
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <thread>

#include "device/card/sim_service.h"
#include "tests/card/radio_client.h"
#include "tests/card/shared_channel.h"
#include "tests/card/sim_client.h"
#include "tests/card/soft_card.h"

namespace kelpin::device::card {
namespace {

using platform::SimResult;

// The program on a card that was read already.
class SimServiceEvents : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(sim.Text(1), u"Bauer, Anna|+12125550100"); }
  // The slot takes another card, whose own channel has let go of it.
  void Exchange() {
    const std::string file = card.File() + ".other";
    std::ofstream(file) << ImageText("usim-full");
    std::string error;
    ASSERT_TRUE(card.Channel().Insert(file, error)) << error;
  }

  SoftCard card{"usim"};
  SimService service{card.Channel()};
  SimClient sim{service};
  RadioClient radio{service};
};

// The same on a card that other programs reach too.
class SimServiceOthers : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(sim.Text(1), u"Bauer, Anna|+12125550100"); }
  // Another program selects the file on the same channel and writes over the record.
  void WriteOver() {
    std::vector<std::uint8_t> response;
    ASSERT_EQ(card.Channel().Transmit(Hex("00A40804067F105F3A4F3A"), response),
              TransportError::kNone);
    ASSERT_EQ(
        card.Channel().Transmit(
            Hex("00DC010426 58" + std::string(46, 'F') + "028121FFFFFFFFFFFFFFFFFFFFFF"), response),
        TransportError::kNone);
    ASSERT_EQ(ToHex(response), "9000");
  }

  SoftCard card{"usim"};
  SharedChannel channel{card.Channel()};
  SimService service{channel};
  SimClient sim{service};
  RadioClient radio{service};
};

TEST_F(SimServiceEvents, ACardPutBackIsReadAgainAndRadioSessionsAreTold) {
  card.Channel().Remove();
  EXPECT_EQ(sim.Text(1), u"!88000207");
  EXPECT_EQ(radio.ReadEntries(1, 10).code, platform::kRilResultError);
  card.Channel().Insert();
  const auto notices = radio.Notices(3);
  ASSERT_EQ(notices.size(), 3U);
  EXPECT_EQ(notices[0].code, platform::kRilNotifyEquipmentState);
  EXPECT_EQ(notices[1].code, platform::kRilNotifyPhonebookRewritten);
  EXPECT_EQ(notices[2].code, platform::kRilNotifyEquipmentState);
  platform::RilEquipmentState state;
  ASSERT_EQ(notices[0].data.size(), sizeof(state));
  std::memcpy(&state, notices[0].data.data(), sizeof(state));
  EXPECT_EQ(state.readyState, 0U);
  std::memcpy(&state, notices[2].data.data(), sizeof(state));
  EXPECT_EQ(state.readyState, platform::kRilReadyPhonebook);
  EXPECT_EQ(sim.Text(1), u"Bauer, Anna|+12125550100");
  EXPECT_EQ(sim.Write(1, u"Same card", u"1"), SimResult::kOk);
}

TEST_F(SimServiceEvents, ACardResetBehindUsAnswersAllTheSame) {
  ASSERT_TRUE(card.Channel().Reset());
  EXPECT_EQ(sim.Text(2), u"Ay\u015Fe G\u00FCne\u015F|+442079460000");
  const auto notices = radio.Notices(2);
  ASSERT_GE(notices.size(), 2U);
  EXPECT_EQ(notices[0].code, platform::kRilNotifyPhonebookRewritten);
  ASSERT_TRUE(card.Channel().Reset());
  EXPECT_EQ(sim.Write(1, u"After reset", u"1"), SimResult::kOk);
  EXPECT_EQ(sim.Text(1), u"After reset|1");
}

TEST_F(SimServiceEvents, AnotherCardIsNotWrittenUntilItWasListed) {
  Exchange();
  EXPECT_EQ(sim.Write(1, u"Old list", u"1"), SimResult::kWrongSim);
  EXPECT_EQ(sim.Delete(1), SimResult::kWrongSim);
  EXPECT_EQ(sim.Text(1), u"Notruf|112");
  ASSERT_EQ(radio.ReadEntries(1, 10).code, platform::kRilResultOk);
  EXPECT_EQ(sim.Write(1, u"New list", u"1"), SimResult::kOk);
  EXPECT_EQ(sim.Text(1), u"New list|1");
}

TEST(NewSimService, ACardTakenOutInTheMiddleOfAListEndsItWithAnError) {
  SoftCard card("usim", [](nlohmann::json& image) { image["delayMs"] = 5; });
  SimService service(card.Channel());
  RadioClient radio(service);
  const std::int32_t id = service.RIL_ReadPhonebookEntries(radio.Handle(), 1, 500);
  ASSERT_GT(id, 0);
  while (card.Channel().CommandCount() < 60) std::this_thread::yield();
  card.Channel().Remove();
  EXPECT_EQ(radio.Await(id).code, platform::kRilResultError);
  card.Channel().Insert();
  EXPECT_EQ(radio.ReadEntries(1, 10).code, platform::kRilResultOk);
}

TEST(NewSimService, ACardResetInTheMiddleOfAListIsReadToTheEnd) {
  SoftCard card("usim", [](nlohmann::json& image) { image["delayMs"] = 2; });
  SimService service(card.Channel());
  RadioClient radio(service);
  const std::int32_t id = service.RIL_ReadPhonebookEntries(radio.Handle(), 1, 500);
  ASSERT_GT(id, 0);
  while (card.Channel().CommandCount() < 60) std::this_thread::yield();
  while (!card.Channel().Reset()) std::this_thread::yield();  // not within a transaction
  const auto result = radio.Await(id);
  ASSERT_EQ(result.code, platform::kRilResultOk);
  EXPECT_EQ(RadioClient::Records<platform::RilPhonebookEntry>(result).size(), 180U);
}

TEST_F(SimServiceOthers, WhatAnotherProgramChangedIsReadFromTheCardAndToldOf) {
  WriteOver();
  channel.Touch();
  EXPECT_EQ(sim.Text(1), u"X|12");
  const auto notices = radio.Notices(2);
  ASSERT_EQ(notices.size(), 2U);
  EXPECT_EQ(notices[0].code, platform::kRilNotifyPhonebookRewritten);
  EXPECT_EQ(notices[1].code, platform::kRilNotifyEquipmentState);
  EXPECT_EQ(ToHex(radio.Ask(platform::kRilDevPhonebookChanged).data), "01000000");
}

// A reader tells of no record that another program writes.
TEST_F(SimServiceOthers, WhatAnotherProgramWroteUnnoticedIsReadWhenItIsAskedForAfresh) {
  WriteOver();
  service.ReadAfresh();
  EXPECT_EQ(sim.Text(1), u"X|12");
}

TEST_F(SimServiceEvents, ACardOfOurOwnIsNotReadTwice) {
  const auto commands = card.Channel().CommandCount();
  service.ReadAfresh();
  EXPECT_EQ(sim.Text(1), u"Bauer, Anna|+12125550100");
  EXPECT_EQ(card.Channel().CommandCount(), commands);
}

TEST_F(SimServiceEvents, AnotherCardTakesNoChangeUntilTheOldOneIsLetGo) {
  service.Hold();
  EXPECT_EQ(sim.Write(1, u"Mine", u"1"), SimResult::kOk);
  EXPECT_FALSE(service.IsExchanged());
  Exchange();
  ASSERT_EQ(radio.ReadEntries(1, 10).code, platform::kRilResultOk);
  EXPECT_TRUE(service.IsExchanged());
  EXPECT_EQ(sim.Write(1, u"Mine", u"1"), SimResult::kWrongSim);
  service.LetGo();
  // What was listed meanwhile was listed under the dialog that was for the old one.
  EXPECT_EQ(sim.Write(1, u"Mine", u"1"), SimResult::kWrongSim);
  ASSERT_EQ(radio.ReadEntries(1, 10).code, platform::kRilResultOk);
  EXPECT_FALSE(service.IsExchanged());
  EXPECT_EQ(sim.Write(1, u"Mine", u"1"), SimResult::kOk);
}

TEST_F(SimServiceEvents, AnotherCardThatIsListedAtOnceMayBeWritten) {
  Exchange();
  ASSERT_EQ(radio.ReadEntries(1, 10).code, platform::kRilResultOk);
  EXPECT_EQ(sim.Write(1, u"New list", u"1"), SimResult::kOk);
}

TEST(NewSimService, AnEmptySlotIsNoCard) {
  SoftCard card("usim");
  card.Channel().Remove();
  SimService service(card.Channel());
  SimClient sim(service);
  EXPECT_EQ(sim.Opened(), SimResult::kOk);
  std::uint32_t used = 0;
  std::uint32_t total = 0;
  EXPECT_EQ(sim.Status(used, total), SimResult::kNotInserted);
}

}  // namespace
}  // namespace kelpin::device::card
