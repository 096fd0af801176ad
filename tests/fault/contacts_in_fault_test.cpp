#include <gmock/gmock.h>

#include <set>
#include <tuple>

#include "tests/card/soft_card.h"
#include "tests/contacts/to_sim_fixture.h"
#include "tests/fault/faulty_channel.h"
#include "tests/flow/card_program.h"

// Moving contacts to the card with one call failing: the first, the second, … until a run makes
// fewer calls than that. No contact is lost, and what is told is true.
namespace kelpin::contacts {
namespace {

using device::card::Fault;
using device::card::FaultyChannel;
using device::card::SoftCard;
using platform::ContactProperty;

constexpr int kMoveCommand = 1108;
constexpr std::uint32_t kCallLimit = 2000;  // more calls than any run makes

test::FakeContact Contact(std::u16string_view name, std::u16string_view number,
                          std::u16string_view number2, std::u16string_view email) {
  test::FakeContact contact;
  contact[ContactProperty::kLastName] = name;
  contact[ContactProperty::kMobileTelephoneNumber] = number;
  contact[ContactProperty::kHomeTelephoneNumber] = number2;
  contact[ContactProperty::kEmail1Address] = email;
  return contact;
}

std::set<std::u16string> NamesIn(const test::FakeContacts& store) {
  std::set<std::u16string> names;
  for (const auto& [oid, contact] : store.Contacts()) {
    names.insert(contact[ContactProperty::kLastName]);
  }
  return names;
}

// One run on fakes.
class Round : public ToSimTest {
 public:
  void TestBody() override {}

  // Whether a call failed.
  bool Run(std::uint32_t call, std::u16string_view existing) {
    device.sim.SetEntry(1, existing, u"1");
    Open();
    state->settings.CToSim_Type = 2;
    for (const std::u16string_view name : {u"Ann", u"Bob", u"Cem"}) Add(name, u"7");
    AnswerEvery(kOverwrite, 360);
    device.failures.FailCall(call);
    device.screen.ScriptDialog(kPicker, [&](ui::Dialog& picker) {
      RunThreads();
      if (picker.Bar()->KeyAt(0).enabled) {
        picker.PressSoftKey(0);
        RunThreads();
      }
      if (!picker.Ended()) picker.Close();  // no thread could be made for it
    });
    Dialog().Command(kMoveCommand);
    device.screen.RunPending();
    failed = device.failures.FailedKind();
    device.failures.FailCall(0);
    device.sim.Drain();
    return !failed.empty();
  }

  void Check() {
    SCOPED_TRACE("failed: " + failed);
    const std::set<std::u16string> left = NamesIn(device.contacts);
    for (const std::u16string name : {u"Ann", u"Bob", u"Cem"}) {
      bool onTheCard = false;
      for (const auto& [index, entry] : device.sim.Entries()) {
        onTheCard = onTheCard || (name == entry.text && std::u16string_view(entry.address) == u"7");
      }
      EXPECT_TRUE(onTheCard || left.contains(name));
    }
    ExpectListIsTheCard();
    ExpectRunEnded();
    // The last box of a run that went through tells what it did: location 1 was in use before.
    const int created = static_cast<int>(device.sim.Entries().size()) - 1;
    const int overwritten = device.sim.Number(1) != u"1" ? 1 : 0;
    const std::u16string told = Boxes().empty() ? u"" : Boxes().back().text;
    if (told.starts_with(u"Contact(s)")) {
      EXPECT_EQ(told, Summary(created, overwritten, 0));
    }
    EXPECT_TRUE(!failed.empty() || left.empty());
  }

  void ExpectListIsTheCard() {
    std::set<std::u16string> listed;
    for (const std::u16string& row : Rows()) EXPECT_TRUE(listed.insert(row).second);
    std::set<std::u16string> there;
    for (const auto& [index, entry] : device.sim.Entries()) {
      const std::string place = std::to_string(index);
      there.insert(std::u16string(place.begin(), place.end()) + u"|" + entry.text + u"|" +
                   entry.address);
      EXPECT_EQ(state->simPhonebook.Slot(index), 1);
    }
    EXPECT_EQ(listed, there);
  }

  std::string failed;
};

TEST(ContactsInFaultTest, WhateverFailsNoContactIsLostAndTheSummaryIsTrue) {
  for (const std::u16string_view existing : {u"Other", u"Bob"}) {
    std::set<std::string> kinds;
    for (std::uint32_t call = 1;; ++call) {
      ASSERT_LT(call, kCallLimit);
      SCOPED_TRACE(call);
      Round round;
      const bool anyFailed = round.Run(call, existing);
      round.Check();
      if (testing::Test::HasFailure()) return;
      if (!anyFailed) break;
      kinds.insert(round.failed);
    }
    // The calls that matter were among them.
    EXPECT_THAT(kinds, testing::IsSupersetOf({"SimWritePhonebookEntry", "SimReadPhonebookEntry",
                                              "GetItemFromOidEx", "Delete", "Logon", "Item"}));
  }
}

// One command of the real card stack going wrong, in one way.
class ContactsInCardFaultTest : public testing::TestWithParam<Fault> {};

TEST_P(ContactsInCardFaultTest, WhatHasLeftContactsIsWholeOnTheCard) {
  const test::FakeContact contacts[] = {
      Contact(u"Ann", u"+491", u"+4930231251231234567890123", u"ann@example.org"),
  };
  bool fired = true;
  for (std::uint32_t command = 1; fired; ++command) {
    ASSERT_LT(command, kCallLimit);
    SCOPED_TRACE(command);
    SoftCard card("usim-empty");
    test::Journal journal;
    test::FailPlan failures;
    test::FakeContacts store(journal, failures);
    for (const test::FakeContact& contact : contacts) store.Insert(contact);
    {
      FaultyChannel channel(card.Channel());
      CardProgram program(channel, store);
      program.SetSwitch(u"CToSim_Type", 2);
      program.Open();
      program.screen.ScriptDialog(205, [&](ui::Dialog& picker) {
        program.RunThreads();
        channel.Arm(command, GetParam());
        picker.PressSoftKey(0);
        program.RunThreads();
        EXPECT_TRUE(picker.Ended());
        fired = channel.Fired();
        channel.Disarm();
      });
      program.state.dialog->Command(kMoveCommand);
      program.RunThreads();
      EXPECT_EQ(store.OpenUses(), 0);
    }
    CardProgram again(card.Channel(), store);
    again.Open();
    const std::set<std::u16string> left = NamesIn(store);
    EXPECT_TRUE(fired || left.empty());
    for (const test::FakeContact& contact : contacts) {
      const std::u16string& name = contact[ContactProperty::kLastName];
      if (left.contains(name)) continue;
      const std::uint32_t index = again.Find(name);
      ASSERT_NE(index, 0u);
      EXPECT_THAT(
          again.Rows(),
          testing::Contains(name + u"|" + contact[ContactProperty::kMobileTelephoneNumber]));
      EXPECT_EQ(again.Number2(index), contact[ContactProperty::kHomeTelephoneNumber]);
      EXPECT_EQ(again.Email(index), contact[ContactProperty::kEmail1Address]);
    }
    if (HasFailure()) return;
  }
}

INSTANTIATE_TEST_SUITE_P(EachWay, ContactsInCardFaultTest,
                         testing::Values(Fault::kRefused, Fault::kLostAfter, Fault::kGoneAfter));

}  // namespace
}  // namespace kelpin::contacts
