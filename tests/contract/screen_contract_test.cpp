#include "tests/contract/screen_contract.h"

#include "tests/support/headless_screen.h"

namespace kelpin::test {
namespace {

class HeadlessDriver : public ScreenDriver {
 public:
  ui::Screen& Screen() override { return screen_; }
  void AnswerNextBox(ui::BoxAnswer answer) override { screen_.ScriptBox(answer); }
  void DismissNextBox() override { screen_.ScriptDismissBox(); }
  std::vector<std::u16string> BoxTexts() override {
    std::vector<std::u16string> texts;
    for (const ShownBox& box : screen_.Boxes()) {
      texts.push_back(box.text);
    }
    return texts;
  }
  void WhenDialogOpens(int resource, std::function<void(ui::Dialog&)> script) override {
    screen_.ScriptDialog(resource, std::move(script));
  }
  void Press(ui::Dialog& dialog, const ui::KeyPress& press) override { dialog.KeyDown(press); }
  bool RunUntil(const std::function<bool()>& done) override { return screen_.RunUntil(done); }

 private:
  HeadlessScreen screen_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Headless, ScreenContract, HeadlessDriver);

}  // namespace
}  // namespace kelpin::test
