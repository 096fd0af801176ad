#pragma once

#include <cstdint>
#include <string>

#include "platform/mutex.h"
#include "platform/sim_result.h"
#include "ui/dialog.h"

namespace kelpin::app {

struct AppState;

// What was shown of the device's own words. Any thread.
class ToldTroubles {
 public:
  void Note(const std::u16string& words);
  // How many were shown so far.
  std::uint32_t Count() const;
  // Whether the words were shown last, and after that many.
  bool ToldSince(std::uint32_t count, const std::u16string& words) const;
  // The card was read: what happens to it from now on is new.
  void CardIsReached();
  std::uint32_t CountWhenReached() const;

 private:
  mutable Mutex lock_;
  std::u16string last_ GUARDED_BY(lock_);
  std::uint32_t count_ GUARDED_BY(lock_) = 0;
  std::uint32_t reached_ GUARDED_BY(lock_) = 0;
};

// Shows why the card cannot be reached in the device's own words, where it has some; else what the
// SIM result code means, as ShowSimError does. Any thread.
void ShowCardError(AppState& state, ui::WindowHandle owner, platform::SimResult result);
// The same; words that were shown after `since` of them are not shown again.
void ShowCardError(AppState& state, ui::WindowHandle owner, std::uint32_t code,
                   std::uint32_t since);
// The same of what the user did not ask for: words are shown once until the card is reached again.
void ShowUnaskedCardError(AppState& state, ui::WindowHandle owner, platform::SimResult result);

}  // namespace kelpin::app
