// Owns one loaded description and makes node maps of it. Owned by the GenICam access object.
#pragma once

#include "vx3/genicam/INodeMap.h"
#include "vx3/genicam/Types.h"

#include <functional>
#include <memory>
#include <string>

namespace GenApi_3_2 {
class CNodeMapFactory;
}

namespace VX3::GenICam {

// The constructors let GenApi's exceptions through when the description cannot be used at all.
class NodeMapFactory {
public:
    NodeMapFactory(EContentType type, const void* data, unsigned long size, ECacheUsage cache,
                   bool suppressStrings);
    NodeMapFactory(EContentType type, const std::string& fileName, ECacheUsage cache, bool suppressStrings);
    NodeMapFactory(const std::string& xml, ECacheUsage cache, bool suppressStrings);
    ~NodeMapFactory();
    NodeMapFactory(const NodeMapFactory&) = delete;
    NodeMapFactory& operator=(const NodeMapFactory&) = delete;

    // Null on failure, which is logged. `callback` may be empty. `releaseData` drops the text of ToXml.
    std::unique_ptr<INodeMap> CreateNodeMap(std::function<void(INode*)> callback,
                                            const std::string& deviceName, bool releaseData);
    // Why the last CreateNodeMap gave none, in words.
    const std::string& Failure() const { return failure_; }
    bool IsEmpty() const;
    std::string ToString() const;
    std::string ToXml() const;

private:
    std::unique_ptr<GenApi_3_2::CNodeMapFactory> factory_;
    std::string failure_;
};

// The error line that every failed description leaves in the log.
void LogGenICamException(const char* description);

} // namespace VX3::GenICam
