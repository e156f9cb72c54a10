// The features of one producer module: the first of its descriptions that can be fetched and parsed,
// connected to its registers.
#pragma once

#include "vx3/genicam/IGenIObj.h"
#include "vx3/genicam/IXmlData.h"

#include <memory>
#include <string>
#include <vector>

namespace VX3 {

class GenApiRI;
class GenTLPort;

namespace GenTLDescription {

struct Features {
    std::unique_ptr<GenApiRI> genApi; // null where none of the descriptions can be used
    std::string failure;              // why, in words
};

// The bytes that `url` names, read through `module` where they lie in registers. Null, and why.
std::unique_ptr<IXmlData> Fetch(const std::string& url, GenTLPort& port, IGenIObj& module,
                                std::string& failure);

// `urls`: in the order to be tried. `portName`: what the description calls the module's port, null for
// "Device"; the producer's own name of it serves too.
Features Build(const std::vector<std::string>& urls, GenTLPort& port, const std::shared_ptr<IGenIObj>& module,
               const char* portName);

} // namespace GenTLDescription

} // namespace VX3
