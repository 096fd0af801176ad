#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <string_view>
#include <vector>

#include "device/card/apdu_files.h"
#include "device/card/card_channel.h"
#include "device/card/card_session.h"
#include "device/card/radio_commands.h"
#include "device/card/task_queue.h"
#include "platform/mutex.h"
#include "platform/radio_interface.h"
#include "platform/sim_interface.h"

namespace kelpin::device::card {

// The SIM interface and the radio interface over one card, for any number of sessions. One thread
// owns the card; results and notices come from it. The card is connected when it is first wanted,
// and again after it was taken out or reset. No PIN is ever sent but by VerifyPin.
//
// Sessions are told of every entry that is stored or deleted through any of them. When the card was
// put in, reset by somebody else or touched by another program, and when its PIN was verified,
// radio sessions are told that the phone book was rewritten and that it is ready.
//
// `channel` must live longer. End every session's calls before destroying the service; results that
// are still due are answered with an error.
class SimService final : public platform::SimInterface,
                         public platform::RadioInterface,
                         private CardChannelListener {
 public:
  explicit SimService(CardChannel& channel);
  ~SimService() override;

  platform::SimResult SimInitialize(std::uint32_t flags, platform::SimNotifyCallback callback,
                                    void* parameter, platform::SimHandle& sim) override;
  platform::SimResult SimDeinitialize(platform::SimHandle sim) override;
  platform::SimResult SimGetDevCaps(platform::SimHandle sim, std::uint32_t type,
                                    platform::SimCaps& caps) override;
  platform::SimResult SimReadPhonebookEntry(platform::SimHandle sim, std::uint32_t storage,
                                            std::uint32_t index,
                                            platform::SimPhonebookEntry& entry) override;
  platform::SimResult SimGetPhonebookStatus(platform::SimHandle sim, std::uint32_t storage,
                                            std::uint32_t& used, std::uint32_t& total) override;
  platform::SimResult SimWritePhonebookEntry(platform::SimHandle sim, std::uint32_t storage,
                                             std::uint32_t index,
                                             const platform::SimPhonebookEntry& entry) override;
  platform::SimResult SimDeletePhonebookEntry(platform::SimHandle sim, std::uint32_t storage,
                                              std::uint32_t index) override;
  platform::SimResult SimGetSmsStorageStatus(platform::SimHandle sim, std::uint32_t storage,
                                             std::uint32_t& used, std::uint32_t& total) override;

  std::int32_t RIL_Initialize(std::uint32_t port, platform::RilResultCallback result,
                              platform::RilNotifyCallback notify, std::uint32_t notificationClasses,
                              void* parameter, platform::RilHandle& ril) override;
  std::int32_t RIL_Deinitialize(platform::RilHandle ril) override;
  std::int32_t RIL_ReadPhonebookEntries(platform::RilHandle ril, std::uint32_t first,
                                        std::uint32_t last) override;
  std::int32_t RIL_SendRestrictedSimCmd(platform::RilHandle ril, std::uint32_t command,
                                        const platform::RilSimCmdParameters& parameters,
                                        const std::uint8_t* data, std::uint32_t size) override;
  std::int32_t RIL_DevSpecific(platform::RilHandle ril, const void* block,
                               std::uint32_t size) override;

  // The PIN that guards the phone book. Both block until the card answers; any thread.
  platform::SimResult GetPinState(PinState& state);
  // Sends `code` once. With one try left nothing is sent (kPinRequired) unless `evenTheLastTry`.
  platform::SimResult VerifyPin(std::string_view code, bool evenTheLastTry, PinState& state);

 private:
  struct SimSession {
    platform::SimNotifyCallback notify = nullptr;
    void* parameter = nullptr;
  };
  struct RadioSession {
    platform::RilResultCallback result = nullptr;
    platform::RilNotifyCallback notify = nullptr;
    std::uint32_t classes = 0;
    void* parameter = nullptr;
  };

  // CardChannelListener, on the channel's thread.
  void CardInserted() override;
  void CardRemoved() override;
  void CardReset() override;
  void CardTouched() override;

  bool HasSimSession(platform::SimHandle sim) EXCLUDES(lock_);
  // Runs `operation` on the card's thread when the handle is open and the storage is the right one.
  template <typename Operation>
  platform::SimResult OnCard(platform::SimHandle sim, bool storageFits, Operation operation);
  // Posts a radio command: its id, or a negative value.
  template <typename Operation>
  std::int32_t Command(platform::RilHandle ril, Operation operation) EXCLUDES(lock_);

  // The rest runs on the card's thread.
  void HeedEvents();
  void NotifySim(std::uint32_t code, std::uint32_t location) EXCLUDES(lock_);
  void NotifyRadio(std::uint32_t code, const void* data, std::uint32_t size) EXCLUDES(lock_);
  void NotifyReady(bool ready);
  void NotifyRewritten();
  RadioAnswer TellChanged();

  CardChannel& channel_;
  ApduFiles files_;
  CardSession session_;
  RadioCommands commands_;

  // Set where the event is told, heeded before the next command to the card.
  std::atomic<bool> lost_ = false;
  std::atomic<bool> touched_ = false;
  bool changedByOthers_ = false;  // the card's thread alone

  Mutex lock_;
  std::map<platform::SimHandle, SimSession> simSessions_ GUARDED_BY(lock_);
  std::map<platform::RilHandle, RadioSession> radioSessions_ GUARDED_BY(lock_);
  std::uint32_t nextHandle_ GUARDED_BY(lock_) = 1;
  std::int32_t nextCommand_ GUARDED_BY(lock_) = 1;

  TaskQueue queue_;  // last: its thread uses all of the above
};

}  // namespace kelpin::device::card
