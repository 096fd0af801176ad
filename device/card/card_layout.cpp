#include "device/card/card_layout.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "device/card/adn_record.h"
#include "device/card/tlv.h"

namespace kelpin::device::card {
namespace {

// The 3GPP provider id and the USIM's application code (TS 101 220 annex E).
constexpr std::array<std::uint8_t, 7> kUsimAid = {0xA0, 0x00, 0x00, 0x00, 0x87, 0x10, 0x02};
constexpr std::uint8_t kApplicationTemplate = 0x61;
constexpr std::uint8_t kApplicationId = 0x4F;
constexpr std::size_t kLongestAid = 16;

// The card said so of this one record or file; others may be well.
bool IsDamage(const CardResult& result) {
  if (result.Error() != TransportError::kNone || result.Ok()) return false;
  switch (result.Word()) {
    case StatusWord::kRecordNotFound:
    case StatusWord::kOutOfRangeGsm:
    case StatusWord::kWrongFileKind:
    case StatusWord::kWrongFileKindGsm:
      return true;
    default:
      return result.Missing();
  }
}

std::optional<std::vector<std::uint8_t>> UsimAid(std::span<const std::uint8_t> record) {
  const auto application = FindTlv(record, kApplicationTemplate);
  if (!application) return std::nullopt;
  const auto aid = FindTlv(*application, kApplicationId);
  if (!aid || aid->size() < kUsimAid.size() || aid->size() > kLongestAid ||
      !std::equal(kUsimAid.begin(), kUsimAid.end(), aid->begin())) {
    return std::nullopt;
  }
  return std::vector<std::uint8_t>(aid->begin(), aid->end());
}

}  // namespace

RecordFile& CardLayout::File(const FilePath& path) {
  return store_.try_emplace(path, files_, path).first->second;
}

void CardLayout::Forget() {
  discovered_ = false;
  application_ = false;
  sets_.clear();
  store_.clear();
}

void CardLayout::ForgetRecords() {
  for (auto& [path, file] : store_) file.ForgetRecords();
}

CardResult CardLayout::SelectUsim() {
  application_ = false;
  std::vector<std::uint8_t> aid(kUsimAid.begin(), kUsimAid.end());
  RecordFile& directory = File({kEfDir});
  CardResult result = directory.Load();
  if (result.Ok()) {
    for (std::uint8_t record = 1; record <= directory.Count(); ++record) {
      std::span<const std::uint8_t> data;
      result = directory.Read(record, data);
      if (!result.Ok()) break;
      if (auto found = UsimAid(data)) {
        aid = std::move(*found);
        break;
      }
    }
  }
  if (result.Error() != TransportError::kNone) return result;
  // Without a directory the first bytes may still find it.
  result = files_.SelectApplication(aid);
  if (result.Error() != TransportError::kNone) return result;
  application_ = result.Ok();
  return StatusWord::kOk;
}

CardResult CardLayout::AddSet(PhonebookSet set, std::uint16_t adnId) {
  RecordFile& adn = File(set.folder.Child(adnId));
  const bool known = std::any_of(sets_.begin(), sets_.end(),
                                 [&adn](const PhonebookSet& other) { return other.adn == &adn; });
  if (known) return StatusWord::kOk;  // two sets in one file are one
  CardResult result = adn.Load();
  if (IsDamage(result)) return StatusWord::kOk;
  if (!result.Ok()) return result;
  if (adn.Info().recordLength < kAdnNumberPart || adn.Count() == 0) return StatusWord::kOk;
  set.adn = &adn;
  set.firstLocation = Total() + 1;

  std::uint16_t ext1 = kEfExt1;
  bool named = set.referenceRecord == 0;
  if (const PbrFile* file = set.reference.Find(PbrTag::kExt1)) {
    ext1 = file->fileId;
    named = true;
  }
  if (named) {
    RecordFile& extension = File(set.folder.Child(ext1));
    result = extension.Load();
    if (!result.Ok() && !IsDamage(result)) return result;
    if (result.Ok() && extension.Info().recordLength >= kExtensionLength) set.ext1 = &extension;
  }
  sets_.push_back(std::move(set));
  return StatusWord::kOk;
}

CardResult CardLayout::ReadReferences(const FilePath& folder) {
  RecordFile& references = File(folder.Child(kEfPbr));
  CardResult result = references.Load();
  if (IsDamage(result)) return StatusWord::kOk;
  if (!result.Ok()) return result;
  std::vector<PbrSet> found;
  std::vector<std::uint8_t> records;
  for (std::uint8_t record = 1; record <= references.Count(); ++record) {
    std::span<const std::uint8_t> data;
    result = references.Read(record, data);
    if (IsDamage(result)) continue;
    if (!result.Ok()) return result;
    auto reference = ParsePbrRecord(data);
    if (!reference) continue;
    found.push_back(std::move(*reference));
    records.push_back(record);
  }
  LeaveOutConflicts(found);
  for (std::size_t i = 0; i < found.size(); ++i) {
    const PbrFile* const adn = found[i].Find(PbrTag::kAdn);
    if (adn == nullptr) continue;
    const std::uint16_t adnId = adn->fileId;
    PhonebookSet set;
    set.folder = folder;
    set.reference = std::move(found[i]);
    set.referenceRecord = records[i];
    result = AddSet(std::move(set), adnId);
    if (!result.Ok()) return result;
  }
  return StatusWord::kOk;
}

CardResult CardLayout::Discover() {
  if (discovered_) return StatusWord::kOk;
  Forget();
  if (const CardResult result = SelectUsim(); !result.Ok()) return result;
  CardResult result = ReadReferences({kDfTelecom, kDfPhonebook});
  if (result.Ok() && sets_.empty() && application_) {
    result = ReadReferences({kApplication, kDfPhonebook});
  }
  if (result.Ok() && sets_.empty()) {
    PhonebookSet set;
    set.folder = {kDfTelecom};
    result = AddSet(std::move(set), kEfAdn);
  }
  if (!result.Ok()) return result;
  if (sets_.empty()) return StatusWord::kFileNotFound;
  discovered_ = true;
  return StatusWord::kOk;
}

std::uint32_t CardLayout::Total() const {
  if (sets_.empty()) return 0;
  return sets_.back().firstLocation - 1U + sets_.back().adn->Count();
}

bool CardLayout::Find(std::uint32_t location, EntryPlace& place) const {
  for (const PhonebookSet& set : sets_) {
    if (location >= set.firstLocation && location - set.firstLocation < set.adn->Count()) {
      place.set = &set;
      place.record = static_cast<std::uint8_t>(location - set.firstLocation + 1U);
      return true;
    }
  }
  return false;
}

std::size_t CardLayout::CodedSets() const {
  std::size_t coded = 0;
  while (coded < sets_.size() && coded < kCodeSets) {
    ++coded;
    if (sets_[coded - 1].adn->Count() != sets_.front().adn->Count()) break;
  }
  return coded;
}

std::vector<RecordFile*> CardLayout::Extensions() const {
  std::vector<RecordFile*> files;
  for (const PhonebookSet& set : sets_) {
    if (set.ext1 != nullptr && std::find(files.begin(), files.end(), set.ext1) == files.end()) {
      files.push_back(set.ext1);
    }
  }
  return files;
}

CardResult CardLayout::FindExtension(std::uint32_t record, RecordFile*& file,
                                     std::uint8_t& cardRecord) {
  for (RecordFile* const each : Extensions()) {
    if (record <= each->Count()) {
      file = each;
      cardRecord = static_cast<std::uint8_t>(record);
      return StatusWord::kOk;
    }
    record -= each->Count();
  }
  return Extensions().empty() ? StatusWord::kFileNotFound : StatusWord::kRecordNotFound;
}

bool CardLayout::IsUnlinkable(const RecordFile& file) const {
  bool named = false;
  for (const PhonebookSet& set : sets_) {
    for (const PbrFile& each : set.reference.files) {
      if (set.folder.Child(each.fileId) != file.Path()) continue;
      if (each.group != PbrGroup::kType2 || set.reference.Find(PbrTag::kIap) != nullptr) {
        return false;
      }
      named = true;
    }
  }
  return named;
}

CardResult CardLayout::FindCode(std::uint32_t code, std::uint32_t record, RecordFile*& file,
                                std::uint8_t& cardRecord) {
  if (record > kMaxRecords) return StatusWord::kRecordNotFound;
  std::size_t number = 0;  // of the set
  PbrTag tag = PbrTag::kAdn;
  std::size_t nth = 0;
  bool last = false;
  if (code == kCodeAdn || code == kCodePbr) {
    // The set's own members name them.
  } else if (code == kCodeExt1) {
    return FindExtension(record, file, cardRecord);
  } else if (code == kCodeGroupNames) {
    tag = PbrTag::kGas;
  } else if (code == kCodeNumberNames) {
    tag = PbrTag::kAas;
  } else if (code >= kCodeNickname && code < kCodeNickname + kCodeSets) {
    number = code - kCodeNickname;
    tag = PbrTag::kSne;
    last = true;
  } else if (code < 10 * kCodeSets) {
    number = code / 10;
    switch (code % 10) {
      case kCodeIap:
        tag = PbrTag::kIap;
        break;
      case kCodeEmail:
        tag = PbrTag::kEmail;
        last = true;
        break;
      case kCodeGroup:
        tag = PbrTag::kGrp;
        break;
      case kCodeSecondNumber:
        tag = PbrTag::kAnr;
        break;
      case kCodeThirdNumber:
        tag = PbrTag::kAnr;
        nth = 1;
        break;
      default:
        return StatusWord::kFileNotFound;
    }
  } else {
    return StatusWord::kFileNotFound;
  }
  if (number >= CodedSets()) return StatusWord::kFileNotFound;
  const PhonebookSet& set = sets_[number];
  RecordFile* found = nullptr;
  auto foundRecord = static_cast<std::uint8_t>(record);
  if (code == kCodePbr) {
    if (set.referenceRecord == 0) return StatusWord::kFileNotFound;
    if (record > CodedSets()) return StatusWord::kRecordNotFound;
    found = &File(set.folder.Child(kEfPbr));
    if (record != 0) foundRecord = sets_[record - 1].referenceRecord;
  } else if (code == kCodeAdn) {
    found = set.adn;
  } else if (const PbrFile* named =
                 last ? set.reference.FindLast(tag) : set.reference.Find(tag, nth)) {
    found = &File(set.folder.Child(named->fileId));
  }
  if (found == nullptr || IsUnlinkable(*found)) return StatusWord::kFileNotFound;
  if (const CardResult result = found->Load(); !result.Ok()) return result;
  file = found;
  cardRecord = foundRecord;
  return StatusWord::kOk;
}

CardResult CardLayout::FindBeside(std::uint16_t id, RecordFile*& file) {
  CardResult result = StatusWord::kFileNotFound;
  if (application_) {
    RecordFile& own = File({kApplication, id});
    result = own.Load();
    if (!result.Missing()) {
      if (result.Ok()) file = &own;
      return result;
    }
  }
  RecordFile& telecom = File({kDfTelecom, id});
  result = telecom.Load();
  if (result.Ok()) file = &telecom;
  return result;
}

CardResult CardLayout::FindId(std::uint16_t id, RecordFile*& file) {
  switch (id) {
    case kEfMsisdn:
    case kEfSdn:
    case kEfExt1:
      return FindBeside(id, file);
    case kEfExt3: {
      RecordFile* numbers = nullptr;
      if (const CardResult result = FindBeside(kEfSdn, numbers); !result.Ok()) return result;
      RecordFile& extension = File(numbers->Path().Parent().Child(id));
      const CardResult result = extension.Load();
      if (result.Ok()) file = &extension;
      return result;
    }
    default:
      return StatusWord::kFileNotFound;
  }
}

CardResult CardLayout::FindMessages(RecordFile*& file) {
  return FindBeside(kEfSms, file);
}

}  // namespace kelpin::device::card
