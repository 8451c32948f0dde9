#include <QCheckBox>
#include <QLabel>
#include <gtest/gtest.h>

#include "tests/ui/windowed_station.h"

namespace ostrel {
namespace {

constexpr int kPortTab = 1;
constexpr int kFirstPriorityTab = 2;
constexpr int kSystemTab = 12;
constexpr int kScheduleTab = 16;

TEST(SetupDialog, ValueLabelsStepByTheButtonAndTheSpeedOfAnyHand) {
  WindowedStation ostrel;
  enum Hand { kLeft, kRight, kFast };
  struct Step {
    const char* label;
    const char* from;
    Hand hand;
    const char* to;
  };
  for (const auto& [name, from, hand, to] : {Step{"lblOutPort", "1", kRight, "8"},
                                             {"lblOutPort", "8", kLeft, "1"},
                                             {"lblOutBaud", "2400", kFast, "19200"},
                                             {"lblOutStop", "1.5", kLeft, "1"},
                                             {"lblCopies", "9", kFast, "3"},
                                             {"CompFiles", "0", kRight, "0"},
                                             {"BlockPriority", "10", kLeft, "1"}}) {
    auto& setup = ostrel.setup();
    for (auto* const field : {&setup.lblOutPort, &setup.lblOutBaud, &setup.lblOutStop,
                              &setup.lblCopies, &setup.CompFiles, &setup.BlockPriority})
      field->Set(from);
    if (hand == kFast) ostrel.ClickTwice(name);
    if (hand != kFast) ostrel.Click(name, hand == kRight ? Qt::RightButton : Qt::LeftButton);
    EXPECT_EQ(ostrel.Find<QLabel>(name)->text(), to) << name << " from " << from;
  }
}

TEST(SetupDialog, PatternsAreAddedRefusedAndRemoved) {
  WindowedStation ostrel;
  ostrel.ShowSetup(kFirstPriorityTab);
  auto* const field = ostrel.Find<QLineEdit>("pri1inbox(0)");
  const auto enter = [&](const char* pattern) {
    ostrel.Type("pri1inbox(0)", pattern);
    return ostrel.MessagesOf([&] { QTest::keyClick(field, Qt::Key_Return); });
  };
  auto& list = ostrel.setup().SetupPriList[0];
  list.Assign({});
  for (const char* const pattern : {"zfp*", "sa?us", "tor*.txt"}) {
    EXPECT_TRUE(enter(pattern).empty()) << pattern;
    EXPECT_EQ(field->text(), "");
  }
  const auto seen = enter("sa?us");
  ASSERT_EQ(seen.size(), 1U);
  EXPECT_EQ(seen[0].title, "Duplicate Keyword...");
  EXPECT_EQ(field->text(), "SA?US");
  EXPECT_TRUE(ostrel.setupDialog->isVisible());
  EXPECT_EQ(Entries(list), (std::vector<std::string>{"ZFP*", "SA?US", "TOR*.TXT"}));

  ostrel.Select("SetupPriList(0)", {0, 2});
  ostrel.Click("removepri1button(0)");
  EXPECT_EQ(Entries(list), std::vector<std::string>{"SA?US"});
  EXPECT_EQ(ostrel.setupDialog->focusWidget(), field);
  ostrel.Select("SetupPriList(0)", {0});
  QTest::keyClick(ostrel.Find<QWidget>("SetupPriList(0)"), Qt::Key_Delete);
  EXPECT_TRUE(list.empty());
}

TEST(SetupDialog, EachTabPutsTheFocusWhereTypingBegins) {
  WindowedStation ostrel;
  ostrel.ShowSetup(kPortTab);
  auto* const tabs = ostrel.Find<QTabWidget>("SSTab1");
  for (int tab = kPortTab + 1; tab <= kScheduleTab; ++tab) {
    QTest::keyClick(ostrel.setupDialog->focusWidget(), Qt::Key_Tab, Qt::ControlModifier);
    ASSERT_EQ(tabs->currentIndex(), tab);
    const bool hasNoList = tab == kSystemTab || tab == kScheduleTab;
    const int list = tab < kSystemTab ? tab - 2 : tab - 3;
    const auto expected = hasNoList ? QString("Blank") : QString("pri1inbox(%1)").arg(list);
    EXPECT_EQ(ostrel.setupDialog->focusWidget()->objectName(), expected);
  }
}

TEST(SetupDialog, EveryFieldOfATabIsReachedWithTheTabKey) {
  WindowedStation ostrel;
  ostrel.ShowSetup(kSystemTab);
  QStringList visited;
  for (int i = 0; i < 20; ++i) {
    QTest::keyClick(ostrel.setupDialog->focusWidget(), Qt::Key_Tab);
    visited << ostrel.setupDialog->focusWidget()->objectName();
  }
  for (const char* const name : {"Diddle", "txtIngestPath", "chkBrask", "LogIt", "chkPacketHost"})
    EXPECT_TRUE(visited.contains(name)) << name;
}

TEST(SetupDialog, GoingToTheMainWindowButNotToAnotherProgramStoresEverything) {
  WindowedStation ostrel;
  ostrel.ShowSetup(0);
  ostrel.Type("CWidenty", "W1AW");
  ostrel.Click("lblOutBaud");
  ostrel.setup().SetupPriList[0].Assign({"ZFP*"});
  const bool overwritten = ostrel.Find<QCheckBox>("chkOverWrite(0)")->isChecked();
  ostrel.Find<QTabWidget>("SSTab1")->setCurrentIndex(kFirstPriorityTab);
  ostrel.Click("chkOverWrite(0)");
  ostrel.Find<QTabWidget>("SSTab1")->setCurrentIndex(kSystemTab);
  ostrel.Click("chkBrask");
  ostrel.Click("chkByteBlaster");
  EXPECT_FALSE(ostrel.Find<QCheckBox>("chkBrask")->isChecked());

  emit qGuiApp->focusWindowChanged(nullptr);
  EXPECT_TRUE(ostrel.setupDialog->isVisible());
  ostrel.Activate(ostrel.mainWindow.get());
  EXPECT_FALSE(ostrel.setupDialog->isVisible());
  ostrel.Restart();
  EXPECT_EQ(ostrel.Find<QLineEdit>("CWidenty")->text(), "W1AW");
  EXPECT_EQ(ostrel.Find<QLabel>("lblOutBaud")->text(), "2400");
  EXPECT_EQ(Entries(ostrel.setup().SetupPriList[0]), std::vector<std::string>{"ZFP*"});
  EXPECT_NE(ostrel.Find<QCheckBox>("chkOverWrite(0)")->isChecked(), overwritten);
  EXPECT_TRUE(ostrel.Find<QCheckBox>("chkByteBlaster")->isChecked());
}

TEST(SetupDialog, ALogSizeThatIsNoNumberKeepsTheDialog) {
  WindowedStation ostrel;
  ostrel.ShowSetup(kSystemTab);
  ostrel.Type("txtLogSize", "much");
  ostrel.Find<QTabWidget>("SSTab1")->setCurrentIndex(0);
  const auto seen = ostrel.MessagesOf([&] { ostrel.setupDialog->close(); });
  ASSERT_EQ(seen.size(), 1U);
  EXPECT_EQ(seen[0].text, "Log file size must be numeric.");
  EXPECT_TRUE(ostrel.setupDialog->isVisible());
  EXPECT_EQ(ostrel.setupDialog->focusWidget()->objectName(), "txtLogSize");

  ostrel.Type("txtLogSize", "100");
  EXPECT_TRUE(ostrel.MessagesOf([&] { ostrel.Find<QAction>("exitmenu")->trigger(); }).empty());
  EXPECT_FALSE(ostrel.setupDialog->isVisible());
  EXPECT_EQ(ostrel.Find<QLineEdit>("txtLogSize")->text(), "50000");
}

TEST(SetupDialog, ScheduleEntriesAreAddedRefusedEditedAndRemoved) {
  WindowedStation ostrel;
  ostrel.ShowSetup(kScheduleTab);
  auto* const field = ostrel.Find<QLineEdit>("txtSchedule");
  const auto enter = [&](const char* entry) {
    ostrel.Type("txtSchedule", entry);
    return ostrel.MessagesOf([&] { QTest::keyClick(field, Qt::Key_Return); });
  };
  EXPECT_TRUE(enter("13:00 /A/X.TXT /b/x.txt").empty());
  EXPECT_TRUE(enter("13:30 /a/y.txt /b/y.txt").empty());
  EXPECT_EQ(enter("25:00 /a /b").at(0).title, "Schedule Time");
  EXPECT_EQ(ostrel.setupDialog->focusWidget(), field);
  ostrel.Select("lstSchedule", {0});
  EXPECT_EQ(field->text(), "13:00 /a/x.txt /b/x.txt");
  ostrel.Click("cmdRemove");
  EXPECT_EQ(Entries(ostrel.setup().lstSchedule),
            std::vector<std::string>{"13:30 /a/y.txt /b/y.txt"});
  EXPECT_EQ(ostrel.MessagesOf([&] { ostrel.Click("cmdFormat"); }).at(0).title,
            "Help with formatting...");
}

TEST(SetupDialog, BytesThatAreNoTextAreNotChangedByBeingShown) {
  WindowedStation ostrel;
  auto& field = ostrel.setup().Diddle;
  field.Set("/fill/\xe9.txt");
  EXPECT_EQ(field.Get(), "/fill/\xe9.txt");
}

}  // namespace
}  // namespace ostrel
