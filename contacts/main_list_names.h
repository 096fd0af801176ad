#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>

namespace kelpin::app {
struct AppState;
}

namespace kelpin::contacts {

// Finds the main list's entries by name, to the letter, however long the list: the names are read
// once and kept in step with the changes that are told here. Changes by others are noticed, and the
// names then read anew. For whoever has the list's turn.
class MainListNames {
 public:
  explicit MainListNames(const app::AppState& state) : state_(state) {}

  // The first row of this name, -1 when there is none, and its entry's location.
  int Find(const std::u16string& name, std::uint32_t& index);
  // A row of this name was put on top.
  void Inserted(const std::u16string& name);
  // A row got another number, and its name once more.
  void Replaced();

 private:
  void Read();

  const app::AppState& state_;
  // How many rows stand below the first row of the name: rows come on top, so it stays.
  std::unordered_map<std::u16string, int> below_;
  std::uint64_t version_ = 0;
  bool read_ = false;
};

}  // namespace kelpin::contacts
