#include "seam/requests.h"

#include <functional>
#include <map>

namespace ostrel {

namespace {

std::string TextIn(const Json& question, const char* key) {
  const auto found = question.find(key);
  if (found == question.end() || !found->is_string())
    throw Failure(failure_number::kInvalidArgument,
                  std::string("The question needs \"") + key + "\", a text.");
  return *found;
}

std::int64_t NumberIn(const Json& question, const char* key, std::int64_t fallback) {
  const auto found = question.find(key);
  return found != question.end() && found->is_number_integer() ? found->get<std::int64_t>()
                                                               : fallback;
}

Priority PriorityIn(const Json& question) {
  const auto number = NumberIn(question, "priority", 0);
  if (number < 1 || number > kPriorityCount)
    throw Failure(failure_number::kInvalidArgument, "A priority is 1 to 10.");
  return Priority(static_cast<int>(number));
}

/// Takes items until they are too many for one answer; counts them all.
class Page {
 public:
  Page(const Json& question, const char* name)
      : name_(name), from_(NumberIn(question, "from", 0)) {}

  bool Wants() {
    const bool isBeyond = count_++ < from_ || bytes_ > kLongestList;
    return !isBeyond;
  }
  void Add(Json item) {
    bytes_ += item.dump(-1, ' ', true, Json::error_handler_t::replace).size();
    items_.push_back(std::move(item));
  }
  Json Answer() { return {{name_, std::move(items_)}, {"count", count_}}; }

 private:
  const char* name_;
  std::int64_t from_, count_ = 0;
  std::size_t bytes_ = 0;
  Json items_ = Json::array();
};

QueueOperations::Resend ResendIn(const Json& question) {
  const auto file = TextIn(question, "file");
  return {.file = file,
          .p = PriorityIn(question),
          .isHeld = question.value("held", false),
          .name = question.value("name", file),
          .id = NumberIn(question, "id", 0)};
}

}  // namespace

Json Seconds(std::optional<milliseconds> time) {
  if (!time) return nullptr;
  return std::chrono::duration<double>(*time).count();
}

Json ListOf(Station& station, const Json& question) {
  Page page(question, "entries");
  const auto now = station.clock().Monotonic();
  station.ForEachEntry(
      [&](Priority p, const TransmitQueue::Entry& entry, std::optional<milliseconds> outIn) {
        if (!page.Wants()) return;
        page.Add({{"priority", p.number()},
                  {"name", entry.name},
                  {"id", entry.product.id == 0 ? Json() : Json(entry.product.id)},
                  {"bytes", entry.bytes},
                  {"onAir", entry.state == TransmitQueue::State::kOnAir},
                  {"waited", Seconds(now - entry.since)},
                  {"outIn", Seconds(outIn)}});
      });
  return page.Answer();
}

Json HeldOf(Station& station, const Json& question) {
  Page page(question, "held");
  for (const auto& held : station.held().List()) {
    if (page.Wants()) page.Add({{"priority", held.p.number()}, {"name", held.name}});
  }
  return page.Answer();
}

Json LastDayOf(Station& station) {
  const auto& day = station.lastDay();
  const auto column = [&day](auto&& figure) {
    auto figures = Json::array();
    for (const auto& stretch : day.stretches())
      figures.push_back(stretch ? Json(figure(*stretch)) : Json());
    return figures;
  };
  using Stretch = LastDay::Stretch;
  return {
      {"stretch", Seconds(LastDay::kStretch)},
      {"present", Seconds(station.clock().Monotonic() - day.begun())},
      {"urgentTo", LastDay::kUrgent.number()},
      {"urgentBytes", column([](const Stretch& stretch) { return stretch.most.urgent; })},
      {"otherBytes", column([](const Stretch& stretch) { return stretch.most.others; })},
      {"arrived", column([](const Stretch& stretch) { return stretch.within.arrived; })},
      {"sent", column([](const Stretch& stretch) { return stretch.within.sent; })},
      {"offAir", column([](const Stretch& stretch) { return Seconds(stretch.within.offAir); })}};
}

Json QuarantineOf(Station& station, const Json& question) {
  Page page(question, "quarantine");
  const auto now = station.clock().UtcNow();
  for (const auto& item : station.quarantine().List()) {
    if (!page.Wants()) continue;
    const auto since = item.since ? std::optional(now - *item.since) : std::nullopt;
    page.Add({{"name", item.name()},
              {"from", item.origin},
              {"priority", item.p ? Json(item.p->number()) : Json()},
              {"reason", item.reason},
              {"for", Seconds(since)}});
  }
  return page.Answer();
}

Json DoAsAsked(Station& station, const std::string& account, const Json& question) {
  auto& operations = station.operations();
  const auto name = [&] { return TextIn(question, "name"); };
  const std::map<std::string, std::function<std::string()>> known = {
      {"hold", [&] { return operations.Hold(account, name()); }},
      {"release", [&] { return operations.Release(account, name()); }},
      {"move", [&] { return operations.Move(account, name(), PriorityIn(question)); }},
      {"top", [&] { return operations.PutFirst(account, name()); }},
      {"stop", [&] { return operations.Stop(account, question.value("name", "")); }},
      {"delete", [&] { return operations.Delete(account, name()); }},
      {"set-aside", [&] { return operations.SetAside(account, question.value("name", "")); }},
      {"restore", [&] { return operations.Restore(account, name()); }},
      {"delete-set-aside", [&] { return operations.DeleteSetAside(account, name()); }},
      {"resend", [&] { return operations.SendAgain(account, ResendIn(question)); }},
      {"pause-intake", [&] { return operations.PauseIntake(account); }},
      {"resume-intake", [&] { return operations.ResumeIntake(account); }},
  };
  const auto asked = known.find(TextIn(question, "ask"));
  if (asked == known.end()) return nullptr;
  return {{"done", asked->second()}};
}

}  // namespace ostrel
