# SPDX-License-Identifier: MIT

# The warnings for every target of this project. They are options of the folder, because what is
# linked to a target would have to be installed with it. None in a project that contains this one:
# its compiler may be newer, and its author has no use for them.
if(NOT PROJECT_IS_TOP_LEVEL)
  return()
endif()
option(KAP_WERROR "Warnings are errors; off for packages, which any compiler may build" ON)

set(cxx -Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual -Wextra-semi)
set(gnu -Wduplicated-cond -Wlogical-op -Wsuggest-override
  # g++ 12 reports overlapping copies inside std::string that do not exist.
  -Wno-restrict)
add_compile_options(
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wdouble-promotion
  -Wformat-security -Wcast-qual -Wcast-align -Wundef -Wvla
  "$<$<COMPILE_LANGUAGE:CXX>:${cxx}>"
  "$<$<COMPILE_LANG_AND_ID:CXX,GNU>:${gnu}>"
  $<$<BOOL:${KAP_WERROR}>:-Werror>)
