// Enumerations and small types of the GenApi interfaces; the numbers are those of the published standard.
#pragma once

#include "Base/GCBase.h"

#include <cstdint>
#include <vector>

namespace GenApi_3_2 {

using GenICam_3_2::gcstring;
using GenICam_3_2::gcstring_vector;
using GenICam_3_2::Version_t;

class INode;
class IValue;

using node_vector = std::vector<INode*>;
using value_vector = std::vector<IValue*>;
using NodeList_t = node_vector;
using FeatureList_t = value_vector;
using StringList_t = gcstring_vector;
using int64_autovector_t = std::vector<std::int64_t>;
using double_autovector_t = std::vector<double>;
using CallbackHandleType = std::intptr_t;

enum EAccessMode { NI, NA, WO, RO, RW, _UndefinedAccesMode, _CycleDetectAccesMode };
enum EVisibility { Beginner, Expert, Guru, Invisible, _UndefinedVisibility = 99 };
enum ECachingMode { NoCache, WriteThrough, WriteAround, _UndefinedCachingMode };
enum ERepresentation {
    Linear,
    Logarithmic,
    Boolean,
    PureNumber,
    HexNumber,
    IPV4Address,
    MACAddress,
    _UndefinedRepresentation
};
enum EEndianess { BigEndian, LittleEndian, _UndefinedEndian };
enum ENameSpace { Custom, Standard, _UndefinedNameSpace };
enum EStandardNameSpace { None, GEV, IIDC, CL, USB, _UndefinedStandardNameSpace };
enum EYesNo { No, Yes, _UndefinedYesNo };
enum ESlope { Increasing, Decreasing, Varying, Automatic, _UndefinedESlope };
enum EIncMode { noIncrement, fixedIncrement, listIncrement };
enum EDisplayNotation { fnAutomatic, fnFixed, fnScientific, _UndefinedEDisplayNotation };
enum EInterfaceType {
    intfIValue,
    intfIBase,
    intfIInteger,
    intfIBoolean,
    intfICommand,
    intfIFloat,
    intfIString,
    intfIRegister,
    intfICategory,
    intfIEnumeration,
    intfIEnumEntry,
    intfIPort
};
enum ELinkType {
    ctParentNodes,
    ctReadingChildren,
    ctWritingChildren,
    ctInvalidatingChildren,
    ctDependingNodes,
    ctTerminalNodes
};
// Whether a callback runs while the node map's lock is held or after it was released.
enum ECallbackType { cbPostInsideLock = 1, cbPostOutsideLock = 2 };
enum EContentType_t { ContentType_Xml, ContentType_ZippedXml };
enum ECacheUsage_t { CacheUsage_Automatic, CacheUsage_ForceWrite, CacheUsage_ForceRead, CacheUsage_Ignore };

inline bool IsReadable(EAccessMode mode) {
    return mode == RO || mode == RW;
}
inline bool IsWritable(EAccessMode mode) {
    return mode == WO || mode == RW;
}
inline bool IsAvailable(EAccessMode mode) {
    return mode == WO || mode == RO || mode == RW;
}
inline bool IsImplemented(EAccessMode mode) {
    return mode == NA || IsAvailable(mode);
}

} // namespace GenApi_3_2
