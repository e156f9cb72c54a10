#include "platform/genapi/description/Description.h"

#include "platform/archive/ZipArchive.h"
#include "platform/genapi/description/DescriptionError.h"
#include "platform/genapi/description/DescriptionLimits.h"
#include "platform/genapi/description/DescriptionReader.h"

#include <fstream>

namespace GenApi_3_2 {
namespace Engine {

namespace {

constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";

void RemoveByteOrderMark(std::string& text) {
    if (std::string_view(text).substr(0, ByteOrderMark.size()) == ByteOrderMark)
        text.erase(0, ByteOrderMark.size());
}

std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    const std::streamoff size = file ? static_cast<std::streamoff>(file.tellg()) : -1;
    if (size < 0)
        ThrowDescriptionError(path, 0, {}, "file cannot be opened");
    if (static_cast<std::uint64_t>(size) > MaxDescriptionText)
        ThrowDescriptionError(path, 0, {}, "file is larger than 16 MiB");
    std::string bytes(static_cast<std::size_t>(size), '\0');
    file.seekg(0);
    if (!file.read(&bytes[0], size))
        ThrowDescriptionError(path, 0, {}, "file cannot be read");
    return bytes;
}

} // namespace

std::string UnpackDescription(std::string_view bytes, const std::string& fileName) {
    if (bytes.size() > MaxDescriptionText)
        ThrowDescriptionError(fileName, 0, {}, "description is larger than 16 MiB");
    std::string text;
    if (VX3::IsZipArchive(bytes)) {
        VX3::ZipContent content = VX3::UnzipOnly(bytes, ".xml", {MaxDescriptionArchive, MaxDescriptionText});
        if (!content.failure.empty())
            ThrowDescriptionError(fileName, 0, {}, content.failure);
        text = std::move(content.bytes);
    } else {
        text = bytes;
    }
    RemoveByteOrderMark(text);
    return text;
}

std::shared_ptr<const Description> Description::FromBytes(std::string_view bytes, std::string fileName) {
    std::string xml = UnpackDescription(bytes, fileName);
    return FromXml(std::move(xml), std::move(fileName));
}

std::shared_ptr<const Description> Description::FromXml(std::string xml, std::string fileName) {
    const auto description = std::make_shared<Description>(Key(), std::move(fileName));
    RemoveByteOrderMark(xml);
    description->text_ = std::move(xml);
    DescriptionReader(*description).Read();
    return description;
}

std::shared_ptr<const Description> Description::FromFile(const std::string& path) {
    std::string bytes = ReadFile(path);
    if (VX3::IsZipArchive(bytes))
        return FromBytes(bytes, path);
    return FromXml(std::move(bytes), path);
}

const Element* Description::Find(const NodeRecord& node, ElementId id) const {
    for (const Element& element : Elements(node))
        if (element.id == id)
            return &element;
    return nullptr;
}

std::string_view Description::Text(const NodeRecord& node, ElementId id, std::string_view fallback) const {
    const Element* const element = Find(node, id);
    return element == nullptr ? fallback : element->text;
}

std::int32_t Description::IndexOf(std::string_view name) const {
    return names_.Find(name);
}

} // namespace Engine
} // namespace GenApi_3_2
