/*
 * Ends the process while frames flow and are saved, and tears nothing down: no callback may run any more once
 * exit has begun, since what it uses is being destroyed. Run as: exit_while_streaming FOLDER
 * return|exit|callback|thread
 */
#define _POSIX_C_SOURCE 200809L
#include <pthread.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>
#include <vx3/vx3.h>

#ifdef __SANITIZE_THREAD__
/* A codec behind the picture files takes two mutexes of its own in both orders when it registers itself. */
__attribute__((visibility("default"))) const char* __tsan_default_suppressions(void);
const char* __tsan_default_suppressions(void) {
    return "deadlock:libgdal\n";
}
#endif

static atomic_int frames;
static atomic_bool ended;
static const char* folder;
static const char* how;

static void sleep_ms(long ms) {
    const struct timespec time = {ms / 1000, (ms % 1000) * 1000000L};
    nanosleep(&time, NULL);
}

/* The first exit handler that the program itself has: everything that it made is still there. */
static void goodbye(void) {
    ended = true;
    sleep_ms(50);
}

static void on_image(Image* image, SubDevice* camera, unsigned int stream, unsigned int misc, void* user) {
    char path[512];
    (void)camera;
    (void)stream;
    (void)misc;
    (void)user;
    if (ended)
        _exit(7);
    snprintf(path, sizeof path, "%s/frame.png", folder);
    if (Save2File(image, path, 0) != 0)
        _exit(8);
    Image_Recycle(image);
    if (++frames == 5 && strcmp(how, "callback") == 0)
        exit(0);
    if (ended && strcmp(how, "callback") != 0)
        _exit(9); /* a callback that had begun is waited for */
}

static void* leave(void* unused) {
    (void)unused;
    exit(0);
}

int main(int argc, char** argv) {
    pthread_t thread;
    if (argc != 3)
        return 2;
    folder = argv[1];
    how = argv[2];
    Manager* manager = Manager_Create(VX3_FAMILY_VIRTUAL);
    SubDevice* camera = Device_GetSubDeviceByIndex(Manager_GetDeviceByIndex(manager, 0, VX3_FAMILY_ALL), 0);
    if (strcmp(how, "thread") == 0)
        atexit(goodbye); /* a thread that the library does not know: only what was there before is safe */
    if (SubDevice_Connect(camera) != 0 || SetNodeValue_Int(camera, "FrameTime", 1) != 0 ||
        SubDevice_OpenStreamByIndex(camera, 0, 8) != 0 ||
        SubDevice_StartStreamByIndex(camera, 0, on_image, NULL, 0) != 0)
        return 3;
    if (strcmp(how, "thread") != 0)
        atexit(goodbye);
    while (frames < 5)
        sleep_ms(1);
    if (strcmp(how, "exit") == 0)
        exit(0);
    if (strcmp(how, "thread") == 0 && pthread_create(&thread, NULL, leave, NULL) == 0)
        pthread_join(thread, NULL);
    if (strcmp(how, "callback") == 0)
        sleep_ms(10000);
    return 0;
}
