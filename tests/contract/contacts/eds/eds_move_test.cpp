#include "tests/contract/contacts/eds/eds_move.h"

#include <gmock/gmock.h>
#include <sys/wait.h>

#include <cstdlib>
#include <string>

#include "tests/contract/contacts/eds/eds_fixture.h"
#include "tests/contract/contacts/eds/extra_book.h"
#include "tests/device/contacts/memory_disk.h"
#include "tests/fault/move_kill.h"

namespace kelpin::contract {

using contacts::kMovedEntries;
using device::card::ScratchFolder;

int RunMoveProcess(char** arguments) {
  std::string why;
  const auto card = device::softcard::SoftChannel::Open(arguments[0], why);
  const auto store = device::contacts::EdsStore::Open(arguments[1], why);
  if (card == nullptr || store == nullptr) {
    std::fprintf(stderr, "%s\n", why.c_str());
    return 2;
  }
  contacts::KillPlan plan;
  contacts::CountedChannel channel(*card, plan);
  contacts::CountedStore counted(*store, plan);
  const auto call = static_cast<std::uint32_t>(std::strtoul(arguments[2], nullptr, 10));
  return contacts::MoveEverything(channel, counted, [&] { plan.Arm(call); }) ? kMovedAll : 1;
}

namespace {

using contacts::CardProgram;
using testing::ElementsAre;
using testing::IsEmpty;

// An address book and a card file of each test's own.
class EdsMove : public testing::Test {
 protected:
  void Begin(const std::string& image) {
    // The server keeps what a book held for the next one of its uid.
    static int books = 0;
    uid_ = "kelpin-moved-" + std::to_string(++books);
    book_ = std::make_unique<ExtraBook>(uid_.c_str(), "Moved");
    folder_ = std::make_unique<ScratchFolder>();
    std::ofstream(CardFile()) << image;
  }
  std::string CardFile() const { return (folder_->Path() / "card.json").string(); }

  // True when the process was killed before its nth call.
  bool MoveAndKill(std::uint32_t call) const {
    const std::string file = CardFile();
    const std::string number = std::to_string(call);
    const pid_t child = fork();
    if (child == 0) {
      execl("/proc/self/exe", "eds_contract_tests", kMoveProcess, file.c_str(), uid_.c_str(),
            number.c_str(), nullptr);
      _exit(2);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    if (WIFSIGNALED(status)) {
      EXPECT_EQ(WTERMSIG(status), SIGKILL);
      return true;
    }
    EXPECT_EQ(WEXITSTATUS(status), kMovedAll);
    return false;
  }

  std::string uid_;  // the book's

 private:
  std::unique_ptr<ExtraBook> book_;
  std::unique_ptr<ScratchFolder> folder_;
};

TEST_F(EdsMove, EntriesOfAnyKindReachTheAddressBookAndLeaveTheCard) {
  const std::vector<contacts::WholeEntry> entries = {
      {u"Ann", u"+491", u"222", u"333", u"ann@example.org"},
      {u"Zo\u00EB;\"%\\n", u"*31#+4917", u"+4930231251231234567890123", u"", u"a,b;c@d"},
      {u"\u05D0\u05D1\u05D2 \U0001F600", u"1p2p3", u"", u"", u""},
      {u"two\nlines", u"5", u"", u"", u""},
      {u"END:VCARD", u"6", u"", u"", u""},
      {u"", u"7", u"77", u"", u""},
  };
  Begin(contacts::ImageWith(entries));
  std::string why;
  const auto card = device::softcard::SoftChannel::Open(CardFile(), why);
  ASSERT_NE(card, nullptr) << why;
  const auto before = contacts::EntriesOn(*card);
  ASSERT_EQ(before.size(), entries.size());
  const auto store = OpenEds(uid_);
  ASSERT_NE(store, nullptr);
  CardProgram program(*card, *store);
  program.Open();
  contacts::CopyOut(program, contacts::kMoveOutCommand);
  EXPECT_THAT(program.BoxTexts(),
              ElementsAre(u"Contact(s) successfully added.\n\n - 6 new item(s).\n - 0 item(s) "
                          u"overwritten.\n - 0 item(s) already exists."));
  EXPECT_THAT(program.Rows(), IsEmpty());
  EXPECT_EQ(contacts::ContactsIn(*store), before);
}

TEST_F(EdsMove, AProgramThatIsKilledHasLostNothing) {
  const std::string image = contacts::ImageWith(kMovedEntries);
  std::uint32_t call = 1;
  for (bool killed = true; killed; ++call) {
    ASSERT_LT(call, 200u);
    SCOPED_TRACE("killed before " + std::to_string(call));
    Begin(image);
    if (const auto store = OpenEds(uid_)) contacts::PutDuplicate(*store);
    killed = MoveAndKill(call);
    std::string why;
    const auto card = device::softcard::SoftChannel::Open(CardFile(), why);
    ASSERT_NE(card, nullptr) << why;
    const auto store = OpenEds(uid_);
    ASSERT_NE(store, nullptr);
    contacts::ExpectNothingLost(contacts::EntriesOn(*card), contacts::ContactsIn(*store));
    if (HasFailure()) return;
  }
  // Each entry is looked for, saved, looked for by its number and read, and loses at least three
  // records of the card.
  EXPECT_GT(call - 2, 2u * (4 + 3));
}

}  // namespace
}  // namespace kelpin::contract
