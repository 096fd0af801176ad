#pragma once

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "platform/mutex.h"
#include "platform/sim_interface.h"

namespace kelpin::device::card {

// One session of the SIM interface that keeps its notices.
class SimClient {
 public:
  struct Notice {
    std::uint32_t code = 0;
    std::uint32_t index = 0;
    std::uint32_t storage = 0;
    bool operator==(const Notice&) const = default;
  };

  explicit SimClient(platform::SimInterface& sim,
                     std::uint32_t flags = platform::kSimInitSimCardNotifications)
      : sim_(sim) {
    opened_ = sim.SimInitialize(flags, OnNotify, this, handle_);
  }
  ~SimClient() {
    if (handle_ != 0) static_cast<void>(sim_.SimDeinitialize(handle_) == platform::SimResult::kOk);
  }
  SimClient(const SimClient&) = delete;
  SimClient& operator=(const SimClient&) = delete;

  platform::SimHandle Handle() const { return handle_; }
  platform::SimResult Opened() const { return opened_; }

  platform::SimResult Status(std::uint32_t& used, std::uint32_t& total) {
    return sim_.SimGetPhonebookStatus(handle_, platform::kSimPhonebookStorageSim, used, total);
  }
  platform::SimResult Caps(platform::SimCaps& caps) {
    return sim_.SimGetDevCaps(handle_, platform::kSimCapsAll, caps);
  }
  platform::SimResult Read(std::uint32_t index, platform::SimPhonebookEntry& entry) {
    return sim_.SimReadPhonebookEntry(handle_, platform::kSimPhonebookStorageSim, index, entry);
  }
  // "name|address", or "!" and the result code in hex.
  std::u16string Text(std::uint32_t index) {
    platform::SimPhonebookEntry entry;
    const platform::SimResult result = Read(index, entry);
    if (!Succeeded(result)) {
      static constexpr char16_t kDigits[] = u"0123456789ABCDEF";
      std::u16string code = u"!";
      for (int shift = 28; shift >= 0; shift -= 4) {
        code.push_back(kDigits[(static_cast<std::uint32_t>(result) >> shift) & 0xF]);
      }
      return code;
    }
    return std::u16string(entry.text) + u"|" + entry.address;
  }
  platform::SimResult Write(std::uint32_t index, std::u16string_view name,
                            std::u16string_view address) {
    return sim_.SimWritePhonebookEntry(handle_, platform::kSimPhonebookStorageSim, index,
                                       Entry(name, address));
  }
  platform::SimResult Delete(std::uint32_t index) {
    return sim_.SimDeletePhonebookEntry(handle_, platform::kSimPhonebookStorageSim, index);
  }
  // The same where the location is free, or holds what is known of it.
  platform::SimResult WriteFree(std::uint32_t index, std::u16string_view name,
                                std::u16string_view address) {
    return sim_.SimWritePhonebookEntryIf(handle_, platform::kSimPhonebookStorageSim, index,
                                         Entry(name, address), nullptr);
  }
  platform::SimResult WriteKnown(std::uint32_t index, std::u16string_view name,
                                 std::u16string_view address,
                                 const platform::SimPhonebookEntry& known) {
    return sim_.SimWritePhonebookEntryIf(handle_, platform::kSimPhonebookStorageSim, index,
                                         Entry(name, address), &known);
  }
  platform::SimResult DeleteKnown(std::uint32_t index, const platform::SimPhonebookEntry& known) {
    return sim_.SimDeletePhonebookEntryIf(handle_, platform::kSimPhonebookStorageSim, index,
                                          &known);
  }
  static platform::SimPhonebookEntry Entry(std::u16string_view name, std::u16string_view address) {
    platform::SimPhonebookEntry entry;
    entry.params = platform::kSimEntryAll;
    entry.numPlan = platform::kNumPlanTelephone;
    std::copy(name.begin(), name.end(), entry.text);
    std::copy(address.begin(), address.end(), entry.address);
    return entry;
  }
  std::vector<Notice> Notices() {
    const std::lock_guard lock(mutex_);
    return notices_;
  }

 private:
  static void OnNotify(std::uint32_t code, const void* data, std::uint32_t size, void* parameter) {
    auto& self = *static_cast<SimClient*>(parameter);
    Notice notice = {code, 0, 0};
    if (size >= sizeof(platform::SimPhonebookChange)) {
      const auto& change = *static_cast<const platform::SimPhonebookChange*>(data);
      notice.index = change.entryIndex;
      notice.storage = change.storage;
    }
    const std::lock_guard lock(self.mutex_);
    self.notices_.push_back(notice);
  }

  platform::SimInterface& sim_;
  platform::SimHandle handle_ = 0;
  platform::SimResult opened_ = platform::SimResult::kOk;
  EndingMutex mutex_;
  std::vector<Notice> notices_;
};

}  // namespace kelpin::device::card
