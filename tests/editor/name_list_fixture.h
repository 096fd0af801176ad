#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "tests/editor/entry_editor_fixture.h"

namespace kelpin::editor {

using test::RowsOf;

// One of the card's two lists of names, as it is to be.
struct FamilyCase {
  const char* name;
  std::uint32_t file;
  int command;
  int dialog;
  int bar;
  int heading;
  const char16_t* headingText;
  int list;
  int edit;
  int erase;
  int nameDialog;
  int nameBar;
  int label;
  int text;
  int save;
  int cancel;
  const char16_t* nothing;
};

inline const FamilyCase kFamilyCases[] = {
    {"NumberNames", 5, 1083, 368, 369, 1085, u"Edit Phone No. Name", 1088, 1086, 1087, 217, 372,
     2000, 2001, 1093, 1094, u"This card keeps no names for phone numbers"},
    {"GroupNames", 4, 1084, 371, 370, 1089, u"Edit Group Name", 1092, 1090, 1091, 373, 374, 2002,
     2003, 1095, 1096, u"This card keeps no groups"}};

inline void PrintTo(const FamilyCase& family, std::ostream* out) {
  *out << family.name;
}

// The program on a card whose lists of names the test fills. Records of 20 bytes.
class NameListFixture : public EntryEditorTest {
 protected:
  static constexpr std::uint8_t kLength = 20;

  NameListFixture() {
    std::erase(known, res::kCommandNumberNames);
    std::erase(known, res::kCommandGroupNames);
    device.screen.SetMetrics(SmallScreen());
  }

  static ui::Metrics SmallScreen() {
    ui::Metrics metrics;
    metrics.screen = {240, 320};
    return metrics;
  }

  // Every name in letters that ASCII and the card's alphabet share; "" is an erased record.
  void PutNames(std::uint32_t file, const std::vector<std::string>& names,
                std::uint8_t length = kLength) {
    SetFile(file, length, names.size());
    for (std::size_t at = 0; at < names.size(); ++at) {
      SetRecord(file, static_cast<std::uint32_t>(at + 1), Letters(names[at]));
    }
  }

  // Runs `script` in the next dialog of this template, once what it started is done, and then
  // closes it where it is still open.
  void Expect(int dialog, const Script& script) {
    device.screen.ScriptDialog(dialog, [this, script](ui::Dialog& shown) {
      Serve();
      script(shown);
      Serve();
      if (!shown.Ended()) shown.Close();
      ++opened[shown.Resource()];
    });
  }

  static void SelectRow(ui::ListView& list, int row) {
    constexpr std::uint32_t kState = ui::kItemSelected | ui::kItemFocused;
    list.SetItemState(-1, 0, ui::kItemSelected);
    list.SetItemState(row, kState, kState);
    list.SetSelectionMark(row);
  }
  static bool KeyOn(const ui::Dialog& dialog, std::size_t key) {
    return dialog.Bar()->KeyAt(key).enabled;
  }

  // The records of the file that were read, in order, since Forget.
  std::vector<int> Reads(std::uint32_t file) {
    std::vector<int> records;
    for (const std::string& line : device.journal.Entries("RIL_DevSpecific")) {
      const Strings parts = Split(line);
      if (parts.at(2) == "128" && parts.at(3) == "2" && parts.at(4) == std::to_string(file)) {
        records.push_back(std::stoi(parts.at(5)));
      }
    }
    return records;
  }
  // Answers everything that is to fail with an error, one record alone where one is given.
  void FailRecord(std::uint32_t operation, std::uint32_t file, std::uint32_t record = 0) {
    device.radio.SetResponder(
        [=](const test::FakeRadio::Command& command) -> std::optional<test::FakeRadio::Answer> {
          const bool hit = command.block.size() == 288 && command.block[8] == operation &&
                           command.block[12] == file &&
                           (record == 0 || command.block[16] == record);
          if (!hit) return std::nullopt;
          return test::FakeRadio::Answer{platform::kRilResultError, {}, {}};
        });
  }
  void SetReadiness(SimResult result) { device.sim.SetResult("SimGetDevCaps", result); }
  void FailUpdate(std::uint32_t file) { FailRecord(5, file); }

  std::map<int, int> opened;  // how often a dialog of this template was shown
};

// Both lists to edit, each test for each of them.
class NameListTest : public NameListFixture, public testing::WithParamInterface<FamilyCase> {
 protected:
  const FamilyCase& F() const { return GetParam(); }

  void Put(const std::vector<std::string>& names, std::uint8_t length = kLength) {
    PutNames(F().file, names, length);
  }
  // Opens the list and runs `script` in it.
  void InList(const std::function<void(ui::Dialog&, ui::ListView&)>& script) {
    const int before = opened[F().dialog];
    Expect(F().dialog, [&](ui::Dialog& dialog) { script(dialog, *dialog.List(F().list)); });
    theCommands->Run(F().command);
    EXPECT_EQ(opened[F().dialog], before + 1);
  }
  // Presses "Edit" and runs `script` in the dialog for the name.
  void EditRow(ui::Dialog& dialog, int row, const Script& script) {
    const int before = opened[F().nameDialog];
    SelectRow(*dialog.List(F().list), row);
    Expect(F().nameDialog, script);
    dialog.PressSoftKey(0);
    EXPECT_EQ(opened[F().nameDialog], before + 1);
  }
  void Type(ui::Dialog& dialog, std::u16string_view text) const {
    dialog.SetSelection(F().text, 0, -1);
    dialog.ReplaceSelection(F().text, text);
  }
  Bytes CardRecord(std::uint32_t record) { return Record(F().file, record); }
};

inline std::string NameOfCase(const testing::TestParamInfo<FamilyCase>& info) {
  return info.param.name;
}

}  // namespace kelpin::editor
