// The C interface of the GenICam GenTL standard 1.6: types and the signatures of a producer's entry points. A
// producer is a shared library "*.cti" that exports them undecorated; consumers look them up by name. All
// declarations are the standard's; outputs are void after an error.
#pragma once

#include "platform/gentl/Constants.h"

#include <cstddef>
#include <cstdint>

namespace GenTL {

using GC_ERROR = std::int32_t;
using bool8_t = std::uint8_t;
using TL_HANDLE = void*;
using IF_HANDLE = void*;
using DEV_HANDLE = void*;
using DS_HANDLE = void*;
using BUFFER_HANDLE = void*;
using PORT_HANDLE = void*;
using EVENTSRC_HANDLE = void*;
using EVENT_HANDLE = void*;

constexpr void* GENTL_INVALID_HANDLE = nullptr;

#pragma pack(push, 1)
struct EVENT_NEW_BUFFER_DATA {
    BUFFER_HANDLE BufferHandle;
    void* pUserPointer;
};
struct PORT_REGISTER_STACK_ENTRY {
    std::uint64_t Address;
    void* pBuffer;
    std::size_t Size;
};
struct SINGLE_CHUNK_DATA {
    std::uint64_t ChunkID;
    std::ptrdiff_t ChunkOffset;
    std::size_t ChunkLength;
};
struct DS_BUFFER_INFO_STACKED {
    std::int32_t iInfoCmd; // BUFFER_INFO_CMD
    std::int32_t iType;    // INFO_DATATYPE
    void* pBuffer;
    std::size_t iSize;
    GC_ERROR iResult;
};
struct DS_BUFFER_PART_INFO_STACKED {
    std::uint32_t iPartIndex;
    std::int32_t iInfoCmd; // BUFFER_PART_INFO_CMD
    GC_ERROR iResult;
    std::int32_t iType; // INFO_DATATYPE
    void* pBuffer;
    std::size_t iSize;
};
#pragma pack(pop)

static_assert(sizeof(void*) != 8 ||
                  (sizeof(EVENT_NEW_BUFFER_DATA) == 16 && sizeof(SINGLE_CHUNK_DATA) == 24 &&
                   sizeof(PORT_REGISTER_STACK_ENTRY) == 24 && sizeof(DS_BUFFER_INFO_STACKED) == 28 &&
                   sizeof(DS_BUFFER_PART_INFO_STACKED) == 32),
              "the structures are packed by one byte");

// clang-format off
// X(name, (parameters)): what every producer exports. Enumerations travel as 32-bit integers.
#define VX3_GENTL_FUNCTIONS(X) \
    X(GCGetInfo, (std::int32_t command, std::int32_t* type, void* buffer, std::size_t* size)) \
    X(GCGetLastError, (GC_ERROR* code, char* text, std::size_t* size)) \
    X(GCInitLib, ()) \
    X(GCCloseLib, ()) \
    X(GCReadPort, (PORT_HANDLE port, std::uint64_t address, void* buffer, std::size_t* size)) \
    X(GCWritePort, (PORT_HANDLE port, std::uint64_t address, const void* buffer, std::size_t* size)) \
    X(GCGetPortURL, (PORT_HANDLE port, char* url, std::size_t* size)) \
    X(GCGetPortInfo, (PORT_HANDLE port, std::int32_t command, std::int32_t* type, void* buffer, std::size_t* size)) \
    X(GCRegisterEvent, (EVENTSRC_HANDLE source, std::int32_t event, EVENT_HANDLE* handle)) \
    X(GCUnregisterEvent, (EVENTSRC_HANDLE source, std::int32_t event)) \
    X(EventGetData, (EVENT_HANDLE event, void* buffer, std::size_t* size, std::uint64_t timeoutMs)) \
    X(EventGetDataInfo, (EVENT_HANDLE event, const void* data, std::size_t dataSize, std::int32_t command, std::int32_t* type, void* buffer, std::size_t* size)) \
    X(EventGetInfo, (EVENT_HANDLE event, std::int32_t command, std::int32_t* type, void* buffer, std::size_t* size)) \
    X(EventFlush, (EVENT_HANDLE event)) \
    X(EventKill, (EVENT_HANDLE event)) \
    X(TLOpen, (TL_HANDLE* system)) \
    X(TLClose, (TL_HANDLE system)) \
    X(TLGetInfo, (TL_HANDLE system, std::int32_t command, std::int32_t* type, void* buffer, std::size_t* size)) \
    X(TLGetNumInterfaces, (TL_HANDLE system, std::uint32_t* count)) \
    X(TLGetInterfaceID, (TL_HANDLE system, std::uint32_t index, char* id, std::size_t* size)) \
    X(TLGetInterfaceInfo, (TL_HANDLE system, const char* id, std::int32_t command, std::int32_t* type, void* buffer, std::size_t* size)) \
    X(TLOpenInterface, (TL_HANDLE system, const char* id, IF_HANDLE* interface)) \
    X(TLUpdateInterfaceList, (TL_HANDLE system, bool8_t* changed, std::uint64_t timeoutMs)) \
    X(IFClose, (IF_HANDLE interface)) \
    X(IFGetInfo, (IF_HANDLE interface, std::int32_t command, std::int32_t* type, void* buffer, std::size_t* size)) \
    X(IFGetNumDevices, (IF_HANDLE interface, std::uint32_t* count)) \
    X(IFGetDeviceID, (IF_HANDLE interface, std::uint32_t index, char* id, std::size_t* size)) \
    X(IFUpdateDeviceList, (IF_HANDLE interface, bool8_t* changed, std::uint64_t timeoutMs)) \
    X(IFGetDeviceInfo, (IF_HANDLE interface, const char* id, std::int32_t command, std::int32_t* type, void* buffer, std::size_t* size)) \
    X(IFOpenDevice, (IF_HANDLE interface, const char* id, std::int32_t access, DEV_HANDLE* device)) \
    X(DevGetPort, (DEV_HANDLE device, PORT_HANDLE* port)) \
    X(DevGetNumDataStreams, (DEV_HANDLE device, std::uint32_t* count)) \
    X(DevGetDataStreamID, (DEV_HANDLE device, std::uint32_t index, char* id, std::size_t* size)) \
    X(DevOpenDataStream, (DEV_HANDLE device, const char* id, DS_HANDLE* stream)) \
    X(DevGetInfo, (DEV_HANDLE device, std::int32_t command, std::int32_t* type, void* buffer, std::size_t* size)) \
    X(DevClose, (DEV_HANDLE device)) \
    X(DSAnnounceBuffer, (DS_HANDLE stream, void* memory, std::size_t size, void* userPointer, BUFFER_HANDLE* buffer)) \
    X(DSAllocAndAnnounceBuffer, (DS_HANDLE stream, std::size_t size, void* userPointer, BUFFER_HANDLE* buffer)) \
    X(DSFlushQueue, (DS_HANDLE stream, std::int32_t operation)) \
    X(DSStartAcquisition, (DS_HANDLE stream, std::int32_t flags, std::uint64_t count)) \
    X(DSStopAcquisition, (DS_HANDLE stream, std::int32_t flags)) \
    X(DSGetInfo, (DS_HANDLE stream, std::int32_t command, std::int32_t* type, void* buffer, std::size_t* size)) \
    X(DSGetBufferID, (DS_HANDLE stream, std::uint32_t index, BUFFER_HANDLE* buffer)) \
    X(DSClose, (DS_HANDLE stream)) \
    X(DSRevokeBuffer, (DS_HANDLE stream, BUFFER_HANDLE buffer, void** memory, void** userPointer)) \
    X(DSQueueBuffer, (DS_HANDLE stream, BUFFER_HANDLE buffer)) \
    X(DSGetBufferInfo, (DS_HANDLE stream, BUFFER_HANDLE handle, std::int32_t command, std::int32_t* type, void* buffer, std::size_t* size)) \
    X(GCGetNumPortURLs, (PORT_HANDLE port, std::uint32_t* count)) \
    X(GCGetPortURLInfo, (PORT_HANDLE port, std::uint32_t index, std::int32_t command, std::int32_t* type, void* buffer, std::size_t* size)) \
    X(GCReadPortStacked, (PORT_HANDLE port, PORT_REGISTER_STACK_ENTRY* entries, std::size_t* count)) \
    X(GCWritePortStacked, (PORT_HANDLE port, PORT_REGISTER_STACK_ENTRY* entries, std::size_t* count))
// What came with versions 1.3 to 1.6 and may be missing.
#define VX3_GENTL_LATER_FUNCTIONS(X) \
    X(DSGetBufferChunkData, (DS_HANDLE stream, BUFFER_HANDLE buffer, SINGLE_CHUNK_DATA* chunks, std::size_t* count)) \
    X(IFGetParentTL, (IF_HANDLE interface, TL_HANDLE* system)) \
    X(DevGetParentIF, (DEV_HANDLE device, IF_HANDLE* interface)) \
    X(DSGetParentDev, (DS_HANDLE stream, DEV_HANDLE* device)) \
    X(DSGetNumBufferParts, (DS_HANDLE stream, BUFFER_HANDLE buffer, std::uint32_t* count)) \
    X(DSGetBufferPartInfo, (DS_HANDLE stream, BUFFER_HANDLE handle, std::uint32_t part, std::int32_t command, std::int32_t* type, void* buffer, std::size_t* size)) \
    X(DSAnnounceCompositeBuffer, (DS_HANDLE stream, std::size_t count, void** segments, std::size_t* sizes, void* userPointer, BUFFER_HANDLE* buffer)) \
    X(DSGetBufferInfoStacked, (DS_HANDLE stream, BUFFER_HANDLE buffer, DS_BUFFER_INFO_STACKED* infos, std::size_t count)) \
    X(DSGetBufferPartInfoStacked, (DS_HANDLE stream, BUFFER_HANDLE buffer, DS_BUFFER_PART_INFO_STACKED* infos, std::size_t count)) \
    X(DSGetNumFlows, (DS_HANDLE stream, std::uint32_t* count)) \
    X(DSGetFlowInfo, (DS_HANDLE stream, std::uint32_t flow, std::int32_t command, std::int32_t* type, void* buffer, std::size_t* size)) \
    X(DSGetNumBufferSegments, (DS_HANDLE stream, BUFFER_HANDLE buffer, std::uint32_t* count)) \
    X(DSGetBufferSegmentInfo, (DS_HANDLE stream, BUFFER_HANDLE handle, std::uint32_t segment, std::int32_t command, std::int32_t* type, void* buffer, std::size_t* size))
// clang-format on

// Pointers to them: PGCGetInfo, ...
// NOLINTNEXTLINE(bugprone-macro-parentheses): the parameters bring theirs
#define VX3_GENTL_POINTER(name, parameters) using P##name = GC_ERROR(*) parameters;
VX3_GENTL_FUNCTIONS(VX3_GENTL_POINTER)
VX3_GENTL_LATER_FUNCTIONS(VX3_GENTL_POINTER)
#undef VX3_GENTL_POINTER

} // namespace GenTL
