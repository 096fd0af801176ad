#include "device/qt/theme.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QImage>
#include <QScrollBar>
#include <algorithm>
#include <array>
#include <string>

#include "device/qt/desktop_look.h"
#include "tests/gui/gui_support.h"

namespace kelpin::test {
namespace {

using qt::ContrastRatio;

TEST(Theme, ContrastIsAsWcagDefinesIt) {
  // Black on white is 21; #767676 is the known lightest grey that reaches 4.5 on white.
  EXPECT_NEAR(ContrastRatio(Qt::black, Qt::white), 21.0, 0.01);
  EXPECT_NEAR(ContrastRatio(Qt::white, Qt::black), 21.0, 0.01);
  EXPECT_GE(ContrastRatio(QColor(0x76, 0x76, 0x76), Qt::white), 4.5);
  EXPECT_LT(ContrastRatio(QColor(0x77, 0x77, 0x77), Qt::white), 4.5);
}

struct Pair {
  const char* what;
  QPalette::ColorRole text;
  QPalette::ColorRole ground;
};
constexpr std::array kPairs = {
    Pair{"text on the window", QPalette::WindowText, QPalette::Window},
    Pair{"names in the list", QPalette::Text, QPalette::Base},
    Pair{"names of selected rows", QPalette::Text, qt::kSelectionRole},
    Pair{"names under the pointer", QPalette::Text, qt::kHoverRole},
    Pair{"numbers in the list", qt::kMutedRole, QPalette::Base},
    Pair{"numbers under the pointer", qt::kMutedRole, qt::kHoverRole},
    Pair{"labels", qt::kMutedRole, QPalette::Window},
    Pair{"soft keys", qt::kAccentRole, QPalette::Window},
    Pair{"soft keys under the pointer", qt::kAccentRole, qt::kHoverRole},
    Pair{"soft keys while pressed", qt::kAccentRole, qt::kSelectionRole},
    Pair{"buttons", QPalette::ButtonText, QPalette::Button},
    Pair{"the button that Enter presses", qt::kOnAccentRole, qt::kAccentRole},
    Pair{"selected text in a field", qt::kOnAccentRole, QPalette::Highlight},
    Pair{"errors", qt::kErrorRole, QPalette::Window},
};

TEST(Theme, AllTextCanBeReadWhateverTheDesktopsAccent) {
  const std::array accents = {std::optional<QColor>(),
                              std::optional(QColor(0xff, 0xe0, 0x00)),
                              std::optional(QColor(0x00, 0x00, 0x60)),
                              std::optional(QColor(0xe0, 0x1b, 0x24)),
                              std::optional(QColor(0x33, 0xd1, 0x7a)),
                              std::optional(QColor(0x80, 0x80, 0x80))};
  for (const bool dark : {false, true}) {
    for (const bool contrast : {false, true}) {
      for (const std::optional<QColor>& accent : accents) {
        const QPalette palette = qt::MakePalette({dark, contrast, accent, 1.0});
        for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
          for (const Pair& pair : kPairs) {
            EXPECT_GE(
                ContrastRatio(palette.color(group, pair.text), palette.color(group, pair.ground)),
                qt::kTextContrast)
                << pair.what << (dark ? ", dark" : ", light") << (contrast ? ", contrast" : "")
                << ", group " << group << ", accent "
                << (accent ? accent->name().toStdString() : std::string("own"));
          }
        }
      }
    }
  }
}

TEST(Theme, ADisabledSoftKeyIsMuted) {
  const QPalette palette = qt::MakePalette({});
  EXPECT_EQ(palette.color(QPalette::Disabled, qt::kAccentRole),
            palette.color(QPalette::Active, qt::kMutedRole));
  EXPECT_NE(palette.color(QPalette::Active, qt::kAccentRole),
            palette.color(QPalette::Active, qt::kMutedRole));
}

TEST(Theme, HighContrastIsBlackAndWhite) {
  const QPalette light = qt::MakePalette({false, true, std::nullopt, 1.0});
  EXPECT_EQ(light.color(QPalette::Window), QColor(Qt::white));
  EXPECT_EQ(light.color(QPalette::WindowText), QColor(Qt::black));
  const QPalette dark = qt::MakePalette({true, true, std::nullopt, 1.0});
  EXPECT_EQ(dark.color(QPalette::Base), QColor(Qt::black));
  EXPECT_EQ(dark.color(QPalette::Text), QColor(Qt::white));
}

class Environment {
 public:
  Environment(const char* name, const char* value) : name_(name), before_(qgetenv(name)) {
    qputenv(name, value);
  }
  ~Environment() {
    if (before_.isNull()) {
      qunsetenv(name_);
    } else {
      qputenv(name_, before_);
    }
  }
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;

 private:
  const char* name_;
  QByteArray before_;
};

TEST(DesktopLookTest, TheVariableComesBeforeTheDesktop) {
  QPalette darkDesktop;
  darkDesktop.setColor(QPalette::Window, QColor(30, 30, 30));
  darkDesktop.setColor(QPalette::WindowText, QColor(230, 230, 230));
  const qt::DesktopLook look(QApplication::font());
  {
    const Environment none("KELPIN_THEME", "");
    EXPECT_TRUE(look.For(darkDesktop).dark);
  }
  {
    const Environment light("KELPIN_THEME", "light");
    EXPECT_FALSE(look.For(darkDesktop).dark);
  }
  const Environment contrast("KELPIN_THEME", "dark-contrast");
  EXPECT_TRUE(look.For(QPalette()).dark);
  EXPECT_TRUE(look.For(QPalette()).highContrast);
}

TEST(DesktopLookTest, TheAccentIsTheDesktopsWhereItTellsOne) {
  const Environment none("KELPIN_THEME", "");
  const qt::DesktopLook look(QApplication::font());
  QPalette desktop;
  desktop.setColor(QPalette::Active, QPalette::Highlight, QColor(0xe9, 0x54, 0x20));
  EXPECT_EQ(look.For(desktop).accent, QColor(0xe9, 0x54, 0x20));
  desktop.setColor(QPalette::Active, QPalette::Highlight, QColor(0x99, 0x99, 0x99));
  EXPECT_EQ(look.For(desktop).accent, std::nullopt) << "grey is no accent";
}

TEST(DesktopLookTest, TextGrowsWithTheScale) {
  const Environment scale("KELPIN_TEXT_SCALE", "200");
  const qt::DesktopLook look(QApplication::font());
  EXPECT_EQ(look.Font().pixelSize(), 28);
}

class ThemeInWindows : public GuiTest {};

TEST_F(ThemeInWindows, MetricsHoldTheSmallestSizes) {
  const ui::Metrics metrics = screen_->GetMetrics();
  EXPECT_GE(metrics.fieldHeight, 40);
  EXPECT_GE(metrics.headerHeight, 56);
  EXPECT_GE(metrics.buttonWidth, 40);
  EXPECT_GE(qt::RowHeight(), 48);
  EXPECT_GE(qt::SoftKeyBarHeight(), 56);
  EXPECT_GE(qt::MenuItemHeight(), 40);
}

TEST(ThemeLarge, MetricsGrowWithTheText) {
  const ui::Metrics usual = qt::MakeMetrics({360, 640});
  const QFont before = QApplication::font();
  QFont large = before;
  large.setPixelSize(28);
  QApplication::setFont(large);
  const ui::Metrics grown = qt::MakeMetrics({360, 640});
  QApplication::setFont(before);
  EXPECT_GT(grown.labelHeight, usual.labelHeight);
  EXPECT_GT(grown.fieldHeight, usual.fieldHeight);
  EXPECT_GT(grown.headerHeight, usual.headerHeight);
  EXPECT_EQ(grown.buttonWidth, 96);
}

// The most that any point of `picture` stands out against `ground`.
double MostContrast(const QImage& picture, const QColor& ground) {
  double most = 1;
  for (int y = 0; y < picture.height(); ++y) {
    for (int x = 0; x < picture.width(); ++x) {
      most = std::max(most, ContrastRatio(picture.pixelColor(x, y), ground));
    }
  }
  return most;
}

TEST_F(ThemeInWindows, AListThatGoesOnShowsSoByAHandleThatStandsOut) {
  constexpr double kMarkContrast = 3.0;
  SampleDialog handler(*screen_);
  const auto dialog = Show(kListTemplate, handler);
  for (int row = 0; row < 40; ++row) {
    dialog->List(kSampleList)->InsertItem(row, u"1", nullptr);
  }
  Settle();
  QWidget* const bar = Table(*dialog, kSampleList)->verticalScrollBar();
  for (const char* const theme : {"light", "dark"}) {
    const Environment wanted("KELPIN_THEME", theme);
    QApplication::setPalette(qt::MakePalette(qt::DesktopLook(QApplication::font()).For({})));
    Settle();
    EXPECT_GE(MostContrast(bar->grab().toImage(), bar->palette().color(QPalette::Base)),
              kMarkContrast)
        << theme;
  }
  QApplication::setPalette(QPalette());
}

TEST_F(ThemeInWindows, AChangeOfTheDesktopsColoursIsDrawnAtOnce) {
  SampleDialog handler(*screen_);
  const auto dialog = Show(kListTemplate, handler);
  const QColor light = WindowOf(*dialog)->grab().toImage().pixelColor(4, 4);
  {
    const Environment dark("KELPIN_THEME", "dark");
    // What Qt does when the desktop tells of another palette.
    QApplication::setPalette(qt::MakePalette(qt::DesktopLook(QApplication::font()).For({})));
    Settle();
    const QColor now = WindowOf(*dialog)->grab().toImage().pixelColor(4, 4);
    EXPECT_LT(now.lightness(), 60);
  }
  QApplication::setPalette(QPalette());
  EXPECT_GT(light.lightness(), 200);
}

}  // namespace
}  // namespace kelpin::test
