#include "bulletin/event_code.h"

#include "bulletin/codes.h"
#include "bulletin/dates.h"
#include "bulletin/letters.h"

namespace ostrel {
namespace {

/// A code's form: A an upper-case letter, # a digit, * either, anything else itself. Times are
/// checked where they are read.
bool HasForm(std::string_view text, std::string_view form) {
  if (text.size() < form.size()) return false;
  for (std::size_t i = 0; i < form.size(); ++i) {
    const char c = text[i];
    const bool fits = form[i] == 'A'   ? IsUpper(c)
                      : form[i] == '#' ? IsDigit(c)
                      : form[i] == '*' ? IsUpperOrDigit(c)
                                       : c == form[i];
    if (!fits) return false;
  }
  return true;
}

constexpr std::size_t kTime = 12;  // "180719T2054Z"

/// Nothing for zeros; nothing and false in `isWhole` for a time that is none.
std::optional<UtcTime> ReadTime(std::string_view text, bool& isWhole) {
  if (text == "000000T0000Z") return std::nullopt;
  const auto part = [&](std::size_t at) { return WholeNumber(text.substr(at, 2)).value_or(-1); };
  const auto moment = MomentOf(2000 + part(0), part(2), part(4), part(7), part(9));
  isWhole = isWhole && moment.has_value();
  return moment;
}

}  // namespace

std::optional<Event> TakeEventCode(std::string_view& text) {
  constexpr std::string_view kForm = "/A.AAA.A***.AA.A.####.######T####Z-######T####Z/";
  if (!HasForm(text, kForm)) return std::nullopt;
  const auto field = [&](std::size_t at, std::size_t size) {
    return std::string(text.substr(at, size));
  };
  Event event{.action = field(3, 3),
              .office = field(7, 4),
              .phenomenon = field(12, 2),
              .significance = field(15, 1),
              .number = WholeNumber(text.substr(17, 4)),
              .begins = std::nullopt,
              .ends = std::nullopt,
              .isTest = text[1] == 'T'};
  if (std::string_view("OTEX").find(text[1]) == std::string_view::npos ||
      !MeaningOf(CodeTable::kAction, event.action) ||
      !MeaningOf(CodeTable::kSignificance, event.significance))
    return std::nullopt;
  event.begins = ReadTime(text.substr(22, kTime), event.isWhole);
  event.ends = ReadTime(text.substr(35, kTime), event.isWhole);
  text.remove_prefix(kForm.size());
  return event;
}

std::optional<Flood> TakeFloodCode(std::string_view& text) {
  constexpr std::string_view kForm = "/*****.*.AA.######T####Z.######T####Z.######T####Z.AA/";
  if (!HasForm(text, kForm) || std::string_view("N0123U").find(text[7]) == std::string_view::npos)
    return std::nullopt;
  bool isWhole = true;
  Flood flood{.gauge = std::string(text.substr(1, 5)),
              .severity = text[7],
              .cause = std::string(text.substr(9, 2)),
              .record = std::string(text.substr(51, 2)),
              .rises = ReadTime(text.substr(12, kTime), isWhole),
              .crests = ReadTime(text.substr(25, kTime), isWhole),
              .falls = ReadTime(text.substr(38, kTime), isWhole)};
  if (!isWhole) return std::nullopt;
  text.remove_prefix(kForm.size());
  return flood;
}

}  // namespace ostrel
