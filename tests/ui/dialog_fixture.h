#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <memory>

#include "tests/support/headless_screen.h"
#include "tests/ui/recorder.h"
#include "ui/dialog.h"

namespace kelpin::test {

inline constexpr int kResource = 900;
inline constexpr int kLabel = 101;
inline constexpr int kName = 102;
inline constexpr int kPhone = 103;
inline constexpr int kGroup = 104;  // read-only
inline constexpr int kPlace = 105;  // disabled
inline constexpr int kButton = 106;
inline constexpr int kCheck = 107;
inline constexpr int kList = 108;
inline constexpr int kBar = 109;
inline constexpr int kSecret = 110;  // hidden

inline constexpr std::array<ui::ControlTemplate, 10> kControls = {{
    {.id = kLabel, .text = u"Name:", .style = ui::kStyleBold},
    {.id = kName, .kind = ui::ControlKind::kEdit, .labelledBy = kLabel},
    {.id = kPhone, .kind = ui::ControlKind::kEdit},
    {.id = kGroup, .kind = ui::ControlKind::kEdit, .style = ui::kStyleReadOnly},
    {.id = kPlace, .kind = ui::ControlKind::kEdit, .style = ui::kStyleDisabled},
    {.id = kButton, .kind = ui::ControlKind::kButton, .text = u"..."},
    {.id = kCheck, .kind = ui::ControlKind::kCheckBox, .text = u"Apply to all"},
    {.id = kList, .kind = ui::ControlKind::kList},
    {.id = kBar, .kind = ui::ControlKind::kProgress},
    {.id = kSecret, .text = u"later", .style = ui::kStyleHidden},
}};
inline constexpr ui::DialogTemplate kTemplate = {
    .id = kResource, .controls = kControls, .helpSection = u"entry"};

inline constexpr int kNew = 312;
inline constexpr int kMenuKey = 313;
inline constexpr int kEditCommand = 314;
inline constexpr int kDeleteCommand = 315;
inline constexpr int kSelectAll = 319;
inline constexpr int kCopyNumber = 400;

inline constexpr std::array<ui::MenuItemTemplate, 3> kItems = {
    {{.command = kEditCommand, .text = u"Edit..."},
     {.command = kDeleteCommand, .text = u"Delete"},
     {.command = kSelectAll, .text = u"Select All"}}};
inline constexpr std::array<ui::SoftKeyTemplate, 2> kKeys = {
    {{.command = kNew, .text = u"New"}, {.command = kMenuKey, .text = u"Menu", .menu = kItems}}};
inline constexpr ui::MenuBarTemplate kMenuBar = {.id = 309, .keys = kKeys};

inline constexpr std::array<ui::Accelerator, 5> kAccelerators = {
    {{.press = {ui::Key::kDelete, ui::kNoModifier, 0}, .command = kDeleteCommand},
     {.press = {ui::Key::kF2, ui::kNoModifier, 0}, .command = kEditCommand},
     {.press = {ui::Key::kCharacter, ui::kControl, u'A'}, .command = kSelectAll},
     {.press = {ui::Key::kCharacter, ui::kControl, u'N'}, .command = kNew},
     {.press = {ui::Key::kCharacter, ui::kControl, u'C'}, .command = kCopyNumber}}};

class DialogTest : public ::testing::Test {
 protected:
  std::shared_ptr<ui::Dialog> Open() {
    std::shared_ptr<ui::Dialog> dialog = screen_.CreateDialog(kTemplate, 0, handler_);
    screen_.ShowDialog(*dialog);
    handler_.calls.clear();
    handler_.notifications.clear();
    return dialog;
  }

  // With soft keys and accelerators.
  std::shared_ptr<ui::Dialog> OpenWithKeys() {
    std::shared_ptr<ui::Dialog> dialog = Open();
    dialog->CreateMenuBar(kMenuBar);
    dialog->SetAccelerators(kAccelerators);
    return dialog;
  }

  HandlerRecorder handler_;
  HeadlessScreen screen_;
};

}  // namespace kelpin::test
