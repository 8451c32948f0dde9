#include "programs/monitor/reception_figures.h"

#include <prometheus/metric_family.h>
#include <prometheus/text_serializer.h>
#include <vector>

namespace ostrel {

namespace {

using Json = nlohmann::ordered_json;

struct Metric {
  const char* field;  // in the figures
  const char* name;
  const char* help;
  prometheus::MetricType type;
};
constexpr auto kCounter = prometheus::MetricType::Counter;
constexpr auto kGauge = prometheus::MetricType::Gauge;
constexpr Metric kMetrics[] = {
    {"/heard", "heard_packets_total", "Packets that were sent and heard", kCounter},
    {"/lost", "lost_packets_total", "Packets that were sent and not heard whole", kCounter},
    {"/strangers", "stranger_packets_total", "Packets that nobody said were sent", kCounter},
    {"/products", "sent_products_total", "Products that were sent to their end", kCounter},
    {"/brokenProducts", "broken_products_total", "Those that nobody can have got whole", kCounter},
    {"/lastHour/lossPercent", "loss_percent", "Of the last hour", kGauge},
    {"/delay/last", "heard_delay_seconds", "From the datagram to the whole packet", kGauge},
    {"/sinceHeard", "last_heard_age_seconds", "Since a packet was heard", kGauge},
    {"/unheardFor", "unheard_seconds", "For how long nothing is heard of what is sent", kGauge},
};

Json OrNull(std::optional<double> value) {
  return value ? Json(*value) : Json();
}

Json CountsOf(const Reception& reception) {
  return {{"heard", reception.heard},
          {"lost", reception.lost},
          {"lossPercent", reception.LossPercent()}};
}

}  // namespace

Json FiguresOf(Comparison& comparison, double now) {
  const auto since = [now](std::optional<double> moment) {
    if (moment) moment = now - *moment;
    return OrNull(moment);
  };
  Json figures = CountsOf(comparison.all());
  figures["lastHour"] = CountsOf(comparison.LastHour(now));
  figures["delay"] = {{"last", OrNull(comparison.lastDelay())},
                      {"mean", OrNull(comparison.meanDelay())}};
  figures["sinceHeard"] = since(comparison.lastHeard());
  figures["unheardFor"] = since(comparison.unheardSince());
  figures["products"] = comparison.products();
  figures["brokenProducts"] = comparison.brokenProducts();
  figures["strangers"] = comparison.strangers();
  return figures;
}

std::string MetricsOf(const Json& figures) {
  std::vector<prometheus::MetricFamily> families;
  for (const auto& [field, name, help, type] : kMetrics) {
    const auto& value = figures.at(Json::json_pointer(field));
    if (value.is_null()) continue;
    prometheus::ClientMetric metric;
    metric.gauge.value = metric.counter.value = value;
    families.push_back({std::string("ostrel_monitor_") + name, help, type, {metric}});
  }
  return prometheus::TextSerializer().Serialize(families);
}

}  // namespace ostrel
