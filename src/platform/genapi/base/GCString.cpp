#include "Base/GCString.h"

#include <ostream>

namespace GenICam_3_2 {

std::ostream& operator<<(std::ostream& stream, const gcstring& text) {
    return stream << text.text_;
}

} // namespace GenICam_3_2
