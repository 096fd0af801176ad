#pragma once

#include <QAbstractButton>
#include <QWidget>
#include <vector>

#include "device/qt/popup_menu.h"
#include "ui/dialog.h"

namespace kelpin::qt {

// One flat key; a drop-down one owns its menu.
class SoftKeyButton : public QAbstractButton {
  Q_OBJECT

 public:
  explicit SoftKeyButton(QWidget* parent);

  void Apply(const ui::SoftKey& key);
  void SetMenu(PopupMenu* menu) { menu_ = menu; }
  PopupMenu* Menu() const { return menu_; }
  void OpenMenu();
  // The size, in pixels, at which the text fits the key; the keys of a bar are written alike.
  int FittingTextSize() const;
  void SetTextSize(int pixels);
  int WidthOfText() const;  // at full size
  int TextSize() const { return textSize_; }

  QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void LoadIcon();
  // For the icon, with the gap behind it.
  int IconRoom() const;
  QRect Inside() const { return rect().adjusted(6, 6, -6, -6); }

  ui::SoftKey key_;
  PopupMenu* menu_ = nullptr;
  QPixmap icon_;
  int textSize_ = 0;
};

// The soft keys at a dialog's foot. A dialog with a Done button whose keys it has none of, or has
// never switched on, gets a Done key: elsewhere that button stands in the title bar.
class SoftKeyBar : public QWidget {
  Q_OBJECT

 public:
  SoftKeyBar(ui::Dialog& dialog, QWidget* parent);

  // False when there is nothing to show.
  bool Sync();
  // The key whose text starts with `letter`, upper case. True when there is one.
  bool PressLetter(char16_t letter);
  // Opens the first menu. True when there is one.
  bool OpenMenu();
  const std::vector<SoftKeyButton*>& Keys() const { return keys_; }

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void SetKeyCount(std::size_t count);
  // What comes while a modal window stands before this one is dropped.
  void Give(int command);
  void Press(std::size_t index);
  void LayOut();
  void FitTexts();

  ui::Dialog& dialog_;
  std::vector<SoftKeyButton*> keys_;
  bool done_ = false;   // the last key is the Done key
  bool wasOn_ = false;  // one of the dialog's keys was on at some time
};

// Makes a drop-down key's menu a part of the accessible tree, which pop-ups are not.
void InstallSoftKeyAccessibility();

}  // namespace kelpin::qt
