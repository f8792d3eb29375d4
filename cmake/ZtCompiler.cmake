find_program(ZT_CCACHE ccache)
if(ZT_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${ZT_CCACHE})
endif()

add_compile_options(-Wall -Wextra -Wconversion)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # Optimising, g++ 12 takes "text" + std::string for a copy onto itself (its bug 105651).
    add_compile_options(-Wno-restrict)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 15)
    # clang 14 takes the compile time's branch of "if consteval" in a condition that it folds, as
    # libstdc++'s question whether it is evaluated by the compiler is: strings would be filled and
    # copied a character at a time. Without the feature libstdc++ asks by the compiler's builtin.
    add_compile_options(-U__cpp_if_consteval)
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
    # The address sanitizer ends a program that uses a null or a dangling pointer, so that build
    # leaves out the checks of every pointer before its use: they take a third of the compile time.
    if(ZT_NO_SANITIZE)
        add_compile_options(-fno-sanitize=${ZT_NO_SANITIZE})
    endif()
endif()

# How a shared library is linked of which nothing may be missing. clang has the sanitizers' functions
# in programs only.
if(NOT ZT_SANITIZE OR NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    set(ZT_LINK_WHOLE LINKER:--no-undefined)
endif()

if(ZT_FUZZ)
    # Every library counts for libFuzzer what it covers.
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()
