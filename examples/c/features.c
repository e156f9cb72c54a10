/* Reads, writes, saves and restores the features of a virtual camera. */
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <vx3/vx3.h>

static const char* access_text(int mode) {
    switch (mode) {
    case VX3_ACCESS_WRITE_ONLY:
        return "write only";
    case VX3_ACCESS_READ_ONLY:
        return "read only";
    case VX3_ACCESS_READ_WRITE:
        return "read/write";
    default:
        return "not available";
    }
}

static void show_range(SubDevice* camera, const char* name) {
    int64_t value = 0, min = 0, max = 0, inc = 0;
    int mode = 0;
    if (GetNodeValue_Int(camera, name, &value) == 0 && GetNodeMinValue_Int(camera, name, &min) == 0 &&
        GetNodeMaxValue_Int(camera, name, &max) == 0 && GetNodeIncValue_Int(camera, name, &inc) == 0 &&
        GetNodeAccessMode(camera, name, &mode) == 0)
        printf("%s = %" PRId64 " (%" PRId64 " .. %" PRId64 " step %" PRId64 ", %s)\n", name, value, min, max,
               inc, access_text(mode));
}

/* Every storable feature with its value; the caller frees texts and array. */
static NodeRecord* save_all(SubDevice* camera, unsigned int* count) {
    NodeRecord* nodes = NULL;
    if (GetNodes(camera, NULL, 0, count) != -2 || *count == 0)
        return NULL;
    nodes = calloc(*count, sizeof *nodes);
    if (nodes != NULL && GetNodes(camera, nodes, *count, count) != 0) {
        free(nodes);
        nodes = NULL;
    }
    return nodes;
}

static void restore(SubDevice* camera, const NodeRecord* node) {
    int type = VX3_NODE_OTHER, mode = 0, status = -1;
    if (GetNodeType(camera, node->name, &type) != 0 || GetNodeAccessMode(camera, node->name, &mode) != 0 ||
        mode != VX3_ACCESS_READ_WRITE)
        return;
    if (type == VX3_NODE_INTEGER || type == VX3_NODE_ENUMERATION)
        status = SetNodeValue_Int(camera, node->name, strtoll(node->value, NULL, 10));
    else if (type == VX3_NODE_FLOAT)
        status = SetNodeValue_Double(camera, node->name, strtod(node->value, NULL));
    else if (type == VX3_NODE_BOOLEAN)
        status = SetNodeValue_Bool(camera, node->name, strcmp(node->value, "true") == 0);
    else if (type == VX3_NODE_STRING)
        status = SetNodeValue_Chars(camera, node->name, node->value);
    printf("restored %s = %s: %s\n", node->name, node->value, status == 0 ? "ok" : "refused");
}

static int run(SubDevice* camera) {
    char vendor[64] = "";
    unsigned int count = 0;
    int64_t width = 0;
    if (SubDevice_Connect(camera) != 0) {
        fprintf(stderr, "the camera does not connect\n");
        return 1;
    }
    GetNodeValue_Chars(camera, "DeviceVendorName", vendor, sizeof vendor);
    printf("vendor: %s\n", vendor);
    show_range(camera, "Width");
    show_range(camera, "Height");

    NodeRecord* saved = save_all(camera, &count);
    printf("%u storable features\n", count);
    SetNodeValue_Int(camera, "Width", 200);
    SetNodeValue_Int(camera, "Height", 100000); /* clamped to the largest height */
    show_range(camera, "Width");
    show_range(camera, "Height");
    printf("setting SensorWidth: 0x%08X (read only)\n",
           (unsigned int)SetNodeValue_Int(camera, "SensorWidth", 1));
    for (unsigned int i = 0; saved != NULL && i < count; ++i)
        restore(camera, &saved[i]);
    FreeNodes(saved, count);
    free(saved);
    const int ok = GetNodeValue_Int(camera, "Width", &width) == 0 && width == 400;
    SubDevice_DisConnect(camera);
    return ok ? 0 : 1;
}

int main(void) {
    Manager* manager = Manager_Create(VX3_FAMILY_VIRTUAL);
    Device* device = Manager_GetDeviceByIndex(manager, 0, VX3_FAMILY_ALL);
    SubDevice* camera = Device_GetSubDeviceByIndex(device, 0);
    const int result = camera != NULL ? run(camera) : 1;
    SubDevice_Destory(camera);
    Device_Destory(device);
    Manager_Destory(manager);
    return result;
}
