#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "device/softcard/image_writer.h"
#include "tests/card/ext_card.h"
#include "tests/card/ext_image_check.h"

namespace kelpin::device::card {

inline constexpr std::size_t kPlaces = 6;  // entries of a set

// A sample card with six places a set, so that thousands of runs are seconds. Its files beside
// the entries hold what those refer to and nothing else; a type-2 file is no longer than what
// is used of it and, unless `full`, four records more.
class SmallCard {
 public:
  SmallCard(const SampleCard& sample, bool full) : sample_(sample), card_(sample.name) {
    for (const auto& file : card_.Image().Find(Folder())->children) {
      if (file->content != nullptr && file->content->RecordCount() == 250) {
        file->content->bytes.resize(kPlaces * file->content->recordLength);
      }
    }
    const ImageCheck check(card_.Image(), sample);
    for (const SampleSet& set : sample.sets) {
      for (const std::string& id : set.type2) {
        FreeUnused(id, check);
        CutToUsed(id, check, full ? 0 : kSpare);
      }
    }
    FreeUnused(sample.ext1, check);
    text_ = softcard::WriteImage(card_.Image());
  }

  const std::string& Text() const { return text_; }

 private:
  static constexpr std::size_t kSpare = 4;

  std::string Folder() const { return sample_.folder.substr(0, sample_.folder.size() - 1); }
  softcard::FileContent& File(const std::string& id) {
    return *card_.Image().Find(sample_.folder + id)->content;
  }

  void FreeUnused(const std::string& id, const ImageCheck& check) {
    softcard::FileContent& file = File(id);
    for (std::size_t record = 1; record <= file.RecordCount(); ++record) {
      if (check.References(id, record) > 0) continue;
      const auto first =
          file.bytes.begin() + static_cast<std::ptrdiff_t>((record - 1) * file.recordLength);
      std::fill_n(first, file.recordLength, std::uint8_t{0xFF});
    }
  }

  void CutToUsed(const std::string& id, const ImageCheck& check, std::size_t spare) {
    softcard::FileContent& file = File(id);
    std::size_t used = 0;
    for (std::size_t record = 1; record <= file.RecordCount(); ++record) {
      if (check.References(id, record) > 0) used = record;
    }
    const std::size_t records = std::clamp<std::size_t>(used + spare, 1, file.RecordCount());
    file.bytes.resize(records * file.recordLength);
  }

  const SampleCard& sample_;
  MemoryCard card_;
  std::string text_;
};

}  // namespace kelpin::device::card
