#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "device/softcard/card_image.h"

namespace kelpin::device::card {

// Where a sample card keeps its files; ids below `folder`.
struct SampleSet {
  std::string adn;
  std::string iap;                 // empty: none
  std::vector<std::string> type1;  // numbers
  std::vector<std::string> type2;  // by their byte in EF_IAP
};
struct SampleCard {
  std::string name;
  std::string folder;
  std::vector<SampleSet> sets;
  std::string ext1;
};
// Looks at the card's own bytes: what refers to a record that is free or not there, two references
// to one record, records in use that nothing refers to.
class ImageCheck {
 public:
  ImageCheck(const softcard::CardImage& image, const SampleCard& sample);
  std::vector<std::string> dangling;
  std::vector<std::string> twice;
  std::vector<std::string> orphans;
  // How often a record of a type-2 file or of the extension file is referred to.
  int References(const std::string& file, std::size_t record) const {
    const auto counts = references_.find(file);
    return counts != references_.end() && record < counts->second.size() ? counts->second[record]
                                                                         : 0;
  }

 private:
  const softcard::FileContent& File(const std::string& id) const;
  void Refer(const std::string& file, std::size_t record);
  void FollowExtensions(std::size_t record);

  const softcard::CardImage& image_;
  const SampleCard& sample_;
  std::map<std::string, std::vector<int>> references_;
};

inline constexpr std::size_t kAnrExtension = 14;
inline constexpr std::size_t kNextExtension = 12;
inline constexpr std::uint8_t kNone = 0xFF;

inline bool IsNumberFile(const std::string& id) {
  return id.starts_with("4F4");
}

// Extension records are free with 0 or FF in front.
inline bool InUse(const softcard::FileContent& file, std::size_t record) {
  const std::uint8_t first = file.Record(record)[0];
  return first != kNone && !(file.recordLength == 13 && first == 0);
}

inline const std::vector<SampleCard>& SampleCards() {
  static const std::string telecom = "3F00/7F10/5F3A/";
  static const std::vector<SampleCard> cards = {
      {"usim",
       telecom,
       {{"4F3A", "4F60", {"4F40"}, {"4F50", "4F48", "4F58"}},
        {"4F3B", "4F61", {"4F41"}, {"4F50", "4F49", "4F59"}}},
       "4F80"},
      {"usim-empty",
       telecom,
       {{"4F3A", "4F60", {"4F40"}, {"4F50", "4F58"}}, {"4F3B", "4F61", {"4F41"}, {"4F51", "4F59"}}},
       "4F80"},
      {"usim-full", telecom, {{"4F3A", "4F60", {"4F40"}, {"4F50"}}}, "4F80"},
      {"usim-1000",
       telecom,
       {{"4F3A", "4F60", {"4F40"}, {"4F50"}},
        {"4F3B", "4F61", {"4F41"}, {"4F51"}},
        {"4F3C", "4F62", {"4F42"}, {"4F52"}},
        {"4F3D", "4F63", {"4F43"}, {"4F53"}}},
       "4F80"},
      {"usim-local", "3F00/A0000000871002FF49FF0589/5F3A/", {{"4F3A", "", {"4F40"}, {}}}, "4F80"}};
  return cards;
}

inline const softcard::FileContent& ImageCheck::File(const std::string& id) const {
  const softcard::CardFile* file = image_.Find(sample_.folder + id);
  if (file == nullptr || file->content == nullptr) {
    static const softcard::FileContent none{13, {}, {}, {}};
    ADD_FAILURE() << "no file " << id;
    return none;
  }
  return *file->content;
}

inline void ImageCheck::Refer(const std::string& file, std::size_t record) {
  const softcard::FileContent& content = File(file);
  std::vector<int>& counts = references_[file];
  counts.resize(content.RecordCount() + 1);
  const std::string name = file + " " + std::to_string(record);
  if (record == 0 || record > content.RecordCount() || !InUse(content, record)) {
    dangling.push_back(name);
  } else if (++counts[record] > 1) {
    twice.push_back(name);
  }
}

inline void ImageCheck::FollowExtensions(std::size_t record) {
  const softcard::FileContent& content = File(sample_.ext1);
  for (std::size_t step = 0; record != kNone && step < content.RecordCount(); ++step) {
    Refer(sample_.ext1, record);
    if (record == 0 || record > content.RecordCount()) return;
    record = content.Record(record)[kNextExtension];
  }
}

inline ImageCheck::ImageCheck(const softcard::CardImage& image, const SampleCard& sample)
    : image_(image), sample_(sample) {
  references_[sample_.ext1].resize(File(sample_.ext1).RecordCount() + 1);
  for (const SampleSet& set : sample.sets) {
    const softcard::FileContent& adn = File(set.adn);
    for (std::size_t entry = 1; entry <= adn.RecordCount(); ++entry) {
      const auto record = adn.Record(entry);
      if (!adn.IsFree(entry)) FollowExtensions(record[record.size() - 1]);
      for (const std::string& id : set.type1) {
        const softcard::FileContent& numbers = File(id);
        if (InUse(numbers, entry)) FollowExtensions(numbers.Record(entry)[kAnrExtension]);
      }
      for (std::size_t type = 0; type < set.type2.size(); ++type) {
        const std::string& id = set.type2[type];
        const std::uint8_t to = File(set.iap).Record(entry)[type];
        if (to == kNone) continue;
        Refer(id, to);
        const softcard::FileContent& file = File(id);
        if (IsNumberFile(id) && to > 0 && to <= file.RecordCount() && InUse(file, to)) {
          FollowExtensions(file.Record(to)[kAnrExtension]);
        }
      }
    }
    for (const std::string& id : set.type2) references_[id].resize(File(id).RecordCount() + 1);
  }
  for (const auto& [id, counts] : references_) {
    const softcard::FileContent& content = File(id);
    for (std::size_t record = 1; record < counts.size(); ++record) {
      if (counts[record] == 0 && InUse(content, record)) {
        orphans.push_back(id + " " + std::to_string(record));
      }
    }
  }
}

}  // namespace kelpin::device::card
