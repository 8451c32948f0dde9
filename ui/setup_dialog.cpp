#include "ui/setup_dialog.h"

#include <QAccessibleWidget>
#include <QApplication>
#include <QCloseEvent>
#include <QLineEdit>
#include <QMessageBox>
#include <QScreen>
#include <QShortcut>
#include <QVBoxLayout>
#include <utility>

#include "base/scope_guard.h"
#include "ui/entry_field.h"
#include "ui/menus.h"
#include "ui/screen_place.h"
#include "ui/setup_pages.h"

namespace ostrel::ui {
namespace {

constexpr QSize kInitialSize(685, 520);
// Beyond every edge of the dialog, whatever its size.
constexpr QRect kOutOfSight(-1000, -1000, 80, 20);

/// The toolkit calls nothing a dialog but its own class for them.
QAccessibleInterface* DescribeToReaders(const QString& /*className*/, QObject* object) {
  auto* const setup = qobject_cast<SetupDialog*>(object);
  return setup != nullptr ? new QAccessibleWidget(setup, QAccessible::Dialog) : nullptr;
}

}  // namespace

SetupDialog::SetupDialog(SetupFields& setup, Actions& actions, QWidget* mainWindow)
    : QWidget(mainWindow, Qt::Dialog),
      actions_(actions),
      mainWindow_(mainWindow),
      tabs_(new LeftTabs(this)),
      blank_(new QLineEdit("Text1", this)) {
  QAccessible::installFactory(DescribeToReaders);
  setObjectName("frmSetup");
  setWindowTitle("Setup");
  auto* const layout = new QVBoxLayout(this);
  layout->addWidget(tabs_);
  BuildMenu();
  BuildBlank();
  BuildTabs(setup);
  connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, &SetupDialog::FollowFocus);
}

void SetupDialog::BuildMenu() {
  auto* const bar = new QMenuBar(this);
  AddMenu(bar, "&File", "filemenu", {{"E&xit", "exitmenu", [this] { Dismiss(); }}});
  layout()->setMenuBar(bar);
}

void SetupDialog::BuildBlank() {
  blank_->setObjectName("Blank");
  blank_->setReadOnly(true);
  blank_->setGeometry(kOutOfSight);
}

void SetupDialog::BuildTabs(SetupFields& setup) {
  tabs_->setObjectName("SSTab1");
  tabs_->AddPage(MakeMorsePage(setup), "Morse");
  tabs_->AddPage(MakePortPage(setup, actions_), "Port");
  for (const Priority p : AllPriorities()) {
    tabs_->AddPage(MakePriorityPage(setup, actions_, p), QString("Priority %1").arg(p.number()));
  }
  tabs_->AddPage(MakeSystemPage(setup, actions_), "System");
  tabs_->AddPage(MakeCompressPage(setup, actions_), "Compress");
  tabs_->AddPage(MakeDiscardPage(setup, actions_), "Discard");
  tabs_->AddPage(MakeCopiesPage(setup, actions_), "Copies");
  tabs_->AddPage(MakeSchedulePage(setup, actions_), "Schedule");
  connect(tabs_, &QTabWidget::currentChanged, this, &SetupDialog::FocusEntryOf);
  FocusEntryOf(tabs_->currentIndex());
  connect(new QShortcut(QKeySequence::NextChild, this), &QShortcut::activated, this,
          [this] { tabs_->Step(1); });
  connect(new QShortcut(QKeySequence::PreviousChild, this), &QShortcut::activated, this,
          [this] { tabs_->Step(-1); });
  // From nowhere, Tab leads into the page, and from the page's end to the tabs.
  setTabOrder(tabs_->tabBar(), blank_);
}

void SetupDialog::Unload() {
  unloaded_ = true;
  hide();
}

void SetupDialog::closeEvent(QCloseEvent* event) {
  event->ignore();
  Dismiss();
}

void SetupDialog::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  if (event->spontaneous()) return;
  TakePlace();
  entered_ = false;
  for (auto* const entry : findChildren<EntryField*>()) entry->clear();
}

// Beside the main window at first, then where the operator left it; never larger than the screen.
void SetupDialog::TakePlace() {
  if (isMaximized()) return;
  const QSize frame = mainWindow_->frameGeometry().size() - mainWindow_->size();
  QRect place;
  if (std::exchange(isPlaced_, true)) {
    place = Within(QRect(pos(), size() + frame), screen()->availableGeometry());
  } else {
    place = Beside(mainWindow_->frameGeometry(), sizeHint().expandedTo(kInitialSize) + frame,
                   mainWindow_->screen()->availableGeometry());
  }
  resize(place.size() - frame);
  move(place.topLeft());
}

// What a message box says of the dialog goes with it.
void SetupDialog::hideEvent(QHideEvent* event) {
  QWidget::hideEvent(event);
  if (event->spontaneous()) return;
  for (auto* const box : findChildren<QMessageBox*>()) box->close();
}

void SetupDialog::Dismiss() {
  if (Leave()) BringForward(mainWindow_);
}

bool SetupDialog::Leave() {
  if (leaving_ || unloaded_ || isHidden()) return isHidden();
  leaving_ = true;
  const ScopeGuard left([this] { leaving_ = false; });
  if (actions_.LeaveSetup() == SaveOutcome::kFocusLogSize) FocusLogSize();
  return isHidden();
}

void SetupDialog::FocusLogSize() {
  BringForward(this);
  auto* const logSize = findChild<QLineEdit*>("txtLogSize");
  tabs_->ShowPageOf(logSize);
  logSize->setFocus();
}

// Another program's window is none of ours (null), and a message box is no place to go: the
// operator comes back from it. What is left of the menu that opened the dialog does not end it
// either.
void SetupDialog::FollowFocus(QWindow* window) {
  const QWidget* const active = window != nullptr ? QApplication::activeWindow() : nullptr;
  if (active == this) entered_ = true;
  if (active == nullptr || active == this || qobject_cast<const QMessageBox*>(active)) return;
  if (entered_) Leave();
}

void SetupDialog::FocusEntryOf(int tab) {
  auto* const entry = tabs_->widget(tab)->findChild<EntryField*>();
  blank_->setAccessibleName(tabs_->tabText(tab) + ". Tab leads to its fields.");
  (entry != nullptr ? entry : blank_)->setFocus();
}

}  // namespace ostrel::ui
