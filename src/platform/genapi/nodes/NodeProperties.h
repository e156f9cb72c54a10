// What a node's record says of it in words: names, texts, flags, and every element by its name. A view, made
// when it is asked.
#pragma once

#include "GenApi/Types.h"
#include "platform/genapi/description/Description.h"

namespace GenApi_3_2 {
namespace Engine {

gcstring ToGc(std::string_view text);

class NodeProperties {
public:
    NodeProperties(const Description& description, const NodeRecord& record)
        : description_(description), record_(record) {}

    gcstring Name(bool isFullyQualified) const;
    // Empty when the record has no such element.
    gcstring Text(ElementId id) const { return ToGc(description_.Text(record_, id)); }
    bool Flag(ElementId id) const;
    EVisibility Visibility() const;

    void GetNames(gcstring_vector& names) const;
    // Several values of one property, and their attributes, are separated by tabs.
    bool Get(const gcstring& name, gcstring& value, gcstring& attribute) const;

private:
    std::string_view ValueOf(const Element& element) const;

    const Description& description_;
    const NodeRecord& record_;
};

} // namespace Engine
} // namespace GenApi_3_2
