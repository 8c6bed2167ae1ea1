// The listings of the symbol archives, as the build has written them.
    .section .rodata

    .global symbol_listing
symbol_listing:
    .incbin "symbol_files.txt"
    .global symbol_listing_end
symbol_listing_end:

    .section .note.GNU-stack, "", %progbits
