// The entry points of the test producer's data streams.
#include "Entry.h"

using namespace TestProducer;

EXPORT DSAnnounceBuffer(DS_HANDLE handle, void* memory, std::size_t size, void* userPointer,
                        BUFFER_HANDLE* buffer) {
    ENTRY(DSAnnounceBuffer);
    NEED(stream, As<Stream>(handle));
    return stream->Announce(memory, size, userPointer, buffer);
}
EXPORT DSAllocAndAnnounceBuffer(DS_HANDLE handle, std::size_t size, void* userPointer,
                                BUFFER_HANDLE* buffer) {
    ENTRY(DSAllocAndAnnounceBuffer);
    NEED(stream, As<Stream>(handle));
    return stream->Announce(nullptr, size, userPointer, buffer);
}
EXPORT DSFlushQueue(DS_HANDLE handle, std::int32_t operation) {
    ENTRY(DSFlushQueue);
    NEED(stream, As<Stream>(handle));
    return stream->Flush(operation);
}
EXPORT DSStartAcquisition(DS_HANDLE handle, std::int32_t, std::uint64_t) {
    ENTRY(DSStartAcquisition);
    NEED(stream, As<Stream>(handle));
    return Fail(stream->Start());
}
EXPORT DSStopAcquisition(DS_HANDLE handle, std::int32_t) {
    ENTRY(DSStopAcquisition);
    NEED(stream, As<Stream>(handle));
    return stream->Stop();
}
EXPORT DSGetInfo(DS_HANDLE handle, std::int32_t command, std::int32_t* type, void* buffer,
                 std::size_t* size) {
    ENTRY(DSGetInfo);
    NEED(stream, As<Stream>(handle));
    switch (command) {
    case STREAM_INFO_DEFINES_PAYLOADSIZE:
        return GiveNumber(static_cast<std::uint64_t>(TheSettings().Number("defines", 1)), INFO_DATATYPE_BOOL8,
                          type, buffer, size);
    case STREAM_INFO_PAYLOAD_SIZE:
        return GiveNumber(stream->PayloadSize(), INFO_DATATYPE_SIZET, type, buffer, size);
    case STREAM_INFO_BUF_ANNOUNCE_MIN:
        return GiveNumber(static_cast<std::uint64_t>(TheSettings().Number("minimum", 1)), INFO_DATATYPE_SIZET,
                          type, buffer, size);
    default:
        return GC_ERR_NOT_IMPLEMENTED;
    }
}
EXPORT DSGetBufferID(DS_HANDLE, std::uint32_t, BUFFER_HANDLE*) {
    ENTRY(DSGetBufferID);
    return GC_ERR_INVALID_INDEX;
}
EXPORT DSClose(DS_HANDLE handle) {
    ENTRY(DSClose);
    NEED(stream, As<Stream>(handle));
    TakeStream(stream->camera).reset();
    return GC_ERR_SUCCESS;
}
EXPORT DSRevokeBuffer(DS_HANDLE handle, BUFFER_HANDLE buffer, void** memory, void** userPointer) {
    ENTRY(DSRevokeBuffer);
    if (TheSettings().pace != 0 && TheSettings().copying && As<Stream>(handle) != nullptr &&
        As<Stream>(handle)->running) // a benchmark of copying
        return GC_ERR_BUSY;
    NEED(stream, As<Stream>(handle));
    return stream->Revoke(buffer, memory, userPointer);
}
EXPORT DSQueueBuffer(DS_HANDLE handle, BUFFER_HANDLE buffer) {
    ENTRY(DSQueueBuffer);
    NEED(stream, As<Stream>(handle));
    return stream->Queue(buffer);
}
EXPORT DSGetBufferInfo(DS_HANDLE handle, BUFFER_HANDLE buffer, std::int32_t command, std::int32_t* type,
                       void* room, std::size_t* size) {
    ENTRY(DSGetBufferInfo);
    NEED(stream, As<Stream>(handle));
    return stream->Info(buffer, command, type, room, size);
}
// Of version 1.6; without the setting as if the producer were older.
EXPORT DSGetBufferInfoStacked(DS_HANDLE handle, BUFFER_HANDLE buffer, DS_BUFFER_INFO_STACKED* infos,
                              std::size_t count) {
    ENTRY(DSGetBufferInfoStacked);
    if (TheSettings().pace == 0 && TheSettings().Number("stacked") == 0)
        return GC_ERR_NOT_IMPLEMENTED;
    NEED(stream, As<Stream>(handle));
    for (std::size_t i = 0; i < count; ++i) {
        std::int32_t type = 0;
        std::size_t size = infos[i].iSize;
        infos[i].iResult = stream->Info(buffer, infos[i].iInfoCmd, &type, infos[i].pBuffer, &size);
        infos[i].iType = type;
        infos[i].iSize = size;
    }
    return GC_ERR_SUCCESS;
}
