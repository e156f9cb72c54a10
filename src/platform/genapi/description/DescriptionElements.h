// The vocabulary of descriptions: node types and elements of GenApi schema 1.1, and their names.
#pragma once

#include <cstdint>
#include <string_view>

namespace GenApi_3_2 {
namespace Engine {

enum class NodeKind : std::uint8_t {
    Unknown,
    Node,
    Category,
    Integer,
    IntReg,
    MaskedIntReg,
    Float,
    FloatReg,
    Boolean,
    Command,
    Enumeration,
    EnumEntry,
    String,
    StringReg,
    Register,
    SwissKnife,
    IntSwissKnife,
    Converter,
    IntConverter,
    Port,
    ConfRom,
    IntKey,
    TextDesc,
    DcamLock,
    AdvFeatureLock,
    SmartFeature,
    // Containers; they never appear as records.
    StructReg,
    StructEntry,
    Group,
    Extension,
};

// Each enumerator is the element's name in the file.
// clang-format off
#define GENAPI_ELEMENTS(X) \
    X(AccessMode) X(Address) X(Bit) X(Cachable) X(CacheChunkData) X(ChunkID) X(CommandValue) X(Constant) \
    X(Description) X(DisplayName) X(DisplayNotation) X(DisplayPrecision) X(DocuURL) X(Endianess) X(EnumEntry) \
    X(EventID) X(Expression) X(Extension) X(FeatureID) X(Formula) X(FormulaFrom) X(FormulaTo) X(ImposedAccessMode) \
    X(ImposedVisibility) X(Inc) X(IntSwissKnife) X(IsDeprecated) X(IsLinear) X(IsSelfClearing) X(Key) X(LSB) \
    X(Length) X(MSB) X(Max) X(Min) X(NumericValue) X(OffValue) X(OnValue) X(PollingTime) X(Representation) X(Sign) \
    X(Slope) X(Streamable) X(StructEntry) X(SwapEndianess) X(Symbolic) X(Timeout) X(ToolTip) X(Unit) \
    X(ValidValueSet) X(Value) X(ValueDefault) X(ValueIndexed) X(Visibility) X(p1212Parser) X(pAddress) X(pAlias) \
    X(pBlockPolling) X(pCastAlias) X(pChunkID) X(pCommandValue) X(pError) X(pFeature) X(pInc) X(pIndex) \
    X(pInvalidator) X(pIsAvailable) X(pIsImplemented) X(pIsLocked) X(pLength) X(pMax) X(pMin) X(pPort) X(pSelected) \
    X(pValue) X(pValueCopy) X(pValueDefault) X(pValueIndexed) X(pVariable)
// clang-format on

enum class ElementId : std::uint8_t {
    Unknown,
#define GENAPI_ELEMENT(name) name,
    GENAPI_ELEMENTS(GENAPI_ELEMENT)
#undef GENAPI_ELEMENT
};

// Names as in the file; Unknown gives "".
const char* ToText(NodeKind kind);
const char* ToText(ElementId id);

// Unknown when the schema has no such name. Names are given without namespace prefix.
NodeKind NodeKindOf(std::string_view name);
ElementId ElementIdOf(std::string_view name);

// True for elements whose text is the name of another node.
bool IsReference(ElementId id);

// True for elements whose text may rightly be empty (help texts, units and the like; Value of a String).
bool MayBeEmpty(ElementId id, NodeKind kind);

} // namespace Engine
} // namespace GenApi_3_2
