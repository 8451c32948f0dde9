// The sources of the feed, with real files, a pseudo-terminal and sockets.
#include <QTcpServer>
#include <QTcpSocket>
#include <QUdpSocket>

#include "feed/packet_source.h"
#include "tests/feed/sources/sources_fixture.h"

namespace ostrel {
namespace {

TEST_F(SourcesTest, FilesAreTakenWhenTheirWriterIsDoneWithThem) {
  Write("OLD.TXT", "old");
  fs::create_symlink(folder_ / "tree/OLD.TXT", folder_ / "tree/LINK.TXT");
  const auto source = Watch({.passedOver = {"*.part"}});
  fs::create_directories(folder_ / "tree/2026/05");
  Wait(500ms);
  const auto path = std::string("2026/05/") + kLong;
  auto slow = Write(path, "first half, ");
  Write(".HIDDEN.TXT", "x");
  Write("TORDMXIA.TXT.part", "x");
  Write("UPPER.TXT.PART", "x");
  Write("EMPTY.TXT", "");
  Wait(500ms);
  Names expected{"OLD.TXT=old"};
  EXPECT_EQ(In("in"), expected);
  slow << "second half";
  slow.close();
  expected.insert("TORDMXIA.TXT=first half, second half");
  EXPECT_TRUE(Until([&] { return In("in") == expected; }));
  Write(path, "corrected");
  expected.insert("TORDMXIA.TXT.1=corrected");
  EXPECT_TRUE(Until([&] { return In("in") == expected; }));
  fs::rename(folder_ / "tree/TORDMXIA.TXT.part", folder_ / "tree/MOVED.TXT");
  expected.insert("MOVED.TXT=x");
  EXPECT_TRUE(Until([&] { return In("in") == expected; }));
}

TEST_F(SourcesTest, FilesGoWhereTheOperatorWantsThemOnceTheyAreTaken) {
  Write("LEFT.TXT", "left");
  auto source = Watch({.takesOldFiles = false});
  Write("NEW.TXT", "new");
  EXPECT_TRUE(Until([&] { return !In("in").empty(); }));
  EXPECT_EQ(In("tree"), (Names{"LEFT.TXT=left", "NEW.TXT=new"}));

  source = Watch({.afterwards = FolderSettings::Afterwards::kMove, .moveTo = folder_ / "done"});
  EXPECT_EQ(In("tree"), Names{}) << "what was taken, and what was left, by the one before";
  EXPECT_EQ(In("done"), (Names{"LEFT.TXT=left", "NEW.TXT=new"}));
  EXPECT_EQ(In("in"), Names{"NEW.TXT=new"});

  source = Watch({.afterwards = FolderSettings::Afterwards::kDelete});
  fs::rename(folder_ / "in", folder_ / "gone");
  Write("LATER.TXT", "later");
  EXPECT_TRUE(Until([&] { return !book_.Figures().trouble.empty(); }));
  EXPECT_EQ(In("tree"), Names{"LATER.TXT=later"}) << "it is not lost";
  fs::create_hard_link(folder_ / "tree/LATER.TXT", folder_ / "kept");
  fs::rename(folder_ / "gone", folder_ / "in");
  EXPECT_TRUE(Until([&] { return In("tree").empty(); }));
  EXPECT_EQ(In("in"), (Names{"NEW.TXT=new", "LATER.TXT=later"}));
  fs::rename(folder_ / "kept", folder_ / "tree/LATER.TXT");
  EXPECT_TRUE(Until([&] { return In("tree").empty(); })) << "the very same file once more";
}

TEST_F(SourcesTest, MembersOfArchivesAreProducts) {
  fs::create_directory(folder_ / "members");
  std::ofstream(folder_ / "members/AFDDMXIA.TXT") << "short";
  std::ofstream(folder_ / "members/" + kLong) << "long";
  const auto archive = station_.archives.Create(folder_ / "members/ALL.ZIP").writer;
  for (const auto* name : {"AFDDMXIA.TXT", kLong}) archive->Add(folder_ / "members", name);
  archive->Close();
  const auto source = Watch({.unpacks = true});
  Write("DAMAGED.ZIP", "no archive");
  fs::rename(folder_ / "members/ALL.ZIP", folder_ / "tree/ALL.ZIP");
  const Names expected{"AFDDMXIA.TXT=short", "TORDMXIA.TXT=long"};
  EXPECT_TRUE(Until([&] { return In("in") == expected; }));
  EXPECT_FALSE(fs::exists(folder_ / "workshop"));
}

/// What a station sends: its packets one by one, and the products in them as they are to come out.
class StreamTest : public SourcesTest {
 protected:
  StreamTest() {
    station_.Rule(4, "P*");
    station_.Set("ComBaud", "115200");
    station_.Start();
    for (int number = 10; number < 20; ++number)
      station_.Drop(fmt::format("P{}.TXT", number), SampleText(1500, number));
    station_.Run(20s);
    const auto& carried = station_.machine.line.carried;
    for (std::size_t at = 0; at < carried.size(); at += kReceivedPacket)
      packets_.push_back(carried.substr(at, kReceivedPacket));
    for (const auto& product : station_.Products())
      expected_.insert(product.name + "=" + product.data);
    EXPECT_EQ(expected_.size(), 10U);
  }
  std::string WithNoise() const {
    std::string stream = "noise" + packets_[0].substr(500);
    for (const auto& packet : packets_) stream += packet + "static /PF";
    return stream;
  }
  void ExpectAll() {
    EXPECT_TRUE(Until([&] { return In("in") == expected_; })) << In("in").size();
  }

  std::vector<std::string> packets_;
  Names expected_;
};

TEST_F(StreamTest, ComesOverASerialLineThatIsNoisy) {
  const auto terminal = MakePseudoTerminal();
  SerialSource source({.device = terminal.senderName}, delivery_, book_);
  source.Start();
  const auto stream = WithNoise() + WithNoise();
  for (std::size_t at = 0; at < stream.size();) {
    const auto count = write(terminal.receiver.Get(), stream.data() + at,
                             std::min<std::size_t>(stream.size() - at, 1000));
    if (count > 0) at += static_cast<std::size_t>(count);
    QCoreApplication::processEvents();
  }
  ExpectAll();
  EXPECT_EQ(book_.Figures().repeats, 10);
}

TEST_F(StreamTest, ComesAsDatagramsThatGetLost) {
  QUdpSocket sender;
  ASSERT_TRUE(sender.bind(QHostAddress::LocalHost));
  const auto port = sender.localPort();
  sender.close();
  UdpSource source({.where = {.port = port}}, delivery_, book_);
  source.Start();
  for (const std::size_t lost : {5U, 12U}) {
    for (std::size_t number = 0; number < packets_.size(); ++number) {
      const auto datagram = "R0001" + packets_[number];
      if (number != lost)
        sender.writeDatagram(datagram.data(), std::ssize(datagram), QHostAddress::LocalHost, port);
      Wait(1ms);
    }
    sender.writeDatagram("E0000", 5, QHostAddress::LocalHost, port);
  }
  ExpectAll();
}

TEST_F(StreamTest, ComesFromThoseWhoMaySendAlone) {
  QUdpSocket sender;
  ASSERT_TRUE(sender.bind(QHostAddress::LocalHost));
  const auto port = sender.localPort();
  sender.close();
  const auto send = [&] {
    for (const auto& packet : packets_) {
      const auto datagram = "R0001" + packet;
      sender.writeDatagram(datagram.data(), std::ssize(datagram), QHostAddress::LocalHost, port);
      Wait(1ms);
    }
  };
  std::optional<UdpSource> source;
  source.emplace(UdpSettings{.where = {.address = "0.0.0.0", .port = port},
                             .from = {ReadIpv4Network("192.0.2.0/24").value()}},
                 delivery_, book_);
  source->Start();
  send();
  EXPECT_TRUE(Until([&] {
    return book_.Figures().sources.back().state.find("of others dropped, the last of 127.0.0.1") !=
           std::string::npos;
  }));
  EXPECT_EQ(In("in"), Names{});
  source.reset();
  // As a station sends them unless told otherwise: to all of this computer.
  source.emplace(UdpSettings{.where = {.port = port}, .from = {}}, delivery_, book_);
  source->Start();
  for (const auto& packet : packets_) {
    const auto datagram = "R0001" + packet;
    sender.writeDatagram(datagram.data(), std::ssize(datagram), QHostAddress("127.255.255.255"),
                         port);
    Wait(1ms);
  }
  ExpectAll();
}

TEST_F(StreamTest, ComesOverConnectionsThatBreak) {
  QTcpServer server;
  ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
  int connections = 0;
  QObject::connect(&server, &QTcpServer::newConnection, &server, [&] {
    auto* const peer = server.nextPendingConnection();
    const auto stream = WithNoise();
    const auto size = ++connections == 1 ? stream.size() / 2 : stream.size();
    peer->write(stream.data(), static_cast<qint64>(size));
    if (connections == 1) peer->disconnectFromHost();
  });
  TcpSource source({.host = "127.0.0.1", .port = server.serverPort(), .silence = 1s}, delivery_,
                   book_);
  source.Start();
  ExpectAll();
  EXPECT_TRUE(Until([&] { return connections >= 3; })) << "a silent one is given up";
}

}  // namespace
}  // namespace ostrel
