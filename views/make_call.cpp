#include "views/make_call.h"

#include "app/app_state.h"

namespace kelpin::views {

void MakeCall(app::AppState& state, std::u16string_view name, std::u16string_view number) {
  platform::PhoneCallRequest request;
  request.destinationAddress = number;
  request.calledParty = name;
  // 0 is not reported: who takes the call tells what became of it.
  static_cast<void>(state.ports.telephone.PhoneMakeCall(request));
}

}  // namespace kelpin::views
