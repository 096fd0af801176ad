#pragma once

#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "device/contacts/object_store.h"
#include "tests/flow/contacts_out_card.h"

// A Move to Contacts that is killed on its way. The card has two entries, the store knows the first
// one's name already, and the user has it overwritten.
namespace kelpin::contacts {

inline const std::vector<WholeEntry> kMovedEntries = {
    {u"Ann", u"+491", u"222", u"333", u"ann@example.org"},
    {u"Bob", u"44", u"+4930231251231234567890123", u"", u"bob@example.org"},
};

// Counts what a move does and kills the program before the nth of it; 0 is never. What the kill
// before the next one finds is what a kill after this one would.
class KillPlan {
 public:
  void Arm(std::uint32_t call) { left_ = call; }
  void Count() {
    if (left_ > 0 && --left_ == 0) kill(getpid(), SIGKILL);
  }

 private:
  std::atomic<std::uint32_t> left_ = 0;
};

// A card of which the commands that change it count.
class CountedChannel final : public device::card::CardChannel {
 public:
  CountedChannel(device::card::CardChannel& channel, KillPlan& plan)
      : channel_(channel), plan_(plan) {}

  device::card::TransportError Connect(std::vector<std::uint8_t>& atr) override {
    return channel_.Connect(atr);
  }
  void Disconnect() override { channel_.Disconnect(); }
  device::card::TransportError Transmit(std::span<const std::uint8_t> command,
                                        std::vector<std::uint8_t>& response) override {
    constexpr std::uint8_t kUpdateBinary = 0xD6;
    constexpr std::uint8_t kUpdateRecord = 0xDC;
    if (command.size() > 1 && (command[1] == kUpdateBinary || command[1] == kUpdateRecord)) {
      plan_.Count();
    }
    return channel_.Transmit(command, response);
  }
  device::card::TransportError BeginTransaction() override { return channel_.BeginTransaction(); }
  void EndTransaction() override { channel_.EndTransaction(); }
  void SetListener(device::card::CardChannelListener* listener) override {
    channel_.SetListener(listener);
  }
  std::string Description() const override { return channel_.Description(); }

 private:
  device::card::CardChannel& channel_;
  KillPlan& plan_;
};

// An address book whose calls count.
class CountedBook final : public device::contacts::ContactBook {
 public:
  using ComResult = platform::ComResult;
  using ContactRecord = device::contacts::ContactRecord;

  CountedBook(std::shared_ptr<ContactBook> book, KillPlan& plan)
      : book_(std::move(book)), plan_(plan) {}

  ComResult Numbers(std::vector<std::int32_t>& numbers) override {
    return Counted().Numbers(numbers);
  }
  ComResult Read(std::span<const std::int32_t> numbers,
                 std::vector<std::optional<ContactRecord>>& records) override {
    return Counted().Read(numbers, records);
  }
  std::uint64_t Version() override { return book_->Version(); }
  ComResult Exists(std::int32_t number) override { return Counted().Exists(number); }
  ComResult CompanyPhone(std::int32_t number, std::string& phone) override {
    return Counted().CompanyPhone(number, phone);
  }
  ComResult Find(std::string_view fileAs, std::int32_t& number, std::int32_t& position) override {
    return Counted().Find(fileAs, number, position);
  }
  ComResult Add(const ContactRecord& record, std::int32_t& number) override {
    return Counted().Add(record, number);
  }
  ComResult Change(std::int32_t number, const ContactRecord& record,
                   const device::contacts::ContactTextSet& changed) override {
    return Counted().Change(number, record, changed);
  }
  ComResult Delete(std::int32_t number) override { return Counted().Delete(number); }

 private:
  ContactBook& Counted() {
    plan_.Count();
    return *book_;
  }

  const std::shared_ptr<ContactBook> book_;
  KillPlan& plan_;
};

class CountedStore final : public device::contacts::ObjectStore {
 public:
  CountedStore(ObjectStore& store, KillPlan& plan) : store_(store), plan_(plan) {}
  std::shared_ptr<device::contacts::ContactBook> OpenBook() override {
    auto book = store_.OpenBook();
    return book == nullptr ? nullptr : std::make_shared<CountedBook>(std::move(book), plan_);
  }

 private:
  ObjectStore& store_;
  KillPlan& plan_;
};

// The contact that is in the first entry's way.
inline void PutDuplicate(platform::ContactsStore& store) {
  ContactsConnection connection(store);
  EXPECT_EQ(connection.Open(), 1);
  EXPECT_EQ(connection.AddContact({.name = kMovedEntries[0].name, .number = u"1"}), 1);
  connection.Close();
}

// The whole move. `armed` runs when the list is read. True when nothing is left on the card.
inline bool MoveEverything(device::card::CardChannel& card, platform::ContactsStore& store,
                           const std::function<void()>& armed) {
  CardProgram program(card, store);
  program.Open();
  program.screen.ScriptEveryDialog(356, [](ui::Dialog& prompt) { prompt.Command(360); });
  armed();
  CopyOut(program, kMoveOutCommand);
  return program.Rows().empty();
}

// Every entry is whole in one of the two places.
inline void ExpectNothingLost(const std::map<std::u16string, WholeEntry>& onTheCard,
                              const std::map<std::u16string, WholeEntry>& inContacts) {
  for (const WholeEntry& entry : kMovedEntries) {
    const auto card = onTheCard.find(entry.name);
    const auto contact = inContacts.find(entry.name);
    const bool wholeOnCard = card != onTheCard.end() && card->second == entry;
    const bool wholeInContacts = contact != inContacts.end() && contact->second == entry;
    EXPECT_TRUE(wholeOnCard || wholeInContacts)
        << test::Utf8(entry.name)
        << (card == onTheCard.end() ? "" : " on the card " + testing::PrintToString(card->second))
        << (contact == inContacts.end() ? ""
                                        : " contact " + testing::PrintToString(contact->second));
  }
}

}  // namespace kelpin::contacts
