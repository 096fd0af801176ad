#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <set>

#include "device/contacts/sqlite/sqlite_store.h"
#include "tests/card/ext_card.h"
#include "tests/contacts/to_sim_fixture.h"
#include "tests/device/contacts/contacts_process.h"
#include "tests/device/contacts/faulty_disk.h"
#include "tests/device/scratch_folder.h"
#include "tests/flow/card_program.h"

// Deleting contacts with one call failing, or with the program killed, or its disk failing, at
// every point in turn. What was not checked stays as it was, and nothing is half deleted.
namespace kelpin::contacts {
namespace {

using device::card::MemoryCard;
using device::contacts::SqliteStore;
using test::FaultyDisk;
using testing::IsSubsetOf;
using testing::IsSupersetOf;

constexpr int kDeleteCommand = 345;
constexpr int kListOfContacts = 1029;
constexpr std::uint32_t kCallLimit = 2000;  // more calls than any run makes

// Checks every second row, then says Yes.
void DeleteEverySecond(ui::Dialog& dialog, const std::function<void()>& runThreads) {
  runThreads();
  ui::ListView& list = *dialog.List(kListOfContacts);
  for (int row = 1; row < list.ItemCount(); row += 2) list.ClickCheckBox(row);
  dialog.PressSoftKey(0);
  runThreads();
  if (!dialog.Ended()) dialog.Close();  // no thread could be made for it
}

// One run on fakes: of four contacts the second and the fourth are to go.
class Round : public ToSimTest {
 public:
  void TestBody() override {}

  void Run(std::uint32_t call) {
    Open();
    for (const std::u16string_view name : {u"A", u"B", u"C", u"D"}) Add(name, u"1");
    before = device.contacts.Contacts();
    device.screen.ScriptBox(ui::BoxAnswer::kYes);
    device.failures.FailCall(call);
    device.screen.ScriptDialog(kDelete, [&](ui::Dialog& dialog) {
      DeleteEverySecond(dialog, [this] { RunThreads(); });
      ended = dialog.Ended();
    });
    Dialog().Command(kDeleteCommand);
    device.screen.RunPending();
    failed = device.failures.FailedKind();
    device.failures.FailCall(0);
  }

  void Check() {
    SCOPED_TRACE("failed: " + failed);
    std::set<std::u16string> gone;
    const auto after = device.contacts.Contacts();
    for (const auto& [oid, contact] : before) {
      const auto stays = after.find(oid);
      if (stays == after.end()) {
        gone.insert(contact[ContactProperty::kLastName]);
      } else {
        EXPECT_EQ(stays->second, contact);
      }
    }
    // A fill that was cut short offers fewer rows, never others in their place.
    EXPECT_THAT(gone, IsSubsetOf({u"B", u"D"}));
    if (failed.empty()) {
      EXPECT_EQ(gone.size(), 2u);
    }
    EXPECT_TRUE(ended);
    EXPECT_LE(Boxes().size(), 1u);  // the question; a failure has no message of its own
    EXPECT_EQ(device.contacts.OpenUses(), 0);
    EXPECT_FALSE(device.screen.WaitCursor());
  }

  std::map<std::int32_t, test::FakeContact> before;
  std::string failed;
  bool ended = false;
};

TEST(DeleteContactsFaultTest, WhateverFailsOnlyCheckedContactsAreDeleted) {
  std::set<std::string> kinds;
  for (std::uint32_t call = 1;; ++call) {
    ASSERT_LT(call, kCallLimit);
    SCOPED_TRACE(call);
    Round round;
    round.Run(call);
    round.Check();
    if (HasFailure()) return;
    if (round.failed.empty()) break;
    kinds.insert(round.failed);
  }
  EXPECT_THAT(kinds, IsSupersetOf({"CoInitializeEx", "CoCreateInstance", "Logon",
                                   "GetDefaultFolder", "get_Items", "get_Count", "Item", "get_Oid",
                                   "Get", "GetItemFromOidEx", "Delete", "CreateThread"}));
}

// The program on a file of contacts that outlives it.

constexpr int kInTheFile = 5;

class DeleteFromFileTest : public testing::Test {
 protected:
  std::string StoreFile() const { return folder_->Path() / "contacts.db"; }

  void Prepare() {
    folder_ = std::make_unique<test::ScratchFolder>();
    std::string why;
    const auto store = SqliteStore::Open(StoreFile(), why);
    ASSERT_NE(store, nullptr) << why;
    std::vector<device::contacts::ContactRecord> records;
    for (char name = 'A'; name < 'A' + kInTheFile; ++name) {
      records.push_back(test::Named(std::string(1, name)));
    }
    ASSERT_TRUE(store->AddAll(records, why)) << why;
  }

  // The deletion in a process of its own, on a disk whose nth change goes wrong; whether it did.
  bool Delete(int change, FaultyDisk::Fault fault) {
    const pid_t child = fork();
    if (child == 0) _exit(DeleteInChild(change, fault));
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    return WEXITSTATUS(status) != kWentThrough;
  }

  // The letters of the contacts that are left. Every one is whole, which ContactsIn checks.
  std::string Left() {
    std::string names;
    for (const auto& [number, name] : test::ContactsIn(StoreFile())) names += name;
    return names;
  }

 private:
  // The exit code of a program whose disk did all; a disk that kills ends it with another.
  static constexpr int kWentThrough = 17;

  int DeleteInChild(int change, FaultyDisk::Fault fault) const {
    FaultyDisk::Install(change, fault);
    std::string why;
    const auto store = SqliteStore::Open(StoreFile(), why);
    if (store == nullptr) return 1;
    MemoryCard card("usim-empty");
    CardProgram program(card, *store);
    program.Open();
    program.screen.ScriptBox(ui::BoxAnswer::kYes);
    program.screen.ScriptDialog(res::kDialogDeleteContacts, [&](ui::Dialog& dialog) {
      DeleteEverySecond(dialog, [&] { program.RunThreads(); });
    });
    program.state.dialog->Command(kDeleteCommand);
    program.RunThreads();
    return FaultyDisk::Failed() ? 1 : kWentThrough;
  }

  std::unique_ptr<test::ScratchFolder> folder_;
};

TEST_F(DeleteFromFileTest, AProgramThatIsKilledHasDeletedWholeContactsInTheirOrder) {
  bool killed = true;
  std::set<std::string> seen;
  for (int change = 1; killed; ++change) {
    ASSERT_LT(change, static_cast<int>(kCallLimit));
    SCOPED_TRACE(change);
    Prepare();
    killed = Delete(change, FaultyDisk::Fault::kKilled);
    const std::string left = Left();
    EXPECT_TRUE(left == "ABCDE" || left == "ACDE" || left == "ACE") << left;
    if (!killed) {
      EXPECT_EQ(left, "ACE");
    }
    if (HasFailure()) return;
    seen.insert(left);
  }
  EXPECT_EQ(seen.size(), 3u);  // it was killed before, between and after the two deletions
}

TEST_F(DeleteFromFileTest, ADiskThatFailsLeavesWhatCouldNotBeDeletedWhole) {
  bool failed = true;
  for (int change = 1; failed; ++change) {
    ASSERT_LT(change, static_cast<int>(kCallLimit));
    SCOPED_TRACE(change);
    Prepare();
    failed = Delete(change, FaultyDisk::Fault::kFails);
    const std::string left = Left();
    EXPECT_TRUE(left == "ABCDE" || left == "ACDE" || left == "ABCE" || left == "ACE") << left;
    if (!failed) {
      EXPECT_EQ(left, "ACE");
    }
    if (HasFailure()) return;
  }
}

}  // namespace
}  // namespace kelpin::contacts
