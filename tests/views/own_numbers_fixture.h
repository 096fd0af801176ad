#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string_view>
#include <vector>

#include "res/ids.h"
#include "tests/views/views_fixture.h"

namespace kelpin::views {

// Number parts by hand: length, TON/NPI, digits with the low nibble first.
inline const std::vector<std::uint8_t> kNumberPlus49 = {0x07, 0x91, 0x94, 0x71,
                                                        0x21, 0x43, 0x65, 0x87};  // +491712345678
inline const std::vector<std::uint8_t> kNumber01234 = {0x04, 0x81, 0x10, 0x32, 0xF4};

// The list of own numbers. Records of 28 bytes: names of 14 bytes.
class OwnNumbersTest : public ViewsTest {
 protected:
  static constexpr int kCommand = 323;
  static constexpr int kDialog = 208;
  static constexpr int kEditor = 210;
  static constexpr std::uint32_t kFile = 0x6F40;
  static constexpr std::u16string_view kEvent = u"OEM_MY_RIL_MSISDNS_EVENT_OEM";

  void SetUp() override {
    SetRecords(kFile, {Record("Home", kNumberPlus49), Record("", kNumber01234), Record("", {})});
  }

  // Opens the list and runs `script` when it was filled with `rows` rows.
  void ShowList(int rows, const std::function<void(ui::Dialog&, ui::ListView&)>& script) {
    Show(kCommand, kDialog, [=, this](ui::Dialog& dialog) {
      ui::ListView& list = *dialog.List(res::kOwnNumbersList);
      ASSERT_TRUE(Await([&] { return list.ItemCount() == rows && !device.screen.WaitCursor(); }));
      device.screen.RunPending();
      script(dialog, list);
    });
  }
  // Opens the editor of the selected row and runs `script` in it.
  void InEditor(ui::Dialog& list, const std::function<void(ui::Dialog&)>& script) {
    device.screen.ScriptDialog(kEditor, [&](ui::Dialog& editor) {
      script(editor);
      device.screen.RunPending();
      if (!editor.Ended()) editor.Close();
    });
    list.Command(332);
  }
  static void Type(ui::Dialog& editor, std::u16string_view name, std::u16string_view number) {
    editor.EditByUser(1023, name, static_cast<int>(name.size()));
    editor.EditByUser(1026, number, static_cast<int>(number.size()));
  }
  static void Save(ui::Dialog& editor, std::u16string_view name, std::u16string_view number) {
    Type(editor, name, number);
    editor.Command(340);
  }
  // The one box there was.
  void ExpectErrorBox(std::u16string_view text) {
    ASSERT_EQ(Boxes().size(), 1u);
    EXPECT_EQ(Boxes()[0].text, text);
    EXPECT_EQ(Boxes()[0].caption, u"Error");
    EXPECT_EQ(Boxes()[0].style, ui::kBoxError);
  }
  std::vector<std::uint8_t> CardRecord(std::size_t record) {
    return device.radio.GetFile(kFile)->records.at(record - 1);
  }
  static bool EraseEnabled(ui::Dialog& dialog) {
    return dialog.Bar()->SubMenu(333)->IsEnabled(334);
  }
};

}  // namespace kelpin::views
