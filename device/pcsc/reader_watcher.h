#pragma once

#include <memory>
#include <string>

#include "device/pcsc/event_line.h"

namespace kelpin::device::pcsc {

// Watches one reader for cards that come and go, on a thread and a context of its own: a context
// that waits for a change answers nothing else. The reader, or the whole service, may go and come
// back; the card is out meanwhile.
class ReaderWatcher {
 public:
  // `present`: what the owner knows of the reader; no event as long as it is so.
  ReaderWatcher(std::string reader, bool present, std::shared_ptr<EventLine> events);
  // Waits a second at most; a thread that the service holds up is left behind.
  ~ReaderWatcher();
  ReaderWatcher(const ReaderWatcher&) = delete;
  ReaderWatcher& operator=(const ReaderWatcher&) = delete;

 private:
  struct State;
  static void Watch(const std::shared_ptr<State>& state);

  const std::shared_ptr<State> state_;
};

}  // namespace kelpin::device::pcsc
