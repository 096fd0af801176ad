#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/mutex.h"
#include "platform/radio_interface.h"
#include "tests/support/callback_thread.h"
#include "tests/support/fail_plan.h"
#include "tests/support/journal.h"

namespace kelpin::test {

// A radio interface layer over a card in memory, which is empty until told otherwise. Answers come
// from a thread of its own.
class FakeRadio : public platform::RadioInterface {
 public:
  // A linear fixed file: every record has `recordLength` bytes.
  struct File {
    std::uint8_t recordLength = 0;
    std::vector<std::vector<std::uint8_t>> records;
  };

  // One entry of the bulk reads.
  struct Entry {
    std::u16string name;
    std::u16string digits;  // without '+'
    std::uint32_t addressType = 0;
    std::uint32_t numPlan = 1;
    std::optional<std::uint32_t> hidden;  // without a value the parameter mask lacks the member
  };

  // One command as it was sent.
  struct Command {
    std::string name;  // "RIL_DevSpecific" …
    platform::RilHandle ril = 0;
    std::int32_t id = 0;
    std::uint32_t first = 0;  // of RIL_ReadPhonebookEntries
    std::uint32_t last = 0;
    std::uint32_t simCommand = 0;  // of RIL_SendRestrictedSimCmd
    platform::RilSimCmdParameters parameters;
    std::vector<std::uint8_t> data;
    std::uint32_t size = 0;           // as passed by the caller
    std::vector<std::uint8_t> block;  // of RIL_DevSpecific: what the command carries
  };

  enum class Answering {
    kResult,    // the result comes from the radio's thread
    kNever,     // the command was taken; no result comes before the session is closed
    kNotTaken,  // the call returns -1
  };
  struct Answer {
    std::uint32_t code = platform::kRilResultOk;
    std::vector<std::uint8_t> data;
    Answering answering = Answering::kResult;
  };

  FakeRadio(Journal& journal, FailPlan& failures) : journal_(journal), failures_(failures) {}

  std::int32_t RIL_Initialize(std::uint32_t port, platform::RilResultCallback result,
                              platform::RilNotifyCallback notify, std::uint32_t classes,
                              void* parameter, platform::RilHandle& ril) override;
  std::int32_t RIL_Deinitialize(platform::RilHandle ril) override;
  std::int32_t RIL_ReadPhonebookEntries(platform::RilHandle ril, std::uint32_t first,
                                        std::uint32_t last) override;
  std::int32_t RIL_SendRestrictedSimCmd(platform::RilHandle ril, std::uint32_t command,
                                        const platform::RilSimCmdParameters& parameters,
                                        const std::uint8_t* data, std::uint32_t size) override;
  std::int32_t RIL_DevSpecific(platform::RilHandle ril, const void* block,
                               std::uint32_t size) override;

  // What is on the card.
  void SetEntry(std::uint32_t index, Entry entry);
  void ClearEntries();
  // The bulk reads ask `source` for the entries instead, anew with every command, on the caller's
  // thread.
  void SetEntrySource(std::function<std::map<std::uint32_t, Entry>()> source);
  // `file` as restricted commands name it (0x6F40), or as file commands do (a file code).
  void SetFile(std::uint32_t file, File content);
  void SetCodedFile(std::uint32_t code, File content);
  std::optional<File> GetFile(std::uint32_t file) const;
  std::optional<File> GetCodedFile(std::uint32_t code) const;
  void SetPhonebookChanged(std::uint32_t value);
  void SetExtensionBitmap(std::uint32_t recordCount, std::vector<std::uint8_t> bitmap);

  // Asked first for every command; nothing returned is the card's own answer.
  void SetResponder(std::function<std::optional<Answer>(const Command&)> responder);
  // What a command does that the plan fails; an error result unless told otherwise.
  void SetPlannedFailure(Answer answer);
  // Nothing is answered but what the test delivers.
  void SetManual(bool manual);
  // A command's result is delivered, on the radio's thread, before the call returns its id.
  void SetAnswerFirst(bool answerFirst);
  // Closing and opening sessions fails (negative results).
  void SetInitializeFails(bool fails);
  void SetDeinitializeFails(bool fails);

  // Delivers a result on the radio's thread; returns when the callback has run.
  void Deliver(platform::RilHandle ril, std::uint32_t code, std::int32_t id,
               const std::vector<std::uint8_t>& data);
  // Raises a notification on the radio's thread for every session that asked for its class;
  // returns when the callbacks have run.
  void Notify(std::uint32_t code, const void* data, std::uint32_t size);
  // Returns when every result and notification posted so far was delivered.
  void Drain() { callbacks_.Drain(); }

  // Every command taken or refused so far, in order.
  std::vector<Command> Commands() const;
  Command LastCommand() const;
  // Returns when there are at least `count` of them.
  void AwaitCommands(std::size_t count) const;
  void ClearCommands();
  std::size_t OpenSessions() const;

  // A RilSimResponse with status words 90 00, or those given, and the bytes behind it.
  static std::vector<std::uint8_t> SimResponse(const std::vector<std::uint8_t>& bytes,
                                               std::uint32_t statusWord1 = 0x90,
                                               std::uint32_t statusWord2 = 0x00);

 private:
  struct Session {
    platform::RilResultCallback result = nullptr;
    platform::RilNotifyCallback notify = nullptr;
    std::uint32_t classes = 0;
    void* parameter = nullptr;
    std::set<std::int32_t> pending;
    bool closing = false;  // only what is under way is still answered
  };

  std::int32_t Send(Command command);
  // The card's own answer.
  Answer Execute(const Command& command);
  Answer ReadEntries(std::uint32_t first, std::uint32_t last, bool extended);
  static Answer FileCommand(std::map<std::uint32_t, File>& files, std::uint32_t file,
                            std::uint32_t operation, std::uint32_t record,
                            const std::vector<std::uint8_t>& data);
  void PostResult(platform::RilHandle ril, std::uint32_t code, std::int32_t id,
                  std::vector<std::uint8_t> data);

  Journal& journal_;
  FailPlan& failures_;
  mutable Mutex lock_;
  mutable Condition changed_;
  std::map<platform::RilHandle, Session> sessions_ GUARDED_BY(lock_);
  platform::RilHandle lastHandle_ GUARDED_BY(lock_) = 0;
  std::int32_t lastId_ GUARDED_BY(lock_) = 0;
  std::vector<Command> commands_ GUARDED_BY(lock_);
  std::map<std::uint32_t, Entry> entries_ GUARDED_BY(lock_);
  std::function<std::map<std::uint32_t, Entry>()> entrySource_ GUARDED_BY(lock_);
  std::map<std::uint32_t, File> files_ GUARDED_BY(lock_);
  std::map<std::uint32_t, File> codedFiles_ GUARDED_BY(lock_);
  std::uint32_t phonebookChanged_ GUARDED_BY(lock_) = 0;
  std::uint32_t extensionCount_ GUARDED_BY(lock_) = 0;
  std::vector<std::uint8_t> extensionBitmap_ GUARDED_BY(lock_);
  std::function<std::optional<Answer>(const Command&)> responder_ GUARDED_BY(lock_);
  Answer plannedFailure_ GUARDED_BY(lock_){platform::kRilResultError, {}, Answering::kResult};
  bool manual_ GUARDED_BY(lock_) = false;
  bool answerFirst_ GUARDED_BY(lock_) = false;
  bool initializeFails_ GUARDED_BY(lock_) = false;
  bool deinitializeFails_ GUARDED_BY(lock_) = false;
  CallbackThread callbacks_;
};

}  // namespace kelpin::test
