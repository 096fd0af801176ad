#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/app/app_fixture.h"
#include "views/view_commands.h"

namespace kelpin::views {

using test::RowsOf;

constexpr std::uint32_t kSelectedFocused = ui::kItemSelected | ui::kItemFocused;

// The program on fakes with the commands of the views. Open() lists the card; threads are real
// from then on.
class ViewsTest : public app::AppTest {
 protected:
  static constexpr std::string_view kHelp = "StartProgram(peghelp, Kelpin.htm)";

  ViewsTest() {
    wiring.fillCommands = [this](app::AppState& app, app::Commands& commands,
                                 app::ListLoader& loader) {
      theCommands = &commands;
      RegisterViewCommands(app, commands, loader);
    };
  }

  void OpenMain() {
    Open();
    device.kernel.SetThreadMode(test::FakeKernel::ThreadMode::kRun);
    device.journal.Clear();
    device.radio.ClearCommands();
  }

  // The same on a Smartphone. (Its main dialog is modal, which no view can tell.)
  void OpenSmartphoneMain() {
    OpenMain();
    state->isSmartphone = 1;
  }

  // Gives the command and runs `script` in the modal dialog it opens, which is closed then.
  void Show(int command, int resource, const std::function<void(ui::Dialog&)>& script) {
    bool opened = false;
    device.screen.ScriptDialog(resource, [&](ui::Dialog& dialog) {
      opened = true;
      script(dialog);
      device.screen.RunPending();
      if (!dialog.Ended()) {
        dialog.Close();
      }
    });
    Dialog().Command(command);
    EXPECT_TRUE(opened);
  }

  bool Await(const std::function<bool()>& done) { return device.screen.RunUntil(done); }

  static std::vector<int> WidthsOf(const ui::ListView& list) {
    std::vector<int> widths;
    for (const ui::Column& column : list.Columns()) widths.push_back(column.width);
    return widths;
  }
  static void SelectRow(ui::ListView& list, int row) {
    list.SetItemState(-1, 0, ui::kItemSelected);
    list.SetItemState(row, kSelectedFocused, kSelectedFocused);
  }

  // Every record of `file` with this restricted command fails.
  void FailCommand(std::uint32_t simCommand, std::uint32_t file, int record = -1) {
    device.radio.SetResponder([=](const test::FakeRadio::Command& command) {
      std::optional<test::FakeRadio::Answer> answer;
      if (command.simCommand == simCommand && command.parameters.fileId == file &&
          (record < 0 || command.parameters.parameter1 == static_cast<std::uint32_t>(record))) {
        answer.emplace().code = platform::kRilResultError;
      }
      return answer;
    });
  }

  // A record of 28 bytes: the name's bytes, then the number part's from byte 14 on, FF elsewhere.
  static std::vector<std::uint8_t> Record(std::string_view name,
                                          const std::vector<std::uint8_t>& number,
                                          std::uint8_t extension = 0xFF) {
    std::vector<std::uint8_t> record(28, 0xFF);
    for (std::size_t at = 0; at < name.size(); ++at) {
      record[at] = static_cast<std::uint8_t>(name[at]);
    }
    for (std::size_t at = 0; at < number.size(); ++at) record[14 + at] = number[at];
    record[27] = extension;
    return record;
  }
  void SetRecords(std::uint32_t file, std::vector<std::vector<std::uint8_t>> records) {
    test::FakeRadio::File content;
    content.recordLength = 28;
    content.records = std::move(records);
    device.radio.SetFile(file, std::move(content));
  }
};

}  // namespace kelpin::views
