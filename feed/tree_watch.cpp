#include "feed/tree_watch.h"

#include <array>
#include <sys/inotify.h>

#include "base/names.h"

namespace ostrel {
namespace {

constexpr unsigned kEvents = IN_CREATE | IN_MODIFY | IN_CLOSE_WRITE | IN_MOVED_TO | IN_ONLYDIR |
                             IN_DONT_FOLLOW | IN_EXCL_UNLINK;

}  // namespace

TreeWatch::TreeWatch(Listener listener)
    : listener_(std::move(listener)), inotify_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
  if (!inotify_) return;
  notifier_ = std::make_unique<QSocketNotifier>(inotify_.Get(), QSocketNotifier::Read);
  QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(),
                   [this] { ReadEvents(); });
}

void TreeWatch::Watch(const std::string& folder) {
  const int watch = inotify_add_watch(inotify_.Get(), folder.c_str(), kEvents);
  if (watch >= 0) folders_[watch] = folder;
}

void TreeWatch::ReadEvents() {
  alignas(inotify_event) std::array<char, 64 * 1024> buffer;
  ssize_t size = 0;
  while ((size = read(inotify_.Get(), buffer.data(), buffer.size())) > 0) {
    for (const char* at = buffer.data(); at < buffer.data() + size;) {
      const auto* const event = reinterpret_cast<const inotify_event*>(at);
      at += sizeof *event + event->len;
      Handle(event->wd, event->mask, event->len > 0 ? event->name : "");
    }
  }
}

void TreeWatch::Handle(int watch, unsigned mask, const std::string& name) {
  const auto folder = folders_.find(watch);
  if ((mask & IN_Q_OVERFLOW) != 0) return listener_.newFolder();
  if (folder == folders_.end()) return;
  if ((mask & IN_IGNORED) != 0) {
    folders_.erase(folder);
    return;
  }
  const auto path = JoinPath(folder->second, name);
  if ((mask & IN_ISDIR) != 0) return listener_.newFolder();
  if ((mask & (IN_CLOSE_WRITE | IN_MOVED_TO)) != 0) return listener_.whole(path);
  listener_.writing(path);
}

}  // namespace ostrel
