// Who a device is, as one text: protocol, model and serial number.
#pragma once

#include <string>

namespace CLProtocol {

class CDeviceID {
public:
    // Of a device that speaks GenCP; characters that would not survive in a text are replaced.
    CDeviceID(const std::string& model, const std::string& serial);
    // Parts that are missing stay empty.
    static CDeviceID FromString(const std::string& text);

    // "GenCP#model#serial".
    std::string ToString() const;
    // "model(serial)", or what of it there is.
    std::string GetShortDeviceID() const;
    const std::string& Model() const { return model_; }
    const std::string& Serial() const { return serial_; }

    static constexpr const char* Template = "GenCP";

private:
    std::string model_;
    std::string serial_;
};

} // namespace CLProtocol
