// Enumerations by the names of their entries.
#include "capi/Features.h"
#include "capi/Results.h"
#include "vx3/core/LastFailure.h"

#include <vector>

using namespace VX3::CApi;
using namespace VX3::GenICam;
using VX3::SetLastFailure;

namespace {

// The entries that can be chosen at present.
std::vector<IEnumEntry*> EntriesOf(IEnumeration& node) {
    std::vector<IEnumEntry*> entries;
    for (IEnumEntry* entry : node.GetEntries())
        if (entry != nullptr && IsAvailable(entry->GetAccessMode()))
            entries.push_back(entry);
    return entries;
}

template <typename Body>
int WithEnumeration(SubDevice* camera, const char* name, Body&& body) {
    return Guarded<int>(VX3::Status::NodeFailed, [&] {
        const Target target = Target::Camera(camera);
        auto* node = dynamic_cast<IEnumeration*>(target.Node(name));
        if (node == nullptr)
            return target.Configurer() == nullptr || name == nullptr
                       ? BadHandle
                       : SetLastFailure(BadHandle, std::string(name) + " is no enumeration of this camera");
        return body(*node);
    });
}

} // namespace

int GetNodeEntryCount(SubDevice* camera, const char* name, unsigned int* count) {
    return WithEnumeration(camera, name, [&](IEnumeration& node) {
        if (count == nullptr)
            return BadHandle;
        *count = static_cast<unsigned int>(EntriesOf(node).size());
        return 0;
    });
}

int GetNodeEntry(SubDevice* camera, const char* name, unsigned int index, char* buf, size_t size,
                 int64_t* value) {
    return WithEnumeration(camera, name, [&](IEnumeration& node) {
        const std::vector<IEnumEntry*> entries = EntriesOf(node);
        if (index >= entries.size())
            return BadHandle;
        const int64_t number = entries[index]->GetValue();
        const int result = CopyText(entries[index]->GetSymbolic(), buf, size, CopyTooSmall);
        if (result == 0 && value != nullptr)
            *value = number;
        return result;
    });
}

int GetNodeValue_Entry(SubDevice* camera, const char* name, char* buf, size_t size) {
    return WithEnumeration(camera, name,
                           [&](IEnumeration& node) { return CopyText(*node, buf, size, CopyTooSmall); });
}

int SetNodeValue_Entry(SubDevice* camera, const char* name, const char* entry) {
    return WithEnumeration(camera, name, [&](IEnumeration&) {
        return entry != nullptr ? SetChars(Target::Camera(camera), name, entry) : BadHandle;
    });
}
