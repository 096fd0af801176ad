#include "device/softcard/card_image.h"

#include <algorithm>

#include "device/softcard/hex.h"

namespace kelpin::device::softcard {
namespace {

CardFile* FindBelow(const CardFile& directory, std::string_view step) {
  std::vector<std::uint8_t> name;
  if (!FromHex(step, name)) {
    return nullptr;
  }
  if (name.size() == 2) {
    return directory.Child(static_cast<std::uint16_t>(name[0] << 8 | name[1]));
  }
  for (const auto& child : directory.children) {
    if (child->kind == FileKind::kAdf && child->aid == name) {
      return child.get();
    }
  }
  return nullptr;
}

}  // namespace

std::span<const std::uint8_t> FileContent::Record(std::size_t record) const {
  return std::span(bytes).subspan((record - 1) * recordLength, recordLength);
}

bool FileContent::IsFree(std::size_t record) const {
  const std::span<const std::uint8_t> data = Record(record);
  if (fill.empty()) {
    return std::all_of(data.begin(), data.end(), [](std::uint8_t byte) { return byte == 0xFF; });
  }
  return std::equal(data.begin(), data.end(), fill.begin(), fill.end());
}

std::uint8_t CardFile::ShortId() const {
  if (IsDirectory()) {
    return 0;
  }
  if (sfi) {
    return *sfi;
  }
  const auto low = static_cast<std::uint8_t>(id & 0x1F);
  return low == 0x1F ? 0 : low;
}

const CardFile* CardFile::Application() const {
  for (const CardFile* file = this; file != nullptr; file = file->parent) {
    if (file->kind == FileKind::kAdf) {
      return file;
    }
  }
  return nullptr;
}

CardFile* CardFile::Child(std::uint16_t childId) const {
  for (const auto& child : children) {
    if (child->kind != FileKind::kAdf && child->id == childId) {
      return child.get();
    }
  }
  return nullptr;
}

CardFile* CardFile::ChildByShortId(std::uint8_t shortId) const {
  if (shortId == 0) {
    return nullptr;
  }
  CardFile* implied = nullptr;
  for (const auto& child : children) {
    if (child->ShortId() != shortId) {
      continue;
    }
    if (child->sfi) {
      return child.get();  // a stated one goes before one that follows from the id
    }
    if (implied == nullptr) {
      implied = child.get();
    }
  }
  return implied;
}

CardFile* CardImage::Find(std::string_view path) const {
  constexpr std::string_view kRoot = "3F00";
  if (!mf || !path.starts_with(kRoot)) {
    return nullptr;
  }
  path.remove_prefix(kRoot.size());
  CardFile* file = mf.get();
  while (file != nullptr && !path.empty()) {
    if (path.front() != '/') {
      return nullptr;
    }
    path.remove_prefix(1);
    const std::size_t end = std::min(path.find('/'), path.size());
    file = FindBelow(*file, path.substr(0, end));
    path.remove_prefix(end);
  }
  return file;
}

std::vector<CardFile*> CardImage::Applications() const {
  std::vector<CardFile*> applications;
  for (const auto& child : mf->children) {
    if (child->kind == FileKind::kAdf) {
      applications.push_back(child.get());
    }
  }
  return applications;
}

}  // namespace kelpin::device::softcard
