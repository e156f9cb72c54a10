// Camera descriptions, plain and zipped: any bytes must give records that hang together, or be refused.
#include "FuzzInput.h"

#include "Base/GCException.h"
#include "platform/genapi/description/Description.h"

using namespace GenApi_3_2::Engine;
using namespace VX3::Fuzz;

namespace {

bool IsNodeOf(const Description& description, std::int32_t index) {
    return index >= NoNode && index < static_cast<std::int32_t>(description.Nodes().size());
}

void Check(const Description& description) {
    for (const NodeRecord& node : description.Nodes()) {
        Require(!node.name.empty() && node.line > 0 && IsNodeOf(description, node.owner));
        const std::int32_t index = description.IndexOf(node.name);
        Require(index != NoNode && &description.Nodes()[static_cast<std::size_t>(index)] == &node);
        for (const Element& element : description.Elements(node)) {
            Require(IsNodeOf(description, element.target) && IsNodeOf(description, element.qualifierTarget));
            Require(element.id != ElementId::EnumEntry || element.target != NoNode);
            for (const char& c : element.text)
                Touch(reinterpret_cast<const std::uint8_t*>(&c));
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        Check(*Description::FromBytes(std::string_view(reinterpret_cast<const char*>(data), size), "fuzz"));
    } catch (const GenICam_3_2::InvalidArgumentException&) {
    }
    return 0;
}
