#include "vx3/core/Status.h"

#include "vx3/core/Utilities.h"

namespace VX3 {

namespace {

struct StatusName {
    std::uint32_t code;
    const char* text;
};

constexpr StatusName StatusNames[] = {
#define VX3_STATUS_NAME(name, value, text) {value##U, text},
    VX3_STATUS_TABLE(VX3_STATUS_NAME)
#undef VX3_STATUS_NAME
};

// GigE Vision 2.x, "status codes"; the ones marked deprecated there still come from older cameras.
constexpr StatusName GvcpNames[] = {
    {0x0100U, "GEV_STATUS_PACKET_RESEND: the packet is a resent one"},
    {0x8001U, "GEV_STATUS_NOT_IMPLEMENTED: the device does not implement the command"},
    {0x8002U, "GEV_STATUS_INVALID_PARAMETER: a parameter of the command is invalid"},
    {0x8003U, "GEV_STATUS_INVALID_ADDRESS: there is no such address"},
    {0x8004U, "GEV_STATUS_WRITE_PROTECT: the register is read-only"},
    {0x8005U, "GEV_STATUS_BAD_ALIGNMENT: the address or length is badly aligned"},
    {0x8006U, "GEV_STATUS_ACCESS_DENIED: access denied, another application controls the device"},
    {0x8007U, "GEV_STATUS_BUSY: the device is busy"},
    {0x8008U, "GEV_STATUS_LOCAL_PROBLEM: local problem of the device"},
    {0x8009U, "GEV_STATUS_MSG_MISMATCH: request and acknowledge do not match"},
    {0x800AU, "GEV_STATUS_INVALID_PROTOCOL: protocol version not supported"},
    {0x800BU, "GEV_STATUS_NO_MSG: no message received"},
    {0x800CU, "GEV_STATUS_PACKET_UNAVAILABLE: the packet is not available any more"},
    {0x800DU, "GEV_STATUS_DATA_OVERRUN: the device's memory overran"},
    {0x800EU, "GEV_STATUS_INVALID_HEADER: the message header is invalid"},
    {0x800FU, "GEV_STATUS_WRONG_CONFIG: the device is configured inconsistently"},
    {0x8010U, "GEV_STATUS_PACKET_NOT_YET_AVAILABLE: the packet has not been acquired yet"},
    {0x8011U, "GEV_STATUS_PACKET_AND_PREV_REMOVED_FROM_MEMORY: this packet and all before it are gone"},
    {0x8012U, "GEV_STATUS_PACKET_REMOVED_FROM_MEMORY: the packet is gone"},
    {0x8013U, "GEV_STATUS_NO_REF_TIME: the device has no reference time"},
    {0x8014U, "GEV_STATUS_PACKET_TEMPORARILY_UNAVAILABLE: the packet cannot be resent at the moment"},
    {0x8015U, "GEV_STATUS_OVERFLOW: a queue of the device is full"},
    {0x8016U, "GEV_STATUS_ACTION_LATE: the scheduled action's time has passed"},
    {0x8017U, "GEV_STATUS_LEADER_TRAILER_OVERFLOW: leader or trailer exceed the packet size"},
    {0x8FFFU, "GEV_STATUS_ERROR: unspecified error of the device"},
};

// GenICam GenTL 1.6: what a producer answers, passed on as it comes.
struct ProducerCode {
    StatusCode code;
    const char* text;
};
constexpr ProducerCode ProducerCodes[] = {
    {-1001, "GC_ERR_ERROR: the producer failed and does not say why"},
    {-1002, "GC_ERR_NOT_INITIALIZED: the producer is not initialised"},
    {-1003, "GC_ERR_NOT_IMPLEMENTED: the producer cannot do this"},
    {-1004, "GC_ERR_RESOURCE_IN_USE: already open or in use"},
    {-1005, "GC_ERR_ACCESS_DENIED: access denied, another program may hold it"},
    {-1006, "GC_ERR_INVALID_HANDLE: it is not open, or gone"},
    {-1007, "GC_ERR_INVALID_ID: the producer knows nothing of that name"},
    {-1008, "GC_ERR_NO_DATA: there is nothing of that kind"},
    {-1009, "GC_ERR_INVALID_PARAMETER: a parameter is invalid"},
    {-1010, "GC_ERR_IO: communication failed"},
    {-1011, "GC_ERR_TIMEOUT: time-out"},
    {-1012, "GC_ERR_ABORT: the wait was ended"},
    {-1013, "GC_ERR_INVALID_BUFFER: too few buffers, or one that is not usable"},
    {-1014, "GC_ERR_NOT_AVAILABLE: not available now"},
    {-1015, "GC_ERR_INVALID_ADDRESS: there is no such address"},
    {-1016, "GC_ERR_BUFFER_TOO_SMALL: a buffer is too small"},
    {-1017, "GC_ERR_INVALID_INDEX: the index is past the end"},
    {-1018, "GC_ERR_PARSING_CHUNK_DATA: the chunk data cannot be read"},
    {-1019, "GC_ERR_INVALID_VALUE: the register refuses the value"},
    {-1020, "GC_ERR_RESOURCE_EXHAUSTED: the producer has no resources left"},
    {-1021, "GC_ERR_OUT_OF_MEMORY: the producer has no memory left"},
    {-1022, "GC_ERR_BUSY: not possible while something else runs"},
    {-1023, "GC_ERR_AMBIGUOUS: more than one thing is meant"},
};
constexpr StatusCode FirstCustomProducerCode = -10000; // and down

template <std::size_t N>
const char* Find(const StatusName (&names)[N], std::uint32_t code) {
    for (const StatusName& entry : names)
        if (entry.code == code)
            return entry.text;
    return nullptr;
}

} // namespace

std::string StatusText(StatusCode code) {
    const auto bits = static_cast<std::uint32_t>(code);
    if (Status::IsGvcp(code)) {
        const char* text = Find(GvcpNames, bits & 0xFFFFU);
        return StringFormat("%s (GVCP status 0x%04x)", text != nullptr ? text : "refused by the device",
                            bits & 0xFFFFU);
    }
    if (const char* text = Find(StatusNames, bits))
        return text;
    for (const ProducerCode& entry : ProducerCodes)
        if (entry.code == code)
            return StringFormat("%s (GenTL %d)", entry.text, code);
    if (code <= FirstCustomProducerCode && code > 2 * FirstCustomProducerCode)
        return StringFormat("an error of the producer's own (GenTL %d)", code);
    return StringFormat(Failed(code) ? "error 0x%08x" : "status 0x%08x", bits);
}

} // namespace VX3
