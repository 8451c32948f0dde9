#include "ui/looks.h"

#include <QFontInfo>
#include <QIcon>
#include <QTextDocument>

// The icon is compiled into a static library, whose resources have to be asked for by name, and
// from outside any namespace.
static void LoadResources() {
  Q_INIT_RESOURCE(ostrel);
}

namespace ostrel::ui {
namespace {

constexpr int kMainFontPixels = 11;  // 8 point at 96 dpi

QFont FirstInstalled(const QStringList& families) {
  QFont font;
  font.setFamilies(families);
  return font;
}

}  // namespace

void SetBackground(QLabel* label, const QColor& color) {
  QPalette palette = label->palette();
  palette.setColor(QPalette::Window, color);
  palette.setColor(QPalette::WindowText, Qt::black);
  label->setAutoFillBackground(true);
  label->setPalette(palette);
}

void SetBoxed(QLabel* label) {
  label->setFrameStyle(QFrame::Panel | QFrame::Sunken);
  label->setLineWidth(1);
}

QString PlainToolTip(const QString& text) {
  return text.isEmpty() ? text : Qt::convertFromPlainText(text, Qt::WhiteSpaceNormal);
}

QFont MainFont() {
  QFont font = FirstInstalled({"Arial", "Liberation Sans", "Helvetica"});
  font.setPixelSize(kMainFontPixels);
  return font;
}

QFont PatternFont() {
  QFont font = FirstInstalled({"Courier New", "Liberation Mono", "Courier"});
  font.setStyleHint(QFont::Monospace);
  return font;
}

QIcon ProgramIcon() {
  LoadResources();
  QIcon icon;
  for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
    icon.addFile(QStringLiteral(":/icons/ostrel-%1.png").arg(size), QSize(size, size));
  }
  return icon;
}

}  // namespace ostrel::ui
