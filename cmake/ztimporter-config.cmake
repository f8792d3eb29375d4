# find_package(ztimporter): the targets ztimporter::ztimporter (the importer), ztimporter::recorddb
# (the record database) and ztimporter::platform, which both of them bring along.
include(${CMAKE_CURRENT_LIST_DIR}/ztimporter-targets.cmake)
