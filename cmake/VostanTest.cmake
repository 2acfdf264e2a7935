# vostan_gtest(<name> SOURCES ... LIBS ... [ENV VAR=value ...])
# A GoogleTest executable registered with ctest. Tests carry the tree's prefix
# (empty for the main tree, "san." for the sanitizer tree) so one ctest run can
# cover several build trees without name clashes.
function(vostan_gtest name)
  cmake_parse_arguments(A "" "" "SOURCES;LIBS;ENV" ${ARGN})
  add_executable(${name} ${A_SOURCES})
  target_link_libraries(${name} PRIVATE ${A_LIBS} GTest::gtest GTest::gmock GTest::gtest_main)
  # The environment goes through `env` in front of the executable: a list in
  # the discovered tests' properties would lose all but its first entry.
  if(A_ENV)
    set_target_properties(${name} PROPERTIES CROSSCOMPILING_EMULATOR "env;${A_ENV}")
  endif()
  gtest_discover_tests(${name}
    TEST_PREFIX "${VOSTAN_TEST_PREFIX}"
    DISCOVERY_MODE PRE_TEST
    DISCOVERY_TIMEOUT 120
    PROPERTIES TIMEOUT 600)
endfunction()

# vostan_java_test(<name> CLASS <main class> [SANITIZED] [ARGS ...] [ENV VAR=value ...])
# Runs a Java test in a real JVM with -Xcheck:jni against libvostan.so; the
# test fails on a non-zero exit or on any JNI warning in its output. In a
# sanitizer tree only SANITIZED tests run, with the sanitizer's runtime
# preloaded into the JVM.
function(vostan_java_test name)
  cmake_parse_arguments(A "SANITIZED" "CLASS" "ARGS;ENV" ${ARGN})
  if(NOT TARGET vostan_java_tests)
    return()
  endif()
  if(VOSTAN_SANITIZE)
    if(NOT A_SANITIZED OR NOT VOSTAN_SANITIZER_RUNTIME)
      return()
    endif()
    # The JVM catches its own segfaults and never frees much at exit.
    list(APPEND A_ENV LD_PRELOAD=${VOSTAN_SANITIZER_RUNTIME}
      "ASAN_OPTIONS=handle_segv=0:detect_leaks=0:allow_user_segv_handler=1")
  endif()
  add_test(NAME ${VOSTAN_TEST_PREFIX}java.${name}
    COMMAND ${CMAKE_SOURCE_DIR}/scripts/java-test.sh
      $<TARGET_FILE_DIR:vostan> ${VOSTAN_JAR}:${VOSTAN_DEMO_JAR}:${VOSTAN_TEST_JAR} ${A_CLASS} ${A_ARGS})
  set_tests_properties(${VOSTAN_TEST_PREFIX}java.${name} PROPERTIES
    ENVIRONMENT "JAVA_HOME=${JAVA_HOME};${A_ENV}" TIMEOUT 300)
endfunction()

# The shared runtime of the sanitizers, for programs such as the JVM that the
# sanitizing compiler did not link.
if(VOSTAN_SANITIZE MATCHES "address" AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=libclang_rt.asan-x86_64.so
    OUTPUT_VARIABLE _runtime OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(EXISTS "${_runtime}")
    set(VOSTAN_SANITIZER_RUNTIME ${_runtime})
  endif()
endif()
