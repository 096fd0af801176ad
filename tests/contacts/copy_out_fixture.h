#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "app/extended_fields.h"
#include "tests/contacts/contacts_fixture.h"

namespace kelpin::contacts {

using Texts = std::vector<std::u16string>;

// Entries of the card that go to Contacts.
class CopyOutTest : public ContactsTest {
 protected:
  CopyOutTest() { wiring.loadLayout = app::LoadExtendedLayout; }

  static std::u16string AddedSummary(int created, int existing) {
    return u"Contacts successfully added.\n\n - " + Text(created) + u" new item(s).\n - " +
           Text(existing) + u" item(s) already exists.";
  }
  void SelectRows(const std::vector<int>& rows) {
    List().SetItemState(-1, 0, ui::kItemSelected);
    for (const int row : rows) List().SetItemState(row, ui::kItemSelected, ui::kItemSelected);
  }
  void SelectAll() { Dialog().Command(res::kCommandSelectAll); }

  // The command, to its end.
  void Save() {
    Dialog().Command(res::kCommandSaveToContacts);
    Load();
  }
  void Move() {
    Dialog().Command(res::kCommandMoveToContacts);
    device.screen.RunPending();
  }

  // A contact that is in the way of the entry of this name.
  std::int32_t PutContact(std::u16string_view name, std::u16string_view mobile = u"old") {
    test::FakeContact contact;
    contact[ContactProperty::kFirstName] = u"First";
    contact[ContactProperty::kLastName] = name;
    contact[ContactProperty::kFileAs] = name;
    contact[ContactProperty::kMobileTelephoneNumber] = mobile;
    return device.contacts.Insert(contact);
  }
  // "Name:mobile" of each contact, in the order they were made.
  Texts Contacts() {
    Texts texts;
    for (const auto& [oid, contact] : device.contacts.Contacts()) {
      texts.push_back(contact[ContactProperty::kLastName] + u":" +
                      contact[ContactProperty::kMobileTelephoneNumber]);
    }
    return texts;
  }

  // The locations that the card still has.
  std::vector<std::uint32_t> OnTheCard() {
    std::vector<std::uint32_t> indexes;
    for (const auto& [index, entry] : device.sim.Entries()) indexes.push_back(index);
    return indexes;
  }

  // How the next prompt is answered, and with which check box.
  void AnswerPrompt(int command, bool applyToAll = false) {
    device.screen.ScriptDialog(res::kDialogOverwritePrompt, [=, this](ui::Dialog& dialog) {
      prompts.push_back(dialog.Text(res::kOverwriteText));
      if (applyToAll) dialog.PressCheckBox(res::kOverwriteApplyToAll);
      dialog.Command(command);
    });
  }
  void RunWorkersInProgressDialog() {
    device.screen.ScriptDialog(res::kDialogCopyProgress, [this](ui::Dialog&) { Load(); });
  }

  void ExpectStoreLetGo() { EXPECT_EQ(device.contacts.OpenUses(), 0); }

  Texts prompts;  // what they asked
};

}  // namespace kelpin::contacts
