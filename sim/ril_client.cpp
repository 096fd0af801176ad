#include "sim/ril_client.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace kelpin::sim {
namespace {

using platform::EventAction;
using platform::RilHandle;
using platform::WaitResult;

constexpr std::uint32_t kNumberDigits = 20;      // what a record's number part holds
constexpr std::uint32_t kNumberPartLength = 14;  // bytes of a record behind its alpha identifier

// Bytes of the answer to a get response (TS 51.011 9.2.1).
constexpr std::size_t kFileSizeByte = 2;  // two bytes, the higher one first
constexpr std::size_t kRecordLengthByte = 14;

constexpr std::u16string_view kDriverName = u"RIL1:";
constexpr std::uint32_t kDriverOpenFlags = 4;
constexpr std::uint32_t kDriverFileUpdated = 0x03000338;

// Values of kRilNotifyMiscellaneousSim.
constexpr std::int32_t kOwnNumbersRewritten = -1;
constexpr std::int32_t kPhonebookRewritten = -3;
constexpr std::int32_t kBothRewritten = -4;

constexpr std::uint32_t kReferenceFile = 0;

std::vector<std::uint8_t> Copy(const void* data, std::uint32_t size) {
  if (data == nullptr || size == 0) return {};
  const auto* bytes = static_cast<const std::uint8_t*>(data);
  return {bytes, bytes + size};
}

void Pulse(platform::Event* event) {
  if (event != nullptr) event->EventModify(EventAction::kPulse);
}

}  // namespace

std::span<const std::uint8_t> RecordBytes(std::span<const std::uint8_t> response) {
  constexpr std::size_t kHeader = sizeof(platform::RilSimResponse);
  return response.size() > kHeader ? response.subspan(kHeader) : std::span<const std::uint8_t>();
}

RilClient::RilClient(platform::RadioInterface& radio, platform::KernelObjects& kernel,
                     platform::Devices& devices)
    : radio_(radio),
      devices_(devices),
      ownNumbersEvent_(kernel.CreateEvent(kOwnNumbersEventName)),
      phonebookEvent_(kernel.CreateEvent(kPhonebookEventName)),
      completionEvent_(kernel.CreateEvent({})) {}

RilClient::~RilClient() {
  if (IsOpen()) Close();
}

bool RilClient::Open(std::uint32_t classes) {
  if (IsOpen()) Close();
  RilHandle opened = 0;
  const std::int32_t result = radio_.RIL_Initialize(platform::kRilPort, &RilClient::OnRilResult,
                                                    &RilClient::OnRilNotify, classes, this, opened);
  ril_ = result == 0 ? opened : 0;
  return ril_ != 0;
}

int RilClient::Close() {
  const RilHandle open = ril_.exchange(0);
  if (open == 0) return 0;
  const std::int32_t result = radio_.RIL_Deinitialize(open);
  const MutexLock lock(lock_);
  if (executing_) {
    // The radio has answered what was under way; where it could not, the wait ends here.
    aborted_ = true;
    completionEvent_->EventModify(EventAction::kSet);
  }
  return result == 0 ? 1 : 0;
}

void RilClient::OnRilResult(std::uint32_t code, std::int32_t commandId, const void* data,
                            std::uint32_t size, void* parameter) {
  auto* const client = static_cast<RilClient*>(parameter);
  if (client != nullptr) client->OnResult(code, commandId, data, size);
}

void RilClient::OnRilNotify(std::uint32_t code, const void* data, std::uint32_t size,
                            void* parameter) {
  auto* const client = static_cast<RilClient*>(parameter);
  if (client != nullptr) client->OnNotify(code, data, size);
}

void RilClient::OnResult(std::uint32_t code, std::int32_t commandId, const void* data,
                         std::uint32_t size) {
  const MutexLock lock(lock_);
  resultCode_ = code;
  if (calling_) {
    earlyResults_.push_back({code, commandId, Copy(data, size)});
  } else if (commandId == pendingId_) {
    Complete(code, Copy(data, size));
  }
}

void RilClient::Complete(std::uint32_t code, std::vector<std::uint8_t> data) {
  resultCode_ = code;
  completedCode_ = code;
  response_ = std::move(data);
  if (completionEvent_ != nullptr) completionEvent_->EventModify(EventAction::kSet);
}

void RilClient::OnNotify(std::uint32_t code, const void* data, std::uint32_t size) {
  switch (code) {
    case platform::kRilNotifyPhonebookRewritten:
      phonebookReloadPending_ = 1;
      break;
    case platform::kRilNotifyEquipmentState: {
      platform::RilEquipmentState state;
      if (data == nullptr || size < sizeof(state)) break;
      std::memcpy(&state, data, sizeof(state));
      if ((state.readyState & platform::kRilReadyPhonebook) == 0) break;
      if (phonebookReloadPending_.exchange(0) != 0) Pulse(phonebookEvent_.get());
      break;
    }
    case platform::kRilNotifyMiscellaneousSim: {
      std::int32_t what = 0;
      if (data == nullptr || size < sizeof(what)) break;
      std::memcpy(&what, data, sizeof(what));
      if (what == kOwnNumbersRewritten || what == kBothRewritten) Pulse(ownNumbersEvent_.get());
      if (what == kPhonebookRewritten || what == kBothRewritten) Pulse(phonebookEvent_.get());
      break;
    }
    default:
      break;
  }
}

std::uint32_t RilClient::Wait(std::uint32_t milliseconds) {
  if (completionEvent_ == nullptr ||
      completionEvent_->Wait(milliseconds) != WaitResult::kSignaled) {
    return 0;
  }
  const MutexLock lock(lock_);
  return completedCode_;
}

bool RilClient::Execute(const std::function<std::int32_t(RilHandle)>& send,
                        std::vector<std::uint8_t>* response, std::vector<std::uint8_t>* refusal) {
  const MutexLock gate(gate_);
  // Without the event nobody would hear of the result.
  if (completionEvent_ == nullptr) return false;
  RilHandle ril = 0;
  {
    const MutexLock lock(lock_);
    executing_ = true;
    calling_ = true;
    aborted_ = false;
    // Read under the lock that Close takes after it has cleared it: one of the two sees the other.
    ril = ril_;
  }
  // What came too late for the command before this one is not this one's.
  completionEvent_->EventModify(EventAction::kReset);
  const std::int32_t id = ril != 0 ? send(ril) : -1;
  bool sent = false;
  {
    const MutexLock lock(lock_);
    pendingId_ = id;
    calling_ = false;
    sent = id >= 0 && !aborted_;
    const auto early = std::find_if(earlyResults_.begin(), earlyResults_.end(),
                                    [id](const EarlyResult& r) { return r.commandId == id; });
    if (sent && early != earlyResults_.end()) Complete(early->code, std::move(early->data));
    earlyResults_.clear();
  }
  const std::uint32_t code = sent ? Wait(kRilTimeout) : 0;
  const MutexLock lock(lock_);
  executing_ = false;
  if (aborted_) return false;
  if (code == platform::kRilResultError && refusal != nullptr) *refusal = response_;
  if (code != platform::kRilResultOk) return false;
  if (response != nullptr) *response = response_;
  return true;
}

bool RilClient::DevSpecific(const void* block, std::uint32_t size,
                            std::vector<std::uint8_t>* response,
                            std::vector<std::uint8_t>* refusal) {
  return Execute([&](RilHandle ril) { return radio_.RIL_DevSpecific(ril, block, size); }, response,
                 refusal);
}

bool RilClient::GetFileInfo(std::uint32_t fileId) {
  platform::RilSimCmdParameters parameters;
  parameters.fileId = fileId;
  std::vector<std::uint8_t> response;
  const bool answered = Execute(
      [&](RilHandle ril) {
        return radio_.RIL_SendRestrictedSimCmd(ril, platform::kRilSimGetResponse, parameters,
                                               nullptr, 0);
      },
      &response);
  const std::span<const std::uint8_t> header = RecordBytes(response);
  if (!answered || header.size() <= kRecordLengthByte) return false;
  const std::uint32_t length = header[kRecordLengthByte];
  if (length == 0) return false;
  const std::uint32_t size =
      (std::uint32_t{header[kFileSizeByte]} << 8) | header[kFileSizeByte + 1];
  recordLength_ = length;
  recordCount_ = size / length;
  maxDigits_ = kNumberDigits;
  maxAlphaLength_ = length > kNumberPartLength ? length - kNumberPartLength : 0;
  return true;
}

bool RilClient::ReadRecord(std::uint32_t fileId, std::uint32_t record,
                           std::vector<std::uint8_t>& response) {
  platform::RilSimCmdParameters parameters;
  parameters.fileId = fileId;
  parameters.parameter1 = record;
  parameters.parameter2 = platform::kRilSimAbsoluteMode;
  parameters.parameter3 = recordLength_;
  return Execute(
      [&](RilHandle ril) {
        return radio_.RIL_SendRestrictedSimCmd(ril, platform::kRilSimReadRecord, parameters,
                                               nullptr, 0);
      },
      &response);
}

bool RilClient::UpdateRecord(std::uint32_t fileId, std::uint32_t record,
                             std::span<const std::uint8_t> data) {
  const std::uint32_t length = recordLength_;
  if (length == 0 || data.size() != length) return false;
  platform::RilSimCmdParameters parameters;
  parameters.fileId = fileId;
  parameters.parameter1 = record;
  parameters.parameter2 = platform::kRilSimAbsoluteMode;
  parameters.parameter3 = length;
  const bool updated = Execute(
      [&](RilHandle ril) {
        return radio_.RIL_SendRestrictedSimCmd(ril, platform::kRilSimUpdateRecord, parameters,
                                               data.data(), length);
      },
      nullptr);
  if (updated) NotifyDriver();
  return updated;
}

void RilClient::NotifyDriver() {
  const platform::DeviceHandle driver =
      devices_.OpenDevice(kDriverName, platform::kGenericReadWrite, platform::kShareReadWrite,
                          platform::kOpenExisting, kDriverOpenFlags);
  if (driver == 0) return;
  devices_.DeviceControl(driver, kDriverFileUpdated);
  devices_.CloseDevice(driver);
}

bool RilClient::GetExtResponse(std::uint32_t code, std::vector<std::uint8_t>& response,
                               std::vector<std::uint8_t>* refusal) {
  platform::RilSimFileCommand block;
  block.operation = platform::kRilSimGetResponse;
  block.fileCode = code;
  return DevSpecific(&block, sizeof(block), &response, refusal);
}

bool RilClient::ReadExtRecord(std::uint32_t code, std::uint32_t record,
                              std::vector<std::uint8_t>& response,
                              std::vector<std::uint8_t>* refusal) {
  platform::RilSimFileCommand block;
  block.operation = platform::kRilSimReadRecord;
  block.fileCode = code;
  block.record = record;
  block.mode = platform::kRilSimAbsoluteMode;
  return DevSpecific(&block, sizeof(block), &response, refusal);
}

bool RilClient::WriteExtRecord(std::uint32_t code, std::uint32_t record,
                               std::span<const std::uint8_t> data, std::uint8_t fill) {
  platform::RilSimFileCommand block;
  if (code == kReferenceFile || data.size() > sizeof(block.data)) return false;
  block.operation = platform::kRilSimUpdateRecord;
  block.fileCode = code;
  block.record = record;
  block.mode = platform::kRilSimAbsoluteMode;
  block.length = static_cast<std::uint32_t>(data.size());
  block.dataLength = block.length;
  std::memset(block.data, fill, sizeof(block.data));
  std::copy(data.begin(), data.end(), block.data);
  return DevSpecific(&block, sizeof(block), nullptr);
}

bool RilClient::ReadPhonebookEntries(std::uint32_t first, std::uint32_t last,
                                     std::vector<std::uint8_t>& response) {
  return Execute([&](RilHandle ril) { return radio_.RIL_ReadPhonebookEntries(ril, first, last); },
                 &response);
}

bool RilClient::ReadPhonebookEntriesEx(std::uint32_t first, std::uint32_t last,
                                       std::vector<std::uint8_t>& response) {
  // The radio takes all three words although it is told of the first one only.
  const std::array<std::uint32_t, 3> block = {platform::kRilDevReadPhonebook, first, last};
  return DevSpecific(block.data(), sizeof(block[0]), &response);
}

bool RilClient::PhonebookChanged(std::uint32_t& value) {
  const std::uint32_t command = platform::kRilDevPhonebookChanged;
  std::vector<std::uint8_t> response;
  if (!DevSpecific(&command, sizeof(command), &response) || response.size() < sizeof(value)) {
    return false;
  }
  std::memcpy(&value, response.data(), sizeof(value));
  return true;
}

WaitResult RilClient::WaitOwnNumbers(std::uint32_t milliseconds) {
  return ownNumbersEvent_ != nullptr ? ownNumbersEvent_->Wait(milliseconds)
                                     : WaitResult::kAbandoned;
}

WaitResult RilClient::WaitPhonebook(std::uint32_t milliseconds) {
  return phonebookEvent_ != nullptr ? phonebookEvent_->Wait(milliseconds) : WaitResult::kAbandoned;
}

std::vector<std::uint8_t> RilClient::Response() const {
  const MutexLock lock(lock_);
  return response_;
}

std::uint32_t RilClient::ResultCode() const {
  const MutexLock lock(lock_);
  return resultCode_;
}

}  // namespace kelpin::sim
