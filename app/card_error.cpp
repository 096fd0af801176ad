#include "app/card_error.h"

#include <optional>

#include "app/app_state.h"
#include "app/sim_error.h"
#include "res/ids.h"
#include "res/strings.h"

namespace kelpin::app {

namespace {

// `since`: words that were shown after so many are not shown again.
void Show(AppState& state, ui::WindowHandle owner, std::uint32_t code,
          std::optional<std::uint32_t> since) {
  const std::u16string trouble = state.ports.cardUse == nullptr || code == 0
                                     ? std::u16string()
                                     : state.ports.cardUse->Trouble();
  if (trouble.empty()) {
    ShowSimError(state.ports.screen, owner, code);
  } else if (!since.has_value() || !state.troubles.ToldSince(*since, trouble)) {
    state.troubles.Note(trouble);
    state.ports.screen.MessageBox(owner, trouble, res::LoadString(res::kStringError),
                                  ui::kBoxError);
  }
}

}  // namespace

void ToldTroubles::Note(const std::u16string& words) {
  const MutexLock hold(lock_);
  last_ = words;
  ++count_;
}

std::uint32_t ToldTroubles::Count() const {
  const MutexLock hold(lock_);
  return count_;
}

bool ToldTroubles::ToldSince(std::uint32_t count, const std::u16string& words) const {
  const MutexLock hold(lock_);
  return count_ > count && last_ == words;
}

void ToldTroubles::CardIsReached() {
  const MutexLock hold(lock_);
  reached_ = count_;
}

std::uint32_t ToldTroubles::CountWhenReached() const {
  const MutexLock hold(lock_);
  return reached_;
}

void ShowCardError(AppState& state, ui::WindowHandle owner, platform::SimResult result) {
  Show(state, owner, static_cast<std::uint32_t>(result), std::nullopt);
}

void ShowCardError(AppState& state, ui::WindowHandle owner, std::uint32_t code,
                   std::uint32_t since) {
  Show(state, owner, code, since);
}

void ShowUnaskedCardError(AppState& state, ui::WindowHandle owner, platform::SimResult result) {
  ShowCardError(state, owner, static_cast<std::uint32_t>(result),
                state.troubles.CountWhenReached());
}

}  // namespace kelpin::app
