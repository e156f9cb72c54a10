/*
 * The flat C interface of libvx3: cameras, streams, images and features from plain C11, C++ or any
 * foreign-function interface. Link with -lvx3.
 *
 * Handles. Manager, Device (interface device: a network card, the virtual interface), SubDevice (camera) and
 * Image are opaque records that the library allocates; each is freed only by its own *_Destory or
 * Image_Recycle call. A null handle, and a handle that is not alive, is answered with -1 (or null, or zeros).
 * Free them in this order: images, streams stopped and closed, sub-devices, devices, manager.
 *
 * Results. 0 or a count is success. -1: bad handle, camera no longer there, or a null output. -2: a text does
 * not fit, there is no stream at that index, or a feature has no value. -3: a text or description does not
 * fit (feature functions). Other failures are the library's status codes, negative with the bit pattern
 * 0x800000xx: 0x80000004 not found or out of range, 0x80000006 not supported, 0x8000000B already streaming,
 * 0x8000000D already open, 0x8000000E not open, 0x8000000F still streaming, 0x8000001B time-out, 0x80000021
 * the feature refused, 0x80000022 not available, 0x80000024 wrong state, 0x80010000 + status: the camera
 * answered with that GigE Vision status.
 *
 * Threads. Every function may be called from any thread. Connecting, opening, starting, stopping and closing
 * one camera should come from one thread at a time, since their order matters. Image callbacks run on the
 * stream's delivery thread.
 *
 * Texts are NUL-terminated; a text of length n needs a buffer of n + 1 bytes.
 */
#ifndef VX3_VX3_H
#define VX3_VX3_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#ifndef VX3_C_API
#define VX3_C_API __attribute__((visibility("default")))
#endif

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

/* What SubDevice_GetStreamStatisticsByIndex tells; all zero when there is no stream. */
typedef struct StreamStatistics {
    uint64_t blocks;           /* frames handed on, complete or not */
    uint64_t lostBlocks;       /* frames of which nothing arrived */
    uint64_t resentPackets;    /* packets asked for again */
    uint64_t missingPackets;   /* packets that never came */
    uint64_t incompleteBlocks; /* frames handed on with packets missing */
    uint64_t reserved;
} StreamStatistics;

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

/* ---- Versions ------------------------------------------------------------------------------------------ */

/* Copies the library's version, "1.0". 0; -1 null buffer; -2 too small. */
VX3_C_API int SDKVersion(char* buf, size_t size);
/* Copies the build number, "781". Codes as above. */
VX3_C_API int SDKBuildVersion(char* buf, size_t size);

/* ---- Managers ------------------------------------------------------------------------------------------ */

/* A manager over the families whose bits are set; enumerates their interface devices once. Null on failure.
 */
VX3_C_API Manager* Manager_Create(unsigned int types);
/* Frees the manager. Device handles stay valid and keep their devices alive. */
VX3_C_API void Manager_Destory(Manager* manager);
/* Number of families the manager serves. */
VX3_C_API int Manager_DeviceTypeSupportedCount(Manager* manager);
/* Stores the family of that index; -1 for an index past the end, nothing is stored then. */
VX3_C_API int Manager_DeviceTypeSupportedByIndex(Manager* manager, unsigned int index, unsigned int* type);
/* Looks for interface devices again; their number. */
VX3_C_API int Manager_EnumDevices(Manager* manager);
/* Number of interface devices of a family (VX3_FAMILY_ALL: of all). */
VX3_C_API int Manager_GetDevices(Manager* manager, unsigned int type);
/*
 * A handle on an interface device, which begins to look for its cameras: the call takes 500 ms, in which the
 * first look runs (GigE Vision discovery takes a second longer), the next look follows 500 ms later, then one
 * every 10 s. Null when there is no such device.
 */
VX3_C_API Device* Manager_GetDeviceByIndex(Manager* manager, unsigned int index, unsigned int type);
VX3_C_API Device* Manager_GetDeviceByName(Manager* manager, const char* name);
/* Copies the name of an interface device; an empty text when there is none. 0, -1, -2. */
VX3_C_API int Manager_DeviceName(Manager* manager, unsigned int index, unsigned int type, char* buf,
                                 size_t size);

/* ---- Interface devices --------------------------------------------------------------------------------- */

VX3_C_API int Device_GetDeviceName(Device* device, char* buf, size_t size);
VX3_C_API void Device_Destory(Device* device);
VX3_C_API int Device_Connect(Device* device);
VX3_C_API int Device_DisConnect(Device* device);
/* Number of cameras found so far. */
VX3_C_API int Device_GetSubDeviceCount(Device* device);
/* A handle on a camera; it does not keep the camera alive. Null past the end. */
VX3_C_API SubDevice* Device_GetSubDeviceByIndex(Device* device, unsigned int index);

/* ---- Cameras and streams ------------------------------------------------------------------------------- */

VX3_C_API int SubDevice_GetSubDeviceName(SubDevice* camera, char* buf, size_t size);
VX3_C_API void SubDevice_Destory(SubDevice* camera);
/* Takes the camera over and loads its description. */
VX3_C_API int SubDevice_Connect(SubDevice* camera);
/* Stops and closes every stream, then lets the camera go. */
VX3_C_API int SubDevice_DisConnect(SubDevice* camera);
/* Opens a stream; -2 when the camera has none at that index, here and below. */
VX3_C_API int SubDevice_OpenStreamByIndex(SubDevice* camera, unsigned int streamIndex,
                                          unsigned int bufferCount);
/* Starts it. `count`: frames that may be in flight at once, 0 for the transport's own choice. */
VX3_C_API int SubDevice_StartStreamByIndex(SubDevice* camera, unsigned int streamIndex,
                                           StreamImageCallback callback, void* userData, unsigned int count);
/* Stops it. Frames that are queued still reach the callback until the stream is closed: free userData only
 * after SubDevice_CloseStreamByIndex has returned (called on another thread than the callback's). */
VX3_C_API int SubDevice_StopStreamByIndex(SubDevice* camera, unsigned int streamIndex);
VX3_C_API int SubDevice_CloseStreamByIndex(SubDevice* camera, unsigned int streamIndex);
/* Resumes and stops local delivery while the camera keeps streaming to others (remote cameras only). */
VX3_C_API int Remote_StartLocalStream(SubDevice* camera, unsigned int streamIndex);
VX3_C_API int Remote_StopLocalStream(SubDevice* camera, unsigned int streamIndex);
/* The next frame of a running stream, to be recycled by the caller; null after `timeout` ms or on failure. */
VX3_C_API Image* SubDevice_SnapA(SubDevice* camera, unsigned int streamIndex, unsigned int timeout);
VX3_C_API StreamStatistics SubDevice_GetStreamStatisticsByIndex(SubDevice* camera, unsigned int streamIndex);

/* ---- Images -------------------------------------------------------------------------------------------- */

VX3_C_API ImageDescription Image_GetImageInfo(Image* image);
/* The pixels, dataSize bytes; valid until the handle is recycled. */
VX3_C_API unsigned char* Image_GetImageBuff(Image* image);
/*
 * Writes the image to a file: a picture for bmp, jpg, jpeg, png, tiff and webp, else the raw pixels (mode 1
 * puts "WIDTH_HEIGHT_FORMAT" into the name of a raw file). 0x80000022: the pixel format fits no picture;
 * 0x80000024: the file could not be written.
 */
VX3_C_API int Save2File(Image* image, const char* path, unsigned int mode);
/* Frees the handle; the last one gives the image back to its pool. */
VX3_C_API void Image_Recycle(Image* image);

/* ---- Features of a camera ------------------------------------------------------------------------------ */

/* Getters: 0; -1 bad handle, no features, null output; -2 no such value; -3 the buffer is too small. */
VX3_C_API int GetNodeValue_Int(SubDevice* camera, const char* name, int64_t* value);
VX3_C_API int GetNodeValue_Double(SubDevice* camera, const char* name, double* value);
VX3_C_API int GetNodeValue_Bool(SubDevice* camera, const char* name, bool* value);
VX3_C_API int GetNodeValue_Chars(SubDevice* camera, const char* name, char* buf, size_t size);
VX3_C_API int GetNodeValue_Buffer(SubDevice* camera, const char* name, uint8_t* buf, unsigned int size,
                                  unsigned int* length);

/* Setters. Integers and floats are clamped to the feature's range (and increment). 0x80000021: the feature
 * refused; 0x80000004: no such feature. Enumerations are set by integer value. */
VX3_C_API int SetNodeValue_Int(SubDevice* camera, const char* name, int64_t value);
VX3_C_API int SetNodeValue_Double(SubDevice* camera, const char* name, double value);
VX3_C_API int SetNodeValue_Bool(SubDevice* camera, const char* name, bool value);
VX3_C_API int SetNodeValue_Chars(SubDevice* camera, const char* name, const char* value);
VX3_C_API int SetNodeValue_Command(SubDevice* camera, const char* name);
VX3_C_API int SetNodeValue_Buffer(SubDevice* camera, const char* name, const uint8_t* data,
                                  unsigned int length);

/* The kind of a feature, VX3_NODE_*; -1 when there is none of that name. */
VX3_C_API int GetNodeType(SubDevice* camera, const char* name, int* type);
/* Whether the feature belongs into a saved set of settings. */
VX3_C_API int GetNodeIsStreamable(SubDevice* camera, const char* name, bool* streamable);
/* VX3_ACCESS_*; -1 when absent or not implemented. */
VX3_C_API int GetNodeAccessMode(SubDevice* camera, const char* name, int* mode);
/* Range and increment; -1 when the feature is absent or of another kind. */
VX3_C_API int GetNodeMaxValue_Int(SubDevice* camera, const char* name, int64_t* value);
VX3_C_API int GetNodeMinValue_Int(SubDevice* camera, const char* name, int64_t* value);
VX3_C_API int GetNodeIncValue_Int(SubDevice* camera, const char* name, int64_t* value);
VX3_C_API int GetNodeMaxValue_Double(SubDevice* camera, const char* name, double* value);
VX3_C_API int GetNodeMinValue_Double(SubDevice* camera, const char* name, double* value);
VX3_C_API int GetNodeIncValue_Double(SubDevice* camera, const char* name, double* value);

/*
 * Every storable feature with its value as text. Stores their number in *count in every case that finds
 * features; -2 when `capacity` is below it, so that a first call with capacity 0 tells the size. The array is
 * the caller's, the texts are freed by FreeNodes.
 */
VX3_C_API int GetNodes(SubDevice* camera, NodeRecord* nodes, unsigned int capacity, unsigned int* count);
/* Frees the texts of the first n records. */
VX3_C_API void FreeNodes(NodeRecord* nodes, unsigned int n);

/* The camera's description file. -3: the buffer is too small; -2: it holds no bytes. */
VX3_C_API int SubDevice_GetXmlName(SubDevice* camera, char* buf, unsigned int size, unsigned int* length);
VX3_C_API int SubDevice_GetXmlDataSize(SubDevice* camera, unsigned int* size);
VX3_C_API int SubDevice_GetXmlData(SubDevice* camera, uint8_t* buf, unsigned int size);

/* ---- Features of a stream: as their camera twins; -1 when the stream or its features are missing --------
 */

VX3_C_API int Stream_GetXmlName(SubDevice* camera, unsigned int streamIndex, char* buf, unsigned int size,
                                unsigned int* length);
VX3_C_API int Stream_GetXmlDataSize(SubDevice* camera, unsigned int streamIndex, unsigned int* size);
VX3_C_API int Stream_GetXmlData(SubDevice* camera, unsigned int streamIndex, uint8_t* buf, unsigned int size);
VX3_C_API int Stream_GetNodeValue_Int(SubDevice* camera, unsigned int streamIndex, const char* name,
                                      int64_t* value);
VX3_C_API int Stream_GetNodeValue_Double(SubDevice* camera, unsigned int streamIndex, const char* name,
                                         double* value);
VX3_C_API int Stream_GetNodeValue_Bool(SubDevice* camera, unsigned int streamIndex, const char* name,
                                       bool* value);
VX3_C_API int Stream_GetNodeValue_Chars(SubDevice* camera, unsigned int streamIndex, const char* name,
                                        char* buf, size_t size);
VX3_C_API int Stream_GetNodeValue_Buffer(SubDevice* camera, unsigned int streamIndex, const char* name,
                                         uint8_t* buf, unsigned int size, unsigned int* length);
VX3_C_API int Stream_SetNodeValue_Int(SubDevice* camera, unsigned int streamIndex, const char* name,
                                      int64_t value);
VX3_C_API int Stream_SetNodeValue_Double(SubDevice* camera, unsigned int streamIndex, const char* name,
                                         double value);
VX3_C_API int Stream_SetNodeValue_Bool(SubDevice* camera, unsigned int streamIndex, const char* name,
                                       bool value);
VX3_C_API int Stream_SetNodeValue_Chars(SubDevice* camera, unsigned int streamIndex, const char* name,
                                        const char* value);
VX3_C_API int Stream_SetNodeValue_Command(SubDevice* camera, unsigned int streamIndex, const char* name);
VX3_C_API int Stream_SetNodeValue_Buffer(SubDevice* camera, unsigned int streamIndex, const char* name,
                                         const uint8_t* data, unsigned int length);

/* ---- One setting for every connected camera ------------------------------------------------------------ */

/* Whether AutoSetNodeValue_* (Stream_AutoSetNodeValue_*) set all cameras or only the one given; off at first.
 */
VX3_C_API void SetParamSyncEnabled(bool enabled);
VX3_C_API void Stream_SetParamSyncEnabled(bool enabled);

/*
 * Set the feature on every connected camera of every live manager, at most `capacity` of them; one result
 * each, their number in *count. 0 whatever the single results; -1 when results, count or a needed value is
 * null.
 */
VX3_C_API int SetNodeValueAllDev_Int(const char* name, int64_t value, DeviceParamSetResult* results,
                                     unsigned int capacity, unsigned int* count);
VX3_C_API int SetNodeValueAllDev_Double(const char* name, double value, DeviceParamSetResult* results,
                                        unsigned int capacity, unsigned int* count);
VX3_C_API int SetNodeValueAllDev_Bool(const char* name, bool value, DeviceParamSetResult* results,
                                      unsigned int capacity, unsigned int* count);
VX3_C_API int SetNodeValueAllDev_Chars(const char* name, const char* value, DeviceParamSetResult* results,
                                       unsigned int capacity, unsigned int* count);
VX3_C_API int SetNodeValueAllDev_Command(const char* name, DeviceParamSetResult* results,
                                         unsigned int capacity, unsigned int* count);
VX3_C_API int SetNodeValueAllDev_Buffer(const char* name, const uint8_t* data, unsigned int length,
                                        DeviceParamSetResult* results, unsigned int capacity,
                                        unsigned int* count);

/* The same on stream 0 of each camera. */
VX3_C_API int Stream_SetNodeValueAllDev_Int(const char* name, int64_t value, DeviceParamSetResult* results,
                                            unsigned int capacity, unsigned int* count);
VX3_C_API int Stream_SetNodeValueAllDev_Double(const char* name, double value, DeviceParamSetResult* results,
                                               unsigned int capacity, unsigned int* count);
VX3_C_API int Stream_SetNodeValueAllDev_Bool(const char* name, bool value, DeviceParamSetResult* results,
                                             unsigned int capacity, unsigned int* count);
VX3_C_API int Stream_SetNodeValueAllDev_Chars(const char* name, const char* value,
                                              DeviceParamSetResult* results, unsigned int capacity,
                                              unsigned int* count);
VX3_C_API int Stream_SetNodeValueAllDev_Command(const char* name, DeviceParamSetResult* results,
                                                unsigned int capacity, unsigned int* count);
VX3_C_API int Stream_SetNodeValueAllDev_Buffer(const char* name, const uint8_t* data, unsigned int length,
                                               DeviceParamSetResult* results, unsigned int capacity,
                                               unsigned int* count);

/* Set one camera, or all of them while SetParamSyncEnabled(true) holds; `results` are untouched for one. */
VX3_C_API int AutoSetNodeValue_Int(SubDevice* camera, const char* name, int64_t value,
                                   DeviceParamSetResult* results, unsigned int capacity, unsigned int* count);
VX3_C_API int AutoSetNodeValue_Double(SubDevice* camera, const char* name, double value,
                                      DeviceParamSetResult* results, unsigned int capacity,
                                      unsigned int* count);
VX3_C_API int AutoSetNodeValue_Bool(SubDevice* camera, const char* name, bool value,
                                    DeviceParamSetResult* results, unsigned int capacity,
                                    unsigned int* count);
VX3_C_API int AutoSetNodeValue_Chars(SubDevice* camera, const char* name, const char* value,
                                     DeviceParamSetResult* results, unsigned int capacity,
                                     unsigned int* count);
VX3_C_API int AutoSetNodeValue_Command(SubDevice* camera, const char* name, DeviceParamSetResult* results,
                                       unsigned int capacity, unsigned int* count);
VX3_C_API int AutoSetNodeValue_Buffer(SubDevice* camera, const char* name, const uint8_t* data,
                                      unsigned int length, DeviceParamSetResult* results,
                                      unsigned int capacity, unsigned int* count);

/* The same for stream 0; `streamIndex` is accepted and not used. */
VX3_C_API int Stream_AutoSetNodeValue_Int(SubDevice* camera, unsigned int streamIndex, const char* name,
                                          int64_t value, DeviceParamSetResult* results, unsigned int capacity,
                                          unsigned int* count);
VX3_C_API int Stream_AutoSetNodeValue_Double(SubDevice* camera, unsigned int streamIndex, const char* name,
                                             double value, DeviceParamSetResult* results,
                                             unsigned int capacity, unsigned int* count);
VX3_C_API int Stream_AutoSetNodeValue_Bool(SubDevice* camera, unsigned int streamIndex, const char* name,
                                           bool value, DeviceParamSetResult* results, unsigned int capacity,
                                           unsigned int* count);
VX3_C_API int Stream_AutoSetNodeValue_Chars(SubDevice* camera, unsigned int streamIndex, const char* name,
                                            const char* value, DeviceParamSetResult* results,
                                            unsigned int capacity, unsigned int* count);
VX3_C_API int Stream_AutoSetNodeValue_Command(SubDevice* camera, unsigned int streamIndex, const char* name,
                                              DeviceParamSetResult* results, unsigned int capacity,
                                              unsigned int* count);
VX3_C_API int Stream_AutoSetNodeValue_Buffer(SubDevice* camera, unsigned int streamIndex, const char* name,
                                             const uint8_t* data, unsigned int length,
                                             DeviceParamSetResult* results, unsigned int capacity,
                                             unsigned int* count);

/* ======================================================================================================== */
/* What clients of the library have always had ends here; the functions below were added to it.             */
/* ======================================================================================================== */

/* ---- Colours of images --------------------------------------------------------------------------------- */

/*
 * Makes a new image of `image` in 8-bit grey or colour: PFNC Mono8 (0x01080001), RGB8 (0x02180014) or BGR8
 * (0x02180015), of every pixel format that the library knows. Samples of more than 8 bits keep their upper 8,
 * mosaics become colour. Lines of the result begin dataSize / height bytes apart. The caller recycles
 * *result. 0x80000006: another format is wanted, the image's own is unknown, or there is no memory; *result
 * is null then.
 */
VX3_C_API int Image_ConvertTo(Image* image, uint32_t pixelFormat, Image** result);
/*
 * Makes a new RGBa8 image of a monochrome one in false colour: samples from `low` to `low + range` in the
 * colours of that map, those below and above in its first and last. A map beyond the last one is grey.
 * 0x80000006: the image is not Mono8 to Mono16, or there is no memory.
 */
VX3_C_API int Image_Map2RGB8(Image* image, unsigned int map, unsigned int low, unsigned int range,
                             Image** result);
/* How many colour maps there are. */
VX3_C_API int ColorMap_Count(void);
/* Copies the name of a map. 0; -1 null buffer, or a map beyond the last; -2 too small. */
VX3_C_API int ColorMap_Name(unsigned int map, char* buf, size_t size);
/* The number of the map with that name, whatever the case of its letters; -1 when there is none. */
VX3_C_API int ColorMap_Find(const char* name);

#ifdef __cplusplus
}
#endif

#endif /* VX3_VX3_H */
