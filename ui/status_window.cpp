#include "ui/status_window.h"

#include <QGroupBox>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <chrono>

#include "state/element.h"
#include "ui/bindings.h"
#include "ui/intake_texts.h"
#include "ui/looks.h"
#include "ui/twips.h"

namespace ostrel::ui {
namespace {

using namespace std::chrono_literals;

constexpr auto kRefreshInterval = 4s;
constexpr int kRowHeight = 300 / kTwipsPerPixel;
constexpr int kValueWidth = 80;

}  // namespace

StatusWindow::StatusWindow(const MainFields& state, const TransmitStatus& status,
                           const std::function<Figures()>& figures, QWidget* parent)
    : QDialog(parent), state_(state), status_(status) {
  setObjectName("frmStatus");
  setWindowTitle("Ostrel Status");
  setAttribute(Qt::WA_DeleteOnClose);
  auto* const close = new QPushButton("&Close", this);
  close->setObjectName("cmdClose");
  connect(close, &QPushButton::clicked, this, &QWidget::close);
  auto* const layout = new QVBoxLayout(this);
  layout->addWidget(BuildTable(figures));
  layout->addWidget(close, 0, Qt::AlignHCenter);
  layout->setSizeConstraint(QLayout::SetFixedSize);

  auto* const timUpdate = new QTimer(this);
  timUpdate->setObjectName("timUpdate");
  timUpdate->setTimerType(Qt::PreciseTimer);
  connect(timUpdate, &QTimer::timeout, this, &StatusWindow::Refresh);
  timUpdate->start(kRefreshInterval);
  Refresh();
}

ElidedLabel* StatusWindow::AddTitle(QGridLayout* grid, int column, const char* name,
                                    const char* text) {
  auto* const title = new ElidedLabel(text, this);
  title->setObjectName(name);
  grid->addWidget(title, 0, column, Qt::AlignHCenter);
  return title;
}

ElidedLabel* StatusWindow::AddValue(QGridLayout* grid, int column, Priority p, const char* name) {
  auto* const value = new ElidedLabel(this);
  value->setObjectName(ToQt(ElementName(name, p.index())));
  value->setAlignment(Qt::AlignCenter);
  value->setFixedSize(kValueWidth, kRowHeight);
  SetBoxed(value);
  SetBackground(value, kStatusYellow);
  grid->addWidget(value, p.number(), column, Qt::AlignHCenter);
  return value;
}

QWidget* StatusWindow::BuildTable(const std::function<Figures()>& figures) {
  auto* const frame = new QGroupBox("Queue Status", this);
  frame->setObjectName("fraStatus");
  auto* const grid = new QGridLayout(frame);
  grid->setVerticalSpacing(0);
  grid->setHorizontalSpacing(12);
  AddTitle(grid, 0, "lblTitleQueue", "Queue");
  AddTitle(grid, 1, "lblTitlePending", "Pending")->SetRemark([figures] {
    return IngestText(figures().intake);
  });
  AddTitle(grid, 2, "lblTitleMax", "Maximum Waiting");
  grid->setRowMinimumHeight(0, kRowHeight);
  for (const Priority p : AllPriorities()) {
    AddValue(grid, 0, p, "lblQueue")->setNum(p.number());
    auto* const pending = AddValue(grid, 1, p, "lblPending");
    pending->SetRemark([figures, p] { return RefusedText(figures().intake, p); });
    lblPending_[p] = pending;
    lblMaxWait_[p] = AddValue(grid, 2, p, "lblMaxWait");
  }
  return frame;
}

void StatusWindow::Refresh() {
  for (const Priority p : AllPriorities()) {
    lblPending_[p]->setNum(static_cast<int>(state_.PriorityList[p].size()));
    lblMaxWait_[p]->setNum(status_.MaximumCount[p]);
    const QString queue = QString("Priority %1").arg(p.number());
    lblPending_[p]->setAccessibleName(QString("%1 pending %2").arg(queue, lblPending_[p]->text()));
    lblMaxWait_[p]->setAccessibleName(QString("%1 maximum %2").arg(queue, lblMaxWait_[p]->text()));
  }
}

}  // namespace ostrel::ui
