#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <optional>
#include <vector>

#include "platform/mutex.h"
#include "platform/radio_interface.h"

namespace kelpin::device::card {

// One radio session that keeps what it is told.
class RadioClient {
 public:
  struct Result {
    std::uint32_t code = 0;
    std::int32_t id = 0;
    std::vector<std::uint8_t> data;
  };
  struct Notice {
    std::uint32_t code = 0;
    std::vector<std::uint8_t> data;
  };

  explicit RadioClient(platform::RadioInterface& radio, std::uint32_t classes = 0xFFFF0000)
      : radio_(radio) {
    opened_ = radio.RIL_Initialize(platform::kRilPort, OnResult, OnNotify, classes, this, handle_);
  }
  ~RadioClient() {
    if (handle_ != 0) radio_.RIL_Deinitialize(handle_);
  }
  RadioClient(const RadioClient&) = delete;
  RadioClient& operator=(const RadioClient&) = delete;

  platform::RilHandle Handle() const { return handle_; }
  std::int32_t Opened() const { return opened_; }
  void Close() {
    radio_.RIL_Deinitialize(handle_);
    handle_ = 0;
  }

  // The result of the command with this id; an impossible code when it does not come.
  Result Await(std::int32_t id) {
    std::unique_lock<std::mutex> lock(mutex_);
    const auto there = [&] { return Find(id).has_value(); };
    if (!came_.wait_for(lock, kPatience, there)) return {0xDEAD, id, {}};
    return *Find(id);
  }
  // The notices so far, once there are that many (or the patience is over).
  std::vector<Notice> Notices(std::size_t count) {
    std::unique_lock<std::mutex> lock(mutex_);
    came_.wait_for(lock, kPatience, [&] { return notices_.size() >= count; });
    return notices_;
  }
  std::size_t ResultCount() {
    const std::lock_guard lock(mutex_);
    return results_.size();
  }

  Result ReadEntries(std::uint32_t first, std::uint32_t last) {
    return Await(radio_.RIL_ReadPhonebookEntries(handle_, first, last));
  }
  Result ReadEntriesEx(std::uint32_t first, std::uint32_t last) {
    const std::uint32_t block[3] = {platform::kRilDevReadPhonebook, first, last};
    return Await(radio_.RIL_DevSpecific(handle_, block, 4));
  }
  Result Ask(std::uint32_t command) { return Await(radio_.RIL_DevSpecific(handle_, &command, 4)); }
  Result File(std::uint32_t operation, std::uint32_t code, std::uint32_t record,
              const std::vector<std::uint8_t>& data = {}) {
    platform::RilSimFileCommand command;
    command.operation = operation;
    command.fileCode = code;
    command.record = record;
    if (operation != platform::kRilSimGetResponse) command.mode = platform::kRilSimAbsoluteMode;
    command.length = command.dataLength = static_cast<std::uint32_t>(data.size());
    std::copy(data.begin(), data.end(), command.data);
    return Await(radio_.RIL_DevSpecific(handle_, &command, sizeof(command)));
  }
  Result Restricted(std::uint32_t command, std::uint32_t fileId, std::uint32_t record = 0,
                    std::uint32_t length = 0, const std::vector<std::uint8_t>& data = {}) {
    platform::RilSimCmdParameters parameters;
    parameters.fileId = fileId;
    parameters.parameter1 = record;
    parameters.parameter2 =
        command == platform::kRilSimGetResponse ? 0 : platform::kRilSimAbsoluteMode;
    parameters.parameter3 = length;
    return Await(radio_.RIL_SendRestrictedSimCmd(handle_, command, parameters,
                                                 data.empty() ? nullptr : data.data(),
                                                 static_cast<std::uint32_t>(data.size())));
  }

  // The records of a bulk read.
  template <typename Record>
  static std::vector<Record> Records(const Result& result) {
    std::vector<Record> records(result.data.size() / sizeof(Record));
    if (!records.empty()) {
      std::memcpy(records.data(), result.data.data(), records.size() * sizeof(Record));
    }
    return records;
  }
  // The bytes behind the response header.
  static std::vector<std::uint8_t> Bytes(const Result& result) {
    if (result.data.size() < sizeof(platform::RilSimResponse)) return {};
    return {result.data.begin() + sizeof(platform::RilSimResponse), result.data.end()};
  }
  // SW1 SW2 of the header, 0 without one.
  static int Status(const Result& result) {
    platform::RilSimResponse header;
    if (result.data.size() < sizeof(header)) return 0;
    std::memcpy(&header, result.data.data(), sizeof(header));
    return static_cast<int>(header.statusWord1 << 8 | header.statusWord2);
  }

 private:
  static constexpr std::chrono::seconds kPatience{20};

  static void OnResult(std::uint32_t code, std::int32_t id, const void* data, std::uint32_t size,
                       void* parameter) {
    auto& self = *static_cast<RadioClient*>(parameter);
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    const std::lock_guard lock(self.mutex_);
    self.results_.push_back({code, id, {bytes, bytes + size}});
    self.came_.notify_all();
  }
  static void OnNotify(std::uint32_t code, const void* data, std::uint32_t size, void* parameter) {
    auto& self = *static_cast<RadioClient*>(parameter);
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    const std::lock_guard lock(self.mutex_);
    self.notices_.push_back({code, {bytes, bytes + size}});
    self.came_.notify_all();
  }
  std::optional<Result> Find(std::int32_t id) const {
    for (const Result& result : results_) {
      if (result.id == id) return result;
    }
    return std::nullopt;
  }

  platform::RadioInterface& radio_;
  platform::RilHandle handle_ = 0;
  std::int32_t opened_ = -1;
  EndingMutex mutex_;
  std::condition_variable came_;
  std::vector<Result> results_;
  std::vector<Notice> notices_;
};

}  // namespace kelpin::device::card
