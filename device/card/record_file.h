#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "device/card/card_files.h"
#include "device/card/card_result.h"
#include "device/card/file_info.h"
#include "device/card/file_path.h"

namespace kelpin::device::card {

// One file of records, each read from the card at most once until Forget.
class RecordFile {
 public:
  RecordFile(CardFiles& files, const FilePath& path) : files_(files), path_(path) {}

  const FilePath& Path() const { return path_; }
  // Asks the card for the file, once; the operations below do so by themselves. A file without
  // records is a wrong kind of file.
  CardResult Load();
  // After a successful Load.
  const FileInfo& Info() const { return info_; }
  std::uint8_t Count() const { return info_.recordCount; }

  // `data` stays valid until the file is next changed, read afresh or forgotten.
  CardResult Read(std::uint8_t record, std::span<const std::uint8_t>& data);
  CardResult ReadAfresh(std::uint8_t record, std::span<const std::uint8_t>& data);
  // `same`: whether the card still holds what is known of the record. Where others may write to it
  // the record is read afresh; where nothing is known of it, it is the same.
  CardResult Confirm(std::uint8_t record, bool& same);
  // Has the card search for records that are `pattern`, once for each pattern, and knows them from
  // then on. A card that cannot search is no failure: the records are read when they are needed.
  CardResult Learn(std::span<const std::uint8_t> pattern);
  // Learns the records that are all FF.
  CardResult LearnEmpty();
  // The card was asked to search this file and cannot.
  bool CannotSearch() const { return cannotSearch_; }
  // The record's bytes when they are known already.
  std::optional<std::span<const std::uint8_t>> Known(std::uint8_t record) const;
  // `data` must be as long as a record. After a failure the record is read from the card again.
  CardResult Update(std::uint8_t record, std::span<const std::uint8_t> data);

  void Forget();
  // Forgets what the records hold, not what the file is.
  void ForgetRecords();

 private:
  std::span<std::uint8_t> Bytes(std::uint8_t record);

  CardFiles& files_;
  FilePath path_;
  bool loaded_ = false;
  bool missing_ = false;
  bool cannotSearch_ = false;
  FileInfo info_;
  std::vector<std::uint8_t> bytes_;
  std::vector<bool> known_;
  std::vector<std::vector<std::uint8_t>> learned_;  // patterns
  bool emptyLearned_ = false;
};

}  // namespace kelpin::device::card
