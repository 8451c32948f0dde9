// What strangers can do to the station's socket.
#include <QLocalSocket>
#include <QTest>
#include <filesystem>
#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include "platform/linux/temporary_folder.h"
#include "platform/qt/qt_local_socket.h"
#include "tests/support/crowd.h"
#include "tests/support/failure_of.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;

class LocalSocketTest : public testing::Test {
 protected:
  LocalSocketTest() {
    socket_.OnLine([this](Asker asker, std::string_view line) {
      lines_.emplace_back(line);
      account_ = socket_.AccountOf(asker);
      socket_.Send(asker, answer_);
    });
    socket_.Open(path_);
  }
  std::unique_ptr<QLocalSocket> Connect() {
    auto client = std::make_unique<QLocalSocket>();
    client->connectToServer(QString::fromStdString(path_));
    return client;
  }
  static bool IsDropped(QLocalSocket& client) {
    return QTest::qWaitFor([&] { return client.state() == QLocalSocket::UnconnectedState; });
  }

  TemporaryFolder folder_{fs::temp_directory_path()};
  std::string path_ = folder_ / "station.sock";
  QtLocalSocket socket_;
  std::vector<std::string> lines_;
  std::string answer_ = "answer", account_;
};

TEST_F(LocalSocketTest, AnswersLineByLineAndIsTheGroupsAlone) {
  EXPECT_EQ(fs::status(path_).permissions(), fs::perms(0660));
  auto client = Connect();
  client->write("one\ntwo\r\n\nthr");
  EXPECT_TRUE(QTest::qWaitFor([&] { return lines_.size() == 2; }));
  client->write("ee\n");
  EXPECT_TRUE(QTest::qWaitFor([&] { return client->bytesAvailable() == 3 * 7; }));
  EXPECT_EQ(lines_, (std::vector<std::string>{"one", "two", "three"}));
  client->write(QByteArray("many\n").repeated(100));
  EXPECT_TRUE(QTest::qWaitFor([&] { return lines_.size() == 103; }));
  EXPECT_EQ(account_, getpwuid(getuid())->pw_name);
  socket_.Open(path_);  // what an earlier run left is no hindrance
  EXPECT_EQ(FailureOf([&] { socket_.Open(std::string(200, 'x')); }), 57);
}

TEST_F(LocalSocketTest, DropsWhoCostsTooMuchAndServesTheOthers) {
  auto endless = Connect(), deaf = Connect(), polite = Connect();
  endless->write(QByteArray(static_cast<int>(kLongestQuestion) + 1, 'x'));
  EXPECT_TRUE(IsDropped(*endless));
  deaf->setReadBufferSize(1);
  answer_ = std::string(60'000, 'a');
  for (int i = 0; i < 40; ++i) deaf->write("more\n");
  polite->write("after them\n");
  EXPECT_TRUE(QTest::qWaitFor([&] { return polite->canReadLine(); }));
  EXPECT_LT(lines_.size(), 30U) << "its other questions are nobody's any more";
  answer_ = "answer";
  std::vector<std::unique_ptr<QLocalSocket>> crowd;
  for (int i = 0; i < 20; ++i) crowd.push_back(Connect());
  EXPECT_TRUE(QTest::qWaitFor([&] {
    return std::count_if(crowd.begin(), crowd.end(), [](const auto& client) {
             return client->state() == QLocalSocket::ConnectedState;
           }) == static_cast<int>(kMostAskers) - 1;
  }));
  polite->write("still here\n");
  EXPECT_TRUE(QTest::qWaitFor([&] { return lines_.back() == "still here"; }));
}

/// The cycle's timer has its turn in every pass of the event loop, so that a packet is late by one
/// pass at most; a pass answers few questions, however many are asked.
TEST_F(LocalSocketTest, ACrowdDelaysNoTick) {
  // Askers, what each of them gets in a row, and twice: when it asks and when it has waited.
  constexpr std::size_t kMostInAPass = 8 * 16 * 2;
  answer_ = std::string(2000, 'a');
  const Crowd crowd(path_);
  const QDeadlineTimer end(1000);
  while (!end.hasExpired() || lines_.size() < 100) {
    const auto before = lines_.size();
    QCoreApplication::processEvents();
    ASSERT_LE(lines_.size() - before, kMostInAPass);
  }
}

}  // namespace
}  // namespace ostrel
