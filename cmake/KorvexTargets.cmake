# The few ways in which a target comes to be. Every library, program and test
# of ours is made by one of these functions, so that warnings, sanitizers and
# include paths are decided here and nowhere else.

include_guard(GLOBAL)

include(GNUInstallDirs)

add_library(korvex_flags INTERFACE)
target_compile_definitions(korvex_flags INTERFACE
  QT_NO_CAST_TO_ASCII QT_DEPRECATED_WARNINGS QT_NO_FOREACH
  QT_DISABLE_DEPRECATED_BEFORE=0x050C00)
if(MSVC)
  target_compile_options(korvex_flags INTERFACE /W4 /utf-8 /permissive- $<$<BOOL:${KORVEX_WERROR}>:/WX>)
else()
  target_compile_options(korvex_flags INTERFACE -Wall -Wextra -Wshadow -Wconversion -Wpedantic
    $<$<BOOL:${KORVEX_WERROR}>:-Werror>)
endif()
if(KORVEX_SANITIZE)
  target_compile_options(korvex_flags INTERFACE -fsanitize=${KORVEX_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(korvex_flags INTERFACE -fsanitize=${KORVEX_SANITIZE})
endif()

# What is the same for every target with sources.
function(korvex_set_properties target)
  set_target_properties(${target} PROPERTIES
    CXX_STANDARD 17 CXX_STANDARD_REQUIRED ON CXX_EXTENSIONS OFF C_STANDARD 99 AUTOMOC ON)
endfunction()

# korvex_library(<name> SOURCES ... LINKS ...)
# The static library of a folder, also known as Korvex::<name>. It finds the
# headers of its own folder and of the libraries in LINKS; no others.
function(korvex_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  add_library(Korvex::${name} ALIAS ${name})
  target_link_libraries(${name} PUBLIC ${ARG_LINKS} PRIVATE korvex_flags)
  target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
  korvex_set_properties(${name})
endfunction()

# korvex_headers(<name> FOLDER <folder>)
# Headers without sources, also known as Korvex::<name>.
function(korvex_headers name)
  cmake_parse_arguments(ARG "" "FOLDER" "" ${ARGN})
  add_library(${name} INTERFACE)
  add_library(Korvex::${name} ALIAS ${name})
  target_include_directories(${name} INTERFACE ${ARG_FOLDER})
endfunction()

# korvex_engine(<name> [WITHOUT_QT] SOURCES ... [LINKS ...])
# A library that knows bytes and values only: Qt5::Core and other engines at
# most, so that no widget, socket or port is in its reach. Its sources are
# noted for clang-tidy.
function(korvex_engine name)
  cmake_parse_arguments(ARG "WITHOUT_QT" "" "SOURCES;LINKS" ${ARGN})
  if(NOT ARG_WITHOUT_QT)
    list(PREPEND ARG_LINKS Qt5::Core)
  endif()
  korvex_library(${name} SOURCES ${ARG_SOURCES} LINKS ${ARG_LINKS})
  foreach(source ${ARG_SOURCES})
    set_property(GLOBAL APPEND PROPERTY KORVEX_ENGINE_SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/${source})
  endforeach()
endfunction()

# korvex_program(<name> SOURCES ... LINKS ...)
function(korvex_program name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LINKS} korvex_flags)
  korvex_set_properties(${name})
endfunction()

# Only with sanitizers: leaks fail a test, except those of libraries.
set(KORVEX_LEAK_CHECK "ASAN_OPTIONS=detect_leaks=1"
  "LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/leaks.supp:print_suppressions=0")

# korvex_test(<name> SOURCES ... LINKS ... [LABEL serial ...] [TIMEOUT 60] [ARGS ...])
# A QtTest program, registered with CTest and run without a display.
function(korvex_test name)
  cmake_parse_arguments(ARG "" "TIMEOUT" "LABEL;SOURCES;LINKS;ARGS" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 600) # on a busy machine; a wait of a test ends long before
  endif()
  korvex_program(${name} SOURCES ${ARG_SOURCES} LINKS ${ARG_LINKS} Korvex::test_support Qt5::Test)
  # Each test keeps its own "conf" and "tmp" beside its executable.
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests/${name})
  add_test(NAME ${name} COMMAND ${name} ${ARG_ARGS})
  set_tests_properties(${name} PROPERTIES LABELS "${ARG_LABEL}" TIMEOUT ${ARG_TIMEOUT}
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8;${KORVEX_LEAK_CHECK}")
endfunction()
