# Installs a build into a staging prefix and uses it as outside projects do:
# a C++ program through find_package(Fennick), a C host through pkg-config.
# HOME and the XDG folders point into the scratch folder, so nothing outside
# it is touched.
#
#   cmake -DBUILD_DIR=... -DWORK_DIR=... -DBINDIR=bin -DLIBDIR=lib -DINCLUDEDIR=include
#         -DMANDIR=share/man -DGENERATOR=Ninja -DCXX_COMPILER=... -DC_COMPILER=...
#         [-DSANITIZE_FLAGS=...] [-DCONFIG=...] -P check_install.cmake
cmake_minimum_required(VERSION 3.25)

foreach(variable BUILD_DIR WORK_DIR BINDIR LIBDIR INCLUDEDIR MANDIR GENERATOR CXX_COMPILER C_COMPILER)
  if(NOT DEFINED ${variable})
    message(FATAL_ERROR "check_install: -D${variable}=... is missing")
  endif()
endforeach()
set(here "${CMAKE_CURRENT_LIST_DIR}")
set(prefix "${WORK_DIR}/prefix")
# The flags the build was sanitized with; its libraries need the same runtime.
separate_arguments(sanitize UNIX_COMMAND "${SANITIZE_FLAGS}")

file(REMOVE_RECURSE "${WORK_DIR}")
foreach(folder home config data cache state)
  file(MAKE_DIRECTORY "${WORK_DIR}/${folder}")
endforeach()
set(ENV{HOME} "${WORK_DIR}/home")
set(ENV{XDG_CONFIG_HOME} "${WORK_DIR}/config")
set(ENV{XDG_DATA_HOME} "${WORK_DIR}/data")
set(ENV{XDG_CACHE_HOME} "${WORK_DIR}/cache")
set(ENV{XDG_STATE_HOME} "${WORK_DIR}/state")
set(ENV{PKG_CONFIG_PATH} "${prefix}/${LIBDIR}/pkgconfig")
set(ENV{LD_LIBRARY_PATH} "${prefix}/${LIBDIR}")

# Runs a command; a failure stops the test with the step, the command and its output.
function(step what)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE errors)
  if(NOT status EQUAL 0)
    list(JOIN ARGN " " shown)
    message(FATAL_ERROR "${what} failed (${status}): ${shown}\n${output}${errors}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

set(configArguments "")
if(CONFIG)
  set(configArguments --config "${CONFIG}")
endif()
step("installing" "${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${prefix}" ${configArguments})

# Every quoted include of an installed header must be installed too (a
# generated table or a header of the program's would not be).
file(GLOB_RECURSE headers "${prefix}/${INCLUDEDIR}/fennick/*.h")
list(LENGTH headers headerCount)
if(headerCount LESS 10)
  message(FATAL_ERROR "only ${headerCount} headers under ${prefix}/${INCLUDEDIR}/fennick")
endif()
foreach(header IN LISTS headers)
  file(STRINGS "${header}" includes REGEX "^#include \"")
  foreach(include IN LISTS includes)
    string(REGEX REPLACE "^#include \"([^\"]+)\".*" "\\1" included "${include}")
    if(NOT EXISTS "${prefix}/${INCLUDEDIR}/fennick/${included}" AND NOT EXISTS "${prefix}/${INCLUDEDIR}/${included}")
      message(FATAL_ERROR "${header} includes \"${included}\", which is not installed")
    endif()
  endforeach()
endforeach()

# The installed program runs, and its manual page has a section for each of its commands.
step("fennick --help" "${prefix}/${BINDIR}/fennick" --help)
file(READ "${prefix}/${MANDIR}/man1/fennick.1" manual)
string(REGEX MATCHALL "\n  fennick [a-z-]+" commands "${output}")
list(LENGTH commands commandCount)
if(commandCount LESS 10)
  message(FATAL_ERROR "'fennick --help' lists only ${commandCount} commands:\n${output}")
endif()
foreach(command IN LISTS commands)
  string(REGEX REPLACE "^\n  fennick " "" command "${command}")
  string(FIND "${manual}" "\n.SS ${command}\n" at)
  if(at EQUAL -1)
    message(FATAL_ERROR "fennick.1 has no section for the command ${command}")
  endif()
endforeach()

# The tool pack: its programs beside their bitmaps, and its buttons in the
# machine tool key under the prefix (etc/xdg, as for any prefix but /usr).
set(tools "${prefix}/${LIBDIR}/fennick/tools")
foreach(program Mirror Auto-Baste "Color Sort" "Split by Color")
  if(NOT IS_SYMLINK "${tools}/${program}" OR NOT EXISTS "${tools}/${program}.bmp")
    message(FATAL_ERROR "the tool pack's \"${program}\" is not installed with its bitmap")
  endif()
endforeach()
file(READ "${prefix}/etc/xdg/selvane/FennickAddin Tools.reg" key)
string(FIND "${key}" "\"Color Sort\"=\"${tools}/Color Sort\"" at)
if(at EQUAL -1)
  message(FATAL_ERROR "the tool key does not list the installed pack:\n${key}")
endif()

# The window programs find the control library under the prefix.
foreach(program fennick-host fennick-preferences)
  step("running the installed ${program}" "${prefix}/${BINDIR}/${program}" --help)
endforeach()

# C++: find_package from the staging prefix alone, then build and run.
set(cxx "${WORK_DIR}/cxx")
step("configuring the C++ project" "${CMAKE_COMMAND}" -S "${here}/cxx" -B "${cxx}" -G "${GENERATOR}"
  "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}" "-DCMAKE_CXX_FLAGS=${SANITIZE_FLAGS}" "-DCMAKE_PREFIX_PATH=${prefix}")
file(STRINGS "${cxx}/CMakeCache.txt" found REGEX "^Fennick_DIR:")
if(NOT found STREQUAL "Fennick_DIR:PATH=${prefix}/${LIBDIR}/cmake/Fennick")
  message(FATAL_ERROR "find_package(Fennick) found ${found}, not the staging prefix's")
endif()
step("building the C++ project" "${CMAKE_COMMAND}" --build "${cxx}")
step("running the C++ project" "${cxx}/dst_round_trip")
message(STATUS "${output}")

# C: the compiler line pkg-config gives, with strict C warnings as errors.
step("pkg-config" pkg-config --cflags --libs fennick)
separate_arguments(pkgFlags UNIX_COMMAND "${output}")
step("pkg-config libdir" pkg-config --variable=libdir fennick)
string(STRIP "${output}" libdir)
if(NOT libdir STREQUAL "${prefix}/${LIBDIR}")
  message(FATAL_ERROR "fennick.pc gives libdir ${libdir}, not ${prefix}/${LIBDIR}")
endif()
step("compiling the C host" "${C_COMPILER}" -std=c99 -Wall -Wextra -Wpedantic -Werror ${sanitize}
  "${here}/c/host.c" -o "${WORK_DIR}/c_host" ${pkgFlags})
step("running the C host" "${WORK_DIR}/c_host")
message(STATUS "${output}")
