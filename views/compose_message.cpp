#include "views/compose_message.h"

#include <string>

#include "app/app_state.h"
#include "platform/message_programs.h"
#include "res/format.h"

namespace kelpin::views {
namespace {

constexpr std::u16string_view kComposerLibrary = u"MessageTool.DLL";
constexpr std::u16string_view kComposerRoutine = u"ComposeMMSMessage";
constexpr std::u16string_view kMmsToNumber = u"1";

void Start(app::AppState& state, std::u16string_view program, const std::u16string& commandLine) {
  static_cast<void>(state.ports.programs.StartProgram(program, commandLine));
}

void Compose(app::AppState& state, std::u16string_view messageClass,
             std::u16string_view recipient) {
  platform::ComposeMessageRequest request;
  request.recipient = recipient;
  request.messageClass = messageClass;
  static_cast<void>(state.ports.programs.CallComposer(kComposerLibrary, kComposerRoutine, request));
}

void WriteToNumber(app::AppState& state, std::u16string_view name, std::u16string_view number) {
  switch (state.settings.Enable_SBMail) {
    case 0:
      Start(state, platform::kMailProgram,
            res::Format(u"-service \"%s\" -to \"%s<%s>\"",
                        {std::u16string_view(u"SMS"), name, number}));
      break;
    case 1:
    case 2:
      Compose(state, platform::kSmsClass, number);
      break;
    case 3:
      Start(state, platform::kMmsProgram, res::Format(u"\"%s\" \"%s\"", {kMmsToNumber, number}));
      break;
    default:
      break;
  }
}

void WriteToEmail(app::AppState& state, std::u16string_view name, std::u16string_view address) {
  switch (state.settings.Enable_SBMail) {
    case 0:
    case 1:
    case 3:
      Start(state, platform::kMailProgram, res::Format(u"mailto:%s<%s>", {name, address}));
      break;
    case 2:
      Compose(state, platform::kMmsClass, address);
      break;
    default:
      break;
  }
}

}  // namespace

void ComposeMessage(app::AppState& state, AddressKind kind, std::u16string_view name,
                    std::u16string_view address) {
  if (kind == AddressKind::kNumber) {
    WriteToNumber(state, name, address);
  } else {
    WriteToEmail(state, name, address);
  }
}

}  // namespace kelpin::views
