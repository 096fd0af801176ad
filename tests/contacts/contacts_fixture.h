#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "contacts/contacts_commands.h"
#include "tests/app/app_fixture.h"

namespace kelpin::contacts {

using platform::ContactProperty;
using test::RowsOf;

// The program with its contacts commands. Threads run when the test says so, on its own thread.
class ContactsTest : public app::AppTest {
 protected:
  ContactsTest() {
    for (const int command :
         {res::kCommandSaveToContacts, res::kCommandMoveToContacts, res::kCommandContactsToSim,
          res::kCommandMoveContactsToSim, res::kCommandDeleteContacts, res::kCommandOptions}) {
      std::erase(known, command);
    }
    wiring.fillCommands = [fill = wiring.fillCommands](app::AppState& app, app::Commands& commands,
                                                       app::ListLoader& loader) {
      fill(app, commands, loader);
      RegisterContactsCommands(app, commands, loader);
    };
    SetSwitch(u"Enable_Move_Func", 1);
  }

  static std::u16string Text(int number) {
    const std::string digits = std::to_string(number);
    return {digits.begin(), digits.end()};
  }
  static std::u16string Summary(int created, int overwritten, int existing) {
    return u"Contact(s) successfully added.\n\n - " + Text(created) + u" new item(s).\n - " +
           Text(overwritten) + u" item(s) overwritten.\n - " + Text(existing) +
           u" item(s) already exists.";
  }
};

}  // namespace kelpin::contacts
