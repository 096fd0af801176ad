#include <gmock/gmock.h>

#include <set>

#include "tests/fault/faulty_channel.h"
#include "tests/fault/move_kill.h"

// Saving an entry to Contacts with the card pulled before the first command, the second, …: its
// contact has what could be read.
namespace kelpin::contacts {
namespace {

using device::card::Fault;
using device::card::FaultyChannel;
using device::card::SoftCard;

TEST(ContactsOutRead, AFieldThatCannotBeReadIsEmptyAndTheContactIsWritten) {
  const WholeEntry& ann = kMovedEntries[0];
  const std::string image = ImageWith({ann});
  std::set<std::string> empty;
  bool fired = true;
  for (std::uint32_t command = 1; fired; ++command) {
    ASSERT_LT(command, 200u);
    SCOPED_TRACE(command);
    SoftCard card = SoftCard::FromText(image);
    test::Journal journal;
    test::FailPlan failures;
    test::FakeContacts store(journal, failures);
    FaultyChannel channel(card.Channel());
    CardProgram program(channel, store);
    program.Open();
    channel.Arm(command, Fault::kGoneBefore);
    CopyOut(program, kSaveCommand);
    fired = channel.Fired();
    channel.Disarm();
    const std::map<std::u16string, WholeEntry> contacts = ContactsIn(store);
    ASSERT_EQ(contacts.count(ann.name), 1u);
    const WholeEntry& contact = contacts.at(ann.name);
    EXPECT_EQ(contact.number, ann.number);
    int lost = 0;
    const auto look = [&](const char* field, const std::u16string& kept,
                          const std::u16string& whole) {
      if (kept == whole) return;
      EXPECT_EQ(kept, u"") << field;
      empty.insert(field);
      ++lost;
    };
    look("second number", contact.number2, ann.number2);
    look("third number", contact.number3, ann.number3);
    look("e-mail", contact.email, ann.email);
    if (!fired) {
      EXPECT_EQ(lost, 0);
    }
  }
  EXPECT_THAT(empty, testing::ElementsAre("e-mail", "second number", "third number"));
}

}  // namespace
}  // namespace kelpin::contacts
