#include "views/make_call.h"

#include <string>

#include "app/app_state.h"
#include "res/format.h"
#include "res/ids.h"
#include "res/strings.h"

namespace kelpin::views {
namespace {

// Digits and what may stand between them: a number of these alone is no service code. Anything else
// is asked about, also what only looks like a star or a hash to one telephone and is one to
// another.
constexpr std::u16string_view kPlainCharacters = u"0123456789+pPwW";

bool MayDial(app::AppState& state, ui::WindowHandle owner, std::u16string_view number) {
  if (number.find_first_not_of(kPlainCharacters) == std::u16string_view::npos) {
    return true;
  }
  const std::u16string question =
      res::Format(res::LoadString(res::kTextServiceCodeQuestion), {number});
  return state.ports.screen.MessageBox(owner, question, res::LoadString(res::kStringWarning),
                                       ui::kBoxQuestion) == ui::BoxAnswer::kYes;
}

}  // namespace

void MakeCall(app::AppState& state, ui::WindowHandle owner, std::u16string_view name,
              std::u16string_view number) {
  if (!MayDial(state, owner, number)) {
    return;
  }
  platform::PhoneCallRequest request;
  request.destinationAddress = number;
  request.calledParty = name;
  // 0 is not reported: who takes the call tells what became of it.
  static_cast<void>(state.ports.telephone.PhoneMakeCall(request));
}

}  // namespace kelpin::views
