#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include "device/card/card_files.h"
#include "device/card/pbr.h"
#include "device/card/record_file.h"

namespace kelpin::device::card {

// One set of the phone book: an EF_ADN and what belongs to it. A GSM card has one set and no
// reference record.
struct PhonebookSet {
  FilePath folder;
  PbrSet reference;
  std::uint8_t referenceRecord = 0;  // of EF_PBR, 0 none
  std::uint32_t firstLocation = 1;
  RecordFile* adn = nullptr;
  RecordFile* ext1 = nullptr;  // null when the set has none
};

// A location's place on the card.
struct EntryPlace {
  const PhonebookSet* set = nullptr;
  std::uint8_t record = 0;
};

// File codes of the device-specific SIM file command. Those of a set count from its first code,
// ten further for each set; EF_SNE one further.
inline constexpr std::uint32_t kCodePbr = 0;
inline constexpr std::uint32_t kCodeIap = 1;
inline constexpr std::uint32_t kCodeEmail = 2;
inline constexpr std::uint32_t kCodeGroup = 3;
inline constexpr std::uint32_t kCodeGroupNames = 4;
inline constexpr std::uint32_t kCodeNumberNames = 5;
inline constexpr std::uint32_t kCodeSecondNumber = 6;
inline constexpr std::uint32_t kCodeThirdNumber = 7;
inline constexpr std::uint32_t kCodeNickname = 40;
inline constexpr std::uint32_t kCodeExt1 = 44;
inline constexpr std::uint32_t kCodeAdn = 50;
inline constexpr std::uint32_t kCodeSets = 4;

// Where a card keeps its phone book and the files beside it: the global phone book (below DF
// TELECOM) with every set its EF_PBR names, else the local one of the USIM application, else the
// EF_ADN of a GSM card.
class CardLayout {
 public:
  explicit CardLayout(CardFiles& files) : files_(files) {}

  // Once, until Forget. A card without any phone book is a file not found.
  CardResult Discover();
  void Forget();
  // Forgets what the records of all files hold, not what the files are.
  void ForgetRecords();
  // Other programs may write to the card as well.
  bool OthersMayWrite() const { return files_.OthersMayWrite(); }

  // What follows counts after a successful Discover.

  const std::vector<PhonebookSet>& Sets() const { return sets_; }
  std::uint32_t Total() const;  // locations
  // False beyond the last location.
  bool Find(std::uint32_t location, EntryPlace& place) const;

  // The different EF_EXT1 of the sets, in the order of the sets; nearly every card has one.
  std::vector<RecordFile*> Extensions() const;

  // The file a code of the file command stands for, and the record of it that the command's record
  // stands for (0 stays 0). Codes tell sets apart by dividing locations by the first set's size, so
  // a set behind one of another size has none. Record n of EF_PBR is that of the nth set in use.
  // The records of all EF_EXT1 are counted through. A type-2 file of sets without an EF_IAP is
  // none: nothing can refer to its records.
  CardResult FindCode(std::uint32_t code, std::uint32_t record, RecordFile*& file,
                      std::uint8_t& cardRecord);
  // EF_MSISDN, EF_SDN, EF_EXT1 or EF_EXT3 by its file id: the application's own, else that below DF
  // TELECOM. EF_EXT3 is the one beside EF_SDN.
  CardResult FindId(std::uint16_t id, RecordFile*& file);
  // EF_SMS.
  CardResult FindMessages(RecordFile*& file);

  // One object for each path.
  RecordFile& File(const FilePath& path);

 private:
  CardResult SelectUsim();
  CardResult ReadReferences(const FilePath& folder);
  CardResult AddSet(PhonebookSet set, std::uint16_t adnId);
  CardResult FindBeside(std::uint16_t id, RecordFile*& file);
  std::size_t CodedSets() const;
  CardResult FindExtension(std::uint32_t record, RecordFile*& file, std::uint8_t& cardRecord);
  bool IsUnlinkable(const RecordFile& file) const;

  CardFiles& files_;
  bool discovered_ = false;
  bool application_ = false;  // a USIM application was selected
  std::vector<PhonebookSet> sets_;
  std::map<FilePath, RecordFile> store_;
};

}  // namespace kelpin::device::card
