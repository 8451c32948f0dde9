#include "ui/error_window.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>
#include <QVBoxLayout>

#include "ui/bindings.h"
#include "ui/form.h"

namespace ostrel::ui {
namespace {

constexpr QSize kInitialSize(480, 300);
constexpr int kMostKnown = 100;

QString WithoutTime(QString text) {
  static const QRegularExpression time("^At .*$", QRegularExpression::MultilineOption);
  return text.remove(time);
}

}  // namespace

ErrorWindow::ErrorWindow(const Clock& clock, SetupFields& setup, Actions& actions, QWidget* parent)
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
  auto* const showErrors = MakeCheckBox(this, "Show Errors", setup.chkShowErrors,
                                        "Check for program to pop-up program errors.");
  connect(showErrors, &QCheckBox::clicked, this, [&actions] { actions.ShowErrorsClicked(); });
  auto* const close = new QPushButton("&Close", this);
  close->setObjectName("cmdClose");
  close->setAutoDefault(false);  // an Enter meant for the window that had the focus closes nothing
  connect(close, &QPushButton::clicked, this, &QWidget::close);

  auto* const layout = new QVBoxLayout(this);
  layout->addWidget(heading);
  layout->addWidget(txtDisplay_);
  auto* const bottom = new QHBoxLayout;
  bottom->addWidget(showErrors);
  bottom->addStretch();
  bottom->addWidget(close);
  layout->addLayout(bottom);
  resize(kInitialSize);
  connect(txtError_, &QPlainTextEdit::textChanged, this, &ErrorWindow::Display);
}

ErrorNews ErrorWindow::SetMessage(const QString& text) {
  QString plain = text;
  plain.replace("\r\n", "\n");
  txtError_->setPlainText(plain);
  const QString failure = WithoutTime(plain);
  if (known_.contains(failure)) return ErrorNews::kKnown;
  if (known_.size() == kMostKnown) known_.clear();
  known_.insert(failure);
  return ErrorNews::kNew;
}

void ErrorWindow::Display() {
  txtDisplay_->setPlainText(ToQt(FormatDisplayStamp(clock_.Now())) + "\r\n" +
                            txtError_->toPlainText());
}

}  // namespace ostrel::ui
