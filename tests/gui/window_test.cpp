#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QApplication>
#include <QFile>
#include <QImage>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <atomic>
#include <filesystem>
#include <string>
#include <thread>

#include "device/qt/label_views.h"
#include "device/qt/qt_shell.h"
#include "device/qt/window_state.h"
#include "tests/gui/gui_support.h"

namespace kelpin::test {
namespace {

class Windows : public GuiTest {};

TEST_F(Windows, TheCloseBoxAsksTheDialog) {
  SampleDialog handler(*screen_);
  const auto dialog = Show(kListTemplate, handler);
  WindowOf(*dialog)->close();
  EXPECT_EQ(handler.closes, 1);
  EXPECT_EQ(dialog->Result(), ui::kDialogDone);
  EXPECT_TRUE(ServeUntil([&] { return handler.destroyed == 1; }));
  EXPECT_TRUE(ServeUntil([&] { return WindowOf(*dialog) == nullptr; }));
}

TEST_F(Windows, TheTitleIsTheDialogs) {
  SampleDialog handler(*screen_);
  const auto dialog = Show(kListTemplate, handler);
  EXPECT_EQ(WindowOf(*dialog)->windowTitle(), QStringLiteral("Kelpin"));
}

TEST_F(Windows, TheDialogIsToldTheRoomAboveItsSoftKeys) {
  SampleDialog handler(*screen_);
  const auto dialog = Show(kListTemplate, handler);
  ASSERT_FALSE(handler.sizes.empty());
  EXPECT_EQ(handler.sizes.back(), (ui::Size{360, 640 - 56}));
  WindowOf(*dialog)->resize(1200, 900);
  EXPECT_TRUE(ServeUntil([&] { return handler.sizes.back() == ui::Size{1200, 900 - 56}; }));
}

TEST_F(Windows, AnEdgeThatIsDraggedIsToldAsAChangeOfBothSides) {
  SampleDialog handler(*screen_);
  const auto dialog = Show(kListTemplate, handler);
  for (const QSize size : {QSize(400, 640), QSize(400, 639), QSize(401, 639), QSize(400, 639),
                           QSize(400, 700), QSize(900, 500)}) {
    handler.sizes.clear();
    const ui::Size before = dialog->ClientSize();
    WindowOf(*dialog)->resize(size);
    ASSERT_TRUE(ServeUntil([&] {
      return dialog->ClientSize().width == size.width() &&
             dialog->ClientSize().height == size.height() - 56;
    }));
    ASSERT_FALSE(handler.sizes.empty());
    EXPECT_EQ(handler.sizes.back(), (ui::Size{size.width(), size.height() - 56}));
    ui::Size last = before;
    for (const ui::Size& told : handler.sizes) {
      EXPECT_NE(told.width, last.width);
      EXPECT_NE(told.height, last.height);
      last = told;
    }
  }
}

TEST_F(Windows, AModalDialogTakesTheInputOfItsOwnerAlone) {
  SampleDialog handler(*screen_);
  const auto dialog = Show(kListTemplate, handler);
  WindowOf(*dialog)->move(37, 21);
  SampleDialog form(*screen_);
  form.command = [](ui::Dialog& one, int command) {
    if (command == kDone) {
      one.End(5);
    }
  };
  bool looked = false;
  QTimer::singleShot(50, [&] {
    qt::DialogWindow* window = OpenWindow(kFormDialog);
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(window->geometry(), WindowOf(*dialog)->geometry()) << "it covers its owner";
    EXPECT_EQ(window->parentWidget(), WindowOf(*dialog));
    // A press on the owner goes nowhere.
    QTest::mouseClick(WindowOf(*dialog)->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                      QPoint(90, 610));
    EXPECT_TRUE(handler.commands.empty());
    looked = true;
    QTest::mouseClick(window->findChild<QWidget*>(QStringLiteral("key0")), Qt::LeftButton);
  });
  EXPECT_EQ(screen_->DialogBox(kFormTemplate, dialog->Handle(), form), 5);
  EXPECT_TRUE(looked);
  EXPECT_EQ(form.destroyed, 1);
}

TEST_F(Windows, AnOwnerThatEndsUnderItsDialogIsDestroyedAfterIt) {
  SampleDialog owner(*screen_);
  const auto dialog = Show(kListTemplate, owner);
  SampleDialog form(*screen_);
  int ownerDestroyedThen = -1;
  QTimer::singleShot(50, [&] {
    dialog->End(1);
    QTest::qWait(50);
    ownerDestroyedThen = owner.destroyed;
    OpenWindow(kFormDialog);
    for (QWidget* window : QApplication::topLevelWidgets()) {
      if (auto* open = qobject_cast<qt::DialogWindow*>(window);
          open != nullptr && open->Dialog().Resource() == kFormDialog) {
        open->Dialog().End(2);
      }
    }
  });
  EXPECT_EQ(screen_->DialogBox(kFormTemplate, dialog->Handle(), form), 2);
  EXPECT_EQ(ownerDestroyedThen, 0) << "its handler may still be running";
  EXPECT_TRUE(ServeUntil([&] { return owner.destroyed == 1; }));
}

TEST_F(Windows, QuittingEndsADialogThatIsOpen) {
  SampleDialog form(*screen_);
  screen_->PostToScreen([&] {
    QTimer::singleShot(30, [&] { screen_->PostQuit(4); });
    EXPECT_EQ(screen_->DialogBox(kFormTemplate, 0, form), ui::kDialogDone);
  });
  EXPECT_EQ(screen_->RunMessageLoop(), 4);
  EXPECT_EQ(form.destroyed, 1);
}

TEST_F(Windows, QuittingLetsAWorkersDialogAndBoxGo) {
  SampleDialog form(*screen_);
  std::atomic<int> result = -1;
  std::atomic<int> answer = -1;
  std::thread dialogs([&] { result = screen_->DialogBox(kFormTemplate, 0, form); });
  std::thread boxes([&] {
    answer = static_cast<int>(screen_->MessageBox(0, u"Continue?", u"W", ui::kBoxQuestion));
  });
  const auto quitWhenBothAreOpen = [&](auto&& again) -> void {
    if (OpenWindow(kFormDialog) != nullptr && OpenBox() != nullptr) {
      screen_->PostQuit(0);
      return;
    }
    QTimer::singleShot(5, [again] { again(again); });
  };
  quitWhenBothAreOpen(quitWhenBothAreOpen);
  screen_->RunMessageLoop();
  dialogs.join();
  boxes.join();
  EXPECT_EQ(result, ui::kDialogDone);
  EXPECT_EQ(answer, static_cast<int>(ui::BoxAnswer::kNo));
  EXPECT_EQ(form.destroyed, 1);
}

TEST_F(Windows, TwoWorkersBoxesAreAnsweredInAnyOrder) {
  SampleDialog handler(*screen_);
  const auto dialog = Show(kListTemplate, handler);
  std::atomic<int> first = 0;
  std::atomic<int> second = 0;
  const auto ask = [&](std::atomic<int>& answer, const char16_t* text) {
    answer =
        static_cast<int>(screen_->MessageBox(dialog->Handle(), text, u"Warning", ui::kBoxQuestion));
  };
  std::thread one([&] { ask(first, u"One?"); });
  const auto boxWith = [](const QString& text) -> qt::MessageWindow* {
    for (QWidget* window : QApplication::topLevelWidgets()) {
      auto* box = qobject_cast<qt::MessageWindow*>(window);
      if (box != nullptr && box->isVisible() && box->accessibleDescription() == text) {
        return box;
      }
    }
    return nullptr;
  };
  ASSERT_TRUE(ServeUntil([&] { return boxWith(QStringLiteral("One?")) != nullptr; }));
  std::thread two([&] { ask(second, u"Two?"); });
  ASSERT_TRUE(ServeUntil([&] { return boxWith(QStringLiteral("Two?")) != nullptr; }));
  // The older one first, though the younger stands before it.
  boxWith(QStringLiteral("One?"))->reject();
  EXPECT_TRUE(ServeUntil([&] { return first != 0; }));
  EXPECT_EQ(second, 0);
  QTest::keyClick(boxWith(QStringLiteral("Two?")), Qt::Key_Y);
  EXPECT_TRUE(ServeUntil([&] { return second != 0; }));
  one.join();
  two.join();
  EXPECT_EQ(first, static_cast<int>(ui::BoxAnswer::kNo));
  EXPECT_EQ(second, static_cast<int>(ui::BoxAnswer::kYes));
}

TEST_F(Windows, ABoxShowsItsWordsAsTheyStandAndLargeButtons) {
  QTimer::singleShot(20, [] {
    qt::MessageWindow* box = OpenBox();
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->windowTitle(), QStringLiteral("Error"));
    auto* text = box->findChild<QLabel*>(QStringLiteral("messageText"));
    EXPECT_EQ(text->text(), QStringLiteral("<b>SIM</b> &\nbusy. "));
    EXPECT_EQ(text->textFormat(), Qt::PlainText);
    const auto buttons = box->findChildren<QPushButton*>();
    ASSERT_EQ(buttons.size(), 1);
    EXPECT_GE(buttons[0]->height(), 40);
    EXPECT_TRUE(buttons[0]->hasFocus());
    QTest::keyClick(box, Qt::Key_Return);
  });
  EXPECT_EQ(screen_->MessageBox(0, u"<b>SIM</b> &\nbusy. ", u"Error", ui::kBoxError),
            ui::BoxAnswer::kOk);
}

TEST_F(Windows, EnterAnswersNoToAQuestion) {
  QTimer::singleShot(20, [] {
    qt::MessageWindow* box = OpenBox();
    ASSERT_NE(box, nullptr);
    QTest::keyClick(box, Qt::Key_Return);
  });
  EXPECT_EQ(screen_->MessageBox(0, u"Delete all?", u"Warning", ui::kBoxQuestion),
            ui::BoxAnswer::kNo);
}

TEST_F(Windows, ALongTextInABoxIsReadWhole) {
  std::u16string words;
  for (int i = 0; i < 40; ++i) {
    words += u"A sentence of some length. ";
  }
  SampleDialog handler(*screen_);
  const auto dialog = Show(kListTemplate, handler);
  QTimer::singleShot(20, [&] {
    qt::MessageWindow* box = OpenBox();
    ASSERT_NE(box, nullptr);
    EXPECT_LE(box->height(), 640);
    const auto buttons = box->findChildren<QPushButton*>();
    for (const QPushButton* button : buttons) {
      EXPECT_TRUE(
          box->rect().contains(button->geometry().translated(button->parentWidget()->pos())));
    }
    box->reject();
  });
  screen_->MessageBox(dialog->Handle(), words, u"Info", ui::kBoxNotice);
}

TEST_F(Windows, ADialogOfAWorkerStandsBesideWhatTheUserDoes) {
  SampleDialog handler(*screen_);
  const auto dialog = Show(kListTemplate, handler);
  SampleDialog form(*screen_);
  std::atomic<int> result = 0;
  std::thread worker([&] { result = screen_->DialogBox(kFormTemplate, dialog->Handle(), form); });
  ASSERT_TRUE(ServeUntil([] { return OpenWindow(kFormDialog) != nullptr; }));
  screen_->PostToScreen([&] { OpenWindow(kFormDialog)->Dialog().End(3); });
  EXPECT_TRUE(ServeUntil([&] { return result != 0; }));
  worker.join();
  EXPECT_EQ(result, 3);
  EXPECT_EQ(form.destroyed, 1);
}

TEST_F(Windows, ActivationIsTold) {
  SampleDialog handler(*screen_);
  const auto dialog = Show(kListTemplate, handler);
  ASSERT_FALSE(handler.activations.empty());
  EXPECT_TRUE(handler.activations.back());
  screen_->PostToScreen([&] {
    EXPECT_TRUE(ServeUntil([&] { return OpenBox() != nullptr && !handler.activations.back(); }));
    OpenBox()->reject();
  });
  screen_->MessageBox(dialog->Handle(), u"Done.", u"Info", ui::kBoxNotice);
  EXPECT_TRUE(ServeUntil([&] {
    return handler.activations == std::vector<bool>({true, false, true});
  }));
}

TEST_F(Windows, HelpAndTheTalkKeyReachTheDialog) {
  SampleDialog handler(*screen_);
  const auto dialog = Show(kListTemplate, handler);
  QWidget* list = Table(*dialog, kSampleList);
  QTest::keyClick(list, Qt::Key_F1);
  QKeyEvent talk(QEvent::KeyPress, Qt::Key_Call, Qt::NoModifier);
  QApplication::sendEvent(list, &talk);
  EXPECT_EQ(handler.helps, 1);
  EXPECT_EQ(handler.hotKeys, std::vector<int>{ui::kVirtualKeyTalk});
}

TEST_F(Windows, AKeyIsOfferedOnce) {
  SampleDialog handler(*screen_);
  const auto dialog = Show(kListTemplate, handler);
  QWidget* list = Table(*dialog, kSampleList);
  QTest::keyClick(list, Qt::Key_Escape);
  EXPECT_EQ(handler.commands, std::vector<int>{ui::kCommandCancel});
}

TEST_F(Windows, APictureOfTheMainWindowIsSaved) {
  SampleDialog handler(*screen_);
  const std::string file = (Folder("") / "main.png").string();
  EXPECT_FALSE(screen_->GrabMainWindow(file));
  const auto dialog = Show(kListTemplate, handler);
  EXPECT_TRUE(screen_->GrabMainWindow(file));
  const QImage picture(QString::fromStdString(file));
  EXPECT_EQ(picture.size(), QSize(360, 640));
  EXPECT_FALSE(screen_->GrabMainWindow((Folder("no/such") / "main.png").string()));
}

TEST_F(Windows, TheHeaderSetsTheNumberApart) {
  using qt::HeaderTexts;
  using qt::SplitHeader;
  const auto is = [](const char* text, const char* caption, const char* number) {
    EXPECT_EQ(SplitHeader(QString::fromUtf8(text)),
              (HeaderTexts{QString::fromUtf8(caption), QString::fromUtf8(number)}))
        << text;
  };
  is("My No. +491712345678", "My No.", "+491712345678");
  is("My No. ", "My No.", "");
  is("My No. *21#", "My No.", "*21#");
  is("SIM Information", "SIM Information", "");
  is("112", "112", "");
}

// How high a drawing's marks reach, of those that are not the window's colour.
int MarkedHeight(const QImage& picture, int left) {
  const QRgb empty = picture.pixel(0, 0);
  int top = picture.height();
  int bottom = -1;
  for (int y = 0; y < picture.height(); ++y) {
    for (int x = left; x < picture.width(); ++x) {
      if (picture.pixel(x, y) != empty) {
        top = std::min(top, y);
        bottom = std::max(bottom, y);
      }
    }
  }
  return bottom - top + 1;
}

TEST_F(Windows, AHeaderWithoutItsNumberKeepsCaptionAndCard) {
  qt::HeaderView header(nullptr);
  header.resize(360, 56);
  ui::ControlState state;
  state.style = ui::kStyleHeader | ui::kStyleValue;
  const auto draw = [&](const char16_t* text) {
    state.text = text;
    header.Apply(state);
    return header.grab().toImage();
  };
  constexpr int kTexts = 16 + 28 + 12;  // right of the card's drawing
  const QImage known = draw(u"My No. +491712345678");
  const QImage unknown = draw(u"My No. ");
  const QRect card(0, 0, kTexts, 56);
  EXPECT_EQ(unknown.copy(card), known.copy(card));
  EXPECT_GT(MarkedHeight(unknown.copy(card), 0), 12);
  EXPECT_LE(MarkedHeight(unknown, kTexts), 12);  // one line of small text
  EXPECT_GT(MarkedHeight(unknown, kTexts), 0);
}

TEST_F(Windows, TheInputPanelsBackKeyDeletesInAField) {
  SampleDialog handler(*screen_);
  const auto dialog = Show(kFormTemplate, handler);
  dialog->SetSelection(kNameEdit, 3, 3);
  Settle();
  qt::QtShell shell(u"PocketPC");
  shell.SendBackKey();
  Settle();
  EXPECT_EQ(dialog->Text(kNameEdit), u"Müler, Jörg");
}

TEST(Shell, AnswersAsItWasMade) {
  qt::QtShell shell(u"Smartphone");
  EXPECT_EQ(shell.PlatformType(), u"Smartphone");
  EXPECT_EQ(shell.WaitForShell(0, 0, 1, 1), platform::ShellReadiness::kReady);
  EXPECT_EQ(shell.ImmSetConversionStatus({0x00050010, 3}), 1);
  platform::InputMethodStatus status;
  EXPECT_EQ(shell.ImmGetConversionStatus(status), 1);
  EXPECT_EQ(status.conversion, 0x00050010u);
  EXPECT_EQ(status.sentence, 3u);
}

constexpr ui::Size kMonitor = {1920, 1080};

class SavedSize : public ::testing::Test {
 protected:
  std::filesystem::path Folder() const {
    return std::filesystem::path(folder_.path().toStdString()) / "state";
  }
  void Write(const char* text) const {
    std::filesystem::create_directories(Folder());
    QFile file(QString::fromStdString((Folder() / "window").string()));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text);
  }
  QTemporaryDir folder_;
};

TEST_F(SavedSize, IsReadBackAndTheUsersAlone) {
  EXPECT_EQ(qt::LoadWindowState(Folder(), kMonitor), std::nullopt);
  ASSERT_TRUE(qt::SaveWindowState(Folder(), kMonitor, {{700, 500}, true}));
  EXPECT_EQ(qt::LoadWindowState(Folder(), kMonitor), (qt::WindowState{{700, 500}, true}));
  const auto permissions = std::filesystem::status(Folder() / "window").permissions();
  EXPECT_EQ(permissions & std::filesystem::perms::all,
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST_F(SavedSize, NonsenseIsNotBelieved) {
  for (const char* text :
       {"", "1920 1080 700", "1920 1080 0 0 normal\n", "1920 1080 -5 500 normal\n",
        "1920 1080 99999 500 normal\n", "1920 1080 seven hundred normal\n"}) {
    Write(text);
    EXPECT_EQ(qt::LoadWindowState(Folder(), kMonitor), std::nullopt) << text;
  }
}

TEST_F(SavedSize, IsNoPipeOrDeviceAndReplacesNone) {
  const std::filesystem::path pipe = Folder() / "pipe";
  std::filesystem::create_directories(Folder());
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  // So full that nobody who reads it all the same would wait for more.
  const int filled = open(pipe.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
  ASSERT_GE(filled, 0);
  const std::string lines(32768, '\n');
  EXPECT_EQ(write(filled, lines.data(), lines.size()), static_cast<ssize_t>(lines.size()));
  std::filesystem::create_symlink(pipe, Folder() / "window");
  EXPECT_EQ(qt::LoadWindowState(Folder(), kMonitor), std::nullopt);
  EXPECT_FALSE(qt::SaveWindowState(Folder(), kMonitor, {{700, 500}, false}));
  EXPECT_TRUE(std::filesystem::is_fifo(pipe));
  close(filled);
}

// A phone that is put to a monitor has a window there, and fills its own screen afterwards.
TEST_F(SavedSize, IsKeptForEachScreen) {
  constexpr ui::Size kPhone = {360, 720};
  ASSERT_TRUE(qt::SaveWindowState(Folder(), kPhone, {{360, 720}, true}));
  EXPECT_EQ(qt::LoadWindowState(Folder(), kMonitor), std::nullopt);
  ASSERT_TRUE(qt::SaveWindowState(Folder(), kMonitor, {{700, 500}, false}));
  ASSERT_TRUE(qt::SaveWindowState(Folder(), kMonitor, {{800, 600}, false}));
  EXPECT_EQ(qt::LoadWindowState(Folder(), kPhone), (qt::WindowState{{360, 720}, true}));
  EXPECT_EQ(qt::LoadWindowState(Folder(), kMonitor), (qt::WindowState{{800, 600}, false}));
}

TEST_F(SavedSize, IsForgottenForTheScreenThatWasNotUsedForEightOthers) {
  for (int width = 1001; width <= 1009; ++width) {
    ASSERT_TRUE(qt::SaveWindowState(Folder(), {width, 800}, {{700, 500}, false}));
  }
  EXPECT_EQ(qt::LoadWindowState(Folder(), {1001, 800}), std::nullopt);
  EXPECT_NE(qt::LoadWindowState(Folder(), {1002, 800}), std::nullopt);
}

TEST_F(SavedSize, OfTheMainWindowIsThereNextTime) {
  int argc = 1;
  char name[] = "gui_tests";
  char* argv[] = {name, nullptr};
  const qt::QtScreen::Options options{Folder(), Folder(), std::nullopt};
  {
    qt::QtScreen screen(argc, argv, options);
    SampleDialog handler(screen);
    const auto dialog = screen.CreateDialog(kListTemplate, 0, handler);
    screen.ShowDialog(*dialog);
    EXPECT_EQ(WindowOf(*dialog)->size(), QSize(480, 640));
    WindowOf(*dialog)->resize(520, 660);
    Settle();
    WindowOf(*dialog)->close();
    EXPECT_TRUE(ServeUntil([&] { return handler.destroyed == 1; }));
  }
  qt::QtScreen screen(argc, argv, options);
  SampleDialog handler(screen);
  const auto dialog = screen.CreateDialog(kListTemplate, 0, handler);
  EXPECT_EQ(WindowOf(*dialog)->size(), QSize(520, 660));
}

}  // namespace
}  // namespace kelpin::test
