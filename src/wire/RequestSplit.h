// Cuts a long read or write into commands of a size that the protocol carries. Each is a transaction of its
// own, so that others get their turn in between.
#pragma once

#include "wire/TransactionCodec.h"

#include <algorithm>
#include <cstddef>

namespace VX3 {

class RequestSplit {
public:
    RequestSplit(const WireRequest& whole, const TransactionRules& rules) : whole_(whole), rules_(rules) {}

    // The next piece, when there is one.
    [[nodiscard]] bool Next(WireRequest& piece) {
        offset_ = next_;
        piece = whole_;
        piece.address += offset_;
        piece.count = Size(whole_.count, rules_.readChunk);
        piece.data = {whole_.data.data, Size(whole_.data.size, rules_.writeChunk)};
        if (piece.data.size != 0)
            piece.data.data += offset_;
        next_ += piece.count + piece.data.size;
        return next_ != offset_;
    }
    // Where that piece stands in the whole.
    std::size_t Offset() const { return offset_; }

private:
    std::size_t Size(std::size_t total, std::size_t chunk) const {
        return offset_ < total ? std::min(total - offset_, chunk) : 0;
    }

    const WireRequest whole_;
    const TransactionRules& rules_;
    std::size_t offset_ = 0;
    std::size_t next_ = 0;
};

} // namespace VX3
