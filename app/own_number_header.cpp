#include "app/own_number_header.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/app_state.h"
#include "app/card_error.h"
#include "res/format.h"
#include "res/ids.h"
#include "res/strings.h"
#include "sim/sim_text.h"

namespace kelpin::app {
namespace {

constexpr std::uint32_t kOwnNumberFile = 0x6F40;

// The first number there is in the card's own-number file, empty when there is none; nothing when
// the file could not be read.
std::optional<std::u16string> FirstOwnNumber(sim::RilClient& radio) {
  if (!radio.GetFileInfo(kOwnNumberFile)) {
    return std::nullopt;
  }
  const std::uint32_t count = radio.RecordCount();
  std::u16string number;
  for (std::uint32_t record = 1; record <= count && number.empty(); ++record) {
    std::vector<std::uint8_t> response;
    if (!radio.ReadRecord(kOwnNumberFile, record, response)) {
      return std::nullopt;
    }
    sim::DecodeAdnNumber(response, number, radio.RecordLength(), radio.MaxDigits());
  }
  return number;
}

}  // namespace

int UpdateOwnNumberHeader(AppState& state, std::optional<std::uint32_t> since) {
  if (state.headerUpdating.exchange(true)) {
    return 1;
  }
  const std::optional<std::u16string> number = FirstOwnNumber(state.radio);
  if (!number) {
    // The flag stays set: see the header.
    const platform::SimResult result = state.simPhonebook.ReadStatus();
    if (!state.closing) {
      ShowCardError(state, state.mainDialog, static_cast<std::uint32_t>(result),
                    since.value_or(state.troubles.CountWhenReached()));
    }
    return 0;
  }
  const std::u16string text =
      res::Format(u"%s %s", {res::LoadString(res::kStringMyNo), *number}, kHeaderTextRoom - 1);
  if (state.dialog != nullptr) {
    state.dialog->SetText(res::kMainHeader, text);
  }
  state.headerUpdating = false;
  return 1;
}

}  // namespace kelpin::app
