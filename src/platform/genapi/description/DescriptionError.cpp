#include "platform/genapi/description/DescriptionError.h"

#include "Base/GCException.h"

namespace GenApi_3_2 {
namespace Engine {

std::string Quoted(std::string_view text) {
    constexpr std::size_t Longest = 100;
    std::string quoted = "'";
    quoted.append(text.substr(0, Longest)).append(text.size() > Longest ? "...'" : "'");
    return quoted;
}

void ThrowDescriptionError(std::string_view fileName, std::uint32_t line, std::string_view node,
                           std::string_view reason) {
    std::string text = "Description '";
    text.append(fileName).append("'");
    if (line != 0)
        text.append(", line ").append(std::to_string(line));
    if (!node.empty())
        text.append(", node '").append(node).append("'");
    text.append(": ").append(reason);
    throw GenICam_3_2::InvalidArgumentException(text.c_str(), __FILE__, __LINE__);
}

} // namespace Engine
} // namespace GenApi_3_2
