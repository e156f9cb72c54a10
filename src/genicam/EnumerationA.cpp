#include "genicam/EnumerationA.h"

namespace VX3::GenICam {

std::shared_ptr<IVariant> EnumerationA::GetVariant() {
    return std::make_shared<Variant<long>>(GetIntValue(false, false));
}

std::vector<std::string> EnumerationA::GetSymbolics() {
    std::vector<std::string> texts;
    if (!value_)
        return texts;
    GenApi_3_2::StringList_t symbolics;
    value_->GetSymbolics(symbolics);
    for (const GenApi_3_2::gcstring& symbolic : symbolics)
        texts.emplace_back(symbolic.c_str());
    return texts;
}

std::vector<IEnumEntry*> EnumerationA::GetEntries() {
    std::vector<IEnumEntry*> entries;
    if (!value_)
        return entries;
    GenApi_3_2::NodeList_t nodes;
    value_->GetEntries(nodes);
    for (const GenApi_3_2::INode* node : nodes)
        if (auto* entry = dynamic_cast<IEnumEntry*>(WrapperOf(node)))
            entries.push_back(entry);
    return entries;
}

// Through FromString rather than GenApi's own assignment, whose checks differ between its implementations.
IEnumeration& EnumerationA::operator=(const std::string& symbolic) {
    FromString(symbolic, true);
    return *this;
}

void EnumerationA::SetIntValue(long value, bool verify) {
    if (value_)
        value_->SetIntValue(value, verify);
}

std::string EnumerationA::operator*() {
    return value_ ? (**value_).c_str() : std::string();
}

long EnumerationA::GetIntValue(bool verify, bool ignoreCache) {
    return value_ ? value_->GetIntValue(verify, ignoreCache) : 0;
}

IEnumEntry* EnumerationA::GetEntryByName(const std::string& name) {
    return value_ ? dynamic_cast<IEnumEntry*>(owningMap_->GetNode(name)) : nullptr;
}

IEnumEntry* EnumerationA::GetEntry(long value) {
    return value_ ? EntryOf(value_->GetEntry(value)) : nullptr;
}

IEnumEntry* EnumerationA::GetCurrentEntry(bool verify, bool ignoreCache) {
    return value_ ? EntryOf(value_->GetCurrentEntry(verify, ignoreCache)) : nullptr;
}

IEnumEntry* EnumerationA::EntryOf(GenApi_3_2::IEnumEntry* entry) const {
    return entry ? dynamic_cast<IEnumEntry*>(WrapperOf(entry->GetNode())) : nullptr;
}

} // namespace VX3::GenICam
