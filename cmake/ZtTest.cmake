include(GoogleTest)

# The seconds after which a test is taken to hang. No test is so slow, on however slow a machine and
# beside whatever else.
set(ZT_TEST_TIMEOUT 1800)

# zt_add_test(NAME SOURCES file... LIBS target...): one test program, each of its tests known to CTest.
function(zt_add_test name)
    cmake_parse_arguments(arg "" "" "SOURCES;LIBS" ${ARGN})
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE ${arg_LIBS} GTest::gmock GTest::gtest_main)
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 600 PROPERTIES TIMEOUT ${ZT_TEST_TIMEOUT})
endfunction()
