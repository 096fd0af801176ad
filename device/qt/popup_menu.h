#pragma once

#include <QMenu>
#include <functional>
#include <vector>

#include "ui/menu.h"

namespace kelpin::qt {

// A ui::Menu's items. Choices are told later, not while the menu still closes: what they start
// may run its own event loop, and a screen reader waits for the press to return.
class PopupMenu : public QMenu {
  Q_OBJECT

 public:
  PopupMenu(std::function<void(int command)> choose, QWidget* parent);

  void SetItems(const std::vector<ui::MenuItem>& items);

 protected:
  void changeEvent(QEvent* event) override;

 private:
  void Fill(QMenu& menu, const std::vector<ui::MenuItem>& items);

  std::function<void(int)> choose_;
  std::vector<ui::MenuItem> items_;
  bool filling_ = false;
};

}  // namespace kelpin::qt
