// Form of UTF-8 sequences, as far as the core types need it. Sequences are judged by the standard's table of
// well-formed byte sequences: no overlong forms, no surrogates, nothing above U+10FFFF.
#pragma once

#include <cstdint>

// Length in bytes (1..4) of the well-formed sequence at text, of which `available` bytes may be read; 0 if
// there is none.
uint32_t Utf8SequenceLength(const char* text, uint32_t available);

// Replaces each byte that belongs to no well-formed sequence by '?'.
void ReplaceInvalidUtf8(char* text, uint32_t length);

// Length of a text without the sequence at its end whose last bytes were cut off, if there is one.
uint32_t Utf8WithoutCutEnd(const char* text, uint32_t length);
