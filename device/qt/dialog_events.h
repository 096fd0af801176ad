#pragma once

#include <QKeyEvent>
#include <QPoint>

#include "ui/geometry.h"

namespace kelpin::qt {

// What the widgets of a dialog's window need of that window.
class DialogEvents {
 public:
  virtual ~DialogEvents() = default;
  // True when the dialog used the key up.
  virtual bool OfferKey(const QKeyEvent& event) = 0;
  virtual ui::Point ToDialog(QPoint global) const = 0;
  // False once the dialog has ended: it is told nothing more.
  virtual bool Live() const = 0;
};

}  // namespace kelpin::qt
