#pragma once

#include <QObject>
#include <memory>
#include <thread>

#include "device/qt/desktop_look.h"
#include "device/qt/post_queue.h"
#include "platform/mutex.h"
#include "ui/geometry.h"

QT_BEGIN_NAMESPACE
class QApplication;
QT_END_NAMESPACE

namespace kelpin::qt {

// Qt's application object, the look that follows the desktop, the queue of the screen thread.
class ScreenApplication : public QObject {
  Q_OBJECT

 public:
  ScreenApplication(int& argc, char** argv);
  ~ScreenApplication() override;

  PostQueue& Queue() { return *queue_; }
  bool IsScreenThread() const { return std::this_thread::get_id() == thread_; }
  ui::Metrics Metrics() const;    // any thread
  void SetWaitCursor(bool wait);  // any thread

 Q_SIGNALS:
  // Colours, text size or the display's size are others.
  void LookChanged();

 private:
  void Restyle();
  void Measure();

  const std::thread::id thread_ = std::this_thread::get_id();
  std::unique_ptr<QApplication> owned_;
  std::unique_ptr<DesktopLook> look_;
  std::unique_ptr<PostQueue> queue_;
  bool waiting_ = false;
  mutable Mutex lock_;
  ui::Metrics metrics_ GUARDED_BY(lock_);
};

}  // namespace kelpin::qt
