#include "platform/clprotocol/CDeviceID.h"

namespace CLProtocol {

namespace {

constexpr char Separator = '#';

// Printable, without separators and without blanks at the ends.
std::string Clean(std::string text) {
    for (char& c : text)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F || c == Separator)
            c = '_';
    const std::size_t first = text.find_first_not_of(' ');
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::string TakePiece(std::string& rest) {
    const std::size_t end = rest.find(Separator);
    std::string piece = rest.substr(0, end);
    rest = end == std::string::npos ? "" : rest.substr(end + 1);
    return piece;
}

} // namespace

CDeviceID::CDeviceID(const std::string& model, const std::string& serial)
    : model_(Clean(model)), serial_(Clean(serial)) {}

CDeviceID CDeviceID::FromString(const std::string& text) {
    std::string rest = text;
    TakePiece(rest); // the protocol
    const std::string model = TakePiece(rest);
    return {model, TakePiece(rest)};
}

std::string CDeviceID::ToString() const {
    return std::string(Template) + Separator + model_ + Separator + serial_;
}

std::string CDeviceID::GetShortDeviceID() const {
    const std::string model = model_.empty() ? "GenCP camera" : model_;
    return serial_.empty() ? model : model + "(" + serial_ + ")";
}

} // namespace CLProtocol
