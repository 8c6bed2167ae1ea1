# The two TrueType files that the program carries: one family, regular and bold, with Latin, Cyrillic, Turkish and
# Romanian letters, kerning and digits of equal width (a clock does not tremble). Roboto was chosen by eye against
# Open Sans, Lato and Inter at 20 and at 230 pixels: narrow enough for long labels, clear when small, calm when huge.
set(WALLSLATE_FONT_FOLDER /usr/share/fonts/truetype/roboto/unhinted/RobotoTTF)
set(WALLSLATE_FONT_REGULAR ${WALLSLATE_FONT_FOLDER}/Roboto-Regular.ttf CACHE FILEPATH
    "TrueType file of the regular face (Debian: fonts-roboto-unhinted)")
set(WALLSLATE_FONT_BOLD ${WALLSLATE_FONT_FOLDER}/Roboto-Bold.ttf CACHE FILEPATH
    "TrueType file of the bold face (Debian: fonts-roboto-unhinted)")

foreach(font ${WALLSLATE_FONT_REGULAR} ${WALLSLATE_FONT_BOLD})
    if(NOT EXISTS ${font})
        message(FATAL_ERROR "${font} is missing: install fonts-roboto-unhinted, or set WALLSLATE_FONT_REGULAR and "
                            "WALLSLATE_FONT_BOLD to two TrueType files of your choice")
    endif()
endforeach()
