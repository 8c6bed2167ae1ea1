# One function for each kind of target, so that a folder's CMakeLists.txt only says what is special.

# Interface target with the warnings and sanitizers that all our own code is built with.
add_library(wallslate_options INTERFACE)
target_compile_options(wallslate_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>) # g++ 12 warns wrongly about joined std::string
if(WALLSLATE_WERROR)
    target_compile_options(wallslate_options INTERFACE -Werror)
endif()
if(WALLSLATE_SANITIZE)
    target_compile_options(wallslate_options INTERFACE
        -fsanitize=${WALLSLATE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(wallslate_options INTERFACE -fsanitize=${WALLSLATE_SANITIZE})
endif()
target_link_libraries(wallslate_options INTERFACE Threads::Threads)

# wallslate_layer(NAME LOWER...): the library ws_NAME of all sources below src/NAME, on the layers below it. A main.cpp
# there belongs to a program and is left out.
# The layer order is also checked by tests/layers.
function(wallslate_layer name)
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS
        ${CMAKE_SOURCE_DIR}/src/${name}/*.cpp ${CMAKE_SOURCE_DIR}/src/${name}/*.S)
    list(FILTER sources EXCLUDE REGEX "/main\\.cpp$")
    if(NOT sources)
        add_library(ws_${name} INTERFACE)
        set(scope INTERFACE)
    else()
        add_library(ws_${name} STATIC ${sources})
        set(scope PUBLIC)
    endif()
    target_include_directories(ws_${name} ${scope} ${CMAKE_SOURCE_DIR}/src)
    target_link_libraries(ws_${name} ${scope} wallslate_options)
    foreach(lower ${ARGN})
        target_link_libraries(ws_${name} ${scope} ws_${lower})
    endforeach()
endfunction()

# wallslate_link_layers(TARGET LAYER...): links whole layers, so that classes that only register themselves
# with the factory are not dropped by the linker, and the embedded resources.
function(wallslate_link_layers target)
    set(libraries "")
    foreach(layer ${ARGN})
        list(APPEND libraries ws_${layer})
    endforeach()
    if(NOT target IN_LIST WALLSLATE_RESOURCE_MAKERS)
        list(APPEND libraries ws_resources)
    endif()
    foreach(library ${libraries})
        target_link_libraries(${target} PRIVATE ${library})
        get_target_property(kind ${library} TYPE)
        if(kind STREQUAL "STATIC_LIBRARY")
            # As a property, since the layers also name each other without this feature.
            set_property(TARGET ${target} PROPERTY LINK_LIBRARY_OVERRIDE_${library} WHOLE_ARCHIVE)
        endif()
    endforeach()
endfunction()
