// What waits, what was sent, and what to do about it: the operator's hand on the queues of a
// running station.
#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdlib>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "base/text.h"
#include "platform/linux/program_folder.h"
#include "platform/linux/sharing.h"
#include "programs/command_line.h"
#include "programs/queue/moment.h"
#include "programs/queue/operations.h"
#include "programs/queue/reports.h"

namespace {

using namespace ostrel;
using Json = nlohmann::ordered_json;

struct Options {
  std::string station = ProgramFolder();
  std::string name, since, until, from, restored, deleted;
  std::optional<int> priority;
  bool json = false, csv = false;
};

void Say(const std::string& message) {
  fmt::print("{}\n", Printable(message));
}

void List(const Options& options) {
  const Json status = Ask(options.station, {{"ask", "status"}});
  const Json lists = {{"station", status.value("name", "")},
                      {"entries", AskForAll(options.station, "list", "entries")},
                      {"held", AskForAll(options.station, "held", "held")},
                      {"intakePaused", status["intakePaused"]}};
  fmt::print("{}", options.json ? JsonLines(lists) : QueueTable(lists));
}

void Quarantine(const Options& options) {
  for (const auto& [name, operation] :
       {std::pair(options.restored, "restore"), {options.deleted, "delete-set-aside"}}) {
    if (!name.empty())
      return Say(Ask(options.station, {{"ask", operation}, {"name", name}})["done"]);
  }
  const auto items = AskForAll(options.station, "quarantine", "quarantine");
  fmt::print("{}", options.json ? JsonLines(items) : QuarantineTable(items));
}

PastFilter FilterOf(const Options& options) {
  const auto now = std::chrono::floor<milliseconds>(std::chrono::system_clock::now());
  PastFilter filter{.pattern = options.name, .since = {}, .until = {}};
  if (!options.since.empty()) filter.since = MomentIn(options.since, now, Which::kFirst);
  if (!options.until.empty()) filter.until = MomentIn(options.until, now, Which::kLast);
  if (filter.since && filter.until && *filter.until < *filter.since)
    throw std::runtime_error("--until is before --since. A time of day is the last that was.");
  return filter;
}

/// What is written is there at once, however rarely something comes.
void Write(const std::string& text) {
  fmt::print("{}", text);
  if (std::fflush(stdout) != 0) throw std::runtime_error("Standard output takes no more.");
}

void ShowHistory(const Options& options) {
  const auto filter = FilterOf(options);
  const auto path = options.from.empty() ? HistoryPath(options.station) : options.from;
  std::signal(SIGPIPE, SIG_DFL);  // whoever has read enough hangs up
  using Form = HistoryText::Form;
  HistoryText text(options.json ? Form::kJson : options.csv ? Form::kCsv : Form::kTable);
  const int holes =
      PastProducts(path).Find(filter, [&](const auto& part) { Write(text.Of(part)); });
  Write(text.End());
  if (holes > 0)
    fmt::print(stderr, "{} is damaged. What can be read of it stands above; {} gaps.\n",
               Printable(path), holes);
}

void Do(const Options& options, const std::string& operation) {
  Json question = {{"ask", operation}, {"name", options.name}};
  if (options.priority) question["priority"] = *options.priority;
  try {
    Say(Ask(options.station, question)["done"]);
  } catch (const std::exception& error) {
    if (options.name.find_first_of("*?") == std::string::npos) throw;
    throw std::runtime_error(fmt::format("{} Patterns are not taken here.", error.what()));
  }
}

/// What must be named.
CLI::Option* AddName(CLI::App* operation, Options& options, const std::string& called,
                     const std::string& what) {
  return operation->add_option(called, options.name, what)
      ->required()
      ->check([](const std::string& name) { return name.empty() ? "Name a file." : ""; }, "");
}
CLI::Option* AddPriority(CLI::App* operation, Options& options, const std::string& what) {
  return operation->add_option("--priority", options.priority, what)->check(CLI::Range(1, 10));
}

/// An operation on one name; its subcommand.
CLI::App* AddOperation(CLI::App& app, Options& options, const std::string& name,
                       const std::string& does) {
  auto* const operation = app.add_subcommand(name, does);
  AddName(operation, options, "NAME", "As the list has it; patterns are not taken");
  operation->callback([&options, name] { Do(options, name); });
  return operation;
}

void AddListsTo(CLI::App& app, Options& options) {
  auto* const list = app.add_subcommand("list", "What waits, and when it will be out");
  list->add_flag("--json", options.json, "For programs");
  list->callback([&] { List(options); });

  auto* const quarantine = app.add_subcommand("quarantine", "What was set aside, and why");
  auto* const restored = quarantine->add_option("--restore", options.restored,
                                                "Puts it back where it was: a name as listed");
  quarantine->add_option("--delete", options.deleted, "Deletes it")->excludes(restored);
  quarantine->add_flag("--json", options.json, "For programs");
  quarantine->callback([&] { Quarantine(options); });

  auto* const history = app.add_subcommand("history", "What became of each product");
  history->add_option("PATTERN", options.name, "Of names, as in a rule");
  history->add_option("--since", options.since,
                      "\"2026-11-26 14:30\", \"14:30\", \"yesterday\" or \"12h\" ago");
  history->add_option("--until", options.until, "The same");
  history->add_option("--from", options.from, "Another history, one that was damaged perhaps")
      ->type_name("FILE");
  auto* const csv = history->add_flag("--csv", options.csv, "For a spreadsheet");
  history->add_flag("--json", options.json, "For programs")->excludes(csv);
  history->callback([&] { ShowHistory(options); });
}

void AddOperationsTo(CLI::App& app, Options& options) {
  auto* const resend = app.add_subcommand("resend", "Sends a product again");
  AddName(resend, options, "PRODUCT", "Its id in the history, or its name");
  AddPriority(resend, options, "The queue it goes into, unless that of last time; 1 is sent first");
  resend->callback([&] { Say(Resend(options.station, options.name, options.priority)); });
  AddOperation(app, options, "hold", "Takes a file out of its queue until it is released");
  AddOperation(app, options, "release", "Puts a held file back into its queue");
  auto* const move = AddOperation(app, options, "move", "Puts a file into another queue");
  AddPriority(move, options, "The queue it goes into; 1 is sent first")->required();
  AddOperation(app, options, "top", "Puts a file in front of its queue");
  AddOperation(app, options, "delete", "Deletes a file that waits or is held");
  auto* const stop = app.add_subcommand("stop", "Ends the file on the air at its next block");
  stop->add_option("NAME", options.name, "Which, where several are interrupted");
  stop->callback([&] { Do(options, "stop"); });
  auto* const setAside = app.add_subcommand(
      "set-aside", "Moves a file that holds others up, outside the queues, to the quarantine");
  setAside->add_option("NAME", options.name,
                       "Which; unless given, the one that has been kept from going on the longest");
  setAside->callback([&] { Do(options, "set-aside"); });
  for (const auto& [name, does] :
       {std::pair("pause-intake", "Leaves received files where they are"),
        {"resume-intake", "Takes received files again"}}) {
    app.add_subcommand(name, does)->callback([&options, name = name] { Do(options, name); });
  }
}

}  // namespace

int main(int count, char* arguments[]) {
  std::signal(SIGPIPE, SIG_IGN);
  Options options;
  CLI::App app("Shows and changes the queues of a station, and tells what it has sent.");
  app.add_option("--station", options.station, "The station's folder")->capture_default_str();
  app.require_subcommand(1);
  app.parse_complete_callback([&] { ShareWithGroupOf(options.station); });
  AddListsTo(app, options);
  AddOperationsTo(app, options);
  Describe(app, "ostrel-queue", "ostrel-queue resend TORDMXIA.TXT --priority 1");
  try {
    return Parse(app, count, arguments).value_or(EXIT_SUCCESS);
  } catch (const std::exception& error) {
    fmt::print(stderr, "ostrel-queue: {}\n", Printable(error.what()));
    return EXIT_FAILURE;
  }
}
