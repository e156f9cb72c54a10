#include "vx3/genicam/DescriptionCheck.h"

#include "GenApi/GenApi.h"
#include "genicam/NodeMapA.h"

#include <cstring>
#include <strings.h>

namespace VX3::GenICam {

namespace {

class ZeroedRegisters : public IGenIObj {
public:
    StatusCode ReadPort(unsigned long long /*address*/, unsigned char* buffer, unsigned int length) override {
        std::memset(buffer, 0, length);
        return Status::Ok;
    }
    StatusCode WritePort(unsigned long long /*address*/, const unsigned char* /*buffer*/,
                         unsigned int /*length*/) override {
        return Status::Ok;
    }
    std::int64_t GetXmlUrlAddr() override { return -1; }
    bool IsManifestSupported() override { return false; }
};

bool IsZipName(const std::string& path) {
    return path.size() >= 4 && strcasecmp(path.c_str() + path.size() - 4, ".zip") == 0;
}

} // namespace

DescriptionCheck::DescriptionCheck(const std::string& path)
    : registers_(std::make_shared<ZeroedRegisters>()) {
    try {
        Load(path);
    } catch (const GenICam_3_2::GenericException& exception) {
        error_ = exception.GetDescription();
    } catch (const std::exception& exception) {
        error_ = exception.what();
    }
    if (!nodeMap_ && error_.empty())
        error_ = "the description holds no node map";
}

DescriptionCheck::~DescriptionCheck() = default;

// GenApi's own calls instead of CreateNodeMap, which keeps an exception's text to the log.
void DescriptionCheck::Load(const std::string& path) {
    const GenApi_3_2::CNodeMapFactory factory(IsZipName(path) ? GenApi_3_2::ContentType_ZippedXml
                                                              : GenApi_3_2::ContentType_Xml,
                                              GenApi_3_2::gcstring(path.c_str()));
    GenApiNodeMap genApiMap(factory.CreateNodeMap("Device", true));
    if (!genApiMap)
        return;
    auto map = std::make_shared<NodeMapA>(std::move(genApiMap), nullptr);
    for (const std::string& port : map->GetPortNames())
        map->Connect(registers_, port);
    problems_ = map->GetProblems();
    nodeMap_ = map;
}

std::string DescriptionText(const IXmlData& description) {
    if (!IsZipName(description.GetXmlName()))
        return std::string(reinterpret_cast<const char*>(description.GetXmlData()),
                           description.GetXmlDataSize());
    try {
        const GenApi_3_2::CNodeMapFactory factory(GenApi_3_2::ContentType_ZippedXml, description.GetXmlData(),
                                                  description.GetXmlDataSize());
        return factory.ToXml().c_str();
    } catch (const std::exception&) {
        return {};
    }
}

} // namespace VX3::GenICam
