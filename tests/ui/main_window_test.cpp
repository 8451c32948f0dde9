#include <QLabel>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <gtest/gtest.h>

#include "tests/ui/windowed_station.h"

namespace ostrel {
namespace {

TEST(MainWindow, ElementsStandAtTheirPlacesUnderTheirNames) {
  WindowedStation ostrel;
  const std::pair<const char*, QRect> places[] = {
      // pixels of 15 twips
      {"lblFrame", {0, 0, 517, 379}},          {"lblActivefile", {56, 7, 88, 13}},
      {"imgActivity", {242, 10, 8, 8}},        {"lblThroughput", {343, 23, 170, 17}},
      {"lblSending(9)", {260, 314, 253, 17}},  {"PriorityList(0)", {4, 58, 253, 46}},
      {"PriorityList(9)", {260, 331, 253, 46}}};
  for (const auto& [name, place] : places) {
    EXPECT_EQ(ostrel.Find<QWidget>(name)->geometry(), place) << name;
  }
}

TEST(MainWindow, TheStationsFiguresAndColoursShow) {
  WindowedStation ostrel;
  auto& state = ostrel.window();
  auto* const file = ostrel.Find<QLabel>("lblActivefile");
  state.lblActivefileBackColor.Set(Shade::kRed);
  state.lblActivefile.Set("Station ID");
  EXPECT_EQ(file->palette().color(QPalette::Window).name(), "#ff0000");
  EXPECT_EQ(file->text(), "Station ID");
  auto* const light = ostrel.Find<QLabel>("imgActivity");
  EXPECT_TRUE(light->pixmap().isNull());
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
  auto& queues = ostrel.window().PriorityList;
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
}

TEST(MainWindow, TenThousandEntriesFollowTheirQueueByPosition) {
  WindowedStation ostrel;
  auto& queue = ostrel.window().PriorityList[Priority(1)];
  auto* const view = ostrel.Find<ui::ListView>("PriorityList(0)");
  QSignalSpy reset(view->model(), &QAbstractItemModel::modelReset);
  for (int i = 0; i < 10000; ++i) queue.Append("FILE" + std::to_string(i) + ".TXT");
  ostrel.Select("PriorityList(0)", {9000});
  queue.Remove(0);
  queue.Remove(4999);
  queue.Replace(1, "NEW.TXT");
  EXPECT_EQ(view->Selected(), std::vector<std::size_t>{8998});
  ASSERT_EQ(view->model()->rowCount(), 9998);
  for (const auto& [row, name] : {std::pair{1, "NEW.TXT"},
                                  {4998, "FILE4999.TXT"},
                                  {4999, "FILE5001.TXT"},
                                  {9997, "FILE9999.TXT"}}) {
    EXPECT_EQ(view->model()->index(row, 0).data().toString(), name);
  }
  EXPECT_EQ(reset.count(), 0);
}

TEST(MainWindow, TheStatusWindowShowsTheQueuesAtOnceAndIsOnlyOne) {
  WindowedStation ostrel;
  ostrel.window().PriorityList[Priority(10)].Append("A.TXT");
  ostrel.station->engine().MaximumCount[Priority(10)] = 7;
  ostrel.Find<QAction>("mnuStatus")->trigger();
  ostrel.Find<QAction>("mnuStatus")->trigger();
  EXPECT_EQ(ostrel.mainWindow->findChildren<QWidget*>("frmStatus").size(), 1);
  EXPECT_EQ(ostrel.Find<QLabel>("lblPending(9)")->text(), "1");
  EXPECT_EQ(ostrel.Find<QLabel>("lblMaxWait(9)")->text(), "7");
  EXPECT_EQ(ostrel.Find<QLabel>("lblPending(0)")->text(), "0");
}

TEST(MainWindow, TheErrorWindowStampsTheLatestMessage) {
  WindowedStation ostrel;
  ostrel.dialogs.ShowErrorWindow("first\r\nline");
  ostrel.machine.clock.Advance(std::chrono::seconds(5));
  ostrel.dialogs.ShowErrorWindow("second");
  auto* const display = ostrel.Find<QPlainTextEdit>("txtDisplay");
  EXPECT_EQ(display->toPlainText(), "11/18/2026 12:00:05\nsecond");
  ostrel.dialogs.CloseErrorWindow();
  EXPECT_FALSE(display->isVisible());
}

TEST(MainWindow, TheCloseBoxEndsTheStationAndTheNextWindowComesBackWhereItStood) {
  WindowedStation ostrel;
  ostrel.mainWindow->setGeometry(120, 90, 600, 500);
  const QPoint place = ostrel.mainWindow->pos();
  EXPECT_FALSE(ostrel.mainWindow->close());
  EXPECT_TRUE(ostrel.machine.dialogs.hasEnded);
  EXPECT_FALSE(ostrel.machine.cycleTimer.IsRunning());
  ostrel.Restart();
  EXPECT_EQ(ostrel.mainWindow->pos(), place);
  EXPECT_EQ(ostrel.mainWindow->size(), QSize(600, 500));
}

}  // namespace
}  // namespace ostrel
