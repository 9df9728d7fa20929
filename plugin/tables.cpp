// The plug-in's table of contents: one line per member, its declaration in the host language beside the
// function that the host calls, in the registered order.
#include "plugin/tables.h"

#include "largeblock/memoryblockzor.h"

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

// clang-format off: one line per member

constinit Table memBlkClassProperties{
    property<"BytesZOR", "Integer", GetBlockSize>,
};

constinit Table memoryblockMethods{
    member<"CopyBytesZOR(srcOfs as Integer, numBytes as Integer, destOfs as Integer)", copyBytes1>,
    member<"CopyBytesZOR(srcOfs as Integer, numBytes as Integer, destBlk as MemoryBlock, destOfs as Integer)",
           copyBytes2>,
    member<"CopyBytesToMacPtrZOR(srcOfs as Integer, numBytes as Integer, destPtr as Ptr)", toMacPtr>,
    member<"CopyBytesFromMacPtrZOR(srcPtr as Ptr, numBytes as Integer, destOfs as Integer)", fromMacPtr>,
    member<"CopyBytesToMacHandleZOR(srcOfs as Integer, numBytes as Integer, destHandle as Integer)",
           toMacHdl>,
    member<"CopyBytesFromMacHandleZOR(srcHandle as Integer, numBytes as Integer, destOfs as Integer)",
           fromMacHdl>,
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

// A class record with the given properties and methods; all that is not said is nil or 0. The version word is
// written at start-up.
template <class Properties, class Methods>
consteval REALclassDefinition class_record(const char* name, Properties& properties, Methods& methods) {
    REALclassDefinition record = {};
    record.version = 12;
    record.name = name;
    record.properties = &properties;
    record.propertyCount = Properties::kCount;
    record.methods = &methods;
    record.methodCount = Methods::kCount;
    record.flags = kMemberFlags;
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
constinit GlobalMethodRecord globalsMethods =
    method_record<void, "NewMemoryBlockFromPtrZOR(ptr as integer) as memoryblock", newMemoryblockPtr>();
