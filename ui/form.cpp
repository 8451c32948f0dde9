#include "ui/form.h"

#include "ui/bindings.h"
#include "ui/looks.h"

namespace ostrel::ui {
namespace {

constexpr int kColumns = 4;  // caption, field, unit, and what is left over
constexpr int kGap = 12;
constexpr int kValueMargin = 3;

int Characters(FieldWidth width) {
  switch (width) {
    case FieldWidth::kNumber:
      return 10;
    case FieldWidth::kText:
    case FieldWidth::kPath:
      break;
  }
  return 24;
}

int PixelsFor(const QWidget* widget, FieldWidth width) {
  return widget->fontMetrics().horizontalAdvance('0') * Characters(width);
}

}  // namespace

QLineEdit* MakeTextField(QWidget* page, Field<std::string>& field, const char* toolTip,
                         FieldWidth width) {
  auto* const edit = new QLineEdit(page);
  Bind(edit, field);
  edit->setToolTip(toolTip);
  if (width == FieldWidth::kPath) {
    edit->setMinimumWidth(PixelsFor(edit, width));
  } else {
    edit->setFixedWidth(PixelsFor(edit, width));
  }
  return edit;
}

ValueLabel* MakeValueLabel(QWidget* page, const char* caption, Field<std::string>& field,
                           const char* toolTip, FieldWidth width) {
  auto* const label = new ValueLabel(page);
  BindValue(label, caption, field);
  label->setToolTip(toolTip);
  label->setMargin(kValueMargin);
  label->setFixedWidth(PixelsFor(label, width));
  label->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
  label->setBackgroundRole(QPalette::Window);
  label->setAutoFillBackground(true);
  if (*toolTip != '\0') {
    label->setFrameStyle(QFrame::Panel | QFrame::Raised);
    label->setBackgroundRole(QPalette::Button);
    label->setCursor(Qt::PointingHandCursor);
  }
  return label;
}

QCheckBox* MakeCheckBox(QWidget* page, const char* caption, Field<Check>& field,
                        const char* toolTip) {
  auto* const box = new QCheckBox(caption, page);
  Bind(box, field);
  box->setToolTip(toolTip);
  return box;
}

QLabel* MakeHeading(QWidget* page, const char* text) {
  auto* const heading = new QLabel(text, page);
  QFont bold = heading->font();
  bold.setBold(true);
  heading->setFont(bold);
  return heading;
}

Form::Form(QWidget* page) : grid_(new QGridLayout(page)) {
  grid_->setColumnStretch(kColumns - 1, 1);
  grid_->setContentsMargins(kGap, kGap, kGap, kGap);
}

void Form::AddRow(const char* caption, QWidget* field, const char* unit) {
  const int row = grid_->rowCount();
  auto* const label = new QLabel(caption, grid_->parentWidget());
  label->setBuddy(field);
  grid_->addWidget(label, row, 0);
  if (*unit != '\0') {
    grid_->addWidget(field, row, 1);
    grid_->addWidget(new QLabel(unit, grid_->parentWidget()), row, 2);
  } else {
    grid_->addWidget(field, row, 1, 1, kColumns - 1,
                     field->maximumWidth() < QWIDGETSIZE_MAX ? Qt::AlignLeft : Qt::Alignment());
  }
}

void Form::AddWide(QWidget* widget) {
  grid_->addWidget(widget, grid_->rowCount(), 0, 1, kColumns);
}

void Form::AddWide(QLayout* layout) {
  grid_->addLayout(layout, grid_->rowCount(), 0, 1, kColumns);
}

void Form::AddGap() {
  grid_->setRowMinimumHeight(grid_->rowCount(), kGap);
}

void Form::Finish() {
  grid_->setRowStretch(grid_->rowCount(), 1);
}

}  // namespace ostrel::ui
