#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "platform/devices.h"
#include "platform/kernel_objects.h"
#include "platform/mutex.h"
#include "platform/radio_interface.h"

namespace kelpin::sim {

inline constexpr std::uint32_t kRilTimeout = 60000;  // milliseconds for one command

inline constexpr std::u16string_view kOwnNumbersEventName = u"OEM_MY_RIL_MSISDNS_EVENT_OEM";
inline constexpr std::u16string_view kPhonebookEventName = u"OEM_MY_RIL_SIMPB_EVENT_OEM";

// The bytes behind the header of a SIM command's response; none when the response is no longer than
// the header.
std::span<const std::uint8_t> RecordBytes(std::span<const std::uint8_t> response);

// One user of the radio interface layer: a session, and commands that wait for their results.
// Commands may come from any thread; each client sends one at a time and the others wait their
// turn. A command fails when there is no session, when the radio does not take it, when no result
// comes within kRilTimeout, when the result is not success, or when the session is closed
// meanwhile. No command is sent twice. `response` is written on success only.
//
// A class derived from this one calls Close() in its destructor if it overrides a callback.
class RilClient {
 public:
  // On the radio's thread: the result of a command, and a notification. `data` lives until the
  // return. A result for another command than the last one only leaves its code.
  virtual void OnResult(std::uint32_t code, std::int32_t commandId, const void* data,
                        std::uint32_t size);
  // Tells the watchers of own numbers and of the phone book that these were rewritten.
  virtual void OnNotify(std::uint32_t code, const void* data, std::uint32_t size);

  RilClient(platform::RadioInterface& radio, platform::KernelObjects& kernel,
            platform::Devices& devices);
  virtual ~RilClient();  // closes
  RilClient(const RilClient&) = delete;
  RilClient& operator=(const RilClient&) = delete;

  // True when the session is there. `classes` are the notifications it is told of (kRilClass…).
  bool Open(std::uint32_t classes);
  // Ends the session and every wait for a result. 1 when the radio ended it, else 0. Not from a
  // callback.
  int Close();
  bool IsOpen() const { return ril_ != 0; }

  // Waits until the last command has its result: the result's code, or 0 when it did not come.
  std::uint32_t Wait(std::uint32_t milliseconds);

  // Asks for the measures of a linear fixed file (0x6F40 …): record length and count and what
  // follows from them.
  bool GetFileInfo(std::uint32_t fileId);
  // Records as long as GetFileInfo said, 1-based. `response` is the whole response, header first
  // (RecordBytes).
  bool ReadRecord(std::uint32_t fileId, std::uint32_t record, std::vector<std::uint8_t>& response);
  // `data` is one record. Tells the radio driver afterwards; whether that worked does not matter.
  bool UpdateRecord(std::uint32_t fileId, std::uint32_t record, std::span<const std::uint8_t> data);

  // Files of the USIM phone book, by file code. Responses as of ReadRecord. `refusal` may be null;
  // it gets the response of a command that was answered with an error, and nothing else.
  bool GetExtResponse(std::uint32_t code, std::vector<std::uint8_t>& response,
                      std::vector<std::uint8_t>* refusal = nullptr);
  bool ReadExtRecord(std::uint32_t code, std::uint32_t record, std::vector<std::uint8_t>& response,
                     std::vector<std::uint8_t>* refusal = nullptr);
  // `data` is one record of at most 256 bytes; `fill` stands behind it in the command. Nothing is
  // ever written to file code 0, the reference file.
  bool WriteExtRecord(std::uint32_t code, std::uint32_t record, std::span<const std::uint8_t> data,
                      std::uint8_t fill = 0);

  // The used locations first..last: RilPhonebookEntry records.
  bool ReadPhonebookEntries(std::uint32_t first, std::uint32_t last,
                            std::vector<std::uint8_t>& response);
  // The same as RilPhonebookEntryEx records.
  bool ReadPhonebookEntriesEx(std::uint32_t first, std::uint32_t last,
                              std::vector<std::uint8_t>& response);
  // `value` is 1 when the phone book was changed since the radio was last asked.
  bool PhonebookChanged(std::uint32_t& value);

  // As GetFileInfo found them; 0 before.
  std::uint32_t RecordLength() const { return recordLength_; }
  std::uint32_t RecordCount() const { return recordCount_; }
  std::uint32_t MaxDigits() const { return maxDigits_; }
  std::uint32_t MaxAlphaLength() const { return maxAlphaLength_; }

  // Wait until the own numbers, or the phone book, were rewritten, or another program said so.
  // kAbandoned: wait no more.
  platform::WaitResult WaitOwnNumbers(std::uint32_t milliseconds = platform::kInfinite);
  platform::WaitResult WaitPhonebook(std::uint32_t milliseconds = platform::kInfinite);

  // A copy of the last result's data, and the code of the last result, whatever its command.
  std::vector<std::uint8_t> Response() const;
  std::uint32_t ResultCode() const;
  // 1 between the radio's word that the phone book was rewritten and its next word that the phone
  // book is ready.
  std::uint32_t PhonebookReloadPending() const { return phonebookReloadPending_; }

  // What the radio calls back: `parameter` is the client.
  static void OnRilResult(std::uint32_t code, std::int32_t commandId, const void* data,
                          std::uint32_t size, void* parameter);
  static void OnRilNotify(std::uint32_t code, const void* data, std::uint32_t size,
                          void* parameter);

 protected:
  // Sends one command and waits for its result. `send` makes the call and returns what it returned;
  // `response` may be null, and so may `refusal`, which is written when the answer is an error.
  bool Execute(const std::function<std::int32_t(platform::RilHandle)>& send,
               std::vector<std::uint8_t>* response, std::vector<std::uint8_t>* refusal = nullptr);
  // A command of the device's own: its first word is the command. `size` is what the radio is told.
  bool DevSpecific(const void* block, std::uint32_t size, std::vector<std::uint8_t>* response,
                   std::vector<std::uint8_t>* refusal = nullptr);

 private:
  struct EarlyResult {
    std::uint32_t code = 0;
    std::int32_t commandId = 0;
    std::vector<std::uint8_t> data;
  };

  void Complete(std::uint32_t code, std::vector<std::uint8_t> data) REQUIRES(lock_);
  void NotifyDriver();

  platform::RadioInterface& radio_;
  platform::Devices& devices_;

  std::vector<std::uint8_t> response_ GUARDED_BY(lock_);
  std::atomic<std::uint32_t> recordLength_ = 0;
  std::atomic<std::uint32_t> recordCount_ = 0;
  std::atomic<std::uint32_t> maxDigits_ = 0;
  std::atomic<std::uint32_t> maxAlphaLength_ = 0;
  const std::unique_ptr<platform::Event> ownNumbersEvent_;
  const std::unique_ptr<platform::Event> phonebookEvent_;

 protected:
  std::uint32_t userWord1_ = 0;  // the derived class's own

 private:
  std::atomic<platform::RilHandle> ril_ = 0;
  std::int32_t pendingId_ GUARDED_BY(lock_) = 0;
  const std::unique_ptr<platform::Event> completionEvent_;
  std::uint32_t resultCode_ GUARDED_BY(lock_) = 0;
  std::atomic<std::uint32_t> phonebookReloadPending_ = 0;

 protected:
  std::uint32_t userWord2_ = 0;  // the derived class's own

 private:
  Mutex gate_;  // held by the command that is under way
  mutable Mutex lock_;
  bool executing_ GUARDED_BY(lock_) = false;
  // The call has not returned its id yet: results wait in earlyResults_ until it has.
  bool calling_ GUARDED_BY(lock_) = false;
  bool aborted_ GUARDED_BY(lock_) = false;  // the session went while a command was under way
  std::vector<EarlyResult> earlyResults_ GUARDED_BY(lock_);
  std::uint32_t completedCode_ GUARDED_BY(lock_) = 0;  // of the awaited command's result
};

}  // namespace kelpin::sim
