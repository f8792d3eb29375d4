# The target `package`: Debian packages of the tool, of the libraries, and of what programs need to
# use these. Installed they stand below /usr.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VENDOR "The ztimporter developers")
set(CPACK_PACKAGE_CONTACT "The ztimporter developers <ztimporter@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES TRUE)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_COMPONENTS_ALL tool libraries headers)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION TRUE)
# What they need of other packages is read from the programs and libraries themselves; our own
# libraries are found where they were built.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

# Before version 1.0 each minor version can change the binary interface, so several can be installed
# beside each other.
set(ZT_LIBRARY_PACKAGE libztimporter${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME ztimport)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "${ZT_LIBRARY_PACKAGE} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_TOOL_DESCRIPTION "moves tracker data into a record database
Reads records with their states, history, attachments and references from
packets, imports every one exactly once into an SQLite file or a database on
a PostgreSQL server, names the cause of every refusal, and proves afterwards
that what is in the database is what was in the source.")

set(CPACK_DEBIAN_LIBRARIES_PACKAGE_NAME ${ZT_LIBRARY_PACKAGE})
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARIES_DESCRIPTION "importer of tracker data and its record database
The shared libraries of ztimport, for other programs as well: the importer,
the record database under it, and the platform of both.")

set(CPACK_DEBIAN_HEADERS_PACKAGE_NAME libztimporter-dev)
set(CPACK_DEBIAN_HEADERS_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_HEADERS_PACKAGE_DEPENDS "${ZT_LIBRARY_PACKAGE} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_HEADERS_DESCRIPTION "importer of tracker data - development files
What programs need to use the libraries of ztimport: headers, a CMake package
and pkg-config files.")

include(CPack)
