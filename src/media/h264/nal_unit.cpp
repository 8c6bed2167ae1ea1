// Extraction of NAL units from the byte stream (Annex B) and their headers (7.3.1).
#include "media/h264/nal_unit.h"

namespace h264 {

namespace {

constexpr u8 EmulationPreventionByte = 3;
constexpr u8 StartCodeEnd = 1;
constexpr u32 MinStartCodeData = 4; // a start code and one byte behind it

bool BeginsWithStartCode(const u8* data, u32 length) {
    return length >= MinStartCodeData && data[0] == 0 && data[1] == 0 && data[2] <= StartCodeEnd;
}

// Position behind the first 00 00 01, or 0 when there is none.
u32 FindFirstStartCode(const u8* data, u32 length) {
    for (u32 i = 2; i < length; ++i) {
        if (data[i] == StartCodeEnd && data[i - 1] == 0 && data[i - 2] == 0)
            return i + 1;
    }
    return 0;
}

// What the scan for the end of a unit learns on its way.
struct UnitScan {
    u32 end = 0;  // behind the unit's last byte, trailing zeros excluded
    u32 next = 0; // where the next start code begins, or the end of the data
    bool hasEmulation = false;
    bool valid = true; // false: a run of three or more zeros inside
};

UnitScan ScanUnit(const u8* data, u32 start, u32 length) {
    UnitScan scan;
    scan.end = scan.next = length;
    u32 zeros = 0;
    for (u32 i = start; i < length; ++i) {
        if (data[i] == 0) {
            ++zeros;
            continue;
        }
        if (zeros >= 2) {
            if (data[i] == StartCodeEnd) {
                scan.end = i - zeros;
                scan.next = i - 2;
                return scan;
            }
            scan.hasEmulation |= data[i] == EmulationPreventionByte;
            scan.valid &= zeros == 2;
        }
        zeros = 0;
    }
    scan.end = length - zeros;
    return scan;
}

// 7.3.1: drops every emulation_prevention_three_byte. False when a sequence stands there that no encoder may
// write.
bool RemoveEmulationPrevention(NalBytes* unit) {
    u8* const data = unit->data;
    u32 written = 0;
    u32 zeros = 0;
    for (u32 i = 0; i < unit->size; ++i) {
        const u8 byte = data[i];
        if (zeros == 2 && byte == EmulationPreventionByte) {
            if (i + 1 == unit->size || data[i + 1] > EmulationPreventionByte)
                return false;
            zeros = 0;
            continue;
        }
        if (zeros == 2 && byte < EmulationPreventionByte)
            return false;
        zeros = byte == 0 ? zeros + 1 : 0;
        data[written++] = byte;
    }
    unit->size = written;
    return true;
}

} // namespace

bool ExtractNalUnit(u8* stream, u32 length, NalBytes* unit, u32* readBytes) {
    *readBytes = length;
    if (!BeginsWithStartCode(stream, length)) {
        *unit = {stream, length};
        return RemoveEmulationPrevention(unit);
    }
    const u32 start = FindFirstStartCode(stream, length);
    if (start == 0)
        return false;
    const UnitScan scan = ScanUnit(stream, start, length);
    *readBytes = scan.next;
    *unit = {stream + start, scan.end > start ? scan.end - start : 0};
    return scan.valid && (!scan.hasEmulation || RemoveEmulationPrevention(unit));
}

bool DecodeNalUnitHeader(BitReader& reader, NalUnit* nalUnit) {
    reader.Skip(1); // forbidden_zero_bit
    nalUnit->nal_ref_idc = static_cast<u8>(reader.ReadBits(2));
    nalUnit->nal_unit_type = static_cast<NalUnitType>(reader.ReadBits(5));
    if (reader.Failed())
        return false;
    switch (nalUnit->nal_unit_type) {
    case NalUnitType::DataPartitionA:
    case NalUnitType::DataPartitionB:
    case NalUnitType::DataPartitionC:
        return false;
    case NalUnitType::IdrSlice:
    case NalUnitType::SeqParamSet:
    case NalUnitType::PicParamSet:
        return nalUnit->IsReference();
    case NalUnitType::Sei:
    case NalUnitType::AccessUnitDelimiter:
    case NalUnitType::EndOfSequence:
    case NalUnitType::EndOfStream:
    case NalUnitType::FillerData:
        return !nalUnit->IsReference();
    default:
        return true;
    }
}

} // namespace h264
