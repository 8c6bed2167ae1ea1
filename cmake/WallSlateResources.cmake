# Embeds files in the program: the library ws_resources holds the table that platform/resources.cpp looks things up in.
#
# The table is written when all folders have been read, since some of its files are made by programs of this build.
# A file that is not there is left out, and LoadResourceData answers that it does not exist.
# The two fonts are named by WALLSLATE_FONT_REGULAR and WALLSLATE_FONT_BOLD.

# Programs that make resources cannot be linked with them.
set(WALLSLATE_RESOURCE_MAKERS iconpack)

add_library(ws_resources STATIC)
set_target_properties(ws_resources PROPERTIES LINKER_LANGUAGE CXX)
set(WALLSLATE_RESOURCE_TABLE ${CMAKE_BINARY_DIR}/resources/table.S)
cmake_language(DEFER DIRECTORY ${CMAKE_SOURCE_DIR} CALL wallslate_write_resource_table)

# Appends one file to the variables `rows`, `blobs` and `files` of the caller. MADE: by a rule of this build.
macro(wallslate_add_resource id file)
    file(GLOB present CONFIGURE_DEPENDS "${file}")
    if(present OR "${ARGN}" STREQUAL "MADE")
        string(APPEND blobs
            ".balign 16\nresource_${id}:\n.incbin \"${file}\"\nresource_${id}_end:\n.byte 0\n")
        string(APPEND rows ".long ${id}, resource_${id}_end - resource_${id}\n.quad resource_${id}\n")
        list(APPEND files "${file}")
    endif()
endmacro()

function(wallslate_write_resource_table)
    set(rows "")
    set(blobs "")
    set(files "")
    wallslate_add_resource(604 ${CMAKE_SOURCE_DIR}/resources/style.json)
    wallslate_add_resource(611 ${CMAKE_SOURCE_DIR}/resources/static-symbols.json)
    wallslate_add_resource(700 ${CMAKE_SOURCE_DIR}/resources/cover/builtin.jpg)
    if(WALLSLATE_FONT_REGULAR)
        wallslate_add_resource(800 ${WALLSLATE_FONT_REGULAR})
    endif()
    if(WALLSLATE_FONT_BOLD)
        wallslate_add_resource(801 ${WALLSLATE_FONT_BOLD})
    endif()
    if(TARGET icon_archives)
        wallslate_add_resource(900 ${CMAKE_BINARY_DIR}/resources/icons_dynamic.bin MADE)
        wallslate_add_resource(901 ${CMAKE_BINARY_DIR}/resources/icons_static.bin MADE)
        add_dependencies(ws_resources icon_archives)
    endif()

    string(CONCAT text
        ".section .rodata\n${blobs}"
        ".section .data.rel.ro, \"aw\"\n.balign 8\n.globl wallslate_resource_table\n"
        "wallslate_resource_table:\n${rows}.long 0, 0\n.quad 0\n"
        ".section .note.GNU-stack, \"\", @progbits\n")
    file(CONFIGURE OUTPUT ${WALLSLATE_RESOURCE_TABLE} CONTENT "${text}" @ONLY)
    target_sources(ws_resources PRIVATE ${WALLSLATE_RESOURCE_TABLE})
    set_source_files_properties(${WALLSLATE_RESOURCE_TABLE} TARGET_DIRECTORY ws_resources
        PROPERTIES OBJECT_DEPENDS "${files}")
endfunction()
