// Selection, status and channels (TS 102 221 8.4, 11.1.1, 11.1.2, 11.1.17; TS 51.011 8.1).

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "device/softcard/apdu_interpreter.h"
#include "device/softcard/file_information.h"

namespace kelpin::device::softcard {
namespace {

constexpr std::uint16_t kMasterFile = 0x3F00;
constexpr std::uint16_t kCurrentApplication = 0x7FFF;

// P2 of SELECT.
constexpr std::uint8_t kOccurrence = 0x03;
constexpr std::uint8_t kReturned = 0x0C;
constexpr std::uint8_t kReturnFcp = 0x04;
constexpr std::uint8_t kReturnNothing = 0x0C;
constexpr std::uint8_t kTerminate = 0x40;
constexpr std::uint8_t kSelectReserved = 0xB0;

std::uint16_t FileId(std::span<const std::uint8_t> bytes) {
  return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
}

}  // namespace

CardFile* ApduInterpreter::Reachable(std::uint16_t id) const {
  const Channel& here = Current();
  if (id == kMasterFile) {
    return image_.mf.get();
  }
  if (id == kCurrentApplication) {
    return gsm_ ? nullptr : here.application;
  }
  if (CardFile* child = here.directory->Child(id)) {
    return child;
  }
  // An application stands beside the tree of the master file, not in it.
  if (here.directory->kind != FileKind::kDf) {
    return nullptr;
  }
  if (here.directory->id == id) {
    return here.directory;
  }
  CardFile* parent = here.directory->parent;
  if (parent->kind == FileKind::kDf && parent->id == id) {
    return parent;
  }
  CardFile* sibling = parent->Child(id);
  return sibling != nullptr && sibling->IsDirectory() ? sibling : nullptr;
}

CardFile* ApduInterpreter::ByPath(std::span<const std::uint8_t> path, bool fromMasterFile) const {
  CardFile* file = fromMasterFile ? image_.mf.get() : Current().directory;
  for (std::size_t i = 0; i < path.size() && file != nullptr; i += 2) {
    const std::uint16_t id = FileId(path.subspan(i));
    if (i == 0 && fromMasterFile && id == kCurrentApplication) {
      file = Current().application;
    } else {
      file = file->Child(id);
    }
  }
  return file;
}

void ApduInterpreter::MoveTo(CardFile& file) {
  Channel& here = Current();
  here.record = 0;
  here.file = file.IsDirectory() ? nullptr : &file;
  here.directory = file.IsDirectory() ? &file : file.parent;
  for (CardFile* up = here.directory; up != nullptr; up = up->parent) {
    if (up->kind == FileKind::kAdf) {
      here.application = up;
    }
  }
}

CommandResult ApduInterpreter::Selected(CardFile& file, const CommandApdu& command) {
  MoveTo(file);
  CommandResult result = Answer(file.deactivated ? Status::kSelectedDeactivated : Status::kOk);
  if (gsm_) {
    result.data = GsmFileInformation(image_, file);
  } else if ((command.p2 & kReturned) == kReturnFcp) {
    result.data = FileControlParameters(image_, file);
  }
  return result;
}

CommandResult ApduInterpreter::SelectGsm(const CommandApdu& command) {
  if (command.p1 != 0 || command.p2 != 0) {
    return Answer(Status::kWrongParameters);
  }
  if (command.data.size() != 2) {
    return WrongLength(2);
  }
  CardFile* file = Reachable(FileId(command.data));
  return file == nullptr ? Answer(Status::kFileNotFound) : Selected(*file, command);
}

CommandResult ApduInterpreter::Select(const CommandApdu& command) {
  constexpr std::uint8_t kById = 0x00, kChildDirectory = 0x01, kParent = 0x03, kByName = 0x04,
                         kPathFromMaster = 0x08, kPathFromHere = 0x09;
  const std::uint8_t returned = command.p2 & kReturned;
  if ((command.p2 & kSelectReserved) != 0 ||
      (returned != kReturnFcp && returned != kReturnNothing)) {
    return Answer(Status::kWrongParameters);
  }
  if (command.p1 == kByName) {
    return SelectApplication(command);
  }
  if ((command.p2 & (kOccurrence | kTerminate)) != 0) {
    return Answer(Status::kWrongParameters);
  }
  CardFile* file = nullptr;
  switch (command.p1) {
    case kById:
      if (!command.hasData) {
        file = image_.mf.get();
        break;
      }
      if (command.data.size() != 2) {
        return Answer(Status::kWrongLength);
      }
      file = Reachable(FileId(command.data));
      break;
    case kChildDirectory:
      if (command.data.size() != 2) {
        return Answer(Status::kWrongLength);
      }
      file = Current().directory->Child(FileId(command.data));
      if (file != nullptr && !file->IsDirectory()) {
        file = nullptr;
      }
      break;
    case kParent:
      if (command.hasData) {
        return Answer(Status::kLengthContradicts);
      }
      file = Current().directory->kind == FileKind::kDf ? Current().directory->parent : nullptr;
      break;
    case kPathFromMaster:
    case kPathFromHere:
      if (!image_.pathSelect) {
        return Answer(Status::kFunctionMissing);
      }
      if (command.data.size() < 2 || command.data.size() % 2 != 0) {
        return Answer(Status::kWrongLength);
      }
      file = ByPath(command.data, command.p1 == kPathFromMaster);
      break;
    default:
      return Answer(Status::kWrongParameters);
  }
  return file == nullptr ? Answer(Status::kFileNotFound) : Selected(*file, command);
}

// By the whole AID or by its beginning; then "next" and "previous" go on from the application that
// is current on the channel.
CommandResult ApduInterpreter::SelectApplication(const CommandApdu& command) {
  constexpr std::uint8_t kFirst = 0x00, kLast = 0x01, kNext = 0x02, kPrevious = 0x03;
  if (command.data.empty() || command.data.size() > 16) {
    return Answer(Status::kWrongLength);
  }
  std::vector<CardFile*> matches;
  std::size_t before = 0;       // matches that stand before the current application
  std::size_t upToCurrent = 0;  // … and with it
  bool passed = Current().application == nullptr;
  const bool noneCurrent = passed;
  for (CardFile* application : image_.Applications()) {
    const bool current = application == Current().application;
    const bool match =
        application->aid.size() >= command.data.size() &&
        std::equal(command.data.begin(), command.data.end(), application->aid.begin());
    if (!passed) {
      before += match && !current ? 1 : 0;
      upToCurrent += match ? 1 : 0;
    }
    passed = passed || current;
    if (match) {
      matches.push_back(application);
    }
  }
  std::size_t index = matches.size();  // none
  switch (command.p2 & kOccurrence) {
    case kFirst:
      index = 0;
      break;
    case kLast:
      index = matches.empty() ? 0 : matches.size() - 1;
      break;
    case kNext:
      index = upToCurrent;
      break;
    case kPrevious:
      if (noneCurrent) {
        index = matches.empty() ? 0 : matches.size() - 1;
      } else if (before > 0) {
        index = before - 1;
      }
      break;
  }
  if (index >= matches.size()) {
    return Answer(Status::kFileNotFound);
  }
  if ((command.p2 & kTerminate) != 0) {
    if (Current().application == matches[index]) {
      Current().application = nullptr;
    }
    MoveTo(*image_.mf);
    return Answer(Status::kOk);
  }
  return Selected(*matches[index], command);
}

CommandResult ApduInterpreter::TellStatus(const CommandApdu& command) {
  if (command.hasData) {
    return WrongLength(0);
  }
  const Channel& here = Current();
  if (gsm_) {
    if (command.p1 != 0 || command.p2 != 0) {
      return Answer(Status::kWrongParameters);
    }
    return {0x9000, GsmFileInformation(image_, *here.directory), true};
  }
  constexpr std::uint8_t kLastIndication = 0x02, kName = 0x01, kNothing = 0x0C;
  if (command.p1 > kLastIndication) {
    return Answer(Status::kWrongParameters);
  }
  switch (command.p2) {
    case 0x00:
      return {0x9000, FileControlParameters(image_, *here.directory), false};
    case kName: {
      if (here.application == nullptr) {
        return Answer(Status::kFileNotFound);
      }
      std::vector<std::uint8_t> name = {0x84,
                                        static_cast<std::uint8_t>(here.application->aid.size())};
      name.insert(name.end(), here.application->aid.begin(), here.application->aid.end());
      return {0x9000, name, false};
    }
    case kNothing:
      return Answer(Status::kOk);
    default:
      return Answer(Status::kWrongParameters);
  }
}

CommandResult ApduInterpreter::ManageChannel(const CommandApdu& command) {
  constexpr std::uint8_t kOpen = 0x00, kClose = 0x80;
  if (image_.channels == 0) {
    return Answer(Status::kUnknownInstruction);
  }
  if (command.hasData) {
    return Answer(Status::kWrongLength);
  }
  const std::size_t last = static_cast<std::size_t>(image_.channels);
  std::size_t wanted = command.p2;
  if (command.p1 == kClose) {
    if (wanted == 0 || wanted > last) {
      return Answer(Status::kWrongParameters);
    }
    if (!channels_[wanted].open) {
      return Answer(Status::kChannelClosed);
    }
    channels_[wanted] = Channel{};
    return Answer(Status::kOk);
  }
  if (command.p1 != kOpen || wanted > last) {
    return Answer(Status::kWrongParameters);
  }
  CommandResult result = Answer(Status::kOk);
  if (wanted == 0) {
    for (std::size_t i = last; i > 0; --i) {
      wanted = channels_[i].open ? wanted : i;
    }
    if (wanted == 0) {
      return Answer(Status::kFunctionMissing);
    }
    result.data = {static_cast<std::uint8_t>(wanted)};
    if (!LengthFits(command, 1)) {
      return result;  // 6C01: nothing was opened
    }
  } else if (channels_[wanted].open) {
    return Answer(Status::kFunctionMissing);
  }
  Channel& opened = channels_[wanted];
  opened.open = true;
  opened.directory = channel_ == 0 ? image_.mf.get() : Current().directory;
  opened.application = channel_ == 0 ? nullptr : Current().application;
  return result;
}

CommandResult ApduInterpreter::ChangeActivation(const CommandApdu& command) {
  if (command.p1 != 0 || command.p2 != 0) {
    return Answer(Status::kWrongParameters);
  }
  if (command.hasData) {
    return WrongLength(0);
  }
  CardFile* file = Current().file;
  if (file == nullptr) {
    return Answer(Status::kNoFileSelected);
  }
  const bool deactivate = command.ins == kDeactivateFile;
  if (!Fulfilled(deactivate ? file->deactivate : file->activate)) {
    return Answer(Status::kNotAllowed);
  }
  if (file->deactivated == deactivate) {
    return Answer(gsm_ ? Status::kFileDeactivated : Status::kOk);
  }
  file->deactivated = deactivate;
  if (!persist_()) {
    file->deactivated = !deactivate;
    return Answer(Status::kMemoryProblem);
  }
  return Answer(Status::kOk);
}

}  // namespace kelpin::device::softcard
