#include "start/report.h"

#include <cstdio>
#include <fstream>
#include <iostream>
#include <string_view>

#include "device/desktop/utf8.h"
#include "platform/wording.h"
#include "res/ids.h"
#include "start/adapters.h"
#include "start/exit_codes.h"
#include "ui/list_view.h"

namespace kelpin::start {

using namespace device;

namespace {

long ResidentKilobytes() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmRSS:")) {
      return std::stol(line.substr(6));
    }
  }
  return 0;
}

void PrintList(const app::AppState& state) {
  const ui::ListView& list = *state.dialog->List(res::kMainList);
  std::cout << desktop::Utf8Line(state.dialog->Text(res::kMainHeader)) << '\n';
  for (int row = 0; row < list.ItemCount(); ++row) {
    std::printf("%5s  %-30s  %s\n", desktop::Utf8Line(list.ItemText(row, 0)).c_str(),
                desktop::Utf8Line(list.ItemText(row, 1)).c_str(),
                desktop::Utf8Line(list.ItemText(row, 2)).c_str());
  }
  std::printf("%d entries\n", list.ItemCount());
}

}  // namespace

bool PrintedAll() {
  std::cout.flush();
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0 && std::cout) {
    return true;
  }
  std::cerr << "kelpin: standard output cannot be written. See that the disk is not full\n";
  return false;
}

int PrintReaders() {
  std::string list;
  std::string why;
  if (!ListReaders(list, why)) {
    std::cerr << "kelpin: " << platform::PrintableLines(why) << '\n';
    return kExitFailure;
  }
  std::cout << list;
  return PrintedAll() ? 0 : kExitFailure;
}

void Report(qt::QtScreen& screen, app::AppState& state, const std::string& file, SteadyTime start,
            bool& saved) {
  saved = screen.GrabMainWindow(file);
  const auto spent = std::chrono::steady_clock::now() - start;
  PrintList(state);
  std::printf(
      "list shown after %lld ms, %ld kB resident\n",
      static_cast<long long>(std::chrono::duration_cast<std::chrono::milliseconds>(spent).count()),
      ResidentKilobytes());
  if (saved) {
    std::cerr << "Picture saved as " << platform::Printable(file) << '\n';
  } else {
    std::cerr
        << "kelpin: "
        << platform::Say(
               "%s: the picture cannot be written. See that the folder is there, that you may "
               "write to it and that the disk is not full",
               {file})
        << '\n';
  }
  if (!PrintedAll()) {
    saved = false;
  }
  state.dialog->PostClose();
}

qt::QtScreen::BoxListener PrintBoxes(std::atomic<bool>& failed) {
  return [&failed](std::u16string_view text, std::u16string_view /*caption*/, ui::BoxStyle style) {
    std::cerr << "kelpin: " << platform::PrintableLines(desktop::Utf8(text)) << '\n';
    if (style.icon == ui::BoxIcon::kStop) {
      failed = true;
    }
  };
}

}  // namespace kelpin::start
