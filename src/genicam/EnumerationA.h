// Wrapper of an enumeration. Owned by the node map's wrapper.
#pragma once

#include "genicam/ValueA.h"

namespace VX3::GenICam {

class EnumerationA : public ValueA<IEnumeration, GenApi_3_2::IEnumeration> {
public:
    EnumerationA(const INodeMap* map, GenApi_3_2::INode* node, const std::function<void(INode*)>& callback)
        : ValueA(map, node, callback), owningMap_(map) {}

    std::shared_ptr<IVariant> GetVariant() override;
    std::vector<std::string> GetSymbolics() override;
    std::vector<IEnumEntry*> GetEntries() override;
    IEnumeration& operator=(const std::string& symbolic) override;
    void SetIntValue(long value, bool verify) override;
    std::string operator*() override;
    long GetIntValue(bool verify, bool ignoreCache) override;
    IEnumEntry* GetEntryByName(const std::string& name) override;
    IEnumEntry* GetEntry(long value) override;
    IEnumEntry* GetCurrentEntry(bool verify, bool ignoreCache) override;

private:
    IEnumEntry* EntryOf(GenApi_3_2::IEnumEntry* entry) const;

    const INodeMap* owningMap_;
};

} // namespace VX3::GenICam
