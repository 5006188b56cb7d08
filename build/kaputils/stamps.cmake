# SPDX-License-Identifier: MIT

# Writes KAPUtilsStamps.h. Every build runs it, so that the stamps follow the commit. The stamps
# depend on the sources alone: the same commit makes the same library. The file changes only when a
# stamp does.
# Arguments: ROOT, VERSION, TEMPLATE, OUTPUT.
function(git result)
  # Without the optional locks, a build never blocks a commit.
  execute_process(COMMAND git --no-optional-locks -C ${ROOT} ${ARGN}
    OUTPUT_VARIABLE output ERROR_QUIET OUTPUT_STRIP_TRAILING_WHITESPACE RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    set(output "")
  endif()
  set(${result} "${output}" PARENT_SCOPE)
endfunction()

set(id "")
set(seconds "$ENV{SOURCE_DATE_EPOCH}")
if(EXISTS ${ROOT}/.git)  # not some other repository that contains a copy of these sources
  git(id describe --always --tags --abbrev=12)
  git(changes status --porcelain --untracked-files=no)
  if(id AND changes)
    string(APPEND id "-modified")
  endif()
  if(seconds STREQUAL "")
    git(seconds log -1 --format=%ct)
  endif()
endif()

set(date "unknown")
if(seconds MATCHES "^[0-9]+$")
  set(ENV{SOURCE_DATE_EPOCH} ${seconds})
  string(TIMESTAMP date "%Y-%m-%d" UTC)
endif()
if(id STREQUAL "")
  set(id "unknown")
endif()
configure_file(${TEMPLATE} ${OUTPUT} @ONLY)
