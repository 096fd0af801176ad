#include "tests/support/fake_radio.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "tests/support/call_text.h"

namespace kelpin::test {
namespace {

using platform::RilHandle;

template <typename T>
void Append(std::vector<std::uint8_t>& out, const T& value) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(&value);
  out.insert(out.end(), bytes, bytes + sizeof(T));
}

std::uint32_t Word(const std::vector<std::uint8_t>& block, std::size_t number) {
  std::uint32_t word = 0;
  if (4 * number + 4 <= block.size()) std::memcpy(&word, block.data() + 4 * number, 4);
  return word;
}

void CopyText(char16_t (&to)[platform::kRilTextLength], std::u16string_view from) {
  const std::size_t length = std::min(from.size(), platform::kRilTextLength - 1);
  std::copy_n(from.begin(), length, to);
  to[length] = u'\0';
}

template <typename Record>
Record EntryRecord(std::uint32_t index, const FakeRadio::Entry& entry) {
  Record record;
  record.params = 7;
  record.index = index;
  CopyText(record.address, entry.digits);
  record.addressType = entry.addressType;
  record.numPlan = entry.numPlan;
  CopyText(record.text, entry.name);
  return record;
}

}  // namespace

std::vector<std::uint8_t> FakeRadio::SimResponse(const std::vector<std::uint8_t>& bytes,
                                                 std::uint32_t statusWord1,
                                                 std::uint32_t statusWord2) {
  platform::RilSimResponse header;
  header.params = 3;  // both status words are valid
  header.statusWord1 = statusWord1;
  header.statusWord2 = statusWord2;
  std::vector<std::uint8_t> response;
  Append(response, header);
  response.insert(response.end(), bytes.begin(), bytes.end());
  return response;
}

std::int32_t FakeRadio::RIL_Initialize(std::uint32_t port, platform::RilResultCallback result,
                                       platform::RilNotifyCallback notify, std::uint32_t classes,
                                       void* parameter, RilHandle& ril) {
  journal_.Add(CallText("RIL_Initialize", port, Hex(classes)));
  ril = 0;
  const bool planned = failures_.Fails("RIL_Initialize");
  MutexLock lock(lock_);
  if (planned || initializeFails_ || port != platform::kRilPort) return -1;
  ril = ++lastHandle_;
  sessions_[ril] = {result, notify, classes, parameter, {}, false};
  return 0;
}

std::int32_t FakeRadio::RIL_Deinitialize(RilHandle ril) {
  journal_.Add(CallText("RIL_Deinitialize", ril));
  const bool planned = failures_.Fails("RIL_Deinitialize");
  Session session;
  {
    MutexLock lock(lock_);
    if (planned || deinitializeFails_) return -1;
    const auto found = sessions_.find(ril);
    if (found == sessions_.end() || found->second.closing) return -1;
    found->second.closing = true;
  }
  callbacks_.Drop(ril);
  {
    MutexLock lock(lock_);
    session = sessions_[ril];
    sessions_.erase(ril);
  }
  if (!session.pending.empty()) {
    callbacks_.Post(ril, [session] {
      for (const std::int32_t id : session.pending) {
        session.result(platform::kRilResultError, id, nullptr, 0, session.parameter);
      }
    });
    callbacks_.Drain();
  }
  return 0;
}

std::int32_t FakeRadio::RIL_ReadPhonebookEntries(RilHandle ril, std::uint32_t first,
                                                 std::uint32_t last) {
  journal_.Add(CallText("RIL_ReadPhonebookEntries", ril, first, last));
  Command command;
  command.name = "RIL_ReadPhonebookEntries";
  command.ril = ril;
  command.first = first;
  command.last = last;
  return Send(std::move(command));
}

std::int32_t FakeRadio::RIL_SendRestrictedSimCmd(RilHandle ril, std::uint32_t simCommand,
                                                 const platform::RilSimCmdParameters& parameters,
                                                 const std::uint8_t* data, std::uint32_t size) {
  journal_.Add(CallText("RIL_SendRestrictedSimCmd", ril, simCommand, Hex(parameters.fileId),
                        parameters.parameter1, parameters.parameter2, parameters.parameter3, size));
  Command command;
  command.name = "RIL_SendRestrictedSimCmd";
  command.ril = ril;
  command.simCommand = simCommand;
  command.parameters = parameters;
  if (data != nullptr) command.data.assign(data, data + size);
  command.size = size;
  return Send(std::move(command));
}

std::int32_t FakeRadio::RIL_DevSpecific(RilHandle ril, const void* block, std::uint32_t size) {
  Command command;
  command.name = "RIL_DevSpecific";
  command.ril = ril;
  command.size = size;
  const auto* bytes = static_cast<const std::uint8_t*>(block);
  command.block.assign(bytes, bytes + size);
  const std::uint32_t word = Word(command.block, 0);
  if (word == platform::kRilDevReadPhonebook) command.block.assign(bytes, bytes + 12);
  if (word == platform::kRilDevSimFile) {
    journal_.Add(CallText("RIL_DevSpecific", ril, word, Word(command.block, 2),
                          Word(command.block, 3), Word(command.block, 4)));
  } else if (word == platform::kRilDevReadPhonebook) {
    journal_.Add(
        CallText("RIL_DevSpecific", ril, word, Word(command.block, 1), Word(command.block, 2)));
  } else {
    journal_.Add(CallText("RIL_DevSpecific", ril, word));
  }
  return Send(std::move(command));
}

std::int32_t FakeRadio::Send(Command command) {
  const bool planned = failures_.Fails(command.name);
  std::function<std::optional<Answer>(const Command&)> responder;
  std::optional<Answer> answer;
  bool answerFirst = false;
  {
    MutexLock lock(lock_);
    command.id = ++lastId_;
    commands_.push_back(command);
    const auto session = sessions_.find(command.ril);
    if (session == sessions_.end() || session->second.closing) {
      answer = Answer{0, {}, Answering::kNotTaken};
    } else {
      // Known before anybody can deliver the result.
      session->second.pending.insert(command.id);
      if (planned) answer = plannedFailure_;
    }
    responder = responder_;
    answerFirst = answerFirst_;
    changed_.notify_all();
    if (!answer && manual_) answer = Answer{0, {}, Answering::kNever};
  }
  if (!answer && responder) answer = responder(command);
  if (!answer) answer = Execute(command);
  switch (answer->answering) {
    case Answering::kResult:
      PostResult(command.ril, answer->code, command.id, std::move(answer->data));
      if (answerFirst) callbacks_.Drain();
      break;
    case Answering::kNever:
      break;
    case Answering::kNotTaken: {
      MutexLock lock(lock_);
      const auto session = sessions_.find(command.ril);
      if (session != sessions_.end()) session->second.pending.erase(command.id);
      return -1;
    }
  }
  return command.id;
}

void FakeRadio::PostResult(RilHandle ril, std::uint32_t code, std::int32_t id,
                           std::vector<std::uint8_t> data) {
  MutexLock lock(lock_);
  const auto found = sessions_.find(ril);
  if (found == sessions_.end() || found->second.closing) return;
  const Session& session = found->second;
  callbacks_.Post(ril, [this, ril, code, id, data = std::move(data), callback = session.result,
                        parameter = session.parameter] {
    {
      MutexLock inner(lock_);
      const auto open = sessions_.find(ril);
      if (open != sessions_.end()) open->second.pending.erase(id);
    }
    callback(code, id, data.empty() ? nullptr : data.data(),
             static_cast<std::uint32_t>(data.size()), parameter);
  });
}

FakeRadio::Answer FakeRadio::Execute(const Command& command) {
  if (command.name == "RIL_ReadPhonebookEntries") {
    return ReadEntries(command.first, command.last, false);
  }
  if (command.name == "RIL_SendRestrictedSimCmd") {
    MutexLock lock(lock_);
    const platform::RilSimCmdParameters& parameters = command.parameters;
    const auto file = files_.find(parameters.fileId);
    if (file != files_.end() && command.simCommand != platform::kRilSimGetResponse &&
        (parameters.parameter2 != platform::kRilSimAbsoluteMode ||
         parameters.parameter3 != file->second.recordLength)) {
      return {platform::kRilResultError, SimResponse({}, 0x67, 0x00), Answering::kResult};
    }
    return FileCommand(files_, parameters.fileId, command.simCommand, parameters.parameter1,
                       command.data);
  }
  Answer answer;
  switch (Word(command.block, 0)) {
    case platform::kRilDevSimFile: {
      const std::uint32_t length = std::min<std::uint32_t>(Word(command.block, 7), 256);
      std::vector<std::uint8_t> record(command.block.begin() + 32,
                                       command.block.begin() + 32 + length);
      MutexLock lock(lock_);
      return FileCommand(codedFiles_, Word(command.block, 3), Word(command.block, 2),
                         Word(command.block, 4), record);
    }
    case platform::kRilDevReadPhonebook:
      return ReadEntries(Word(command.block, 1), Word(command.block, 2), true);
    case platform::kRilDevPhonebookChanged: {
      MutexLock lock(lock_);
      Append(answer.data, std::exchange(phonebookChanged_, 0U));
      return answer;
    }
    case platform::kRilDevFreeExtensionRecords: {
      MutexLock lock(lock_);
      Append(answer.data, extensionCount_);
      Append(answer.data, static_cast<std::uint32_t>(extensionBitmap_.size()));
      answer.data.insert(answer.data.end(), extensionBitmap_.begin(), extensionBitmap_.end());
      return answer;
    }
    default:
      return {0, {}, Answering::kNotTaken};
  }
}

FakeRadio::Answer FakeRadio::ReadEntries(std::uint32_t first, std::uint32_t last, bool extended) {
  std::map<std::uint32_t, Entry> entries;
  std::function<std::map<std::uint32_t, Entry>()> source;
  {
    MutexLock lock(lock_);
    source = entrySource_;
    if (!source && first <= last) {
      entries.insert(entries_.lower_bound(first), entries_.upper_bound(last));
    }
  }
  if (source) entries = source();
  Answer answer;
  for (auto at = entries.lower_bound(first); at != entries.end() && at->first <= last; ++at) {
    if (!extended) {
      Append(answer.data, EntryRecord<platform::RilPhonebookEntry>(at->first, at->second));
      continue;
    }
    auto record = EntryRecord<platform::RilPhonebookEntryEx>(at->first, at->second);
    if (at->second.hidden) {
      record.params |= platform::kRilEntryHidden;
      record.hidden = *at->second.hidden;
    }
    Append(answer.data, record);
  }
  return answer;
}

FakeRadio::Answer FakeRadio::FileCommand(std::map<std::uint32_t, File>& files, std::uint32_t file,
                                         std::uint32_t operation, std::uint32_t record,
                                         const std::vector<std::uint8_t>& data) {
  const auto found = files.find(file);
  if (found == files.end()) {
    return {platform::kRilResultError, SimResponse({}, 0x94, 0x04), Answering::kResult};
  }
  File& content = found->second;
  if (operation == platform::kRilSimGetResponse) {
    const std::size_t size = content.records.size() * content.recordLength;
    std::vector<std::uint8_t> header(15);
    header[2] = static_cast<std::uint8_t>(size >> 8);
    header[3] = static_cast<std::uint8_t>(size & 0xFF);
    header[4] = static_cast<std::uint8_t>(file >> 8);
    header[5] = static_cast<std::uint8_t>(file & 0xFF);
    header[6] = 0x04;   // an elementary file
    header[12] = 0x02;  // two bytes follow
    header[13] = 0x01;  // linear fixed
    header[14] = content.recordLength;
    return {platform::kRilResultOk, SimResponse(header), Answering::kResult};
  }
  if (record < 1 || record > content.records.size()) {
    return {platform::kRilResultError, SimResponse({}, 0x94, 0x02), Answering::kResult};
  }
  std::vector<std::uint8_t>& bytes = content.records[record - 1];
  if (operation == platform::kRilSimReadRecord) {
    return {platform::kRilResultOk, SimResponse(bytes), Answering::kResult};
  }
  if (operation == platform::kRilSimUpdateRecord && data.size() == content.recordLength) {
    bytes = data;
    return {platform::kRilResultOk, SimResponse({}), Answering::kResult};
  }
  return {platform::kRilResultError, SimResponse({}, 0x67, 0x00), Answering::kResult};
}

void FakeRadio::SetEntry(std::uint32_t index, Entry entry) {
  MutexLock lock(lock_);
  entries_.insert_or_assign(index, std::move(entry));
}

void FakeRadio::ClearEntries() {
  MutexLock lock(lock_);
  entries_.clear();
}

void FakeRadio::SetEntrySource(std::function<std::map<std::uint32_t, Entry>()> source) {
  MutexLock lock(lock_);
  entrySource_ = std::move(source);
}

void FakeRadio::SetFile(std::uint32_t file, File content) {
  MutexLock lock(lock_);
  files_.insert_or_assign(file, std::move(content));
}

void FakeRadio::SetCodedFile(std::uint32_t code, File content) {
  MutexLock lock(lock_);
  codedFiles_.insert_or_assign(code, std::move(content));
}

std::optional<FakeRadio::File> FakeRadio::GetFile(std::uint32_t file) const {
  MutexLock lock(lock_);
  const auto found = files_.find(file);
  return found == files_.end() ? std::nullopt : std::optional<File>(found->second);
}

std::optional<FakeRadio::File> FakeRadio::GetCodedFile(std::uint32_t code) const {
  MutexLock lock(lock_);
  const auto found = codedFiles_.find(code);
  return found == codedFiles_.end() ? std::nullopt : std::optional<File>(found->second);
}

void FakeRadio::SetPhonebookChanged(std::uint32_t value) {
  MutexLock lock(lock_);
  phonebookChanged_ = value;
}

void FakeRadio::SetExtensionBitmap(std::uint32_t recordCount, std::vector<std::uint8_t> bitmap) {
  MutexLock lock(lock_);
  extensionCount_ = recordCount;
  extensionBitmap_ = std::move(bitmap);
}

void FakeRadio::SetResponder(std::function<std::optional<Answer>(const Command&)> responder) {
  MutexLock lock(lock_);
  responder_ = std::move(responder);
}

void FakeRadio::SetPlannedFailure(Answer answer) {
  MutexLock lock(lock_);
  plannedFailure_ = std::move(answer);
}

void FakeRadio::SetManual(bool manual) {
  MutexLock lock(lock_);
  manual_ = manual;
}

void FakeRadio::SetAnswerFirst(bool answerFirst) {
  MutexLock lock(lock_);
  answerFirst_ = answerFirst;
}

void FakeRadio::SetInitializeFails(bool fails) {
  MutexLock lock(lock_);
  initializeFails_ = fails;
}

void FakeRadio::SetDeinitializeFails(bool fails) {
  MutexLock lock(lock_);
  deinitializeFails_ = fails;
}

void FakeRadio::Deliver(RilHandle ril, std::uint32_t code, std::int32_t id,
                        const std::vector<std::uint8_t>& data) {
  PostResult(ril, code, id, data);
  callbacks_.Drain();
}

void FakeRadio::Notify(std::uint32_t code, const void* data, std::uint32_t size) {
  std::vector<std::uint8_t> bytes(size);
  if (size > 0) std::memcpy(bytes.data(), data, size);
  {
    MutexLock lock(lock_);
    for (const auto& [handle, session] : sessions_) {
      if (session.closing || session.notify == nullptr ||
          (session.classes & code & 0xFFFF0000) == 0)
        continue;
      callbacks_.Post(handle,
                      [callback = session.notify, parameter = session.parameter, code, bytes] {
                        callback(code, bytes.empty() ? nullptr : bytes.data(),
                                 static_cast<std::uint32_t>(bytes.size()), parameter);
                      });
    }
  }
  callbacks_.Drain();
}

std::vector<FakeRadio::Command> FakeRadio::Commands() const {
  MutexLock lock(lock_);
  return commands_;
}

FakeRadio::Command FakeRadio::LastCommand() const {
  MutexLock lock(lock_);
  return commands_.empty() ? Command{} : commands_.back();
}

void FakeRadio::AwaitCommands(std::size_t count) const {
  MutexLock lock(lock_);
  while (commands_.size() < count) changed_.wait(lock_);
}

void FakeRadio::ClearCommands() {
  MutexLock lock(lock_);
  commands_.clear();
}

std::size_t FakeRadio::OpenSessions() const {
  MutexLock lock(lock_);
  return sessions_.size();
}

}  // namespace kelpin::test
