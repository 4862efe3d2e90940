# Copies what the executable needs into the package: Qt's plugins, and every
# library that they and the executable load and that Windows does not have. Works
# the same for MSVC and MinGW, and when cross-building, where Qt's own tool for it
# cannot be had.

set(KORVEX_LIBRARY_FOLDERS "" CACHE STRING "Further folders with libraries (*.dll) that the package needs")

set(plugins)
macro(korvex_plugin target folder)
  if(NOT TARGET Qt5::${target})
    message(FATAL_ERROR "This Qt has no plugin ${target}, without which the program does not run on Windows.")
  endif()
  get_target_property(plugin Qt5::${target} IMPORTED_LOCATION_RELEASE)
  install(FILES ${plugin} DESTINATION ${folder} ${portable})
  list(APPEND plugins ${plugin})
endmacro()
korvex_plugin(QWindowsIntegrationPlugin platforms)
korvex_plugin(QWindowsVistaStylePlugin styles)
korvex_plugin(QJpegPlugin imageformats)

# Qt's libraries by name: the search below looks for names in lower case, which
# are other names on a machine that cross-builds.
set(qt_libraries)
foreach(module Core Gui Widgets Network SerialPort PrintSupport)
  get_target_property(library Qt5::${module} IMPORTED_LOCATION_RELEASE)
  if(library MATCHES "\\.dll$")
    list(APPEND qt_libraries ${library})
  endif()
endforeach()
install(FILES ${qt_libraries} DESTINATION . ${portable})

get_target_property(qt_core Qt5::Core IMPORTED_LOCATION_RELEASE)
get_filename_component(qt_folder ${qt_core} DIRECTORY)
set(library_folders ${qt_folder} ${KORVEX_LIBRARY_FOLDERS})
if(MINGW)
  # The compiler's own run-time libraries.
  foreach(library libstdc++-6.dll libwinpthread-1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${library}
      OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
    get_filename_component(folder ${path} DIRECTORY)
    list(APPEND library_folders ${folder})
  endforeach()
endif()

# QCustomPlot may be linked statically, or lie in a folder of its own.
get_target_property(plot_library QCustomPlot::QCustomPlot IMPORTED_LOCATION)
if(NOT plot_library)
  get_target_property(plot_library QCustomPlot::QCustomPlot IMPORTED_LOCATION_RELEASE)
endif()
if(plot_library MATCHES "\\.dll$")
  get_filename_component(folder ${plot_library} DIRECTORY)
  list(APPEND library_folders ${folder})
endif()

if(MINGW)
  set(strip ${CMAKE_STRIP})
  install(CODE "
    set(CMAKE_GET_RUNTIME_DEPENDENCIES_PLATFORM windows+pe)
    set(CMAKE_GET_RUNTIME_DEPENDENCIES_TOOL objdump)
    set(CMAKE_GET_RUNTIME_DEPENDENCIES_COMMAND ${CMAKE_OBJDUMP})" ${portable})
endif()
install(CODE "
  include(\"${CMAKE_CURRENT_LIST_DIR}/copylibraries.cmake\")
  korvex_copy_libraries(
    EXECUTABLES \"\$<TARGET_FILE:Korvex>\"
    INSTALLED ${qt_libraries}
    MODULES ${plugins}
    FOLDERS ${library_folders}
    STRIP \"${strip}\"
    DESTINATION \"\${CMAKE_INSTALL_PREFIX}\")" ${portable})
