#include "ui/error_window.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "ui/bindings.h"

namespace ostrel::ui {
namespace {

constexpr QSize kInitialSize(480, 300);

}  // namespace

ErrorWindow::ErrorWindow(const Clock& clock, QWidget* parent)
    : QDialog(parent),
      clock_(clock),
      txtError_(new QPlainTextEdit(this)),
      txtDisplay_(new QPlainTextEdit(this)) {
  setObjectName("frmError");
  setWindowTitle("Ostrel - Error Message");
  setAttribute(Qt::WA_DeleteOnClose);
  auto* const heading =
      new QLabel(QString("The following error condition was encountered while processing."), this);
  heading->setObjectName("lblError");
  txtError_->setObjectName("txtError");
  txtError_->hide();
  txtDisplay_->setObjectName("txtDisplay");
  txtDisplay_->setReadOnly(true);
  txtDisplay_->setTabChangesFocus(true);
  heading->setBuddy(txtDisplay_);
  auto* const close = new QPushButton("&Close", this);
  close->setObjectName("cmdClose");
  connect(close, &QPushButton::clicked, this, &QWidget::close);

  auto* const layout = new QVBoxLayout(this);
  layout->addWidget(heading);
  layout->addWidget(txtDisplay_);
  layout->addWidget(close, 0, Qt::AlignHCenter);
  resize(kInitialSize);
  connect(txtError_, &QPlainTextEdit::textChanged, this, &ErrorWindow::Display);
}

void ErrorWindow::SetMessage(const QString& text) {
  QString plain = text;
  plain.replace("\r\n", "\n");
  if (plain != txtError_->toPlainText()) txtError_->setPlainText(plain);
}

void ErrorWindow::Display() {
  txtDisplay_->setPlainText(ToQt(FormatDisplayStamp(clock_.Now())) + "\r\n" +
                            txtError_->toPlainText());
}

}  // namespace ostrel::ui
