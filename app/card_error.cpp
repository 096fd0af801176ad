#include "app/card_error.h"

#include "app/app_state.h"
#include "app/sim_error.h"
#include "res/ids.h"
#include "res/strings.h"

namespace kelpin::app {

void ShowCardError(AppState& state, ui::WindowHandle owner, std::uint32_t code,
                   std::u16string* told) {
  const std::u16string trouble = state.ports.cardUse == nullptr || code == 0
                                     ? std::u16string()
                                     : state.ports.cardUse->Trouble();
  if (trouble.empty()) {
    ShowSimError(state.ports.screen, owner, code);
    return;
  }
  if (told != nullptr && *told == trouble) {
    return;
  }
  if (told != nullptr) {
    *told = trouble;
  }
  state.ports.screen.MessageBox(owner, trouble, res::LoadString(res::kStringError), ui::kBoxError);
}

void ShowCardError(AppState& state, ui::WindowHandle owner, platform::SimResult result,
                   std::u16string* told) {
  ShowCardError(state, owner, static_cast<std::uint32_t>(result), told);
}

}  // namespace kelpin::app
