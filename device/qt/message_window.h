#pragma once

#include <QDialog>
#include <string_view>

#include "ui/screen.h"

QT_BEGIN_NAMESPACE
class QLabel;
class QScrollArea;
QT_END_NAMESPACE

namespace kelpin::qt {

// A message box. Escape, the close box and an Enter that nobody thought about give the answer that
// changes nothing.
class MessageWindow : public QDialog {
  Q_OBJECT

 public:
  MessageWindow(std::u16string_view text, std::u16string_view caption, ui::BoxStyle style,
                QWidget* parent);

  static ui::BoxAnswer SafeAnswer(ui::BoxStyle style);
  ui::BoxAnswer Answer() const { return answer_; }

  void reject() override;

 Q_SIGNALS:
  void Answered();

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  void AddButton(QWidget* row, const QString& text, ui::BoxAnswer answer, bool primary);
  void Give(ui::BoxAnswer answer);
  void FitTo(QSize room);

  const ui::BoxStyle style_;
  ui::BoxAnswer answer_;
  bool given_ = false;
  QScrollArea* scroll_ = nullptr;
  QLabel* text_ = nullptr;
};

}  // namespace kelpin::qt
