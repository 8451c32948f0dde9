// The system's error numbers in the station's terms: failures with the numbers that its logic
// knows, and the codes of a whole-file copy.
#pragma once

#include <string>

namespace ostrel {

/// Throws the failure for `error` without a file it is about.
[[noreturn]] void ThrowSystemFailure(int error);

/// Throws the failure for `error` on `path`: what is missing may be the file or its folder.
[[noreturn]] void ThrowFileFailure(int error, const std::string& path);

/// The copy code for an error on the source side or on the destination side.
int SourceCopyCode(int error);
int DestinationCopyCode(int error);

}  // namespace ostrel
