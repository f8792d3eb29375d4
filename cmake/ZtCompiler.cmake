find_program(ZT_CCACHE ccache)
if(ZT_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${ZT_CCACHE})
endif()

add_compile_options(-Wall -Wextra -Wconversion)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # Optimising, g++ 12 takes "text" + std::string for a copy onto itself (its bug 105651).
    add_compile_options(-Wno-restrict)
endif()
if(ZT_WERROR)
    add_compile_options(-Werror)
endif()

if(ZT_SANITIZE)
    add_compile_options(-fsanitize=${ZT_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # Under the sanitizers g++ 12 takes members of the standard library's own objects (regex)
        # for uninitialised. The release build, which has no sanitizers, keeps the warning.
        add_compile_options(-Wno-maybe-uninitialized)
    endif()
    add_link_options(-fsanitize=${ZT_SANITIZE})
endif()
if(ZT_FUZZ)
    # Every library counts for libFuzzer what it covers.
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()
