# korvex_copy_libraries(EXECUTABLES ... INSTALLED ... MODULES ... FOLDERS ... STRIP tool DESTINATION folder)
# Copies to DESTINATION every library that the executables, the INSTALLED
# libraries and the MODULES load, directly or not, and that Windows does not
# have. Names of libraries have no case on Windows, but file names do where the
# package is cross-built. The compiler's run-time libraries are stripped: their
# debugging symbols are half of a package.
function(korvex_copy_libraries)
  cmake_parse_arguments(ARG "" "STRIP;DESTINATION" "EXECUTABLES;INSTALLED;MODULES;FOLDERS" ${ARGN})
  string(TOLOWER "${ARG_INSTALLED}" installed)
  set(found) # under names in another case
  while(TRUE)
    file(GET_RUNTIME_DEPENDENCIES
      EXECUTABLES ${ARG_EXECUTABLES}
      LIBRARIES ${ARG_INSTALLED} ${found}
      MODULES ${ARG_MODULES}
      DIRECTORIES ${ARG_FOLDERS}
      PRE_EXCLUDE_REGEXES "^(api|ext)-ms-.*"
      POST_EXCLUDE_REGEXES ".*[/\\\\][Ss]ystem32[/\\\\].*"
      RESOLVED_DEPENDENCIES_VAR libraries
      UNRESOLVED_DEPENDENCIES_VAR unresolved)
    set(more)
    string(TOLOWER "${found}" found_names)
    foreach(name ${unresolved})
      string(TOLOWER "${name}" name)
      string(FIND "${installed};" "/${name};" is_installed)
      string(FIND "${found_names};" "/${name};" is_found)
      if(NOT is_installed EQUAL -1 OR NOT is_found EQUAL -1)
        continue()
      endif()
      korvex_find_library(path "${name}" "${ARG_FOLDERS}")
      if(path)
        list(APPEND more "${path}")
      elseif(name MATCHES "^(qt5|lib|qcustomplot)")
        # The others are Windows' own, which a machine that cross-builds lacks.
        message(FATAL_ERROR "The package would lack ${name}; name its folder in KORVEX_LIBRARY_FOLDERS.")
      endif()
    endforeach()
    if(NOT more)
      break()
    endif()
    list(APPEND found ${more})
  endwhile()

  file(INSTALL DESTINATION "${ARG_DESTINATION}" TYPE SHARED_LIBRARY FILES ${libraries} ${found})
  foreach(library ${libraries} ${found})
    get_filename_component(name "${library}" NAME)
    if(ARG_STRIP AND name MATCHES "^lib(gcc|stdc|winpthread)")
      execute_process(COMMAND "${ARG_STRIP}" --strip-unneeded "$ENV{DESTDIR}${ARG_DESTINATION}/${name}"
        COMMAND_ERROR_IS_FATAL ANY)
    endif()
  endforeach()
endfunction()

# The file of that name (in lower case) in one of the folders; empty where there
# is none.
function(korvex_find_library result name folders)
  set(${result} "" PARENT_SCOPE)
  foreach(folder ${folders})
    file(GLOB files "${folder}/*.[Dd][Ll][Ll]")
    foreach(file ${files})
      get_filename_component(file_name "${file}" NAME)
      string(TOLOWER "${file_name}" file_name)
      if(file_name STREQUAL name)
        set(${result} "${file}" PARENT_SCOPE)
        return()
      endif()
    endforeach()
  endforeach()
endfunction()
