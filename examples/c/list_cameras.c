/* Lists every camera the library can find, with the interface it is behind. */
#include <stdio.h>
#include <stdlib.h>
#include <vx3/vx3.h>

int main(int argc, char** argv) {
    const unsigned int families = argc > 1 ? (unsigned int)strtoul(argv[1], NULL, 0) : VX3_FAMILY_ALL;
    Manager* manager = Manager_Create(families);
    if (manager == NULL) {
        fprintf(stderr, "no manager\n");
        return 1;
    }
    const int interfaces = Manager_GetDevices(manager, VX3_FAMILY_ALL);
    int found = 0;
    for (int i = 0; i < interfaces; ++i) {
        char name[256];
        Device* device = Manager_GetDeviceByIndex(manager, (unsigned int)i, VX3_FAMILY_ALL);
        if (device == NULL || Device_GetDeviceName(device, name, sizeof name) != 0)
            continue;
        Device_WaitForRound(device, 1, 5000);
        const int cameras = Device_GetSubDeviceCount(device);
        printf("%s: %d camera(s)\n", name, cameras);
        for (int c = 0; c < cameras; ++c) {
            SubDevice* camera = Device_GetSubDeviceByIndex(device, (unsigned int)c);
            if (SubDevice_GetSubDeviceName(camera, name, sizeof name) == 0) {
                printf("  %s\n", name);
                ++found;
            }
            SubDevice_Destory(camera);
        }
        Device_Destory(device);
    }
    Manager_Destory(manager);
    printf("%d camera(s) in all\n", found);
    return 0;
}
