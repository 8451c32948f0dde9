#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <set>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include "base/failure.h"
#include "base/text.h"
#include "profile/port_links.h"
#include "programs/settings/commands.h"

namespace ostrel {

namespace fs = std::filesystem;

namespace {

constexpr const char* kLastingNames = "/dev/serial/by-id";

/// The devices that a transmitter can hang on: by their lasting names where they have one, else the
/// serial ports that are built in.
std::vector<fs::path> SerialDevices() {
  std::vector<fs::path> devices;
  std::set<fs::path> named;
  std::error_code none;
  for (const auto& entry : fs::directory_iterator(kLastingNames, none)) {
    devices.push_back(entry.path());
    named.insert(fs::weakly_canonical(entry.path(), none));
  }
  for (const auto& entry : fs::directory_iterator("/sys/class/tty", none)) {
    const auto name = entry.path().filename().string();
    const auto device = fs::path("/dev") / name;
    const bool isSerial = fs::exists(entry.path() / "device" / "driver", none) &&
                          (name.starts_with("ttyS") || name.starts_with("ttyUSB") ||
                           name.starts_with("ttyACM") || name.starts_with("ttyAMA"));
    if (isSerial && !named.contains(device)) devices.push_back(device);
  }
  std::sort(devices.begin(), devices.end());
  return devices;
}

std::string PortsOf(const StationFolder& station, const fs::path& device) {
  std::error_code none;
  std::string ports;
  for (int number = 1; number <= kPortCount; ++number) {
    const auto link = PortLink(station.path(), number);
    if (!LinkedDevice(link).empty() &&
        fs::weakly_canonical(link, none) == fs::weakly_canonical(device, none))
      ports += fmt::format("{}COM{}", ports.empty() ? "" : " ", number);
  }
  return ports;
}

/// True for a device that a driver of terminals serves, which a transmitter can hang on. It is not
/// opened to find out: that would raise its lines and key the transmitter. Where the system does
/// not tell its drivers, every device will do.
bool IsTerminal(const std::string& device) {
  struct stat status {};
  if (stat(device.c_str(), &status) != 0 || !S_ISCHR(status.st_mode)) return false;
  std::ifstream drivers("/proc/tty/drivers");
  if (!drivers) return true;
  std::string name, path, minors, type;
  for (unsigned int major; drivers >> name >> path >> major >> minors >> type;) {
    if (major != gnu_dev_major(status.st_rdev) || (type != "serial" && type != "pty:slave"))
      continue;
    const auto dash = minors.find('-');
    const auto first = std::stoul(minors);
    const auto last = dash == std::string::npos ? first : std::stoul(minors.substr(dash + 1));
    const auto minor = gnu_dev_minor(status.st_rdev);
    if (minor >= first && minor <= last) return true;
  }
  return false;
}

int PortNumber(const std::string& port) {
  const auto name = ToUpper(port);
  for (int number = 1; number <= kPortCount; ++number) {
    if (name == fmt::format("COM{}", number)) return number;
  }
  throw Failure(failure_number::kInvalidArgument,
                fmt::format("{} is no port. The ports are COM1 to COM8.", port));
}

}  // namespace

void ListPorts(StationFolder& station) {
  std::error_code none;
  const auto devices = SerialDevices();
  fmt::print("Serial devices of this computer{}\n", devices.empty() ? ": none found" : "");
  for (const auto& device : devices) {
    const auto ports = PortsOf(station, device);
    fmt::print("  {:<60} {}\n", Printable(device.string()), ports.empty() ? "-" : ports);
  }
  fmt::print("Ports of this station\n");
  for (int number = 1; number <= kPortCount; ++number) {
    const auto link = PortLink(station.path(), number);
    const auto device = LinkedDevice(link);
    if (device.empty()) continue;
    fmt::print("  COM{}  {}{}\n", number, Printable(device),
               fs::exists(link, none) ? "" : "  (not there now)");
  }
}

void ConnectPort(StationFolder& station, const std::string& port, const std::string& device) {
  const int number = PortNumber(port);
  if (!IsTerminal(device))
    throw Failure(failure_number::kDeviceUnavailable,
                  fmt::format("{} is no serial device. \"ports\" shows what is there.", device));
  LinkDevice(PortLink(station.path(), number), fs::absolute(device).string());
  fmt::print("COM{} is now {}\n", number, Printable(device));
}

}  // namespace ostrel
