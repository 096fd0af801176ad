#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "device/card/card_channel.h"
#include "device/card/card_session.h"
#include "device/card/channel_files.h"
#include "device/card/radio_commands.h"
#include "device/card/task_queue.h"
#include "platform/card_lock.h"
#include "platform/card_use.h"
#include "platform/mutex.h"
#include "platform/radio_interface.h"
#include "platform/sim_interface.h"

namespace kelpin::device::card {

// The SIM interface and the radio interface over one card, for any number of sessions. One thread
// owns the card; results and notices come from it. The card is connected when it is first wanted,
// and again after it was taken out or reset. No PIN is ever sent but by VerifyPin and UnblockPin.
//
// Sessions are told of every entry that is stored or deleted through any of them. When the card was
// put in, reset by somebody else or touched by another program, and when its PIN was verified,
// radio sessions are told that the phone book was rewritten and that it is ready.
//
// `channel` must live longer. End every session's calls before destroying the service; results that
// are still due are answered with an error.
class SimService final : public platform::SimInterface,
                         public platform::RadioInterface,
                         public platform::CardLock,
                         public platform::CardUse,
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
  platform::SimResult SimWritePhonebookEntryIf(platform::SimHandle sim, std::uint32_t storage,
                                               std::uint32_t index,
                                               const platform::SimPhonebookEntry& entry,
                                               const platform::SimPhonebookEntry* known) override;
  platform::SimResult SimDeletePhonebookEntryIf(platform::SimHandle sim, std::uint32_t storage,
                                                std::uint32_t index,
                                                const platform::SimPhonebookEntry* known) override;
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

  platform::SimResult GetLockState(platform::CardLockState& state) override;
  platform::CardLockResult VerifyPin(std::string_view pin, platform::LastTry lastTry,
                                     platform::CardLockState& after) override;
  platform::CardLockResult UnblockPin(std::string_view unblockingCode, std::string_view newPin,
                                      platform::LastTry lastTry,
                                      platform::CardLockState& after) override;
  void ExpectCode() override;
  // What ExpectCode does; before any session is open.
  void SetCodeGuard(std::function<void()> guard) { codeGuard_ = std::move(guard); }

  void ReadAfresh() override { afresh_ = true; }
  void Hold() override { session_.Hold(); }
  void LetGo() override { session_.LetGo(); }
  bool IsExchanged() const override { return session_.Swapped(); }
  bool IsGivenUp() const override { return givenUp_; }
  std::u16string Trouble() const override;
  std::uint32_t Generation() const override { return generation_; }

  // The program ends: calls that wait for the card, and later ones, answer kNotReady at once;
  // nothing is begun any more, and an update that is under way goes on. Any thread.
  void Abandon();
  // True when the card's thread is at rest; waits for that. Any thread.
  bool WaitForRest(std::chrono::milliseconds patience) { return queue_.WaitUntilIdle(patience); }
  // An update is under way. Any thread.
  bool Changing() const { return session_.Changing(); }

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

  // What an entry that is changed must hold, both texts empty: nothing. None: whatever it likes.
  using Condition = std::optional<platform::SimPhonebookEntry>;

  // CardChannelListener, on the channel's thread.
  void CardInserted() override;
  void CardRemoved() override;
  void CardReset() override;
  void CardTouched() override;
  // What the program is told of such an event.
  enum class News { kRewritten, kGone };
  // Notes an event; on the card's thread it is heeded and told.
  void Hear(std::atomic<bool>& event, News news);

  bool HasSimSession(platform::SimHandle sim) EXCLUDES(lock_);
  bool HasRadioSession(platform::RilHandle ril) EXCLUDES(lock_);
  platform::SimResult Write(platform::SimHandle sim, std::uint32_t storage, std::uint32_t index,
                            const platform::SimPhonebookEntry& entry, const Condition& condition);
  platform::SimResult Delete(platform::SimHandle sim, std::uint32_t storage, std::uint32_t index,
                             const Condition& condition);
  // Runs `operation` on the card's thread, on an outcome of its own, and returns that. What it uses
  // it owns: when the service is abandoned meanwhile, it goes on without its caller.
  template <typename Outcome>
  Outcome OnCard(std::function<void(Outcome& outcome)> operation);
  // The same for a caller whose handle has to be open.
  template <typename Outcome>
  Outcome OnCard(platform::SimHandle sim, bool storageFits,
                 std::function<void(Outcome& outcome)> operation);
  // Posts a radio command: its id, or a negative value.
  template <typename Operation>
  std::int32_t Command(platform::RilHandle ril, Operation operation) EXCLUDES(lock_);

  // The rest runs on the card's thread.
  void HeedEvents();
  // Tells of what was found to be another's work while something else was done.
  void HeedFinds();
  // Calls out of the service, unless the session was closed meanwhile.
  void CallOut(const std::function<bool()>& open,
               const std::function<void()>& call) NO_THREAD_SAFETY_ANALYSIS;
  platform::CardLockState LockState(const PinState& pin);
  platform::CardLockResult Present(std::function<platform::CardLockResult(PinState& pin)> send,
                                   platform::CardLockState& after);
  void NotifySim(std::uint32_t code, std::uint32_t location) EXCLUDES(lock_);
  void NotifyRadio(std::uint32_t code, const void* data, std::uint32_t size) EXCLUDES(lock_);
  void NotifyReady(bool ready);
  void NotifyRewritten();
  RadioAnswer TellChanged();

  CardChannel& channel_;
  ChannelFiles files_;
  CardSession session_;
  RadioCommands commands_;

  // Set where the event is told, heeded before the next command to the card.
  std::atomic<bool> lost_ = false;
  std::atomic<bool> touched_ = false;
  std::atomic<bool> afresh_ = false;  // the program wants nothing from memory
  std::atomic<bool> givenUp_ = false;
  std::atomic<std::uint32_t> generation_ = 0;
  bool changedByOthers_ = false;  // the card's thread alone
  bool shared_ = false;           // the same: other programs reach the card too
  int callsOut_ = 0;              // the same: calls under way, one within the other

  Mutex callLock_;  // held by the card's thread while it calls out, and to close a session
  std::function<void()> codeGuard_;

  Mutex lock_;
  std::map<platform::SimHandle, SimSession> simSessions_ GUARDED_BY(lock_);
  std::map<platform::RilHandle, RadioSession> radioSessions_ GUARDED_BY(lock_);
  std::uint32_t nextHandle_ GUARDED_BY(lock_) = 1;
  std::int32_t nextCommand_ GUARDED_BY(lock_) = 1;

  TaskQueue queue_;  // last: its thread uses all of the above
};

}  // namespace kelpin::device::card
