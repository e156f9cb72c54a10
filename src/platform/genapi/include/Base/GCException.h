// What every GenApi operation throws: a kind, a text that names the node, and the place in this engine.
#pragma once

#include "Base/GCString.h"

#include <exception>

namespace GenICam_3_2 {

class GenericException : public std::exception {
public:
    GenericException(const char* description, const char* sourceFileName, unsigned int sourceLine,
                     const char* exceptionType = "GenericException");

    // What went wrong, in words.
    virtual const char* GetDescription() const noexcept { return description_.c_str(); }
    virtual const char* GetSourceFileName() const noexcept { return sourceFileName_.c_str(); }
    virtual unsigned int GetSourceLine() const noexcept { return sourceLine_; }
    // The description followed by the kind and the place.
    const char* what() const noexcept override { return what_.c_str(); }

private:
    unsigned int sourceLine_;
    gcstring sourceFileName_;
    gcstring description_;
    gcstring what_;
};

// NOLINTBEGIN(bugprone-macro-parentheses): a name of a class takes none
#define VX3_GENICAM_EXCEPTION_KIND(Kind)                                                                     \
    class Kind : public GenericException {                                                                   \
    public:                                                                                                  \
        Kind(const char* description, const char* sourceFileName, unsigned int sourceLine)                   \
            : GenericException(description, sourceFileName, sourceLine, #Kind) {}                            \
    };
// NOLINTEND(bugprone-macro-parentheses)

VX3_GENICAM_EXCEPTION_KIND(BadAllocException)
VX3_GENICAM_EXCEPTION_KIND(InvalidArgumentException)
VX3_GENICAM_EXCEPTION_KIND(OutOfRangeException)
VX3_GENICAM_EXCEPTION_KIND(PropertyException)
VX3_GENICAM_EXCEPTION_KIND(RuntimeException)
VX3_GENICAM_EXCEPTION_KIND(LogicalErrorException)
VX3_GENICAM_EXCEPTION_KIND(AccessException)
VX3_GENICAM_EXCEPTION_KIND(TimeoutException)
VX3_GENICAM_EXCEPTION_KIND(DynamicCastException)

#undef VX3_GENICAM_EXCEPTION_KIND

} // namespace GenICam_3_2
