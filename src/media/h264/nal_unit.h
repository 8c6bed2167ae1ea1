// The byte stream of Annex B and the NAL unit of clause 7.3.1: finding a unit, removing its emulation
// prevention bytes, reading its header.
#pragma once

#include "media/h264/bits.h"

namespace h264 {

enum class NalUnitType : u8 { // Table 7-1, as far as it is told apart here
    NonIdrSlice = 1,
    DataPartitionA = 2,
    DataPartitionB = 3,
    DataPartitionC = 4,
    IdrSlice = 5,
    Sei = 6,
    SeqParamSet = 7,
    PicParamSet = 8,
    AccessUnitDelimiter = 9,
    EndOfSequence = 10,
    EndOfStream = 11,
    FillerData = 12,
    SeqParamSetExtension = 13 // this and all above are discarded
};

struct NalUnit {
    u8 nal_ref_idc = 0; // 0..3
    NalUnitType nal_unit_type{};

    bool IsIdr() const { return nal_unit_type == NalUnitType::IdrSlice; }
    bool IsSlice() const { return IsIdr() || nal_unit_type == NalUnitType::NonIdrSlice; }
    bool IsReference() const { return nal_ref_idc != 0; }
    // Types 0 and 13 upwards carry nothing for this decoder.
    bool IsDiscarded() const {
        return nal_unit_type == NalUnitType{} || nal_unit_type >= NalUnitType::SeqParamSetExtension;
    }
    // Types 6 to 11 always begin a new access unit behind the last slice of the old one.
    bool StartsAccessUnit() const {
        return nal_unit_type >= NalUnitType::Sei && nal_unit_type <= NalUnitType::EndOfStream;
    }
};

// The bytes of one unit within the caller's buffer.
struct NalBytes {
    u8* data = nullptr; // borrowed
    u32 size = 0;
};

// B.1: finds the first unit of `stream`. Data that does not begin with a start code is one unit as a whole.
// Emulation prevention bytes are removed in place. `readBytes` is how far the unit reaches, start code and
// trailing zeros included; it is set also when the unit is invalid (false).
bool ExtractNalUnit(u8* stream, u32 length, NalBytes* unit, u32* readBytes);

// 7.3.1 and the rules of 7.4.1 that tie type and reference flag together. False for a forbidden combination
// and for an empty unit.
bool DecodeNalUnitHeader(BitReader& reader, NalUnit* nalUnit);

} // namespace h264
