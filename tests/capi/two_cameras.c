/*
 * Streams 100 frames from each of the two virtual cameras at once and recycles them on another thread.
 * Compiled as strict C11 against the installed interface alone; run under the leak sanitizer in that build.
 */
#define _POSIX_C_SOURCE 200809L
#include <pthread.h>
#include <stdio.h>
#include <unistd.h>
#include <vx3/vx3.h>

enum { Cameras = 2, Frames = 100 };

static int handles[2]; /* a pipe from the callbacks to the recycler */
static int seen[Cameras];
static int failures;

static void on_image(Image* image, SubDevice* camera, unsigned int stream, unsigned int misc, void* user) {
    int* count = user;
    (void)camera;
    (void)stream;
    (void)misc;
    if (*count == Frames)
        Image_Recycle(image);
    else if (write(handles[1], &image, sizeof image) == sizeof image)
        ++*count;
}

static void* recycler(void* unused) {
    (void)unused;
    for (int recycled = 0; recycled < Cameras * Frames; ++recycled) {
        Image* image = NULL;
        if (read(handles[0], &image, sizeof image) != sizeof image)
            ++failures;
        const ImageDescription info = Image_GetImageInfo(image);
        if (info.width != 400 || info.height != 400 || Image_GetImageBuff(image) == NULL)
            ++failures;
        Image_Recycle(image);
    }
    return NULL;
}

static int check(const char* what, int status) {
    if (status != 0) {
        fprintf(stderr, "%s: 0x%08X\n", what, (unsigned int)status);
        ++failures;
    }
    return status == 0;
}

int main(void) {
    SubDevice* cameras[Cameras];
    pthread_t thread;
    if (pipe(handles) != 0)
        return 1;
    Manager* manager = Manager_Create(VX3_FAMILY_VIRTUAL);
    Device* device = Manager_GetDeviceByIndex(manager, 0, VX3_FAMILY_ALL);
    for (int i = 0; i < Cameras; ++i) {
        cameras[i] = Device_GetSubDeviceByIndex(device, (unsigned int)i);
        if (!check("connect", SubDevice_Connect(cameras[i])) ||
            !check("frame time", SetNodeValue_Int(cameras[i], "FrameTime", 2)) ||
            !check("open", SubDevice_OpenStreamByIndex(cameras[i], 0, 8)) ||
            !check("start", SubDevice_StartStreamByIndex(cameras[i], 0, on_image, &seen[i], 0)))
            return 1;
    }
    pthread_create(&thread, NULL, recycler, NULL);
    pthread_join(thread, NULL);
    for (int i = 0; i < Cameras; ++i) {
        check("stop", SubDevice_StopStreamByIndex(cameras[i], 0));
        check("close", SubDevice_CloseStreamByIndex(cameras[i], 0));
        check("disconnect", SubDevice_DisConnect(cameras[i]));
        SubDevice_Destory(cameras[i]);
    }
    Device_Destory(device);
    Manager_Destory(manager);
    printf("%d + %d frames recycled, %d failures\n", seen[0], seen[1], failures);
    return failures == 0 ? 0 : 1;
}
