// ostrel-ingest: a companion program with its window. It is called by the companion's name.
#include <QApplication>
#include <QMessageBox>
#include <cstdlib>
#include <string_view>
#include <sys/prctl.h>

#include "base/names.h"
#include "feed/companion.h"
#include "feed/feed.h"
#include "platform/linux/program_folder.h"
#include "platform/linux/sharing.h"
#include "platform/linux/standard_streams.h"
#include "programs/ingest/feed_window.h"
#include "programs/plain_arguments.h"

int main(int count, char* arguments[]) {
  using namespace ostrel;
  FillStandardStreams();
  const bool isCalledByStation = count > 1 && (arguments[1] == std::string_view(kStartWord) ||
                                               arguments[1] == std::string_view(kProbe));
  const PlainHelp help{"ostrel-ingest",
                       "Brings products to the station of its folder, and shows it."};
  if (!isCalledByStation) {
    if (const auto status = AnswerArguments(help, count, arguments)) return *status;
  }
  std::string title(FileNameOf(arguments[0]));
  if (KindsOf(title) == SourceKinds::kAll) title = kOtherCompanion;
  prctl(PR_SET_NAME, title.c_str());  // the station looks for a process of that name, too
  QApplication application(count, arguments);
  if (count > 1 && std::string_view(arguments[1]) == kProbe) return EXIT_SUCCESS;
  const auto station = ProgramFolder();
  ShareWithGroupOf(station);
  FeedWindow window(QString::fromStdString(title));
  window.show();
  try {
    Feed feed(station, KindsOf(title), false);
    feed.Start();
    window.Follow(feed);
    QApplication::exec();
  } catch (const std::exception& error) {
    window.ShowFailure(error.what());
    QApplication::exec();
    return EXIT_FAILURE;
  }
  // What must not be lost is on the disk; a try to reach a broker is not waited for.
  std::_Exit(EXIT_SUCCESS);
}
