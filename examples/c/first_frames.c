#define _POSIX_C_SOURCE 200809L
#include <stdatomic.h>
#include <stdio.h>
#include <time.h>
#include <vx3/vx3.h>

/* Runs on the stream's own thread; the image is ours until we recycle it. */
static void on_image(Image* image, SubDevice* camera, unsigned stream, unsigned misc, void* user) {
    (void)camera, (void)stream, (void)misc;
    if (Save2File(image, "frame.png", 0) == VX3_OK)
        ++*(atomic_int*)user;
    Image_Recycle(image);
}

static int fail(const char* what) {
    char why[512];
    SDKLastFailure(NULL, why, sizeof why);
    fprintf(stderr, "%s: %s\n", what, why);
    return 1;
}

static int stream(SubDevice* camera) {
    atomic_int frames = 0;
    if (SubDevice_Connect(camera) != VX3_OK)
        return fail("connect");
    if (SetNodeValue_Int(camera, "Width", 320) != VX3_OK)
        return fail("Width");
    if (SubDevice_OpenStreamByIndex(camera, 0, 8) != VX3_OK)
        return fail("open");
    if (SubDevice_StartStreamByIndex(camera, 0, on_image, &frames, 0) != VX3_OK)
        return fail("start");
    for (int waited = 0; frames < 5 && waited < 100; ++waited)
        nanosleep(&(struct timespec){0, 100000000L}, NULL);
    SubDevice_StopStreamByIndex(camera, 0);
    SubDevice_CloseStreamByIndex(camera, 0); /* on_image is not called after this */
    SubDevice_DisConnect(camera);
    printf("%d frames saved\n", frames);
    return frames >= 5 ? 0 : 1;
}

int main(int argc, char** argv) {
    /* A name, serial number, model or address; without one, the first camera that is there. */
    Manager* manager = Manager_Create(VX3_FAMILY_ALL);
    SubDevice* camera = Manager_FindSubDevice(manager, argc > 1 ? argv[1] : NULL, 5000);
    int result = camera != NULL ? stream(camera) : fail("find");
    SubDevice_Destory(camera);
    Manager_Destory(manager);
    return result;
}
