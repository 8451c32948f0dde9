#include <fstream>
#include <gtest/gtest.h>
#include <optional>
#include <termios.h>

#include "platform/linux/linux_serial_port.h"
#include "platform/virtual/virtual_clock.h"
#include "tests/support/failure_of.h"
#include "tests/support/pseudo_terminal.h"
#include "tests/support/temp_folder.h"

namespace ostrel {
namespace {

constexpr std::size_t kFullBuffer = 10000;

class LinuxSerialPortTest : public testing::Test {
 protected:
  LinuxSerialPortTest() { terminal_.LinkAt(ports_ / "COM1"); }

  TempFolder ports_;
  PseudoTerminal terminal_;
  VirtualClock clock_{UtcTime{}};
  LinuxSerialPort port_{clock_, ports_.path()};
};

TEST_F(LinuxSerialPortTest, CarriesEveryByteUnchangedAndCountsItUntilTheLineHasSentIt) {
  std::string bytes;
  for (int value = 0; value < 256; ++value) bytes += static_cast<char>(value);
  port_.Open(1, "1200,N,8,2");
  EXPECT_EQ(port_.BytesWaiting(), 0u);
  port_.Write(bytes);
  EXPECT_EQ(terminal_.ReadBytes(bytes.size()), bytes);
  EXPECT_EQ(port_.BytesWaiting(), 256u);
  clock_.Advance(milliseconds(2346));  // 256 bytes take 2346.7 ms
  EXPECT_EQ(port_.BytesWaiting(), 1u);
  clock_.Advance(milliseconds(1));
  EXPECT_EQ(port_.BytesWaiting(), 0u);
}

TEST_F(LinuxSerialPortTest, SetsTheDeviceAsTheSettingsSay) {
  const struct {
    const char* settings;
    speed_t speed;
    bool twoStopBits;
  } rows[] = {{"1200,N,8,2", B1200, true}, {"115200,N,8,1", B115200, false}};
  for (const auto& row : rows) {
    port_.Open(1, row.settings);
    termios line = {};
    ASSERT_EQ(tcgetattr(terminal_.descriptor(), &line), 0);
    EXPECT_EQ(cfgetospeed(&line), row.speed);
    EXPECT_EQ((line.c_cflag & CSTOPB) != 0, row.twoStopBits);
    EXPECT_EQ(line.c_cflag & (HUPCL | CLOCAL | CRTSCTS), unsigned{HUPCL | CLOCAL});
    EXPECT_EQ(line.c_iflag & (IXON | IXOFF | ICRNL), 0u);
  }
}

TEST_F(LinuxSerialPortTest, HoldsWhatTheDriverDoesNotTakeAndRefusesWhatHasNoRoom) {
  port_.Open(1, "115200,N,8,1");
  std::string accepted;
  int number = 0;
  const auto next = [&] { return std::string(3000, static_cast<char>('A' + number++ % 26)); };
  for (std::string piece = next();; piece = next()) {  // nobody reads
    if (FailureOf([&] { port_.Write(piece); }) == 57) break;
    accepted += piece;
    ASSERT_LT(accepted.size(), 1'000'000u);
  }
  clock_.Advance(seconds(1000));
  EXPECT_GT(port_.BytesWaiting(), kFullBuffer - 3000);
  std::string received;
  while (received.size() < accepted.size()) {
    port_.BytesWaiting();
    const std::string more = terminal_.Read();
    if (more.empty()) break;
    received += more;
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
  EXPECT_EQ(FailureOf([&] { port_.Open(1, "1200,N,8,9"); }), 5);
  EXPECT_EQ(FailureOf([&] { port_.Open(1, "1200,N,8,2"); }), 0);
}

TEST_F(LinuxSerialPortTest, IsClosedUntilOpenedAndKeepsTheLinesInMind) {
  EXPECT_EQ(FailureOf([&] { port_.Write("x"); }), 57);
  port_.SetKeyLine1(true);
  EXPECT_TRUE(port_.KeyLine1());
  port_.Open(1, "1200,N,8,2");
  port_.SetKeyLine2(true);
  port_.Write("waits");
  port_.Close();
  port_.Close();
  EXPECT_FALSE(port_.IsOpen() || port_.KeyLine1() || port_.KeyLine2());
  EXPECT_EQ(port_.BytesWaiting(), 0u);
}

TEST_F(LinuxSerialPortTest, StandsStillWhileTheDeviceIsGoneAndGoesOnWhenItIsBack) {
  std::vector<bool> presence;
  port_.OnPresence([&](bool present) { presence.push_back(present); });
  port_.Open(1, "1200,N,8,2");
  port_.SetKeyLine2(true);
  port_.SetKeyLine1(true);
  port_.Write("lost on the way");
  terminal_.Pull();
  EXPECT_EQ(port_.BytesWaiting(), kFullBuffer);
  EXPECT_EQ(presence, std::vector<bool>{false});
  clock_.Advance(seconds(60));
  EXPECT_EQ(port_.BytesWaiting(), kFullBuffer);
  EXPECT_TRUE(port_.IsOpen());
  port_.SetKeyLine1(false);
  port_.Write("held");

  PseudoTerminal replugged;
  replugged.LinkAt(ports_ / "COM1");
  clock_.Advance(milliseconds(1999));
  EXPECT_EQ(port_.BytesWaiting(), kFullBuffer);
  clock_.Advance(milliseconds(1));
  EXPECT_EQ(port_.BytesWaiting(), 4u);
  EXPECT_EQ(presence, (std::vector<bool>{false, true}));
  EXPECT_EQ(replugged.ReadBytes(4), "held");
  termios line = {};
  tcgetattr(replugged.descriptor(), &line);
  EXPECT_EQ(cfgetospeed(&line), speed_t{B1200});
  EXPECT_FALSE(port_.KeyLine1());
  EXPECT_TRUE(port_.KeyLine2());
}

TEST_F(LinuxSerialPortTest, KeepsTheBytesOfTheWriteUnderWhichTheDeviceWent) {
  port_.Open(1, "1200,N,8,2");
  terminal_.Pull();
  port_.Write("block");
  PseudoTerminal replugged;
  replugged.LinkAt(ports_ / "COM1");
  clock_.Advance(seconds(2));
  port_.BytesWaiting();
  EXPECT_EQ(replugged.ReadBytes(5), "block");
}

}  // namespace
}  // namespace ostrel
