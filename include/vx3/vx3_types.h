/*
 * The constants, records and callbacks of the C interface. Included by vx3/vx3.h, which is the header to
 * include.
 */
#ifndef VX3_VX3_TYPES_H
#define VX3_VX3_TYPES_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct Manager Manager;
typedef struct Device Device;
typedef struct SubDevice SubDevice;
typedef struct Image Image;

/* Transport families for Manager_Create, one bit each; VX3_FAMILY_ALL also means "any family". */
enum {
    VX3_FAMILY_VIRTUAL = 1,
    VX3_FAMILY_GIGE_VISION = 2,
    VX3_FAMILY_GENCP = 8,
    VX3_FAMILY_GRABBER = 32,
    VX3_FAMILY_MISC = 128,
    VX3_FAMILY_REMOTE = 1024,
    VX3_FAMILY_ALL = 65535
};

/* Results with a name; the library's own code table is the same. */
enum {
    VX3_OK = 0,
    VX3_STATUS_QUEUE_FULL = (int)0x80000001u,
    VX3_STATUS_NO_BUFFER = (int)0x80000003u,     /* no image or block buffer is free */
    VX3_STATUS_NOT_FOUND = (int)0x80000004u,     /* also: out of range, invalid argument or address */
    VX3_STATUS_NOT_SUPPORTED = (int)0x80000006u, /* by this object */
    VX3_STATUS_NO_IP_ADDRESS = (int)0x80000007u, /* of the network card */
    VX3_STATUS_NOT_CONNECTED = (int)0x80000008u,
    VX3_STATUS_ALREADY_CONNECTED = (int)0x80000009u,
    VX3_STATUS_ALREADY_STREAMING = (int)0x8000000Bu,
    VX3_STATUS_ALREADY_OPEN = (int)0x8000000Du,
    VX3_STATUS_NOT_OPEN = (int)0x8000000Eu,
    VX3_STATUS_STILL_STREAMING = (int)0x8000000Fu,
    VX3_STATUS_MALFORMED = (int)0x80000018u, /* answer or packet */
    VX3_STATUS_INCOMPLETE_WRITE = (int)0x80000019u,
    VX3_STATUS_TIME_OUT = (int)0x8000001Bu,
    VX3_STATUS_PORT_NOT_OPEN = (int)0x8000001Fu,
    VX3_STATUS_NODE_FAILED = (int)0x80000021u, /* the feature refused or could not be reached */
    VX3_STATUS_NOT_AVAILABLE = (int)0x80000022u,
    VX3_STATUS_WRONG_STATE = (int)0x80000024u,
    VX3_STATUS_OPEN_FAILED = (int)0x80000025u, /* of a device node */
    VX3_STATUS_DEVICE_LOST = (int)0x80000026u,
    VX3_STATUS_GVCP = (int)0x80010000u,              /* plus the status that the camera answered */
    VX3_STATUS_GVCP_ACCESS_DENIED = (int)0x80018006u /* another program controls the camera */
};

/* How grave a line of the log is. */
enum {
    VX3_LOG_NONE = -1, /* SDKSetLogLevel: print nothing */
    VX3_LOG_FATAL = 0,
    VX3_LOG_ERROR = 300,
    VX3_LOG_WARNING = 400,
    VX3_LOG_INFO = 600,
    VX3_LOG_DEBUG = 700
};

/* What Image_GetImageInfo tells; all zero when there is no image. */
typedef struct ImageDescription {
    uint32_t imageType;   /* GigE Vision payload type; 1 = image */
    uint32_t pixelFormat; /* PFNC code */
    uint32_t width;       /* pixels */
    uint32_t height;      /* lines */
    uint32_t dataSize;    /* bytes of pixel data, line padding included */
    uint32_t reserved;
    uint64_t blockId; /* frame number */
} ImageDescription;

/* What Image_GetFrameInformation tells. */
typedef struct FrameInformation {
    uint64_t blockId;       /* frame number */
    uint64_t timestamp;     /* when the frame was taken, in ticks of the camera's clock: its feature
                               GevTimestampTickFrequency or TimestampIncrement says how long one is */
    uint32_t isComplete;    /* 1 when every packet arrived */
    uint32_t lostPackets;   /* that never arrived: their pixels are an earlier frame's or none */
    uint32_t resentPackets; /* that were asked for again */
    uint32_t lines;         /* that the camera says it sent; the height where it does not */
    uint32_t stride;        /* bytes from one line to the next */
    uint32_t paddingX;      /* of them, bytes behind the last pixel */
    uint32_t paddingY;      /* as the camera sent it */
    uint32_t offsetX;       /* of the region on the sensor, pixels */
    uint32_t offsetY;       /* lines */
    uint32_t reserved[5];
} FrameInformation;

/* What SubDevice_GetStreamStatisticsByIndex tells; all zero when there is no stream. */
typedef struct StreamStatistics {
    uint64_t blocks;           /* frames handed on, complete or not */
    uint64_t lostBlocks;       /* frames of which nothing arrived */
    uint64_t resentPackets;    /* packets asked for again */
    uint64_t missingPackets;   /* packets that never came */
    uint64_t incompleteBlocks; /* frames handed on with packets missing */
    uint64_t reserved;
} StreamStatistics;

/* What SubDevice_GetPublishState tells of a camera that is one for other hosts. Addresses in host order. */
typedef struct PublishedCamera {
    uint16_t port;              /* of its control channel */
    uint16_t standardPort;      /* 1: port 3956 too */
    uint16_t cameraLost;        /* 1: gone, or no longer answering; hosts are told */
    uint16_t streams;           /* that hosts have started */
    uint32_t controllerIp;      /* who controls it; 0: nobody */
    uint32_t controllerPort;    /* likewise */
    uint64_t frames;            /* sent */
    uint64_t bytes;             /* of their pixels */
    uint64_t packetsResent;     /* asked for again, and sent */
    uint64_t requestsNotServed; /* asked for too late */
    uint64_t overLimit;         /* frames dropped by the bandwidth limit */
    uint64_t overrun;           /* frames dropped because the network was slower */
} PublishedCamera;

/* One feature as GetNodes writes it; both texts are allocated by the library, FreeNodes frees them. */
typedef struct NodeRecord {
    char* name;
    uint32_t nameSize; /* bytes, NUL included */
    char* value;
    uint32_t valueSize; /* bytes, NUL included */
} NodeRecord;

/* What setting one feature on one of several cameras came to. */
typedef struct DeviceParamSetResult {
    char name[256]; /* the camera's name, cut to 255 characters */
    int32_t status; /* -1 when the camera has no features */
} DeviceParamSetResult;

/* What GetNodeType stores. */
enum {
    VX3_NODE_INTEGER = 0,
    VX3_NODE_FLOAT = 1,
    VX3_NODE_BOOLEAN = 2,
    VX3_NODE_COMMAND = 3,
    VX3_NODE_ENUMERATION = 4,
    VX3_NODE_STRING = 5,
    VX3_NODE_REGISTER = 6,
    VX3_NODE_OTHER = 7
};

/* What GetNodeAccessMode stores. */
enum {
    VX3_ACCESS_NOT_AVAILABLE = 1,
    VX3_ACCESS_WRITE_ONLY = 2,
    VX3_ACCESS_READ_ONLY = 3,
    VX3_ACCESS_READ_WRITE = 4
};

/*
 * Called for every frame, on the stream's delivery thread. `image` is a new handle that the callee owns and
 * gives back with Image_Recycle, from any thread; until then its memory is not reused. A callback that blocks
 * lets frames queue up (63) and then be dropped and counted. `camera` stays valid for the whole call.
 */
typedef void (*StreamImageCallback)(Image* image, SubDevice* camera, unsigned int streamIndex,
                                    unsigned int miscValue, void* userData);

/* Called for every line of the log, on the thread that logs, of VX3_LOG_* level `level`; `time` is local
 * time. */
typedef void (*LogCallback)(int level, const char* time, const char* text, void* userData);

#ifdef __cplusplus
}
#endif

#endif /* VX3_VX3_TYPES_H */
