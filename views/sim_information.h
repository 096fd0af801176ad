#pragma once

#include <string>

#include "ui/dialog.h"

namespace kelpin::app {
struct AppState;
}

namespace kelpin::views {

// What both forms show: the card's sizes and how full it is.
class SimInformation : public ui::DialogHandler {
 public:
  explicit SimInformation(app::AppState& state) : state_(state) {}

  void OnCommand(ui::Dialog& dialog, int command) override;
  void OnClose(ui::Dialog& dialog) override;

 protected:
  struct Row {
    int label = 0;  // a string's number
    std::u16string value;
  };

  // Asks the card. False when it does not tell, which was shown then.
  bool ReadFigures();
  bool ShowsSms() const;
  Row TotalRow() const;
  Row EntriesRow() const;
  Row NameRow() const;    // or the second numbers
  Row NumberRow() const;  // or the e-mail addresses
  Row SmsRow() const;
  // How full the phone book and the message storage are; hidden where it is not known.
  void ShowBars(ui::Dialog& dialog, bool known);
  int BarsHeight() const;
  void PlaceBars(ui::Dialog& dialog, int y, int width);

  app::AppState& state_;

 private:
  void ShowBar(ui::Dialog& dialog, int text, int bar, int pattern, std::uint32_t used,
               std::uint32_t total, bool known);
};

// A list of two columns.
class SimInformationList final : public SimInformation {
 public:
  using SimInformation::SimInformation;

  void OnInit(ui::Dialog& dialog) override;
  void OnSize(ui::Dialog& dialog, ui::Size client) override;
  void OnHelp(ui::Dialog& dialog) override;

 private:
  void Fill(ui::Dialog& dialog);

  ui::Size size_;  // as last laid out
};

// A page of labels and values.
class SimInformationPage final : public SimInformation {
 public:
  using SimInformation::SimInformation;

  void OnInit(ui::Dialog& dialog) override;
  void OnSize(ui::Dialog& dialog, ui::Size client) override;
  void OnSettingsChange(ui::Dialog& dialog) override;
  void OnMessage(ui::Dialog& dialog, std::uint32_t message, std::uint32_t first,
                 std::uint32_t second) override;

 private:
  void Place(ui::Dialog& dialog, ui::Size client);
  void Fill(ui::Dialog& dialog);

  ui::Size size_;  // as last laid out
};

// The form that the platform wants, once the card answers.
void ShowSimInformation(app::AppState& state);

}  // namespace kelpin::views
