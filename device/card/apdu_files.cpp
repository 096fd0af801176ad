#include "device/card/apdu_files.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <thread>

namespace kelpin::device::card {
namespace {

constexpr std::uint8_t kSelect = 0xA4;
constexpr std::uint8_t kReadBinary = 0xB0;
constexpr std::uint8_t kReadRecord = 0xB2;
constexpr std::uint8_t kSearchRecord = 0xA2;
constexpr std::uint8_t kUnblock = 0x2C;
constexpr std::uint8_t kGetResponse = 0xC0;

constexpr std::uint8_t kById = 0x00;
constexpr std::uint8_t kByAid = 0x04;
constexpr std::uint8_t kByPathFromMf = 0x08;
constexpr std::uint8_t kTellFcp = 0x04;
constexpr std::uint8_t kForwardFromFirst = 0x04;  // SEARCH RECORD: simple, on from record P1

constexpr std::uint8_t kToolkitBusy = 0x93;
constexpr int kBusyRepeats = 3;
constexpr std::chrono::milliseconds kBusyPause(100);

bool SaysUnsupported(StatusWord word) {
  return word == StatusWord::kFunctionUnsupported || word == StatusWord::kWrongParameters ||
         word == StatusWord::kWrongOffset || word == StatusWord::kUnknownInstruction ||
         word == StatusWord::kUnknownClass || word == StatusWord::kWrongLength;
}

// The card's toolkit holds it; the command was not executed.
bool SaysBusy(const CardResult& result) {
  return result.Error() == TransportError::kNone && FirstByte(result.Word()) == kToolkitBusy;
}

// May be sent again without changing anything but the selection.
bool OnlyReads(const CardCommand& command) {
  switch (command.instruction) {
    case kSelect:
    case kReadBinary:
    case kReadRecord:
    case kSearchRecord:
    case kGetResponse:
      return true;
    default:
      return false;
  }
}

bool SaysNothingSelected(const CardResult& result) {
  return result.Error() == TransportError::kNone &&
         (result.Word() == StatusWord::kNoFileSelected ||
          result.Word() == StatusWord::kNoFileSelectedGsm);
}

std::array<std::uint8_t, 2> Bytes(std::uint16_t id) {
  return {static_cast<std::uint8_t>(id >> 8), static_cast<std::uint8_t>(id & 0xFF)};
}

}  // namespace

TransportError ApduFiles::Open() {
  Close();
  std::vector<std::uint8_t> atr;
  if (const TransportError error = channel_.Connect(atr); error != TransportError::kNone) {
    return error;
  }
  SetOpen(true);
  pathSelects_ = true;
  searches_ = true;
  exchange_.SetClass(kClassUicc);
  CardResult result = SelectId(kMasterFile, nullptr);
  if (result.Error() == TransportError::kNone && SaysUnsupported(result.Word())) {
    exchange_.SetClass(kClassGsm);
    result = SelectId(kMasterFile, nullptr);
  }
  if (result.Error() != TransportError::kNone) SetOpen(false);
  if (result.Ok()) folder_ = FilePath{};
  return result.Error();
}

void ApduFiles::Close() {
  CommandFiles::Close();
  aid_.clear();
}

void ApduFiles::Forget() {
  ForgetSelection();
  CommandFiles::Forget();
}

CardResult ApduFiles::Noted(CardResult result) {
  switch (result.Error()) {
    case TransportError::kRadioOff:
    case TransportError::kStorage:
    case TransportError::kTimeout:
    case TransportError::kCommunication:
      ForgetSelection();
      break;
    default:
      break;
  }
  return CommandFiles::Noted(result);
}

CardResult ApduFiles::Send(const CardCommand& command, std::vector<std::uint8_t>& data) {
  const CardTransaction transaction(*this);
  if (transaction.Error() != TransportError::kNone) return transaction.Error();
  CardResult result = Noted(exchange_.Send(command, data));
  for (int again = 0; again < kBusyRepeats && SaysBusy(result) && OnlyReads(command); ++again) {
    if (Stopped()) break;
    std::this_thread::sleep_for(kBusyPause);
    result = Noted(exchange_.Send(command, data));
  }
  return result;
}

CardResult ApduFiles::Send(const CardCommand& command) {
  std::vector<std::uint8_t> ignored;
  return Send(command, ignored);
}

CardResult ApduFiles::SendOn(const FilePath& path, const CardCommand& command,
                             std::vector<std::uint8_t>& data) {
  const CardTransaction transaction(*this);
  if (transaction.Error() != TransportError::kNone) return transaction.Error();
  if (const CardResult selected = Select(path, nullptr); !selected.Ok()) return selected;
  CardResult result = Send(command, data);
  if (SaysNothingSelected(result)) {
    ForgetSelection();
    if (const CardResult selected = Select(path, nullptr); !selected.Ok()) return selected;
    result = Send(command, data);
  }
  return result;
}

CardResult ApduFiles::SendSelect(std::uint8_t parameter1, std::uint8_t parameter2,
                                 std::span<const std::uint8_t> data,
                                 std::vector<std::uint8_t>* response) {
  CardCommand command = {kSelect, parameter1, IsGsm() ? std::uint8_t{0} : parameter2, data};
  if (response == nullptr) return Send(command);
  command.answer = kWholeAnswer;
  const CardResult result = Send(command, *response);
  if (result.Ok() && result.Word() == StatusWord::kFileInvalidated && response->empty()) {
    // T=0: the warning stands where 61xx would have told of the answer.
    return Send({.instruction = kGetResponse, .answer = kWholeAnswer}, *response);
  }
  return result;
}

CardResult ApduFiles::SelectId(std::uint16_t id, std::vector<std::uint8_t>* response) {
  const auto bytes = Bytes(id);
  return SendSelect(kById, kTellFcp, bytes, response);
}

CardResult ApduFiles::SelectAid(std::vector<std::uint8_t>* response) {
  if (aid_.empty()) return StatusWord::kFileNotFound;
  const CardResult result = SendSelect(kByAid, kTellFcp, aid_, response);
  ForgetSelection();
  if (result.Ok()) folder_ = FilePath{kApplication};
  return result;
}

CardResult ApduFiles::SelectApplication(std::span<const std::uint8_t> aid) {
  if (IsGsm()) return StatusWord::kFileNotFound;
  std::vector<std::uint8_t> former(aid.begin(), aid.end());
  aid_.swap(former);
  const CardResult result = SelectAid(nullptr);
  if (!result.Ok() && IsOpen()) aid_.swap(former);
  return result;
}

CardResult ApduFiles::SelectByPath(const FilePath& path, std::vector<std::uint8_t>* response) {
  std::vector<std::uint8_t> bytes;
  for (const std::uint16_t id : path.Ids()) {
    const auto pair = Bytes(id);
    bytes.insert(bytes.end(), pair.begin(), pair.end());
  }
  return SendSelect(kByPathFromMf, kTellFcp, bytes, response);
}

CardResult ApduFiles::SelectByStep(const FilePath& path, std::vector<std::uint8_t>* response) {
  auto ids = path.Ids();
  if (folder_ == path.Parent() && !ids.empty()) return SelectId(ids.back(), response);
  CardResult result = StatusWord::kOk;
  if (path.InApplication()) {
    result = SelectAid(ids.size() == 1 ? response : nullptr);
    ids = ids.subspan(1);
  } else {
    result = SelectId(kMasterFile, ids.empty() ? response : nullptr);
  }
  while (result.Ok() && !ids.empty()) {
    result = SelectId(ids.front(), ids.size() == 1 ? response : nullptr);
    ids = ids.subspan(1);
  }
  return result;
}

CardResult ApduFiles::Select(const FilePath& path, std::vector<std::uint8_t>* response) {
  if (!IsOpen()) return TransportError::kReset;
  if (current_ == path && response == nullptr) return StatusWord::kOk;
  if (path.InApplication() && aid_.empty()) return StatusWord::kFileNotFound;

  CardResult result = StatusWord::kFileNotFound;
  bool step = true;
  if (!IsGsm() && pathSelects_ && path.Ids().size() > 1) {
    result = SelectByPath(path, response);
    step = !result.Ok() && result.Error() == TransportError::kNone;
    folder_.reset();  // what a card keeps selected after a refusal is its own affair
    if (step && SaysUnsupported(result.Word())) {
      pathSelects_ = false;
    } else {
      // Not every card knows the application's stand-in at the head of a path.
      step = step && path.InApplication() && result.Missing();
    }
  }
  if (step) result = SelectByStep(path, response);
  ForgetSelection();
  if (result.Ok()) {
    current_ = path;
    folder_ = path.Parent();
  }
  return result;
}

CardResult ApduFiles::SearchRecords(const FilePath& path, std::span<const std::uint8_t> pattern,
                                    std::vector<std::uint8_t>& records) {
  // A GSM card's SEEK finds one record a command, no more than a read would.
  if (IsGsm() || !searches_) return StatusWord::kUnknownInstruction;
  std::vector<std::uint8_t> found;
  const CardResult result =
      SendOn(path, {kSearchRecord, 1, kForwardFromFirst, pattern, kWholeAnswer}, found);
  if (result.Ok()) {
    records = std::move(found);
    return result;
  }
  if (result.Error() != TransportError::kNone) return result;
  if (result.Word() == StatusWord::kNothingFound || result.Word() == StatusWord::kRecordNotFound) {
    records.clear();
    return StatusWord::kOk;
  }
  if (SaysUnsupported(result.Word())) {
    searches_ = false;
    return StatusWord::kUnknownInstruction;
  }
  return result;
}

CardResult ApduFiles::FindPin(PinReference& pin) {
  std::vector<std::uint8_t> response;
  CardResult result = StatusWord::kFileNotFound;
  if (!aid_.empty()) {
    result = SelectAid(&response);
    if (result.Error() != TransportError::kNone) return result;
  }
  auto found = ParsePinReference(response);
  if (!found) {
    result = SelectId(kMasterFile, &response);
    ForgetSelection();
    if (!result.Ok()) return result;
    found = ParsePinReference(response);
  }
  pin = found.value_or(PinReference{.enabled = true});
  return StatusWord::kOk;
}

CardResult ApduFiles::SendPin(std::uint8_t instruction, std::uint8_t reference,
                              std::span<const std::uint8_t> codes) {
  // A GSM card counts CHV1 as 00 here (TS 51.011 9.2.13).
  if (IsGsm() && instruction == kUnblock) reference = 0;
  return Send({.instruction = instruction, .parameter2 = reference, .data = codes});
}

void ApduFiles::Begun() {
  if (!channel_.OthersMaySelect()) return;
  shared_ = true;
  ForgetSelection();
}

}  // namespace kelpin::device::card
