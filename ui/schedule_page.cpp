#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

#include "ui/bindings.h"
#include "ui/form.h"
#include "ui/list_view.h"
#include "ui/setup_pages.h"

namespace ostrel::ui {
namespace {

constexpr int kMargin = 12;

QLineEdit* MakeEntry(QWidget* page, SetupFields& setup, Actions& actions) {
  auto* const entry = new QLineEdit(page);
  Bind(entry, setup.txtSchedule);
  entry->setToolTip("Enter the schedule and file name.");
  QObject::connect(entry, &QLineEdit::returnPressed, entry, [entry, &actions] {
    if (actions.AddScheduleEntry() == AfterEntry::kFocusEntryField) entry->setFocus();
  });
  return entry;
}

ListView* MakeList(QWidget* page, SetupFields& setup, Actions& actions) {
  auto* const list = new ListView(setup.lstSchedule, "Scheduled Transmissions", page);
  QObject::connect(list, &ListView::clicked, list, [&actions](const QModelIndex& index) {
    actions.EditScheduleEntry(static_cast<std::size_t>(index.row()));
  });
  return list;
}

QLayout* MakeButtons(QWidget* page, ListView* list, Actions& actions) {
  auto* const remove = new QPushButton("Remove", page);
  remove->setObjectName("cmdRemove");
  remove->setToolTip("Click to remove the selected item.");
  auto* const format = new QPushButton("More Information", page);
  format->setObjectName("cmdFormat");
  const auto removeSelected = [list, &actions] { actions.RemoveScheduleEntries(list->Selected()); };
  QObject::connect(list, &ListView::DeletePressed, list, removeSelected);
  QObject::connect(remove, &QPushButton::clicked, list, removeSelected);
  QObject::connect(format, &QPushButton::clicked, page, [&actions] { actions.ShowScheduleHelp(); });
  auto* const buttons = new QHBoxLayout;
  buttons->addWidget(remove);
  buttons->addWidget(format);
  buttons->addStretch();
  return buttons;
}

}  // namespace

QWidget* MakeSchedulePage(SetupFields& setup, Actions& actions) {
  auto* const page = new QWidget;
  auto* const layout = new QVBoxLayout(page);
  layout->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
  layout->addWidget(MakeHeading(page, "Scheduled Transmissions"));
  auto* const instruction = new QLabel("Type a schedule entry here, then press \"Enter\"", page);
  layout->addWidget(instruction);
  auto* const entry = MakeEntry(page, setup, actions);
  instruction->setBuddy(entry);
  layout->addWidget(entry);
  layout->addWidget(new QLabel("Example:", page));
  layout->addWidget(
      new QLabel("13:00 c:\\Pellum\\FillFile.txt c:\\Pellum\\KvData\\RtPri6\\FillFile.txt", page));
  auto* const list = MakeList(page, setup, actions);
  layout->addWidget(list, 1);
  layout->addWidget(MakeHeading(page, "To remove an entry:"));
  layout->addWidget(new QLabel("Click the entry here -->", page));
  layout->addWidget(new QLabel("Then press \"Delete\" or click \"Remove\"", page));
  layout->addLayout(MakeButtons(page, list, actions));
  return page;
}

}  // namespace ostrel::ui
