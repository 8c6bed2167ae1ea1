// The live page's files as bytes. web_files.cpp names them; a file's label ends where the next one's begins.
    .section .rodata

    .macro web_file name, file
    .global \name
\name:
    .incbin "\file"
    .global \name\()_end
\name\()_end:
    .endm

    web_file web_index, "desktop/web/index.html"
    web_file web_style, "desktop/web/style.css"
    web_file web_main, "desktop/web/main.js"
    web_file web_link, "desktop/web/link.js"
    web_file web_screen, "desktop/web/screen.js"
    web_file web_pixels, "desktop/web/pixels.js"
    web_file web_touch, "desktop/web/touch.js"
    web_file web_panels, "desktop/web/panels.js"
    web_file web_settings, "desktop/web/settings.js"
    web_file web_house, "desktop/web/house.js"
    web_file web_record, "desktop/web/record.js"
    web_file web_icon, "desktop/web/icon.svg"

    .section .note.GNU-stack, "", %progbits
