/* Built against the installed tree only: proves that the package, the header and the library belong together.
 */
#include <stdio.h>
#include <string.h>
#include <vx3/vx3.h>

int main(void) {
    char version[16];
    Manager* manager = Manager_Create(VX3_FAMILY_VIRTUAL);
    if (SDKVersion(version, sizeof version) != 0 || strcmp(version, "1.0") != 0 || manager == NULL)
        return 1;
    printf("vx3 %s, %d interface device(s)\n", version, Manager_GetDevices(manager, VX3_FAMILY_ALL));
    Manager_Destory(manager);
    return 0;
}
