// Files that waited too long, by the time of their last write.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/files.h"
#include "state/setup_fields.h"

namespace ostrel {

/// The purge age: the number at the start of the field, in hours. Zero, as of a negative number,
/// purges nothing.
milliseconds PurgeAge(const SetupFields& setup);

/// Deletes the files of `folder` that were last written before `limit` and returns their names. A
/// file that cannot be deleted now stays until the next time, and so does one for which `isInUse`
/// is true. Throws Failure when the folder cannot be listed.
std::vector<std::string> DeleteOlder(
    Files& files, const std::string& folder, UtcTime limit,
    const std::function<bool(const std::string& name)>& isInUse = {});

}  // namespace ostrel
