# kap_warnings: the warnings for every target of this project. The root links it to all of them.
option(KAP_WERROR "Warnings are errors" ON)

add_library(kap_warnings INTERFACE)
target_compile_options(kap_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wdouble-promotion
  -Wformat-security -Wcast-qual -Wcast-align -Wundef -Wvla
  $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual -Wextra-semi>
  $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wduplicated-cond -Wlogical-op -Wsuggest-override>
  # g++ 12 reports overlapping copies inside std::string that do not exist.
  $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-restrict>
  $<$<BOOL:${KAP_WERROR}>:-Werror>)
