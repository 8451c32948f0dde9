// Colours and fonts that more than one window uses. Every coloured label carries its own text
// colour, so that it can be read under a dark desktop theme too.
#pragma once

#include <QColor>
#include <QFont>
#include <QLabel>

namespace ostrel::ui {

inline constexpr QColor kLightGrey(0xC0, 0xC0, 0xC0);
inline constexpr QColor kYellow(0xFF, 0xFF, 0x00);
inline constexpr QColor kRed(0xFF, 0x00, 0x00);
inline constexpr QColor kQueueYellow(0xFF, 0xFF, 0x80);
inline constexpr QColor kStatusYellow(0xFF, 0xFF, 0xC0);

/// Paints the label's ground in `color`, under black text.
void SetBackground(QLabel* label, const QColor& color);

/// Draws the sunken box around a label.
void SetBoxed(QLabel* label);

/// A tool tip that shows `text` letter for letter, also where it looks like markup.
QString PlainToolTip(const QString& text);

/// The main window's font, at the size its fixed layout is made for.
QFont MainFont();
/// What file name patterns are shown in.
QFont PatternFont();
/// The program's icon in its several sizes.
QIcon ProgramIcon();

}  // namespace ostrel::ui
