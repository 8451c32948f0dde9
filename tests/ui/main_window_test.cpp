#include <QLabel>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QTimer>
#include <gtest/gtest.h>

#include "tests/ui/windowed_station.h"

namespace ostrel {
namespace {

TEST(MainWindow, EveryElementStandsAtItsPlaceUnderItsName) {
  WindowedStation ostrel;
  struct Row {
    const char* name;
    QRect place;  // pixels of 15 twips
  };
  for (const auto& [name, place] : {Row{"lblFrame", {0, 0, 517, 379}},
                                    {"lblStatus1", {4, 5, 253, 17}},
                                    {"lblStatus2", {260, 5, 253, 17}},
                                    {"lblActivefile", {56, 7, 88, 13}},
                                    {"imgActivity", {242, 10, 8, 8}},
                                    {"lblDataRate", {4, 23, 169, 17}},
                                    {"lblCompressionRatio", {174, 23, 168, 17}},
                                    {"lblThroughput", {343, 23, 170, 17}},
                                    {"lblSending(0)", {4, 41, 253, 17}},
                                    {"lblSending(9)", {260, 314, 253, 17}},
                                    {"PriorityList(0)", {4, 58, 253, 46}},
                                    {"PriorityList(5)", {260, 58, 253, 46}},
                                    {"PriorityList(9)", {260, 331, 253, 46}}}) {
    EXPECT_EQ(ostrel.Find<QWidget>(name)->geometry(), place) << name;
  }
  for (const char* const name :
       {"lblSend", "lblBlock", "lblBlkPktNum", "lblOF", "lblBlkPktTot", "lblFilesSentDesc",
        "lblFilesSent", "imgRedLed", "imgYellowLed", "txtFocus", "mnuFile", "mnuHelp"}) {
    EXPECT_TRUE(ostrel.mainWindow->findChild<QWidget*>(name)) << name;
  }
  for (const char* const name :
       {"mnuSetup", "mnuSendCWID", "mnuViewLog", "mnuShowIngest", "mnuStatus", "mnubar2",
        "mnuRegistryExport", "mnuRegistryImport", "mnubar1", "mnuExit", "mnuHelpAbout", "mnubar0",
        "mnuHelpWeb", "mnuEmail"}) {
    EXPECT_TRUE(ostrel.mainWindow->findChild<QAction*>(name)) << name;
  }
}

TEST(MainWindow, TheStationsFiguresAndColoursShow) {
  WindowedStation ostrel;
  auto& state = ostrel.station->mainWindow();
  auto* const file = ostrel.Find<QLabel>("lblActivefile");
  const auto ground = [&] { return file->palette().color(QPalette::Window).name(); };
  EXPECT_EQ(ground(), "#c0c0c0");
  state.lblActivefileBackColor.Set(Shade::kYellow);
  EXPECT_EQ(ground(), "#ffff00");
  state.lblActivefileBackColor.Set(Shade::kRed);
  state.lblActivefile.Set("Station ID");
  EXPECT_EQ(ground(), "#ff0000");
  EXPECT_EQ(file->text(), "Station ID");

  auto* const light = ostrel.Find<QLabel>("imgActivity");
  EXPECT_TRUE(light->pixmap().isNull());
  state.imgActivity.Set(Light::kRed);
  EXPECT_EQ(light->pixmap().toImage(), ostrel.Find<QLabel>("imgRedLed")->pixmap().toImage());
  state.imgActivity.Set(Light::kYellow);
  EXPECT_EQ(light->pixmap().toImage(), ostrel.Find<QLabel>("imgYellowLed")->pixmap().toImage());
}

TEST(MainWindow, AFastSecondClickSwitchesTheTimingReadoutOffAgain) {
  WindowedStation ostrel;
  ostrel.Click("lblStatus2");
  EXPECT_TRUE(ostrel.station->engine().timingReadout);
  ostrel.Click("lblStatus2");
  ostrel.ClickTwice("lblStatus2");
  EXPECT_FALSE(ostrel.station->engine().timingReadout);
}

TEST(MainWindow, DeleteTakesTheSelectedEntriesOutOfTheirQueueOnly) {
  WindowedStation ostrel;
  auto& queues = ostrel.station->mainWindow().PriorityList;
  for (const char* const name : {"A.TXT", "B.TXT", "C.TXT", "D.TXT"}) {
    queues[Priority(2)].Append(name);
    queues[Priority(3)].Append(name);
  }
  ostrel.Select("PriorityList(1)", {1, 3});
  QTest::keyClick(ostrel.Find<QWidget>("PriorityList(1)"), Qt::Key_Delete);
  ASSERT_EQ(queues[Priority(2)].size(), 2U);
  EXPECT_EQ(queues[Priority(2)][1], "C.TXT");
  EXPECT_TRUE(ostrel.Find<ui::ListView>("PriorityList(1)")->Selected().empty());
  EXPECT_EQ(queues[Priority(3)].size(), 4U);

  auto* const other = ostrel.Find<ui::ListView>("PriorityList(2)");
  QTest::keyClick(other, Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(other->Selected().size(), 4U);
  QTest::keyClick(other, Qt::Key_Delete);
  EXPECT_TRUE(queues[Priority(3)].empty());
}

TEST(MainWindow, TenThousandEntriesFollowTheirQueueByPosition) {
  WindowedStation ostrel;
  auto& queue = ostrel.station->mainWindow().PriorityList[Priority(1)];
  auto* const view = ostrel.Find<ui::ListView>("PriorityList(0)");
  QSignalSpy reset(view->model(), &QAbstractItemModel::modelReset);
  for (int i = 0; i < 10000; ++i) queue.Append("FILE" + std::to_string(i) + ".TXT");
  ostrel.Select("PriorityList(0)", {9000});
  queue.Remove(0);
  queue.Remove(4999);
  queue.Replace(1, "NEW.TXT");
  queue.Append("LAST.TXT");

  EXPECT_EQ(view->Selected(), std::vector<std::size_t>{8998});
  ASSERT_EQ(view->model()->rowCount(), 9999);
  for (const int row : {0, 1, 4998, 4999, 9998}) {
    EXPECT_EQ(view->model()->index(row, 0).data().toString().toStdString(),
              queue[static_cast<std::size_t>(row)]);
  }
  EXPECT_EQ(queue[4999], "FILE5001.TXT");
  EXPECT_EQ(reset.count(), 0);
}

TEST(MainWindow, TheStatusWindowShowsTheQueuesAtOnceAndIsOnlyOne) {
  WindowedStation ostrel;
  ostrel.station->mainWindow().PriorityList[Priority(10)].Append("A.TXT");
  ostrel.station->engine().MaximumCount[Priority(10)] = 7;
  ostrel.Find<QAction>("mnuStatus")->trigger();
  ostrel.Find<QAction>("mnuStatus")->trigger();
  EXPECT_EQ(ostrel.mainWindow->findChildren<QWidget*>("frmStatus").size(), 1);
  EXPECT_EQ(ostrel.Find<QLabel>("lblQueue(9)")->text(), "10");
  EXPECT_EQ(ostrel.Find<QLabel>("lblPending(9)")->text(), "1");
  EXPECT_EQ(ostrel.Find<QLabel>("lblMaxWait(9)")->text(), "7");
  EXPECT_EQ(ostrel.Find<QLabel>("lblPending(0)")->text(), "0");
  EXPECT_EQ(ostrel.Find<QTimer>("timUpdate")->interval(), 4000);
}

TEST(MainWindow, TheErrorWindowStampsTheLatestMessage) {
  WindowedStation ostrel;
  ui::WindowDialogs dialogs(ostrel.machine.clock);
  dialogs.Attach(*ostrel.mainWindow, *ostrel.setup);
  dialogs.ShowErrorWindow("first\r\nline");
  ostrel.machine.clock.Advance(std::chrono::seconds(5));
  dialogs.ShowErrorWindow("second");
  auto* const display = ostrel.Find<QPlainTextEdit>("txtDisplay");
  EXPECT_EQ(display->toPlainText(), "11/18/2026 12:00:05\nsecond");
  dialogs.CloseErrorWindow();
  EXPECT_FALSE(display->isVisible());
}

TEST(MainWindow, TheCloseBoxEndsTheStationAndNotJustTheWindow) {
  WindowedStation ostrel;
  EXPECT_FALSE(ostrel.mainWindow->close());
  EXPECT_TRUE(ostrel.HasEnded());
  EXPECT_FALSE(ostrel.machine.cycleTimer.IsRunning());
}

TEST(MainWindow, ComesBackWhereItStood) {
  WindowedStation ostrel;
  ostrel.mainWindow->setGeometry(120, 90, 600, 500);
  const QPoint place = ostrel.mainWindow->pos();
  ostrel.Restart();
  EXPECT_EQ(ostrel.mainWindow->pos(), place);
  EXPECT_EQ(ostrel.mainWindow->size(), QSize(600, 500));
}

}  // namespace
}  // namespace ostrel
