#include "editor/entry_reader.h"

#include <algorithm>
#include <span>
#include <utility>
#include <vector>

#include "app/app_state.h"
#include "sim/ril_client.h"
#include "sim/sim_text.h"

namespace kelpin::editor {
namespace {

using sim::FieldResult;
using sim::FieldSlot;

constexpr std::size_t kNameLimit = app::kTextRoom - 1;
constexpr std::uint8_t kEndOfGroups = 0;
constexpr std::uint8_t kNoGroup = 0xFF;

// Reads an existing entry, a command after the other.
class EntryReader {
 public:
  EntryReader(app::AppState& state, const std::atomic<bool>& stop)
      : state_(state), book_(state.extPhonebook), stop_(stop) {}

  // Each is false when nothing more is to be read.
  bool ReadBasics(EntryContent& content);
  bool ReadField(const ExtendedField& field, std::uint32_t location, FieldContent& content);
  bool ReadGroup(std::uint32_t location, GroupContent& group);

 private:
  FieldResult ReadExtendedField(const ExtendedField& field, std::uint32_t location,
                                FieldContent& content);
  bool ReadName(std::uint32_t file, std::uint32_t id, std::uint32_t length, std::u16string& name);

  app::AppState& state_;
  sim::RilExtPhonebook& book_;
  const std::atomic<bool>& stop_;
};

bool EntryReader::ReadBasics(EntryContent& content) {
  if (stop_) {
    return false;
  }
  content.failure = state_.simPhonebook.ReadEntry(content.location, &content.name, &content.number);
  content.hasBasics = Succeeded(content.failure);
  return content.hasBasics;
}

FieldResult EntryReader::ReadExtendedField(const ExtendedField& field, std::uint32_t location,
                                           FieldContent& content) {
  if (!field.isNumber) {
    return book_.ReadTextField(field.slot, location, state_.settings.Enable_ASCII != 0,
                               content.record, content.text);
  }
  sim::NumberField number;
  const FieldResult result = book_.ReadNumberField(field.slot, location, content.record, number);
  if (result == FieldResult::kRead) {
    content.text = std::move(number.number);
    content.nameId = number.nameId;
  }
  return result;
}

bool EntryReader::ReadField(const ExtendedField& field, std::uint32_t location,
                            FieldContent& content) {
  std::uint32_t set = 0;
  std::uint32_t record = 0;
  if (stop_) {
    return false;
  }
  if (book_.Place(location, set, record) == 0) {
    return true;
  }
  const sim::SlotLayout file = book_.SlotInUse(set, field.slot);
  if (file.recordCount == 0) {
    return true;
  }
  FieldContent read;
  const FieldResult result = ReadExtendedField(field, location, read);
  // A text in a form that is not read shows as none, and stays unless another is typed.
  read.unread = result == FieldResult::kUnsupported;
  if (result != FieldResult::kRead && !read.unread) {
    content.available = file.usedCount < file.recordCount;
    content.unread = result == FieldResult::kFailed;
    return true;
  }
  if (read.nameId != 0 && state_.settings.Enable_AAS != 0 &&
      !ReadName(sim::kNumberNameFile, read.nameId, book_.NumberNameLength(), read.label)) {
    return false;
  }
  read.available = true;
  content = std::move(read);
  return true;
}

bool EntryReader::ReadName(std::uint32_t file, std::uint32_t id, std::uint32_t length,
                           std::u16string& name) {
  std::vector<std::uint8_t> response;
  if (stop_ || !book_.ReadExtRecord(file, id, response)) {
    return false;
  }
  // A form that is not supported reads as no text.
  sim::DecodeAlphaRaw(response, name, length, kNameLimit, 0);
  return true;
}

bool EntryReader::ReadGroup(std::uint32_t location, GroupContent& group) {
  std::uint32_t set = 0;
  std::uint32_t record = 0;
  std::vector<std::uint8_t> response;
  if (stop_) {
    return false;
  }
  if (!book_.HasGroups() || book_.Place(location, set, record) == 0 ||
      book_.GroupRecordLength(set) == 0 ||
      !book_.ReadExtRecord(sim::GroupFileCode(set), record, response)) {
    return true;
  }
  GroupContent read;
  const std::span<const std::uint8_t> bytes = sim::RecordBytes(response);
  read.count = bytes.size();
  std::copy_n(bytes.begin(), std::min(bytes.size(), kGroupIds), read.groups.ids.begin());
  bool first = true;
  for (const std::uint8_t id : read.groups.ids) {
    if (id == kEndOfGroups || id == kNoGroup) {
      break;
    }
    std::u16string name;
    if (!ReadName(sim::kGroupNameFile, id, book_.GroupNameLength(), name)) {
      return false;
    }
    if (!first) {
      read.groups.text += u", ";
    }
    first = false;
    read.groups.text += name;
  }
  read.groups.text.resize(std::min(read.groups.text.size(), kGroupTextRoom - 1));
  read.available = true;
  group = std::move(read);
  return true;
}

void FindExtensions(app::AppState& state, EntryContent& content) {
  // Both are 0 when the card does not say.
  state.extPhonebook.GetFreeExtRecords(content.firstExtension, content.secondExtension);
}

}  // namespace

bool HasRoomForNew(const sim::RilExtPhonebook& book, std::uint32_t set, FieldSlot slot) {
  const sim::SlotLayout file = book.SlotInUse(set, slot);
  std::uint32_t used = file.usedCount;
  // Devices in the field compare a shared file of third numbers with what the second numbers use.
  if (slot == FieldSlot::kThirdNumber && book.Slot(set, slot).shared != 0) {
    used = book.Slot(0, FieldSlot::kSecondNumber).usedCount;
  }
  return used < file.recordCount;
}

EntryContent PrepareNewEntry(app::AppState& state) {
  const sim::RilExtPhonebook& book = state.extPhonebook;
  EntryContent content;
  FindExtensions(state, content);
  content.location = state.simPhonebook.FirstFreeSlot();
  content.complete = true;
  if (content.location == 0) {
    return content;
  }
  std::uint32_t set = 0;
  std::uint32_t record = 0;
  const bool placed = book.Place(content.location, set, record) != 0;
  for (std::size_t i = 0; i < kExtendedFieldCount; ++i) {
    const ExtendedField& field = ExtendedFields()[i];
    content.fields[i].available =
        placed && IsShown(field, state.settings) && HasRoomForNew(book, set, field.slot);
  }
  content.numberNames = book.HasNumberNames();
  content.group.available = book.HasGroups();
  return content;
}

EntryContent PrepareNoEntry(app::AppState& state) {
  EntryContent content;
  FindExtensions(state, content);
  return content;
}

EntryContent ReadEntryContent(app::AppState& state, std::uint32_t location,
                              const std::atomic<bool>& stop) {
  EntryContent content;
  FindExtensions(state, content);
  content.location = location;
  EntryReader reader(state, stop);
  if (!reader.ReadBasics(content)) {
    return content;
  }
  bool more = true;
  for (std::size_t i = 0; more && i < kExtendedFieldCount; ++i) {
    const ExtendedField& field = ExtendedFields()[i];
    more = !IsShown(field, state.settings) || reader.ReadField(field, location, content.fields[i]);
  }
  // Whether numbers can be named goes by the groups here.
  content.numberNames = more && state.extPhonebook.HasGroups();
  if (more && state.settings.Enable_GAS != 0) {
    more = reader.ReadGroup(location, content.group);
  }
  content.complete = more;
  if (!more && !stop) {
    content.failure = state.simPhonebook.ReadCaps();
  }
  return content;
}

}  // namespace kelpin::editor
