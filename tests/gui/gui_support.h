#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <QWidget>
#include <functional>
#include <memory>
#include <string>

#include "device/qt/dialog_window.h"
#include "device/qt/list_table.h"
#include "device/qt/message_window.h"
#include "device/qt/qt_screen.h"
#include "device/qt/soft_key_bar.h"
#include "tests/gui/sample_dialogs.h"

namespace kelpin::test {

// Serves the screen until `done`; false when that takes half a minute.
bool ServeUntil(const std::function<bool()>& done);
// Serves it until what was changed is drawn.
void Settle();
// Saves every window that is open, named after the test that runs.
void KeepPictures();

qt::DialogWindow* WindowOf(const ui::Dialog& dialog);
qt::DialogWindow* OpenWindow(int resource);  // null when none is shown
qt::MessageWindow* OpenBox();                // the one in front; null when none is shown

// A screen of a phone's size with folders of its own. A test that fails leaves pictures.
class GuiTest : public ::testing::Test {
 protected:
  GuiTest();
  void TearDown() override;

  // A modeless dialog, shown and drawn.
  std::shared_ptr<ui::Dialog> Show(const ui::DialogTemplate& resource, ui::DialogHandler& handler);
  std::filesystem::path Folder(const char* name) const;

  template <typename Widget>
  static Widget* Find(const ui::Dialog& dialog, const std::string& name) {
    return WindowOf(dialog)->findChild<Widget*>(QString::fromStdString(name));
  }
  static qt::ListTable* Table(const ui::Dialog& dialog, int control);
  // The middle of a cell, in the table's viewport.
  static QPoint Cell(const qt::ListTable& table, int row, int column);

  QTemporaryDir folder_;
  std::unique_ptr<qt::QtScreen> screen_;
};

}  // namespace kelpin::test
