# QCustomPlot 2 for Qt 5, where its own CMake files are missing: some systems and
# builds of one's own install the header and the library alone.
#   QCustomPlot::QCustomPlot   what to link
find_package(QCustomPlot CONFIG QUIET)
if(TARGET QCustomPlot::QCustomPlot)
  set(QCustomPlot_FOUND TRUE)
  return()
endif()

find_path(QCustomPlot_INCLUDE_DIR qcustomplot.h PATH_SUFFIXES qcustomplot)
find_library(QCustomPlot_LIBRARY NAMES QCustomPlot qcustomplot qcustomplot-qt5 qcustomplot2)
if(QCustomPlot_INCLUDE_DIR)
  file(STRINGS ${QCustomPlot_INCLUDE_DIR}/qcustomplot.h QCustomPlot_VERSION
    REGEX "^#define QCUSTOMPLOT_VERSION_STR ")
  string(REGEX REPLACE ".*\"(.*)\".*" "\\1" QCustomPlot_VERSION "${QCustomPlot_VERSION}")
endif()
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(QCustomPlot
  REQUIRED_VARS QCustomPlot_LIBRARY QCustomPlot_INCLUDE_DIR VERSION_VAR QCustomPlot_VERSION)
mark_as_advanced(QCustomPlot_INCLUDE_DIR QCustomPlot_LIBRARY)

if(QCustomPlot_FOUND)
  find_package(Qt5 REQUIRED COMPONENTS Widgets PrintSupport)
  add_library(QCustomPlot::QCustomPlot UNKNOWN IMPORTED)
  set_target_properties(QCustomPlot::QCustomPlot PROPERTIES
    IMPORTED_LOCATION ${QCustomPlot_LIBRARY}
    INTERFACE_INCLUDE_DIRECTORIES ${QCustomPlot_INCLUDE_DIR}
    INTERFACE_LINK_LIBRARIES "Qt5::Widgets;Qt5::PrintSupport")
endif()
