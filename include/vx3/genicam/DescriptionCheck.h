// Loads a description file without a camera, to see what it offers and what is wrong with it.
#pragma once

#include "vx3/core/Export.h"
#include "vx3/genicam/INodeMap.h"
#include "vx3/genicam/IXmlData.h"

#include <memory>
#include <string>
#include <vector>

namespace VX3::GenICam {

// Something in a description that was skipped or switched off.
struct VX3_API DescriptionProblem {
    unsigned int line = 0; // from 1; 0 when no single line is to blame
    std::string node;      // empty for the file as a whole
    std::string text;
};

// The node map works over registers that read as zeros and swallow writes. Never throws.
class VX3_API DescriptionCheck {
public:
    // A GenApi file (schema 1.0 or 1.1), plain, or zipped when its name ends in ".zip".
    explicit DescriptionCheck(const std::string& path);
    ~DescriptionCheck();
    DescriptionCheck(const DescriptionCheck&) = delete;
    DescriptionCheck& operator=(const DescriptionCheck&) = delete;

    // Why the file could not be used at all; empty when it was loaded.
    const std::string& Error() const { return error_; }
    // In the order they were found.
    const std::vector<DescriptionProblem>& Problems() const { return problems_; }
    // Empty when the file could not be used.
    std::shared_ptr<INodeMap> GetNodeMap() const { return nodeMap_; }

private:
    void Load(const std::string& path);

    std::string error_;
    std::vector<DescriptionProblem> problems_;
    std::shared_ptr<IGenIObj> registers_;
    std::shared_ptr<INodeMap> nodeMap_;
};

// The text of a description, unpacked where it is zipped; empty when it cannot be. Never throws.
VX3_API std::string DescriptionText(const IXmlData& description);

} // namespace VX3::GenICam
