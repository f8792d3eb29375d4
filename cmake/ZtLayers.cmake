# Each layer's headers are seen through an include root of its own that holds nothing but a link to
# that layer's folder. A target therefore can include "recorddb/..." only when it links recorddb,
# and an include against the arrows (ztimporter -> recorddb, say) does not compile.
function(zt_layer_root layer out)
    set(root ${PROJECT_BINARY_DIR}/include-roots/${layer})
    file(MAKE_DIRECTORY ${root})
    if(NOT EXISTS ${root}/${layer})
        file(CREATE_LINK ${PROJECT_SOURCE_DIR}/${layer} ${root}/${layer} SYMBOLIC)
    endif()
    set(${out} ${root} PARENT_SCOPE)
endfunction()

# Gives TARGET the headers of LAYER, and everyone who links TARGET as well.
function(zt_provides_layer target layer)
    zt_layer_root(${layer} root)
    target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${root}>)
endfunction()

# Gives everyone who links TARGET these headers of LAYER's own top level, and nothing that stands in
# the folders below it.
function(zt_provides_headers target layer)
    set(root ${PROJECT_BINARY_DIR}/include-roots/${layer}-public)
    file(REMOVE_RECURSE ${root}/${layer})
    file(MAKE_DIRECTORY ${root}/${layer})
    foreach(header IN LISTS ARGN)
        file(CREATE_LINK ${PROJECT_SOURCE_DIR}/${layer}/${header} ${root}/${layer}/${header} SYMBOLIC)
    endforeach()
    target_include_directories(${target} INTERFACE $<BUILD_INTERFACE:${root}>)
endfunction()
