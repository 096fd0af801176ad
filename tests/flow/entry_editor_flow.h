#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "app/app_state.h"
#include "app/main_list.h"
#include "res/ids.h"
#include "tests/card/soft_card.h"
#include "tests/flow/program_on_card.h"
#include "tests/support/call_text.h"

namespace kelpin::editor {

using device::card::ImageChange;
using device::card::SoftCard;
using Texts = std::vector<std::u16string>;

// A card of its own, and what stands between it and the program.
struct CardOfFlow {
  using Between =
      std::function<std::unique_ptr<device::card::CardChannel>(device::card::CardChannel& card)>;

  CardOfFlow(const std::string& sample, const ImageChange& change, const Between& stands)
      : card(sample, change), between(stands ? stands(card.Channel()) : nullptr) {}
  device::card::CardChannel& Channel() { return between ? *between : card.Channel(); }

  SoftCard card;
  const std::unique_ptr<device::card::CardChannel> between;
};

// The program with its watchers on a software card, every field switched on.
class EntryFlow : public CardOfFlow, public test::ProgramOnCard {
 public:
  explicit EntryFlow(const std::string& sample, const ImageChange& change = nullptr,
                     const Between& stands = nullptr)
      : CardOfFlow(sample, change, stands), ProgramOnCard(Channel()) {
    for (const char16_t* const name : {u"Enable_SNE", u"Enable_AAS", u"Enable_GAS"}) {
      SetSwitch(name, 1);
    }
  }

  using Script = std::function<void(ui::Dialog& dialog)>;

  void InNew(const Script& script) { In(res::kDialogNewEntry, res::kCommandNew, script); }
  void InEdit(std::uint32_t location, const Script& script) {
    ui::ListView& list = List();
    list.SetItemState(-1, 0, ui::kItemSelected);
    const int row = app::FindListRow(state, location);
    ASSERT_GE(row, 0);
    list.SetItemState(row, ui::kItemSelected, ui::kItemSelected);
    In(res::kDialogEditEntry, res::kCommandEdit, script);
  }
  // Runs `script` in the dialog when it is ready, and closes it where it is still open.
  void In(int resource, int command, const Script& script) {
    bool opened = false;
    screen.ScriptDialog(resource, [&](ui::Dialog& dialog) {
      opened = true;
      ASSERT_TRUE(screen.RunUntil([&] { return dialog.Bar()->KeyAt(0).enabled; }));
      script(dialog);
      if (!dialog.Ended()) dialog.Close();
    });
    state.dialog->Command(command);
    EXPECT_TRUE(opened);
    EXPECT_TRUE(Settle());
  }
  // Presses Done and waits until the dialog has closed or takes input again.
  void Done(ui::Dialog& dialog) {
    dialog.PressSoftKey(0);
    EXPECT_TRUE(screen.RunUntil([&] {
      return dialog.Ended() || (!screen.WaitCursor() && dialog.Bar()->KeyAt(0).enabled);
    }));
  }
  static void Type(ui::Dialog& dialog, int edit, std::u16string_view text) {
    dialog.SetFocus(edit);
    dialog.SetSelection(edit, 0, -1);
    dialog.ReplaceSelection(edit, text);
  }
  // The next pick of a number's name takes this row of the picker.
  void PickName(ui::Dialog& dialog, int button, int row) {
    screen.ScriptDialog(res::kDialogNumberNamePicker, [this, row](ui::Dialog& picker) {
      ui::ListView& list = *picker.List(res::kNumberNamePickerList);
      // The worker that selects the first row tells of it a moment later.
      ASSERT_TRUE(screen.RunUntil([&] { return picker.Bar()->KeyAt(0).enabled; }));
      list.Click(row, 0, ui::kNoModifier);
      screen.RunPending();
      picker.PressSoftKey(0);
      screen.RunPending();
    });
    dialog.PressButton(button);
  }
  // Checks these rows of the group picker alone.
  void PickGroups(ui::Dialog& dialog, int button, const std::vector<int>& rows) {
    screen.ScriptDialog(res::kDialogGroupPicker, [this, &rows](ui::Dialog& picker) {
      ui::ListView& list = *picker.List(res::kGroupPickerList);
      ASSERT_TRUE(screen.RunUntil([&] { return list.SelectedCount() > 0; }));
      list.SetCheck(-1, false);
      for (const int row : rows) list.SetCheck(row, true);
      picker.Command(ui::kCommandOk);
      screen.RunPending();
    });
    dialog.PressButton(button);
  }

  // A record of the card's phone book, in hex; `bytes` of text padded with FF.
  std::string Record(const std::string& file, std::size_t number) const {
    nlohmann::json image = card.Image();
    return device::card::ImageRecord(image, {"7F10", "5F3A", file}, number);
  }
  static std::string Padded(std::string hex, std::size_t bytes) {
    while (hex.size() < 2 * bytes) hex += "FF";
    return hex;
  }
  // How often the list has a location, and what it says there.
  int RowsOf(std::uint32_t location, std::u16string* text = nullptr) const {
    int rows = 0;
    const ui::ListView& list = List();
    for (int row = 0; row < list.ItemCount(); ++row) {
      std::uint32_t index = 0;
      if (app::GetListRow(state, row, &index, nullptr, nullptr) == 0 || index != location) continue;
      ++rows;
      if (text != nullptr) *text = test::RowText(list, row, 1);
    }
    return rows;
  }
};

}  // namespace kelpin::editor
