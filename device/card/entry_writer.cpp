#include "device/card/entry_writer.h"

#include <algorithm>
#include <span>
#include <utility>

#include "device/card/alpha.h"
#include "device/card/phonebook_files.h"
#include "device/card/status_map.h"

namespace kelpin::device::card {
namespace {

using platform::SimResult;
using platform::Succeeded;

constexpr std::uint16_t kEfLastNumbers = 0x6F44;
constexpr std::size_t kAnrExtension = 14;  // byte of EF_ANR that names an EF_EXT1 record

WriteOutcome Failed(SimResult result) {
  WriteOutcome outcome;
  outcome.result = result;
  outcome.changed = false;
  return outcome;
}

// The file or record is not there, or not of the kind that was promised: nothing points from it.
bool HoldsNothing(const CardResult& result) {
  if (result.Error() != TransportError::kNone) return false;
  return result.Missing() || result.Word() == StatusWord::kRecordNotFound ||
         result.Word() == StatusWord::kOutOfRangeGsm ||
         result.Word() == StatusWord::kWrongFileKind ||
         result.Word() == StatusWord::kWrongFileKindGsm;
}

}  // namespace

SimResult EntryWriter::ReadBefore(std::uint32_t location, Before& before) {
  if (!layout_.Find(location, before.place)) return SimResult::kInvalidIndex;
  std::span<const std::uint8_t> data;
  const CardResult result = before.place.set->adn->ReadAfresh(before.place.record, data);
  if (!result.Ok()) return ToSimResult(result);
  before.record.assign(data.begin(), data.end());
  before.number = before.View().Number();
  RecordFile* const ext1 = before.place.set->ext1;
  if (before.View().Extension() == 0 || ext1 == nullptr) return SimResult::kOk;
  return ToSimResult(
      ExtensionFile(*ext1).Follow(before.View().Extension(), before.number.digits, before.chain));
}

WriteOutcome EntryWriter::Put(const Before& before, const std::vector<std::uint8_t>& record) {
  WriteOutcome outcome;
  outcome.intended = record;
  if (record == before.record) {
    outcome.changed = false;
    return outcome;
  }
  const CardResult result = before.place.set->adn->Update(before.place.record, record);
  outcome.result = ToSimResult(result);
  outcome.doubtful = LeavesDoubt(result.Error());
  outcome.changed = result.Ok();
  return outcome;
}

CardResult EntryWriter::AddAdnReferences(RecordFile& adn, std::uint8_t except,
                                         ExtensionFile& extensions, RecordSet& referenced) {
  CardResult result = adn.LearnEmpty();
  for (std::uint8_t record = 1; result.Ok() && record <= adn.Count(); ++record) {
    if (record == except) continue;
    std::span<const std::uint8_t> data;
    result = adn.Read(record, data);
    if (HoldsNothing(result)) {
      result = StatusWord::kOk;
      continue;
    }
    if (!result.Ok()) break;
    const std::uint8_t extension = AdnView(data).Extension();
    if (extension == 0) continue;
    std::u16string ignored;
    RecordSet chain;
    result = extensions.Follow(extension, ignored, chain);
    referenced |= chain;
    referenced.set(extension);
  }
  return result;
}

CardResult EntryWriter::AddAnrReferences(RecordFile& anr, ExtensionFile& extensions,
                                         RecordSet& referenced) {
  CardResult result = anr.LearnEmpty();
  if (result.Ok() && anr.Info().recordLength <= kAnrExtension) return result;
  for (std::uint8_t record = 1; result.Ok() && record <= anr.Count(); ++record) {
    std::span<const std::uint8_t> data;
    result = anr.Read(record, data);
    if (HoldsNothing(result)) {
      result = StatusWord::kOk;
      continue;
    }
    if (!result.Ok()) break;
    const std::uint8_t extension = RecordReference(data[kAnrExtension]);
    if (extension == 0) continue;
    std::u16string ignored;
    RecordSet chain;
    result = extensions.Follow(extension, ignored, chain);
    referenced |= chain;
    referenced.set(extension);
  }
  return result;
}

CardResult EntryWriter::Referenced(const Before& before, RecordSet& referenced) {
  RecordFile* const ext1 = before.place.set->ext1;
  ExtensionFile extensions(*ext1);
  RecordSet found;
  for (const PhonebookSet& set : layout_.Sets()) {
    if (set.ext1 != ext1) continue;
    const bool own = &set == before.place.set;
    CardResult result =
        AddAdnReferences(*set.adn, own ? before.place.record : std::uint8_t{0}, extensions, found);
    if (!result.Ok()) return result;
    for (const PbrFile& file : set.reference.files) {
      if (file.tag != PbrTag::kAnr) continue;
      RecordFile& anr = layout_.File(set.folder.Child(file.fileId));
      result = AddAnrReferences(anr, extensions, found);
      if (!result.Ok() && !HoldsNothing(result)) return result;
    }
  }
  // A GSM card's own numbers and last numbers share its EF_EXT1; on a UICC that file may be the
  // same as the phone book's under another name.
  for (const std::uint16_t id : {kEfMsisdn, kEfLastNumbers}) {
    RecordFile& file = layout_.File({kDfTelecom, id});
    CardResult result = file.Load();
    if (HoldsNothing(result)) continue;
    if (result.Ok() && file.Info().recordLength < kAdnNumberPart) continue;
    if (result.Ok()) result = AddAdnReferences(file, 0, extensions, found);
    if (!result.Ok()) return result;
  }
  referenced = found;
  return StatusWord::kOk;
}

SimResult EntryWriter::Allocate(const Before& before, std::size_t count,
                                std::vector<std::uint8_t>& records) {
  RecordFile* const ext1 = before.place.set->ext1;
  if (ext1 == nullptr) return SimResult::kBadParameter;
  ExtensionFile extensions(*ext1);
  RecordSet used;
  RecordSet referenced;
  if (const CardResult result = extensions.InUse(used); !result.Ok()) return ToSimResult(result);
  if (const CardResult result = Referenced(before, referenced); !result.Ok()) {
    return ToSimResult(result);
  }
  const bool reclaim = before.place.set->referenceRecord != 0;
  std::vector<std::uint8_t> found;
  for (const int choice : {0, 1, 2}) {
    for (std::uint8_t record = 1; record <= extensions.Count(); ++record) {
      if (found.size() == count) break;
      if (referenced[record]) continue;
      const bool own = before.chain[record];
      const bool fits = choice == 0   ? !used[record] && !own
                        : choice == 1 ? reclaim && used[record] && !own
                                      : own;
      if (!fits) continue;
      bool isFree = choice != 0;
      if (choice == 0) {
        // Another program may have taken it since it was read.
        const CardResult result = extensions.CheckFree(record, isFree);
        if (!result.Ok()) return ToSimResult(result);
      }
      if (isFree) found.push_back(record);
    }
  }
  if (found.size() < count) return SimResult::kSimFull;
  records = std::move(found);
  return SimResult::kOk;
}

void EntryWriter::Release(const Before& before, const RecordSet& chain) {
  if (chain.none()) return;
  RecordSet referenced;
  if (!Referenced(before, referenced).Ok()) return;
  ExtensionFile extensions(*before.place.set->ext1);
  for (std::uint8_t record = 1; record <= extensions.Count(); ++record) {
    if (!chain[record] || referenced[record]) continue;
    if (!extensions.Release(record).Ok()) return;
  }
}

WriteOutcome EntryWriter::Write(std::uint32_t location, std::u16string_view name,
                                std::u16string_view address, bool international) {
  DialNumber wanted;
  if (!ParseAddress(address, wanted)) return Failed(SimResult::kBadParameter);
  if (international && !wanted.digits.empty()) wanted.tonNpi = kTonNpiInternational;
  Before before;
  if (const SimResult result = ReadBefore(location, before); !Succeeded(result)) {
    return Failed(result);
  }
  const AdnView view = before.View();
  const bool inUse = !view.IsEmpty();
  std::vector<std::uint8_t> record = before.record;
  const auto alpha = std::span(record).first(record.size() - kAdnNumberPart);
  const auto numberPart = std::span(record).last(kAdnNumberPart);

  if ((!inUse || view.Name() != name) && !EncodeAlpha(name, alpha)) {
    return Failed(SimResult::kBadParameter);
  }
  const bool sameNumber = inUse && before.number.digits == wanted.digits &&
                          IsInternational(before.number.tonNpi) == IsInternational(wanted.tonNpi);
  std::vector<std::uint8_t> extensions;
  if (!sameNumber) {
    const std::size_t digits = wanted.digits.size();
    if (digits > PhonebookFiles::DigitLimit(*before.place.set)) {
      return Failed(SimResult::kBadParameter);
    }
    if (digits > kAdnDigits) {
      const std::size_t count = (digits - kAdnDigits + kExtensionDigits - 1) / kExtensionDigits;
      const SimResult result = Allocate(before, count, extensions);
      if (!Succeeded(result)) return Failed(result);
    }
    DialNumber head = {wanted.digits.substr(0, kAdnDigits), wanted.tonNpi};
    EncodeAdnNumber(head, inUse ? view.Capability() : std::uint8_t{0},
                    extensions.empty() ? std::uint8_t{0} : extensions.front(), numberPart);
  }
  if (AdnView(record).IsEmpty()) return Failed(SimResult::kBadParameter);

  RecordSet taken;
  for (const std::uint8_t extension : extensions) taken.set(extension);
  if (!extensions.empty()) {
    const CardResult result =
        ExtensionFile(*before.place.set->ext1)
            .WriteChain(extensions, std::u16string_view(wanted.digits).substr(kAdnDigits));
    if (!result.Ok()) {
      if (result.Error() == TransportError::kNone) Release(before, taken & ~before.chain);
      return Failed(ToSimResult(result));
    }
  }
  WriteOutcome outcome = Put(before, record);
  outcome.changed = outcome.changed || (!extensions.empty() && Succeeded(outcome.result));
  if (!Succeeded(outcome.result)) {
    if (!outcome.doubtful) Release(before, taken & ~before.chain);
  } else if (!sameNumber) {
    Release(before, before.chain & ~taken);
  }
  return outcome;
}

WriteOutcome EntryWriter::Delete(std::uint32_t location) {
  Before before;
  if (const SimResult result = ReadBefore(location, before); !Succeeded(result)) {
    return Failed(result);
  }
  const bool inUse = !before.View().IsEmpty();
  WriteOutcome outcome = Put(before, std::vector<std::uint8_t>(before.record.size(), 0xFF));
  outcome.changed = outcome.changed && inUse;
  if (Succeeded(outcome.result)) Release(before, before.chain);
  return outcome;
}

}  // namespace kelpin::device::card
