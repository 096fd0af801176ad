#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ui/dialog.h"
#include "views/compose_message.h"
#include "views/double_press.h"

namespace kelpin::app {
struct AppState;
}

namespace kelpin::views {

// The numbers of one chooser's resources.
struct ChooserResources {
  int dialog = 0;
  int bar = 0;
  int label = 0;
  int list = 0;
  int choose = 0;  // commands
  int cancel = 0;
  int labelText = 0;  // strings
  int columnText = 0;
  std::uint32_t fillMessage = 0;
};

// A list of one entry's values, to choose one again and again. It shows before its rows come.
class ValueChooser : public ui::DialogHandler {
 public:
  struct Value {
    std::u16string text;
    AddressKind kind = AddressKind::kNumber;
  };

  // `values` from the top; empty ones are left out.
  ValueChooser(app::AppState& state, const ChooserResources& resources, std::vector<Value> values)
      : state_(state), resources_(resources), values_(std::move(values)) {}

  void OnInit(ui::Dialog& dialog) override;
  void OnSize(ui::Dialog& dialog, ui::Size client) override;
  void OnCommand(ui::Dialog& dialog, int command) override;
  void OnNotify(ui::Dialog& dialog, const ui::Notification& notification) override;
  bool OnHotKey(ui::Dialog& dialog, int virtualKey, unsigned modifiers) override;
  void OnMessage(ui::Dialog& dialog, std::uint32_t message, std::uint32_t first,
                 std::uint32_t second) override;
  void OnHelp(ui::Dialog& dialog) override;
  void OnClose(ui::Dialog& dialog) override;

 protected:
  // What is done with the value that was chosen.
  virtual void Chosen(ui::Dialog& dialog, const Value& value) = 0;

  app::AppState& state_;

 private:
  void Fill(ui::Dialog& dialog);
  void Choose(ui::Dialog& dialog);

  const ChooserResources resources_;
  const std::vector<Value> values_;
  DoublePress press_;
  ui::Size size_;  // as last laid out
};

}  // namespace kelpin::views
