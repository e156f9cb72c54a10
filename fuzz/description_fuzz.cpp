// Camera descriptions, plain and zipped: any bytes must give records that hang together, or be refused.
#include "platform/genapi/description/Description.h"

#include "Base/GCException.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

using namespace GenApi_3_2::Engine;

namespace {

void Require(bool holds) {
    if (!holds)
        std::abort();
}

bool IsNodeOf(const Description& description, std::int32_t index) {
    return index >= NoNode && index < static_cast<std::int32_t>(description.Nodes().size());
}

std::size_t Check(const Description& description) {
    std::size_t letters = 0;
    for (const NodeRecord& node : description.Nodes()) {
        Require(!node.name.empty() && node.line > 0 && IsNodeOf(description, node.owner));
        const std::int32_t index = description.IndexOf(node.name);
        Require(index != NoNode && &description.Nodes()[static_cast<std::size_t>(index)] == &node);
        for (const Element& element : description.Elements(node)) {
            Require(IsNodeOf(description, element.target) && IsNodeOf(description, element.qualifierTarget));
            Require(element.id != ElementId::EnumEntry || element.target != NoNode);
            for (char c : element.text)
                letters += static_cast<unsigned char>(c) > ' ';
        }
    }
    return letters;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        const auto description =
            Description::FromBytes(std::string_view(reinterpret_cast<const char*>(data), size), "fuzz");
        volatile std::size_t letters = Check(*description);
        (void)letters;
    } catch (const GenICam_3_2::InvalidArgumentException&) {
    }
    return 0;
}
