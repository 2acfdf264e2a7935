# vostan_gtest(<name> SOURCES ... LIBS ... [ENV VAR=value ...])
# A GoogleTest executable registered with ctest. Tests carry the tree's prefix
# (empty for the main tree, "san." for the sanitizer tree) so one ctest run can
# cover several build trees without name clashes.
function(vostan_gtest name)
  cmake_parse_arguments(A "" "" "SOURCES;LIBS;ENV" ${ARGN})
  add_executable(${name} ${A_SOURCES})
  target_link_libraries(${name} PRIVATE ${A_LIBS} GTest::gtest GTest::gmock GTest::gtest_main)
  gtest_discover_tests(${name}
    TEST_PREFIX "${VOSTAN_TEST_PREFIX}"
    DISCOVERY_MODE PRE_TEST
    DISCOVERY_TIMEOUT 120
    PROPERTIES ENVIRONMENT "${A_ENV}" TIMEOUT 600)
endfunction()
