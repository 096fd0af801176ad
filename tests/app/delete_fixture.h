#pragma once

#include <functional>
#include <string>
#include <vector>

#include "app/delete_entries.h"
#include "tests/app/app_fixture.h"

namespace kelpin::app {

// The program with its Delete command. The first load leaves row 0 selected.
class DeleteTest : public AppTest {
 protected:
  DeleteTest() {
    std::erase(known, res::kCommandDelete);
    wiring.fillCommands = [this, fill = wiring.fillCommands](AppState& app, Commands& commands,
                                                             ListLoader& loader) {
      fill(app, commands, loader);
      RegisterDelete(app, commands, loader, [this](std::uint32_t index, ExtendedField field) {
        cleared_.push_back(std::to_string(index) + " " + FieldName(field));
        if (onClear) onClear(index);
      });
    };
  }

  void Delete() {
    Dialog().Command(res::kCommandDelete);
    device.screen.RunPending();
  }
  void DeleteAnsweringYes() {
    device.screen.ScriptBox(ui::BoxAnswer::kYes);
    Delete();
  }

  void SelectRows(const std::vector<int>& rows) {
    List().SetItemState(-1, 0, ui::kItemSelected);
    for (const int row : rows) List().SetItemState(row, ui::kItemSelected, ui::kItemSelected);
  }

  // The locations that the card was told to empty, in order.
  std::vector<std::string> Deleted() {
    std::vector<std::string> indexes;
    for (const std::string& call : device.journal.Entries("SimDeletePhonebookEntry")) {
      const std::size_t last = call.rfind(' ') + 1;
      indexes.push_back(call.substr(last, call.size() - last - 1));
    }
    return indexes;
  }
  // "5 email", in order.
  const std::vector<std::string>& Cleared() const { return cleared_; }

  std::function<void(std::uint32_t index)> onClear;

 private:
  static std::string FieldName(ExtendedField field) {
    switch (field) {
      case ExtendedField::kNumber2:
        return "number2";
      case ExtendedField::kNumber3:
        return "number3";
      case ExtendedField::kEmail:
        return "email";
      case ExtendedField::kNickname:
        return "nickname";
      case ExtendedField::kGroup:
        return "group";
    }
    return "unknown";
  }

  std::vector<std::string> cleared_;
};

}  // namespace kelpin::app
