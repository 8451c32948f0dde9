#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <gtest/gtest.h>

#include "config/settings_table.h"
#include "tests/ui/windowed_station.h"

namespace ostrel {
namespace {

constexpr int kPortTab = 1;
constexpr int kFirstPriorityTab = 2;
constexpr int kSystemTab = 12;
constexpr int kCompressTab = 13;
constexpr int kDiscardTab = 14;
constexpr int kCopiesTab = 15;
constexpr int kScheduleTab = 16;

std::vector<std::string> Entries(const ListField& list) {
  return {list.begin(), list.end()};
}

TEST(SetupDialog, EveryFieldIsFoundUnderItsName) {
  WindowedStation ostrel;
  for (const char* const name :
       {"CWidenty",      "IDTime",      "CWSpeed",       "TimeLeft",       "LastId",
        "lblOutPort",    "lblOutBaud",  "lblOutData",    "lblOutStop",     "lblOutParity",
        "lblCommMesg",   "txtTxDelay",  "totdown",       "totup",          "Diddle",
        "NameAs",        "chkBrask",    "txtIngestPath", "chkByteBlaster", "txtPurgeTime",
        "txtLogSize",    "LogIt",       "chkUnZipFiles", "chkLogDaily",    "chkShowErrors",
        "chkPacketHost", "CompFiles",   "BlockPriority", "CompressList",   "lblCopies",
        "txtSchedule",   "lstSchedule", "cmdRemove",     "cmdFormat",      "Blank",
        "SSTab1"}) {
    EXPECT_TRUE(ostrel.setup->findChild<QWidget*>(name)) << name;
  }
  for (int i = 0; i < 13; ++i) {
    for (const char* const array : {"SetupPriList(%1)", "pri1inbox(%1)", "removepri1button(%1)",
                                    "chkOverWrite(%1)", "chkSendComp(%1)"}) {
      const bool onlyPriorities = QString(array).startsWith("chk");
      EXPECT_EQ(ostrel.setup->findChild<QWidget*>(QString(array).arg(i)) != nullptr,
                i < 10 || !onlyPriorities)
          << array << i;
    }
  }
}

TEST(SetupDialog, ValueLabelsStepByTheButtonAndTheSpeedOfAnyHand) {
  WindowedStation ostrel;
  enum Hand { kLeft, kRight, kFast };
  auto& setup = ostrel.station->setup();
  struct Step {
    const char* label;
    Field<std::string>& field;
    const char* from;
    Hand hand;
    const char* to;
  };
  for (const auto& [name, field, from, hand, to] :
       {Step{"lblOutPort", setup.lblOutPort, "1", kRight, "8"},
        {"lblOutPort", setup.lblOutPort, "8", kLeft, "1"},
        {"lblOutPort", setup.lblOutPort, "1", kFast, "3"},
        {"lblOutBaud", setup.lblOutBaud, "115200", kLeft, "1200"},
        {"lblOutBaud", setup.lblOutBaud, "2400", kFast, "19200"},
        {"lblOutBaud", setup.lblOutBaud, "4800", kLeft, "4800"},
        {"lblOutStop", setup.lblOutStop, "1.5", kLeft, "1"},
        {"lblOutStop", setup.lblOutStop, "1", kFast, "1"},
        {"lblCopies", setup.lblCopies, "2", kRight, "9"},
        {"lblCopies", setup.lblCopies, "9", kFast, "3"},
        {"CompFiles", setup.CompFiles, "0", kRight, "0"},
        {"CompFiles", setup.CompFiles, "99", kFast, "100"},
        {"BlockPriority", setup.BlockPriority, "10", kLeft, "1"},
        {"BlockPriority", setup.BlockPriority, "3", kFast, "5"}}) {
    field.Set(from);
    if (hand == kFast) {
      ostrel.ClickTwice(name);
    } else {
      ostrel.Click(name, hand == kRight ? Qt::RightButton : Qt::LeftButton);
    }
    EXPECT_EQ(ostrel.Find<QLabel>(name)->text(), to) << name << " from " << from;
  }
}

TEST(SetupDialog, PatternsAreAddedRefusedAndRemoved) {
  WindowedStation ostrel;
  ostrel.ShowSetup(kFirstPriorityTab);
  const auto enter = [&](int list, const char* pattern) {
    const QString field = QString("pri1inbox(%1)").arg(list);
    ostrel.Type(field, pattern);
    return ostrel.MessagesOf([&] { QTest::keyClick(ostrel.Find<QWidget>(field), Qt::Key_Return); });
  };
  auto& lists = ostrel.station->setup().SetupPriList;
  lists[0].Assign({});
  for (const char* const pattern : {"zfp*", "sa?us", "tor*.txt"}) {
    EXPECT_TRUE(enter(0, pattern).empty()) << pattern;
  }
  EXPECT_EQ(Entries(lists[0]), (std::vector<std::string>{"ZFP*", "SA?US", "TOR*.TXT"}));
  EXPECT_EQ(ostrel.Find<QLineEdit>("pri1inbox(0)")->text(), "");

  struct Refusal {
    const char* pattern;
    const char* title;
    const char* part;
  };
  for (const auto& [pattern, title, part] :
       {Refusal{"??X", "Not enough information...", "too many wildcard characters"},
        {"12*", "Not enough information...", "at least two characters"},
        {"A.B.C", "Incorrect format ...", "cannot contain two period characters"},
        {"sa?us", "Duplicate Keyword...", "\"SA?US\" already exists on the Priority 1 Tab."}}) {
    const auto seen = enter(0, pattern);
    ASSERT_EQ(seen.size(), 1U) << pattern;
    EXPECT_EQ(seen[0].title, title);
    EXPECT_TRUE(seen[0].text.contains(part)) << seen[0].text.toStdString();
    EXPECT_EQ(ostrel.Find<QLineEdit>("pri1inbox(0)")->text(), QString(pattern).toUpper());
    EXPECT_TRUE(ostrel.setup->isVisible());
  }
  EXPECT_EQ(lists[0].size(), 3U);

  ostrel.Select("SetupPriList(0)", {0, 2});
  QTest::mouseClick(ostrel.Find<QPushButton>("removepri1button(0)"), Qt::LeftButton);
  EXPECT_EQ(Entries(lists[0]), std::vector<std::string>{"SA?US"});
  EXPECT_EQ(ostrel.setup->focusWidget()->objectName(), "pri1inbox(0)");
  ostrel.Select("SetupPriList(0)", {0});
  QTest::keyClick(ostrel.Find<QWidget>("SetupPriList(0)"), Qt::Key_Delete);
  EXPECT_TRUE(lists[0].empty());
}

TEST(SetupDialog, EachTabPutsTheFocusWhereTypingBegins) {
  WindowedStation ostrel;
  ostrel.ShowSetup(kPortTab);
  auto* const tabs = ostrel.Find<QTabWidget>("SSTab1");
  for (int tab = kPortTab + 1; tab <= kScheduleTab; ++tab) {
    QTest::keyClick(ostrel.setup->focusWidget(), Qt::Key_Tab, Qt::ControlModifier);
    ASSERT_EQ(tabs->currentIndex(), tab);
    const QString expected = tab < kSystemTab      ? QString("pri1inbox(%1)").arg(tab - 2)
                             : tab == kCompressTab ? "pri1inbox(10)"
                             : tab == kDiscardTab  ? "pri1inbox(11)"
                             : tab == kCopiesTab   ? "pri1inbox(12)"
                                                   : "Blank";
    EXPECT_EQ(ostrel.setup->focusWidget()->objectName(), expected);
  }
  tabs->setCurrentIndex(kCopiesTab);
  ostrel.Type("pri1inbox(12)", "half");
  ostrel.Find<QWidget>("SetupPriList(12)")->setFocus();
  ostrel.Click("lblCopies");
  EXPECT_EQ(ostrel.setup->focusWidget()->objectName(), "pri1inbox(12)");
  EXPECT_EQ(ostrel.Find<QLineEdit>("pri1inbox(12)")->text(), "");
}

TEST(SetupDialog, EveryFieldOfATabIsReachedWithTheTabKey) {
  WindowedStation ostrel;
  ostrel.ShowSetup(kSystemTab);
  QStringList visited;
  for (int i = 0; i < 20; ++i) {
    QTest::keyClick(ostrel.setup->focusWidget(), Qt::Key_Tab);
    visited << ostrel.setup->focusWidget()->objectName();
  }
  for (const char* const name :
       {"Diddle", "NameAs", "txtIngestPath", "chkBrask", "chkByteBlaster", "txtPurgeTime",
        "txtLogSize", "chkUnZipFiles", "chkLogDaily", "chkShowErrors", "LogIt", "chkPacketHost"}) {
    EXPECT_TRUE(visited.contains(name)) << name;
  }
}

TEST(SetupDialog, GoingToTheMainWindowStoresEverything) {
  WindowedStation ostrel;
  ostrel.ShowSetup(0);
  ostrel.Type("CWidenty", "W1AW");
  ostrel.Click("lblOutBaud");
  ostrel.Find<QTabWidget>("SSTab1")->setCurrentIndex(kFirstPriorityTab);
  ostrel.station->setup().SetupPriList[0].Assign({});
  ostrel.Type("pri1inbox(0)", "zfp*");
  QTest::keyClick(ostrel.Find<QWidget>("pri1inbox(0)"), Qt::Key_Return);
  const bool overwritten = ostrel.Find<QCheckBox>("chkOverWrite(0)")->isChecked();
  ostrel.Click("chkOverWrite(0)");
  ostrel.Find<QTabWidget>("SSTab1")->setCurrentIndex(kSystemTab);
  ostrel.Click("chkBrask");
  ostrel.Click("chkByteBlaster");
  EXPECT_FALSE(ostrel.Find<QCheckBox>("chkBrask")->isChecked());

  ostrel.Activate(ostrel.mainWindow.get());
  EXPECT_FALSE(ostrel.setup->isVisible());
  ostrel.Restart();
  EXPECT_EQ(ostrel.Find<QLineEdit>("CWidenty")->text(), "W1AW");
  EXPECT_EQ(ostrel.Find<QLabel>("lblOutBaud")->text(), "2400");
  EXPECT_EQ(Entries(ostrel.station->setup().SetupPriList[0]), std::vector<std::string>{"ZFP*"});
  EXPECT_NE(ostrel.Find<QCheckBox>("chkOverWrite(0)")->isChecked(), overwritten);
  EXPECT_TRUE(ostrel.Find<QCheckBox>("chkByteBlaster")->isChecked());
}

TEST(SetupDialog, AnotherProgramIsNoReasonToLeaveButTheMainWindowAfterItIs) {
  WindowedStation ostrel;
  ostrel.ShowSetup(0);
  emit qGuiApp->focusWindowChanged(nullptr);
  EXPECT_TRUE(ostrel.setup->isVisible());
  ostrel.Activate(ostrel.mainWindow.get());
  EXPECT_FALSE(ostrel.setup->isVisible());
}

TEST(SetupDialog, ALogSizeThatIsNoNumberKeepsTheDialog) {
  WindowedStation ostrel;
  ostrel.ShowSetup(kSystemTab);
  ostrel.Type("txtLogSize", "much");
  ostrel.Find<QTabWidget>("SSTab1")->setCurrentIndex(0);
  const auto seen = ostrel.MessagesOf([&] { ostrel.setup->close(); });
  ASSERT_EQ(seen.size(), 1U);
  EXPECT_EQ(seen[0].text, "Log file size must be numeric.");
  EXPECT_TRUE(ostrel.setup->isVisible());
  EXPECT_EQ(ostrel.setup->focusWidget()->objectName(), "txtLogSize");

  ostrel.Type("txtLogSize", "100");
  EXPECT_TRUE(ostrel.MessagesOf([&] { ostrel.Find<QAction>("exitmenu")->trigger(); }).empty());
  EXPECT_FALSE(ostrel.setup->isVisible());
  EXPECT_EQ(ostrel.Find<QLineEdit>("txtLogSize")->text(), "50000");
}

TEST(SetupDialog, ScheduleEntriesAreAddedRefusedEditedAndRemoved) {
  WindowedStation ostrel;
  ostrel.ShowSetup(kScheduleTab);
  const auto enter = [&](const char* entry) {
    ostrel.Type("txtSchedule", entry);
    return ostrel.MessagesOf(
        [&] { QTest::keyClick(ostrel.Find<QWidget>("txtSchedule"), Qt::Key_Return); });
  };
  EXPECT_TRUE(enter("13:00 /A/X.TXT /b/x.txt").empty());
  EXPECT_TRUE(enter("13:30 /a/y.txt /b/y.txt").empty());
  EXPECT_EQ(enter("1:00 /a /b").at(0).title, "Schedule");
  EXPECT_EQ(enter("25:00 /a /b").at(0).title, "Schedule Time");
  EXPECT_EQ(ostrel.setup->focusWidget()->objectName(), "txtSchedule");
  auto& list = ostrel.station->setup().lstSchedule;
  EXPECT_EQ(list.size(), 2U);

  ostrel.Select("lstSchedule", {0});
  EXPECT_EQ(ostrel.Find<QLineEdit>("txtSchedule")->text(), "13:00 /a/x.txt /b/x.txt");
  QTest::mouseClick(ostrel.Find<QPushButton>("cmdRemove"), Qt::LeftButton);
  EXPECT_EQ(Entries(list), std::vector<std::string>{"13:30 /a/y.txt /b/y.txt"});
  EXPECT_EQ(ostrel
                .MessagesOf([&] {
                  QTest::mouseClick(ostrel.Find<QPushButton>("cmdFormat"), Qt::LeftButton);
                })
                .at(0)
                .title,
            "Help with formatting...");
}

TEST(SetupDialog, BytesThatAreNoTextAreNotChangedByBeingShown) {
  WindowedStation ostrel;
  auto& field = ostrel.station->setup().Diddle;
  field.Set("/fill/\xe9.txt");
  EXPECT_EQ(field.Get(), "/fill/\xe9.txt");
}

}  // namespace
}  // namespace ostrel
