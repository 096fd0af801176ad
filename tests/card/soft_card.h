#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "device/softcard/soft_channel.h"
#include "tests/card/hex.h"

namespace kelpin::device::card {

inline constexpr char kUsimAdf[] = "A0000000871002FF49FF0589";

// A folder of its own that goes with the object.
class ScratchFolder {
 public:
  ScratchFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "kelpin-card-XXXXXX").string();
    path_ = mkdtemp(name.data()) == nullptr ? "" : name;
    EXPECT_FALSE(path_.empty());
  }
  ~ScratchFolder() { std::filesystem::remove_all(path_); }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  const std::filesystem::path& Path() const { return path_; }

 private:
  std::filesystem::path path_;
};

using ImageChange = std::function<void(nlohmann::json& image)>;

// The file at `path` (ids and application ids, from below the master file) of a card image.
inline nlohmann::json& ImageFile(nlohmann::json& image, const std::vector<std::string>& path) {
  nlohmann::json* file = &image["mf"];
  for (const std::string& id : path) {
    nlohmann::json* found = nullptr;
    for (nlohmann::json& child : (*file)["files"]) {
      if (child.value("id", "") == id || child.value("aid", "") == id) found = &child;
    }
    if (found == nullptr) {
      ADD_FAILURE() << "no file " << id << " in the image";
      return *file;
    }
    file = found;
  }
  return *file;
}

// Record `number` in hex; "" for a free one.
inline std::string ImageRecord(nlohmann::json& image, const std::vector<std::string>& path,
                               std::size_t number) {
  const nlohmann::json& records = ImageFile(image, path)["records"];
  if (number > records.size()) return "";
  const nlohmann::json& record = records[number - 1];
  return record.is_string() ? record.get<std::string>() : record["hex"].get<std::string>();
}

// Writes record `number`, as hex or "" for a free one.
inline void SetImageRecord(nlohmann::json& image, const std::vector<std::string>& path,
                           std::size_t number, const std::string& hex) {
  nlohmann::json& records = ImageFile(image, path)["records"];
  while (records.size() < number) records.push_back("");
  records[number - 1] = hex;
}

// The text of one of the sample images, changed.
inline std::string ImageText(const std::string& sample, const ImageChange& change = nullptr) {
  nlohmann::json image = nlohmann::json::parse(
      std::ifstream(std::filesystem::path(KELPIN_SOURCE_DIR) / "res/cards" / (sample + ".json")));
  if (change) change(image);
  return image.dump(1);
}

// A software card of its own over an image.
class SoftCard {
 public:
  // A copy of one of the sample images, changed before the card is put in.
  explicit SoftCard(const std::string& sample, const ImageChange& change = nullptr) {
    Open(ImageText(sample, change));
  }
  static SoftCard FromText(const std::string& text) { return SoftCard(Text{text}); }

  softcard::SoftChannel& Channel() { return *channel_; }
  const std::string& File() const { return file_; }
  // What the card holds now.
  nlohmann::json Image() const { return nlohmann::json::parse(std::ifstream(file_)); }

 private:
  struct Text {
    const std::string& text;
  };
  explicit SoftCard(Text image) { Open(image.text); }

  void Open(const std::string& text) {
    file_ = (folder_.Path() / "card.json").string();
    std::ofstream(file_) << text;
    std::string error;
    channel_ = softcard::SoftChannel::Open(file_, error);
    EXPECT_NE(channel_, nullptr) << error;
  }

  ScratchFolder folder_;
  std::string file_;
  std::unique_ptr<softcard::SoftChannel> channel_;
};

}  // namespace kelpin::device::card
