#include "device/card/radio_commands.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "device/card/adn_record.h"
#include "device/card/references.h"
#include "device/card/shown_text.h"
#include "device/card/status_map.h"
#include "device/card/told_extension.h"

namespace kelpin::device::card {
namespace {

using platform::SimResult;
using platform::Succeeded;

// Which fields of a bulk-read entry count: location and number, type and plan, text.
constexpr std::uint32_t kEntryFields = 0x7;
constexpr std::uint8_t kPlanMask = 0x0F;

template <typename Record>
void Append(std::vector<std::uint8_t>& data, const Record& record) {
  const std::size_t at = data.size();
  data.resize(at + sizeof(record));
  std::memcpy(data.data() + at, &record, sizeof(record));
}

template <std::size_t size>
void CopyText(char16_t (&out)[size], std::u16string_view text) {
  const std::size_t length = std::min(text.size(), size - 1);
  std::copy_n(text.begin(), length, out);
}

template <typename Record>
Record Fill(std::uint32_t location, const PhonebookEntry& entry) {
  Record record;
  record.params = kEntryFields;
  record.index = location;
  CopyText(record.address, entry.number.digits);
  record.addressType = IsInternational(entry.number.tonNpi) ? 1 : 0;
  record.numPlan = entry.number.tonNpi & kPlanMask;
  CopyText(record.text, entry.name);
  return record;
}

RadioAnswer SimAnswer(StatusWord word, std::span<const std::uint8_t> bytes) {
  RadioAnswer answer;
  answer.code = Succeeded(word) ? platform::kRilResultOk : platform::kRilResultError;
  platform::RilSimResponse header;
  header.params = 0x3;  // both status words are valid
  header.statusWord1 = FirstByte(word);
  header.statusWord2 = SecondByte(word);
  Append(answer.data, header);
  answer.data.insert(answer.data.end(), bytes.begin(), bytes.end());
  return answer;
}

// What the card refused, with its status word; without one when it was not asked at all.
RadioAnswer Refused(const CardResult& said) {
  if (said.Error() != TransportError::kNone || said.Ok()) return RadioAnswer{};
  return SimAnswer(said.Word(), {});
}

bool IsExtension(const CardLayout& layout, const RecordFile& file) {
  return std::ranges::any_of(layout.Sets(),
                             [&](const PhonebookSet& set) { return set.ext1 == &file; });
}

// A record as clients read it.
std::vector<std::uint8_t> Told(CardLayout& layout, RecordFile& file, std::uint8_t record,
                               std::span<const std::uint8_t> bytes) {
  std::vector<std::uint8_t> told(bytes.begin(), bytes.end());
  if (bytes.empty() || bytes[0] == 0xFF) return told;
  if (IsLeftBehind(layout, file, record)) return std::vector<std::uint8_t>(bytes.size(), 0xFF);
  if (const auto text = FindShownText(layout, file)) return ToldRecord(*text, bytes);
  const PhonebookSet* const set = FindNumbers(layout, file);
  if (set != nullptr && told.size() > kNumberExtension) {
    told[kNumberExtension] = ToldExtension(layout, *set, told[kNumberExtension]);
  }
  return told;
}

}  // namespace

RadioAnswer RadioCommands::ReadEntries(std::uint32_t first, std::uint32_t last, bool extended) {
  RadioAnswer answer;
  PhonebookFiles& book = session_.Book();
  const SimResult result = session_.Read([&] {
    answer.data.clear();
    const std::uint32_t end = std::min(last, book.Layout().Total());
    for (std::uint32_t location = std::max(first, 1U); location <= end; ++location) {
      PhonebookEntry entry;
      const SimResult read = book.Read(location, entry);
      if (read == SimResult::kEntryEmpty) continue;
      if (!Succeeded(read)) return read;
      if (!extended) {
        Append(answer.data, Fill<platform::RilPhonebookEntry>(location, entry));
        continue;
      }
      bool hidden = false;
      if (const SimResult asked = book.IsHidden(location, hidden); !Succeeded(asked)) return asked;
      auto record = Fill<platform::RilPhonebookEntryEx>(location, entry);
      record.params |= platform::kRilEntryHidden;
      record.hidden = hidden ? 1 : 0;
      Append(answer.data, record);
    }
    return SimResult::kOk;
  });
  if (Succeeded(result)) {
    if (first <= 1) session_.Accept();
    answer.code = platform::kRilResultOk;
  } else {
    answer.data.clear();
  }
  return answer;
}

RadioAnswer RadioCommands::OnFile(std::uint32_t operation, const Find& find,
                                  std::span<const std::uint8_t> data) {
  switch (operation) {
    case platform::kRilSimGetResponse:
      return GetResponse(find);
    case platform::kRilSimReadRecord:
      return ReadRecord(find);
    case platform::kRilSimUpdateRecord:
      return UpdateRecord(find, data);
    default:
      return RadioAnswer{};
  }
}

RadioAnswer RadioCommands::GetResponse(const Find& find) {
  RadioAnswer answer;
  CardResult said = TransportError::kNoCard;
  const SimResult result = session_.Read([&] {
    RecordFile* file = nullptr;
    std::uint8_t record = 0;
    said = find(file, record);
    if (said.Ok()) answer = SimAnswer(StatusWord::kOk, GsmResponse(file->Info()));
    return ToSimResult(said);
  });
  return Succeeded(result) ? answer : Refused(said);
}

RadioAnswer RadioCommands::ReadRecord(const Find& find) {
  RadioAnswer answer;
  CardLayout& layout = session_.Book().Layout();
  CardResult said = TransportError::kNoCard;
  const SimResult result = session_.Read([&] {
    RecordFile* file = nullptr;
    std::uint8_t record = 0;
    said = find(file, record);
    // One search tells the free records apart from those worth a command each.
    if (said.Ok() && !file->Known(record)) said = file->LearnEmpty();
    std::span<const std::uint8_t> bytes;
    if (said.Ok()) said = file->Read(record, bytes);
    if (!said.Ok()) return ToSimResult(said);
    answer = SimAnswer(StatusWord::kOk, Told(layout, *file, record, bytes));
    return SimResult::kOk;
  });
  return Succeeded(result) ? answer : Refused(said);
}

CardResult RadioCommands::IsUnclaimed(RecordFile& file, std::uint8_t record, bool& unclaimed) {
  CardLayout& layout = session_.Book().Layout();
  std::span<const std::uint8_t> bytes;
  if (const CardResult result = file.Read(record, bytes); !result.Ok()) return result;
  unclaimed = !bytes.empty() && bytes[0] != 0xFF && IsUnlinked(layout, file, record);
  if (!IsExtension(layout, file) || ExtensionIsFree(bytes)) return StatusWord::kOk;
  RecordSet wanted;
  wanted.set(record);
  RecordSet referenced;
  const CardResult result = ExtensionReferences(layout, file, nullptr, wanted, referenced);
  if (result.Ok()) unclaimed = !referenced[record];
  return result;
}

CardResult RadioCommands::Confirm(RecordFile& file, std::uint8_t record,
                                  std::span<const std::uint8_t> data, bool& mine) {
  CardLayout& layout = session_.Book().Layout();
  if (!layout.OthersMayWrite() || !file.Known(record)) return StatusWord::kOk;
  if (const CardResult result = file.Confirm(record, mine); !result.Ok() || !mine) return result;
  // One that is given back was let go of just before.
  if (data.empty() || data[0] == 0xFF) return StatusWord::kOk;
  bool unclaimed = false;
  CardResult result = IsUnclaimed(file, record, unclaimed);
  if (!result.Ok() || !unclaimed) return result;
  // It was told as free; an entry of another program's may refer to it by now.
  layout.ForgetRecords();
  result = IsUnclaimed(file, record, mine);
  return result;
}

CardResult RadioCommands::Translate(RecordFile& file, std::uint8_t record,
                                    std::vector<std::uint8_t>& data) {
  const CardLayout& layout = session_.Book().Layout();
  if (IsExtension(layout, file) && data.size() < file.Info().recordLength) {
    // Clients write the thirteen bytes of the standard.
    data.resize(file.Info().recordLength, 0xFF);
  }
  if (data.empty() || data[0] == 0xFF) return StatusWord::kOk;
  const PhonebookSet* const set = FindNumbers(layout, file);
  if (set != nullptr && data.size() > kNumberExtension) {
    const auto extension = HeldExtension(layout, *set, data[kNumberExtension]);
    if (!extension) return StatusWord::kConditionsNotMet;
    data[kNumberExtension] = *extension;
  }
  const auto text = FindShownText(layout, file);
  if (!text) return StatusWord::kOk;
  std::span<const std::uint8_t> held;
  const CardResult result = file.Read(record, held);
  if (result.Ok()) data = WantedRecord(*text, held, data);
  return result;
}

RadioAnswer RadioCommands::UpdateRecord(const Find& find, std::span<const std::uint8_t> wanted) {
  std::vector<std::uint8_t> data;
  CardResult said = TransportError::kNoCard;
  bool mine = true;
  bool sent = false;
  SimResult result = session_.Change([&]() -> CardResult {
    RecordFile* file = nullptr;
    std::uint8_t record = 0;
    said = find(file, record);
    if (!said.Ok()) return said;
    if (said = Confirm(*file, record, wanted, mine); !said.Ok() || !mine) return said;
    data.assign(wanted.begin(), wanted.end());
    if (said = Translate(*file, record, data); !said.Ok()) return said;
    said = session_.Book().Marks().BeforeRecord(*file, record, data);
    if (said.Error() != TransportError::kNone) return said;
    sent = true;
    said = file->Update(record, data);
    return said;
  });
  if (sent && LeavesDoubt(said.Error())) {
    // The answer was lost, the update perhaps not: the card itself tells.
    bool written = false;
    result = session_.Read([&] {
      RecordFile* file = nullptr;
      std::uint8_t record = 0;
      CardResult asked = find(file, record);
      std::span<const std::uint8_t> bytes;
      if (asked.Ok()) asked = file->ReadAfresh(record, bytes);
      written = asked.Ok() && !session_.Swapped() &&
                std::equal(bytes.begin(), bytes.end(), data.begin(), data.end());
      return ToSimResult(asked);
    });
    if (Succeeded(result) && written) return SimAnswer(StatusWord::kOk, {});
    return RadioAnswer{};
  }
  if (Succeeded(result) && !mine) {
    session_.NoteOthersWrote();
    return SimAnswer(StatusWord::kConditionsNotMet, {});
  }
  return Succeeded(result) ? SimAnswer(said.Word(), {}) : Refused(said);
}

RadioAnswer RadioCommands::RestrictedCommand(std::uint32_t command,
                                             const platform::RilSimCmdParameters& parameters,
                                             std::span<const std::uint8_t> data) {
  const auto id = static_cast<std::uint16_t>(std::min<std::uint32_t>(parameters.fileId, 0xFFFF));
  const bool onRecord = command != platform::kRilSimGetResponse;
  if (onRecord && parameters.parameter2 != platform::kRilSimAbsoluteMode) return RadioAnswer{};
  CardLayout& layout = session_.Book().Layout();
  RadioAnswer answer = OnFile(
      command,
      [&](RecordFile*& file, std::uint8_t& record) -> CardResult {
        const CardResult result = layout.FindId(id, file);
        if (!result.Ok()) return result;
        if (!onRecord) return result;
        if (parameters.parameter1 == 0 || parameters.parameter1 > file->Count()) {
          return StatusWord::kRecordNotFound;
        }
        if (parameters.parameter3 != file->Info().recordLength) return StatusWord::kWrongLength;
        record = static_cast<std::uint8_t>(parameters.parameter1);
        return result;
      },
      data);
  const bool written =
      command == platform::kRilSimUpdateRecord && answer.code == platform::kRilResultOk;
  answer.ownNumbersChanged = written && id == kEfMsisdn;
  if (written && id == kEfExt1) {
    // On many cards the same records as the phone book's own EF_EXT1, under another path.
    for (const PhonebookSet& set : layout.Sets()) {
      if (set.ext1 != nullptr) set.ext1->ForgetRecords();
    }
  }
  return answer;
}

RadioAnswer RadioCommands::FileCommand(const platform::RilSimFileCommand& command) {
  const bool update = command.operation == platform::kRilSimUpdateRecord;
  const bool onRecord = command.operation != platform::kRilSimGetResponse;
  if (onRecord && command.mode != platform::kRilSimAbsoluteMode) return RadioAnswer{};
  // Entries are changed through the SIM interface, the layout of the phone book by nobody.
  if (update && (command.fileCode == kCodePbr || command.fileCode == kCodeAdn)) {
    return SimAnswer(StatusWord::kConditionsNotMet, {});
  }
  const std::size_t length = std::min<std::size_t>(command.length, sizeof(command.data));
  CardLayout& layout = session_.Book().Layout();
  const auto find = [&](RecordFile*& file, std::uint8_t& record) -> CardResult {
    if (onRecord && command.record == 0) return StatusWord::kRecordNotFound;
    const CardResult result = layout.FindCode(command.fileCode, command.record, file, record);
    if (result.Ok()) {
      if (const PhonebookSet* const set = FindNumbers(layout, *file))
        setInHand_ = set->firstLocation;
    }
    return result;
  };
  return OnFile(command.operation, find, std::span(command.data).first(update ? length : 0));
}

const PhonebookSet* RadioCommands::SetInHand() {
  EntryPlace place;
  return session_.Book().Layout().Find(setInHand_, place) ? place.set : nullptr;
}

RadioAnswer RadioCommands::FreeExtensionRecords() {
  RadioAnswer answer;
  const SimResult result = session_.Read([&] {
    std::uint32_t count = 0;
    RecordSet used;
    const SimResult asked = session_.Book().Extensions(SetInHand(), count, used);
    if (!Succeeded(asked)) return asked;
    answer.data.clear();
    Append(answer.data, count);
    const std::uint32_t bytes = (count + 7) / 8;
    Append(answer.data, bytes);
    const std::size_t map = answer.data.size();
    // The places behind the last record count as taken.
    answer.data.resize(map + bytes, 0xFF);
    for (std::uint32_t record = 1; record <= count; ++record) {
      const std::uint32_t bit = record - 1;
      if (!used[record]) {
        answer.data[map + bit / 8] &= static_cast<std::uint8_t>(~(0x80U >> (bit % 8)));
      }
    }
    return SimResult::kOk;
  });
  if (Succeeded(result)) {
    answer.code = platform::kRilResultOk;
  } else {
    answer.data.clear();
  }
  return answer;
}

}  // namespace kelpin::device::card
