// The bytes of one description file, as a device or a file gave them. Owned by the GenApiRI built over it.
#pragma once

#include "vx3/genicam/IXmlData.h"

#include <memory>
#include <string>

namespace VX3 {

class XmlData : public IXmlData {
public:
    // `name` is a bare file name or a path; its extension decides how the bytes are parsed. `size` bytes of
    // `data` are valid. With the configuration key "WriteXmlToFile" set, writes them to a file in the working
    // folder: cameras choose the name, so that its folders count for nothing.
    XmlData(std::string name, std::unique_ptr<unsigned char[]> data, unsigned int size);

    // The name without the folders that a camera may put before it.
    std::string FileName() const;
    std::string GetXmlName() const override { return name_; }
    unsigned int GetXmlDataSize() const override { return size_; }
    const unsigned char* GetXmlData() const override { return data_.get(); }

private:
    std::string name_;
    std::unique_ptr<unsigned char[]> data_;
    unsigned int size_;
};

} // namespace VX3
