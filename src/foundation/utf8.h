// Form of UTF-8 sequences, as far as the core types need it. Sequences are judged by the standard's table of
// well-formed byte sequences: no overlong forms, no surrogates, nothing above U+10FFFF.
#pragma once

#include <cstdint>

// Length in bytes (1..4) of the well-formed sequence at text, of which `available` bytes may be read; 0 if
// there is none.
uint32_t Utf8SequenceLength(const char* text, uint32_t available);

// Replaces each byte that belongs to no well-formed sequence by '?'.
void ReplaceInvalidUtf8(char* text, uint32_t length);

// The largest length not above `limit` at which text, which is longer, can be cut without halving a sequence.
uint32_t Utf8CutLength(const char* text, uint32_t limit);
