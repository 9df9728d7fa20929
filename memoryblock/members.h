// The members of the MemoryBlock extension, as the host calls them: the block first, then the declared
// arguments. plugin/registration/tables.cpp has their declarations in the host language.
//
// Offsets, counts and lengths are bytes unless a name says bits; offsets count from the block's first byte.
// A block whose size the host reports as greater than 0 is of known size; of another one a range is taken as
// it stands. Where a range reaches past the end of a block of known size, a member either cuts it there (it
// works on the part inside) or refuses it (nothing is read or written, and the result is the neutral one). A
// negative offset is always refused. Only what is said to raise raises. Bit n of a block is the bit 0x80 >>
// (n mod 8) of byte n div 8. Numbers lie in the processor's byte order and need no alignment.
//
// What nothing can check is the caller's: that an address (Ptr, handle) leads to memory, how many bytes lie
// there, and how many a block of unknown size has. Offsets and counts are 32-bit unless a declaration says
// Int64, so one call reaches 2 GiB from a block's first byte.
#pragma once

#include "plugin/records.h"

namespace memoryblock {

// Search and comparison (search.cpp). Results are offsets from the block's first byte. Nothing raises.

// The first byte that has, or has not, the low 8 bits of `byteValue`; -1 when there is none, and for a nil
// block, one without data, or `numBytes` of 0 or less. The range is cut.
int32_t FindByteZOR(REALmemoryBlock block, int32_t srcOfs, int32_t numBytes, int32_t byteValue);
int32_t FindNotByteZOR(REALmemoryBlock block, int32_t srcOfs, int32_t numBytes, int32_t byteValue);

// The first occurrence of a pattern that lies wholly in `maxBytes` bytes from `srcOfs` (0: the block's size
// as the limit); -1 when there is none, -2 for arguments that cannot be used. A size of exactly 0 is unknown
// here. findBytes1: the target string's stored bytes. findBytes2: `targLen` bytes of the target block from
// `targOfs`, or for a `targLen` of 0 or less all that follow.
int32_t findBytes1(REALmemoryBlock block, int32_t srcOfs, int32_t maxBytes, REALstring target);
int32_t findBytes2(REALmemoryBlock block, int32_t srcOfs, int32_t maxBytes, REALmemoryBlock target,
                   int32_t targOfs, int32_t targLen);

// Whether two ranges hold the same bytes; they may overlap. False for a nil block, one without data, and a
// refused range; true for `numBytes` 0.
REALboolean BytesEqualZOR(REALmemoryBlock block, int32_t srcOfs, int32_t numBytes, REALmemoryBlock destBlk,
                          int32_t destOfs);

// Whether all bytes of a range are 0: true for `numBytes` of 0 or less, whatever the offset; false for a nil
// block, one without data, and a refused range.
REALboolean BytesZeroZOR(REALmemoryBlock block, int32_t srcOfs, int32_t numBytes);

// Copying (copy.cpp). Every copy is one through an intermediate buffer, so that ranges may overlap. A
// negative count or offset, a range past the end of a block of known size, a nil block, address or handle
// copies nothing; nothing is raised. An address or a handle is used from its first byte, and must have
// `numBytes` bytes there; a handle is the 32-bit address of a pointer to the data.
void copyBytes1(REALmemoryBlock block, int32_t srcOfs, int32_t numBytes, int32_t destOfs);
void copyBytes2(REALmemoryBlock block, int32_t srcOfs, int32_t numBytes, REALmemoryBlock destBlk,
                int32_t destOfs);
void toMacPtr(REALmemoryBlock block, int32_t srcOfs, int32_t numBytes, void* destPtr);
void fromMacPtr(REALmemoryBlock block, void* srcPtr, int32_t numBytes, int32_t destOfs);
void toMacHdl(REALmemoryBlock block, int32_t srcOfs, int32_t numBytes, int32_t destHandle);
void fromMacHdl(REALmemoryBlock block, int32_t srcHandle, int32_t numBytes, int32_t destOfs);

// Strings, codes and file specifications (accessors.cpp). Nothing raises; a getter that cannot answer
// returns nil, and nothing is written where there is no room.

// The bytes as a string, cut at the block's end: US-ASCII when all are below 0x80, else without encoding. Nil
// for an empty range.
REALstring getString(REALmemoryBlock block, int32_t offset, int32_t numBytes);

// Writes the string's stored bytes, cut at the block's end, and nothing else.
void setString(REALmemoryBlock block, REALstring str, int32_t offset);

// The four-character code at `offset`, a 32-bit number whose most significant byte is the first character:
// US-ASCII or, with a byte of 0x80 or above, Mac OS Roman. Assigned strings are converted to Mac OS Roman
// unless they have no encoding; shorter ones are padded with spaces, of longer ones four bytes count; nil and
// what cannot be converted are four spaces.
REALstring getOSType(REALmemoryBlock block, int32_t offset);
void setOSType(REALmemoryBlock block, int32_t offset, REALstring value);

// The 70-byte file specification record at `offset` as a folder item, and the reverse.
REALfolderItem getFSSpec(REALmemoryBlock block, int32_t offset);
void setFSSpec(REALmemoryBlock block, int32_t offset, REALfolderItem item);

// Filling, inverting and byte order (fill.cpp). Ranges are cut.

// Sets bytes to the low 8 bits of `value`; a `count` of 0 or less reaches to the block's end. Raises for a
// nil block.
void fillbytes(REALmemoryBlock block, int32_t offset, int32_t count, int32_t value);

// Complements every bit of the range.
void InvertBytesZOR(REALmemoryBlock block, int32_t offset, int32_t count);

// Reverses the bytes of the whole range, or of each 16-bit or 32-bit unit from `offset` on; bytes after the
// last whole unit keep their values.
void swapBytes(REALmemoryBlock block, int32_t offset, int32_t numBytes);
void swapBytes16(REALmemoryBlock block, int32_t offset, int32_t numBytes);
void swapBytes32(REALmemoryBlock block, int32_t offset, int32_t numBytes);

// Mirroring (mirror.cpp). Ranges are cut. All raise for a nil block.

// Reverses the bits inside every byte of the range.
void MirrorBitsInBytesZOR(REALmemoryBlock block, int32_t offsetByte, int32_t lengthByte);

// Reverses the order of bytes; a negative length reaches to the block's end, and 0 is nothing.
void MirrorBytesZOR(REALmemoryBlock block, int32_t offsetByte, int32_t lengthByte);

// Reverses the order of the bits of a bit range; bits outside it keep their values.
void MirrorBitsZOR(REALmemoryBlock block, int32_t offsetBit, int32_t lengthBit);

// Gathering and expanding (stride.cpp).

// Packs `NumberOfSteps` pieces of `ByteCount` bytes, which begin `StepCount` bytes apart in the source (0 and
// negative distances too), side by side into the block, one piece after another. True when done, and for no
// steps; false when a block has no data or any piece is refused, and then nothing is copied. Raises for a nil
// block.
REALboolean CopyNthBytes(REALmemoryBlock block, REALmemoryBlock source, int32_t SourceOffsetBytes,
                         int32_t DestinationOffsetBytes, int32_t ByteCount, int32_t StepCount,
                         int32_t NumberOfSteps);

// The same with groups of `BitCount` bits, between which `StepCount` bits (a negative number: none) are
// skipped. Destination bytes are stored whole: bits before the first and after the last copied bit become 0.
REALboolean CopyNthBits(REALmemoryBlock block, REALmemoryBlock source, int32_t SourceOffsetBits,
                        int32_t DestinationOffsetBits, int32_t BitCount, int32_t StepCount,
                        int32_t NumberOfSteps);

// Writes a byte of `dest` for each bit of the block, from both blocks' first byte: the low 8 bits of
// `HighValue` for 1, of `LowValue` for 0. Works in groups of four source bytes; in the last group, source
// bytes past the source's end count as 0 and bytes past the end of `dest` are not written. False, with
// nothing written, for a nil block, one without data, a count of 0 or less, and a refused range. Raises
// nothing.
REALboolean ExpandBitsZOR(REALmemoryBlock block, REALmemoryBlock dest, int32_t SourceByteCount,
                          int32_t LowValue, int32_t HighValue);

// Slices, addresses and size (slices.cpp).

// New blocks with a copy of bytes: from `offset` on, at most `length` of them, the first or the last
// `length`, or the block's and then the other's. Nil for what is outside or empty. All raise for a nil block,
// and when the new block cannot be made; of two blocks joined, the latter gives nil only.
REALmemoryBlock getMid1(REALmemoryBlock block, int32_t offset);
REALmemoryBlock getMid2(REALmemoryBlock block, int32_t offset, int32_t length);
REALmemoryBlock getLeft(REALmemoryBlock block, int32_t length);
REALmemoryBlock getRight(REALmemoryBlock block, int32_t length);
REALmemoryBlock getAppend(REALmemoryBlock block, REALmemoryBlock other);

// The address of the byte at `offset`, up to the one just past the end; 0 outside, for a nil block, and for a
// negative offset.
uint64_t AddressZOR(REALmemoryBlock block, int64_t offset);
void* AddressPtrZOR(REALmemoryBlock block, int64_t offset);

// The size as the host reports it; 0 for a nil block.
int32_t GetBlockSize(REALmemoryBlock block, int32_t unused);

// A block over the memory at a 32-bit address, which it does not own; nil for the address 0. Called on
// nothing.
REALmemoryBlock newMemoryblockPtr(int32_t ptr);

// Minimum and maximum (minmax.cpp)

// Stores the smaller, or the larger, of each pair of integers of 8, 16, 32 or 64 bits from `offsetByte` on.
// The inputs are read from their first byte and may overlap the destination: one element is stored before the
// next is read. A length of 0 or less reaches to the block's end; the range is cut to whole elements. Each
// input must have as many bytes as the range has then: with the defaults, the block's size. False for another
// `BitSize`. Raises for a nil block, a nil input and a negative offset.
REALboolean MinZOR(REALmemoryBlock block, void* firstMem, void* secondMem, int32_t BitSize,
                   REALboolean Signed, int32_t offsetByte, int32_t lengthBytes);
REALboolean MaxZOR(REALmemoryBlock block, void* firstMem, void* secondMem, int32_t BitSize,
                   REALboolean Signed, int32_t offsetByte, int32_t lengthBytes);

// Scaling (scale.cpp)

// Multiplies unsigned samples by `Factor` in double precision, truncated toward zero and saturated at the
// largest sample. A factor below 0 or not a number changes nothing; 0 times an infinite factor is 0. A length
// of 0 or less reaches to the block's end; the range is cut to whole samples. Raise for a nil block and a
// negative offset.
void MultiplyUInt8ZOR(REALmemoryBlock block, double Factor, int32_t offsetByte, int32_t lengthBytes);
void MultiplyUInt16ZOR(REALmemoryBlock block, double Factor, int32_t offsetByte, int32_t lengthBytes);

// Sweep table and polar conversion (polar.cpp). Arrays of `Z` pairs of 32-bit floats, 8 bytes each, cut to
// the whole pairs inside the blocks. All raise for a nil block and a negative offset.

// The logarithmic sine sweep from `lw1` to `lw2` cycles in `T` pairs, of amplitude 0.944, each sample
// followed by its position times 16 turns (kernels/polar.h has the formula).
void CalcLogSweepTable(REALmemoryBlock block, int32_t offsetByte, int32_t Z, int32_t lw1, int32_t lw2,
                       double T);

// Magnitude and angle (radians) to x and y, and back, from the first byte of the other block to `offsetByte`
// of this one. A nil other block does nothing. In place, pair after pair.
void ConvertPolarToCartesian(REALmemoryBlock block, int32_t offsetByte, int32_t Z, REALmemoryBlock polarData);
void ConvertCartesianToPolar(REALmemoryBlock block, int32_t offsetByte, int32_t Z,
                             REALmemoryBlock CartesianData);

// Groups of four bytes (groups.cpp). A length of 0 or less reaches to the block's end; only groups that lie
// wholly inside a block of known size are changed. Both raise for a nil block and a negative offset.

// Sets the fourth byte of each group to `iByteMax` minus the sum of the other three, from 0 to 255; with
// `WithSum0` to 0 where that sum is 0.
void Calc2te(REALmemoryBlock block, int32_t iByteMax, int32_t offsetByte, int32_t Length,
             REALboolean WithSum0);

// Replaces each group whose bytes lie within Source * (1 - Tolerance) and Source * (1 + Tolerance), truncated
// to whole numbers, by the low 8 bits of the Dest values.
void Calc3te(REALmemoryBlock block, int32_t Source1, int32_t Source2, int32_t Source3, int32_t Source4,
             int32_t Dest1, int32_t Dest2, int32_t Dest3, int32_t Dest4, double Tolerance, int32_t offsetByte,
             int32_t Length);

}  // namespace memoryblock
