#include "ui/about_box.h"

#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

#include "base/about.h"
#include "base/failure.h"
#include "ui/looks.h"

namespace ostrel::ui {
namespace {

constexpr int kIconSide = 64;
constexpr int kGap = 4;

QLabel* AddLine(QGridLayout* grid, int row, const char* name, const QString& text) {
  auto* const label = new QLabel(text, grid->parentWidget());
  label->setObjectName(name);
  grid->addWidget(label, row, 1);
  return label;
}

}  // namespace

AboutBox::AboutBox(QWidget* parent) : QDialog(parent) {
  setObjectName("frmAbout");
  setWindowTitle(QString("About %1").arg(kProgramName));
  setAttribute(Qt::WA_DeleteOnClose);
  auto* const grid = new QGridLayout(this);
  grid->setHorizontalSpacing(16);
  grid->setSizeConstraint(QLayout::SetFixedSize);

  auto* const icon = new QLabel(this);
  icon->setObjectName("picIcon");
  icon->setPixmap(ProgramIcon().pixmap(kIconSide));
  grid->addWidget(icon, 0, 0, 3, 1, Qt::AlignTop);

  QLabel* const title = AddLine(grid, 0, "lblTitle", kProgramName);
  QFont large = title->font();
  large.setPointSizeF(large.pointSizeF() * 1.5);
  large.setBold(true);
  title->setFont(large);
  AddLine(
      grid, 1, "lblVersion",
      QString("Version %1.%2 Build %3").arg(kVersionMajor).arg(kVersionMinor).arg(kVersionBuild));
  AddLine(grid, 2, "lblDescription", QString("Ostrel is used to retransmit the EMWIN data."));

  auto* const ok = new QPushButton("&OK", this);
  ok->setObjectName("cmdOK");
  ok->setDefault(true);
  connect(ok, &QPushButton::clicked, this, &QWidget::close);
  grid->setRowMinimumHeight(3, kGap);
  grid->addWidget(ok, 4, 1, Qt::AlignRight);
}

}  // namespace ostrel::ui
