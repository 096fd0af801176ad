#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "contacts/contacts_connection.h"
#include "tests/card/soft_card.h"
#include "tests/flow/card_program.h"
#include "tests/support/call_text.h"

namespace kelpin::contacts {

inline constexpr int kSaveCommand = 317;
inline constexpr int kMoveOutCommand = 1107;

// What of an entry goes to Contacts, wherever it is.
struct WholeEntry {
  std::u16string name;
  std::u16string number;
  std::u16string number2;
  std::u16string number3;
  std::u16string email;
  bool operator==(const WholeEntry&) const = default;
  friend void PrintTo(const WholeEntry& entry, std::ostream* out) {
    for (const auto* text : {&entry.name, &entry.number, &entry.number2, &entry.number3}) {
      *out << test::Utf8(*text) << '|';
    }
    *out << test::Utf8(entry.email);
  }
};

inline void WriteNumber(app::AppState& state, sim::FieldSlot slot, std::uint32_t index,
                        const std::u16string& number) {
  std::uint32_t existing = sim::kNoRecord;
  ASSERT_EQ(state.extPhonebook.WriteNumberField(slot, index, {number, 0}, false, existing),
            sim::kFieldWritten);
}

inline std::string TextOf(const std::string& file) {
  std::ostringstream text;
  text << std::ifstream(file).rdbuf();
  return text.str();
}

// The sample that has every kind of file, with nothing in its phone book and twelve places a file,
// so that many runs take little time.
inline device::card::SoftCard EmptyCard() {
  static constexpr int kPlaces = 12;
  return device::card::SoftCard("usim", [](nlohmann::json& image) {
    for (nlohmann::json& file : device::card::ImageFile(image, {"7F10", "5F3A"})["files"]) {
      // The file of references says where the others are.
      if (!file.contains("records") || file["id"] == "4F30") continue;
      file["records"] = nlohmann::json::array();
      if (file["recordCount"] > kPlaces) file["recordCount"] = kPlaces;
    }
  });
}

// The image of a card with these entries and nothing else, from location 1 on; each has a nickname.
inline std::string ImageWith(const std::vector<WholeEntry>& entries) {
  device::card::SoftCard card = EmptyCard();
  {
    test::Journal journal;
    test::FailPlan failures;
    test::FakeContacts store(journal, failures);
    CardProgram program(card.Channel(), store);
    program.SetSwitch(u"Enable_SNE", 1);
    program.Open();
    std::uint32_t index = 0;
    for (const WholeEntry& entry : entries) {
      ++index;
      EXPECT_EQ(
          program.state.simPhonebook.WriteEntry(index, entry.name.c_str(), entry.number.c_str()),
          platform::SimResult::kOk);
      WriteNumber(program.state, sim::FieldSlot::kSecondNumber, index, entry.number2);
      WriteNumber(program.state, sim::FieldSlot::kThirdNumber, index, entry.number3);
      for (const auto slot : {sim::FieldSlot::kEmail, sim::FieldSlot::kNickname}) {
        std::uint32_t existing = sim::kNoRecord;
        const std::u16string text = slot == sim::FieldSlot::kEmail ? entry.email : u"Nick";
        EXPECT_EQ(program.state.extPhonebook.WriteTextField(slot, index, text, existing),
                  sim::kFieldWritten);
      }
    }
  }
  return TextOf(card.File());
}

// What a program that starts now finds on the card, by name.
inline std::map<std::u16string, WholeEntry> EntriesOn(device::card::CardChannel& channel) {
  test::Journal journal;
  test::FailPlan failures;
  test::FakeContacts store(journal, failures);
  CardProgram program(channel, store);
  program.Open();
  std::map<std::u16string, WholeEntry> entries;
  for (int row = 0; row < program.List().ItemCount(); ++row) {
    std::uint32_t index = 0;
    WholeEntry entry;
    EXPECT_EQ(app::GetListRow(program.state, row, &index, &entry.name, &entry.number), 1);
    std::uint32_t existing = sim::kNoRecord;
    sim::NumberField third;
    static_cast<void>(program.state.extPhonebook.ReadNumberField(sim::FieldSlot::kThirdNumber,
                                                                 index, existing, third));
    entry.number2 = program.Number2(index);
    entry.number3 = third.number;
    entry.email = program.Email(index);
    EXPECT_TRUE(entries.emplace(entry.name, entry).second) << "listed twice";
  }
  return entries;
}

// What the store has, by name, read through a connection of its own.
inline std::map<std::u16string, WholeEntry> ContactsIn(platform::ContactsStore& store) {
  using platform::ContactProperty;
  std::map<std::u16string, WholeEntry> contacts;
  ContactsConnection connection(store);
  EXPECT_EQ(connection.Open(), 1);
  EXPECT_EQ(connection.OpenContactsFolder(), 1);
  for (std::int32_t position = 1; position <= connection.count; ++position) {
    EXPECT_EQ(connection.ContactAt(position), 1);
    platform::IContact& contact = *connection.contact;
    const WholeEntry entry = {ContactText(contact, ContactProperty::kLastName),
                              ContactText(contact, ContactProperty::kMobileTelephoneNumber),
                              ContactText(contact, ContactProperty::kBusinessTelephoneNumber),
                              ContactText(contact, ContactProperty::kHomeTelephoneNumber),
                              ContactText(contact, ContactProperty::kEmail1Address)};
    EXPECT_TRUE(contacts.emplace(entry.name, entry).second) << "in Contacts twice";
  }
  return contacts;
}

// The whole command with every entry that is listed, threads included.
inline void CopyOut(CardProgram& program, int command) {
  ui::ListView& list = program.List();
  for (int row = 0; row < list.ItemCount(); ++row) {
    list.SetItemState(row, ui::kItemSelected, ui::kItemSelected);
  }
  program.state.dialog->Command(command);
  program.RunThreads();
}

}  // namespace kelpin::contacts
