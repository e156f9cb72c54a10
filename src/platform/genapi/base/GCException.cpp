#include "Base/GCException.h"

#include <string>

namespace GenICam_3_2 {

GenericException::GenericException(const char* description, const char* sourceFileName,
                                   unsigned int sourceLine, const char* exceptionType)
    : sourceLine_(sourceLine), sourceFileName_(sourceFileName), description_(description) {
    const std::string whole = std::string(description ? description : "") + " : " + exceptionType +
                              " thrown (file '" + sourceFileName_.c_str() + "', line " +
                              std::to_string(sourceLine) + ")";
    what_ = whole.c_str();
}

} // namespace GenICam_3_2
