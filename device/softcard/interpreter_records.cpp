// What files hold: read, written, searched (TS 102 221 11.1.3 to 11.1.7; TS 51.011 8.3 to 8.7).

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "device/softcard/apdu_interpreter.h"

namespace kelpin::device::softcard {
namespace {

// P2 of the record commands.
constexpr std::uint8_t kNext = 0x02;
constexpr std::uint8_t kPrevious = 0x03;
constexpr std::uint8_t kAbsolute = 0x04;

bool Contains(std::span<const std::uint8_t> record, std::span<const std::uint8_t> pattern) {
  return std::search(record.begin(), record.end(), pattern.begin(), pattern.end()) != record.end();
}

bool BeginsWith(std::span<const std::uint8_t> record, std::span<const std::uint8_t> pattern) {
  return std::equal(pattern.begin(), pattern.end(), record.begin());
}

}  // namespace

// Makes the file of a short id current, or takes the current one, and asks whether the command may
// use it.
Status ApduInterpreter::UseFile(std::uint8_t shortId, bool ofRecords, Access CardFile::*rule) {
  Channel& here = Current();
  CardFile* file = shortId == 0 ? here.file : here.directory->ChildByShortId(shortId);
  if (file == nullptr) {
    return shortId == 0 ? Status::kNoFileSelected : Status::kFileNotFound;
  }
  if ((file->kind != FileKind::kTransparent) != ofRecords) {
    return Status::kWrongFileKind;
  }
  if (file->deactivated) {
    return Status::kFileDeactivated;
  }
  if (!Fulfilled(file->*rule)) {
    return Status::kNotAllowed;
  }
  if (shortId != 0) {
    here.file = file;
    here.record = 0;
  }
  return Status::kOk;
}

bool ApduInterpreter::Write(FileContent& content, std::size_t offset,
                            std::span<const std::uint8_t> data) {
  const auto at = content.bytes.begin() + static_cast<std::ptrdiff_t>(offset);
  if (std::equal(data.begin(), data.end(), at)) {
    return true;
  }
  const std::vector<std::uint8_t> before(at, at + static_cast<std::ptrdiff_t>(data.size()));
  auto notes = content.notes;
  std::copy(data.begin(), data.end(), at);
  if (content.recordLength != 0) {
    content.notes.erase(offset / content.recordLength + 1);
  }
  if (persist_()) {
    return true;
  }
  std::copy(before.begin(), before.end(), at);
  content.notes = std::move(notes);
  return false;
}

Status ApduInterpreter::LocateOffset(const CommandApdu& command, std::uint8_t& shortId,
                                     std::size_t& offset) const {
  shortId = 0;
  offset = static_cast<std::size_t>(command.p1) << 8 | command.p2;
  if (!gsm_ && (command.p1 & 0x80) != 0) {
    shortId = command.p1 & 0x1F;
    offset = command.p2;
    if ((command.p1 & 0x60) != 0 || shortId == 0 || shortId == 0x1F) {
      return Status::kWrongParameters;
    }
  }
  return Status::kOk;
}

CommandResult ApduInterpreter::ReadBinary(const CommandApdu& command) {
  std::uint8_t shortId = 0;
  std::size_t offset = 0;
  if (command.hasData) {
    return Answer(Status::kWrongLength);
  }
  Status status = LocateOffset(command, shortId, offset);
  if (status == Status::kOk) {
    status = UseFile(shortId, false, &CardFile::read);
  }
  if (status != Status::kOk) {
    return Answer(status);
  }
  const std::vector<std::uint8_t>& bytes = Current().file->content->bytes;
  if (offset >= bytes.size()) {
    return Answer(Status::kOffsetOutside);
  }
  const std::size_t expected = command.expected.value_or(256);
  const std::size_t available = bytes.size() - offset;
  const std::size_t size = std::min(expected, available);
  const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(offset);
  CommandResult result = {0x9000, std::vector(begin, begin + static_cast<std::ptrdiff_t>(size)),
                          false};
  if (image_.protocol == Protocol::kT1 && expected > available && expected != 256) {
    result.statusWord = StatusWord(Status::kEndOfFile, gsm_);
    result.anyLength = true;
  }
  return result;
}

CommandResult ApduInterpreter::UpdateBinary(const CommandApdu& command) {
  std::uint8_t shortId = 0;
  std::size_t offset = 0;
  Status status = LocateOffset(command, shortId, offset);
  if (status == Status::kOk) {
    status = UseFile(shortId, false, &CardFile::update);
  }
  if (status != Status::kOk) {
    return Answer(status);
  }
  FileContent& content = *Current().file->content;
  if (offset >= content.bytes.size()) {
    return Answer(Status::kOffsetOutside);
  }
  const std::size_t room = content.bytes.size() - offset;
  if (command.data.empty() || command.data.size() > room) {
    return WrongLength(std::min<std::size_t>(room, 255));
  }
  return Answer(Write(content, offset, command.data) ? Status::kOk : Status::kMemoryProblem);
}

// The record that P1 and P2 mean; the pointer is left where it is.
Status ApduInterpreter::LocateRecord(const CommandApdu& command, std::size_t& record) const {
  const Channel& here = Current();
  const std::size_t count = here.file->content->RecordCount();
  const bool wraps = here.file->kind == FileKind::kCyclic;
  const std::uint8_t mode = command.p2 & 0x07;
  if (mode != kAbsolute && !gsm_ && command.p1 != 0) {
    return Status::kWrongParameters;
  }
  switch (mode) {
    case kAbsolute:
      record = command.p1 == 0 ? here.record : command.p1;
      break;
    case kNext:
      record = here.record + 1;
      if (wraps && record > count) {
        record = 1;
      }
      break;
    case kPrevious:
      record = here.record == 0 || (wraps && here.record == 1) ? count : here.record - 1;
      break;
    default:
      return Status::kWrongParameters;
  }
  return record == 0 || record > count ? Status::kRecordNotFound : Status::kOk;
}

Status ApduInterpreter::UseRecords(const CommandApdu& command, Access CardFile::*rule) {
  const std::uint8_t shortId = command.p2 >> 3;
  if (shortId == 0x1F || (gsm_ && shortId != 0)) {
    return Status::kWrongParameters;
  }
  return UseFile(shortId, true, rule);
}

CommandResult ApduInterpreter::ReadRecord(const CommandApdu& command) {
  if (command.hasData) {
    return Answer(Status::kWrongLength);
  }
  std::size_t record = 0;
  Status status = UseRecords(command, &CardFile::read);
  if (status == Status::kOk) {
    status = LocateRecord(command, record);
  }
  if (status != Status::kOk) {
    return Answer(status);
  }
  const std::span<const std::uint8_t> data = Current().file->content->Record(record);
  // A command of wrong length is not executed: the pointer moves with the one that follows.
  if ((command.p2 & 0x07) != kAbsolute && LengthFits(command, data.size())) {
    Current().record = record;
  }
  return {0x9000, {data.begin(), data.end()}, false};
}

CommandResult ApduInterpreter::UpdateRecord(const CommandApdu& command) {
  std::size_t record = 0;
  Status status = UseRecords(command, &CardFile::update);
  if (status != Status::kOk) {
    return Answer(status);
  }
  CardFile& file = *Current().file;
  FileContent& content = *file.content;
  const std::uint8_t mode = command.p2 & 0x07;
  if (file.kind == FileKind::kCyclic && mode != kPrevious) {
    return Answer(Status::kWrongParameters);
  }
  status = file.kind == FileKind::kCyclic ? Status::kOk : LocateRecord(command, record);
  if (status != Status::kOk) {
    return Answer(status);
  }
  if (command.data.size() != content.recordLength) {
    return WrongLength(content.recordLength);
  }
  if (file.kind == FileKind::kCyclic) {
    return Answer(WriteOldest(content, command.data) ? Status::kOk : Status::kMemoryProblem);
  }
  if (!Write(content, (record - 1) * content.recordLength, command.data)) {
    return Answer(Status::kMemoryProblem);
  }
  if (mode != kAbsolute) {
    Current().record = record;
  }
  return Answer(Status::kOk);
}

// In a cyclic file the oldest record takes the data and becomes record 1.
bool ApduInterpreter::WriteOldest(FileContent& content, std::span<const std::uint8_t> data) {
  const FileContent before = content;
  std::rotate(content.bytes.begin(),
              content.bytes.end() - static_cast<std::ptrdiff_t>(content.recordLength),
              content.bytes.end());
  std::copy(data.begin(), data.end(), content.bytes.begin());
  content.notes.clear();
  if (persist_()) {
    Current().record = 1;
    return true;
  }
  content = before;
  return false;
}

CommandResult ApduInterpreter::SearchRecord(const CommandApdu& command) {
  constexpr std::uint8_t kForward = 0x04, kBackward = 0x05, kEnhanced = 0x06, kProprietary = 0x07;
  const std::uint8_t mode = command.p2 & 0x07;
  if (mode == kEnhanced || mode == kProprietary) {
    return Answer(Status::kFunctionMissing);
  }
  if (mode != kForward && mode != kBackward) {
    return Answer(Status::kWrongParameters);
  }
  const Status status = UseRecords(command, &CardFile::read);
  if (status != Status::kOk) {
    return Answer(status);
  }
  const FileContent& content = *Current().file->content;
  if (command.data.empty() || command.data.size() > content.recordLength) {
    return Answer(Status::kWrongLength);
  }
  const std::size_t count = content.RecordCount();
  std::size_t record = command.p1 == 0 ? Current().record : command.p1;
  if (record > count) {
    return Answer(Status::kRecordNotFound);
  }
  if (record == 0) {
    record = mode == kForward ? 1 : count;
  }
  CommandResult result = Answer(Status::kOk);
  // Zero is below the first: counting down ends there, counting up ends above the last.
  for (; record != 0 && record <= count; record = mode == kForward ? record + 1 : record - 1) {
    if (Contains(content.Record(record), command.data)) {
      result.data.push_back(static_cast<std::uint8_t>(record));
    }
  }
  if (result.data.empty()) {
    return Answer(Status::kPatternNotFound);
  }
  Current().record = result.data.front();
  return result;
}

// SEEK of class A0: the first record that begins with the pattern.
CommandResult ApduInterpreter::Seek(const CommandApdu& command) {
  constexpr std::uint8_t kFromFirst = 0x00, kFromLast = 0x01, kFromNext = 0x02,
                         kFromPrevious = 0x03;
  constexpr std::size_t kLongestPattern = 16;
  const std::uint8_t mode = command.p2 & 0x0F;
  const bool tellNumber = (command.p2 & 0xF0) == 0x10;
  if (command.p1 != 0 || mode > kFromPrevious || ((command.p2 & 0xF0) != 0 && !tellNumber)) {
    return Answer(Status::kWrongParameters);
  }
  const Status status = UseFile(0, true, &CardFile::read);
  if (status != Status::kOk) {
    return Answer(status);
  }
  if (Current().file->kind != FileKind::kLinearFixed) {
    return Answer(Status::kWrongFileKind);
  }
  const FileContent& content = *Current().file->content;
  const std::size_t longest = std::min(kLongestPattern, content.recordLength);
  if (command.data.empty() || command.data.size() > longest) {
    return WrongLength(longest);
  }
  const std::size_t count = content.RecordCount();
  const std::size_t here = Current().record;
  std::size_t record = 1;
  if (mode == kFromLast || (mode == kFromPrevious && here == 0)) {
    record = count;
  } else if (mode == kFromNext) {
    record = here + 1;
  } else if (mode == kFromPrevious) {
    record = here - 1;
  }
  const bool forward = mode == kFromFirst || mode == kFromNext;
  for (; record != 0 && record <= count; record = forward ? record + 1 : record - 1) {
    if (BeginsWith(content.Record(record), command.data)) {
      Current().record = record;
      CommandResult result = Answer(Status::kOk);
      if (tellNumber) {
        result.data = {static_cast<std::uint8_t>(record)};
      }
      return result;
    }
  }
  return Answer(Status::kPatternNotFound);
}

}  // namespace kelpin::device::softcard
