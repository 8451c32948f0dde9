#include "ui/message_box.h"

#include <QGridLayout>
#include <QSpacerItem>
#include <utility>

#include "base/text.h"
#include "ui/bindings.h"

namespace ostrel::ui {
namespace {

constexpr int kFrameButtonsWidth = 120;

QMessageBox::Icon IconOf(MessageIcon icon) {
  switch (icon) {
    case MessageIcon::kStop:
      return QMessageBox::Critical;
    case MessageIcon::kQuestion:
      return QMessageBox::Question;
    case MessageIcon::kExclamation:
      return QMessageBox::Warning;
    case MessageIcon::kInformation:
      break;
  }
  return QMessageBox::Information;
}

QMessageBox::StandardButtons ButtonsOf(const Message& message) {
  if (message.buttons == MessageButtons::kYesNo) return QMessageBox::Yes | QMessageBox::No;
  return QMessageBox::Ok;
}

/// The line ends are the program's own; within a line may stand what strangers wrote.
QString LinesOf(const std::string& text) {
  QStringList lines;
  ForEachLine(text, [&](std::string_view line) { lines << Shown(std::string(line)); });
  return lines.join('\n');
}

}  // namespace

MessageBox::MessageBox(const Message& message, std::function<void(MessageAnswer)> answered,
                       QWidget* owner)
    : QMessageBox(IconOf(message.icon), ToQt(message.title), LinesOf(message.text),
                  ButtonsOf(message), owner),
      message_(message) {
  setModal(false);
  setAttribute(Qt::WA_DeleteOnClose);
  setTextFormat(Qt::PlainText);
  MakeRoomForTitle();
  if (!answered) return;
  connect(this, &QDialog::finished, this,
          [safe = SafeAnswer(message), answered = std::move(answered)](int result) {
            answered(result == QMessageBox::Yes ? MessageAnswer::kYes : safe);
          });
}

bool MessageBox::Shows(const Message& message) const {
  return isVisible() && message == message_;
}

void MessageBox::setVisible(bool visible) {
  QWidget* const owner = parentWidget();
  if (!visible && isActiveWindow() && owner != nullptr && owner->isVisible())
    owner->activateWindow();
  QMessageBox::setVisible(visible);
}

/// Widens the box until its title stands in the frame uncut, beside the frame's own buttons.
void MessageBox::MakeRoomForTitle() {
  QFont bold = font();
  bold.setBold(true);
  const int width = QFontMetrics(bold).horizontalAdvance(windowTitle()) + kFrameButtonsWidth;
  auto* const grid = qobject_cast<QGridLayout*>(layout());
  if (grid == nullptr) return;
  grid->addItem(new QSpacerItem(width, 0), grid->rowCount(), 0, 1, grid->columnCount());
}

}  // namespace ostrel::ui
