#include "app/sim_error.h"

#include "res/ids.h"
#include "res/strings.h"
#include "ui/screen.h"

namespace kelpin::app {
namespace {

using platform::SimResult;

struct ErrorText {
  std::uint32_t code;
  int string;
};

constexpr std::uint32_t Code(SimResult result) {
  return static_cast<std::uint32_t>(result);
}

constexpr ErrorText kErrorTexts[] = {
    {Code(SimResult::kNotReady), res::kStringSimNotReady},
    {Code(SimResult::kNotReadyYet), res::kStringSimNotReadyEither},
    {Code(SimResult::kBufferTooSmall), res::kStringBufferTooSmall},
    {Code(SimResult::kNotTextMessage), res::kStringNotTextMessage},
    {Code(SimResult::kNoSim), res::kStringNoSim},
    {Code(SimResult::kNetworkError), res::kStringNetworkError},
    {Code(SimResult::kMobileError), res::kStringMobileError},
    {Code(SimResult::kUnsupported), res::kStringCommandUnsupported},
    {Code(SimResult::kBadParameter), res::kStringBadParameter},
    {Code(SimResult::kUndetermined), res::kStringUndeterminedError},
    {Code(SimResult::kRadioNotPresent), res::kStringRadioNotPresent},
    {Code(SimResult::kRadioOff), res::kStringPhoneOff},
    {Code(SimResult::kPhSimPinRequired), res::kStringPhSimPinRequired},
    {Code(SimResult::kPhFsimPinRequired), res::kStringPhFsimPinRequired},
    {Code(SimResult::kPhFsimPukRequired), res::kStringPhFsimPukRequired},
    {Code(SimResult::kPinRequired), res::kStringSimPinRequired},
    {Code(SimResult::kPukRequired), res::kStringSimPukRequired},
    {Code(SimResult::kIncorrectPassword), res::kStringIncorrectPassword},
    {Code(SimResult::kPin2Required), res::kStringSimPin2Required},
    // The one code of this run that has no text of its own.
    {Code(SimResult::kPuk2Required), res::kStringErrorOccurs},
    {Code(SimResult::kNetworkPinRequired), res::kStringNetworkPinRequired},
    {Code(SimResult::kNetworkPukRequired), res::kStringNetworkPukRequired},
    {Code(SimResult::kSubsetPinRequired), res::kStringSubsetPinRequired},
    {Code(SimResult::kSubsetPukRequired), res::kStringSubsetPukRequired},
    {Code(SimResult::kProviderPinRequired), res::kStringProviderPinRequired},
    {Code(SimResult::kProviderPukRequired), res::kStringProviderPukRequired},
    {Code(SimResult::kCorporatePinRequired), res::kStringCorporatePinRequired},
    {Code(SimResult::kCorporatePukRequired), res::kStringCorporatePukRequired},
    {Code(SimResult::kSimFailure), res::kStringSimFailure},
    {Code(SimResult::kSimBusy), res::kStringSimBusy},
    {Code(SimResult::kWrongSim), res::kStringSimWrong},
    {Code(SimResult::kNoMessageStorage), res::kStringSimNotMessageCapable},
    {Code(SimResult::kToolkitBusy), res::kStringSimToolkitBusy},
    {Code(SimResult::kDownloadError), res::kStringSimDownloadError},
    {Code(SimResult::kNotInserted), res::kStringSimNotInserted},
    {Code(SimResult::kSimFull), res::kStringSimFull},
    {Code(SimResult::kInvalidIndex), res::kStringInvalidIndex},
    {Code(SimResult::kEntryNotFound), res::kStringEntryNotFound},
    {Code(SimResult::kMemoryFailure), res::kStringMemoryFailure},
    {Code(SimResult::kMessageMemoryFull), res::kStringMessageStorageFull},
    {Code(SimResult::kEntryEmpty), res::kStringLocationEmpty},
    {kNumber2NotWritten, res::kStringNumber2Failed},
    {kEmailNotWritten, res::kStringEmailFailed},
    {kNumber3NotWritten, res::kStringNumber3Failed},
    {kNicknameNotWritten, res::kStringNicknameFailed},
};

}  // namespace

int SimErrorString(std::uint32_t code) {
  for (const ErrorText& text : kErrorTexts) {
    if (text.code == code) {
      return text.string;
    }
  }
  return res::kStringErrorOccurs;
}

void ShowSimError(ui::Screen& screen, ui::WindowHandle owner, std::uint32_t code) {
  if (code == 0) {
    return;
  }
  screen.MessageBox(owner, res::LoadString(SimErrorString(code)),
                    res::LoadString(res::kStringError), ui::kBoxError);
}

void ShowSimError(ui::Screen& screen, ui::WindowHandle owner, SimResult result) {
  ShowSimError(screen, owner, Code(result));
}

}  // namespace kelpin::app
