// A stream of a remote device: a GigE Vision stream that can have features of its own, and that can be told
// to pause where it comes from. Owned by its device.
#pragma once

#include "gev/GevStream.h"
#include "vx3/genicam/IConfigurer.h"
#include "vx3/genicam/IGenIObj.h"

#include <memory>
#include <string>

namespace VX3 {

class RemoteStream final : public GevStream,
                           public IGenIObj,
                           public std::enable_shared_from_this<RemoteStream> {
public:
    using GevStream::GevStream;
    ~RemoteStream() override;

    // Of the publishing host's stream, for all who use it; this one stays ready. WrongState once the device
    // is gone.
    StatusCode Pause() override;
    StatusCode Restart() override;

    bool IsConfigurable() const override { return configurer_ != nullptr; }
    IConfigurer* GetConfigurer() override { return configurer_.get(); }
    // From the text of a description whose port is "StreamPort". NotAvailable when there is none that works.
    // Before the stream is handed out.
    [[nodiscard]] StatusCode CreateConfigurer(const std::string& description);

    StatusCode ReadPort(unsigned long long address, unsigned char* buffer, unsigned int length) override;
    StatusCode WritePort(unsigned long long address, const unsigned char* buffer,
                         unsigned int length) override;
    std::int64_t GetXmlUrlAddr() override { return -1; }
    bool IsManifestSupported() override { return false; }

private:
    StatusCode Tell(const char* word);

    std::unique_ptr<IConfigurer> configurer_;
};

} // namespace VX3
