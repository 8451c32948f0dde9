// The settings of a station from the command line: its values, their export and import, its serial
// devices, and a trial of its rules.
#include <CLI/CLI.hpp>
#include <filesystem>
#include <fmt/format.h>
#include <functional>

#include "base/failure.h"
#include "base/text.h"
#include "platform/linux/program_folder.h"
#include "platform/linux/sharing.h"
#include "programs/command_line.h"
#include "programs/settings/commands.h"

namespace {

using Command = std::function<void(ostrel::StationFolder&)>;

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Settings, ports and rules of an Ostrel station.");
  app.require_subcommand(1);
  std::string folder = ostrel::ProgramFolder();
  std::string key, value, file, port, device;
  std::vector<std::string> names;
  Command command;
  const auto add = [&](const char* name, const char* help, Command run) {
    auto* sub = app.add_subcommand(name, help);
    sub->callback([&command, run = std::move(run)] { command = run; });
    return sub;
  };

  app.add_option("--station", folder, "The station's folder; by default the one of this program");
  add("list", "Every setting with its value", ostrel::ListSettings);
  add("get", "The value of one setting", [&](auto& s) { ostrel::PrintSetting(s, key); })
      ->add_option("KEY", key)
      ->required();
  auto* set = add("set",
                  "Store the value of one setting; a running station takes it up at its next "
                  "start",
                  [&](auto& s) { ostrel::StoreSetting(s, key, value); });
  set->add_option("KEY", key)->required();
  set->add_option("VALUE", value)->required();
  add("export", "Write all settings to a registry text file",
      [&](auto& s) { ostrel::ExportSettings(s, file); })
      ->add_option("FILE", file)
      ->required();
  add("import", "Take all settings of a registry text file, or none",
      [&](auto& s) { ostrel::ImportSettings(s, file); })
      ->add_option("FILE", file)
      ->required();
  add("dump", "The whole station as a text: settings, rules, schedule, ports, Morse table",
      ostrel::DumpStation);
  bool onlyCheck = false;
  auto* apply = add("apply", "Make the station of such a text, or nothing of it", [&](auto& s) {
    ostrel::ApplyToStation(s, file, onlyCheck ? ostrel::ApplyHow::kCheck : ostrel::ApplyHow::kDo);
  });
  apply->add_option("FILE", file)->required();
  apply->add_flag("--check", onlyCheck, "Say what would change, and change nothing");
  add("ports", "The serial devices, and which are COM1 to COM8", ostrel::ListPorts);
  auto* connect = add("connect", "Make a serial device one of the ports COM1 to COM8",
                      [&](auto& s) { ostrel::ConnectPort(s, port, device); });
  connect->add_option("PORT", port)->required();
  connect->add_option("DEVICE", device)->required();
  add("route", "What the rules do with files of these names; - reads names from standard input",
      [&](auto& s) { ostrel::RouteNames(s, names); })
      ->add_option("NAME", names)
      ->required();

  ostrel::Describe(app, "ostrel-settings",
                   "ostrel-settings connect COM1 /dev/serial/by-id/usb-FTDI-port0");
  if (const auto status = ostrel::Parse(app, argc, argv)) return *status;
  ostrel::ShareWithGroupOf(folder);
  try {
    ostrel::StationFolder station(std::filesystem::weakly_canonical(folder).string());
    command(station);
    return 0;
  } catch (const std::exception& error) {
    fmt::print(stderr, "ostrel-settings: {}\n", ostrel::Printable(error.what()));
    return 1;
  }
}
