// Turns a description file into node maps. Copies share the loaded description.
#pragma once

#include "GenApi/INodeMap.h"

#include <memory>

namespace GenApi_3_2 {

// The constructors load the description and throw GenericException when it cannot be used at all; what can be
// skipped is skipped. The bytes in memory are not needed after the constructor returned.
class CNodeMapFactory {
public:
    CNodeMapFactory();
    CNodeMapFactory(EContentType_t ContentType, const void* pData, std::size_t DataSize,
                    ECacheUsage_t CacheUsage = CacheUsage_Automatic, bool SuppressStrings = false);
    CNodeMapFactory(EContentType_t ContentType, const gcstring& FileName,
                    ECacheUsage_t CacheUsage = CacheUsage_Automatic, bool SuppressStrings = false);
    explicit CNodeMapFactory(const gcstring& Xml, ECacheUsage_t CacheUsage = CacheUsage_Automatic,
                             bool SuppressStrings = false);
    ~CNodeMapFactory();
    CNodeMapFactory(const CNodeMapFactory&);
    CNodeMapFactory& operator=(const CNodeMapFactory&);

    // The map is given back by its IDestroy::Destroy. `ReleaseCameraDescriptionFileData` drops the text that
    // ToXml would return.
    INodeMap* CreateNodeMap(const gcstring& DeviceName = "Device",
                            bool ReleaseCameraDescriptionFileData = true) const;
    void ReleaseCameraDescriptionFileData() const;
    // True until a description was loaded.
    bool IsEmpty() const;
    // A line about what is loaded.
    gcstring ToString() const;
    // The description's text, unpacked; empty once released.
    gcstring ToXml() const;

    struct Impl;
    const Impl* GetImpl() const { return impl_.get(); }

private:
    std::shared_ptr<Impl> impl_;
};

} // namespace GenApi_3_2
