# Tables generated at build time from CSV, so that the CSV stays their only source.
#
#   fennick_csv_table(<csv> <output.inc> TARGET <target>
#                     COLUMNS <name>... [STRINGS <name>...])
#
# Each data row of <csv> becomes one C++ initializer line, "{a, "b", c},", for
# an array of aggregates: #include "<output.inc>" inside its braces. The CSV's
# header must be exactly COLUMNS. Columns listed in STRINGS come out as quoted
# strings (codes such as "007" keep their zeros); the others must be decimal
# integers. A relative <csv> is taken from the current source folder and a
# relative <output.inc> from the current build folder, which goes on the
# target's include path. A malformed row fails the build naming file and line.

function(fennick_csv_table csv output)
  cmake_parse_arguments(PARSE_ARGV 2 ARG "" "TARGET" "COLUMNS;STRINGS")
  if(ARG_UNPARSED_ARGUMENTS OR NOT ARG_TARGET OR NOT ARG_COLUMNS)
    message(FATAL_ERROR "fennick_csv_table(${csv}): expected "
      "fennick_csv_table(<csv> <output.inc> TARGET <target> COLUMNS <name>... [STRINGS <name>...])")
  endif()
  foreach(column IN LISTS ARG_COLUMNS ARG_STRINGS)
    if(NOT column MATCHES "^[A-Za-z_][A-Za-z0-9_]*$")
      message(FATAL_ERROR "fennick_csv_table(${csv}): column name '${column}' is not a plain identifier")
    endif()
  endforeach()
  foreach(column IN LISTS ARG_STRINGS)
    if(NOT column IN_LIST ARG_COLUMNS)
      message(FATAL_ERROR "fennick_csv_table(${csv}): string column '${column}' is not among COLUMNS")
    endif()
  endforeach()

  cmake_path(ABSOLUTE_PATH csv BASE_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}" NORMALIZE)
  cmake_path(ABSOLUTE_PATH output BASE_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}" NORMALIZE)
  set(script "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/CsvTableGenerate.cmake")
  # Commas, not semicolons, so that the lists survive the command line as one argument each.
  string(REPLACE ";" "," columns "${ARG_COLUMNS}")
  string(REPLACE ";" "," strings "${ARG_STRINGS}")
  cmake_path(RELATIVE_PATH output BASE_DIRECTORY "${CMAKE_BINARY_DIR}" OUTPUT_VARIABLE shown)
  add_custom_command(
    OUTPUT "${output}"
    COMMAND "${CMAKE_COMMAND}" "-DCSV=${csv}" "-DOUTPUT=${output}" "-DCOLUMNS=${columns}"
            "-DSTRINGS=${strings}" -P "${script}"
    DEPENDS "${csv}" "${script}"
    COMMENT "Generating ${shown}"
    VERBATIM)
  target_sources(${ARG_TARGET} PRIVATE "${output}")
  target_include_directories(${ARG_TARGET} PRIVATE "${CMAKE_CURRENT_BINARY_DIR}")
endfunction()
