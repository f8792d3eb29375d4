# What `cmake --install` brings beside the tool: libraries, the headers for programs that use them,
# a CMake package and pkg-config files. The prefix can be moved as a whole: nothing in it names its
# own place. The three components are the packages of ZtPackages.cmake.
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

# Headers stand in a folder of their own and are included as in the project: <recorddb/database.h>.
set(ZT_INSTALL_HEADERDIR ${CMAKE_INSTALL_INCLUDEDIR}/ztimporter)
set(ZT_INSTALL_PACKAGEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/ztimporter)
set(ZT_INSTALL_PKGCONFIGDIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# zt_install_library(TARGET AS NAME DESCRIPTION text [REQUIRES library...] HEADERS file...): the
# shared library, known to CMake as ztimporter::NAME and to pkg-config as TARGET. REQUIRES are the
# other libraries of the project that its headers need.
function(zt_install_library target)
    cmake_parse_arguments(arg "" "AS;DESCRIPTION" "REQUIRES;HEADERS" ${ARGN})
    add_library(ztimporter::${arg_AS} ALIAS ${target})
    # The C++ that the headers need.
    target_compile_features(${target} INTERFACE cxx_std_20)
    # Before version 1.0 each minor version can change the binary interface.
    set_target_properties(${target} PROPERTIES
        EXPORT_NAME ${arg_AS}
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}
        INSTALL_RPATH $ORIGIN)
    if(NOT ZT_INSTALL)
        return()
    endif()

    install(TARGETS ${target} EXPORT ztimporter
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
            COMPONENT libraries NAMELINK_COMPONENT headers
        INCLUDES DESTINATION ${ZT_INSTALL_HEADERDIR})
    cmake_path(GET CMAKE_CURRENT_SOURCE_DIR FILENAME layer)
    foreach(header IN LISTS arg_HEADERS)
        cmake_path(SET path ${layer}/${header})
        cmake_path(GET path PARENT_PATH folder)
        install(FILES ${header} DESTINATION ${ZT_INSTALL_HEADERDIR}/${folder} COMPONENT headers)
    endforeach()

    set(ZT_PC_NAME ${target})
    set(ZT_PC_DESCRIPTION ${arg_DESCRIPTION})
    list(TRANSFORM arg_REQUIRES APPEND " = ${PROJECT_VERSION}")
    list(JOIN arg_REQUIRES ", " ZT_PC_REQUIRES)
    file(RELATIVE_PATH ZT_PC_PREFIX /prefix/${ZT_INSTALL_PKGCONFIGDIR} /prefix)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/library.pc.in ${PROJECT_BINARY_DIR}/${target}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${target}.pc
        DESTINATION ${ZT_INSTALL_PKGCONFIGDIR} COMPONENT headers)
endfunction()

# zt_install_program(TARGET): a program that finds the libraries of its own prefix.
function(zt_install_program target)
    file(RELATIVE_PATH libraries /prefix/${CMAKE_INSTALL_BINDIR} /prefix/${CMAKE_INSTALL_LIBDIR})
    set_target_properties(${target} PROPERTIES INSTALL_RPATH $ORIGIN/${libraries})
    if(ZT_INSTALL)
        install(TARGETS ${target} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tool)
    endif()
endfunction()

# The man page of the tool, made from the page of the documentation.
function(zt_install_man_page)
    find_package(Python3 REQUIRED COMPONENTS Interpreter)
    set(maker ${PROJECT_SOURCE_DIR}/man/man_page.py)
    set(source ${PROJECT_SOURCE_DIR}/docs/command-line.md)
    set(page ${PROJECT_BINARY_DIR}/man/ztimport.1)
    file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/man)
    add_custom_command(OUTPUT ${page}
        COMMAND ${Python3_EXECUTABLE} ${maker} ${source} ${PROJECT_VERSION} ${page}
        DEPENDS ${maker} ${source} VERBATIM)
    add_custom_target(man_page ALL DEPENDS ${page})
    install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tool)
endfunction()

# Installs what all of the libraries share. To be called after them.
function(zt_install_package)
    zt_install_man_page()
    install(EXPORT ztimporter NAMESPACE ztimporter:: FILE ztimporter-targets.cmake
        DESTINATION ${ZT_INSTALL_PACKAGEDIR} COMPONENT headers)
    write_basic_package_version_file(${PROJECT_BINARY_DIR}/ztimporter-config-version.cmake
        COMPATIBILITY SameMinorVersion)
    install(FILES
        ${PROJECT_SOURCE_DIR}/cmake/ztimporter-config.cmake
        ${PROJECT_BINARY_DIR}/ztimporter-config-version.cmake
        DESTINATION ${ZT_INSTALL_PACKAGEDIR} COMPONENT headers)
    install(FILES LICENSE README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT tool)
    install(DIRECTORY docs examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT tool)
    install(FILES completion/ztimport.bash
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME ztimport
        COMPONENT tool)
endfunction()
