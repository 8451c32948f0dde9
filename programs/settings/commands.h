// What the settings tool does, a function a command. Each prints its result and throws Failure with
// a text for the operator when it cannot do its work.
#pragma once

#include <string>
#include <vector>

#include "programs/settings/station_folder.h"

namespace ostrel {

/// Every setting with its section and its value, stored or by default.
void ListSettings(StationFolder& station);
void PrintSetting(StationFolder& station, const std::string& key);
void StoreSetting(StationFolder& station, const std::string& key, const std::string& value);

/// The whole tree as registry text, UTF-16LE as the registry editors write it.
void ExportSettings(StationFolder& station, const std::string& file);
/// All of a registry text's values for the tree or none; what was refused or left out goes to the
/// station's log as well.
void ImportSettings(StationFolder& station, const std::string& file);

/// The station as one text, to standard output.
void DumpStation(StationFolder& station);
/// What Apply does with the text that it is given.
enum class ApplyHow { kDo, kCheck };
/// Makes the station that the text in `file` names, all of it or nothing, and prints each change;
/// which is refused while the station runs; or prints what it would change.
void ApplyToStation(StationFolder& station, const std::string& file, ApplyHow how);

/// The serial devices by their lasting names, and which of COM1 to COM8 each is.
void ListPorts(StationFolder& station);
/// Makes `device` the port `port` ("COM1" to "COM8").
void ConnectPort(StationFolder& station, const std::string& port, const std::string& device);

/// What the station would do with a file of each name, and which entry decides it. "-" reads names
/// from standard input, a line each.
void RouteNames(StationFolder& station, const std::vector<std::string>& names);

}  // namespace ostrel
