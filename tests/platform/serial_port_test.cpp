#include <fstream>
#include <gtest/gtest.h>
#include <termios.h>

#include "platform/linux/line_rate.h"
#include "platform/linux/linux_serial_port.h"
#include "platform/linux/temporary_folder.h"
#include "platform/virtual/virtual_clock.h"
#include "tests/support/failure_of.h"
#include "tests/support/pseudo_terminal.h"

namespace ostrel {
namespace {

constexpr std::size_t kFullBuffer = 10000;

class LinuxSerialPortTest : public testing::Test {
 protected:
  LinuxSerialPortTest() { terminal_.LinkAt(ports_ / "COM1"); }
  static void ExpectUsualSettings(const PseudoTerminal& terminal) {
    termios line = {};
    tcgetattr(terminal.descriptor(), &line);
    EXPECT_EQ(line.c_cflag & (CSTOPB | HUPCL | CLOCAL | CRTSCTS),
              tcflag_t{CSTOPB | HUPCL | CLOCAL});
    EXPECT_EQ(LineRate(terminal.descriptor()), 1200);
    EXPECT_EQ(line.c_iflag & (IXON | IXOFF), 0u);
  }

  TemporaryFolder ports_;
  PseudoTerminal terminal_;
  VirtualClock clock_{UtcTime{}};
  LinuxSerialPort port_{clock_, ports_.path()};
};

TEST_F(LinuxSerialPortTest, CarriesEveryByteUnchangedAndCountsItUntilTheLineHasSentIt) {
  std::string bytes;
  for (int value = 0; value < 256; ++value) bytes += static_cast<char>(value);
  port_.Open(1, "1200,N,8,2");
  ExpectUsualSettings(terminal_);
  port_.Write(bytes);
  EXPECT_EQ(terminal_.Read(bytes.size()), bytes);
  clock_.Advance(milliseconds(2346));  // 256 bytes take 2346.7 ms
  EXPECT_EQ(port_.BytesWaiting(), 1u);
  clock_.Advance(milliseconds(1));
  EXPECT_EQ(port_.BytesWaiting(), 0u);
}

TEST_F(LinuxSerialPortTest, KnowsTheTimeOfAByteOnTheWireFromSettingsThatItUnderstands) {
  const std::pair<const char*, seconds> rows[] = {{" 9600 , e , 7 , 1 ", seconds(20)},
                                                  {"38400,M,5,1.5", seconds(17)},
                                                  {"14400,N,8,2", seconds(22)}};
  for (const auto& [text, halfBits] : rows) {
    const auto settings = ParseLineSettings(text);
    // In one second the line sends as many bits as its rate says.
    EXPECT_EQ(TimeOnLine(settings, 2 * static_cast<std::size_t>(settings.rate)), halfBits) << text;
  }
  port_.Open(1, "128000,N,8,2");
  EXPECT_EQ(LineRate(terminal_.descriptor()), 128000);
  for (const char* none : {"", "1200,N,8", "1200,N,8,2,1", "0,N,8,2", "-1,N,8,2", "1200,X,8,2",
                           "1200,N,9,2", "1200,N,8,3", "12e2,N,8,2"}) {
    EXPECT_EQ(FailureOf([&] { port_.Open(1, none); }), 5) << none;
  }
}

TEST_F(LinuxSerialPortTest, HoldsWhatTheDriverDoesNotTakeAndRefusesWhatHasNoRoom) {
  port_.Open(1, "115200,N,8,1");
  std::string accepted, received;
  for (char sign = 'A'; sign <= 'Z'; ++sign) {  // nobody reads
    const std::string piece(3000, sign);
    if (FailureOf([&] { port_.Write(piece); }) == 57) break;
    accepted += piece;
  }
  ASSERT_LT(accepted.size(), 26u * 3000);
  clock_.Advance(seconds(1000));
  EXPECT_GT(port_.BytesWaiting(), 0u);  // the driver may have taken a little more by now
  for (std::string more = "?"; !more.empty() && received.size() < accepted.size();) {
    port_.BytesWaiting();
    received += more = terminal_.Read(1);
  }
  EXPECT_EQ(received, accepted);
  EXPECT_EQ(port_.BytesWaiting(), 0u);
}

TEST_F(LinuxSerialPortTest, IsRefusedWhatIsNoPortOrAnothersPort) {
  std::ofstream(ports_ / "COM3") << "a file";
  PseudoTerminal gone;
  gone.LinkAt(ports_ / "COM4");
  gone.Pull();
  LinuxSerialPort other(clock_, ports_.path());
  other.Open(1, "1200,N,8,2");
  for (const int number : {0, 1, 2, 3, 4}) {
    EXPECT_EQ(FailureOf([&] { port_.Open(number, "1200,N,8,2"); }), 68) << number;
    EXPECT_FALSE(port_.IsOpen());
  }
  other.Close();
  EXPECT_EQ(FailureOf([&] { port_.Open(1, "1200,N,8,2"); }), 0);
}

TEST_F(LinuxSerialPortTest, StandsStillWhileTheDeviceIsGoneAndGoesOnWhenItIsBack) {
  std::vector<PortEvent> presence;
  port_.OnNews([&](const PortNews& news) { presence.push_back(news.event); });
  EXPECT_EQ(FailureOf([&] { port_.Write("not open yet"); }), 57);
  port_.Open(1, "1200,N,8,2");
  port_.Write("sent");
  clock_.Advance(seconds(1));
  port_.Write("on its way");
  clock_.Advance(milliseconds(50));
  terminal_.Pull();
  EXPECT_EQ(port_.BytesWaiting(), kFullBuffer);
  EXPECT_EQ(presence, std::vector{PortEvent::kVanished});
  port_.Write(", held");

  PseudoTerminal replugged;
  replugged.LinkAt(ports_ / "COM1");
  clock_.Advance(milliseconds(1999));
  EXPECT_EQ(port_.BytesWaiting(), kFullBuffer);
  clock_.Advance(milliseconds(1));
  EXPECT_EQ(port_.BytesWaiting(), kFullBuffer);
  EXPECT_EQ(presence, (std::vector{PortEvent::kVanished, PortEvent::kReturned}));
  clock_.Advance(seconds(1));  // the transmitter comes up
  EXPECT_EQ(port_.BytesWaiting(), 16u);
  EXPECT_EQ(replugged.Read(16), "on its way, held");
  ExpectUsualSettings(replugged);
}

}  // namespace
}  // namespace ostrel
