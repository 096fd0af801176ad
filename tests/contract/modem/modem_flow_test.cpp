// The whole program on a card in a modem: entries made, changed and deleted, taken to Contacts and
// brought back, and a modem that is unplugged in the middle of it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "tests/contract/modem/modem_card_test.h"
#include "tests/flow/contacts_out_card.h"
#include "tests/flow/entry_with_every_field.h"

namespace kelpin::contract {
namespace {

using contacts::CardProgram;
using contacts::WholeEntry;
using editor::EntryFlow;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr int kMoveInCommand = 1108;

class ModemFlowTest : public testing::TestWithParam<WayToCard> {
 protected:
  // The card in a modem, which the test has; what is made of it must go first.
  std::unique_ptr<device::card::CardChannel> PutInModem(device::card::CardChannel& card) {
    modem.reset();  // the next has its port's name
    modem =
        std::make_unique<TestModem>(card, GetParam().abilities, (folder.Path() / "port").string());
    auto channel = OpenModem(modem->Port());
    if (channel != nullptr) {
      EXPECT_NE(channel->Description().find(GetParam().told), std::string::npos);
    }
    return channel;
  }
  EntryFlow::Between InModem() {
    return [this](device::card::CardChannel& card) { return PutInModem(card); };
  }

  device::card::ScratchFolder folder;
  std::unique_ptr<TestModem> modem;
};

TEST_P(ModemFlowTest, AnEntryWithEveryFieldIsMadeChangedAndDeleted) {
  EntryFlow flow("usim", nullptr, InModem());
  flow.Open();
  MakeAnEntryWithEveryField(flow);
  ChangeTheEntryWithEveryField(flow);
  DeleteTheEntryWithEveryField(flow);
}

TEST_P(ModemFlowTest, EntriesAreMovedToContactsAndBackWithAllTheyHold) {
  const WholeEntry ann = {u"Ann", u"+491", u"222", u"333", u"ann@example.org"};
  const WholeEntry zoe = {u"Zo\u00EB \u0416", u"44", u"+4930231251231234567890123", u"",
                          u"zoe@example.org"};
  const std::map<std::u16string, WholeEntry> all = {{ann.name, ann}, {zoe.name, zoe}};
  // Two numbers of a contact go to the card, the one of home before the one of work.
  const WholeEntry annBack = {u"Ann", u"+491", u"333", u"", u"ann@example.org"};
  auto card = device::card::SoftCard::FromText(contacts::ImageWith({ann, zoe}));
  test::Journal journal;
  test::FailPlan failures;
  test::FakeContacts store(journal, failures);
  {
    const auto channel = PutInModem(card.Channel());
    CardProgram program(*channel, store);
    program.SetSwitch(u"CToSim_Type", 2);
    program.Open();
    CopyOut(program, contacts::kMoveOutCommand);
    EXPECT_THAT(program.BoxTexts(),
                ElementsAre(u"Contact(s) successfully added.\n\n - 2 new item(s).\n - 0 item(s) "
                            u"overwritten.\n - 0 item(s) already exists."));
    EXPECT_THAT(program.Rows(), IsEmpty());
    EXPECT_EQ(contacts::ContactsIn(store), all);
  }
  modem.reset();
  EXPECT_THAT(contacts::EntriesOn(card.Channel()), IsEmpty());
  {
    const auto channel = PutInModem(card.Channel());
    CardProgram program(*channel, store);
    program.SetSwitch(u"CToSim_Type", 2);
    program.Open();
    program.Copy(kMoveInCommand);
    EXPECT_THAT(store.Contacts(), IsEmpty());
  }
  modem.reset();
  EXPECT_EQ(contacts::EntriesOn(card.Channel()),
            (std::map<std::u16string, WholeEntry>{{ann.name, annBack}, {zoe.name, zoe}}));
}

// The entry is on the card once in the end, whether or not the first try had reached the card.
TEST_P(ModemFlowTest, AModemPulledOutDuringASaveLosesNothingThatWasTyped) {
  for (const bool carriedOut : {false, true}) {
    SCOPED_TRACE(carriedOut);
    EntryFlow flow("usim", nullptr, InModem());
    flow.Open();
    flow.InNew([&](ui::Dialog& dialog) {
      flow.Type(dialog, res::kNewName, u"Dora");
      flow.Type(dialog, res::kNewNumber, u"+49444");
      flow.Type(dialog, res::kNewEmail, u"d.e");
      {
        const PulledOutAtUpdate pulled(*modem, carriedOut);
        flow.Done(dialog);
      }
      ASSERT_FALSE(dialog.Ended());
      EXPECT_EQ(flow.BoxTexts(), editor::Texts{u"SIM isn't inserted into the phone. "});
      EXPECT_EQ(dialog.Text(res::kNewName), u"Dora");
      EXPECT_EQ(dialog.Text(res::kNewNumber), u"+49444");
      EXPECT_EQ(dialog.Text(res::kNewEmail), u"d.e");
      modem->PlugIn();
      ASSERT_TRUE(flow.screen.RunUntil([&] {
        std::u16string name;
        std::u16string number;
        return Succeeded(flow.state.simPhonebook.ReadEntry(1, &name, &number));
      }));
      flow.Done(dialog);
      EXPECT_TRUE(dialog.Ended());
    });
    EXPECT_EQ(flow.BoxTexts().size(), 1U);
    const std::string written =
        EntryFlow::Padded("446F7261", 24) + EntryFlow::Padded("04919444F4", 14);
    nlohmann::json image = flow.card.Image();
    const nlohmann::json& records =
        device::card::ImageFile(image, {"7F10", "5F3A", "4F3A"})["records"];
    const auto entries = std::count(records.begin(), records.end(), nlohmann::json(written));
    EXPECT_EQ(entries, 1);
    EXPECT_EQ(flow.Record("4F50", 47), EntryFlow::Padded("642E65", 42));
  }
}

INSTANTIATE_TEST_SUITE_P(Modem, ModemFlowTest, testing::Values(WaysToCard()[1], WaysToCard()[2]),
                         [](const auto& way) { return way.param.name; });

}  // namespace
}  // namespace kelpin::contract
