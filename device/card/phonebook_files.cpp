#include "device/card/phonebook_files.h"

#include <algorithm>
#include <span>

#include "device/card/adn_record.h"
#include "device/card/references.h"
#include "device/card/status_map.h"
#include "device/card/told_extension.h"

namespace kelpin::device::card {
namespace {

using platform::SimResult;
using platform::Succeeded;

constexpr std::uint8_t kMessageInUse = 0x01;  // EF_SMS status byte, bit 1
constexpr std::size_t kLongNumbers = 2;       // of an entry beside its own

// The file's description promised more records than the card has.
bool NoSuchRecord(const CardResult& result) {
  return result.Error() == TransportError::kNone && (result.Word() == StatusWord::kRecordNotFound ||
                                                     result.Word() == StatusWord::kOutOfRangeGsm);
}

}  // namespace

void PhonebookFiles::Forget() {
  layout_.Forget();
  marks_.Forget();
}

std::uint32_t PhonebookFiles::DigitLimit(const PhonebookSet& set) {
  return set.ext1 != nullptr && set.ext1->Count() > 0 ? kAdnDigits + kExtensionDigits : kAdnDigits;
}

CardResult PhonebookFiles::LearnUsed(const PhonebookSet& set) {
  if (const CardResult result = set.adn->LearnEmpty(); !result.Ok()) return result;
  if (!set.adn->CannotSearch()) return StatusWord::kOk;
  for (std::uint8_t record = 1; record <= set.adn->Count(); ++record) {
    std::span<const std::uint8_t> data;
    const CardResult result = set.adn->Read(record, data);
    if (!result.Ok() && !NoSuchRecord(result)) return result;
  }
  return StatusWord::kOk;
}

SimResult PhonebookFiles::Status(std::uint32_t& used, std::uint32_t& total) {
  if (const CardResult result = layout_.Discover(); !result.Ok()) return ToSimResult(result);
  std::uint32_t count = 0;
  for (const PhonebookSet& set : layout_.Sets()) {
    if (const CardResult result = LearnUsed(set); !result.Ok()) return ToSimResult(result);
    for (std::uint8_t record = 1; record <= set.adn->Count(); ++record) {
      const auto known = set.adn->Known(record);
      // Not known where a search told the empty ones: in use.
      const bool inUse = known ? !AdnView(*known).IsEmpty() : !set.adn->CannotSearch();
      if (inUse) ++count;
    }
  }
  used = count;
  total = layout_.Total();
  return SimResult::kOk;
}

SimResult PhonebookFiles::Limits(std::uint32_t& digits, std::uint32_t& text) {
  if (const CardResult result = layout_.Discover(); !result.Ok()) return ToSimResult(result);
  std::uint32_t fewestDigits = kAdnDigits + kExtensionDigits;
  std::uint32_t shortest = 0xFF;
  for (const PhonebookSet& set : layout_.Sets()) {
    fewestDigits = std::min(fewestDigits, DigitLimit(set));
    const std::uint32_t alpha = std::uint32_t{set.adn->Info().recordLength} - kAdnNumberPart;
    shortest = std::min(shortest, alpha);
  }
  digits = fewestDigits;
  text = shortest;
  return SimResult::kOk;
}

SimResult PhonebookFiles::Read(std::uint32_t location, PhonebookEntry& entry) {
  if (const CardResult result = layout_.Discover(); !result.Ok()) return ToSimResult(result);
  EntryPlace place;
  if (!layout_.Find(location, place)) return SimResult::kInvalidIndex;
  if (const CardResult result = place.set->adn->LearnEmpty(); !result.Ok()) {
    return ToSimResult(result);
  }
  std::span<const std::uint8_t> data;
  const CardResult result = place.set->adn->Read(place.record, data);
  if (NoSuchRecord(result)) return SimResult::kEntryEmpty;
  if (!result.Ok()) return ToSimResult(result);
  const AdnView view(data);
  if (view.IsEmpty()) return SimResult::kEntryEmpty;
  PhonebookEntry read = {view.Name(), view.Number()};
  if (view.Extension() != 0 && place.set->ext1 != nullptr) {
    RecordSet chain;
    const CardResult followed =
        ExtensionFile(*place.set->ext1).Follow(view.Extension(), read.number.digits, chain);
    if (!followed.Ok()) return ToSimResult(followed);
  }
  entry = std::move(read);
  return SimResult::kOk;
}

CardResult PhonebookFiles::LearnShown(RecordFile& control) {
  // Not hidden, with and without the mark of a change (TS 31.102 4.4.2.5).
  std::vector<std::uint8_t> pattern(control.Info().recordLength, 0x00);
  if (const CardResult result = control.Learn(pattern); !result.Ok()) return result;
  pattern[0] = 0x01;
  return control.Learn(pattern);
}

SimResult PhonebookFiles::IsHidden(std::uint32_t location, bool& hidden) {
  if (const CardResult result = layout_.Discover(); !result.Ok()) return ToSimResult(result);
  EntryPlace place;
  if (!layout_.Find(location, place)) return SimResult::kInvalidIndex;
  const PbrFile* file = place.set->reference.Find(PbrTag::kPbc);
  if (file == nullptr || file->group != PbrGroup::kType1) {
    hidden = false;
    return SimResult::kOk;
  }
  RecordFile& control = layout_.File(place.set->folder.Child(file->fileId));
  CardResult result = control.Load();
  if (result.Ok() && control.Info().recordLength >= 2 && !control.Known(place.record)) {
    result = LearnShown(control);
  }
  std::span<const std::uint8_t> data;
  if (result.Ok()) result = control.Read(place.record, data);
  if (result.Error() != TransportError::kNone) return ToSimResult(result);
  // FF was never written.
  hidden = result.Ok() && data.size() >= 2 && data[1] != 0x00 && data[1] != 0xFF;
  return SimResult::kOk;
}

SimResult PhonebookFiles::Extensions(const PhonebookSet* set, std::uint32_t& count,
                                     RecordSet& used) {
  if (const CardResult result = layout_.Discover(); !result.Ok()) return ToSimResult(result);
  if (set == nullptr) set = &layout_.Sets().front();
  std::uint32_t total = 0;
  for (const RecordFile* const file : layout_.Extensions()) total += file->Count();
  total = std::min<std::uint32_t>(total, kMaxRecords);
  RecordSet taken;
  taken.set();
  if (set->ext1 != nullptr) {
    RecordSet inUse;
    if (const SimResult result = ExtensionsInUse(*set, inUse); !Succeeded(result)) return result;
    const std::uint32_t before = ExtensionsBefore(layout_, *set);
    for (std::uint32_t record = 1; record <= set->ext1->Count(); ++record) {
      if (before + record <= total) taken[before + record] = inUse[record];
    }
  }
  count = total;
  used = taken;
  return SimResult::kOk;
}

SimResult PhonebookFiles::ExtensionsInUse(const PhonebookSet& set, RecordSet& used) {
  RecordSet inUse;
  const CardResult result = ExtensionFile(*set.ext1).InUse(inUse);
  if (!result.Ok()) return ToSimResult(result);
  const std::size_t freeRecords = set.ext1->Count() - inUse.count();
  if (freeRecords < kLongNumbers && set.referenceRecord != 0) {
    // Left behind by a change that was cut short. On a GSM card others may keep numbers there.
    RecordSet referenced;
    const CardResult asked = ExtensionReferences(layout_, *set.ext1, nullptr, inUse, referenced);
    if (asked.Error() != TransportError::kNone) return ToSimResult(asked);
    if (asked.Ok()) inUse &= referenced;
  }
  used = inUse;
  return SimResult::kOk;
}

SimResult PhonebookFiles::Messages(std::uint32_t& used, std::uint32_t& total) {
  if (const CardResult result = layout_.Discover(); !result.Ok()) return ToSimResult(result);
  RecordFile* file = nullptr;
  if (const CardResult result = layout_.FindMessages(file); !result.Ok()) {
    return result.Missing() ? SimResult::kNoMessageStorage : ToSimResult(result);
  }
  // The network stores messages without telling us: nothing from memory.
  file->Forget();
  CardResult result = file->Load();
  if (!result.Ok()) return ToSimResult(result);
  std::vector<std::uint8_t> neverUsed(file->Info().recordLength, 0xFF);
  neverUsed[0] = 0x00;
  result = file->Learn(neverUsed);
  std::uint32_t count = 0;
  for (std::uint8_t record = 1; result.Ok() && record <= file->Count(); ++record) {
    std::span<const std::uint8_t> data;
    result = file->Read(record, data);
    // FF stands for free on cards that were never written.
    if (result.Ok() && data[0] != 0xFF && (data[0] & kMessageInUse) != 0) ++count;
  }
  if (!result.Ok()) return ToSimResult(result);
  used = count;
  total = file->Count();
  return SimResult::kOk;
}

}  // namespace kelpin::device::card
