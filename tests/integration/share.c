/*
 * A program that uses a virtual camera and publishes it: prints, every 100 ms, milliseconds since it began
 * and the number of frames it has got itself. Usage: share SECONDS
 */
#include <vx3/vx3.h>

#include <stdio.h>
#include <stdlib.h>
#include <time.h>

static volatile unsigned int frames;

static void OnImage(Image* image, SubDevice* camera, unsigned int stream, unsigned int misc, void* user) {
    (void)camera;
    (void)stream;
    (void)misc;
    (void)user;
    ++frames;
    Image_Recycle(image);
}

static int Fail(const char* what) {
    char text[512] = "";
    SDKLastFailure(NULL, text, sizeof text);
    fprintf(stderr, "%s: %s\n", what, text);
    return 1;
}

int main(int argc, char** argv) {
    const int seconds = argc > 1 ? atoi(argv[1]) : 5;
    Manager* manager = Manager_Create(VX3_FAMILY_VIRTUAL);
    SubDevice* camera = Manager_FindSubDevice(manager, "Virtual Device #1", 5000);
    PublishedCamera state;
    struct timespec pause = {0, 100000000};
    int i;
    if (camera == NULL || SubDevice_Connect(camera) != 0 || SetNodeValue_Int(camera, "FrameTime", 10) != 0)
        return Fail("the camera is not there");
    if (SubDevice_OpenStreamByIndex(camera, 0, 8) != 0 ||
        SubDevice_StartStreamByIndex(camera, 0, OnImage, NULL, 0) != 0)
        return Fail("it does not stream");
    if (SubDevice_Publish(camera, 0, true) != 0)
        return Fail("it is not published");
    for (i = 0; i < 10 * seconds; ++i) {
        nanosleep(&pause, NULL);
        if (SubDevice_GetPublishState(camera, &state) != 0)
            return Fail("it is published no longer");
        printf("%d %u %u %u\n", 100 * i, frames, state.streams, state.controllerPort);
        fflush(stdout);
    }
    SubDevice_Withdraw(camera);
    SubDevice_StopStreamByIndex(camera, 0);
    SubDevice_CloseStreamByIndex(camera, 0);
    SubDevice_DisConnect(camera);
    SubDevice_Destory(camera);
    Manager_Destory(manager);
    return 0;
}
