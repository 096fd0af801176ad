#include "device/card/apdu_files.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <thread>

#include "device/card/card_code.h"

namespace kelpin::device::card {
namespace {

constexpr std::uint8_t kSelect = 0xA4;
constexpr std::uint8_t kReadBinary = 0xB0;
constexpr std::uint8_t kReadRecord = 0xB2;
constexpr std::uint8_t kUpdateBinary = 0xD6;
constexpr std::uint8_t kUpdateRecord = 0xDC;
constexpr std::uint8_t kSearchRecord = 0xA2;
constexpr std::uint8_t kVerify = 0x20;
constexpr std::uint8_t kUnblock = 0x2C;
constexpr std::uint8_t kGetResponse = 0xC0;

constexpr std::uint8_t kById = 0x00;
constexpr std::uint8_t kByAid = 0x04;
constexpr std::uint8_t kByPathFromMf = 0x08;
constexpr std::uint8_t kTellFcp = 0x04;
constexpr std::uint8_t kAbsolute = 0x04;
constexpr std::uint8_t kForwardFromFirst = 0x04;  // SEARCH RECORD: simple, on from record P1

constexpr std::size_t kChunk = 0xFF;

constexpr std::uint8_t kToolkitBusy = 0x93;
constexpr int kBusyRepeats = 3;
constexpr std::chrono::milliseconds kBusyPause(100);

// A code in a command is eight bytes, its digits and then FF (TS 102 221 9.5.1).
void PutCode(std::string_view digits, std::span<std::uint8_t> bytes) {
  std::fill(bytes.begin(), bytes.end(), std::uint8_t{0xFF});
  std::copy(digits.begin(), digits.end(), bytes.begin());
}

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
  open_ = true;
  pathSelects_ = true;
  searches_ = true;
  exchange_.SetClass(kClassUicc);
  CardResult result = SelectId(kMasterFile, nullptr);
  if (result.Error() == TransportError::kNone && SaysUnsupported(result.Word())) {
    exchange_.SetClass(kClassGsm);
    result = SelectId(kMasterFile, nullptr);
  }
  if (result.Error() != TransportError::kNone) open_ = false;
  if (result.Ok()) folder_ = FilePath{};
  return result.Error();
}

void ApduFiles::Close() {
  Forget();
  open_ = false;
  pinVerified_ = false;
  aid_.clear();
}

void ApduFiles::Forget() {
  current_.reset();
  folder_.reset();
  infos_.clear();
}

CardResult ApduFiles::Noted(CardResult result) {
  switch (result.Error()) {
    case TransportError::kNone:
    case TransportError::kBusy:
    case TransportError::kPin2Needed:
    case TransportError::kPuk2Needed:
      break;
    case TransportError::kRadioOff:
    case TransportError::kStorage:
    case TransportError::kTimeout:
    case TransportError::kCommunication:
      current_.reset();
      folder_.reset();
      break;
    case TransportError::kNoReader:
    case TransportError::kNoCard:
    case TransportError::kRemoved:
    case TransportError::kReset:
      Close();
      break;
  }
  return result;
}

CardResult ApduFiles::Send(const CardCommand& command, std::vector<std::uint8_t>& data) {
  const CardTransaction transaction(*this);
  if (transaction.Error() != TransportError::kNone) return transaction.Error();
  CardResult result = Noted(exchange_.Send(command, data));
  for (int again = 0; again < kBusyRepeats && SaysBusy(result) && OnlyReads(command); ++again) {
    if (stopped_) break;
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
    current_.reset();
    folder_.reset();
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
  current_.reset();
  folder_.reset();
  if (result.Ok()) folder_ = FilePath{kApplication};
  return result;
}

CardResult ApduFiles::SelectApplication(std::span<const std::uint8_t> aid) {
  if (IsGsm()) return StatusWord::kFileNotFound;
  std::vector<std::uint8_t> former(aid.begin(), aid.end());
  aid_.swap(former);
  const CardResult result = SelectAid(nullptr);
  if (!result.Ok() && open_) aid_.swap(former);
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
  if (!open_) return TransportError::kReset;
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
  current_.reset();
  folder_.reset();
  if (result.Ok()) {
    current_ = path;
    folder_ = path.Parent();
  }
  return result;
}

CardResult ApduFiles::Info(const FilePath& path, FileInfo& info) {
  if (const auto known = infos_.find(path); known != infos_.end()) {
    info = known->second;
    return StatusWord::kOk;
  }
  const CardTransaction transaction(*this);
  if (transaction.Error() != TransportError::kNone) return transaction.Error();
  std::vector<std::uint8_t> response;
  const CardResult result = Select(path, &response);
  if (!result.Ok()) return result;
  const auto parsed = ParseFileInfo(response);
  if (!parsed) return StatusWord::kWrongFileKind;
  infos_[path] = *parsed;
  info = *parsed;
  return result;
}

CardResult ApduFiles::ReadRecord(const FilePath& path, std::uint8_t record, std::uint8_t length,
                                 std::vector<std::uint8_t>& data) {
  std::vector<std::uint8_t> bytes;
  const CardResult result = SendOn(path, {kReadRecord, record, kAbsolute, {}, length}, bytes);
  if (!result.Ok()) return result;
  if (bytes.size() != length) return TransportError::kCommunication;
  data = std::move(bytes);
  return result;
}

CardResult ApduFiles::UpdateRecord(const FilePath& path, std::uint8_t record,
                                   std::span<const std::uint8_t> data) {
  std::vector<std::uint8_t> ignored;
  return SendOn(path, {kUpdateRecord, record, kAbsolute, data}, ignored);
}

CardResult ApduFiles::ReadBinary(const FilePath& path, std::uint16_t offset, std::uint16_t length,
                                 std::vector<std::uint8_t>& data) {
  std::vector<std::uint8_t> bytes;
  while (bytes.size() < length) {
    const std::size_t at = offset + bytes.size();
    const std::size_t want = std::min<std::size_t>(length - bytes.size(), kChunk);
    if (at > 0x7FFF) return StatusWord::kWrongOffset;
    std::vector<std::uint8_t> chunk;
    const CardResult result = SendOn(path,
                                     {kReadBinary,
                                      static_cast<std::uint8_t>(at >> 8),
                                      static_cast<std::uint8_t>(at & 0xFF),
                                      {},
                                      static_cast<int>(want)},
                                     chunk);
    if (!result.Ok()) return result;
    if (chunk.size() != want) return TransportError::kCommunication;
    bytes.insert(bytes.end(), chunk.begin(), chunk.end());
  }
  data = std::move(bytes);
  return StatusWord::kOk;
}

CardResult ApduFiles::UpdateBinary(const FilePath& path, std::uint16_t offset,
                                   std::span<const std::uint8_t> data) {
  std::size_t done = 0;
  while (done < data.size()) {
    const std::size_t at = offset + done;
    const std::size_t size = std::min(data.size() - done, kChunk);
    if (at > 0x7FFF) return StatusWord::kWrongOffset;
    std::vector<std::uint8_t> ignored;
    const CardResult result =
        SendOn(path,
               {kUpdateBinary, static_cast<std::uint8_t>(at >> 8),
                static_cast<std::uint8_t>(at & 0xFF), data.subspan(done, size)},
               ignored);
    if (!result.Ok()) return result;
    done += size;
  }
  return StatusWord::kOk;
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

CardResult ApduFiles::FindPinReference(PinReference& pin) {
  std::vector<std::uint8_t> response;
  CardResult result = StatusWord::kFileNotFound;
  if (!aid_.empty()) {
    result = SelectAid(&response);
    if (result.Error() != TransportError::kNone) return result;
  }
  auto found = ParsePinReference(response);
  if (!found) {
    result = SelectId(kMasterFile, &response);
    current_.reset();
    folder_.reset();
    if (!result.Ok()) return result;
    found = ParsePinReference(response);
  }
  pin = found.value_or(PinReference{.enabled = true});
  return StatusWord::kOk;
}

CardResult ApduFiles::AskTries(std::uint8_t instruction, std::uint8_t reference, int& tries) {
  const CardResult asked = Send({.instruction = instruction, .parameter2 = reference});
  if (asked.Error() != TransportError::kNone) return asked;
  const auto word = static_cast<std::uint16_t>(asked.Word());
  if ((word & 0xFFF0) == 0x63C0) tries = word & 0x0F;
  if (asked.Word() == StatusWord::kPinBlocked) tries = 0;
  return StatusWord::kOk;
}

CardResult ApduFiles::GetPinState(PinState& state) {
  const CardTransaction transaction(*this);
  if (transaction.Error() != TransportError::kNone) return transaction.Error();
  PinReference pin;
  if (const CardResult result = FindPinReference(pin); !result.Ok()) return result;
  PinState told = {pin.enabled, pin.enabled && pinVerified_, false, pin.triesLeft,
                   pin.unblockTriesLeft};
  if (!IsGsm()) {
    const CardResult asked = AskTries(kVerify, pin.reference, told.triesLeft);
    if (!asked.Ok()) return asked;
  }
  told.blocked = told.triesLeft == 0;
  if (told.blocked && !IsGsm()) {
    const CardResult asked = AskTries(kUnblock, pin.reference, told.unblockTriesLeft);
    if (!asked.Ok()) return asked;
  }
  state = told;
  return StatusWord::kOk;
}

CardResult ApduFiles::SendCodes(std::uint8_t instruction, std::uint8_t reference,
                                std::span<std::uint8_t> codes, PinState& state) {
  const CardResult result =
      Send({.instruction = instruction, .parameter2 = reference, .data = codes});
  std::fill(codes.begin(), codes.end(), std::uint8_t{0});
  if (result.Error() != TransportError::kNone) return result;
  const auto word = static_cast<std::uint16_t>(result.Word());
  const bool refused = (word & 0xFFF0) == 0x63C0 || result.Word() == StatusWord::kPinBlocked ||
                       result.Word() == StatusWord::kPinNeededGsm ||
                       result.Word() == StatusWord::kPinBlockedGsm;
  if (!result.Ok() && !refused) return result;
  if (result.Ok()) pinVerified_ = true;
  return GetPinState(state);
}

CardResult ApduFiles::VerifyPin(std::string_view code, PinState& state) {
  const CardTransaction transaction(*this);
  if (transaction.Error() != TransportError::kNone) return transaction.Error();
  if (!IsPin(code)) return StatusWord::kWrongLength;
  PinReference pin;
  if (const CardResult result = FindPinReference(pin); !result.Ok()) return result;
  std::array<std::uint8_t, kPinBytes> bytes;
  PutCode(code, bytes);
  return SendCodes(kVerify, pin.reference, bytes, state);
}

CardResult ApduFiles::UnblockPin(std::string_view unblockingCode, std::string_view newPin,
                                 PinState& state) {
  const CardTransaction transaction(*this);
  if (transaction.Error() != TransportError::kNone) return transaction.Error();
  if (!IsPuk(unblockingCode) || !IsPin(newPin)) return StatusWord::kWrongLength;
  PinReference pin;
  if (const CardResult result = FindPinReference(pin); !result.Ok()) return result;
  std::array<std::uint8_t, 2 * kPinBytes> bytes;
  PutCode(unblockingCode, std::span(bytes).first(kPinBytes));
  PutCode(newPin, std::span(bytes).last(kPinBytes));
  // A GSM card counts CHV1 as 00 here (TS 51.011 9.2.13).
  return SendCodes(kUnblock, IsGsm() ? std::uint8_t{0} : pin.reference, bytes, state);
}

TransportError ApduFiles::BeginTransaction() {
  if (transactions_ == 0 && stopped_) return TransportError::kBusy;
  if (transactions_++ > 0) return TransportError::kNone;
  const TransportError error = channel_.BeginTransaction();
  if (error != TransportError::kNone) {
    transactions_ = 0;
    static_cast<void>(Noted(error).Ok());
  } else if (channel_.OthersMaySelect()) {
    shared_ = true;
    current_.reset();
    folder_.reset();
  }
  return error;
}

void ApduFiles::EndTransaction() {
  if (--transactions_ == 0) channel_.EndTransaction();
}

}  // namespace kelpin::device::card
