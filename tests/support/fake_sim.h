#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/mutex.h"
#include "platform/sim_interface.h"
#include "tests/support/callback_thread.h"
#include "tests/support/fail_plan.h"
#include "tests/support/journal.h"

namespace kelpin::test {

// A SIM's basic phone book in memory: 10 empty locations, numbers of 20 digits, names of 14
// characters, until told otherwise.
class FakeSim : public platform::SimInterface {
 public:
  FakeSim(Journal& journal, FailPlan& failures) : journal_(journal), failures_(failures) {}

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
  // Where the condition holds, the calls without one.
  platform::SimResult SimWritePhonebookEntryIf(platform::SimHandle sim, std::uint32_t storage,
                                               std::uint32_t index,
                                               const platform::SimPhonebookEntry& entry,
                                               const platform::SimPhonebookEntry* known) override;
  platform::SimResult SimDeletePhonebookEntryIf(platform::SimHandle sim, std::uint32_t storage,
                                                std::uint32_t index,
                                                const platform::SimPhonebookEntry* known) override;
  platform::SimResult SimGetSmsStorageStatus(platform::SimHandle sim, std::uint32_t storage,
                                             std::uint32_t& used, std::uint32_t& total) override;

  // What is on the card. Changes made here raise no notice.
  void SetCapacity(std::uint32_t total);
  void SetLengths(std::uint32_t maxAddressLength, std::uint32_t maxTextLength);
  void SetSms(std::uint32_t used, std::uint32_t total);
  void SetEntry(std::uint32_t index, std::u16string_view name, std::u16string_view number);
  // Any record, one that no driver should give included.
  void SetEntry(std::uint32_t index, const platform::SimPhonebookEntry& entry);
  void RemoveEntry(std::uint32_t index);
  // The entries in use, as last written (an entry of SetEntry has the address type of its first
  // character), by location.
  std::map<std::uint32_t, platform::SimPhonebookEntry> Entries() const;
  std::u16string Name(std::uint32_t index) const;    // empty when the location is
  std::u16string Number(std::uint32_t index) const;  // empty when the location is

  // What the status reports instead of the number of entries.
  void SetUsed(std::optional<std::uint32_t> used);
  // Every call of this name ("SimReadPhonebookEntry") answers `result` and does nothing; kOk makes
  // it work again.
  void SetResult(std::string_view call, platform::SimResult result);
  // What a call answers that the plan fails.
  void SetPlannedFailure(platform::SimResult result);
  // Whether writes and deletes through a session are told to the sessions with notifications.
  void SetOwnNotices(bool on);

  // Raises a notice on the platform's thread for every session with notifications; returns when
  // the callbacks have run.
  void Notify(std::uint32_t code, const void* data, std::uint32_t size);
  void NotifyChange(std::uint32_t code, std::uint32_t index,
                    std::uint32_t storage = platform::kSimPhonebookStorageSim);
  // Returns when every notice raised so far was delivered.
  void Drain() { callbacks_.Drain(); }

  std::size_t OpenSessions() const;

 private:
  struct Session {
    platform::SimNotifyCallback callback = nullptr;
    void* parameter = nullptr;
  };

  // kOk when the call may go on: known session, neither told nor planned to fail.
  platform::SimResult Admit(std::string_view call, platform::SimHandle sim);
  bool Holds(std::uint32_t index, const platform::SimPhonebookEntry* known) const;
  platform::SimResult CheckIndex(std::uint32_t storage, std::uint32_t index) REQUIRES(lock_);
  void Post(std::uint32_t code, const void* data, std::uint32_t size) REQUIRES(lock_);
  // In the order of the changes, so under the lock that they are made under.
  void PostOwn(std::uint32_t code, std::uint32_t index) REQUIRES(lock_);

  Journal& journal_;
  FailPlan& failures_;
  mutable Mutex lock_;
  std::map<platform::SimHandle, Session> sessions_ GUARDED_BY(lock_);
  platform::SimHandle lastHandle_ GUARDED_BY(lock_) = 0;
  std::map<std::uint32_t, platform::SimPhonebookEntry> entries_ GUARDED_BY(lock_);
  std::uint32_t total_ GUARDED_BY(lock_) = 10;
  std::uint32_t maxAddressLength_ GUARDED_BY(lock_) = 20;
  std::uint32_t maxTextLength_ GUARDED_BY(lock_) = 14;
  std::uint32_t smsUsed_ GUARDED_BY(lock_) = 0;
  std::uint32_t smsTotal_ GUARDED_BY(lock_) = 0;
  std::optional<std::uint32_t> reportedUsed_ GUARDED_BY(lock_);
  std::map<std::string, platform::SimResult, std::less<>> results_ GUARDED_BY(lock_);
  platform::SimResult plannedFailure_ GUARDED_BY(lock_) = platform::SimResult::kSimFailure;
  bool ownNotices_ GUARDED_BY(lock_) = true;
  CallbackThread callbacks_;
};

}  // namespace kelpin::test
