#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>
#include <QString>
#include <optional>

#include "ui/geometry.h"

// How the program looks: every colour, text size and length of the windows comes from here.
namespace kelpin::qt {

// What the desktop, or the user's environment, asks for.
struct Look {
  bool dark = false;
  bool highContrast = false;
  std::optional<QColor> accent;  // the desktop's own
  double textScale = 1.0;        // 1.0: base text of 14 pixels
  bool operator==(const Look&) const = default;
};

// The palette carries all colours, so that a widget needs nothing but its own palette. Roles that
// Qt names for something else:
inline constexpr QPalette::ColorRole kMutedRole = QPalette::PlaceholderText;
inline constexpr QPalette::ColorRole kAccentRole = QPalette::Link;
inline constexpr QPalette::ColorRole kOnAccentRole = QPalette::HighlightedText;
inline constexpr QPalette::ColorRole kSelectionRole = QPalette::AlternateBase;
inline constexpr QPalette::ColorRole kHoverRole = QPalette::Light;
inline constexpr QPalette::ColorRole kHairlineRole = QPalette::Mid;
inline constexpr QPalette::ColorRole kBorderRole = QPalette::Dark;  // of fields and buttons
inline constexpr QPalette::ColorRole kErrorRole = QPalette::BrightText;

QPalette MakePalette(const Look& look);

// 1 to 21, as WCAG 2 defines it.
double ContrastRatio(const QColor& first, const QColor& second);
inline constexpr double kTextContrast = 4.5;

enum class TextRole { kBase, kName, kValue, kHeader, kTitle, kCaption, kKey };

// The base font: `family` empty keeps the desktop's.
QFont BaseFont(const QFont& desktop, const QString& family, double textScale);
QFont FontFor(TextRole role);  // from the application's font
// A length of the design, grown with the text.
int Scaled(int pixels);
ui::Metrics MakeMetrics(ui::Size screen);

inline constexpr int kCornerRadius = 8;
inline constexpr int kMinimumTouch = 40;
int RowHeight();
int SoftKeyBarHeight();
int MenuItemHeight();

}  // namespace kelpin::qt
