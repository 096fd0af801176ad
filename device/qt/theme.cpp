#include "device/qt/theme.h"

#include <QApplication>
#include <QFontMetrics>
#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>

namespace kelpin::qt {
namespace {

constexpr int kBasePixels = 14;

QColor Mix(const QColor& from, const QColor& to, double part) {
  const auto channel = [part](int a, int b) {
    return static_cast<int>(std::lround(a + (b - a) * part));
  };
  return QColor(channel(from.red(), to.red()), channel(from.green(), to.green()),
                channel(from.blue(), to.blue()));
}

double Luminance(const QColor& color) {
  const auto linear = [](double value) {
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
         0.0722 * linear(color.blueF());
}

// `color` moved towards `towards` until it can be read on every one of `grounds`.
QColor Readable(QColor color, const QColor& towards, std::initializer_list<QColor> grounds,
                double ratio) {
  constexpr int kSteps = 40;
  for (int step = 0; step <= kSteps; ++step) {
    const QColor candidate = Mix(color, towards, static_cast<double>(step) / kSteps);
    if (std::all_of(grounds.begin(), grounds.end(), [&](const QColor& ground) {
          return ContrastRatio(candidate, ground) >= ratio;
        })) {
      return candidate;
    }
  }
  return towards;
}

int LineHeight(TextRole role) {
  return QFontMetrics(FontFor(role)).height();
}

}  // namespace

double ContrastRatio(const QColor& first, const QColor& second) {
  const double a = Luminance(first);
  const double b = Luminance(second);
  return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

QPalette MakePalette(const Look& look) {
  const bool dark = look.dark;
  const QColor white(255, 255, 255);
  const QColor black(0, 0, 0);
  QColor window = dark ? QColor(0x15, 0x18, 0x1d) : QColor(0xf5, 0xf7, 0xfa);
  QColor base = dark ? QColor(0x1d, 0x20, 0x26) : white;
  QColor text = dark ? QColor(0xec, 0xee, 0xf1) : QColor(0x16, 0x19, 0x1d);
  if (look.highContrast) {
    window = base = dark ? black : white;
    text = dark ? white : black;
  }
  const QColor accentWish =
      look.accent.value_or(dark ? QColor(0x6e, 0xa8, 0xff) : QColor(0x1a, 0x62, 0xd6));
  const double ratio = look.highContrast ? 7.0 : kTextContrast;
  const QColor selection = Mix(base, accentWish, dark ? 0.20 : 0.13);
  const QColor hover = Mix(base, accentWish, dark ? 0.09 : 0.05);
  const QColor extreme = dark ? white : black;
  const QColor accent = Readable(accentWish, extreme, {window, base, selection, hover}, ratio);
  const QColor muted =
      look.highContrast
          ? Readable(Mix(window, text, 0.75), text, {window, base, hover}, ratio)
          : Readable(Mix(window, text, 0.58), text, {window, base, hover, selection}, ratio);
  const QColor hairline = Mix(window, text, look.highContrast ? 0.6 : (dark ? 0.12 : 0.10));
  const QColor border = Mix(window, text, look.highContrast ? 0.8 : (dark ? 0.20 : 0.16));
  const QColor button = dark ? Mix(window, text, 0.08) : base;
  const QColor error = Readable(dark ? QColor(0xff, 0x8a, 0x80) : QColor(0xc0, 0x1c, 0x28), extreme,
                                {window, base, button}, ratio);
  // Text on a filled accent: whichever end of the scale reads better.
  const QColor onAccent =
      ContrastRatio(accent, white) >= ContrastRatio(accent, QColor(0x10, 0x12, 0x16))
          ? white
          : QColor(0x10, 0x12, 0x16);

  QPalette palette;
  for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
    const QColor& words = group == QPalette::Disabled ? muted : text;
    palette.setColor(group, QPalette::Window, window);
    palette.setColor(group, QPalette::WindowText, words);
    palette.setColor(group, QPalette::Base, base);
    palette.setColor(group, QPalette::Text, words);
    palette.setColor(group, QPalette::Button, button);
    palette.setColor(group, QPalette::ButtonText, words);
    palette.setColor(group, QPalette::ToolTipBase, base);
    palette.setColor(group, QPalette::ToolTipText, text);
    palette.setColor(group, QPalette::Highlight, accent);
    palette.setColor(group, QPalette::LinkVisited, accent);
    palette.setColor(group, QPalette::Midlight, hairline);
    palette.setColor(group, QPalette::Shadow, black);
    palette.setColor(group, kMutedRole, muted);
    palette.setColor(group, kAccentRole, group == QPalette::Disabled ? muted : accent);
    palette.setColor(group, kOnAccentRole, onAccent);
    palette.setColor(group, kSelectionRole, selection);
    palette.setColor(group, kHoverRole, hover);
    palette.setColor(group, kHairlineRole, hairline);
    palette.setColor(group, kBorderRole, border);
    palette.setColor(group, kErrorRole, error);
  }
  return palette;
}

QFont BaseFont(const QFont& desktop, const QString& family, double textScale) {
  QFont font = desktop;
  if (!family.isEmpty()) {
    font = QFont(family);
  }
  font.setPixelSize(std::max(8, static_cast<int>(std::lround(kBasePixels * textScale))));
  font.setWeight(QFont::Normal);
  return font;
}

QFont FontFor(TextRole role) {
  struct Size {
    double factor;
    QFont::Weight weight;
  };
  static constexpr std::array<Size, 7> kSizes = {{
      {1.0, QFont::Normal},          // kBase
      {15.0 / 14, QFont::Medium},    // kName
      {15.0 / 14, QFont::Normal},    // kValue
      {19.0 / 14, QFont::DemiBold},  // kHeader
      {16.0 / 14, QFont::DemiBold},  // kTitle
      {12.0 / 14, QFont::Normal},    // kCaption
      {15.0 / 14, QFont::DemiBold},  // kKey
  }};
  const Size& size = kSizes[static_cast<std::size_t>(role)];
  QFont font = QApplication::font();
  font.setPixelSize(static_cast<int>(std::lround(font.pixelSize() * size.factor)));
  font.setWeight(size.weight);
  return font;
}

int Scaled(int pixels) {
  const int size = QApplication::font().pixelSize();
  return size <= 0
             ? pixels
             : static_cast<int>(std::lround(static_cast<double>(pixels) * size / kBasePixels));
}

ui::Metrics MakeMetrics(ui::Size screen) {
  ui::Metrics metrics;
  metrics.screen = screen;
  metrics.labelHeight = std::max(20, LineHeight(TextRole::kCaption) + 4);
  metrics.fieldHeight = std::max(kMinimumTouch, LineHeight(TextRole::kBase) + 20);
  metrics.headerHeight =
      std::max(56, LineHeight(TextRole::kCaption) + LineHeight(TextRole::kHeader) + 16);
  metrics.textLineHeight = std::max(20, LineHeight(TextRole::kBase) + 2);
  metrics.buttonWidth = std::max(48, Scaled(48));
  metrics.progressHeight = std::max(8, Scaled(8));
  return metrics;
}

int RowHeight() {
  return std::max(48, LineHeight(TextRole::kName) + 26);
}
int SoftKeyBarHeight() {
  return std::max(56, LineHeight(TextRole::kKey) + 32);
}
int MenuItemHeight() {
  return std::max(kMinimumTouch, LineHeight(TextRole::kBase) + 20);
}

}  // namespace kelpin::qt
