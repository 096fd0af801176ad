#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <set>

#include "device/contacts/sqlite/sqlite_store.h"
#include "tests/contacts/copy_out_fixture.h"
#include "tests/fault/faulty_channel.h"
#include "tests/fault/killing_channel.h"
#include "tests/fault/move_kill.h"

// Moving entries to Contacts with one call failing, or with the program killed at it: the first,
// the second, … until a run makes fewer calls than that. No entry is lost, and what is told is
// true.
namespace kelpin::contacts {
namespace {

using device::card::Fault;
using device::card::FaultyChannel;
using device::card::KillingChannel;
using device::card::ScratchFolder;
using device::card::SoftCard;
using device::contacts::SqliteStore;

constexpr std::uint32_t kCallLimit = 2000;  // more calls than any run makes

// One run on fakes: Anna is a duplicate that the user has overwritten.
class Round : public CopyOutTest {
 public:
  void TestBody() override {}

  // Whether a call failed.
  bool Run(std::uint32_t call) {
    PutThree();
    duplicate = PutContact(u"Anna");
    Open();
    SelectAll();
    device.screen.ScriptEveryDialog(res::kDialogOverwritePrompt,
                                    [](ui::Dialog& prompt) { prompt.Command(res::kOverwriteYes); });
    device.failures.FailCall(call);
    Move();
    failed = device.failures.FailedKind();
    device.failures.FailCall(0);
    device.sim.Drain();
    return !failed.empty();
  }

  void Check() {
    SCOPED_TRACE("failed: " + failed);
    int created = 0;
    std::set<std::u16string> whole;
    for (const auto& [oid, contact] : device.contacts.Contacts()) {
      created += oid == duplicate ? 0 : 1;
      whole.insert(contact[ContactProperty::kLastName] + u"|" +
                   contact[ContactProperty::kMobileTelephoneNumber]);
    }
    std::set<std::u16string> listed;
    for (const std::u16string& row : Rows()) listed.insert(row.substr(2));
    std::set<std::u16string> there;
    for (const auto& [index, entry] : device.sim.Entries()) {
      there.insert(std::u16string(entry.text) + u"|" + entry.address);
      EXPECT_EQ(state->simPhonebook.Slot(index), 1);
    }
    EXPECT_EQ(listed, there);
    for (const std::u16string entry : {u"Anna|111", u"Bert|222", u"Cem|333"}) {
      EXPECT_TRUE(there.contains(entry) || whole.contains(entry)) << test::Utf8(entry);
    }
    ExpectStoreLetGo();
    ExpectAtRest();
    EXPECT_EQ(state->simPhonebook.CollectDeletions(), 1u);
    const std::u16string told = Boxes().empty() ? u"" : Boxes().back().text;
    if (told.starts_with(u"Contact(s)")) {
      // The duplicate counts for the user's Yes: not when Contacts failed before it was found, and
      // also when it failed to be found again after that and so another contact was made.
      const bool beforeTheYes = failed == "GetDefaultFolder" || failed == "get_Items";
      const bool aLookUp = failed == "FindMatchingContact";
      EXPECT_TRUE(told.starts_with(Summary(created, 1, 0)) ||
                  ((beforeTheYes || aLookUp) && told.starts_with(Summary(created, 0, 0))) ||
                  (aLookUp && told.starts_with(Summary(created - 1, 1, 0))))
          << test::Utf8(told);
    }
    if (failed.empty()) {
      EXPECT_TRUE(there.empty());
      EXPECT_EQ(told, Summary(2, 1, 0));
    }
  }

  std::int32_t duplicate = 0;
  std::string failed;
};

TEST(ContactsOutFaultTest, WhateverFailsNoEntryIsLostAndTheSummaryIsTrue) {
  std::set<std::string> kinds;
  for (std::uint32_t call = 1;; ++call) {
    ASSERT_LT(call, kCallLimit);
    SCOPED_TRACE(call);
    Round round;
    const bool anyFailed = round.Run(call);
    round.Check();
    if (HasFailure()) return;
    if (!anyFailed) break;
    kinds.insert(round.failed);
  }
  // The calls that matter were among them.
  EXPECT_THAT(kinds, testing::IsSupersetOf({"SimGetPhonebookStatus", "CoInitializeEx", "Logon",
                                            "FindMatchingContact", "Add", "Put", "Save", "get_Oid",
                                            "GetItemFromOidEx", "QueryInterface", "Get",
                                            "SimReadPhonebookEntry", "SimDeletePhonebookEntry"}));
}

// One command of the real card stack, in one way.
class ContactsOutCardFaultTest : public testing::TestWithParam<Fault> {};

TEST_P(ContactsOutCardFaultTest, WhatHasLeftTheCardIsWholeInContacts) {
  const std::string image = ImageWith(kMovedEntries);
  bool fired = true;
  for (std::uint32_t command = 1; fired; ++command) {
    ASSERT_LT(command, kCallLimit);
    SCOPED_TRACE(command);
    SoftCard card = SoftCard::FromText(image);
    test::Journal journal;
    test::FailPlan failures;
    test::FakeContacts store(journal, failures);
    {
      FaultyChannel channel(card.Channel());
      CardProgram program(channel, store);
      program.Open();
      channel.Arm(command, GetParam());
      CopyOut(program, kMoveOutCommand);
      fired = channel.Fired();
      channel.Disarm();
      EXPECT_EQ(store.OpenUses(), 0);
      EXPECT_EQ(program.state.simPhonebook.CollectDeletions(), 1u);
      // Told of the end, or of why there is none.
      EXPECT_FALSE(program.screen.Boxes().empty());
    }
    const auto onTheCard = EntriesOn(card.Channel());
    ExpectNothingLost(onTheCard, ContactsIn(store));
    if (!fired) {
      EXPECT_TRUE(onTheCard.empty());
    }
    if (HasFailure()) return;
  }
}

INSTANTIATE_TEST_SUITE_P(EachWay, ContactsOutCardFaultTest,
                         testing::Values(Fault::kRefused, Fault::kLostAfter, Fault::kResetBefore));

// The program in a process of its own, killed at its nth command to the card; true when it was.
bool MoveAndKill(const std::string& cardFile, const std::string& storeFile, std::uint32_t command,
                 bool after) {
  const pid_t child = fork();
  if (child == 0) {
    std::string error;
    const auto card = device::softcard::SoftChannel::Open(cardFile, error);
    const auto store = SqliteStore::Open(storeFile, error);
    if (card == nullptr || store == nullptr) _exit(2);
    KillingChannel channel(*card, after);
    CardProgram program(channel, *store);
    program.Open();
    channel.Arm(command);
    CopyOut(program, kMoveOutCommand);
    _exit(program.Rows().empty() ? 0 : 1);
  }
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  if (WIFSIGNALED(status)) {
    EXPECT_EQ(WTERMSIG(status), SIGKILL);
    return true;
  }
  EXPECT_EQ(WEXITSTATUS(status), 0);
  return false;
}

TEST(ContactsOutFaultTest, AProgramThatIsKilledHasLostNothing) {
  const std::string image = ImageWith(kMovedEntries);
  for (const bool after : {false, true}) {
    SCOPED_TRACE(after ? "after the command" : "before the command");
    bool killed = true;
    for (std::uint32_t command = 1; killed; ++command) {
      ASSERT_LT(command, kCallLimit);
      SCOPED_TRACE(command);
      ScratchFolder folder;
      const std::string cardFile = (folder.Path() / "card.json").string();
      const std::string storeFile = (folder.Path() / "contacts.db").string();
      std::ofstream(cardFile) << image;
      killed = MoveAndKill(cardFile, storeFile, command, after);
      std::string error;
      const auto card = device::softcard::SoftChannel::Open(cardFile, error);
      ASSERT_NE(card, nullptr) << error;
      const auto store = SqliteStore::Open(storeFile, error);
      ASSERT_NE(store, nullptr) << error;
      ExpectNothingLost(EntriesOn(*card), ContactsIn(*store));
      if (HasFailure()) return;
    }
  }
}

}  // namespace
}  // namespace kelpin::contacts
