#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platform/mutex.h"
#include "sim/ext_layout.h"
#include "sim/ril_client.h"

namespace kelpin::sim {

// The settings that say which extended files are looked at.
struct FieldSwitches {
  bool disableEmail = false;
  bool disableSecondNumber = false;
  bool disableThirdNumber = false;
  bool enableNickname = false;
};

enum class [[nodiscard]] FieldResult{
    kRead,         // the field is there, perhaps without text
    kAbsent,       // the entry has no such record, or the card no such file
    kFailed,       // the card did not answer
    kUnsupported,  // the field is there, its text in a form that is not read
};

// What a write returns: 0, or the program's code for the field that was not written.
inline constexpr std::uint32_t kFieldWritten = 0;
inline constexpr std::uint32_t kSecondNumberFailed = 256;
inline constexpr std::uint32_t kEmailFailed = 257;
inline constexpr std::uint32_t kThirdNumberFailed = 258;
inline constexpr std::uint32_t kNicknameFailed = 259;

// No record is known to hold the field.
inline constexpr std::uint32_t kNoRecord = 255;

struct NumberField {
  std::u16string number;
  std::uint32_t nameId = 0;  // of the number's name, 0 none
};

// The extended phone book of a USIM: where the fields beside name and number stand, which of their
// records are used, and the reading and writing of one field of one entry.
//
// Entries are named by their location, from 1. Without a layout, beyond the fourth set and where
// the card lacks the file, fields are absent and nothing is sent. Any thread; operations on fields
// take turns, a load only with other loads.
//
// Writes go in an order that leaves no reference to a record that is free, wherever they end: a
// record is filled before it is referred to, and referred to no more before it is freed. After a
// command that failed nothing more is sent.
class RilExtPhonebook : public RilClient {
 public:
  using RilClient::RilClient;

  // Reads the reference file and the measures and used records of the files it names. False, with
  // no layout and the session closed, when the first reference record cannot be read; what else
  // cannot be read is left out. What fields are read and written meanwhile is as it was before.
  bool LoadLayout(const FieldSwitches& switches);
  bool Loaded() const;
  // Whether an entry's fields that are found absent are none. False before a load, for what the
  // card did not tell of when it was asked for the layout, beyond the fourth set, and where the
  // card's sets are not all as large as the first: the entry may have fields that nobody sees.
  bool SeesFieldsOf(std::uint32_t location) const;

  // The layout. A set's own file, and the one that it uses: the first set's where it is shared.
  SlotLayout Slot(std::uint32_t set, FieldSlot slot) const;
  SlotLayout SlotInUse(std::uint32_t set, FieldSlot slot) const;
  PhonebookLayout Layout() const;
  std::uint32_t AdnRecords() const;  // of each set
  bool HasNumberNames() const;
  bool HasGroups() const;
  std::uint32_t NumberNameLength() const;
  std::uint32_t NumberNameCount() const;
  std::uint32_t GroupNameLength() const;
  std::uint32_t GroupNameCount() const;
  std::uint32_t GroupRecordLength(std::uint32_t set) const;  // 0 when entries have no groups
  std::uint32_t SecondNumberCapacity() const;
  std::uint32_t EmailCapacity() const;
  // 0 for location 0 and without a layout.
  int Place(std::uint32_t location, std::uint32_t& set, std::uint32_t& record) const;

  // The lowest free record of the file that the set uses, 0 for none.
  std::uint32_t FirstFreeRecord(std::uint32_t set, FieldSlot slot) const;
  void MarkRecord(std::uint32_t set, FieldSlot slot, std::uint32_t record, int used);

  // The byte for a type in an entry's record of EF_IAP: the record of the type-2 file, kNoReference
  // for none. False when it cannot be read.
  bool ReadIap(std::uint32_t set, std::uint32_t record, std::uint32_t type, std::uint8_t& value);
  // False also when the entry's record has no byte for the type.
  bool WriteIap(std::uint32_t set, std::uint32_t record, std::uint32_t type, std::uint8_t value);

  // Asks for the free extension records: the lowest two, 0 for none. False when the card did not
  // say; both are 0 then.
  bool GetFreeExtRecords(std::uint32_t& first, std::uint32_t& second);

  // As RilClient's; the record's bytes are kept.
  bool ReadExtRecord(std::uint32_t code, std::uint32_t record, std::vector<std::uint8_t>& response,
                     std::vector<std::uint8_t>* refusal = nullptr);
  std::vector<std::uint8_t> LastRecord() const;

  // One field. `existing` is the type-2 record that holds it, kNoRecord for none: pass it on from
  // the read to the write, kNoRecord for a new entry. Both keep it true. Texts are changed on kRead
  // only.
  FieldResult ReadNumberField(FieldSlot slot, std::uint32_t location, std::uint32_t& existing,
                              NumberField& field);
  FieldResult ReadTextField(FieldSlot slot, std::uint32_t location, bool enableAscii,
                            std::uint32_t& existing, std::u16string& text);
  // An empty text clears the field. `nameId` counts when `enableNames`; otherwise the record's name
  // stays. Results: kFieldWritten or the slot's code.
  [[nodiscard]] std::uint32_t WriteNumberField(FieldSlot slot, std::uint32_t location,
                                               const NumberField& field, bool enableNames,
                                               std::uint32_t& existing);
  [[nodiscard]] std::uint32_t WriteTextField(FieldSlot slot, std::uint32_t location,
                                             const std::u16string& text, std::uint32_t& existing);

  // The groups of an entry: records of the group names, in order.
  FieldResult ReadGroup(std::uint32_t location, std::vector<std::uint8_t>& groups);
  // Groups beyond the record's length are left out; none clears it. True also where there is
  // nothing to clear.
  bool WriteGroup(std::uint32_t location, std::span<const std::uint8_t> groups);

 private:
  // One field of one entry, and the file it is in.
  struct Target {
    std::uint32_t set = 0;
    std::uint32_t entryRecord = 0;
    FieldSlot slot = FieldSlot::kEmail;
    std::uint32_t code = 0;
    SlotLayout file;
    bool Type2() const { return file.fileClass == kClassType2; }
  };
  struct Mark {
    std::uint32_t set = 0;
    FieldSlot slot = FieldSlot::kEmail;
    std::uint32_t record = 0;
    int used = 0;
  };
  using Record = std::vector<std::uint8_t>;

  // Steps of the load, on a layout of its own.
  bool ReadReferences(PhonebookLayout& layout);
  void MeasureNames(PhonebookLayout& layout);
  void MeasureFiles(const FieldSwitches& switches, PhonebookLayout& layout);
  void ReadUsed(std::uint32_t set, FieldSlot slot, PhonebookLayout& layout);
  // Reads the used records once more where none is free: the card may have found some meanwhile
  // that nothing refers to. It looks for them when it has no other.
  void FindFree(const Target& target) REQUIRES(operation_);
  // `told` becomes false when the card did not say whether there is such a file, or of what size.
  bool Measure(std::uint32_t code, std::uint32_t& length, std::uint32_t& count, bool& told);
  void Publish(PhonebookLayout layout);

  bool FindTarget(FieldSlot slot, std::uint32_t location, Target& target) const;
  // The record that holds the field.
  FieldResult FindRecord(const Target& target, std::uint32_t& record) REQUIRES(operation_);
  // A record of the field's file, as long as the file's records are.
  bool ReadFieldRecord(const Target& target, std::uint32_t record, Record& bytes);
  // Which record a write goes to: the existing one, the entry's own or a free one; 0 for none. Of a
  // type-2 file, what it holds.
  bool ChooseRecord(const Target& target, std::uint32_t& existing, std::uint32_t& record,
                    Record& old) REQUIRES(operation_);
  bool FinishWrite(const Target& target, std::uint32_t record, std::uint32_t& existing)
      REQUIRES(operation_);
  // Writes a number's record, and its extension before or after it.
  bool StoreNumber(const Target& target, std::uint32_t record, const Record& old, bool isNew,
                   const NumberField& field, bool enableNames);
  bool ClearField(const Target& target, std::uint32_t& existing) REQUIRES(operation_);
  bool ReadIapRecord(std::uint32_t set, std::uint32_t record) REQUIRES(operation_);
  bool ReadIapByte(std::uint32_t set, std::uint32_t record, std::uint32_t type, std::uint8_t& value)
      REQUIRES(operation_);
  bool WriteIapByte(std::uint32_t set, std::uint32_t record, std::uint32_t type, std::uint8_t value)
      REQUIRES(operation_);
  std::uint32_t IapPosition(std::uint32_t set, std::uint32_t type) const;
  bool ClearExtension(std::uint8_t record);

  static void Apply(const Mark& mark, PhonebookLayout& layout);

  Mutex loading_;                            // held by the load that is under way
  Mutex operation_;                          // held by the operation that is under way
  Record iapRecord_ GUARDED_BY(operation_);  // of the last entry that was looked up

  mutable Mutex layoutLock_;
  PhonebookLayout layout_ GUARDED_BY(layoutLock_);
  bool reading_ GUARDED_BY(layoutLock_) = false;
  std::vector<Mark> marks_ GUARDED_BY(layoutLock_);  // made while a load is reading
  std::uint32_t extensionCount_ GUARDED_BY(layoutLock_) = 0;
  std::uint32_t extensionMapLength_ GUARDED_BY(layoutLock_) = 0;
  std::array<std::uint8_t, 128> extensionMap_ GUARDED_BY(layoutLock_) = {};
  Record lastRecord_ GUARDED_BY(layoutLock_);
};

}  // namespace kelpin::sim
