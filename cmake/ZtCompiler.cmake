find_program(ZT_CCACHE ccache)
if(ZT_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${ZT_CCACHE})
endif()

add_compile_options(-Wall -Wextra -Wconversion)
if(ZT_WERROR)
    add_compile_options(-Werror)
endif()

if(ZT_SANITIZE)
    add_compile_options(-fsanitize=${ZT_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${ZT_SANITIZE})
endif()
