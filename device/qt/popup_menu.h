#pragma once

#include <QFont>
#include <QMenu>
#include <functional>
#include <optional>
#include <vector>

#include "ui/menu.h"

namespace kelpin::qt {

// A ui::Menu's items. Choices are told later, not while the menu still closes: what they start
// may run its own event loop, and a screen reader waits for the press to return.
//
// A letter chooses the item that begins with it; of several it goes to the next.
class PopupMenu : public QMenu {
  Q_OBJECT

 public:
  PopupMenu(std::function<void(int command)> choose, QWidget* parent);

  void SetItems(const std::vector<ui::MenuItem>& items);
  // Every word within `width`: the shortcuts are left out where they do not fit, and what is still
  // too wide is written smaller. Done for the screen's width whenever the menu opens.
  void FitInto(int width);

 protected:
  void changeEvent(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void Fill();
  void ShowKeys(bool shown);
  void AddSubMenu(const ui::MenuItem& item, const QIcon& icon, const QString& text);
  // True when it is the only item that begins with it.
  bool GoToLetter(QChar letter);

  std::function<void(int)> choose_;
  std::vector<ui::MenuItem> items_;
  bool filling_ = false;
  std::optional<QFont> own_;  // the menu's font while a smaller one is in its place
};

}  // namespace kelpin::qt
