// Stands between a test and the calls of the system, its own and those of the libraries that it
// uses: files, sockets, terminals. A test can look on, fail one, do something right before one, and
// let time pass faster.
#pragma once

#include <functional>
#include <string_view>

namespace call_shim {

/// Comes before each call, in the thread that makes it; `path` is empty where the call names none.
/// The call fails with the error that this returns, and is made when that is 0. Calls that it makes
/// itself do not come.
using Watcher = std::function<int(std::string_view call, std::string_view path)>;

/// One at a time; none when empty. To be called while no other thread calls the system.
void Watch(Watcher watcher);

/// From here on the monotonic clock goes so many times as fast as it does, and so do all waits. It
/// never jumps: 1 lets it go on as it does from the time that it shows.
void SpeedUp(int times);

}  // namespace call_shim
