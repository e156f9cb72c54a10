// The library's own enumerations of the GenICam node layer; values are GenApi's.
#pragma once

#include <cstdint>

namespace VX3::GenICam {

enum class EAccessMode : int {
    NotImplemented = 0,
    NotAvailable = 1,
    WriteOnly = 2,
    ReadOnly = 3,
    ReadWrite = 4,
    Undefined = 5,
    CycleDetect = 6
};
enum class EInterfaceType : int {
    Value = 0,
    Base = 1,
    Integer = 2,
    Boolean = 3,
    Command = 4,
    Float = 5,
    String = 6,
    Register = 7,
    Category = 8,
    Enumeration = 9,
    EnumEntry = 10,
    Port = 11
};
enum class EVisibility : int { Beginner = 0, Expert = 1, Guru = 2, Invisible = 3, Undefined = 99 };
enum class ENameSpace : int { Custom = 0, Standard = 1, Undefined = 2 };
enum class ECachingMode : int { NoCache = 0, WriteThrough = 1, WriteAround = 2, Undefined = 3 };
enum class ERepresentation : int {
    Linear = 0,
    Logarithmic = 1,
    Boolean = 2,
    PureNumber = 3,
    HexNumber = 4,
    IPV4Address = 5,
    MACAddress = 6,
    Undefined = 7
};
enum class EIncMode : int { NoIncrement = 0, FixedIncrement = 1, ListIncrement = 2 };
enum class EDisplayNotation : int { Automatic = 0, Fixed = 1, Scientific = 2, Undefined = 3 };
enum class ELinkType : int {
    ParentNodes = 0,
    ReadingChildren = 1,
    WritingChildren = 2,
    InvalidatingChildren = 3,
    DependingNodes = 4,
    TerminalNodes = 5
};
enum class EContentType : int { Xml = 0, ZippedXml = 1 };
enum class ECacheUsage : int { Automatic = 0, ForceWrite = 1, ForceRead = 2, Ignore = 3 };

// True when a node of this mode can be read (written).
constexpr bool IsReadable(EAccessMode mode) {
    return mode == EAccessMode::ReadOnly || mode == EAccessMode::ReadWrite;
}
constexpr bool IsWritable(EAccessMode mode) {
    return mode == EAccessMode::WriteOnly || mode == EAccessMode::ReadWrite;
}
constexpr bool IsAvailable(EAccessMode mode) {
    return mode != EAccessMode::NotImplemented && mode != EAccessMode::NotAvailable;
}

} // namespace VX3::GenICam
