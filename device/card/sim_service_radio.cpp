#include <cstring>
#include <limits>
#include <utility>
#include <vector>

#include "device/card/sim_service.h"

// The radio interface of the service, and what its sessions are told.
namespace kelpin::device::card {

bool SimService::HasRadioSession(platform::RilHandle ril) {
  const MutexLock lock(lock_);
  return radioSessions_.count(ril) != 0;
}

void SimService::NotifyRadio(std::uint32_t code, const void* data, std::uint32_t size) {
  std::vector<std::pair<platform::RilHandle, RadioSession>> sessions;
  {
    const MutexLock lock(lock_);
    for (const auto& [handle, session] : radioSessions_) {
      if (session.notify != nullptr && (session.classes & code & 0xFFFF0000) != 0) {
        sessions.emplace_back(handle, session);
      }
    }
  }
  for (const auto& [handle, session] : sessions) {
    CallOut([this, ril = handle] { return HasRadioSession(ril); },
            [&, to = session] { to.notify(code, data, size, to.parameter); });
  }
}

void SimService::NotifyReady(bool ready) {
  platform::RilEquipmentState state;
  state.readyState = ready ? platform::kRilReadyPhonebook : 0;
  NotifyRadio(platform::kRilNotifyEquipmentState, &state, sizeof(state));
}

void SimService::NotifyRewritten() {
  NotifyRadio(platform::kRilNotifyPhonebookRewritten, nullptr, 0);
  NotifyReady(true);
}

std::int32_t SimService::RIL_Initialize(std::uint32_t port, platform::RilResultCallback result,
                                        platform::RilNotifyCallback notify,
                                        std::uint32_t notificationClasses, void* parameter,
                                        platform::RilHandle& ril) {
  ril = 0;
  if (port != platform::kRilPort) return -1;
  const MutexLock lock(lock_);
  ril = nextHandle_++;
  radioSessions_[ril] = {result, notify, notificationClasses, parameter};
  return 0;
}

std::int32_t SimService::RIL_Deinitialize(platform::RilHandle ril) {
  {
    const MutexLock lock(lock_);
    if (radioSessions_.count(ril) == 0) return -1;
  }
  queue_.Dismiss(ril, [this, ril] {
    const MutexLock calls(callLock_);
    const MutexLock lock(lock_);
    radioSessions_.erase(ril);
  });
  return 0;
}

template <typename Operation>
std::int32_t SimService::Command(platform::RilHandle ril, Operation operation) {
  RadioSession session;
  std::int32_t id = 0;
  {
    const MutexLock lock(lock_);
    const auto found = radioSessions_.find(ril);
    if (found == radioSessions_.end()) return -1;
    session = found->second;
    id = nextCommand_;
    nextCommand_ = id == std::numeric_limits<std::int32_t>::max() ? 1 : id + 1;
  }
  const bool posted = queue_.Post(ril, [this, ril, session, id, operation](bool cancelled) {
    RadioAnswer answer;
    if (!cancelled) {
      HeedEvents();
      answer = operation();
      HeedFinds();
    }
    if (session.result != nullptr) {
      CallOut([this, ril] { return HasRadioSession(ril); },
              [&] {
                session.result(answer.code, id, answer.data.empty() ? nullptr : answer.data.data(),
                               static_cast<std::uint32_t>(answer.data.size()), session.parameter);
              });
    }
    if (answer.ownNumbersChanged) {
      const std::int32_t changed = -1;
      NotifyRadio(platform::kRilNotifyMiscellaneousSim, &changed, sizeof(changed));
    }
  });
  return posted ? id : -1;
}

std::int32_t SimService::RIL_ReadPhonebookEntries(platform::RilHandle ril, std::uint32_t first,
                                                  std::uint32_t last) {
  return Command(ril, [this, first, last] { return commands_.ReadEntries(first, last, false); });
}

std::int32_t SimService::RIL_SendRestrictedSimCmd(platform::RilHandle ril, std::uint32_t command,
                                                  const platform::RilSimCmdParameters& parameters,
                                                  const std::uint8_t* data, std::uint32_t size) {
  if (parameters.size != sizeof(parameters) || size > 0xFF) return -1;
  std::vector<std::uint8_t> bytes;
  if (data != nullptr) bytes.assign(data, data + size);
  return Command(ril, [this, command, parameters, bytes] {
    return commands_.RestrictedCommand(command, parameters, bytes);
  });
}

RadioAnswer SimService::TellChanged() {
  RadioAnswer answer;
  answer.code = platform::kRilResultOk;
  const std::uint32_t changed = std::exchange(changedByOthers_, false) ? 1 : 0;
  answer.data.resize(sizeof(changed));
  std::memcpy(answer.data.data(), &changed, sizeof(changed));
  return answer;
}

std::int32_t SimService::RIL_DevSpecific(platform::RilHandle ril, const void* block,
                                         std::uint32_t size) {
  std::uint32_t word = 0;
  if (block == nullptr || size < sizeof(word)) return -1;
  std::memcpy(&word, block, sizeof(word));
  switch (word) {
    case platform::kRilDevSimFile: {
      platform::RilSimFileCommand command;
      if (size != sizeof(command)) return -1;
      std::memcpy(&command, block, sizeof(command));
      return Command(ril, [this, command] { return commands_.FileCommand(command); });
    }
    case platform::kRilDevPhonebookChanged:
      return Command(ril, [this] { return TellChanged(); });
    case platform::kRilDevReadPhonebook: {
      std::uint32_t words[3] = {};
      std::memcpy(words, block, sizeof(words));
      return Command(ril, [this, first = words[1], last = words[2]] {
        return commands_.ReadEntries(first, last, true);
      });
    }
    case platform::kRilDevFreeExtensionRecords:
      return Command(ril, [this] { return commands_.FreeExtensionRecords(); });
    default:
      return -1;
  }
}

}  // namespace kelpin::device::card
