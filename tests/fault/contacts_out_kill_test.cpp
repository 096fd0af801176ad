#include <gmock/gmock.h>
#include <sys/wait.h>

#include "device/contacts/sqlite/sqlite_store.h"
#include "tests/device/contacts/faulty_disk.h"
#include "tests/device/contacts/memory_disk.h"
#include "tests/fault/move_kill.h"

// A program that moves entries to a contacts file and is killed: before the first thing it does to
// card or file, the second, … until it is through before that. No entry is lost.
namespace kelpin::contacts {
namespace {

using device::card::ScratchFolder;
using device::contacts::SqliteStore;
using test::FaultyDisk;

constexpr std::uint32_t kLimit = 2000;  // more than any run does
constexpr int kThrough = 3;             // how the program ends that was not killed
constexpr int kLeftBehind = 4;          // it was through, and something was still on the card

enum class KilledAt {
  kCall,        // of Contacts, or a command that changes the card
  kFileChange,  // of the contacts file and those beside it
};

class ContactsOutKill : public testing::Test {
 protected:
  // The program in a process of its own; true when it was killed.
  bool MoveAndKill(KilledAt where, std::uint32_t call) const {
    const pid_t child = fork();
    if (child == 0) {
      std::string error;
      const auto card = device::softcard::SoftChannel::Open(CardFile(), error);
      const auto store = SqliteStore::Open(StoreFile(), error);
      if (card == nullptr || store == nullptr) _exit(2);
      KillPlan plan;
      CountedChannel channel(*card, plan);
      CountedStore counted(*store, plan);
      const bool empty = MoveEverything(channel, counted, [&] {
        if (where == KilledAt::kFileChange) {
          FaultyDisk::Install(static_cast<int>(call), FaultyDisk::Fault::kKilled);
        } else {
          plan.Arm(call);
        }
      });
      _exit(empty ? kThrough : kLeftBehind);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    if (WIFSIGNALED(status)) {
      EXPECT_EQ(WTERMSIG(status), SIGKILL);
      return true;
    }
    // The disk that kills ends the program so.
    if (where == KilledAt::kFileChange && WEXITSTATUS(status) == 0) return true;
    EXPECT_EQ(WEXITSTATUS(status), kThrough);
    return false;
  }

  // How many runs were killed.
  std::uint32_t KillEverywhere(KilledAt where) {
    const std::string image = ImageWith(kMovedEntries);
    std::uint32_t call = 1;
    for (bool killed = true; killed; ++call) {
      SCOPED_TRACE("killed before " + std::to_string(call));
      EXPECT_LT(call, kLimit);
      folder_.emplace();
      std::ofstream(CardFile()) << image;
      std::string error;
      if (auto store = SqliteStore::Open(StoreFile(), error)) PutDuplicate(*store);
      killed = MoveAndKill(where, call);
      const auto card = device::softcard::SoftChannel::Open(CardFile(), error);
      const auto store = SqliteStore::Open(StoreFile(), error);
      EXPECT_TRUE(card != nullptr && store != nullptr) << error;
      if (card == nullptr || store == nullptr) break;
      ExpectNothingLost(EntriesOn(*card), ContactsIn(*store));
      if (HasFailure() || call >= kLimit) break;
    }
    return call - 2;
  }

 private:
  std::string CardFile() const { return (folder_->Path() / "card.json").string(); }
  std::string StoreFile() const { return (folder_->Path() / "contacts.db").string(); }

  std::optional<ScratchFolder> folder_;
};

TEST_F(ContactsOutKill, AtAnyCallOfContactsAndAnyChangeOfTheCardLosesNothing) {
  // An entry is looked for, saved, looked for again by its number and read; the one that is there
  // already is found and read once more before. On the card each loses at least three records.
  EXPECT_GT(KillEverywhere(KilledAt::kCall), 2u * 4 + 2 + 2 * 3);
}

TEST_F(ContactsOutKill, AtAnyChangeOfTheContactsFileLosesNothing) {
  // Each save is written and brought to the disk.
  EXPECT_GE(KillEverywhere(KilledAt::kFileChange), 2u * 2);
}

}  // namespace
}  // namespace kelpin::contacts
