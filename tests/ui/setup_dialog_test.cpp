#include <QAccessible>
#include <QCheckBox>
#include <QLabel>
#include <gtest/gtest.h>

#include "tests/ui/windowed_station.h"

namespace ostrel {
namespace {

constexpr int kPortTab = 1;
constexpr int kFirstPriorityTab = 2;
constexpr int kSystemTab = 12;
constexpr int kCopiesTab = 15;
constexpr int kScheduleTab = 16;

TEST(SetupDialog, ValueLabelsStepByTheButtonAndTheSpeedOfAnyHand) {
  WindowedStation ostrel;
  struct Step {
    Field<std::string> SetupFields::*field;
    const char *from, *to;
    Qt::MouseButton button = Qt::LeftButton;
    bool isFastPair = false;
  };
  for (const auto& [member, from, to, button, isFastPair] :
       {Step{&SetupFields::lblOutPort, "1", "8", Qt::RightButton},
        {&SetupFields::lblOutBaud, "2400", "19200", Qt::LeftButton, true},
        {&SetupFields::lblOutStop, "1.5", "1"},
        {&SetupFields::lblCopies, "9", "3", Qt::LeftButton, true},
        {&SetupFields::CompFiles, "0", "0", Qt::RightButton},
        {&SetupFields::BlockPriority, "10", "1"}}) {
    auto& field = ostrel.setup().*member;
    auto* const label = ostrel.Find<QLabel>(field.name().c_str());
    field.Set(from);
    QTest::mouseClick(label, button);
    if (isFastPair) {  // the toolkit takes the second press for a double click
      QTest::mouseDClick(label, button);
      QTest::mouseRelease(label, button);
    }
    EXPECT_EQ(label->text(), to) << field.name();
  }
}

TEST(SetupDialog, PatternsAreAddedRefusedAndRemoved) {
  WindowedStation ostrel;
  ostrel.ShowSetup(kFirstPriorityTab);
  auto* const field = ostrel.Find<QLineEdit>("pri1inbox(0)");
  auto& list = ostrel.setup().SetupPriList[0];
  list.Assign({});
  for (const char* const pattern : {"zfp*", "sa?us", "tor*.txt"}) {
    EXPECT_TRUE(ostrel.Enter("pri1inbox(0)", pattern).empty()) << pattern;
    EXPECT_EQ(field->text(), "");
  }
  EXPECT_EQ(ostrel.Enter("pri1inbox(0)", "sa?us").value(0),
            "The keyword \"SA?US\" already exists on the Priority 1 Tab.");
  EXPECT_EQ(field->text(), "SA?US");
  EXPECT_TRUE(ostrel.setupDialog->isVisible());

  ostrel.Select("SetupPriList(0)", {0, 2});
  ostrel.Click("removepri1button(0)");
  EXPECT_EQ(Entries(list), Lines{"SA?US"});
  EXPECT_EQ(ostrel.setupDialog->focusWidget(), field);
  ostrel.Select("SetupPriList(0)", {0});
  QTest::keyClick(ostrel.Find<QWidget>("SetupPriList(0)"), Qt::Key_Delete);
  EXPECT_TRUE(list.empty());

  ostrel.Type("pri1inbox(0)", "HAL");
  QTest::mouseClick(ostrel.Find<QWidget>("SetupPriList(0)"), Qt::LeftButton);
  ostrel.setupDialog->close();
  ostrel.ShowSetup(kFirstPriorityTab);
  EXPECT_EQ(field->text(), "") << "half a pattern does not outlive the dialog";
  ostrel.ShowSetup(kCopiesTab);
  ostrel.Type("pri1inbox(12)", "HAL");
  ostrel.Click("lblCopies");
  EXPECT_EQ(ostrel.Find<QLineEdit>("pri1inbox(12)")->text(), "");
}

TEST(SetupDialog, ScheduleEntriesAreAddedEditedAndRemoved) {
  WindowedStation ostrel;
  ostrel.ShowSetup(kScheduleTab);
  EXPECT_TRUE(ostrel.Enter("txtSchedule", "13:00 /A/X.TXT /b/x.txt").empty());
  EXPECT_TRUE(ostrel.Enter("txtSchedule", "13:30 /a/y.txt /b/y.txt").empty());
  ostrel.Select("lstSchedule", {0});
  EXPECT_EQ(ostrel.Find<QLineEdit>("txtSchedule")->text(), "13:00 /a/x.txt /b/x.txt");
  QTest::keyClick(ostrel.Find<QWidget>("lstSchedule"), Qt::Key_Down);
  EXPECT_EQ(ostrel.Find<QLineEdit>("txtSchedule")->text(), "13:30 /a/y.txt /b/y.txt");
  QTest::keyClick(ostrel.Find<QWidget>("lstSchedule"), Qt::Key_Up);
  ostrel.Click("cmdRemove");
  EXPECT_EQ(Entries(ostrel.setup().lstSchedule), Lines{"13:30 /a/y.txt /b/y.txt"});
}

TEST(SetupDialog, ABoxThatIsLeftOpenKeepsNeitherTheTransmitterNorTheDialogWaiting) {
  WindowedStation ostrel;
  ostrel.setup().totdown.Set("1");
  ostrel.setup().IDTime.Set("0");
  ostrel.ShowSetup(kScheduleTab);
  const auto refuse = [&] {
    ostrel.Type("txtSchedule", "25:00 /a /b");
    QTest::keyClick(ostrel.Find<QWidget>("txtSchedule"), Qt::Key_Return);
    QCoreApplication::processEvents();
  };
  // In the drain before the pause, and in the pause.
  for (const auto at : {122s, 128s}) ostrel.machine.loop.OperatorAt(at, refuse);
  ostrel.Run(3min);

  std::vector<milliseconds> changes;
  for (const auto& event : ostrel.machine.line.keying) {
    if (event.line == 1 && event.at > 0s) changes.push_back(event.at);
  }
  ASSERT_EQ(changes.size(), 2U) << "one pause";
  EXPECT_TRUE(changes[0] > 122s && changes[0] < 128s) << changes[0].count();
  EXPECT_LT(changes[1] - changes[0], 11s + 50ms);
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr) << "every other window can be used";
  for (const bool isClosed : {false, true}) {
    if (isClosed) QTest::keyClick(ostrel.Boxes()[0], Qt::Key_Return);
    EXPECT_EQ(ostrel.Boxes().size(), isClosed ? 0 : 1) << "the same message twice is one box";
    EXPECT_TRUE(ostrel.setupDialog->isVisible());
    EXPECT_EQ(ostrel.setupDialog->isActiveWindow(), isClosed);
    EXPECT_EQ(ostrel.setupDialog->focusWidget()->objectName(), "txtSchedule");
    EXPECT_EQ(ostrel.Find<QLineEdit>("txtSchedule")->text(), "25:00 /a /b");
  }
}

TEST(SetupDialog, TheKeysLeadToEveryTabAndFieldAndTypingBeginsAtOnce) {
  WindowedStation ostrel;
  ostrel.ShowSetup(kPortTab);
  const auto pressTab = [&](Qt::KeyboardModifiers with) {
    QTest::keyClick(ostrel.setupDialog->focusWidget(), Qt::Key_Tab, with);
    return ostrel.setupDialog->focusWidget()->objectName();
  };
  for (int tab = kFirstPriorityTab, list = 0; tab <= kScheduleTab; ++tab) {
    const bool hasNoList = tab == kSystemTab || tab == kScheduleTab;
    EXPECT_EQ(pressTab(Qt::ControlModifier),
              hasNoList ? QString("Blank") : QString("pri1inbox(%1)").arg(list++));
  }
  ostrel.Find<QTabWidget>("SSTab1")->setCurrentIndex(kSystemTab);
  QStringList visited;
  for (int i = 0; i < 20; ++i) visited << pressTab(Qt::NoModifier);
  for (const char* const name : {"Diddle", "chkBrask", "chkPacketHost"})
    EXPECT_TRUE(visited.contains(name)) << name;
}

TEST(SetupDialog, AScreenReaderTellsADialogAndWhateverTakesTheFocus) {
  WindowedStation ostrel;
  const auto told = [](QWidget* element) { return QAccessible::queryAccessibleInterface(element); };
  EXPECT_EQ(told(ostrel.setupDialog)->role(), QAccessible::Dialog);
  for (auto* const element : ostrel.setupDialog->findChildren<QWidget*>()) {
    const bool isReached = element->focusPolicy() != Qt::NoFocus && !element->focusProxy();
    EXPECT_FALSE(isReached && told(element)->text(QAccessible::Name).isEmpty())
        << element->metaObject()->className() << element->objectName().toStdString();
  }
}

TEST(SetupDialog, GoingToTheMainWindowButNotToAnotherProgramStoresEverything) {
  WindowedStation ostrel;
  ostrel.setup().Diddle.Set("/fill/\xe9.txt");  // is no text, and must not change by being shown
  ostrel.ShowSetup(0);
  ostrel.Type("CWidenty", "W1AW");
  ostrel.Find<QTabWidget>("SSTab1")->setCurrentIndex(kSystemTab);
  ostrel.Click("chkBrask");
  ostrel.Click("chkByteBlaster");
  EXPECT_FALSE(ostrel.Find<QCheckBox>("chkBrask")->isChecked());

  emit qGuiApp->focusWindowChanged(nullptr);
  EXPECT_TRUE(ostrel.setupDialog->isVisible());
  ostrel.mainWindow->activateWindow();
  EXPECT_TRUE(QTest::qWaitFor([&] { return ostrel.setupDialog->isHidden(); }));
  ostrel.Restart();
  EXPECT_EQ(ostrel.Find<QLineEdit>("CWidenty")->text(), "W1AW");
  EXPECT_TRUE(ostrel.Find<QCheckBox>("chkByteBlaster")->isChecked());
  EXPECT_EQ(ostrel.setup().Diddle.Get(), "/fill/\xe9.txt");
}

TEST(SetupDialog, ALogSizeThatIsNoNumberKeepsTheDialogButNotTheProgram) {
  WindowedStation ostrel;
  ostrel.ShowSetup(kSystemTab);
  ostrel.Type("txtLogSize", "much");
  ostrel.Find<QTabWidget>("SSTab1")->setCurrentIndex(0);
  ostrel.setupDialog->close();
  ASSERT_EQ(ostrel.Boxes().size(), 1);
  EXPECT_EQ(ostrel.Boxes()[0]->text(), "Log file size must be numeric.");
  EXPECT_TRUE(ostrel.Find<QLineEdit>("txtLogSize")->isVisible());
  EXPECT_EQ(ostrel.setupDialog->focusWidget()->objectName(), "txtLogSize");

  ostrel.Type("txtLogSize", "100");
  ostrel.Find<QAction>("exitmenu")->trigger();
  EXPECT_TRUE(ostrel.Boxes().empty()) << "what was said of the dialog goes with it";
  EXPECT_FALSE(ostrel.setupDialog->isVisible());
  EXPECT_EQ(ostrel.Find<QLineEdit>("txtLogSize")->text(), "50000");

  ostrel.ShowSetup(kSystemTab);
  ostrel.Type("txtLogSize", "much");
  ostrel.mainWindow->close();
  EXPECT_TRUE(ostrel.machine.dialogs.hasEnded);
}

}  // namespace
}  // namespace ostrel
