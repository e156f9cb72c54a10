// Small helpers shared by the whole library.
#pragma once

#include "vx3/core/Export.h"

#include <cstdarg>
#include <cstdint>
#include <string>
#include <vector>

namespace VX3 {

namespace Miscs {
// Smallest power of two not below v, in 32-bit arithmetic: 0 for 0 and for v above 2^31.
VX3_API unsigned int CeilingPower2(unsigned int v);
// Number of leading zero bits; 32 for 0.
VX3_API unsigned int LeadingZeros(unsigned int v);
// Zero-based index of the most significant set bit; 32 for 0.
VX3_API unsigned int FirstNotZero(unsigned int v);
// One-based index of the least significant set bit; 32 for 0.
VX3_API unsigned int LastNotZero(unsigned int v);
} // namespace Miscs

// printf into a std::string; results longer than 511 characters are cut to 511.
VX3_API std::string StringFormat(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
VX3_API std::string StringFormatVa(const char* fmt, va_list args) __attribute__((format(printf, 1, 0)));
// Every piece before each separator, empty ones included; the tail only when it is not empty.
VX3_API std::vector<std::string> SplitString(const std::string& s, char sep);
// Two pieces around the first ":", or the whole text as one piece when there is none.
VX3_API std::vector<std::string> SplitStringByColon(std::string s);
// The whole text as hexadecimal digits without prefix; 0 for an empty text or any other character.
VX3_API std::uint64_t AscH2Integer(const std::string& s);
// Full path of the library file (or of the program, when linked statically into it).
VX3_API std::string GetModuleFileName();
// p when it is absolute, else the library's directory, "/", p.
VX3_API std::string GetModuleFilePath(const std::string& p);
// Directory of the library file with a trailing "/".
VX3_API std::string GetLibraryDirectory();
// An IPv4 address in host order as "a.b.c.d".
VX3_API std::string Ipv4Text(std::uint32_t address);
// System-clock nanoseconds shifted right by 10: ticks of 1024 ns.
VX3_API std::uint64_t GetTimeStampLinux();
// Next object id; lock-free.
VX3_API std::uint64_t CreateObjId();

} // namespace VX3
