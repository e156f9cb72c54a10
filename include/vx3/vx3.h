/*
 * The flat C interface of libvx3: cameras, streams, images and features from plain C11, C++ or any
 * foreign-function interface. Link with -lvx3.
 *
 * Handles. Manager, Device (interface device: a network card, the virtual interface), SubDevice (camera) and
 * Image are opaque records that the library allocates; each is freed only by its own *_Destory or
 * Image_Recycle call. A null handle, and a handle that is not alive, is answered with -1 (or null, or zeros);
 * handles are never given out twice, so that one which was freed is never taken for another.
 * Free them in this order: images, streams stopped and closed, sub-devices, devices, manager.
 *
 * Results. 0 or a count is success. -1: bad handle, camera no longer there, or a null output. -2: a text does
 * not fit, there is no stream at that index, or a feature has no value. -3: a text or description does not
 * fit (feature functions). Other failures are the library's status codes, VX3_STATUS_*, negative with the bit
 * pattern 0x800000xx, or VX3_STATUS_GVCP + status: the camera answered with that GigE Vision status.
 * SDKStatusText turns every result into words; SDKLastFailure says what failed on this thread, and why.
 *
 * End. Stop and close streams, disconnect, destroy: then nothing of yours is called any more. A program that
 * ends without that is not called any more either, from the first moment of its exit() on.
 *
 * Threads. Every function may be called from any thread. Connecting, opening, starting, stopping and closing
 * one camera should come from one thread at a time, since their order matters. Image callbacks run on the
 * stream's delivery thread.
 *
 * Texts are NUL-terminated; a text of length n needs a buffer of n + 1 bytes.
 */
#ifndef VX3_VX3_H
#define VX3_VX3_H

#include <vx3/vx3_types.h>

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#ifndef VX3_C_API
#define VX3_C_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

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

/*
 * Setters. Integers and floats are clamped to the feature's range (and increment), with 0: SDKLastFailure
 * says then what was set instead. A value of another kind than the feature's is converted where nothing of it
 * is lost: 3000.0 and "3000" into an integer, the name of an entry (or its number) into an enumeration, true
 * and false into 1 and 0. 0x80000021: the feature refused; 0x80000004: no such feature, or a value that it
 * cannot take.
 */
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

/* ---- Failures and the log ------------------------------------------------------------------------------ */

/* Copies a result of any function in words. 0; -1 null buffer; -2 too small (512 bytes always do, here and
 * below). */
VX3_C_API int SDKStatusText(int status, char* buf, size_t size);
/*
 * Copies why the last function of this thread that failed did so, and stores its result in *status (may be
 * null). A result of 0 with a text tells of a value that was set otherwise than asked. An empty text: nothing
 * failed so far.
 */
VX3_C_API int SDKLastFailure(int* status, char* buf, size_t size);
/* What is printed on standard error: VX3_LOG_WARNING and graver at first. VX3_STATUS_NOT_AVAILABLE: a log
 * configuration stands beside the library, which decides then; VX3_STATUS_NOT_FOUND: no VX3_LOG_* level. */
VX3_C_API int SDKSetLogLevel(int level);
/* Calls `callback` for every line that is as grave as `level` or graver, whatever is printed; null ends that.
 */
VX3_C_API int SDKSetLogCallback(LogCallback callback, int level, void* userData);

/* ---- Finding cameras ----------------------------------------------------------------------------------- */

/*
 * A handle on the camera with that name, user-given name, serial number or address, behind any interface
 * device of the manager; where there is none, on the first of that model. With a null or empty text on the
 * first camera that is no virtual one, and only where there is none on a virtual one. Has every interface
 * device look for its cameras and waits until it is clear which one it is, at most `timeout` ms. Null: there
 * is none; SDKLastFailure names those that there are. The manager must outlive the use of the camera.
 */
VX3_C_API SubDevice* Manager_FindSubDevice(Manager* manager, const char* text, unsigned int timeout);
/* How many looks for its cameras an interface device has finished. */
VX3_C_API int Device_FinishedRounds(Device* device);
/* Has an interface device look for its cameras at once; it does so every 10 s otherwise. */
VX3_C_API int Device_UpdateSubDevices(Device* device);
/* Waits until an interface device has finished `rounds` looks (1: the first) since it was made, at most
 * `timeout` ms. The number of cameras; 0x8000001B when the time ran out. */
VX3_C_API int Device_WaitForRound(Device* device, unsigned int rounds, unsigned int timeout);

/*
 * Connects a camera to be read, whoever controls it: its features are there and may not be set (0x80000021),
 * streams do not start (0x80000022). 0x80000024: connected by SubDevice_Connect; 0x80018006: somebody
 * controls it exclusively and does not let it be read either. SubDevice_DisConnect ends it.
 */
VX3_C_API int SubDevice_ConnectMonitor(SubDevice* camera);

/* ---- Frames -------------------------------------------------------------------------------------------- */

/* What a callback needs to know of a frame beside its pixels. 0; -1. */
VX3_C_API int Image_GetFrameInformation(Image* image, FrameInformation* information);
/*
 * Writes the pixels into the caller's buffer as Mono8, RGB8 or BGR8 (see Image_ConvertTo) or in the format
 * that the image has, lines without padding one behind the other. Stores the bytes needed in *length (may be
 * null), also with -2: the buffer is too small. 0x80000006: the image cannot be had in that format.
 */
VX3_C_API int Image_ConvertToBuffer(Image* image, uint32_t pixelFormat, unsigned char* buf, size_t size,
                                    size_t* length);

/* ---- Cameras for other hosts --------------------------------------------------------------------------- */

/*
 * Makes a camera of this program one for other hosts: it answers as a GigE Vision camera on UDP port `port`
 * (0: the first free one of 56000, 56002, 56004, 56006, where remote devices are looked for), and on 3956 too
 * if wanted, where ordinary programs look. This program goes on using it. 0x80000006: a camera that cannot be
 * shared; 0x80000024: published already; 0x80000003: four are; 0x80000025: the port is taken.
 */
VX3_C_API int SubDevice_Publish(SubDevice* camera, unsigned int port, bool standardPort);
/* Other hosts lose the camera, this program does not. 0x80000004: it was not published, here and below. */
VX3_C_API int SubDevice_Withdraw(SubDevice* camera);
VX3_C_API int SubDevice_GetPublishState(SubDevice* camera, PublishedCamera* state);

/* ---- Enumerations by the names of their entries -------------------------------------------------------- */

/* How many entries can be chosen at present; -1 when the feature is absent or no enumeration, here and below.
 */
VX3_C_API int GetNodeEntryCount(SubDevice* camera, const char* name, unsigned int* count);
/* Copies the name of one of them and stores its number (`value` may be null). -1 past the last; -3 too small.
 */
VX3_C_API int GetNodeEntry(SubDevice* camera, const char* name, unsigned int index, char* buf, size_t size,
                           int64_t* value);
/* The name of the entry that is set. -3 too small. */
VX3_C_API int GetNodeValue_Entry(SubDevice* camera, const char* name, char* buf, size_t size);
VX3_C_API int SetNodeValue_Entry(SubDevice* camera, const char* name, const char* entry);

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
