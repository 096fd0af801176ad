#include "app/app_state.h"

#include "res/ids.h"
#include "res/strings.h"

namespace kelpin::app {

void LoadTitle(AppState& state) {
  state.appTitle = res::LoadString(res::kStringAppTitle).substr(0, kTitleLimit);
}

}  // namespace kelpin::app
