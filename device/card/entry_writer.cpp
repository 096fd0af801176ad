#include "device/card/entry_writer.h"

#include <algorithm>
#include <span>
#include <utility>

#include "device/card/alpha.h"
#include "device/card/phonebook_files.h"
#include "device/card/references.h"
#include "device/card/status_map.h"

namespace kelpin::device::card {
namespace {

using platform::SimResult;
using platform::Succeeded;

WriteOutcome Failed(SimResult result, bool othersWrote = false) {
  WriteOutcome outcome;
  outcome.result = result;
  outcome.changed = false;
  outcome.othersWrote = othersWrote;
  return outcome;
}

// A number as lists and dialogs show it: the place of its '+' differs. Where it has none among the
// digits, what is read has no '+' and the list puts one in front.
bool SameNumber(std::u16string_view address, const DialNumber& number) {
  std::u16string digits(address);
  const bool international = std::erase(digits, u'+') > 0;
  if (digits != number.digits) return false;
  return digits.empty() || international == IsInternational(number.tonNpi) ||
         address == AddressText(number.digits, number.tonNpi);
}

}  // namespace

SimResult EntryWriter::ReadBefore(std::uint32_t location, Before& before) {
  if (!layout_.Find(location, before.place)) return SimResult::kInvalidIndex;
  RecordFile& entries = *before.place.set->adn;
  std::vector<std::uint8_t> known;
  if (const auto bytes = entries.Known(before.place.record)) {
    known.assign(bytes->begin(), bytes->end());
  }
  std::span<const std::uint8_t> data;
  const CardResult result = entries.ReadAfresh(before.place.record, data);
  if (!result.Ok()) return ToSimResult(result);
  before.record.assign(data.begin(), data.end());
  before.othersWrote = !known.empty() && known != before.record;
  before.number = before.View().Number();
  RecordFile* const ext1 = before.place.set->ext1;
  if (before.View().Extension() != 0 && ext1 != nullptr) {
    // The rest of the number may be another's as well.
    if (layout_.OthersMayWrite()) ext1->ForgetRecords();
    const CardResult followed =
        ExtensionFile(*ext1).Follow(before.View().Extension(), before.number.digits, before.chain);
    if (!followed.Ok()) return ToSimResult(followed);
  }
  if (IsExpected(before)) return SimResult::kOk;
  // What the caller knows is from before somebody else's change, whoever has read that here.
  before.othersWrote = true;
  return SimResult::kEntryChanged;
}

bool EntryWriter::IsExpected(const Before& before) const {
  if (!known_) return true;
  const AdnView view = before.View();
  if (view.IsEmpty()) return known_->name.empty() && known_->address.empty();
  return known_->name == view.Name() && SameNumber(known_->address, before.number);
}

TransportError EntryWriter::Announce(const Before& before, EntryChange change) {
  const TransportError lost = marks_.BeforeEntry(before.place, change);
  if (lost != TransportError::kNone || change != EntryChange::kNew) return lost;
  return DropLeftLinks(before.place).Error();
}

CardResult EntryWriter::DropLeftLinks(const EntryPlace& place) {
  const PbrFile* named = place.set->reference.Find(PbrTag::kIap);
  if (named == nullptr) return StatusWord::kOk;
  RecordFile& index = layout_.File(place.set->folder.Child(named->fileId));
  std::span<const std::uint8_t> held;
  CardResult result = index.LearnEmpty();
  if (result.Ok()) result = index.Read(place.record, held);
  if (!result.Ok()) return result;
  const std::vector<std::uint8_t> none(held.size(), 0xFF);
  if (std::equal(held.begin(), held.end(), none.begin(), none.end())) return result;
  return index.Update(place.record, none);
}

WriteOutcome EntryWriter::Put(const Before& before, const std::vector<std::uint8_t>& record) {
  WriteOutcome outcome;
  outcome.intended = record;
  outcome.othersWrote = before.othersWrote;
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

SimResult EntryWriter::Allocate(const Before& before, std::size_t count,
                                std::vector<std::uint8_t>& records) {
  RecordFile* const ext1 = before.place.set->ext1;
  if (ext1 == nullptr) return SimResult::kBadParameter;
  ExtensionFile extensions(*ext1);
  RecordSet used;
  RecordSet referenced;
  if (const CardResult result = extensions.InUse(used); !result.Ok()) return ToSimResult(result);
  RecordSet every;
  every.set();
  const CardResult asked = ExtensionReferences(layout_, *ext1, &before.place, every, referenced);
  if (!asked.Ok()) return ToSimResult(asked);
  const bool reclaim = before.place.set->referenceRecord != 0;
  std::vector<std::uint8_t> found;
  for (const int choice : {0, 1, 2}) {
    if (choice == 1 && reclaim && found.size() < count && layout_.OthersMayWrite()) {
      // What nothing points at may be half of what another program writes, or was pointed at since.
      layout_.ForgetRecords();
      const CardResult again =
          ExtensionReferences(layout_, *ext1, &before.place, every, referenced);
      if (!again.Ok()) return ToSimResult(again);
    }
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
  RecordFile* const ext1 = before.place.set->ext1;
  if (!ExtensionReferences(layout_, *ext1, &before.place, chain, referenced).Ok()) return;
  ExtensionFile extensions(*ext1);
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
    return Failed(result, before.othersWrote);
  }
  const AdnView view = before.View();
  const bool inUse = !view.IsEmpty();
  std::vector<std::uint8_t> record = before.record;
  const auto alpha = std::span(record).first(record.size() - kAdnNumberPart);
  const auto numberPart = std::span(record).last(kAdnNumberPart);

  if ((!inUse || view.Name() != name) && !EncodeAlpha(name, alpha)) {
    return Failed(SimResult::kBadParameter);
  }
  // An address that says nothing of the number's type, as that of *1234 does, is not edited when it
  // is the one that was read.
  const bool asRead = known_ && known_->address == address;
  const bool sameNumber =
      inUse && before.number.digits == wanted.digits &&
      (asRead || IsInternational(before.number.tonNpi) == IsInternational(wanted.tonNpi));
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

  if (record != before.record || !extensions.empty()) {
    const TransportError lost = Announce(before, inUse ? EntryChange::kEdit : EntryChange::kNew);
    if (lost != TransportError::kNone) return Failed(ToSimResult(lost));
  }
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
    return Failed(result, before.othersWrote);
  }
  const bool inUse = !before.View().IsEmpty();
  if (inUse) {
    const TransportError lost = Announce(before, EntryChange::kDelete);
    if (lost != TransportError::kNone) return Failed(ToSimResult(lost));
  }
  WriteOutcome outcome = Put(before, std::vector<std::uint8_t>(before.record.size(), 0xFF));
  outcome.changed = outcome.changed && inUse;
  if (Succeeded(outcome.result)) Release(before, before.chain);
  return outcome;
}

}  // namespace kelpin::device::card
