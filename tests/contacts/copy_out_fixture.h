#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "app/extended_fields.h"
#include "contacts/contacts_commands.h"
#include "tests/app/app_fixture.h"

namespace kelpin::contacts {

using platform::ContactProperty;
using Texts = std::vector<std::u16string>;

// The program with its commands between the card and Contacts. Worker threads run, one after the
// other on the test's own thread, when the test says so.
class CopyOutTest : public app::AppTest {
 protected:
  static constexpr std::u16string_view kNoneCopied =
      u"Contact(s) successfully added.\n\n - 0 new item(s).\n - 0 item(s) overwritten.\n"
      u" - 0 item(s) already exists.";

  CopyOutTest() {
    std::erase(known, res::kCommandSaveToContacts);
    std::erase(known, res::kCommandMoveToContacts);
    wiring.fillCommands = [fill = wiring.fillCommands](app::AppState& app, app::Commands& commands,
                                                       app::ListLoader& loader) {
      fill(app, commands, loader);
      RegisterContactsCommands(app, commands, loader);
    };
    wiring.loadLayout = app::LoadExtendedLayout;
    SetSwitch(u"Enable_Move_Func", 1);
  }

  static std::u16string Summary(int created, int overwritten, int existing) {
    return u"Contact(s) successfully added.\n\n - " + Text(created) + u" new item(s).\n - " +
           Text(overwritten) + u" item(s) overwritten.\n - " + Text(existing) +
           u" item(s) already exists.";
  }
  static std::u16string AddedSummary(int created, int existing) {
    return u"Contacts successfully added.\n\n - " + Text(created) + u" new item(s).\n - " +
           Text(existing) + u" item(s) already exists.";
  }
  static std::u16string Text(int number) {
    const std::string digits = std::to_string(number);
    return {digits.begin(), digits.end()};
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
