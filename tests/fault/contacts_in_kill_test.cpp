#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "device/contacts/sqlite/sqlite_store.h"
#include "tests/device/contacts/faulty_disk.h"
#include "tests/fault/killing_channel.h"
#include "tests/flow/contacts_out_card.h"

// Moving contacts from a file to the card with the program killed, or the file's disk failing, at
// every point in turn. Every contact is whole in one of the two places.
namespace kelpin::contacts {
namespace {

using device::card::KillingChannel;
using device::card::ScratchFolder;
using device::contacts::ContactRecord;
using device::contacts::SqliteStore;
using device::contacts::TextIndex;
using platform::ContactProperty;
using test::FaultyDisk;

constexpr int kMoveInCommand = 1108;
constexpr int kStopLimit = 2000;  // more than any run has

const std::vector<WholeEntry> kContacts = {
    {u"Ann", u"+491", u"222", u"", u"ann@example.org"},
    {u"Bob", u"44", u"+4930231251231234567890123", u"", u"bob@example.org"},
};

// Where the program stops, counted from the press that starts the move, or from its start for the
// disk; 0 is nowhere.
struct Stop {
  int atCommand = 0;
  bool after = false;  // the command was carried out
  int atDisk = 0;
  FaultyDisk::Fault fault = FaultyDisk::Fault::kKilled;
};

class MoveInKillTest : public testing::Test {
 protected:
  MoveInKillTest() : image_(TextOf(EmptyCard().File())) {}

  // A round of its own: the card empty, both contacts in the file.
  void Prepare() {
    folder_ = std::make_unique<ScratchFolder>();
    std::ofstream(CardFile()) << image_;
    std::string why;
    const auto store = SqliteStore::Open(StoreFile(), why);
    ASSERT_NE(store, nullptr) << why;
    std::vector<ContactRecord> records;
    for (const WholeEntry& contact : kContacts) {
      ContactRecord record;
      record[TextIndex(ContactProperty::kLastName)] = test::Utf8(contact.name);
      record[TextIndex(ContactProperty::kMobileTelephoneNumber)] = test::Utf8(contact.number);
      record[TextIndex(ContactProperty::kBusinessTelephoneNumber)] = test::Utf8(contact.number2);
      record[TextIndex(ContactProperty::kEmail1Address)] = test::Utf8(contact.email);
      records.push_back(record);
    }
    ASSERT_TRUE(store->AddAll(records, why)) << why;
  }

  // The move in a process of its own; whether the stop came.
  bool Move(const Stop& stop) {
    const pid_t child = fork();
    if (child == 0) _exit(MoveInChild(stop));
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    if (WIFSIGNALED(status)) {
      EXPECT_EQ(WTERMSIG(status), SIGKILL);
      return true;
    }
    return WEXITSTATUS(status) != kWentThrough;
  }

  void ExpectNothingLost(bool stopped) {
    std::string why;
    const auto card = device::softcard::SoftChannel::Open(CardFile(), why);
    ASSERT_NE(card, nullptr) << why;
    const auto store = SqliteStore::Open(StoreFile(), why);
    ASSERT_NE(store, nullptr) << why;
    const auto onTheCard = EntriesOn(*card);
    const auto left = ContactsIn(*store);
    for (const WholeEntry& contact : kContacts) {
      const auto entry = onTheCard.find(contact.name);
      const auto stays = left.find(contact.name);
      if (stays != left.end()) {
        EXPECT_EQ(stays->second, contact);
      } else {
        ASSERT_NE(entry, onTheCard.end()) << test::Utf8(contact.name);
        EXPECT_EQ(entry->second, contact);
      }
    }
    if (!stopped) {
      EXPECT_TRUE(left.empty());
      EXPECT_EQ(onTheCard.size(), kContacts.size());
    }
  }

 private:
  // The exit code of a program that met no stop; that of a disk that kills is another.
  static constexpr int kWentThrough = 17;

  std::string CardFile() const { return (folder_->Path() / "card.json").string(); }
  std::string StoreFile() const { return (folder_->Path() / "contacts.db").string(); }

  int MoveInChild(const Stop& stop) const {
    if (stop.atDisk > 0) FaultyDisk::Install(stop.atDisk, stop.fault);
    std::string why;
    const auto card = device::softcard::SoftChannel::Open(CardFile(), why);
    const auto store = SqliteStore::Open(StoreFile(), why);
    if (card == nullptr || store == nullptr) return 1;
    KillingChannel channel(*card, stop.after);
    CardProgram program(channel, *store);
    program.SetSwitch(u"CToSim_Type", 2);
    program.Open();
    program.screen.ScriptDialog(205, [&](ui::Dialog& picker) {
      program.RunThreads();
      channel.Arm(static_cast<std::uint32_t>(stop.atCommand));
      picker.PressSoftKey(0);
      program.RunThreads();
    });
    program.state.dialog->Command(kMoveInCommand);
    program.RunThreads();
    return ContactsIn(*store).empty() && !FaultyDisk::Failed() ? kWentThrough : 1;
  }

  const std::string image_;
  std::unique_ptr<ScratchFolder> folder_;
};

TEST_F(MoveInKillTest, AProgramThatIsKilledAtACommandToTheCardHasLostNothing) {
  for (const bool after : {false, true}) {
    bool killed = true;
    int commands = 0;
    for (int command = 1; killed; ++command) {
      ASSERT_LT(command, kStopLimit);
      SCOPED_TRACE(testing::Message() << (after ? "after " : "before ") << command);
      Prepare();
      killed = Move({.atCommand = command, .after = after});
      ExpectNothingLost(killed);
      if (HasFailure()) return;
      commands = command;
    }
    // Two entries, a second number and an e-mail address each, written and read again.
    EXPECT_GT(commands, 16);
  }
}

TEST_F(MoveInKillTest, AProgramThatIsKilledAtAChangeOfTheFileHasLostNothing) {
  bool killed = true;
  int changes = 0;
  for (int change = 1; killed; ++change) {
    ASSERT_LT(change, kStopLimit);
    SCOPED_TRACE(change);
    Prepare();
    killed = Move({.atDisk = change, .fault = FaultyDisk::Fault::kKilled});
    ExpectNothingLost(killed);
    if (HasFailure()) return;
    changes = change;
  }
  EXPECT_GT(changes, 4);  // two deletions, each written and synced
}

TEST_F(MoveInKillTest, ADiskThatFailsLosesNothing) {
  bool failed = true;
  for (int change = 1; failed; ++change) {
    ASSERT_LT(change, kStopLimit);
    SCOPED_TRACE(change);
    Prepare();
    failed = Move({.atDisk = change, .fault = FaultyDisk::Fault::kFails});
    ExpectNothingLost(failed);
    if (HasFailure()) return;
  }
}

}  // namespace
}  // namespace kelpin::contacts
