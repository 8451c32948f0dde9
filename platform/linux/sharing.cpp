#include "platform/linux/sharing.h"

#include <sys/stat.h>

namespace ostrel {

void ShareWithGroupOf(const std::string& folder) {
  struct stat status;
  const bool isShared = stat(folder.c_str(), &status) == 0 && (status.st_mode & S_IWGRP) != 0;
  const mode_t operators = umask(S_IRWXG | S_IRWXO);
  umask((isShared ? operators & S_IRWXO : operators) | S_IWOTH);
}

}  // namespace ostrel
