// The plug-in's table of contents: one line per member, its declaration in the host language beside the
// function that the host calls, in the registered order.
#include "plugin/registration/tables.h"

#include "largeblock/memoryblockzor.h"
#include "memoryblock/members.h"
#include "plugin/registration/table_rows.h"

using namespace memoryblock;
using namespace largeblock;

namespace {

template <Text Declaration, auto Function, auto Setter = nullptr>
constexpr auto member = method_record<REALmemoryBlock, Declaration, Function, Setter>();
template <Text Name, Text Type, auto Getter>
constexpr auto property = property_record<REALmemoryBlock, Name, Type, Getter>();
template <Text Declaration, auto Function>
constexpr auto class_member = method_record<REALobject, Declaration, Function>();
template <Text Name, Text Type, auto Getter>
constexpr auto class_property = property_record<REALobject, Name, Type, Getter>();

// One line per member, however long.
// clang-format off

constinit Table memBlkClassProperties{
    property<"BytesZOR", "Integer", GetBlockSize>,
};

constinit Table memoryblockMethods{
    member<"_Calc3te(Source1 as Integer, Source2 as Integer, Source3 as Integer, Source4 as Integer, Dest1 as Integer, Dest2 as Integer, Dest3 as Integer, Dest4 as Integer, Tolerance as double, offsetByte as Integer = 0, Length as integer = 0)", Calc3te>,
    member<"_Calc2te(iByteMax as integer = 255, offsetByte as Integer = 0, Length as integer = 0, WithSum0 as boolean = true)", Calc2te>,
    member<"_CalcLogSweepTableZOR(offsetByte as Integer, Z as integer, lw1 as integer, lw2 as integer, T as double)", CalcLogSweepTable>,
    member<"_ConvertPolarToCartesian(offsetByte as Integer, Z as integer, polarData as Memoryblock)", ConvertPolarToCartesian>,
    member<"_ConvertCartesianToPolar(offsetByte as Integer, Z as integer, CartesianData as Memoryblock)", ConvertCartesianToPolar>,
    member<"MultiplyUInt16ZOR(Factor as double, offsetByte as Integer = 0, lengthBytes as integer = 0)", MultiplyUInt16ZOR>,
    member<"MultiplyUInt8ZOR(Factor as double, offsetByte as Integer = 0, lengthBytes as integer = 0)", MultiplyUInt8ZOR>,
    member<"MinZOR(firstMem as Ptr, secondMem as Ptr, BitSize as integer = 8, Signed as Boolean = false, offsetByte as Integer = 0, lengthBytes as integer = 0) as boolean", MinZOR>,
    member<"MaxZOR(firstMem as Ptr, secondMem as Ptr, BitSize as integer = 8, Signed as Boolean = false, offsetByte as Integer = 0, lengthBytes as integer = 0) as boolean", MaxZOR>,
    member<"MirrorBitsInBytesZOR(offsetByte as Integer, lengthByte as integer)", MirrorBitsInBytesZOR>,
    member<"MirrorBytesZOR(offsetByte as Integer = 0, lengthByte as integer = -1)", MirrorBytesZOR>,
    member<"MirrorBitsZOR(offsetBit as Integer, lengthBit as integer)", MirrorBitsZOR>,
    member<"AddressZOR(offset as Int64 = 0) as UInt64", AddressZOR>,
    member<"AddressPtrZOR(offset as Int64 = 0) as Ptr", AddressPtrZOR>,
    member<"OSTypeZOR(offset as Integer) as String", getOSType, setOSType>,
    member<"GetStringZOR(offset as Integer, numBytes as Integer) as String", getString>,
    member<"SetStringZOR(str as String, offset as Integer)", setString>,
    member<"SwapBytesZOR(offset as Integer, numBytes as Integer)", swapBytes>,
    member<"SwapBytes16ZOR(offset as Integer, numBytes as Integer)", swapBytes16>,
    member<"SwapBytes32ZOR(offset as Integer, numBytes as Integer)", swapBytes32>,
    member<"BytesEqualZOR(srcOfs as Integer, numBytes as Integer, destBlk as MemoryBlock, destOfs as Integer) as Boolean", BytesEqualZOR>,
    member<"BytesZeroZOR(srcOfs as Integer, numBytes as Integer) as Boolean", BytesZeroZOR>,
    member<"FindNotByteZOR(srcOfs as Integer, numBytes as Integer, byteValue as integer) as integer", FindNotByteZOR>,
    member<"FindByteZOR(srcOfs as Integer, numBytes as Integer, byteValue as integer) as integer", FindByteZOR>,
    member<"CopyBytesZOR(srcOfs as Integer, numBytes as Integer, destOfs as Integer)", copyBytes1>,
    member<"CopyBytesZOR(srcOfs as Integer, numBytes as Integer, destBlk as MemoryBlock, destOfs as Integer)", copyBytes2>,
    member<"CopyBytesToMacPtrZOR(srcOfs as Integer, numBytes as Integer, destPtr as Ptr)", toMacPtr>,
    member<"CopyBytesFromMacPtrZOR(srcPtr as Ptr, numBytes as Integer, destOfs as Integer)", fromMacPtr>,
    member<"CopyBytesToMacHandleZOR(srcOfs as Integer, numBytes as Integer, destHandle as Integer)", toMacHdl>,
    member<"CopyBytesFromMacHandleZOR(srcHandle as Integer, numBytes as Integer, destOfs as Integer)", fromMacHdl>,
    member<"FindStringZOR(srcOfs as Integer, maxBytes as Integer, target as String) as Integer", findBytes1>,
    member<"FindBytesZOR(srcOfs as Integer, maxBytes as Integer, target as MemoryBlock, targOfs as Integer, targLen as Integer) as Integer", findBytes2>,
    member<"FSSpecZOR(offset as Integer) as FolderItem", getFSSpec, setFSSpec>,
    member<"MidZOR(offset as integer) as Memoryblock", getMid1>,
    member<"MidZOR(offset As Integer, length As Integer) as Memoryblock", getMid2>,
    member<"LeftZOR(length as integer) as Memoryblock", getLeft>,
    member<"RightZOR(length As Integer) as Memoryblock", getRight>,
    member<"AppendZOR(other as Memoryblock) as Memoryblock", getAppend>,
    member<"FillBytesZOR(offset as integer, count as integer, value as integer)", fillbytes>,
    member<"InvertBytesZOR(offset as integer, count as integer)", InvertBytesZOR>,
    member<"CopyNthBytesZOR(source as memoryblock, SourceOffsetBytes as integer, DestinationOffsetBytes as integer, ByteCount as integer, StepCount as integer, NumberOfSteps as integer) as boolean", CopyNthBytes>,
    member<"CopyNthBitsZOR(source as memoryblock, SourceOffsetBits as integer, DestinationOffsetBits as integer, BitCount as integer, StepCount as integer, NumberOfSteps as integer) as boolean", CopyNthBits>,
    member<"ExpandBitsZOR(dest as memoryblock, SourceByteCount as integer, LowValue as integer = 0, HighValue as integer = 255) as boolean", ExpandBitsZOR>,
};

constinit Table MemProperties{
    class_property<"Address", "Int64", GetAddress>,
    class_property<"Size", "Int64", GetSize>,
    class_property<"Memory", "Memoryblock", GetMemory>,
};

constinit Table MemMethods{
    class_member<"Resize(Size as Int64) as boolean", Resize>,
    class_member<"Close", MemClose>,
    class_member<"Create(size as Int64) as boolean", CreateMem>,
};

// clang-format on

// A class record with these properties and methods and nothing else. The version word is written anew at
// start-up.
template <class Properties, class Methods>
consteval REALclassDefinition class_record(const char* name, Properties& properties, Methods& methods) {
    REALclassDefinition record = {};
    record.version = kNewestLayout;
    record.name = name;
    record.properties = &properties;
    record.propertyCount = Properties::kCount;
    record.methods = &methods;
    record.methodCount = Methods::kCount;
    record.flags = kClassAndMethodFlags;
    return record;
}

consteval REALclassDefinition large_block_record() {
    REALclassDefinition record = class_record("MemoryBlockZOR", MemProperties, MemMethods);
    record.instanceDataSize = 32;
    record.destructor = MemClose;
    return record;
}

}  // namespace

constinit REALclassDefinition memBlkClass =
    class_record("MemoryBlock", memBlkClassProperties, memoryblockMethods);
constinit REALclassDefinition MemClass = large_block_record();

struct GlobalMethod : REALmethodRecord<decltype(&newMemoryblockPtr)> {};
constinit GlobalMethod globalsMethods{
    method_record<void, "NewMemoryBlockFromPtrZOR(ptr as integer) as memoryblock", newMemoryblockPtr>()};
