// Hands a log4cpp properties file to log4cpp with its relative appender file names made absolute.
#pragma once

#include <string>

namespace VX3 {

// The same properties with every relative "*.fileName" of an appender resolved against the library's
// directory; names that begin with a ${variable} stay.
std::string ResolveAppenderFiles(const std::string& properties);

// Configures log4cpp from the file at `path`, unless that is what it was configured from last. Throws
// log4cpp::ConfigureFailure (a std::exception) when the file is missing or malformed.
void ConfigureLog4cpp(const std::string& path);

} // namespace VX3
