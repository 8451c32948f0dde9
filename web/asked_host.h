// Whom a browser means: a page of strangers that gives its own name this computer's address must
// not read what the station says.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// True where `host`, the Host of a request, is an address, this computer itself ("localhost"), or
/// one of `names`, in any case; each with or without a port. So is a request without one.
bool IsMeant(std::string_view host, const std::vector<std::string>& names);

}  // namespace ostrel
