#include "programs/queue/reports.h"

#include <array>
#include <ctime>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <utility>

#include "base/names.h"
#include "base/text.h"

namespace ostrel {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::array kHeadings = {"id",         "name",    "sent_as",     "priority",   "size",
                                  "sha256",     "arrived", "first_block", "last_block", "ended",
                                  "times_sent", "fate",    "archive",     "resend_of"};

std::tm LocalParts(UtcTime time) {
  const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
  std::tm parts{};
  localtime_r(&seconds, &parts);
  return parts;
}

std::string Local(const std::optional<UtcTime>& time) {
  return time ? fmt::format("{:%Y-%m-%d %H:%M:%S}", LocalParts(*time)) : "";
}

Json Utc(const std::optional<UtcTime>& time) {
  if (!time) return nullptr;
  const std::time_t seconds = std::chrono::system_clock::to_time_t(*time);
  return fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", fmt::gmtime(seconds));
}

Json OrNull(const std::optional<std::int64_t>& number) {
  return number ? Json(*number) : Json();
}

Json ValuesOf(const PastProduct& product) {
  return {product.id,
          product.name,
          product.sentAs,
          OrNull(product.priority),
          OrNull(product.size),
          product.hash,
          Utc(product.arrived),
          Utc(product.firstBlock),
          Utc(product.lastBlock),
          Utc(product.ended),
          product.timesSent,
          product.fate,
          OrNull(product.archive),
          OrNull(product.resendOf)};
}

std::string Quoted(const std::string& text) {
  auto printable = Printable(text);
  if (printable.find_first_of(",\"") == std::string::npos) return printable;
  std::string quoted = "\"";
  for (const char c : printable) quoted.append(c == '"' ? 2 : 1, c);
  return quoted + '"';
}

std::string Cell(const Json& value) {
  if (value.is_null()) return "";
  return value.is_string() ? Quoted(value.get<std::string>()) : value.dump();
}

std::string Spell(const Json& time) {
  return time.is_null() ? "" : SpellDuration(std::chrono::duration<double>(time.get<double>()));
}

/// The time of day at which that will have passed.
std::string Clock(const Json& wait) {
  if (wait.is_null()) return "";
  const auto at =
      std::chrono::system_clock::now() +
      std::chrono::round<milliseconds>(std::chrono::duration<double>(wait.get<double>()));
  return fmt::format("{:%H:%M:%S}", LocalParts(std::chrono::floor<milliseconds>(at)));
}

std::string Row(const std::vector<std::string>& cells, std::string_view separator) {
  return fmt::format("{}\n", fmt::join(cells, separator));
}

constexpr auto* kHistoryForm = "{:>8}  {:<19}  {:<24} {:>8} {:>9}  {:<12} {:<19}  {:<19} {:>5}\n";

std::string TableRow(const PastProduct& product) {
  auto fate = Printable(product.fate);
  if (product.archive) fate += fmt::format(" in {}", *product.archive);
  if (product.resendOf) fate += fmt::format(", again {}", *product.resendOf);
  return fmt::format(kHistoryForm, product.id, Local(product.arrived), Printable(product.name),
                     Cell(OrNull(product.priority)), Cell(OrNull(product.size)), fate,
                     Local(product.firstBlock), Local(product.lastBlock), product.timesSent);
}

std::string CsvRow(const PastProduct& product) {
  std::vector<std::string> cells;
  for (const auto& value : ValuesOf(product)) cells.push_back(Cell(value));
  return Row(cells, ",");
}

std::string JsonRow(const PastProduct& product) {
  const auto values = ValuesOf(product);
  Json row;
  for (std::size_t i = 0; i < kHeadings.size(); ++i) row[kHeadings[i]] = values[i];
  return row.dump(-1, ' ', true, Json::error_handler_t::replace);
}

}  // namespace

std::string JsonLines(const Json& value) {
  return value.dump(2, ' ', true, Json::error_handler_t::replace) + "\n";
}

std::string QueueTable(const Json& lists) {
  auto table = fmt::format("Station {}\n", Printable(lists["station"].get<std::string>()));
  table += fmt::format("{:>8}  {:<24} {:>10} {:>12} {:>12}  {:<8} {:>8}\n", "Priority", "Name",
                       "Bytes", "Waited", "Out in", "At", "Id");
  for (const auto& entry : lists["entries"])
    table += fmt::format("{:>8}{} {:<24} {:>10} {:>12} {:>12}  {:<8} {:>8}\n",
                         entry["priority"].get<int>(), entry["onAir"].get<bool>() ? '*' : ' ',
                         Printable(entry["name"].get<std::string>()),
                         entry["bytes"].get<std::int64_t>(), Spell(entry["waited"]),
                         Spell(entry["outIn"]), Clock(entry["outIn"]), Cell(entry["id"]));
  for (const auto& file : lists["held"])
    table += fmt::format("{:>8}  {:<24} held\n", file["priority"].get<int>(),
                         Printable(file["name"].get<std::string>()));
  if (lists["intakePaused"].get<bool>())
    table += "The intake is paused: received files stay in their folder.\n";
  return table;
}

std::string QuarantineTable(const Json& items) {
  constexpr auto* kForm = "{:<24} {:>12}  {:<10} {}\n";
  auto table = fmt::format(kForm, "Name", "Set aside", "From", "Reason");
  for (const auto& item : items) {
    const std::string from = item["from"];
    table += fmt::format(kForm, Printable(item["name"].get<std::string>()), Spell(item["for"]),
                         Printable(FileNameOf(FolderOf(from))),
                         Printable(item["reason"].get<std::string>()));
  }
  return table;
}

std::string HistoryText::Begin() {
  if (std::exchange(isBegun_, true)) return "";
  if (form_ == Form::kCsv) return Row({kHeadings.begin(), kHeadings.end()}, ",");
  if (form_ == Form::kJson) return "[";
  return fmt::format(kHistoryForm, "Id", "Arrived", "Name", "Priority", "Bytes", "Became",
                     "First block", "Last block", "Sent");
}

std::string HistoryText::Of(const std::vector<PastProduct>& part) {
  auto text = Begin();
  for (const auto& product : part) {
    if (form_ == Form::kTable) text += TableRow(product);
    if (form_ == Form::kCsv) text += CsvRow(product);
    if (form_ == Form::kJson) text += (text.ends_with('[') ? "\n" : ",\n") + JsonRow(product);
  }
  return text;
}

std::string HistoryText::End() {
  return Begin() + (form_ == Form::kJson ? "\n]\n" : "");
}

}  // namespace ostrel
