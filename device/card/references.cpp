#include "device/card/references.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "device/card/adn_record.h"
#include "device/card/told_extension.h"

namespace kelpin::device::card {
namespace {

constexpr std::uint16_t kEfLastNumbers = 0x6F44;

// The file or record is not there, or not of the kind that was promised: nothing points from it.
bool HoldsNothing(const CardResult& result) {
  if (result.Error() != TransportError::kNone) return false;
  return result.Missing() || result.Word() == StatusWord::kRecordNotFound ||
         result.Word() == StatusWord::kOutOfRangeGsm ||
         result.Word() == StatusWord::kWrongFileKind ||
         result.Word() == StatusWord::kWrongFileKindGsm;
}

bool IsBlank(std::span<const std::uint8_t> record) {
  return record.empty() || record[0] == 0xFF;
}

// Asks the card for no more than it takes to find a free record.
bool AllInUse(RecordFile& file) {
  if (!file.LearnEmpty().Ok()) return false;
  for (std::uint8_t record = 1; record <= file.Count(); ++record) {
    const auto known = file.Known(record);
    if (known && IsBlank(*known)) return false;
  }
  for (std::uint8_t record = 1; record <= file.Count(); ++record) {
    std::span<const std::uint8_t> data;
    const CardResult result = file.Read(record, data);
    if (result.Ok() ? IsBlank(data) : !HoldsNothing(result)) return false;
  }
  return true;
}

// The byte of a set's EF_IAP that refers to the records of a file.
struct Link {
  const PhonebookSet* set = nullptr;
  std::size_t byte = 0;
};

std::vector<Link> LinksTo(const CardLayout& layout, const RecordFile& file) {
  std::vector<Link> links;
  for (const PhonebookSet& set : layout.Sets()) {
    std::size_t position = 0;
    for (const PbrFile& named : set.reference.files) {
      if (named.group != PbrGroup::kType2) continue;
      const std::size_t byte = position++;
      if (set.folder.Child(named.fileId) == file.Path()) links.push_back({&set, byte});
    }
  }
  return links;
}

// Adds what one byte of each record of a set's EF_IAP refers to. False when it cannot be read.
bool AddLinks(CardLayout& layout, const PhonebookSet& set, std::size_t byte, RecordSet& linked) {
  const PbrFile* named = set.reference.Find(PbrTag::kIap);
  if (named == nullptr) return false;
  RecordFile& index = layout.File(set.folder.Child(named->fileId));
  if (!index.LearnEmpty().Ok() || byte >= index.Info().recordLength) return false;
  for (std::uint8_t record = 1; record <= index.Count(); ++record) {
    std::span<const std::uint8_t> data;
    if (!index.Read(record, data).Ok()) return false;
    linked.set(RecordReference(data[byte]));
  }
  return true;
}

class ExtensionSearch {
 public:
  ExtensionSearch(CardLayout& layout, RecordFile& ext1, const RecordSet& wanted)
      : layout_(layout), extensions_(ext1), wanted_(wanted) {}

  const RecordSet& Found() const { return found_; }
  bool FoundAll() const { return (wanted_ & ~found_).none(); }

  CardResult AddEntries(RecordFile& entries, std::uint8_t except) {
    return AddAll(entries, false, nullptr, except);
  }

  // The second and third numbers of a set.
  CardResult AddNumbers(const PhonebookSet& set) {
    for (const PbrFile& file : set.reference.files) {
      if (file.tag != PbrTag::kAnr) continue;
      RecordFile& numbers = layout_.File(set.folder.Child(file.fileId));
      RecordSet linked;
      const bool type2 = LinkedRecords(layout_, numbers, linked);
      const CardResult result = AddAll(numbers, true, type2 ? &linked : nullptr, 0);
      if (!result.Ok() && !HoldsNothing(result)) return result;
    }
    return StatusWord::kOk;
  }

 private:
  // `numbers`: records of EF_ANR, not of EF_ADN's kind. `linked`: those that count; null: all.
  CardResult AddAll(RecordFile& file, bool numbers, const RecordSet* linked, std::uint8_t except) {
    CardResult result = file.LearnEmpty();
    if (result.Ok() && numbers && file.Info().recordLength <= kNumberExtension) return result;
    for (std::uint8_t record = 1; result.Ok() && record <= file.Count() && !FoundAll(); ++record) {
      if (record == except || (linked != nullptr && !(*linked)[record])) continue;
      std::span<const std::uint8_t> data;
      result = file.Read(record, data);
      if (HoldsNothing(result)) {
        result = StatusWord::kOk;
        continue;
      }
      if (!result.Ok()) break;
      const std::uint8_t extension =
          numbers ? RecordReference(data[kNumberExtension]) : AdnView(data).Extension();
      if (extension == 0) continue;
      std::u16string ignored;
      RecordSet chain;
      result = extensions_.Follow(extension, ignored, chain);
      found_ |= chain;
      found_.set(extension);
    }
    return result;
  }

  CardLayout& layout_;
  ExtensionFile extensions_;
  const RecordSet& wanted_;
  RecordSet found_;
};

}  // namespace

bool IsLinkedFile(const CardLayout& layout, const RecordFile& file) {
  bool linked = false;
  for (const PhonebookSet& set : layout.Sets()) {
    for (const PbrFile& named : set.reference.files) {
      if (set.folder.Child(named.fileId) != file.Path()) continue;
      if (named.group != PbrGroup::kType2) return false;
      linked = true;
    }
  }
  return linked;
}

bool LinkedRecords(CardLayout& layout, const RecordFile& file, RecordSet& linked) {
  if (!IsLinkedFile(layout, file)) return false;
  RecordSet found;
  bool complete = true;
  for (const Link& link : LinksTo(layout, file)) {
    complete = complete && AddLinks(layout, *link.set, link.byte, found);
  }
  if (!complete) found.set();
  linked = found;
  return true;
}

bool IsUnlinked(CardLayout& layout, const RecordFile& file, std::uint8_t record) {
  for (const Link& link : LinksTo(layout, file)) {
    const PbrFile* named = link.set->reference.Find(PbrTag::kIap);
    if (named == nullptr) continue;
    const RecordFile& index = layout.File(link.set->folder.Child(named->fileId));
    for (std::uint32_t entry = 1; entry <= index.Count(); ++entry) {
      const auto known = index.Known(static_cast<std::uint8_t>(entry));
      if (known && link.byte < known->size() && (*known)[link.byte] == record) return false;
    }
  }
  RecordSet linked;
  return LinkedRecords(layout, file, linked) && !linked[record];
}

bool IsLeftBehind(CardLayout& layout, RecordFile& file, std::uint8_t record) {
  if (!IsLinkedFile(layout, file) || !AllInUse(file)) return false;
  return IsUnlinked(layout, file, record);
}

CardResult ExtensionReferences(CardLayout& layout, RecordFile& ext1, const EntryPlace* except,
                               const RecordSet& wanted, RecordSet& referenced) {
  ExtensionSearch search(layout, ext1, wanted);
  for (const PhonebookSet& set : layout.Sets()) {
    if (set.ext1 != &ext1) continue;
    const bool own = except != nullptr && &set == except->set;
    const CardResult result = search.AddEntries(*set.adn, own ? except->record : std::uint8_t{0});
    if (!result.Ok()) return result;
  }
  for (const PhonebookSet& set : layout.Sets()) {
    if (set.ext1 != &ext1 || search.FoundAll()) continue;
    if (const CardResult result = search.AddNumbers(set); !result.Ok()) return result;
  }
  // A GSM card's own numbers and last numbers share its EF_EXT1; on a UICC that file may be the
  // same as the phone book's under another name.
  for (const std::uint16_t id : {kEfMsisdn, kEfLastNumbers}) {
    if (search.FoundAll()) break;
    RecordFile& file = layout.File({kDfTelecom, id});
    CardResult result = file.Load();
    if (HoldsNothing(result)) continue;
    if (result.Ok() && file.Info().recordLength < kAdnNumberPart) continue;
    if (result.Ok()) result = search.AddEntries(file, 0);
    if (!result.Ok()) return result;
  }
  referenced = search.Found();
  return StatusWord::kOk;
}

}  // namespace kelpin::device::card
