// The ports of a station: links in its folder that lead to the devices.
#pragma once

#include <string>

#include "platform/serial_port.h"

namespace ostrel {

/// The link that makes a device port `number` of the station in `folder`.
std::string PortLink(const std::string& folder, int number);

/// Where the link leads, there or not; empty when there is none.
std::string LinkedDevice(const std::string& link);
/// Points it to `device`, in one step; to none when that is empty. Throws
/// std::filesystem::filesystem_error.
void LinkDevice(const std::string& link, const std::string& device);

}  // namespace ostrel
