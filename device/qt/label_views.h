#pragma once

#include <QWidget>

#include "ui/dialog.h"

namespace kelpin::qt {

// A dialog's heading. The main list's is a caption over a number, beside the card's drawing.
class HeaderView : public QWidget {
  Q_OBJECT

 public:
  explicit HeaderView(QWidget* parent);
  void Apply(const ui::ControlState& state);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QString caption_;
  QString number_;
  bool centered_ = false;
  bool valued_ = false;  // there is room for a number, also while none is known
};

// A drawing of the program, in its own colours.
class PictureView : public QWidget {
  Q_OBJECT

 public:
  explicit PictureView(QWidget* parent);
  void Apply(const ui::ControlState& state);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QString drawing_;
};

// "My No. +49171…" as its words and its number; without a number the words alone.
struct HeaderTexts {
  QString caption;
  QString number;
  bool operator==(const HeaderTexts&) const = default;
};
HeaderTexts SplitHeader(const QString& text);

}  // namespace kelpin::qt
