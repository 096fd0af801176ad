#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kelpin::app {
struct AppState;
class Commands;
}  // namespace kelpin::app

namespace kelpin::editor {

// Shows entries that were written to the card in the main list: each in the row it has, or in a new
// one, sorted in, selected and in view. While somebody else works on the rows they wait. Screen
// thread.
class SavedRows {
 public:
  SavedRows(app::AppState& state, app::Commands& commands) : state_(state), commands_(commands) {}

  void Add(std::uint32_t location, std::u16string name, std::u16string number);
  // The rows may be free; comes by the command kCommandListSaved.
  void Continue();

 private:
  struct Entry {
    std::uint32_t location = 0;
    std::u16string name;
    std::u16string number;
  };

  void List(const Entry& entry);
  void Select(std::uint32_t location);

  app::AppState& state_;
  app::Commands& commands_;
  std::vector<Entry> waiting_;
};

}  // namespace kelpin::editor
