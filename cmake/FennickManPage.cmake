# Writes the manual page fennick.1 from the program's own help, so that the
# page never says other than `fennick --help` and `fennick COMMAND --help`:
#
#   cmake -DFENNICK=<program> -DOUTPUT=<fennick.1> -DVERSION=<x.y.z> -P FennickManPage.cmake
#
# The texts are walked by position rather than split into CMake lists, which
# would break lines at ";" and keep "[...]" spans together.
cmake_minimum_required(VERSION 3.25)

foreach(variable FENNICK OUTPUT VERSION)
  if(NOT DEFINED ${variable})
    message(FATAL_ERROR "FennickManPage: -D${variable}=... is missing")
  endif()
endforeach()

function(run_fennick outVariable)
  execute_process(COMMAND "${FENNICK}" ${ARGN} OUTPUT_VARIABLE output RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "FennickManPage: 'fennick ${ARGN}' failed: ${status}")
  endif()
  set(${outVariable} "${output}" PARENT_SCOPE)
endfunction()

# One line as roff text: backslashes and dashes escaped (a plain "-" may print
# as a hyphen that a pasted option would not match), and a leading dot or
# quote kept from being read as a request.
function(roff_line line outVariable)
  string(REPLACE "\\" "\\e" line "${line}")
  string(REPLACE "-" "\\-" line "${line}")
  if(line MATCHES "^[.']")
    set(line "\\&${line}")
  endif()
  set(${outVariable} "${line}" PARENT_SCOPE)
endfunction()

# Appends `text` to the variable `page`: lines that start flush are filled
# into paragraphs, indented ones (option tables and their continuations) keep
# their layout, and a blank line starts a new paragraph.
function(append_text text)
  set(result "${page}")
  set(noFill FALSE)
  string(APPEND text "\n")
  while(NOT text STREQUAL "")
    string(FIND "${text}" "\n" end)
    string(SUBSTRING "${text}" 0 ${end} line)
    math(EXPR next "${end} + 1")
    string(SUBSTRING "${text}" ${next} -1 text)
    if(line STREQUAL "")
      if(noFill)
        string(APPEND result ".fi\n")
        set(noFill FALSE)
      endif()
      string(APPEND result ".PP\n")
      continue()
    endif()
    if(line MATCHES "^[ \t]" AND NOT noFill)
      string(APPEND result ".nf\n")
      set(noFill TRUE)
    elseif(NOT line MATCHES "^[ \t]" AND noFill)
      string(APPEND result ".fi\n")
      set(noFill FALSE)
    endif()
    roff_line("${line}" line)
    string(APPEND result "${line}\n")
  endwhile()
  if(noFill)
    string(APPEND result ".fi\n")
  endif()
  set(page "${result}" PARENT_SCOPE)
endfunction()

run_fennick(usage --help)
string(STRIP "${usage}" usage)

set(page ".TH FENNICK 1 \"\" \"Fennick ${VERSION}\" \"User Commands\"\n")
# Options and method names are not to be broken across lines.
string(APPEND page ".nh\n.ad l\n")
string(APPEND page ".SH NAME\nfennick \\- read, convert and change embroidery designs\n")
string(APPEND page ".SH SYNOPSIS\n.B fennick\n.I COMMAND\n.RI [ ARGUMENTS ]\n.br\n")
string(APPEND page ".B fennick\n.I COMMAND\n.B \\-\\-help\n")
string(APPEND page ".SH DESCRIPTION\n")
string(APPEND page "Reads the stitch files of home and commercial embroidery machines, writes them in other\n"
                   "formats through the save pipeline, and runs the design tools on them.\n")
# The overview as the program prints it, less its first line, which the synopsis shows.
string(FIND "${usage}" "\n" firstEnd)
string(SUBSTRING "${usage}" ${firstEnd} -1 overview)
string(STRIP "${overview}" overview)
string(APPEND page ".PP\n")
append_text("${overview}")

string(APPEND page ".SH COMMANDS\n")
# The commands are the names in the overview's lines "  fennick NAME ...".
set(rest "${usage}\n")
set(commandCount 0)
while(NOT rest STREQUAL "")
  string(FIND "${rest}" "\n" end)
  string(SUBSTRING "${rest}" 0 ${end} line)
  math(EXPR next "${end} + 1")
  string(SUBSTRING "${rest}" ${next} -1 rest)
  if(NOT line MATCHES "^  fennick ([a-z][a-z-]*)")
    continue()
  endif()
  set(command "${CMAKE_MATCH_1}")
  run_fennick(help ${command} --help)
  # "usage: USAGE\n\nHELP\n"; the usage may run over more than one line.
  string(REGEX REPLACE "^usage: " "" help "${help}")
  string(FIND "${help}" "\n\n" usageEnd)
  if(usageEnd EQUAL -1)
    message(FATAL_ERROR "FennickManPage: 'fennick ${command} --help' has no usage paragraph")
  endif()
  string(SUBSTRING "${help}" 0 ${usageEnd} commandUsage)
  math(EXPR helpStart "${usageEnd} + 2")
  string(SUBSTRING "${help}" ${helpStart} -1 help)
  string(STRIP "${help}" help)
  string(APPEND page ".SS ${command}\n.nf\n")
  set(usageLines "${commandUsage}\n")
  while(NOT usageLines STREQUAL "")
    string(FIND "${usageLines}" "\n" end)
    string(SUBSTRING "${usageLines}" 0 ${end} line)
    math(EXPR next "${end} + 1")
    string(SUBSTRING "${usageLines}" ${next} -1 usageLines)
    roff_line("${line}" line)
    string(APPEND page "\\fB${line}\\fR\n")
  endwhile()
  string(APPEND page ".fi\n.PP\n")
  append_text("${help}")
  math(EXPR commandCount "${commandCount} + 1")
endwhile()
if(commandCount EQUAL 0)
  message(FATAL_ERROR "FennickManPage: no command found in 'fennick --help'")
endif()

string(APPEND page ".SH EXIT STATUS\n"
                   "0 when the command did what was asked; otherwise non\\-zero, with one line on standard\n"
                   "error naming the file and the cause.\n")
string(APPEND page ".SH SEE ALSO\n"
                   "README.md and the documents under docs/ in Fennick's source tree.\n")
file(WRITE "${OUTPUT}" "${page}")
