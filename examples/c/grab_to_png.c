/* Streams frames from a virtual camera and saves them as PNG pictures: grab_to_png [FOLDER [COUNT]] */
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <vx3/vx3.h>

struct Grab {
    const char* folder;
    int wanted;
    int saved;
    int failed;
    pthread_mutex_t mutex;
    pthread_cond_t done;
};

/* Runs on the stream's delivery thread; the image is ours until we recycle it. */
static void on_image(Image* image, SubDevice* camera, unsigned int stream, unsigned int misc, void* user) {
    struct Grab* grab = user;
    (void)camera;
    (void)stream;
    (void)misc;
    pthread_mutex_lock(&grab->mutex);
    if (grab->saved + grab->failed < grab->wanted) {
        const ImageDescription info = Image_GetImageInfo(image);
        char path[512];
        snprintf(path, sizeof path, "%s/frame_%03llu.png", grab->folder, (unsigned long long)info.blockId);
        const int status = Save2File(image, path, 0);
        if (status == 0) {
            ++grab->saved;
            printf("%s: %u x %u\n", path, info.width, info.height);
        } else {
            ++grab->failed;
            fprintf(stderr, "%s: not saved (0x%08X)\n", path, (unsigned int)status);
        }
        if (grab->saved + grab->failed == grab->wanted)
            pthread_cond_signal(&grab->done);
    }
    pthread_mutex_unlock(&grab->mutex);
    Image_Recycle(image);
}

static int run(SubDevice* camera, struct Grab* grab) {
    int status = SubDevice_Connect(camera);
    if (status == 0)
        status = SubDevice_OpenStreamByIndex(camera, 0, 8);
    if (status == 0)
        status = SubDevice_StartStreamByIndex(camera, 0, on_image, grab, 0);
    if (status != 0) {
        fprintf(stderr, "the camera does not start (0x%08X)\n", (unsigned int)status);
        SubDevice_DisConnect(camera);
        return 1;
    }
    pthread_mutex_lock(&grab->mutex);
    while (grab->saved + grab->failed < grab->wanted)
        pthread_cond_wait(&grab->done, &grab->mutex);
    pthread_mutex_unlock(&grab->mutex);

    const StreamStatistics statistics = SubDevice_GetStreamStatisticsByIndex(camera, 0);
    SubDevice_StopStreamByIndex(camera, 0);
    SubDevice_CloseStreamByIndex(camera, 0);
    SubDevice_DisConnect(camera);
    printf("%d saved, %d not, %llu delivered\n", grab->saved, grab->failed,
           (unsigned long long)statistics.blocks);
    return grab->failed == 0 ? 0 : 1;
}

int main(int argc, char** argv) {
    struct Grab grab = {argc > 1 ? argv[1] : ".",  argc > 2 ? atoi(argv[2]) : 5, 0, 0,
                        PTHREAD_MUTEX_INITIALIZER, PTHREAD_COND_INITIALIZER};
    Manager* manager = Manager_Create(VX3_FAMILY_VIRTUAL);
    Device* device = Manager_GetDeviceByIndex(manager, 0, VX3_FAMILY_ALL);
    SubDevice* camera = Device_GetSubDeviceByIndex(device, 0);
    int result = 1;
    if (grab.wanted < 1)
        fprintf(stderr, "usage: grab_to_png [FOLDER [COUNT]]\n");
    else if (camera == NULL)
        fprintf(stderr, "no camera\n");
    else
        result = run(camera, &grab);
    SubDevice_Destory(camera);
    Device_Destory(device);
    Manager_Destory(manager);
    return result;
}
