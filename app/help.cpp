#include "app/help.h"

#include <string_view>

#include "app/app_state.h"

namespace kelpin::app {
namespace {

constexpr std::u16string_view kHelpProgram = u"peghelp";
constexpr std::u16string_view kHelpFile = u"Kelpin.htm";

}  // namespace

void ShowHelp(AppState& state) {
  state.ports.programs.StartProgram(kHelpProgram, kHelpFile);
}

}  // namespace kelpin::app
