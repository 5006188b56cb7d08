# SPDX-License-Identifier: MIT

# kap_add_test(NAME <name> SOURCES <file>... [LIBS <target>...] [THREADS] [OWN_MAIN] [NO_LIBRARY])
# One test program, registered with ctest under its name.
#   THREADS     the test starts threads: it also runs under ThreadSanitizer (ctest label and build
#               target "threads")
#   OWN_MAIN    the sources define main
#   NO_LIBRARY  the test has a host (kaphost among LIBS) but never loads libKAPUtils.so, which need
#               not be built first
# KAP_LIBRARY_PATH is defined as the absolute path of libKAPUtils.so. The locale "de_DE.UTF-8",
# which has a decimal comma, is available.
find_package(GTest REQUIRED)
set(KAP_TEST_TIMEOUT 900 CACHE STRING "Seconds after which a test is ended")

set(kap_locales ${PROJECT_BINARY_DIR}/locale)
add_custom_command(OUTPUT ${kap_locales}/de_DE.UTF-8/LC_NUMERIC
  COMMAND ${CMAKE_COMMAND} -E make_directory ${kap_locales}
  COMMAND localedef -i de_DE -f UTF-8 ${kap_locales}/de_DE.UTF-8
  COMMENT "Making the locale de_DE.UTF-8" VERBATIM)
add_custom_target(kap_test_locale DEPENDS ${kap_locales}/de_DE.UTF-8/LC_NUMERIC)
add_custom_target(threads)

function(kap_add_test)
  cmake_parse_arguments(PARSE_ARGV 0 arg "THREADS;OWN_MAIN;NO_LIBRARY" "NAME" "SOURCES;LIBS")
  if(NOT arg_NAME OR NOT arg_SOURCES OR arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "kap_add_test(NAME ... SOURCES ...): wrong arguments: ${ARGV}")
  endif()
  add_executable(${arg_NAME} ${arg_SOURCES})
  set(gtest GTest::gtest_main)
  if(arg_OWN_MAIN)
    set(gtest GTest::gtest)
  endif()
  target_link_libraries(${arg_NAME} PRIVATE ${arg_LIBS} ${gtest} ${CMAKE_DL_LIBS})
  target_compile_definitions(${arg_NAME} PRIVATE
    KAP_LIBRARY_PATH="${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/libKAPUtils.so")
  # What is tested is compiled as it is shipped, or with the sanitizers. Tests optimised like it
  # take two to three times as long to compile and find nothing more.
  if(KAP_SANITIZE)
    target_compile_options(${arg_NAME} PRIVATE -O0)
  elseif(CMAKE_BUILD_TYPE STREQUAL "Release")
    target_compile_options(${arg_NAME} PRIVATE -O1)
  endif()

  list(LENGTH arg_SOURCES count)
  if(count GREATER 3)
    kap_precompile(${arg_NAME} $<$<COMPILE_LANGUAGE:CXX>:<gtest/gtest.h$<ANGLE-R>>)
  endif()
  add_dependencies(${arg_NAME} kap_test_locale)
  if("kaphost" IN_LIST arg_LIBS AND TARGET KAPUtils AND NOT arg_NO_LIBRARY)
    add_dependencies(${arg_NAME} KAPUtils)
  endif()

  add_test(NAME ${arg_NAME} COMMAND ${arg_NAME})
  set_tests_properties(${arg_NAME} PROPERTIES
    TIMEOUT ${KAP_TEST_TIMEOUT} ENVIRONMENT "LOCPATH=${kap_locales};${kap_sanitizer_environment}")
  if(arg_THREADS)
    set_tests_properties(${arg_NAME} PROPERTIES LABELS threads)
    add_dependencies(threads ${arg_NAME})
  endif()
endfunction()
