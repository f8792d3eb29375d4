# The seconds after which a test is taken to hang. No test takes that long, even on a slow and busy
# machine.
set(ZT_TEST_TIMEOUT 1800)

# Where each test program writes what became of its tests, one file a process.
set(ZT_TEST_RESULTS ${PROJECT_BINARY_DIR}/test-results)

# zt_add_test(NAME [SHARDS n] SOURCES file... LIBS target...): one test program. CTest runs it as
# one test: under the sanitizers, starting a process for each of its tests would take longer than
# most of the tests. A program that takes long is spread over SHARDS processes, which may run at
# once.
function(zt_add_test name)
    cmake_parse_arguments(arg "" "SHARDS" "SOURCES;LIBS" ${ARGN})
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE ${arg_LIBS} GTest::gmock GTest::gtest_main)
    if(ZT_UNITY)
        zt_share_test_headers(${name})
    endif()
    if(NOT arg_SHARDS)
        zt_run_tests_of(${name} ${name} "")
        return()
    endif()
    math(EXPR last "${arg_SHARDS} - 1")
    foreach(index RANGE ${last})
        zt_run_tests_of(${name} ${name}.${index}
            "GTEST_TOTAL_SHARDS=${arg_SHARDS};GTEST_SHARD_INDEX=${index}")
        # What takes long begins first.
        set_tests_properties(${name}.${index} PROPERTIES COST 100)
    endforeach()
endfunction()

# GoogleTest's headers are compiled once, by the first test program, for all of them.
function(zt_share_test_headers name)
    get_property(first GLOBAL PROPERTY ZT_TEST_HEADERS)
    if(first)
        target_precompile_headers(${name} REUSE_FROM ${first})
    else()
        target_precompile_headers(${name} PRIVATE <gmock/gmock.h> <gtest/gtest.h>)
        set_property(GLOBAL PROPERTY ZT_TEST_HEADERS ${name})
    endif()
endfunction()

# Adds a CTest test that runs the tests of a program, with these environment variables in addition.
function(zt_run_tests_of program test environment)
    add_test(NAME ${test} COMMAND ${program})
    set_tests_properties(${test} PROPERTIES
        TIMEOUT ${ZT_TEST_TIMEOUT}
        ENVIRONMENT "${environment};GTEST_OUTPUT=xml:${ZT_TEST_RESULTS}/${test}.xml;GTEST_BRIEF=1")
endfunction()
