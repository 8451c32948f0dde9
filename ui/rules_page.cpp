#include <QGridLayout>
#include <QPushButton>

#include "state/element.h"
#include "ui/bindings.h"
#include "ui/entry_field.h"
#include "ui/form.h"
#include "ui/list_view.h"
#include "ui/looks.h"
#include "ui/setup_pages.h"

namespace ostrel::ui {
namespace {

constexpr int kColumns = 2;  // what to do, and where to do it
constexpr int kMargin = 12;
constexpr int kGap = 8;
constexpr int kLowestList = 60;

/// What a page with a rule list is made of.
struct RulesPage {
  SetupFields& setup;
  Actions& actions;
  std::size_t list;
  QWidget* page = new QWidget;
  QGridLayout* grid = new QGridLayout(page);
};

void AddWide(const RulesPage& rules, QWidget* widget, Qt::Alignment alignment = {}) {
  rules.grid->addWidget(widget, rules.grid->rowCount(), 0, 1, kColumns, alignment);
}

void AddGap(const RulesPage& rules) {
  rules.grid->setRowMinimumHeight(rules.grid->rowCount(), kGap);
}

void AddStep(const RulesPage& rules, const char* instruction, QWidget* place) {
  auto* const label = new QLabel(instruction, rules.page);
  label->setBuddy(place);
  const int row = rules.grid->rowCount();
  rules.grid->addWidget(label, row, 0);
  rules.grid->addWidget(place, row, 1);
}

EntryField* AddEntryField(const RulesPage& rules, const char* instruction) {
  auto* const entry = new EntryField(rules.page);
  Bind(entry, rules.setup.pri1inbox[rules.list]);
  entry->setToolTip("File name pattern to add.");
  QObject::connect(entry, &QLineEdit::returnPressed, entry,
                   [&actions = rules.actions, list = rules.list] { actions.AddKeyword(list); });
  AddWide(rules, MakeHeading(rules.page, "To add an item"));
  AddStep(rules, instruction, entry);
  AddWide(rules, new QLabel("Then Press Enter", rules.page));
  AddGap(rules);
  return entry;
}

void AddList(const RulesPage& rules, EntryField* entry) {
  auto* const view =
      new ListView(rules.setup.SetupPriList[rules.list], "File name patterns", rules.page);
  view->setFont(PatternFont());
  view->setMinimumHeight(kLowestList);
  auto* const remove = new QPushButton("Remove", rules.page);
  remove->setObjectName(ToQt(ElementName("removepri1button", rules.list)));
  remove->setToolTip("Click to remove the selected item.");
  const auto removeSelected = [view, &actions = rules.actions, list = rules.list] {
    actions.RemoveKeywords(list, view->Selected());
  };
  QObject::connect(view, &ListView::DeletePressed, view, removeSelected);
  QObject::connect(remove, &QPushButton::clicked, view, [removeSelected, entry] {
    removeSelected();
    entry->BeginAnew();
  });
  AddWide(rules, MakeHeading(rules.page, "To remove an item"));
  AddStep(rules, "Click the item here --->", view);
  const int listRow = rules.grid->rowCount() - 1;
  rules.grid->setRowStretch(listRow, 1);
  rules.grid->itemAtPosition(listRow, 0)->setAlignment(Qt::AlignTop);
  AddStep(rules, "Then click here --->", remove);
  rules.grid->setAlignment(remove, Qt::AlignLeft);
}

EntryField* AddRules(const RulesPage& rules, const char* instruction = "Type it here --->") {
  rules.grid->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
  rules.grid->setColumnStretch(1, 1);
  EntryField* const entry = AddEntryField(rules, instruction);
  AddList(rules, entry);
  return entry;
}

}  // namespace

QWidget* MakePriorityPage(SetupFields& setup, Actions& actions, Priority p) {
  const RulesPage rules{setup, actions, p.index()};
  AddRules(rules);
  AddGap(rules);
  AddWide(rules,
          MakeCheckBox(rules.page, "Overwrite Pending Files", setup.chkOverWrite[p],
                       "Overwrite pending files when a newer file is received."),
          Qt::AlignLeft);
  AddWide(rules,
          MakeCheckBox(rules.page, "Send Files Compressed", setup.chkSendComp[p],
                       "Compress files before sending."),
          Qt::AlignLeft);
  return rules.page;
}

QWidget* MakeCompressPage(SetupFields& setup, Actions& actions) {
  const RulesPage rules{setup, actions, kCompressList};
  AddRules(rules);
  AddGap(rules);
  constexpr const char* kCountCaption = "Do block compression when files accumulated =";
  constexpr const char* kPriorityCaption = "Send block compressed files priority = ";
  auto* const count =
      MakeValueLabel(rules.page, kCountCaption, setup.CompFiles,
                     "Compress the files after this number of files have been received.");
  auto* const priority = MakeValueLabel(rules.page, kPriorityCaption, setup.BlockPriority,
                                        "Priority queue number to send the compressed files.");
  QObject::connect(count, &ValueLabel::Released, count,
                   [&actions](Button button) { actions.StepCompFiles(button); });
  QObject::connect(priority, &ValueLabel::Clicked, priority,
                   [&actions] { actions.StepBlockPriority(); });
  auto* const values = new QGridLayout;
  values->addWidget(new QLabel(kCountCaption, rules.page), 0, 0);
  values->addWidget(count, 0, 1);
  values->addWidget(new QLabel(kPriorityCaption, rules.page), 1, 0);
  values->addWidget(priority, 1, 1);
  values->setColumnStretch(2, 1);
  rules.grid->addLayout(values, rules.grid->rowCount(), 0, 1, kColumns);

  AddGap(rules);
  AddWide(rules, MakeHeading(rules.page, "Awaiting Compression"));
  auto* const waiting = new ListView(setup.CompressList, "Awaiting Compression", rules.page);
  waiting->setMinimumHeight(kLowestList);
  AddWide(rules, waiting);
  rules.grid->setRowStretch(rules.grid->rowCount() - 1, 1);
  return rules.page;
}

QWidget* MakeDiscardPage(SetupFields& setup, Actions& actions) {
  const RulesPage rules{setup, actions, kDiscardList};
  AddRules(rules);
  return rules.page;
}

QWidget* MakeCopiesPage(SetupFields& setup, Actions& actions) {
  const RulesPage rules{setup, actions, kCopiesList};
  AddWide(rules,
          new QLabel("Use this tab to force messages to be sent more than once.", rules.page));
  constexpr const char* kCaption = "Select The Number Of Copies --->";
  auto* const copies = MakeValueLabel(rules.page, kCaption, setup.lblCopies,
                                      "Click to change the number of copies.");
  AddStep(rules, kCaption, copies);
  rules.grid->setAlignment(copies, Qt::AlignLeft);
  AddGap(rules);
  EntryField* const entry = AddRules(rules, "Enter A Keyword --->");
  QObject::connect(copies, &ValueLabel::Pressed, copies,
                   [&actions](Button button) { actions.StepCopies(button); });
  QObject::connect(copies, &ValueLabel::Released, entry, [entry] { entry->BeginAnew(); });
  return rules.page;
}

}  // namespace ostrel::ui
