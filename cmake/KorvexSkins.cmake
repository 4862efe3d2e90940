# The skins' style sheets and palette, of the one table of colors.

include_guard(GLOBAL)

# korvex_skins(<table> FOLDER <folder>)
# Writes into the folder css/<skin>.css for each column of the table, skins.qrc
# that lists them, and skincolors.h with the colors that widgets paint with.
function(korvex_skins table)
  cmake_parse_arguments(ARG "" "FOLDER" "" ${ARGN})
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${table})
  file(STRINGS ${table} lines REGEX "^[a-z_]+ ")
  set(names)
  set(rows)
  foreach(line ${lines})
    string(REGEX REPLACE " *//.*" "" line "${line}")
    separate_arguments(cells UNIX_COMMAND "${line}")
    list(POP_FRONT cells row)
    list(APPEND rows ${row})
    set(cells_of_${row} ${cells})
  endforeach()

  get_filename_component(source_folder ${table} DIRECTORY)
  set(files)
  set(palettes)
  list(LENGTH cells_of_name count)
  math(EXPR last "${count} - 1")
  foreach(skin RANGE ${last})
    foreach(row ${rows})
      list(GET cells_of_${row} ${skin} ${row})
    endforeach()
    configure_file(${source_folder}/skin.css.in ${ARG_FOLDER}/css/${name}.css @ONLY)
    string(APPEND files "    <file>css/${name}.css</file>\n")
    string(APPEND palettes "    {\"${name}\", \"${text}\", \"${accent}\", \"${window}\", \"${palette_border}\",\n"
      "     \"${palette_secondary}\", \"${panel}\", \"${palette_header}\", \"${palette_outline}\"},\n")
  endforeach()
  file(CONFIGURE OUTPUT ${ARG_FOLDER}/skins.qrc @ONLY CONTENT
    "<RCC>\n  <qresource prefix=\"/resources\">\n@files@  </qresource>\n</RCC>\n")
  configure_file(${source_folder}/skincolors.h.in ${ARG_FOLDER}/skincolors.h @ONLY)
endfunction()
