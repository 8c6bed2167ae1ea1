# WALLSLATE_NANOSVG_DIR: the folder with nanosvg.h and nanosvgrast.h, from the system or from the build folder, where
# cmake/fetch-nanosvg.sh puts them if nothing else has.
function(wallslate_find_nanosvg)
    find_path(WALLSLATE_NANOSVG_DIR nanosvgrast.h
        HINTS ${CMAKE_SOURCE_DIR}/build/third_party/nanosvg PATH_SUFFIXES nanosvg)
endfunction()

wallslate_find_nanosvg()
if(NOT WALLSLATE_NANOSVG_DIR)
    execute_process(COMMAND ${CMAKE_SOURCE_DIR}/cmake/fetch-nanosvg.sh)
    wallslate_find_nanosvg()
endif()
if(NOT WALLSLATE_NANOSVG_DIR)
    message(FATAL_ERROR "nanosvg.h is missing: run cmake/fetch-nanosvg.sh, or set WALLSLATE_NANOSVG_DIR")
endif()
