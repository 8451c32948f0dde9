# Reads what most sources include once, by the kind of source: half the time of a whole build.

set(common <algorithm> <chrono> <functional> <map> <memory> <optional> <string> <string_view>
    <utility> <vector> <fmt/format.h>)

# The common headers and HEADERS, made by the first of the targets and used by all of them.
function(precompile owner)
  cmake_parse_arguments(ARG "" "" "HEADERS;FOR" ${ARGN})
  target_precompile_headers(${owner} PRIVATE ${common} ${ARG_HEADERS})
  foreach(other ${ARG_FOR})
    target_precompile_headers(${other} REUSE_FROM ${owner})
  endforeach()
endfunction()

precompile(ostrel_base
           FOR ostrel_state ostrel_platform ostrel_intake ostrel_radio ostrel_ident ostrel_engine
               ostrel_settings ostrel_station ostrel_profile ostrel_client ostrel_receive
               ostrel_platform_linux ostrel_platform_virtual ostrel-settings)
precompile(ostrel_seam HEADERS <nlohmann/json.hpp>
           FOR ostrel-monitor ostrel-queue ostrel-repeat ostrel-status ostrel-watch)
precompile(ostrel_platform_qt HEADERS <QObject> <QString> FOR ostrel_feed ostrel_platform_x11)
precompile(ostrel_ui
           HEADERS <QApplication> <QBoxLayout> <QCheckBox> <QGridLayout> <QLabel> <QLineEdit>
                   <QPointer> <QPushButton> <QTableWidget> <QToolTip>
           FOR ostrel ostrel-ingest)
