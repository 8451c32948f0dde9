// The status of a station as a retained message on an MQTT broker, with a last will: the broker
// tells at once that a station is gone.
#pragma once

#include <string>

namespace ostrel {

/// Publishes the station in `folder` to "mqtt[s]://[USER:PASSWORD@]HOST[:PORT]/TOPIC" until the
/// program ends, every ten seconds. A broker that is not there is waited for. Throws
/// std::runtime_error for an address that is none.
void Publish(const std::string& folder, const std::string& address);

}  // namespace ostrel
